// Warps of a 3 by 3 neighbourhood: sharpen, sketch, neon and the pencil looks.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "engine/pixel_rows.h"
#include "engine/warp_routines.h"

// All of this file is compiled once for each vector target; its loops are plain, so that all give the same bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "warp_edges.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace warp_edges {
namespace HWY_NAMESPACE {

namespace {

// Rows 1 to height - 2: `row(rows of the copy, out)` fills the flat bytes of a row, of which those of the inner pixels
// are stored. Behind them `out` has three more rows of scratch. Frames without inner pixels stay.
template <typename PerRow>
void ForInnerRows(const EngineImage& frame, const EngineImage& copy, PerRow row) {
  if (frame.width < 3) return;
  ForRowBands(frame.width, 1, frame.height - 1, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> out(static_cast<size_t>(frame.width) * 16);
    for (int32_t y = begin; y < end; ++y) {
      row(RowTriple{copy.Row(y - 1), copy.Row(y), copy.Row(y + 1)}, out.data());
      StoreColors(frame.Row(y) + 4, out.data() + 4, frame.width - 2);
    }
  });
}

// The same over the grey plane, one byte a pixel, which lies in workCopy; `out` and its scratch have a byte a pixel,
// too.
template <typename PerRow>
int32_t ForInnerGrayRows(EngineRecord& record, const EngineImage& frame, PerRow row) {
  const int32_t width = frame.width;
  uint8_t* plane = EnsureWorkCopy(record, frame.totalBytes);
  if (!plane) return kEngineNoScratch;
  MakeGrayPlane(frame, plane);
  if (width < 3) return kEngineDone;
  ForRowBands(width, 1, frame.height - 1, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> out(static_cast<size_t>(width) * 3);
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* mid = plane + static_cast<ptrdiff_t>(y) * width;
      row(RowTriple{mid - width, mid, mid + width}, out.data());
      StoreGrays(frame.Row(y) + 4, out.data() + 1, width - 2);
    }
  });
  return kEngineDone;
}

int32_t Sharpen(EngineRecord&, const EngineImage& frame, const EngineImage& copy) {
  ForInnerRows(frame, copy, [=](const RowTriple& r, uint8_t* out) { Sharpen3x3(r, 4 * frame.width, out); });
  return kEngineDone;
}

// Both Sobel directions, each and together limited to 255, for bytes `apart` to count - apart - 1.
void GradientRow(const RowTriple& rows, int32_t apart, int32_t count, uint8_t* out) {
  const uint8_t *up = rows.up, *mid = rows.mid, *down = rows.down;
#pragma GCC ivdep
  for (int32_t i = apart; i < count - apart; ++i) {
    const int16_t tl = up[i - apart], tc = up[i], tr = up[i + apart];
    const int16_t ml = mid[i - apart], mr = mid[i + apart];
    const int16_t bl = down[i - apart], bc = down[i], br = down[i + apart];
    const auto dx = static_cast<int16_t>(2 * (mr - ml) - tl - bl + tr + br);
    const auto dy = static_cast<int16_t>(2 * (bc - tc) - tl - tr + bl + br);
    const auto gx = static_cast<int16_t>(dx < 0 ? -dx : dx), gy = static_cast<int16_t>(dy < 0 ? -dy : dy);
    const auto both = static_cast<int16_t>((gx < 255 ? gx : 255) + (gy < 255 ? gy : 255));
    out[i] = static_cast<uint8_t>(both < 255 ? both : 255);
  }
}

int32_t Sketch(EngineRecord& record, const EngineImage& frame, const EngineImage&) {
  const int32_t level = Percent(record.level);
  const int32_t width = frame.width;
  return ForInnerGrayRows(record, frame, [=](const RowTriple& r, uint8_t* out) {
    GradientRow(r, 1, width, out);
    for (int32_t i = 1; i < width - 1; ++i) out[i] = static_cast<uint8_t>(255 - ((out[i] + level) >> 1));
  });
}

int32_t Neon(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const auto level = static_cast<uint8_t>(Percent(record.level));
  const int32_t bytes = 4 * frame.width;
  ForInnerRows(frame, copy, [=](const RowTriple& r, uint8_t* out) {
    GradientRow(r, 4, bytes, out);
    for (int32_t i = 4; i < bytes - 4; ++i) out[i] = std::max(out[i], level);
  });
  FillRim(frame, 0);
  return kEngineDone;
}

// t[i] = 2^24 / (i + offset), but t[0] = 0.
std::array<uint32_t, 256> Reciprocals(uint32_t offset) {
  std::array<uint32_t, 256> table{};
  for (uint32_t i = 1; i < 256; ++i) table[i] = (1u << 24) / (i + offset);
  return table;
}

// Grey divided by the largest grey around: lines stay, areas turn white.
int32_t SketchB(EngineRecord& record, const EngineImage& frame, const EngineImage&) {
  const std::array<uint32_t, 256> reciprocal = Reciprocals(0);
  const int32_t width = frame.width;
  const int32_t status = ForInnerGrayRows(record, frame, [=](const RowTriple& r, uint8_t* out) {
    uint8_t* columns = out + width;
    uint8_t* largest = columns + width;
    MaxOf3x3(r, 1, width, columns, largest);
#pragma GCC ivdep
    for (int32_t i = 1; i < width - 1; ++i) {
      const uint32_t ratio = largest[i] ? (reciprocal[largest[i]] * r.mid[i]) >> 16 : 255;
      out[i] = static_cast<uint8_t>(std::min(ratio, 255u));
    }
  });
  if (status == kEngineDone) FillRim(frame, 255);  // a pixel divided by itself
  return status;
}

// (reciprocal * v) >> 16, at most 255, of reciprocals whose low, middle and high bytes stand apart.
void ScaleRow(const uint8_t* v, const uint8_t* low, const uint8_t* middle, const uint8_t* high, int32_t count,
              uint8_t* out) {
#pragma GCC ivdep
  for (int32_t i = 0; i < count; ++i) {
    const auto lower = static_cast<uint16_t>(low[i] | middle[i] << 8);
    const auto below = static_cast<uint16_t>(uint32_t{lower} * v[i] >> 16);
    const auto scaled = static_cast<uint16_t>(high[i] * v[i] + below);
    out[i] = static_cast<uint8_t>(std::min<uint16_t>(scaled, 255));
  }
}

// The same for each colour channel by itself, darker.
int32_t NeonB(EngineRecord&, const EngineImage& frame, const EngineImage& copy) {
  const std::array<uint32_t, 256> reciprocal = Reciprocals(8);
  Curve low, middle, high;
  for (size_t i = 0; i < reciprocal.size(); ++i) {
    low[i] = static_cast<uint8_t>(reciprocal[i]);
    middle[i] = static_cast<uint8_t>(reciprocal[i] >> 8);
    high[i] = static_cast<uint8_t>(reciprocal[i] >> 16);
  }
  const int32_t width = frame.width;
  const int32_t bytes = 4 * width;
  ForInnerRows(frame, copy, [=](const RowTriple& r, uint8_t* out) {
    uint8_t* columns = out + bytes;
    uint8_t* largest = columns + bytes;
    uint8_t* middles = largest + bytes;
    MaxOf3x3(r, 4, bytes, columns, largest);
    MapRow(largest, out, width, {low.data(), low.data(), low.data()});
    MapRow(largest, middles, width, {middle.data(), middle.data(), middle.data()});
    MapRow(largest, columns, width, {high.data(), high.data(), high.data()});
    ScaleRow(r.mid, out, middles, columns, bytes, out);
  });
  FillRim(frame, 0);
  return kEngineDone;
}

// Lifts each channel by how far its brightest neighbour stands above it. The table of lifts is read one entry further
// on than it is filled, hence the root's one more.
int32_t NeonC(EngineRecord&, const EngineImage& frame, const EngineImage& copy) {
  uint8_t step[256];
  for (int32_t i = 0; i < 256; ++i) step[i] = static_cast<uint8_t>(std::sqrt(i + 1.0) + 1);

  const int32_t width = frame.width;
  const int32_t height = frame.height;
  const int32_t bytes = 4 * width;
  ForRowBands(width, 0, height, [&](int32_t begin, int32_t end) {
    std::vector<uint8_t> scratch(4 * static_cast<size_t>(bytes));
    uint8_t* largest = scratch.data() + bytes;
    uint8_t* steps = largest + bytes;
    uint8_t* out = steps + bytes;
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* mid = copy.Row(y);
      if (y == 0 || y == height - 1 || width < 3) {
        std::memcpy(largest, mid, static_cast<size_t>(bytes));
      } else {
        MaxOf3x3({copy.Row(y - 1), mid, copy.Row(y + 1)}, 4, bytes, scratch.data(), largest);
        std::memcpy(largest, mid, 4);
        std::memcpy(largest + bytes - 4, mid + bytes - 4, 4);
      }
      MapRow(mid, steps, width, {step, step, step});
      LiftRow(mid, largest, steps, bytes, out);
      StoreColors(frame.Row(y), out, width);
    }
  });
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> Routines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kWarpSharpen, Sharpen}, {code::kSketch, Sketch},
                                              {code::kNeon, Neon},           {code::kSketchB, SketchB},
                                              {code::kNeonB, NeonB},         {code::kNeonC, NeonC}};
  return kRoutines;
}

}  // namespace HWY_NAMESPACE
}  // namespace warp_edges
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace warp_edges {
HWY_EXPORT(Routines);
}  // namespace warp_edges

std::span<const WarpRoutine> EdgeRoutines() {
  using namespace warp_edges;
  return HWY_DYNAMIC_DISPATCH(Routines)();
}

#endif  // HWY_ONCE

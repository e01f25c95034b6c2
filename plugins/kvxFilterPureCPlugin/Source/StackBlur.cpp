#include "Source/StackBlur.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/pixels.h"
#include "framework/transpose.h"

// All of this file is compiled once for each vector target. Its loops are plain, so that all targets give the same
// bytes, in vectors of whatever the machine has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "StackBlur.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace stack_blur {
namespace HWY_NAMESPACE {
namespace {

// The weighted sum S at a radius is divided by (radius + 1)^2 as S * multiplier >> shift.
struct StackScale {
  uint32_t multiplier;
  uint32_t shift;
};

// The published tables follow one rule: the greatest shift whose multiplier, rounded up, stays within 512.
constexpr std::array<StackScale, kMaxStackRadius + 1> MakeScales() {
  std::array<StackScale, kMaxStackRadius + 1> scales{};
  for (uint32_t r = 0; r < scales.size(); ++r) {
    const uint32_t weight = (r + 1) * (r + 1);
    const uint32_t shift = static_cast<uint32_t>(std::bit_width(512 * weight)) - 1;
    scales[r] = {((1u << shift) + weight - 1) / weight, shift};
  }
  return scales;
}
constexpr auto kScales = MakeScales();

// Columns that one pass takes side by side: their sums stay in the first cache, and all run at once.
constexpr int32_t kStripWidth = 64;
// Rows that the row pass turns into columns at a time: a cache line of pixels.
constexpr int32_t kBandHeight = 16;

constexpr int32_t kLanes = kStripWidth * 4;

// Running state of the columns of a strip. `sum` is the weighted sum of the window about the row in hand, `slope` what
// the step to this row added to it. Stepping on moves the slope by next - 2 * current + old, the rows at distance
// radius + 1 ahead, 0 and radius + 1 behind: the triangle's second difference.
struct StripState {
  alignas(64) uint32_t sum[kLanes];
  alignas(64) int32_t slope[kLanes];
  alignas(64) uint8_t blurred[kLanes];
};

// Blurs the columns of a strip of at most kStripWidth pixels in place. `ring` holds radius + 1 rows of it: the rows
// already overwritten that the window still has to leave behind.
void BlurStrip(FrameView strip, int32_t radius, uint8_t* ring) {
  StripState state;
  uint32_t* __restrict sum = state.sum;
  int32_t* __restrict slope = state.slope;
  uint8_t* __restrict blurred = state.blurred;
  const int32_t lanes = strip.width * 4;
  const int32_t last = strip.height - 1;
  const StackScale scale = kScales[static_cast<size_t>(radius)];
  const uint8_t* first = strip.Row(0);

  // The window starts wholly before row 0, where every row repeats row 0, and slides in.
  const uint32_t weight = static_cast<uint32_t>((radius + 1) * (radius + 1));
  for (int32_t j = 0; j < lanes; ++j) {
    sum[j] = first[j] * weight;
    slope[j] = 0;
  }
  for (int32_t slot = 0; slot <= radius; ++slot) std::memcpy(ring + slot * lanes, first, static_cast<size_t>(lanes));
  for (int32_t ahead = 1; ahead <= radius; ++ahead) {
    const uint8_t* next = strip.Row(std::min(ahead, last));
    for (int32_t j = 0; j < lanes; ++j) {
      slope[j] += next[j] - first[j];
      sum[j] += static_cast<uint32_t>(slope[j]);
    }
  }

  int32_t slot = 0;
  for (int32_t y = 0; y <= last; ++y) {
    const uint8_t* next = strip.Row(std::min(y + radius + 1, last));
    uint8_t* row = strip.Row(y);
    uint8_t* __restrict old = ring + slot * lanes;
    for (int32_t j = 0; j < lanes; ++j) {
      blurred[j] = static_cast<uint8_t>(sum[j] * scale.multiplier >> scale.shift);
      slope[j] += next[j] - 2 * row[j] + old[j];
      sum[j] += static_cast<uint32_t>(slope[j]);
      old[j] = row[j];
    }
    // Limit bytes 0 to 2 by byte 3, a pixel at a time as one word; 255 in byte 3 lets it come out as it is.
    uint8_t limit[kLanes];
    for (int32_t x = 0; x < strip.width; ++x) {
      uint32_t pixel = LoadPixel(row + 4 * x);
      const uint32_t alpha = pixel >> 24;
      const uint32_t alphas = alpha | alpha << 8 | alpha << 16 | alpha << 24;
      StorePixel(limit + 4 * x, alphas);
      pixel = LoadPixel(blurred + 4 * x);
      pixel |= 0xFF000000u;
      StorePixel(blurred + 4 * x, pixel);
    }
    for (int32_t j = 0; j < lanes; ++j) row[j] = std::min(blurred[j], limit[j]);
    slot = slot == radius ? 0 : slot + 1;
  }
}

void BlurColumns(FrameView frame, int32_t radius, int32_t first, int32_t last) {
  std::vector<uint8_t> ring(static_cast<size_t>(radius + 1) * kLanes);
  for (int32_t x = first; x < last; x += kStripWidth) {
    BlurStrip({frame.Pixel(x, 0), std::min(kStripWidth, frame.width - x), frame.height, frame.step}, radius,
              ring.data());
  }
}

void BlurRows(FrameView frame, int32_t radius, int32_t first, int32_t last) {
  std::vector<uint8_t> ring(static_cast<size_t>(radius + 1) * kLanes);
  std::vector<uint8_t> turned(static_cast<size_t>(frame.width) * kBandHeight * 4);
  for (int32_t y = first; y < last; y += kBandHeight) {
    const FrameView band{frame.Row(y), frame.width, std::min(kBandHeight, frame.height - y), frame.step};
    const FrameView columns{turned.data(), band.height, band.width, kBandHeight * 4};
    Transpose({band.data, band.width, band.height, band.step}, columns);
    BlurStrip(columns, radius, ring.data());
    Transpose({columns.data, columns.width, columns.height, columns.step}, band);
  }
}

}  // namespace

void BlurFrame(FrameView frame, int32_t radius) {
  const auto partsOf = [](int32_t size, int32_t part) { return (size + part - 1) / part; };
  ForRowBands(int64_t{frame.width} * kBandHeight, 0, partsOf(frame.height, kBandHeight),
              [=](int32_t begin, int32_t end) {
                BlurRows(frame, radius, begin * kBandHeight, std::min(end * kBandHeight, frame.height));
              });
  ForRowBands(int64_t{frame.height} * kStripWidth, 0, partsOf(frame.width, kStripWidth),
              [=](int32_t begin, int32_t end) {
                BlurColumns(frame, radius, begin * kStripWidth, std::min(end * kStripWidth, frame.width));
              });
}

}  // namespace HWY_NAMESPACE
}  // namespace stack_blur
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace stack_blur {
HWY_EXPORT(BlurFrame);
}  // namespace stack_blur

void StackBlur(FrameView frame, int32_t radius) {
  using namespace stack_blur;
  if (frame.Empty()) return;
  HWY_DYNAMIC_DISPATCH(BlurFrame)(frame, ClampInt(radius, 0, kMaxStackRadius));
}

#endif  // HWY_ONCE

// Looks over the frame and a material: curves with a blend, an old photo, canvas, pencil.
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "engine/curve.h"
#include "engine/merge_routines.h"
#include "framework/numeric.h"
#include "framework/pixel_kernels.h"
#include "workers/workers.h"

// All of this file is compiled once for each vector target; its loops are plain, so that all give the same bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "merge_looks.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace merge_looks {
namespace HWY_NAMESPACE {

namespace {

// Values at 0, 32, 64, 96, 128, 160, 192, 224 and 255.
using NineKnots = std::array<uint8_t, 9>;

Curve MakeNineCurve(const NineKnots& knots) {
  CurvePoint points[9];
  for (int32_t i = 0; i < 9; ++i) points[i] = {std::min(32 * i, 255), knots[static_cast<size_t>(i)]};
  return MakeCurve(points);
}

enum CurveLook { kSunSet, kVivid, kGarden, kDanGui, kVelora, kCurveLooks };

struct LookKnots {
  NineKnots blue, green, red;
};
constexpr LookKnots kKnots[kCurveLooks] = {
    {{12, 51, 83, 103, 146, 180, 203, 222, 245},
     {0, 22, 63, 103, 158, 191, 210, 227, 248},
     {18, 68, 103, 142, 188, 215, 228, 242, 254}},
    {{0, 4, 28, 71, 129, 188, 208, 220, 234},
     {1, 8, 44, 109, 171, 210, 226, 241, 254},
     {35, 44, 97, 150, 193, 217, 230, 244, 254}},
    {{65, 65, 66, 102, 141, 180, 212, 212, 213},
     {58, 58, 59, 94, 127, 161, 194, 225, 240},
     {82, 83, 95, 131, 164, 199, 225, 225, 225}},
    {{0, 39, 85, 122, 162, 205, 215, 229, 244},
     {22, 61, 107, 145, 185, 215, 225, 239, 254},
     {38, 70, 107, 138, 171, 210, 218, 230, 241}},
    {{0, 11, 53, 139, 206, 236, 249, 254, 255},
     {0, 0, 18, 72, 151, 202, 227, 243, 255},
     {0, 14, 41, 94, 161, 210, 237, 249, 255}},
};

ByteTables TablesOf(CurveLook look) {
  static const std::array<CurveSet, kCurveLooks> sets = [] {
    std::array<CurveSet, kCurveLooks> made;
    std::transform(std::begin(kKnots), std::end(kKnots), made.begin(), [](const LookKnots& knots) {
      return CurveSet{MakeNineCurve(knots.blue), MakeNineCurve(knots.green), MakeNineCurve(knots.red)};
    });
    return made;
  }();
  const CurveSet& set = sets[look];
  return {set.blue.data(), set.green.data(), set.red.data()};
}

// Codes 2193 to 2197: curves, then a share of a blend. A material of another size is left out.
int32_t CurvesAndBlend(EngineRecord& record, const BlendImages& images) {
  struct Row {
    CurveLook curves;
    int32_t share;  // of 256
  };
  static constexpr Row kRows[] = {{kSunSet, 154}, {kVivid, 128}, {kGarden, 128}, {kDanGui, 256}, {kSunSet, 256}};
  const Row& row = kRows[record.code - code::kColorTune1];
  const ByteTables tables = TablesOf(row.curves);
  const int32_t width = images.to.width;
  const bool blends = images.material.width == width && images.material.height == images.to.height;
  const bool multiplies = record.code == code::kColorTune1;
  const int32_t share = row.share;
  for (int32_t y = 0; y < images.to.height; ++y) {
    const auto [from, material, to] = RowsOf(images, y);
    MapRow(from, to, width, tables);
    if (!blends) continue;
    if (multiplies) {
      BlendRow({to, material, to}, width, NoExtra{},
               [share](int32_t f, int32_t m) { return (((Product(f, m) - f) * share) >> 8) + f; });
    } else {
      BlendRow({to, material, to}, width, NoExtra{},
               [share](int32_t f, int32_t m) { return (((DoubledProduct(f, m, 0) - f) * share) >> 8) + f; });
    }
  }
  return kEngineDone;
}

int32_t MultiplyAndTone(EngineRecord&, const BlendImages& images) {
  for (int32_t y = 0; y < images.to.height; ++y) {
    const BlendRows rows = RowsOf(images, y);
    BlendRow(rows, images.to.width, NoExtra{}, Product);
    MapRow(rows.to, rows.to, images.to.width, TablesOf(kVelora));
  }
  return kEngineDone;
}

int32_t Charcoal(EngineRecord&, const BlendImages& images) {
  Blend(
      images,
      [](uint32_t f, uint32_t) {
        return FourTimes(static_cast<uint32_t>(Luma255(f & 255, f >> 8 & 255, f >> 16 & 255)));
      },
      [](int32_t, int32_t m, int32_t luma) { return std::min(m + luma, 255); });
  return kEngineDone;
}

int32_t LiftedScreen(EngineRecord&, const BlendImages& images) {
  Blend(images, [](int32_t f, int32_t m) {
    const int32_t lifted = std::min(static_cast<uint16_t>(f * 256) / 182, 255);
    return 255 - (((255 - lifted) * (255 - m)) >> 8);
  });
  return kEngineDone;
}

// Colour stays as far as the blue bytes of `spots` say, and drains to grey.
void FocusRow(const uint8_t* in, const uint8_t* spots, uint8_t* out, int32_t count) {
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(in + 4 * x);
    const uint32_t b = pixel & 255, g = pixel >> 8 & 255, r = pixel >> 16 & 255;
    const uint32_t a = LoadPixel(spots + 4 * x) & 255;
    const uint32_t gray = ((306 * r + 601 * g + 117 * b + 512) >> 10) * (256 - a);
    StorePixel(out + 4 * x,
               (pixel & kAlphaByte) | (b * a + gray) >> 8 | (g * a + gray) >> 8 << 8 | (r * a + gray) >> 8 << 16);
  }
}

// Colour stays where the material, laid around the position, is bright, and drains to grey elsewhere. The material's
// rows run against the frame's.
int32_t FocusColor(EngineRecord& record, const BlendImages& images) {
  const auto& [from, material, to] = images;
  const int64_t cx = WrapMul(record.posX, to.width) / 100;
  const int64_t cy = WrapMul(record.posY, to.height) / 100;
  const int64_t hw = material.width >> 1;
  const int64_t hh = (material.height >> 1) - 1;
  const int64_t left = std::max<int64_t>(cx + 1 - hw, 0);
  const int64_t right = std::min<int64_t>(hw - 1 + cx, to.width - 1);
  const int64_t top = std::max<int64_t>(cy - hh, 0);
  const int64_t bottom = std::min<int64_t>(hh + cy, to.height - 1);
  for (int32_t y = 0; y < to.height; ++y) {
    const uint8_t* in = from.Row(y);
    uint8_t* out = to.Row(y);
    const bool within = y >= top && y <= bottom && left <= right;
    const auto begin = within ? static_cast<int32_t>(left) : to.width;
    const auto end = within ? static_cast<int32_t>(right) + 1 : to.width;
    GrayRow(in, out, begin, kLuma1024);
    if (!within) continue;
    const uint8_t* spots = material.Row(static_cast<int32_t>(hh + cy - y)) + 4 * (hw - 1 + left - cx);
    FocusRow(in + 4 * begin, spots, out + 4 * begin, end - begin);
    GrayRow(in + 4 * end, out + 4 * end, to.width - end, kLuma1024);
  }
  return kEngineDone;
}

// The frame as it came, in workCopy, rows as in the frame.
uint8_t* CopyToWork(EngineRecord& record, const EngineImage& frame) {
  uint8_t* work = EnsureWorkCopy(record, frame.totalBytes);
  if (!work) return nullptr;
  ForEachRow(frame, [=, step = frame.stepBytes](int32_t y, const uint8_t* row) {
    std::memcpy(work + ptrdiff_t{y} * step, row, static_cast<size_t>(step));
  });
  return work;
}

// The mean of a row and its toned picture, opaque.
void MixTonedRow(uint8_t* p, const uint8_t* toned, int32_t width) {
  for (int32_t i = 0; i < 4 * width; ++i) p[i] = static_cast<uint8_t>((toned[i] + p[i]) >> 1);
  for (int32_t x = 0; x < width; ++x) StorePixel(p + 4 * x, LoadPixel(p + 4 * x) | kAlphaByte);
}

// A soft picture of little contrast under the material.
int32_t OldPhoto(EngineRecord& record, const BlendImages& images) {
  const EngineImage& frame = images.to;
  const EngineImage& material = images.material;
  uint8_t* work = CopyToWork(record, frame);
  if (!work) return kEngineNoScratch;
  const size_t step = static_cast<size_t>(frame.stepBytes);
  const cv::Mat sharp(frame.height, frame.width, CV_8UC4, work, step);
  cv::Mat blurred(frame.height, frame.width, CV_8UC4, frame.pixels, step);
  WithWorkers([&] { cv::GaussianBlur(sharp, blurred, cv::Size(3, 3), 10.0, 10.0, cv::BORDER_REFLECT_101); });
  Curve tone;
  for (int32_t i = 0; i < 256; ++i) tone[i] = static_cast<uint8_t>((std::clamp(i, 50, 200) - 50) * 255 / 150);
  const int32_t width = frame.width;
  ForRowBands(width, 0, frame.height, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> toned(static_cast<size_t>(width) * 4);
    for (int32_t y = begin; y < end; ++y) {
      GrayRow(work + static_cast<ptrdiff_t>(y) * frame.stepBytes, toned.data(), width, kLuma255);
      MapRow(toned.data(), toned.data(), width, {tone.data(), tone.data(), tone.data()});
      uint8_t* row = frame.Row(y);
      MixTonedRow(row, toned.data(), width);
      BlendRow(
          {row, material.Row(y), row}, width, [](uint32_t, uint32_t m) { return FourTimes(m >> 24); },
          [](int32_t f, int32_t m, int32_t a) { return (f * (255 - a) + m * a) >> 8; });  // white over white gives 254
    }
  });
  return kEngineDone;
}

// 240 around the centre, falling to 0 towards the corners.
void BuildRadialMask(const EngineImage& frame, uint8_t* mask) {
  std::memset(mask, 240, static_cast<size_t>(frame.totalBytes));
  const int32_t hw = frame.width / 2;
  const int32_t hh = frame.height / 2;
  const auto square = [](int64_t v) { return v * v; };
  const int32_t reach = Trunc32(std::sqrt(static_cast<double>(
      std::max(square(hw) + square(hh), square(frame.width - hw - 1) + square(frame.height - hh - 1)))));
  const int32_t falloff = Trunc32(reach * 0.5);
  const int32_t inner = Trunc32(reach * 0.2);
  const int32_t outer = falloff + inner;
  std::vector<int32_t> fall(static_cast<size_t>(falloff));
  for (int32_t i = 0; i < falloff; ++i) {
    const double angle = (static_cast<double>(i) / falloff - 0.5) * 3.1415925;
    fall[static_cast<size_t>(i)] = Trunc32((std::sin(angle) + 1) * 0.5 * 1048576);
  }
  for (int32_t y = 0; y < frame.height; ++y) {
    uint8_t* row = mask + static_cast<ptrdiff_t>(y) * frame.stepBytes;
    for (int32_t x = 0; x < frame.width; ++x) {
      const int32_t d = Trunc32(std::sqrt(static_cast<double>(square(x - hw) + square(y - hh))));
      if (d >= outer) {
        row[4 * x] = 0;
      } else if (d > inner) {
        row[4 * x] = static_cast<uint8_t>((fall[static_cast<size_t>(outer - d)] * 240) >> 20);
      }
    }
  }
}

// The screen of the material and the picture's negative light, as far as the blue bytes of `mask` say.
void CanvasRow(const BlendRows& rows, const uint8_t* mask, int32_t width) {
  for (int32_t x = 0; x < width; x += kBlendRun) {
    const int32_t count = std::min(kBlendRun, width - x);
    const uint8_t* f = rows.from + 4 * x;
    const uint8_t* m = rows.material + 4 * x;
    uint8_t* to = rows.to + 4 * x;
    alignas(64) uint8_t lights[4 * kBlendRun], weights[4 * kBlendRun];
    for (int32_t i = 0; i < count; ++i) {
      const uint32_t pixel = LoadPixel(f, i);
      const uint32_t luma = (29 * (pixel & 255) + 150 * (pixel >> 8 & 255) + 76 * (pixel >> 16 & 255) + 255) >> 8;
      StorePixel(lights, i, FourTimes(255 - luma));
      StorePixel(weights, i, FourTimes(LoadPixel(mask, x + i) & 255));
    }
#pragma GCC ivdep
    for (int32_t i = 0; i < 4 * count; ++i) {
      const int32_t s = 255 - (((255 - m[i]) * lights[i]) >> 8);
      const auto color = static_cast<uint8_t>((((s - m[i]) * weights[i]) >> 8) + m[i]);
      const uint8_t alpha = kAlphas[static_cast<size_t>(i)];
      to[i] = static_cast<uint8_t>((color & ~alpha) | (f[i] & alpha));
    }
  }
}

// The first frame of a size is masked radially. Each later frame masks itself by its blue bytes, as if its copy had
// been laid over the mask; this is meant.
int32_t Canvas(EngineRecord& record, const BlendImages& images) {
  const EngineImage& frame = images.to;
  EngineImage mask = images.from;
  if (record.dirtyFlags & kDirtyParticles) {
    uint8_t* radial = EnsureWorkCopy(record, frame.totalBytes);
    if (!radial) return kEngineNoScratch;
    BuildRadialMask(frame, radial);
    record.dirtyFlags &= ~kDirtyParticles;
    mask = frame;
    mask.pixels = radial;
  }
  ForEachRow(frame, [=](int32_t y, uint8_t*) { CanvasRow(RowsOf(images, y), mask.Row(y), frame.width); });
  return kEngineDone;
}

// Soft light of the grey on the paper `m`, divided by the largest grey around.
void PencilRow(const uint8_t* mid, const uint8_t* largest, const uint8_t* m, uint8_t* out, int32_t width) {
  // Masks in place of branches, which would keep the loop from becoming vector code.
#pragma GCC ivdep
  for (int32_t x = 1; x < width - 1; ++x) {
    const int32_t g = mid[x];
    const int32_t paper = static_cast<int32_t>(LoadPixel(m + 4 * x) & 255) - 128;
    const auto root = static_cast<int32_t>(std::sqrt(static_cast<float>(g)));
    const int32_t dark = ((paper * (255 - g) + 32768) * g) >> 15;
    const int32_t bright = ((root * 16 - g) * paper + g * 128) >> 7;
    const int32_t below = paper >> 31;
    const int32_t v = (dark & below) | (bright & ~below);
    // Exact, as the quotient is far from the end of a float's digits. Black around gives white.
    const int32_t black = (largest[x] - 1) >> 31;
    const auto ratio =
        static_cast<int32_t>(static_cast<float>((v & 255) << 8) / static_cast<float>(largest[x] - black));
    out[x] = static_cast<uint8_t>(std::min(ratio, 255) | (black & 255));
  }
}

// A pencil drawing over the material's paper.
int32_t Pencil(EngineRecord& record, const BlendImages& images) {
  const EngineImage& frame = images.to;
  const EngineImage& material = images.material;
  uint8_t* plane = EnsureWorkCopy(record, frame.totalBytes);
  if (!plane) return kEngineNoScratch;
  MakeGrayPlane(frame, plane);
  const int32_t width = frame.width;
  ForRowBands(width, 1, frame.height - 1, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> scratch(3 * static_cast<size_t>(width));
    uint8_t* columns = scratch.data();
    uint8_t* largest = columns + width;
    uint8_t* out = largest + width;
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* mid = plane + static_cast<ptrdiff_t>(y) * width;
      MaxOf3x3({mid - width, mid, mid + width}, 1, width, columns, largest);
      PencilRow(mid, largest, material.Row(y), out, width);
      if (width > 2) StoreGrays(frame.Row(y) + 4, out + 1, width - 2);
    }
  });
  FillRim(frame, 255);
  return kEngineDone;
}

// Code 2206, which no effect uses: a drawing from the grey, and the material over it wherever it is not pure white.
int32_t DrawingUnderMaterial(EngineRecord& record, const BlendImages& images) {
  const EngineImage& frame = images.to;
  const EngineImage& material = images.material;
  uint8_t* plane = EnsureWorkCopy(record, frame.totalBytes);
  uint8_t* source = EnsureSourceCopy(record, frame.totalBytes);
  if (!plane || !source) return kEngineNoScratch;
  std::memcpy(source, frame.pixels, static_cast<size_t>(frame.totalBytes));
  MakeGrayPlane(frame, plane);
  const int32_t width = frame.width;
  std::vector<uint8_t> scratch(2 * static_cast<size_t>(width));
  uint8_t* largest = scratch.data() + width;
  for (int32_t y = 1; y < frame.height - 1; ++y) {
    const uint8_t* mid = plane + static_cast<ptrdiff_t>(y) * width;
    MaxOf3x3({mid - width, mid, mid + width}, 1, width, scratch.data(), largest);
    for (int32_t x = 1; x < width - 1; ++x) {
      uint8_t* p = frame.Row(y) + 4 * x;
      const uint8_t* m = material.Row(y) + 4 * x;
      const uint8_t* s = source + static_cast<ptrdiff_t>(y) * frame.stepBytes + 4 * x;
      const uint32_t reciprocal = (1u << 24) / (8u + largest[x]);
      SetGray(p, static_cast<uint8_t>(std::min((reciprocal * mid[x]) >> 16, 255u)));
      if (m[0] == 255 && m[1] == 255 && m[2] == 255 && m[3] != 0) continue;
      for (int32_t c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>(((m[c] - s[c]) * m[3] >> 8) + s[c]);
    }
  }
  return kEngineDone;
}

}  // namespace

std::span<const MergeLook> Routines() {
  static constexpr MergeLook kLooks[] = {
      {code::kColorTune1, code::kColorTune5, CurvesAndBlend, true, true},
      {code::kDarkCorners, code::kDarkCorners, MultiplyAndTone, true},
      {code::kCharcoal, code::kCharcoal, Charcoal, true},
      {code::kLiftedScreen, code::kLiftedScreen, LiftedScreen, true},
      {code::kFocusColor, code::kFocusColor, FocusColor, true, true},
      {code::kOldPhoto, code::kOldPhoto, OldPhoto, false},
      {code::kCanvasDrawing, code::kCanvasDrawing, Canvas, true},
      {code::kPencilDrawing, code::kPencilDrawing, Pencil, false},
      {code::kDrawingUnderMaterial, code::kDrawingUnderMaterial, DrawingUnderMaterial, false},
  };
  return kLooks;
}

}  // namespace HWY_NAMESPACE
}  // namespace merge_looks
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace merge_looks {
HWY_EXPORT(Routines);
}  // namespace merge_looks

std::span<const MergeLook> MergeLookRows() {
  using namespace merge_looks;
  return HWY_DYNAMIC_DISPATCH(Routines)();
}

#endif  // HWY_ONCE

// Looks over the frame and a material: curves with a blend, an old photo, canvas, pencil.
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "engine/curve.h"
#include "engine/merge_routines.h"
#include "framework/numeric.h"
#include "framework/pixel_kernels.h"
#include "platform/workers.h"

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

void MapLook(const EngineImage& frame, CurveLook look) {
  static const std::array<CurveSet, kCurveLooks> sets = [] {
    std::array<CurveSet, kCurveLooks> made;
    std::transform(std::begin(kKnots), std::end(kKnots), made.begin(), [](const LookKnots& knots) {
      return CurveSet{MakeNineCurve(knots.blue), MakeNineCurve(knots.green), MakeNineCurve(knots.red)};
    });
    return made;
  }();
  const CurveSet& set = sets[look];
  MapChannels(frame, frame, set.blue.data(), set.green.data(), set.red.data());
}

// Codes 2193 to 2197: curves, then a share of a blend. A material of another size is left out.
int32_t CurvesAndBlend(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  struct Row {
    CurveLook curves;
    int32_t share;  // of 256
  };
  static constexpr Row kRows[] = {{kSunSet, 154}, {kVivid, 128}, {kGarden, 128}, {kDanGui, 256}, {kSunSet, 256}};
  const Row& row = kRows[record.code - code::kColorTune1];
  MapLook(frame, row.curves);
  if (material.width != frame.width || material.height != frame.height) return kEngineDone;
  const int32_t share = row.share;
  if (record.code == code::kColorTune1) {
    Blend(frame, material, [share](int32_t f, int32_t m) {
      const int32_t s = Product(f, m);
      return (((s - f) * share) >> 8) + f;
    });
  } else {
    Blend(frame, material, [share](int32_t f, int32_t m) {
      const int32_t s = DoubledProduct(f, m, 0);
      return (((s - f) * share) >> 8) + f;
    });
  }
  return kEngineDone;
}

int32_t MultiplyAndTone(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, Product);
  MapLook(frame, kVelora);
  return kEngineDone;
}

int32_t Charcoal(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(
      frame, material,
      [](uint32_t f, uint32_t) {
        return FourTimes(static_cast<uint32_t>(Luma255(f & 255, f >> 8 & 255, f >> 16 & 255)));
      },
      [](int32_t, int32_t m, int32_t luma) { return std::min(m + luma, 255); });
  return kEngineDone;
}

int32_t LiftedScreen(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, [](int32_t f, int32_t m) {
    const int32_t lifted = std::min(static_cast<uint16_t>(f * 256) / 182, 255);
    return 255 - (((255 - lifted) * (255 - m)) >> 8);
  });
  return kEngineDone;
}

// Colour stays by `spots`, a byte for each pixel from `left` to `right`, and drains to grey elsewhere.
void FocusRow(uint8_t* p, int32_t width, const uint8_t* spots, int64_t left, int64_t right) {
  for (int32_t x = 0; x < width; ++x, p += 4) {
    const int32_t gray = Luma1024(p);
    const int32_t a = x >= left && x <= right ? spots[4 * (x - left)] : 0;
    for (int32_t c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>((p[c] * a + gray * (256 - a)) >> 8);
  }
}

// Colour stays where the material, laid around the position, is bright, and drains to grey elsewhere. The material's
// rows run against the frame's.
int32_t FocusColor(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  const int64_t cx = WrapMul(record.posX, frame.width) / 100;
  const int64_t cy = WrapMul(record.posY, frame.height) / 100;
  const int64_t hw = material.width >> 1;
  const int64_t hh = (material.height >> 1) - 1;
  const int64_t left = std::max<int64_t>(cx + 1 - hw, 0);
  const int64_t right = std::min<int64_t>(hw - 1 + cx, frame.width - 1);
  const int64_t top = std::max<int64_t>(cy - hh, 0);
  const int64_t bottom = std::min<int64_t>(hh + cy, frame.height - 1);
  ForEachRow(frame, [=](int32_t y, uint8_t* p) {
    const bool within = y >= top && y <= bottom && left <= right;
    const int32_t row = static_cast<int32_t>(hh + cy - y);
    if (within) {
      FocusRow(p, frame.width, material.Row(row) + 4 * (hw - 1 + left - cx), left, right);
    } else {
      FocusRow(p, frame.width, nullptr, 0, -1);
    }
  });
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
int32_t OldPhoto(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
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
      MixTonedRow(frame.Row(y), toned.data(), width);
    }
  });
  Blend(
      frame, material, [](uint32_t, uint32_t m) { return FourTimes(m >> 24); },
      [](int32_t f, int32_t m, int32_t a) { return (f * (255 - a) + m * a) >> 8; });  // white over white gives 254
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

// The screen of the material and the picture's negative light, as far as the blue bytes of `k` say.
void CanvasRow(uint8_t* p, const uint8_t* m, const uint8_t* k, int32_t width) {
  for (int32_t x = 0; x < width; ++x, p += 4, m += 4, k += 4) {
    const int32_t light = 255 - Luma255(p);
    const int32_t weight = k[0];
    for (int32_t c = 0; c < 3; ++c) {
      const int32_t s = 255 - (((255 - m[c]) * light) >> 8);
      p[c] = static_cast<uint8_t>((((s - m[c]) * weight) >> 8) + m[c]);
    }
  }
}

// The first frame of a size is masked radially. The mask is then overwritten by the copy of each later frame, whose
// blue bytes serve in its place; this is meant.
int32_t Canvas(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  const uint8_t* mask = frame.pixels;
  if (record.dirtyFlags & kDirtyParticles) {
    uint8_t* radial = EnsureWorkCopy(record, frame.totalBytes);
    if (!radial) return kEngineNoScratch;
    BuildRadialMask(frame, radial);
    record.dirtyFlags &= ~kDirtyParticles;
    mask = radial;
  }
  ForEachRow(frame, [=](int32_t y, uint8_t* p) {
    CanvasRow(p, material.Row(y), mask + static_cast<ptrdiff_t>(y) * frame.stepBytes, frame.width);
  });
  return kEngineDone;
}

// Soft light of the grey on the paper `m`, divided by the largest grey around.
void PencilRow(const uint8_t* mid, const uint8_t* largest, const uint8_t* m, const int32_t* root, uint8_t* out,
               int32_t width) {
  for (int32_t x = 1; x < width - 1; ++x) {
    const int32_t g = mid[x];
    const int32_t paper = m[4 * x] - 128;
    const int32_t v = paper < 0 ? (paper * (255 - g) + 32768) * g >> 15 : ((root[g] * 16 - g) * paper + g * 128) >> 7;
    // Exact, as the quotient is far from the end of a float's digits.
    const float ratio = static_cast<float>((v & 255) << 8) / static_cast<float>(std::max<int32_t>(largest[x], 1));
    out[x] = largest[x] ? static_cast<uint8_t>(std::min(ratio, 255.0f)) : 255;
  }
}

// A pencil drawing over the material's paper.
int32_t Pencil(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  uint8_t* plane = EnsureWorkCopy(record, frame.totalBytes);
  if (!plane) return kEngineNoScratch;
  MakeGrayPlane(frame, plane);
  int32_t root[256];
  for (int32_t i = 0; i < 256; ++i) root[i] = static_cast<int32_t>(std::sqrt(static_cast<double>(i)));
  const int32_t width = frame.width;
  ForRowBands(width, 1, frame.height - 1, [=, &root](int32_t begin, int32_t end) {
    std::vector<uint8_t> scratch(3 * static_cast<size_t>(width));
    uint8_t* columns = scratch.data();
    uint8_t* largest = columns + width;
    uint8_t* out = largest + width;
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* mid = plane + static_cast<ptrdiff_t>(y) * width;
      MaxOf3x3({mid - width, mid, mid + width}, 1, width, columns, largest);
      PencilRow(mid, largest, material.Row(y), root, out, width);
      if (width > 2) StoreGrays(frame.Row(y) + 4, out + 1, width - 2);
    }
  });
  FillRim(frame, 255);
  return kEngineDone;
}

// Code 2206, which no effect uses: a drawing from the grey, and the material over it wherever it is not pure white.
int32_t DrawingUnderMaterial(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
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
      {code::kColorTune1, code::kColorTune5, CurvesAndBlend, true},
      {code::kDarkCorners, code::kDarkCorners, MultiplyAndTone},
      {code::kCharcoal, code::kCharcoal, Charcoal},
      {code::kLiftedScreen, code::kLiftedScreen, LiftedScreen},
      {code::kFocusColor, code::kFocusColor, FocusColor, true},
      {code::kOldPhoto, code::kOldPhoto, OldPhoto},
      {code::kCanvasDrawing, code::kCanvasDrawing, Canvas},
      {code::kPencilDrawing, code::kPencilDrawing, Pencil},
      {code::kDrawingUnderMaterial, code::kDrawingUnderMaterial, DrawingUnderMaterial},
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

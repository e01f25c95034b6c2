#include "Source/LensCorrection.h"

#include <algorithm>

#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/pixels.h"

// The places are plain arithmetic, compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "LensCorrection.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef KVX_SOURCE_LENS_PLACES
#define KVX_SOURCE_LENS_PLACES
namespace lens_correction {

// With r the squared distance from (cx, cy), 1 at the corner as seen from the middle, a pixel shows what lies
// 1 + center * r + edges * r * r times as far from the centre.
struct Lens {
  double width, height;
  double cx, cy;
  double center, edges;
};

constexpr int32_t kChunk = 256;
struct Places {
  int32_t columns[kChunk];
  int32_t rows[kChunk];
};

}  // namespace lens_correction
#endif

HWY_BEFORE_NAMESPACE();
namespace lens_correction {
namespace HWY_NAMESPACE {
namespace {

// A position cut toward zero, -1 or `size` standing for any position outside, NaN included.
HWY_INLINE int32_t CutInto(double position, double size) {
  const double low = position > -1.0 ? position : -1.0;
  return static_cast<int32_t>(low < size ? low : size);
}

}  // namespace

// What the pixels of a row from column `begin` on show.
void FindPlaces(const Lens& lens, int32_t begin, int32_t count, int32_t y, Places& __restrict places) {
  const auto [w, h, cx, cy, center, edges] = lens;
  const double k = 4 / (w * w + h * h);
  const double dy = y - cy;
  for (int32_t i = 0; i < count; ++i) {
    const double dx = begin + i - cx;
    const double r = (dx * dx + dy * dy) * k;
    const double s = r * r * edges + r * center + 1;
    places.columns[i] = CutInto(s * dx + cx, w);
    places.rows[i] = CutInto(s * dy + cy, h);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace lens_correction
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lens_correction {
HWY_EXPORT(FindPlaces);
}  // namespace lens_correction

namespace {

constexpr ParamRow kParams[] = {{u"X", 0, 0, 100}, {u"Y", 0, 0, 100}, {u"Center", 0, 0, 100}, {u"Edges", 0, 0, 100}};
constexpr uint32_t kOpaqueBlack = 0xFF000000;

void CorrectLens(ConstFrameView src, FrameView dst, const lens_correction::Lens& lens) {
  using namespace lens_correction;
  ForRowBands(dst.width, 0, dst.height, [=](int32_t first, int32_t last) {
    Places places;
    for (int32_t y = first; y < last; ++y) {
      for (int32_t begin = 0; begin < dst.width; begin += kChunk) {
        const int32_t count = std::min(kChunk, dst.width - begin);
        HWY_DYNAMIC_DISPATCH(FindPlaces)(lens, begin, count, y, places);
        uint8_t* out = dst.Pixel(begin, y);
        for (int32_t i = 0; i < count; ++i, out += 4) {
          const int32_t column = places.columns[i], row = places.rows[i];
          const bool inside = static_cast<uint32_t>(column) < static_cast<uint32_t>(dst.width) &&
                              static_cast<uint32_t>(row) < static_cast<uint32_t>(dst.height);
          uint32_t pixel = kOpaqueBlack;
          if (inside) pixel = LoadPixel(src.Pixel(column, row));
          StorePixel(out, pixel);
        }
      }
    }
  });
}

}  // namespace

void CLensCorrection::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {x_ * 100, y_ * 100, center_ * 100, edges_ * 100});
}

void CLensCorrection::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  x_ = Param(params, 1) / 100;
  y_ = Param(params, 2) / 100;
  center_ = Param(params, 3) / 100;
  edges_ = Param(params, 4) / 100;
  const lens_correction::Lens lens = {
      static_cast<double>(width), static_cast<double>(height), x_ * width, y_ * height, center_, edges_};
  CorrectLens(PackedSource(src, width, height), PackedDest(dst, width, height), lens);
}

#endif  // HWY_ONCE

#include "Source/PerspectiveFilter.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "framework/host_log.h"
#include "framework/params.h"
#include "framework/pixels.h"

// The places are plain arithmetic, compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "PerspectiveFilter.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace perspective {
namespace HWY_NAMESPACE {

// To the nearest whole number, halves to the even one. Beyond -1 and `size`, and for NaN, some number outside 0..size
// - 1.
HWY_INLINE int32_t RoundInto(double position, double size) {
  constexpr double kMagic = 6755399441055744.0;  // 1.5 * 2^52: leaves no bits below one
  const double low = position > -1.0 ? position : -1.0;
  return static_cast<int32_t>(((low < size ? low : size) + kMagic) - kMagic);
}

// `size` times the place the share `v` of the way from `first` to `second`, for each of `count` columns.
void FindPlaces(const double* first, const double* second, double v, double size, int32_t count, int32_t* places) {
  for (int32_t x = 0; x < count; ++x) places[x] = RoundInto(size * (first[x] + v * (second[x] - first[x])), size);
}

}  // namespace HWY_NAMESPACE
}  // namespace perspective
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace perspective {
HWY_EXPORT(FindPlaces);
}  // namespace perspective

namespace {

constexpr ParamRow kParams[] = {{u"BottomLeftX", 0, 0, 100},  {u"BottomLeftY", 0, 0, 100}, {u"BottomRightX", 0, 0, 100},
                                {u"BottomRightY", 0, 0, 100}, {u"CenterX", 0, 0, 100},     {u"CenterY", 0, 0, 100},
                                {u"TopX", 0, 0, 100},         {u"TopY", 0, 0, 100}};

struct Point {
  double x;
  double y;
};

// Sends every source pixel to its place in the quadrilateral p0, p1 (first edge), p2, p3 (second edge). Pixels that
// nothing reaches stay.
void LayInto(ConstFrameView src, FrameView dst, Point p0, Point p1, Point p2, Point p3) {
  using namespace perspective;
  const double w = dst.width;
  const double h = dst.height;
  // Where the first edge and the second one are, column by column.
  const auto edge = [w, count = dst.width](double from, double to) {
    std::vector<double> places(static_cast<size_t>(count));
    for (int32_t x = 0; x < count; ++x) places[static_cast<size_t>(x)] = from + x / w * (to - from);
    return places;
  };
  const std::vector<double> firstX = edge(p0.x, p1.x), firstY = edge(p0.y, p1.y);
  const std::vector<double> secondX = edge(p2.x, p3.x), secondY = edge(p2.y, p3.y);
  std::vector<int32_t> columns(static_cast<size_t>(dst.width)), rows(static_cast<size_t>(dst.width));
  for (int32_t y = 0; y < dst.height; ++y) {
    const double v = y / h;
    HWY_DYNAMIC_DISPATCH(FindPlaces)(firstX.data(), secondX.data(), v, w, dst.width, columns.data());
    HWY_DYNAMIC_DISPATCH(FindPlaces)(firstY.data(), secondY.data(), v, h, dst.width, rows.data());
    const uint8_t* in = src.Row(y);
    for (size_t x = 0; x < columns.size(); ++x, in += 4) {
      if (static_cast<uint32_t>(columns[x]) < static_cast<uint32_t>(dst.width) &&
          static_cast<uint32_t>(rows[x]) < static_cast<uint32_t>(dst.height)) {
        StorePixel(dst.Pixel(columns[x], rows[x]), LoadPixel(in));
      }
    }
  }
}

}  // namespace

void CPerspectiveFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  const auto& c = corners_;
  DescribeParam(desc, index, kParams,
                {c[0] * 100, c[1] * 100, c[2] * 100, c[3] * 100, c[4] * 100, c[5] * 100, c[6] * 100, c[7] * 100});
}

void CPerspectiveFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                                 const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != 48 || width <= 0 || height <= 0) return;
  for (int k = 0; k < 8; ++k) corners_[static_cast<size_t>(k)] = Param(params, k + 1) / 100;
  // One move, whatever the steps; the quadrilateral then covers it by rows.
  std::memmove(dst, src, static_cast<size_t>(height) * static_cast<size_t>(std::min(srcStep, dstStep)));
  const auto& c = corners_;
  try {
    LayInto(ConstFrameView{src, width, height, srcStep}, FrameView{dst, width, height, dstStep}, {c[0], c[1]},
            {c[2], c[3]}, {c[4], c[5]}, {c[6], c[7]});
  } catch (const std::bad_alloc&) {
    KVX_LOG_ALLOCATION_FAILURE("PerspectiveFilter");
  }
}

#endif  // HWY_ONCE

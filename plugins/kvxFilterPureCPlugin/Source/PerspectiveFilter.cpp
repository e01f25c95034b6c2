#include "Source/PerspectiveFilter.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "framework/host_log.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"BottomLeftX", 0, 0, 100},  {u"BottomLeftY", 0, 0, 100}, {u"BottomRightX", 0, 0, 100},
                                {u"BottomRightY", 0, 0, 100}, {u"CenterX", 0, 0, 100},     {u"CenterY", 0, 0, 100},
                                {u"TopX", 0, 0, 100},         {u"TopY", 0, 0, 100}};

struct Point {
  double x;
  double y;
};

Point Lerp(Point a, Point b, double t) {
  return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}

// To the nearest whole number, halves to the even one. Beyond -1 and `size`, and for NaN, some number outside 0..size
// - 1.
int32_t RoundInto(double position, double size) {
  constexpr double kMagic = 6755399441055744.0;  // 1.5 * 2^52: leaves no bits below one
  const double low = position > -1.0 ? position : -1.0;
  return static_cast<int32_t>(((low < size ? low : size) + kMagic) - kMagic);
}

// Sends every source pixel to its place in the quadrilateral p0, p1 (first edge), p2, p3 (second edge). Pixels that
// nothing reaches stay.
void LayInto(ConstFrameView src, FrameView dst, Point p0, Point p1, Point p2, Point p3) {
  const double w = dst.width;
  const double h = dst.height;
  std::vector<Point> first(static_cast<size_t>(dst.width)), second(static_cast<size_t>(dst.width));
  for (int32_t x = 0; x < dst.width; ++x) {
    first[static_cast<size_t>(x)] = Lerp(p0, p1, x / w);
    second[static_cast<size_t>(x)] = Lerp(p2, p3, x / w);
  }
  for (int32_t y = 0; y < dst.height; ++y) {
    const double v = y / h;
    const uint8_t* in = src.Row(y);
    for (int32_t x = 0; x < dst.width; ++x, in += 4) {
      const Point p = Lerp(first[static_cast<size_t>(x)], second[static_cast<size_t>(x)], v);
      const int32_t px = RoundInto(w * p.x, w);
      const int32_t py = RoundInto(h * p.y, h);
      if (static_cast<uint32_t>(px) < static_cast<uint32_t>(dst.width) &&
          static_cast<uint32_t>(py) < static_cast<uint32_t>(dst.height)) {
        std::memcpy(dst.Pixel(px, py), in, 4);
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

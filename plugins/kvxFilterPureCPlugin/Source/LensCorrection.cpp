#include "Source/LensCorrection.h"

#include <algorithm>
#include <cstring>

#include "framework/frame.h"
#include "framework/params.h"
#include "framework/pixels.h"

namespace {

constexpr ParamRow kParams[] = {{u"X", 0, 0, 100}, {u"Y", 0, 0, 100}, {u"Center", 0, 0, 100}, {u"Edges", 0, 0, 100}};
constexpr uint32_t kOpaqueBlack = 0xFF000000;

// A position cut toward zero, -1 or `size` standing for any position outside, NaN included.
int32_t CutInto(double position, double size) {
  const double low = position > -1.0 ? position : -1.0;
  return static_cast<int32_t>(low < size ? low : size);
}

// With r the squared distance from (cx, cy), 1 at the corner as seen from the middle, a pixel shows what lies
// 1 + center * r + edges * r * r times as far from the centre.
void CorrectLens(ConstFrameView src, FrameView dst, double cx, double cy, double center, double edges) {
  constexpr int32_t kChunk = 256;
  const double w = dst.width;
  const double h = dst.height;
  const double k = 4 / (w * w + h * h);
  int32_t columns[kChunk];
  int32_t rows[kChunk];
  for (int32_t y = 0; y < dst.height; ++y) {
    const double dy = y - cy;
    for (int32_t x0 = 0; x0 < dst.width; x0 += kChunk) {
      const int32_t count = std::min(kChunk, dst.width - x0);
      for (int32_t i = 0; i < count; ++i) {
        const double dx = x0 + i - cx;
        const double r = (dx * dx + dy * dy) * k;
        const double s = r * r * edges + r * center + 1;
        columns[i] = CutInto(s * dx + cx, w);
        rows[i] = CutInto(s * dy + cy, h);
      }
      uint8_t* out = dst.Pixel(x0, y);
      for (int32_t i = 0; i < count; ++i, out += 4) {
        const bool inside = static_cast<uint32_t>(columns[i]) < static_cast<uint32_t>(dst.width) &&
                            static_cast<uint32_t>(rows[i]) < static_cast<uint32_t>(dst.height);
        uint32_t pixel = kOpaqueBlack;
        if (inside) pixel = LoadPixel(src.Pixel(columns[i], rows[i]));
        StorePixel(out, pixel);
      }
    }
  }
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
  CorrectLens(PackedSource(src, width, height), PackedDest(dst, width, height), x_ * width, y_ * height, center_,
              edges_);
}

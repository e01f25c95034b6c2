#include "Source/Ribbon.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"Swing", 0, 0, 100}, {u"Frequency", 0, 0, 100}};

void Wave(ConstFrameView src, FrameView dst, double amplitude, double frequency) {
  std::vector<double> offset(static_cast<size_t>(std::max(dst.width, 0)));
  for (int32_t x = 0; x < dst.width; ++x) offset[static_cast<size_t>(x)] = std::sin(x * frequency) * amplitude;
  ForRowBands(dst.width, 0, dst.height, [=, offsets = offset.data()](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      uint8_t* out = dst.Row(y);
      for (int32_t x = 0; x < dst.width; ++x) {
        const double from = y - offsets[x];
        // Cut toward zero: what lies up to one row above the frame still takes row 0.
        const bool inside = from > -1 && from < dst.height;
        const uint32_t pixel = LoadPixel(src.Row(inside ? static_cast<int32_t>(from) : 0), x);
        StorePixel(out, x, inside ? pixel : kOpaqueBlack);
      }
    }
  });
}

}  // namespace

void CRibbon::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {swing_, frequency_});
}

void CRibbon::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  swing_ = Param(params, 1);
  frequency_ = Param(params, 2);
  Wave(ConstFrameView{src, width, height, srcStep}, FrameView{dst, width, height, dstStep}, swing_ * 100 * height / 360,
       frequency_ / 0.2 * 3.1415926 / width);
}

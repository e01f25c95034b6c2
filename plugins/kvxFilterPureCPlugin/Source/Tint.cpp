#include "Source/Tint.h"

#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/pixels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Tint.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// The colours of one output byte.
#ifndef KVX_SOURCE_TINT_LINE
#define KVX_SOURCE_TINT_LINE
namespace tint {
struct Line {
  float black, span;
};
struct Lines {
  Line line0, line1, line2;
};
}  // namespace tint
#endif

// Plain loops, compiled once for each vector target.
HWY_BEFORE_NAMESPACE();
namespace tint {
namespace HWY_NAMESPACE {
namespace {

// NaN gives 0.
HWY_INLINE uint32_t ByteOf(double fraction) {
  fraction = fraction > 0.0 ? fraction : 0.0;
  fraction = fraction < 1.0 ? fraction : 1.0;
  return static_cast<uint32_t>(static_cast<int32_t>(fraction * 255));
}

HWY_INLINE float FractionOf(uint32_t byte) {
  return static_cast<float>(static_cast<int32_t>(byte & 255)) / 255.0f;
}

}  // namespace

// The weight 0.299 stands on byte 0, and the untinted share swaps bytes 0 and 2: both are meant.
void TintRow(const uint8_t* src, uint8_t* dst, int32_t count, const Lines& lines, double amount) {
  const auto [line0, line1, line2] = lines;
  const double rest = 1 - amount;
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(src + 4 * x);
    const float byte0 = FractionOf(pixel), byte1 = FractionOf(pixel >> 8), byte2 = FractionOf(pixel >> 16);
    const float luma = static_cast<float>(byte1 * 0.587 + byte2 * 0.114 + byte0 * 0.299);
    const uint32_t out0 = ByteOf((line0.black + line0.span * luma) * amount + byte2 * rest);
    const uint32_t out1 = ByteOf((line1.black + line1.span * luma) * amount + byte1 * rest);
    const uint32_t out2 = ByteOf((line2.black + line2.span * luma) * amount + byte0 * rest);
    StorePixel(dst + 4 * x, out0 | out1 << 8 | out2 << 16 | (pixel & kAlphaByte));
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace tint
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tint {
HWY_EXPORT(TintRow);
}  // namespace tint

namespace {

constexpr ParamRow kParams[] = {{u"WhiteColorR", 0, 0, 255}, {u"WhiteColorG", 0, 0, 255}, {u"WhiteColorB", 0, 0, 255},
                                {u"BlackColorR", 0, 0, 255}, {u"BlackColorG", 0, 0, 255}, {u"BlackColorB", 0, 0, 255},
                                {u"Amount", 0, 0, 100}};

tint::Line LineOf(double white, double black) {
  const float k = static_cast<float>(black);
  return {k, static_cast<float>(white) - k};
}

}  // namespace

void CTint::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {white_[0] * 255, white_[1] * 255, white_[2] * 255, black_[0] * 255, black_[1] * 255, black_[2] * 255,
                 amount_ * 100});
}

void CTint::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  for (int c = 0; c < 3; ++c) {
    white_[c] = Param(params, 1 + c) / 255;
    black_[c] = Param(params, 4 + c) / 255;
  }
  amount_ = Param(params, 7) / 100;
  using namespace tint;
  const Lines lines = {LineOf(white_[2], black_[2]), LineOf(white_[1], black_[1]), LineOf(white_[0], black_[0])};
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  ForRowBands(out.width, 0, out.height, [=, amount = amount_](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y)
      HWY_DYNAMIC_DISPATCH(TintRow)(in.Row(y), out.Row(y), out.width, lines, amount);
  });
}

#endif  // HWY_ONCE

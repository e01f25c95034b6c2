#include "Source/LissajousFilter.h"

#include <cmath>
#include <numbers>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr int32_t kEffectId = 53;
constexpr ParamRow kParams[] = {{u"RatioX", 2, 0, 1}, {u"RatioY", 2, 0, 1}};
constexpr double kWholeRatio = 0.999999;

void DrawCurve(FrameView dst, double ratioX, double ratioY) {
  const int32_t count = WrapMul(WrapAdd(dst.width, dst.height), 15);
  const double stepX = 2 * (1 / (kWholeRatio - ratioX)) * std::numbers::pi / count;
  const double stepY = 2 * (1 / (kWholeRatio - ratioY)) * std::numbers::pi / count;
  double angleX = 0;
  double angleY = 0;
  for (int32_t i = 0; i < count; ++i, angleX += stepX, angleY += stepY) {
    const int32_t y = Trunc32((std::cos(angleY) + 1) * (dst.height - 1) * 0.5);
    const int32_t x = Trunc32((std::sin(angleX) + 1) * (dst.width - 1) * 0.5);
    if (x >= 0 && x < dst.width && y >= 0 && y < dst.height) StorePixel(dst.Row(y), x, 0xFFFFFFFF);
  }
}

}  // namespace

void CLissajousFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {ratioX_, ratioY_});
}

void CLissajousFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kEffectId) return;
  ratioX_ = Param(params, 1);
  ratioY_ = Param(params, 2);
  const FrameView out = PackedDest(dst, width, height);
  CopyVisible(PackedSource(src, width, height), out);
  DrawCurve(out, ratioX_, ratioY_);
}

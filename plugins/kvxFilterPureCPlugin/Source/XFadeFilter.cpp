#include "Source/XFadeFilter.h"

#include "framework/frame.h"
#include "framework/params.h"
#include "framework/zeroed_array.h"

namespace {
constexpr int32_t kEffectId = 56;
constexpr ParamRow kParams[] = {{u"Fade", 2, 0, 1}};
}  // namespace

void CXFadeFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {fade_});
}

// Both pictures of the fade are the source, whose weights sum up to 255 wherever the fade stands: every byte, alpha
// included, loses one level.
void CXFadeFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kEffectId) return;
  fade_ = Param(params, 1);
  const size_t bytes = 4 * PixelCount(width, height);
  for (size_t i = 0; i < bytes; ++i) dst[i] = static_cast<uint8_t>(src[i] - (src[i] > 0));  // src[i] * 255 >> 8
}

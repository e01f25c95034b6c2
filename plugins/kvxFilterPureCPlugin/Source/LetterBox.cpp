#include "Source/LetterBox.h"

#include <algorithm>
#include <cstring>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"BorderWidth", 0, 0, 100}};
constexpr uint32_t kOpaqueBlack = 0xFF000000;

void BlackRows(FrameView dst, int32_t first, int32_t count) {
  for (int32_t y = first; y < first + count; ++y) {
    for (int32_t x = 0; x < dst.width; ++x) std::memcpy(dst.Pixel(x, y), &kOpaqueBlack, 4);
  }
}

void LetterBox(ConstFrameView src, FrameView dst, int32_t bar) {
  BlackRows(dst, 0, bar);
  BlackRows(dst, dst.height - bar, bar);
  for (int32_t y = bar; y < dst.height - bar; ++y) {
    std::memcpy(dst.Row(y), src.Row(y), static_cast<size_t>(dst.width) * 4);
  }
}

}  // namespace

void CLetterBox::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {borderWidth_ * 100});
}

void CLetterBox::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  borderWidth_ = Param(params, 1) / 100;
  if (width <= 0 || height <= 0) return;
  // An odd height leaves its middle row even at 100.
  const int32_t bar = ClampInt(Trunc32((height / 2) * borderWidth_), 0, height);
  LetterBox(PackedSource(src, width, height), PackedDest(dst, width, height), bar);
}

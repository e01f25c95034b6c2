#include "Source/NosyncFilter.h"

#include <algorithm>
#include <vector>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr int32_t kEffectId = 32;
constexpr ParamRow kParams[] = {{u"HSync", 0, 0, 100}, {u"IsLevelCut", 1, 0, 1}};

// The first `shift` lines come from `shift` lines on, the rest from `shift` lines back: no rotation.
int32_t SourceLine(int32_t line, int64_t shift, int32_t count) {
  int64_t from = line - shift;
  if (line < shift) {
    from = line + shift;
    if (from >= count) from -= count;
  }
  return static_cast<int32_t>(std::clamp<int64_t>(from, 0, count - 1));
}

void ShiftRows(ConstFrameView src, FrameView dst, int32_t shift) {
  for (int32_t y = 0; y < dst.height; ++y) CopyPixels(src.Row(SourceLine(y, shift, dst.height)), dst.Row(y), dst.width);
}

void ShiftColumns(ConstFrameView src, FrameView dst, int32_t shift) {
  std::vector<int32_t> from(static_cast<size_t>(std::max(dst.width, 0)));
  for (int32_t x = 0; x < dst.width; ++x) from[static_cast<size_t>(x)] = SourceLine(x, shift, dst.width);
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x) StorePixel(out, x, LoadPixel(in, from[static_cast<size_t>(x)]));
  }
}

}  // namespace

void CNosyncFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {fraction_ * 100, static_cast<double>(mode_)});
}

void CNosyncFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kEffectId) return;
  fraction_ = Param(params, 1) / 100;
  mode_ = Trunc32(Param(params, 2));
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (mode_ != 0) {
    ShiftRows(in, out, Trunc32(height * fraction_));
  } else {
    ShiftColumns(in, out, Trunc32(width * fraction_));
  }
}

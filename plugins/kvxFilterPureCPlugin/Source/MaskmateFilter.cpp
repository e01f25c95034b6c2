#include "Source/MaskmateFilter.h"

#include <algorithm>
#include <cstring>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr int32_t kMaskmate = 30;
constexpr int32_t kSquareBlur = 17;
constexpr int32_t kBlurDepth = 4;

constexpr ParamRow kMaskmateParams[] = {{u"Left", 0, 0, 100},
                                        {u"Right", 0, 0, 100},
                                        {u"Top", 0, 0, 100},
                                        {u"Bottom", 0, 0, 100},
                                        {u"BlurDepth", 0, 0, 100}};

// Puts the source back outside the columns `left` to `right` of the rows `first` to `last`, all inclusive.
void RestoreOutside(ConstFrameView src, FrameView dst, int32_t left, int32_t right, int32_t first, int32_t last) {
  const auto restore = [&](int32_t y, int32_t from, int32_t to) {
    if (from < to) std::memcpy(dst.Pixel(from, y), src.Pixel(from, y), static_cast<size_t>(to - from) * 4);
  };
  for (int32_t y = 0; y < dst.height; ++y) {
    if (y < first || y > last || left > right) {
      restore(y, 0, dst.width);
    } else {
      restore(y, 0, std::clamp(left, 0, dst.width));
      restore(y, std::clamp(right, -1, dst.width - 1) + 1, dst.width);
    }
  }
}

}  // namespace

CMaskmateFilter::CMaskmateFilter(int32_t frameWidth, int32_t frameHeight)
    : CBaseFilterProc(frameWidth, frameHeight), squareBlur_(width, height) {}

void CMaskmateFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kMaskmateParams, {left_ * 100, right_ * 100, top_ * 100, bottom_ * 100, blur_ * 100});
  if (desc && index == kBlurDepth) desc->index = kBlurDepth - 1;  // says 3, like the parameter before it
}

void CMaskmateFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                              const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kMaskmate) return;
  left_ = Param(params, 1) / 100;
  right_ = Param(params, 2) / 100;
  top_ = Param(params, 3) / 100;
  bottom_ = Param(params, 4) / 100;
  blur_ = Param(params, 5) / 100;

  ParamValueArray blurValues{};
  blurValues.effectId = kSquareBlur;
  blurValues.value[0] = blur_ * 100;
  squareBlur_.Process(src, dst, srcStep, dstStep, &blurValues);
  // The blur honours the steps; what is put back is taken as one run.
  RestoreOutside(PackedSource(src, width, height), PackedDest(dst, width, height), Trunc32(width * left_),
                 Trunc32(width * right_), Trunc32(height * bottom_), Trunc32(height * top_));
}

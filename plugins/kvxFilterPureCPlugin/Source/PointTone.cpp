#include "Source/PointTone.h"

#include <cstring>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "framework/pixel_kernels.h"
#include "framework/pixels.h"

namespace {

constexpr ParamRow kSaturationParams[] = {{u"Saturation", 0, 0, 100}};

void InvertColor(ConstFrameView src, FrameView dst) {
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x) {
      uint32_t pixel = LoadPixel(in + 4 * x);
      pixel ^= 0x00FFFFFF;
      StorePixel(out + 4 * x, pixel);
    }
  }
}

void Gray(ConstFrameView src, FrameView dst, const GrayWeights& weights) {
  for (int32_t y = 0; y < dst.height; ++y) GrayRow(src.Row(y), dst.Row(y), dst.width, weights);
}

// Keeps one row in four and clears the others. The four rows behind a kept row are cleared unless it is the last row
// but three, so that what lies below the last cleared row stays as the destination held it.
void KeepEveryFourthRow(ConstFrameView src, FrameView dst) {
  if (dst.Empty()) return;
  const int32_t end = dst.height - dst.height % 4;
  const size_t rowBytes = static_cast<size_t>(dst.width) * 4;
  for (int32_t r = 0; r < end; r += 4) {
    std::memcpy(dst.Row(r), src.Row(r), rowBytes);
    if (r != dst.height - 4) std::memset(dst.Row(r + 1), 0, 4 * rowBytes);
  }
}

}  // namespace

void CSaturation::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kSaturationParams, {fraction_ * 100});
}

void CSaturation::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  const double percent = Param(params, 1);
  fraction_ = percent / 100;
  // The factor 8 is meant: the source comes back at 12.5.
  const double s = 8 * percent / 100;
  const double k = 1 - s;
  // Within 0 <= s <= 1 the low byte is stored, outside it the clamped value.
  const SaturationWeights weights{s, Trunc32(k * 7471), Trunc32(k * 38470), Trunc32(k * 19595), !(s >= 0 && s <= 1)};
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) SaturateRow(in.Row(y), out.Row(y), out.width, weights);
  });
}

void CInvert::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  InvertColor(PackedSource(src, width, height), PackedDest(dst, width, height));
}

// Byte 0 takes the weight of 30: the opposite of the saturation's gray, and meant.
void CLuminance::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  Gray(PackedSource(src, width, height), PackedDest(dst, width, height),
       {30, 59, 11, 0, 5243, 19});  // a sum of at most 25500, divided by 100
}

void CBWFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  Gray(ConstFrameView{src, width, height, srcStep}, FrameView{dst, width, height, dstStep},
       {1, 1, 1, 0, 43691, 17});  // a sum of at most 765, divided by 3
}

void CScanLine::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  KeepEveryFourthRow(PackedSource(src, width, height), PackedDest(dst, width, height));
}

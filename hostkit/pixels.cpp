#include "hostkit/pixels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvx {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// What is left over of a vector goes pixel by pixel.
template <bool kSwap>
void Expand(const uint8_t* in, uint8_t* out, size_t pixels) {
  const hn::ScalableTag<uint8_t> d;
  const auto opaque = hn::Set(d, 255);
  const size_t lanes = hn::Lanes(d);
  size_t i = 0;
  for (; i + lanes <= pixels; i += lanes) {
    auto c0 = opaque, c1 = opaque, c2 = opaque;
    hn::LoadInterleaved3(d, in + 3 * i, c0, c1, c2);
    hn::StoreInterleaved4(kSwap ? c2 : c0, c1, kSwap ? c0 : c2, opaque, d, out + 4 * i);
  }
  for (; i < pixels; ++i) {
    out[4 * i] = in[3 * i + (kSwap ? 2 : 0)];
    out[4 * i + 1] = in[3 * i + 1];
    out[4 * i + 2] = in[3 * i + (kSwap ? 0 : 2)];
    out[4 * i + 3] = 255;
  }
}

template <bool kSwap>
void Shrink(const uint8_t* in, uint8_t* out, size_t pixels) {
  const hn::ScalableTag<uint8_t> d;
  const size_t lanes = hn::Lanes(d);
  size_t i = 0;
  for (; i + lanes <= pixels; i += lanes) {
    auto c0 = hn::Zero(d), c1 = c0, c2 = c0, c3 = c0;
    hn::LoadInterleaved4(d, in + 4 * i, c0, c1, c2, c3);
    hn::StoreInterleaved3(kSwap ? c2 : c0, c1, kSwap ? c0 : c2, d, out + 3 * i);
  }
  for (; i < pixels; ++i) {
    out[3 * i] = in[4 * i + (kSwap ? 2 : 0)];
    out[3 * i + 1] = in[4 * i + 1];
    out[3 * i + 2] = in[4 * i + (kSwap ? 0 : 2)];
  }
}

void SwapOuter(const uint8_t* in, uint8_t* out, size_t pixels) {
  const hn::ScalableTag<uint32_t> d;
  const auto outer = hn::Set(d, 0x00FF00FFu);
  const size_t lanes = hn::Lanes(d);
  size_t i = 0;
  for (; i + lanes <= pixels; i += lanes) {
    const auto pixel = hn::LoadU(d, reinterpret_cast<const uint32_t*>(in) + i);
    const auto swapped = hn::RotateRight<16>(hn::And(pixel, outer));
    hn::StoreU(hn::Or(swapped, hn::AndNot(outer, pixel)), d, reinterpret_cast<uint32_t*>(out) + i);
  }
  for (; i < pixels; ++i) {
    const uint8_t first = in[4 * i];
    out[4 * i] = in[4 * i + 2];
    out[4 * i + 1] = in[4 * i + 1];
    out[4 * i + 2] = first;
    out[4 * i + 3] = in[4 * i + 3];
  }
}

void ExpandSame(const uint8_t* in, uint8_t* out, size_t pixels) {
  Expand<false>(in, out, pixels);
}
void ExpandSwapped(const uint8_t* in, uint8_t* out, size_t pixels) {
  Expand<true>(in, out, pixels);
}
void ShrinkSame(const uint8_t* in, uint8_t* out, size_t pixels) {
  Shrink<false>(in, out, pixels);
}
void ShrinkSwapped(const uint8_t* in, uint8_t* out, size_t pixels) {
  Shrink<true>(in, out, pixels);
}

}  // namespace HWY_NAMESPACE
}  // namespace kvx
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvx {

HWY_EXPORT(SwapOuter);
HWY_EXPORT(ExpandSame);
HWY_EXPORT(ExpandSwapped);
HWY_EXPORT(ShrinkSame);
HWY_EXPORT(ShrinkSwapped);

void SwapRedBlue(const uint8_t* in, uint8_t* out, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(SwapOuter)(in, out, pixels);
}
void BgrToBgra(const uint8_t* in, uint8_t* out, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(ExpandSame)(in, out, pixels);
}
void RgbToBgra(const uint8_t* in, uint8_t* out, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(ExpandSwapped)(in, out, pixels);
}
void BgraToBgr(const uint8_t* in, uint8_t* out, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(ShrinkSame)(in, out, pixels);
}
void BgraToRgb(const uint8_t* in, uint8_t* out, size_t pixels) {
  HWY_DYNAMIC_DISPATCH(ShrinkSwapped)(in, out, pixels);
}

}  // namespace kvx
#endif

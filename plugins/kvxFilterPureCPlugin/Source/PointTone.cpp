#include "PointTone.h"

#include <cstring>

#include "frame.h"
#include "numeric.h"

namespace {

constexpr ParamRow kSaturationParams[] = {{u"Saturation", 0, 0, 100}};

// v = trunc(byte * s + gray), with the gray's weights scaled by 1 - s. Within 0 <= s <= 1 the low byte of v is stored,
// outside it the clamped v.
template <bool Clamp>
void Saturate(ConstFrameView src, FrameView dst, double s) {
  const double k = 1 - s;
  const int32_t w0 = Trunc32(k * 7471);
  const int32_t w1 = Trunc32(k * 38470);
  const int32_t w2 = Trunc32(k * 19595);
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x, in += 4, out += 4) {
      const int32_t sum = WrapAdd(WrapAdd(WrapMul(in[2], w2), WrapMul(in[1], w1)), WrapMul(in[0], w0));
      const double gray = sum >> 16;
      for (int c = 0; c < 3; ++c) {
        const int32_t v = Trunc32(in[c] * s + gray);
        out[c] = static_cast<uint8_t>(Clamp ? CLAMP0255(v) : v);
      }
      out[3] = in[3];
    }
  }
}

void InvertColor(ConstFrameView src, FrameView dst) {
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x) {
      uint32_t pixel;
      std::memcpy(&pixel, in + 4 * x, 4);
      pixel ^= 0x00FFFFFF;
      std::memcpy(out + 4 * x, &pixel, 4);
    }
  }
}

// One value for bytes 0 to 2, byte 3 copied.
template <typename GrayOf>
void Gray(ConstFrameView src, FrameView dst, GrayOf grayOf) {
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x, in += 4, out += 4) {
      const uint8_t alpha = in[3];
      const uint8_t gray = static_cast<uint8_t>(grayOf(uint32_t{in[0]}, uint32_t{in[1]}, uint32_t{in[2]}));
      out[0] = out[1] = out[2] = gray;
      out[3] = alpha;
    }
  }
}

// Keeps one row in four and clears the others. The four rows behind a kept row are cleared unless it is the last row but
// three, so that what lies below the last cleared row stays as the destination held it.
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
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (s >= 0 && s <= 1) {
    Saturate<false>(in, out, s);
  } else {
    Saturate<true>(in, out, s);
  }
}

void CInvert::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  InvertColor(PackedSource(src, width, height), PackedDest(dst, width, height));
}

// Byte 0 takes the weight of 30: the opposite of the saturation's gray, and meant.
void CLuminance::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  Gray(PackedSource(src, width, height), PackedDest(dst, width, height),
       [](uint32_t b0, uint32_t b1, uint32_t b2) { return (b0 * 30 + b1 * 59 + b2 * 11) / 100; });
}

void CBWFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  Gray(ConstFrameView{src, width, height, srcStep}, FrameView{dst, width, height, dstStep},
       [](uint32_t b0, uint32_t b1, uint32_t b2) { return (b0 + b1 + b2) / 3; });
}

void CScanLine::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  KeepEveryFourthRow(PackedSource(src, width, height), PackedDest(dst, width, height));
}

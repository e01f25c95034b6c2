#include "Source/Tint.h"

#include <array>

#include "Source/PixelMap.h"

#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"WhiteColorR", 0, 0, 255}, {u"WhiteColorG", 0, 0, 255}, {u"WhiteColorB", 0, 0, 255},
                                {u"BlackColorR", 0, 0, 255}, {u"BlackColorG", 0, 0, 255}, {u"BlackColorB", 0, 0, 255},
                                {u"Amount", 0, 0, 100}};

// The colours of one output byte.
struct Line {
  float black, span;
};

Line LineOf(double white, double black) {
  const float k = static_cast<float>(black);
  return {k, static_cast<float>(white) - k};
}

// What a byte adds to the luma and, untinted, to the output.
struct Shares {
  double luma0, luma1, luma2;  // as byte 0, 1, 2: the weight 0.299 stands on byte 0, and is meant to
  double rest;
};

std::array<Shares, 256> SharesOf(double amount) {
  std::array<Shares, 256> shares;
  for (int i = 0; i < 256; ++i) {
    const float fraction = static_cast<float>(i) / 255.0f;
    shares[i] = {fraction * 0.299, fraction * 0.587, fraction * 0.114, fraction * (1 - amount)};
  }
  return shares;
}

// NaN gives 0.
uint32_t ByteOf(double fraction) {
  fraction = fraction > 0.0 ? fraction : 0.0;
  fraction = fraction < 1.0 ? fraction : 1.0;
  return static_cast<uint32_t>(static_cast<int32_t>(fraction * 255));
}

// The untinted share swaps bytes 0 and 2: this is meant.
void Tint(ConstFrameView src, FrameView dst, const Line& line0, const Line& line1, const Line& line2, double amount) {
  const std::array<Shares, 256> shares = SharesOf(amount);
  MapPixels(src, dst, [&, line0, line1, line2, amount](uint32_t pixel) {
    const Shares& byte0 = shares[pixel & 255];
    const Shares& byte1 = shares[pixel >> 8 & 255];
    const Shares& byte2 = shares[pixel >> 16 & 255];
    const float luma = static_cast<float>(byte1.luma1 + byte2.luma2 + byte0.luma0);
    const uint32_t out0 = ByteOf((line0.black + line0.span * luma) * amount + byte2.rest);
    const uint32_t out1 = ByteOf((line1.black + line1.span * luma) * amount + byte1.rest);
    const uint32_t out2 = ByteOf((line2.black + line2.span * luma) * amount + byte0.rest);
    return out0 | out1 << 8 | out2 << 16 | (pixel & 0xFF000000);
  });
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
  Tint(PackedSource(src, width, height), PackedDest(dst, width, height), LineOf(white_[2], black_[2]),
       LineOf(white_[1], black_[1]), LineOf(white_[0], black_[0]), amount_);
}

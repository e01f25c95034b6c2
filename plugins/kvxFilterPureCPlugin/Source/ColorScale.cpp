#include "Source/ColorScale.h"

#include <algorithm>
#include <cmath>

#include "Source/PixelMap.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kSlopSatParams[] = {
    {u"R", 0, 0, 255}, {u"G", 0, 0, 255}, {u"B", 0, 0, 255}, {u"Saturation", 0, 0, 255}};
constexpr ParamRow kColorAdjParams[] = {
    {u"RedScale", 0, 0, 255}, {u"GreenScale", 0, 0, 255}, {u"BlueScale", 0, 0, 255}};
constexpr int32_t kColorAdjId = 49;

// Offset 0 and power 1 are fixed, which leaves the slope.
ByteTable SlopeTable(double slope) {
  ByteTable table;
  for (int i = 0; i < 256; ++i) {
    const float fraction = static_cast<float>(i) / 255.0f;
    table[i] = static_cast<uint8_t>(CLAMP0255(Trunc32(std::max(0.0, fraction * slope) * 255)));
  }
  return table;
}

// A gain from 1/3 at 0 to 3 at 1, with 0.5 as unity.
ByteTable GainTable(float scale) {
  const float s = std::sqrt(0.9999f);
  const float m = 2.0f * std::log(3.0f / s);
  const float k = std::exp((scale - 0.5f) * m);
  ByteTable table;
  for (int i = 0; i < 256; ++i) {
    const float v = std::min(255.0f, std::max(0.0f, k * s * static_cast<float>(i)));
    table[i] = TruncByte(v + 0.5f);
  }
  return table;
}

// The luma takes table 0 on byte 0 and table 2 on byte 2, the output the reverse: this is meant.
void Saturate(ConstFrameView src, FrameView dst, const ByteTable& table0, const ByteTable& table1,
              const ByteTable& table2, double saturation) {
  MapPixels(src, dst, [&, saturation](uint32_t pixel) {
    const uint32_t b0 = pixel & 255, b1 = pixel >> 8 & 255, b2 = pixel >> 16 & 255;
    const double luma = table1[b1] * 0.7152 + table0[b0] * 0.2126 + table2[b2] * 0.0722;
    const auto saturated = [=](uint8_t v) {
      return static_cast<uint32_t>(CLAMP0255(Trunc32((v - luma) * saturation + luma)));
    };
    return saturated(table2[b0]) | saturated(table1[b1]) << 8 | saturated(table0[b2]) << 16 | (pixel & 0xFF000000);
  });
}

}  // namespace

void CSlopSat::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kSlopSatParams, {r_ * 255, g_ * 255, b_ * 255, saturation_ * 255});
}

// Byte 3 has a table of slope 1 as well, which gives every byte itself: it is copied.
void CSlopSat::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  r_ = Param(params, 1) / 255;
  g_ = Param(params, 2) / 255;
  b_ = Param(params, 3) / 255;
  saturation_ = Param(params, 4) / 255;
  const ByteTable table0 = SlopeTable(r_);
  const ByteTable table1 = SlopeTable(g_);
  const ByteTable table2 = SlopeTable(b_);
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (std::abs(saturation_ - 1) < 0.001) {
    MapBytes(in, out, table2, table1, table0);
  } else {
    Saturate(in, out, table0, table1, table2, saturation_);
  }
}

void CColorAdjFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kColorAdjParams, {scale_[2] * 255.0, scale_[1] * 255.0, scale_[0] * 255.0});
}

void CColorAdjFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kColorAdjId) return;
  for (int c = 0; c < 3; ++c) scale_[c] = static_cast<float>(Param(params, 3 - c) / 255);
  MapBytes(PackedSource(src, width, height), PackedDest(dst, width, height), GainTable(scale_[0]), GainTable(scale_[1]),
           GainTable(scale_[2]));
}

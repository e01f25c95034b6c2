#include "Source/PointColor.h"

#include <algorithm>
#include <array>

#include "Source/PixelMap.h"
#include "Source/PointRows.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kPrimariesParams[] = {{u"Factor", 0, 1, 32}};
constexpr ParamRow kExtractsParams[] = {{u"R", 1, 0, 1}, {u"G", 1, 0, 1}, {u"B", 1, 0, 1}};
constexpr ParamRow kDistanceParams[] = {
    {u"RedScale", 0, 0, 255}, {u"GreenScale", 0, 0, 255}, {u"BlueScale", 0, 0, 255}};
constexpr int32_t kDistanceId = 47;

// The low byte of the mean that a pixel's bytes must exceed, for every sum of its bytes 0 to 2.
std::array<uint8_t, 766> MeansOf(int32_t n) {
  const int32_t q = WrapMul(WrapMul(n - 2, n - 2), 127);
  const int32_t square = WrapMul(n, n);
  const int32_t divisor = q < 0 ? 3 : square == 0 ? 1 : square;
  std::array<uint8_t, 766> means;
  for (int32_t sum = 0; sum < 766; ++sum) means[sum] = static_cast<uint8_t>((q < 0 ? sum : WrapAdd(sum, q)) / divisor);
  return means;
}

void Primaries(ConstFrameView src, FrameView dst, int32_t n) {
  if (n > 32) {
    MapPixels(src, dst, [](uint32_t pixel) {
      // 255 where a byte's highest bit is set.
      const uint32_t high = pixel >> 7 & 0x010101;
      return ((high << 8) - high) | (pixel & 0xFF000000);
    });
    return;
  }
  const std::array<uint8_t, 766> means = MeansOf(n);
  MapPixelsInBands(src, dst, [&means](uint32_t pixel) {
    const uint32_t b0 = pixel & 255, b1 = pixel >> 8 & 255, b2 = pixel >> 16 & 255;
    const uint32_t m = means[b0 + b1 + b2];
    // The sign of m - byte selects the whole byte.
    return ((m - b0) >> 8 & 0xFF) | ((m - b1) & 0xFF00) | ((m - b2) << 8 & 0xFF0000) | (pixel & 0xFF000000);
  });
}

// Bytes 0 and 2 change places, the chosen ones stay, alpha is cleared. With none chosen the pixel is copied whole.
void Extract(ConstFrameView src, FrameView dst, bool r, bool g, bool b) {
  if (!r && !g && !b) {
    MapPixels(src, dst, [](uint32_t pixel) { return pixel; });
    return;
  }
  const uint32_t keep = (b ? 0xFFu : 0) | (g ? 0xFF00u : 0) | (r ? 0xFF0000u : 0);
  MapPixels(src, dst,
            [keep](uint32_t pixel) { return ((pixel >> 16 & 0xFF) | (pixel & 0xFF00) | (pixel & 0xFF) << 16) & keep; });
}

void CoolBlue(ConstFrameView src, FrameView dst) {
  MapPixels(src, dst, [](uint32_t pixel) {
    const uint32_t b0 = pixel & 255, b1 = pixel >> 8 & 255;
    return std::min(b0 * 2, 255u) | std::min(b1 + (b1 >> 1), 255u) << 8 | (pixel & 0xFF0000) | 0xFF000000;
  });
}

}  // namespace

void CPrimaries::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kPrimariesParams, {factor_});
}

void CPrimaries::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  factor_ = std::min(Trunc32(Param(params, 1)), 32);
  Primaries(PackedSource(src, width, height), PackedDest(dst, width, height), Trunc32(factor_ + 2));
}

void CExtractsRGB::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kExtractsParams,
                {static_cast<double>(r_), static_cast<double>(g_), static_cast<double>(b_)});
}

void CExtractsRGB::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  r_ = Trunc32(Param(params, 1));
  g_ = Trunc32(Param(params, 2));
  b_ = Trunc32(Param(params, 3));
  Extract(PackedSource(src, width, height), PackedDest(dst, width, height), r_ != 0, g_ != 0, b_ != 0);
}

void CColorDistanceFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kDistanceParams,
                {static_cast<double>(r_), static_cast<double>(g_), static_cast<double>(b_)});
}

// The scale named red is compared with byte 0, the one named blue with byte 2. Far values wrap into 16 bits.
void CColorDistanceFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                                   const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != kDistanceId) return;
  r_ = Trunc32(Param(params, 1));
  g_ = Trunc32(Param(params, 2));
  b_ = Trunc32(Param(params, 3));
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  const std::array<int16_t, 3> key = {static_cast<int16_t>(r_), static_cast<int16_t>(g_), static_cast<int16_t>(b_)};
  for (int32_t y = 0; y < height; ++y) DistanceRow(in.Row(y), out.Row(y), width, key);
}

void CCoolBlue::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (!src || !dst || !params) return;
  CoolBlue({src, width, height, srcStep}, {dst, width, height, dstStep});
}

#include "Source/ToneTable.h"

#include <cmath>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"
#include "framework/pixel_kernels.h"

// How an effect file reads, here and everywhere: parameter rows as data; kernels as free functions over views and plain
// numbers; then the class, whose Process turns parameters into numbers and calls the kernels.

namespace {

// The spelling of the parameter names is meant: hosts and catalogues know them so.
constexpr ParamRow kBrightnessParams[] = {{u"Bringhtness", 0, 0, 100}};
constexpr ParamRow kContrastParams[] = {{u"Contranst", 0, 0, 100}};
constexpr ParamRow kGammaParams[] = {{u"Gamma", 0, 1, 100}};
constexpr ParamRow kThresHoldParams[] = {{u"ThresHold", 0, 0, 255}};

// Brightness and contrast map 0..100 to a level of -256..256, and report the level mapped back.
int32_t LevelOf(double percent) {
  return Trunc32((percent / 100 - 0.5) * 512);
}
double PercentOf(int32_t level) {
  return (static_cast<double>(level) + 256) / 512 * 100;
}

// (a * b) >> 8 for any level: products of far-off levels wrap.
int32_t Scale(int32_t a, int32_t b) {
  return WrapMul(a, b) >> 8;
}

ByteTable BrightnessTable(int32_t level) {
  ByteTable table;
  for (int32_t i = 0; i < 256; ++i) {
    // 256 - i, not 255 - i: entry 255 still receives level >> 8.
    table[i] = static_cast<uint8_t>(level >= 0 ? CLAMP0255(WrapAdd(i, Scale(256 - i, level)))
                                               : CLAMP0255(Scale(i, WrapAdd(256, level))));
  }
  return table;
}

ByteTable GammaTable(double gamma) {
  const double exponent = 1 / gamma;
  const double divisor = std::pow(255.0, exponent) / 255;
  ByteTable table;
  for (int32_t i = 0; i < 256; ++i) {
    table[i] = static_cast<uint8_t>(ClampInt(Trunc32(std::pow(static_cast<double>(i), exponent) / divisor), 0, 255));
  }
  return table;
}

ByteTable ThresHoldTable(uint8_t threshold) {
  ByteTable table;
  for (int32_t i = 0; i < 256; ++i) table[i] = threshold > 254 || i < threshold ? 0 : 255;
  return table;
}

// Bytes 0 to 2 of every pixel through the table, byte 3 copied.
void MapTone(ConstFrameView src, FrameView dst, const ByteTable& table) {
  for (int32_t y = 0; y < dst.height; ++y) {
    MapRow(src.Row(y), dst.Row(y), dst.width, {table.data(), table.data(), table.data()});
  }
}

}  // namespace

ByteTable ContrastTable(int32_t level) {
  ByteTable table;
  for (int32_t i = 0; i < 256; ++i) {
    table[i] = static_cast<uint8_t>(i < 128 ? CLAMP0255(WrapSub(i, Scale(128 - i, level)))
                                            : CLAMP0255(WrapAdd(i, Scale(i - 128, level))));
  }
  return table;
}

void CBrightness::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kBrightnessParams, {PercentOf(level_)});
}

void CBrightness::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  level_ = LevelOf(Param(params, 1));
  MapTone(PackedSource(src, width, height), PackedDest(dst, width, height), BrightnessTable(level_));
}

void CContrast::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kContrastParams, {PercentOf(level_)});
}

void CContrast::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  level_ = LevelOf(Param(params, 1));
  MapTone(PackedSource(src, width, height), PackedDest(dst, width, height), ContrastTable(level_));
}

// Reports the field as it is: 50 before the first frame, the divided value after it.
void CGamma::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kGammaParams, {gamma_});
}

void CGamma::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  gamma_ = Param(params, 1) / 50;
  MapTone(PackedSource(src, width, height), PackedDest(dst, width, height), GammaTable(gamma_));
}

void CThresHold::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kThresHoldParams, {static_cast<double>(threshold_)});
}

void CThresHold::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  threshold_ = TruncByte(Param(params, 1));
  MapTone(PackedSource(src, width, height), PackedDest(dst, width, height), ThresHoldTable(threshold_));
}

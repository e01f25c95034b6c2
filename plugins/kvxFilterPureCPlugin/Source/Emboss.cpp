#include "Emboss.h"

#include <algorithm>
#include <vector>

#include "frame.h"
#include "numeric.h"

namespace {

constexpr ParamRow kParams[] = {{u"Lowest", 0, 0, 100}, {u"High", 0, 0, 100}};

int32_t LevelOf(double percent) {
  return ClampInt(Trunc32(ClampFloat(percent * 255 / 100, 0, 255)), 0, 255);
}

// |a - b + high| within low..255 for each of bytes 0 to 2; byte 3 copied.
void ReliefRow(const uint8_t* in, const uint8_t* neighbour, uint8_t* out, int32_t width, int16_t low, int16_t high) {
  const ptrdiff_t bytes = static_cast<ptrdiff_t>(width) * 4;
  for (ptrdiff_t i = 0; i < bytes; ++i) {
    const int16_t d = static_cast<int16_t>(in[i] - neighbour[i] + high);
    const int16_t relief = d < 1 ? static_cast<int16_t>(-d) : d;
    out[i] = static_cast<uint8_t>(std::max(low, std::min<int16_t>(relief, 255)));
  }
  for (ptrdiff_t i = 3; i < bytes; i += 4) out[i] = in[i];
}

// Each row against the one `direction` rows further. The row that has none takes the one on its other side, as it was
// before the first write; in a frame of one row, itself.
void Relief(ConstFrameView src, FrameView dst, int32_t direction, int32_t low, int32_t high) {
  if (dst.Empty()) return;
  const int32_t rim = direction > 0 ? dst.height - 1 : 0;
  const int32_t inner = ClampInt(rim - direction, 0, dst.height - 1);
  const std::vector<uint8_t> kept(src.Row(inner), src.Row(inner) + static_cast<ptrdiff_t>(dst.width) * 4);
  for (int32_t y = 0; y < dst.height; ++y) {
    ReliefRow(src.Row(y), y == rim ? kept.data() : src.Row(y + direction), dst.Row(y), dst.width,
              static_cast<int16_t>(low), static_cast<int16_t>(high));
  }
}

}  // namespace

void ReliefProcessor::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {static_cast<double>(low_), static_cast<double>(high_)});
}

void ReliefProcessor::ReadLevels(const ParamValueArray* params) {
  low_ = LevelOf(Param(params, 1));
  high_ = LevelOf(Param(params, 2));
}

void CEmboss::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  ReadLevels(params);
  Relief({src, width, height, srcStep}, {dst, width, height, dstStep}, 1, low_, high_);
}

void CCarve::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  ReadLevels(params);
  Relief({src, width, height, srcStep}, {dst, width, height, dstStep}, -1, low_, high_);
}

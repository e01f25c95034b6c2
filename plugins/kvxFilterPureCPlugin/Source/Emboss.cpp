#include "Source/Emboss.h"

#include <vector>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/params.h"
#include "framework/row_loops.h"

namespace {

constexpr ParamRow kParams[] = {{u"Lowest", 0, 0, 100}, {u"High", 0, 0, 100}};

int32_t LevelOf(double percent) {
  return ClampInt(Trunc32(ClampFloat(percent * 255 / 100, 0, 255)), 0, 255);
}

// Each row against the one `direction` rows further. The row that has none takes the one on its other side, as it was
// before the first write; in a frame of one row, itself.
void Relief(ConstFrameView src, FrameView dst, int32_t direction, int32_t low, int32_t high) {
  if (dst.Empty()) return;
  const int32_t rim = direction > 0 ? dst.height - 1 : 0;
  const int32_t inner = ClampInt(rim - direction, 0, dst.height - 1);
  const std::vector<uint8_t> kept(src.Row(inner), src.Row(inner) + static_cast<ptrdiff_t>(dst.width) * 4);
  for (int32_t y = 0; y < dst.height; ++y) {
    ReliefRow(src.Row(y), y == rim ? kept.data() : src.Row(y + direction), dst.Row(y), dst.width, low, high);
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

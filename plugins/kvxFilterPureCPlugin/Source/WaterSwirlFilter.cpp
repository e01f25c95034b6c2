#include "Source/WaterSwirlFilter.h"

#include <cstring>

#include "framework/frame.h"
#include "framework/host_log.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"Radius", 0, 0, 100}, {u"Desity", 0, 0, 10}, {u"X", 0, 0, 100}, {u"Y", 0, 0, 100}};

}  // namespace

void CWaterSwirl::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams,
                {static_cast<double>(radius_), static_cast<double>(damping_), static_cast<double>(centerX_),
                 static_cast<double>(centerY_)});
}

void CWaterSwirl::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (!src || !dst || width <= 0 || height <= 0) return;
  radius_ = Trunc32(Param(params, 1));
  damping_ = Trunc32(Param(params, 2));
  centerX_ = Trunc32(Param(params, 3) / 100 * width);
  centerY_ = Trunc32(Param(params, 4) / 100 * height);
  if (Param(params, 5) == 1.0) surface_.Free();  // calm water again
  if (!surface_.Allocate(surface_.Cells())) {
    KVX_LOG_ALLOCATION_FAILURE("WaterSwirlFilter");
    return;
  }
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView copy{surface_.Copy(), width, height, surface_.CopyStep()};
  ForRowBands(width, 0, height, [=, rowBytes = 4 * static_cast<size_t>(width)](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) std::memcpy(copy.Row(y), in.Row(y), rowBytes);
  });
  Stir();
  // No prefill: the last row, and pixels whose source lies outside, keep what the destination held.
  surface_.Displace(FrameView{dst, width, height, dstStep}, {.factor = 1, .wholeRows = true, .onePastEnd = false});
  surface_.WaveStep(damping_);
}

// A flat disc, moved along an ellipse around the chosen point.
void CWaterSwirl::Stir() {
  const WaterTables& tables = WaterTables::Get();
  const int32_t c = tables.cosineTable[phase_ & 0x7FF];
  const int32_t s = tables.sineTable[phase_ & 0x7FF];
  int32_t x = WrapAdd(static_cast<int16_t>((c * 5) >> 14), centerX_);
  int32_t y = WrapAdd((s * 20) >> 16, centerY_);
  phase_ = WrapAdd(phase_, 50);
  const int32_t r = radius_ >> 2;
  if (x < 0) x = WrapAdd(r + 1, random_.Below(2 * r + 1));
  if (y < 0) y = WrapAdd(r + 1, random_.Below(2 * r + 1));
  surface_.AddDrop(x, y, r, WaterRim::kNone, [this](uint32_t) { return dropValue_; });
}

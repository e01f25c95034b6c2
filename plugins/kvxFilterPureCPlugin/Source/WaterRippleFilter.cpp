#include "Source/WaterRippleFilter.h"

#include <algorithm>

#include "framework/frame.h"
#include "framework/host_log.h"
#include "framework/numeric.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"Level", 0, 0, 100}, {u"Height", 0, 0, 1000}};

// Raised, like the rim of a splash: highest at the centre, falling to 1 step at the edge.
void RippleDrop(WaterSurface& surface, int32_t x, int32_t y, int32_t r, int32_t height) {
  surface.AddDrop(x, y, r, WaterRim::kNone,
                  [=](uint32_t distance) { return Trunc32((static_cast<double>(r) - ISqrt(distance)) * height); });
}

}  // namespace

void CWaterRipple::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {static_cast<double>(level_), static_cast<double>(waveHeight_)});
}

void CWaterRipple::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                           const ParamValueArray* params) {
  if (!src || !dst || !params || params->effectId != 34 || width <= 0 || height <= 0) return;
  level_ = Trunc32(Param(params, 1));
  waveHeight_ = Trunc32(Param(params, 2));
  if (!surface_.Allocate(2 * surface_.Cells())) {
    KVX_LOG_ALLOCATION_FAILURE("WaterRippleFilter");
    return;
  }
  const ConstFrameView in{src, width, height, srcStep};
  CopyRowsInBands(in, {surface_.Copy(), width, height, surface_.CopyStep()});
  CopyRowsInBands(in, {dst, width, height, dstStep});
  destPixels_ = dst;
  destStep_ = dstStep;
  WaterStep();
}

void CWaterRipple::WaterStep() {
  const float scale = static_cast<float>(width) / 640.0f;
  const int32_t y = random_.Below(height);
  const int32_t x = random_.Below(width);
  RippleDrop(surface_, x, y, Trunc32(std::max(1.0f, scale) * static_cast<float>(level_)), waveHeight_ >> 5);
  surface_.Displace(FrameView{destPixels_, width, height, destStep_},
                    {.factor = scale < 2.0f ? 1 : Trunc32(scale), .wholeRows = false, .onePastEnd = false});
  surface_.WaveStep(damping_);
}

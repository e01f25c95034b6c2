// Rain on water: every frame a drop falls somewhere and its ring spreads.
#ifndef KVX_SOURCE_WATER_RIPPLE_FILTER_H_
#define KVX_SOURCE_WATER_RIPPLE_FILTER_H_

#include <cstdint>

#include "Source/WaterSurface.h"
#include "kvx/processor.h"

class CWaterRipple : public CBaseFilterProc {
 public:
  CWaterRipple(int32_t frameWidth, int32_t frameHeight)
      : CBaseFilterProc(frameWidth, frameHeight), surface_(width, height) {}
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 protected:
  // One pass of drop, picture and wave over the stored destination.
  virtual void WaterStep();

 private:
  int32_t damping_ = 4;
  int32_t level_ = 71;        // radius of a drop, in pixels at the reference width
  int32_t waveHeight_ = 349;  // of a drop, in 1/32 of a cell's unit
  WaterRandom random_;
  WaterSurface surface_;
  uint8_t* destPixels_ = nullptr;
  int32_t destStep_ = 0;
};

#endif  // KVX_SOURCE_WATER_RIPPLE_FILTER_H_

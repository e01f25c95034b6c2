// A stick that stirs water in a small circle.
#ifndef KVX_SOURCE_WATER_SWIRL_FILTER_H_
#define KVX_SOURCE_WATER_SWIRL_FILTER_H_

#include <cstdint>

#include "Source/WaterSurface.h"
#include "kvx/processor.h"

class CWaterSwirl : public CBaseFilterProc {
 public:
  CWaterSwirl(int32_t frameWidth, int32_t frameHeight)
      : CBaseFilterProc(frameWidth, frameHeight), surface_(width, height) {}
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void Stir();

  int32_t centerX_ = 50;  // percent before the first frame, pixels after it
  int32_t centerY_ = 40;
  int32_t damping_ = 4;
  int32_t radius_ = 59;
  int32_t dropValue_ = 300;
  int32_t phase_ = 0;
  WaterRandom random_;
  WaterSurface surface_;
};

#endif  // KVX_SOURCE_WATER_SWIRL_FILTER_H_

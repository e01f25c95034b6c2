// Rain on water, with the picture below it.
#ifndef KVX_SOURCE_RAIN_DROP_FILTER_H_
#define KVX_SOURCE_RAIN_DROP_FILTER_H_

#include <cstdint>

#include "Source/WaterSurface.h"
#include "kvx/processor.h"

class CRainDrop : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void LetFall(int32_t x, int32_t y, int32_t radius);

  int32_t radius_ = 100;
  int32_t density_ = 2;
  int32_t dropHeight_ = 321;
  WaterRandom random_;
  WaterSurface surface_{width, height};
};

#endif  // KVX_SOURCE_RAIN_DROP_FILTER_H_

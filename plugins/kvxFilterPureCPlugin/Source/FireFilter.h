// Fire over the picture.
#ifndef KVX_SOURCE_FIRE_FILTER_H_
#define KVX_SOURCE_FIRE_FILTER_H_

#include <cstdint>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CFireFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double position_ = 0;  // of the band that burns, as a fraction of the width
  double fraction_ = 1;  // its width, likewise
  int32_t rowPercent_ = 1;
  int32_t flameHeight_ = 60;
  int32_t alpha_ = 150;
  ZeroedArray<uint8_t> heat_;
};

#endif  // KVX_SOURCE_FIRE_FILTER_H_

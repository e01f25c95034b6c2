// Flips the picture sideways, upside down or both.
#ifndef KVX_SOURCE_FLIPPO_FILTER_H_
#define KVX_SOURCE_FLIPPO_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CFlippoFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t x_ = 1;
  int32_t y_ = 1;
};

#endif  // KVX_SOURCE_FLIPPO_FILTER_H_

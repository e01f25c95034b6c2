// Edge glow: edges relit by their strength, the rest darkened or left.
#ifndef KVX_SOURCE_EDGEGLOW_FILTER_H_
#define KVX_SOURCE_EDGEGLOW_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CEdgeglowFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double threshold_ = 0;
  double upscale_ = 0;
  double redscale_ = 0;
};

#endif  // KVX_SOURCE_EDGEGLOW_FILTER_H_

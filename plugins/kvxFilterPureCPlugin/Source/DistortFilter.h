// The picture bent by two slow sines that leave its rim alone.
#ifndef KVX_SOURCE_DISTORT_FILTER_H_
#define KVX_SOURCE_DISTORT_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CDistort : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double amplitude_ = 0.5;
  double frequency_ = 1.0;
};

#endif  // KVX_SOURCE_DISTORT_FILTER_H_

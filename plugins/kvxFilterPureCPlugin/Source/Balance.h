// Colour balance: a curve for each channel, over the whole frame or one half of it.
#ifndef KVX_SOURCE_BALANCE_H_
#define KVX_SOURCE_BALANCE_H_

#include <cstdint>

#include "kvx/processor.h"

class CBalance : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double r_ = 1, g_ = 1, b_ = 0.5;  // parameters / 255
  int32_t left_ = 0;                // the opposite of the parameter
  int32_t split_ = 1;
};

#endif  // KVX_SOURCE_BALANCE_H_

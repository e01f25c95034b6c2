// Effects that scatter at random: pixels displaced along their rows, pixels of random colour.
#ifndef KVX_SOURCE_SCATTER_H_
#define KVX_SOURCE_SCATTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CCanvas : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t range_ = 10;
};

class CNoiseFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double fraction_ = 0.03;  // parameter / 100
  int32_t colored_ = 1;
};

#endif  // KVX_SOURCE_SCATTER_H_

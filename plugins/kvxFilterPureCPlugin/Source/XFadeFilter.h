// Fades the picture into itself.
#ifndef KVX_SOURCE_XFADE_FILTER_H_
#define KVX_SOURCE_XFADE_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CXFadeFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double fade_ = 0.8;
};

#endif  // KVX_SOURCE_XFADE_FILTER_H_

// A Lissajous figure over the picture.
#ifndef KVX_SOURCE_LISSAJOUS_FILTER_H_
#define KVX_SOURCE_LISSAJOUS_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CLissajousFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double ratioX_ = 0.5;
  double ratioY_ = 0.5;
};

#endif  // KVX_SOURCE_LISSAJOUS_FILTER_H_

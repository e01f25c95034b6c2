// Few colours, with black lines where the picture changes fast.
#ifndef KVX_SOURCE_CARTOON_FILTER_H_
#define KVX_SOURCE_CARTOON_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CCartoonFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double threshold_ = 2500;  // parameter * 50
  double distance_ = 1;
};

#endif  // KVX_SOURCE_CARTOON_FILTER_H_

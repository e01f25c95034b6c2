// Two round lenses side by side that magnify what is behind their middle.
#ifndef KVX_SOURCE_DOUBLE_FISHEYE_H_
#define KVX_SOURCE_DOUBLE_FISHEYE_H_

#include <cstdint>

#include "kvx/processor.h"

class CDoubleFisheye : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double size_ = 80;  // percent of the largest lens
};

#endif  // KVX_SOURCE_DOUBLE_FISHEYE_H_

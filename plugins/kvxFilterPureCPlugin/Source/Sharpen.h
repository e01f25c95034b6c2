// Sharpening across horizontal edges: a picture shadowed downward.
#ifndef KVX_SOURCE_SHARPEN_H_
#define KVX_SOURCE_SHARPEN_H_

#include <cstdint>

#include "kvx/processor.h"

class CSharpen : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double strength_ = 1.28;  // parameter / 100
};

#endif  // KVX_SOURCE_SHARPEN_H_

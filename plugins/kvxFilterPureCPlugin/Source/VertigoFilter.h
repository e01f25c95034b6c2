// The picture mixed with its own past, which turns and drifts: giddiness.
#ifndef KVX_SOURCE_VERTIGO_FILTER_H_
#define KVX_SOURCE_VERTIGO_FILTER_H_

#include <cstdint>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CVertigoFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double increment_ = 0.01;
  double zoom_ = 1.04;
  double phase_ = 0;
  ZeroedArray<uint32_t> current_;    // what the last frame showed
  ZeroedArray<uint32_t> alternate_;  // what this frame shows
};

#endif  // KVX_SOURCE_VERTIGO_FILTER_H_

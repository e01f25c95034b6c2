// Hue rotation that keeps luminance.
#ifndef KVX_SOURCE_HUE_SHIFT_H_
#define KVX_SOURCE_HUE_SHIFT_H_

#include <cstdint>

#include "kvx/processor.h"

class CHueShift : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

#endif  // KVX_SOURCE_HUE_SHIFT_H_

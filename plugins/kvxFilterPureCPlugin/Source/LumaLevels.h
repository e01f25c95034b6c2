// Two or three levels of gray, with thresholds from the frame's histogram.
#ifndef KVX_SOURCE_LUMA_LEVELS_H_
#define KVX_SOURCE_LUMA_LEVELS_H_

#include <cstdint>

#include "kvx/processor.h"

class CTwoLay : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

class CThreeLay : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

#endif  // KVX_SOURCE_LUMA_LEVELS_H_

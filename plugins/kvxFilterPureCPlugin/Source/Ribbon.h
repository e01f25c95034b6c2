// Columns moved along a sine wave.
#ifndef KVX_SOURCE_RIBBON_H_
#define KVX_SOURCE_RIBBON_H_

#include <cstdint>

#include "kvx/processor.h"

class CRibbon : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double swing_ = 30;
  double frequency_ = 41;
};

#endif  // KVX_SOURCE_RIBBON_H_

// Blocks of their mean colour.
#ifndef KVX_SOURCE_MOSAICS_H_
#define KVX_SOURCE_MOSAICS_H_

#include <cstdint>

#include "kvx/processor.h"

class CMosaics : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t blockWidth_ = 4;  // parameter + 1
  int32_t blockHeight_ = 4;
};

#endif  // KVX_SOURCE_MOSAICS_H_

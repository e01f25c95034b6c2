// Plasma instead of the picture.
#ifndef KVX_SOURCE_PLASMA_FILTER_H_
#define KVX_SOURCE_PLASMA_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CPlasmaFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  uint16_t horizontal_ = 0;  // where the two moving waves stand; two further waves rest at 0
  uint16_t vertical_ = 0;
};

#endif  // KVX_SOURCE_PLASMA_FILTER_H_

// A lattice of spins that orders itself, drawn over the picture.
#ifndef KVX_SOURCE_ISING_FILTER_H_
#define KVX_SOURCE_ISING_FILTER_H_

#include <cstdint>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CIsingFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t fillBlack_ = 0;
  ZeroedArray<int8_t> spins_;  // -1 or 1; the rim is always 1
};

#endif  // KVX_SOURCE_ISING_FILTER_H_

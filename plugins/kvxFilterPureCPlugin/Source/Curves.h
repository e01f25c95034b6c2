// A grid over the picture: cells lightened or kept, lines kept or black.
#ifndef KVX_SOURCE_CURVES_H_
#define KVX_SOURCE_CURVES_H_

#include <cstdint>
#include <vector>

#include "kvx/processor.h"

class CCurves : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t channel_ = 1;
  int32_t number_ = 72;
  int32_t lineWidth_ = 4;
  int32_t notFillBlack_ = 1;
  std::vector<uint32_t> cellColumns_;  // all bits set in the columns of cells
};

#endif  // KVX_SOURCE_CURVES_H_

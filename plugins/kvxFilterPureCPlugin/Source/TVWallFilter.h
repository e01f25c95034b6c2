// A wall of small copies of the picture.
#ifndef KVX_SOURCE_TV_WALL_FILTER_H_
#define KVX_SOURCE_TV_WALL_FILTER_H_

#include <cstdint>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CTVWallFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  int32_t split_ = 3;
  ZeroedArray<uint8_t> tile_;
};

#endif  // KVX_SOURCE_TV_WALL_FILTER_H_

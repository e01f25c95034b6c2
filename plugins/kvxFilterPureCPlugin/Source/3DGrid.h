// A bevelled grid.
#ifndef KVX_SOURCE_3DGRID_H_
#define KVX_SOURCE_3DGRID_H_

#include <cstdint>

#include "kvx/processor.h"

class C3DGrid : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double depth_ = 27;
  double size_ = 21;
};

#endif  // KVX_SOURCE_3DGRID_H_

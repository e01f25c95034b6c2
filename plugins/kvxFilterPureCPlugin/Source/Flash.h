// A flash of light in the dark.
#ifndef KVX_SOURCE_FLASH_H_
#define KVX_SOURCE_FLASH_H_

#include <cstdint>

#include "kvx/processor.h"

class CFlash : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double x_ = 50;  // percent of the width, the height and the diagonal
  double y_ = 50;
  double radius_ = 80;
};

#endif  // KVX_SOURCE_FLASH_H_

// Glow: the screen of the picture with a blurred copy of itself.
#ifndef KVX_SOURCE_GLOW_H_
#define KVX_SOURCE_GLOW_H_

#include <cstdint>
#include <memory>

#include "kvx/processor.h"

class CGlow : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double amount_ = 0.1;
  std::unique_ptr<uint8_t[]> scratch_;  // the blurred frame, made at the first frame
};

#endif  // KVX_SOURCE_GLOW_H_

// Maps luma to a line between two colours and mixes it with the picture.
#ifndef KVX_SOURCE_TINT_H_
#define KVX_SOURCE_TINT_H_

#include <cstdint>

#include "kvx/processor.h"

class CTint : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double amount_ = 0.32;               // parameter / 100
  double white_[3] = {0.55, 0.79, 1};  // R, G, B, parameters / 255
  double black_[3] = {0.55, 0.05, 0.26};
};

#endif  // KVX_SOURCE_TINT_H_

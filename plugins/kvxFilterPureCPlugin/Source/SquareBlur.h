// Blur by a triangular window up to a radius of 253 pixels, by a box beyond.
#ifndef KVX_SOURCE_SQUARE_BLUR_H_
#define KVX_SOURCE_SQUARE_BLUR_H_

#include <cstdint>

#include "kvx/processor.h"

class CSquareBlur : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double size_ = 0.02;  // parameter / 100
};

#endif  // KVX_SOURCE_SQUARE_BLUR_H_

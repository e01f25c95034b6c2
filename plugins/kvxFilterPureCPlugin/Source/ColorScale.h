// Gains for each channel by tables: slope with saturation, and the exponential scale.
#ifndef KVX_SOURCE_COLOR_SCALE_H_
#define KVX_SOURCE_COLOR_SCALE_H_

#include <cstdint>

#include "kvx/processor.h"

class CSlopSat : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double r_ = 1, g_ = 1, b_ = 1, saturation_ = 1;  // parameters / 255
};

class CColorAdjFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  float scale_[3] = {0.5f, 0.5f, 0.5f};  // of bytes 0, 1, 2: parameters 3, 2, 1 / 255
};

#endif  // KVX_SOURCE_COLOR_SCALE_H_

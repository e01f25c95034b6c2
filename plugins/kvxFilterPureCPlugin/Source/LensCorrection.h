// A lens whose magnification grows with the distance from its centre.
#ifndef KVX_SOURCE_LENS_CORRECTION_H_
#define KVX_SOURCE_LENS_CORRECTION_H_

#include <cstdint>

#include "kvx/processor.h"

class CLensCorrection : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double x_ = 0.5;
  double y_ = 0.5;
  double center_ = 0.5;
  double edges_ = 0.5;
};

#endif  // KVX_SOURCE_LENS_CORRECTION_H_

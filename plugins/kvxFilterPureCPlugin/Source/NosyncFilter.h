// A picture that has lost its synchronisation.
#ifndef KVX_SOURCE_NOSYNC_FILTER_H_
#define KVX_SOURCE_NOSYNC_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CNosyncFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double fraction_ = 0.5;  // parameter / 100
  int32_t mode_ = 0;       // 0 moves columns, otherwise rows
};

#endif  // KVX_SOURCE_NOSYNC_FILTER_H_

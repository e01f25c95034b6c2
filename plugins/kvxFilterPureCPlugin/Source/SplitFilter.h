// A diagonal cut that moves to and fro, with the picture displaced beyond it.
#ifndef KVX_SOURCE_SPLIT_FILTER_H_
#define KVX_SOURCE_SPLIT_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CSplitFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void MoveLine(int32_t mode, int32_t direction);

  int32_t line_ = 0;
};

#endif  // KVX_SOURCE_SPLIT_FILTER_H_

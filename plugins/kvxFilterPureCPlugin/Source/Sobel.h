// Sobel edges.
#ifndef KVX_SOURCE_SOBEL_H_
#define KVX_SOURCE_SOBEL_H_

#include <cstdint>

#include "kvx/processor.h"

class CSoble : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

#endif  // KVX_SOURCE_SOBEL_H_

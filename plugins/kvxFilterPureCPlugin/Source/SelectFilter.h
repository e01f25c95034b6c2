// Keys: effects that write into alpha how much of a pixel stays.
#ifndef KVX_SOURCE_SELECT_FILTER_H_
#define KVX_SOURCE_SELECT_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CBlueScreen : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

class CSelect : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

#endif  // KVX_SOURCE_SELECT_FILTER_H_

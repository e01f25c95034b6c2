// Sums four of the last frames, fed back into themselves: trails of light.
#ifndef KVX_SOURCE_BALTAN_H_
#define KVX_SOURCE_BALTAN_H_

#include <cstddef>
#include <cstdint>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CBaltan : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  ZeroedArray<uint32_t> planes_;  // four, rows a destination step apart
  size_t planeLength_ = 0;
  uint32_t index_ = 0;  // 0 to 7
};

#endif  // KVX_SOURCE_BALTAN_H_

// Blocks of the picture, each from a moment of its own among the last eight frames.
#ifndef KVX_SOURCE_DELAY_GRAB_H_
#define KVX_SOURCE_DELAY_GRAB_H_

#include <cstdint>
#include <vector>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CDelayGrab : public CBaseFilterProc {
 public:
  CDelayGrab(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void AllocateRing();
  void RebuildTable();

  int32_t mode_ = 1;
  int32_t blockSize_ = 1;
  int32_t blocksAcross_ = 0;
  int32_t blocksDown_ = 0;
  std::vector<uint8_t> table_;  // per block, row by row: how many frames ago
  bool tableBuilt_ = false;
  ZeroedArray<uint8_t> ring_;  // packed frames, the newest at head, older ones behind it
  uint32_t head_ = 0;
};

#endif  // KVX_SOURCE_DELAY_GRAB_H_

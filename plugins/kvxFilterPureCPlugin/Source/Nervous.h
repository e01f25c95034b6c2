// Jumps to and fro among the last 32 frames.
#ifndef KVX_SOURCE_NERVOUS_H_
#define KVX_SOURCE_NERVOUS_H_

#include <cstdint>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CNervous : public CBaseFilterProc {
 public:
  CNervous(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  void Reset();
  void ChooseFrame();
  uint32_t NextRandom();

  int32_t mode_ = 1;
  ZeroedArray<uint8_t> ring_;  // packed frames
  int32_t writeIndex_ = 0;
  int32_t count_ = 0;  // frames in the ring
  int32_t timer_ = 0;  // frames to go in the current run
  int32_t stride_ = 0;
  int32_t readIndex_ = 0;
  uint32_t seed_ = 0;
};

#endif  // KVX_SOURCE_NERVOUS_H_

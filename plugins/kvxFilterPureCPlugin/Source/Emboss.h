// Reliefs from the difference of neighbouring rows.
#ifndef KVX_SOURCE_EMBOSS_H_
#define KVX_SOURCE_EMBOSS_H_

#include <cstdint>

#include "kvx/processor.h"

// What emboss and carve share: the levels and their report.
class ReliefProcessor : public CBaseFilterProc {
 public:
  ReliefProcessor(int32_t frameWidth, int32_t frameHeight, int32_t low, int32_t high)
      : CBaseFilterProc(frameWidth, frameHeight), low_(low), high_(high) {}
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;

 protected:
  void ReadLevels(const ParamValueArray* params);

  // Before the first frame the parameters' defaults, after it levels of 0 to 255.
  int32_t low_;
  int32_t high_;
};

class CEmboss : public ReliefProcessor {
 public:
  CEmboss(int32_t frameWidth, int32_t frameHeight) : ReliefProcessor(frameWidth, frameHeight, 0, 50) {}
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

class CCarve : public ReliefProcessor {
 public:
  CCarve(int32_t frameWidth, int32_t frameHeight) : ReliefProcessor(frameWidth, frameHeight, 20, 50) {}
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;
};

#endif  // KVX_SOURCE_EMBOSS_H_

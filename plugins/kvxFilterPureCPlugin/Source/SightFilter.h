// A gun sight over the frame in grey.
#ifndef KVX_SOURCE_SIGHT_FILTER_H_
#define KVX_SOURCE_SIGHT_FILTER_H_

#include <cstdint>

#include "Source/AspectOverlay.h"
#include "framework/effect_row.h"

class CSightFilter : public CBaseFilterProc {
 public:
  CSightFilter(const EffectRow& row, int32_t frameWidth, int32_t frameHeight)
      : CBaseFilterProc(frameWidth, frameHeight), overlay_(row.materials[0], row.materials[1]) {}
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  AspectOverlay overlay_;
};

#endif  // KVX_SOURCE_SIGHT_FILTER_H_

// Overlays that lie over the frame by their own alpha and do nothing else.
#ifndef KVX_SOURCE_ASPECT_MERGE_FILTER_H_
#define KVX_SOURCE_ASPECT_MERGE_FILTER_H_

#include <cstdint>

#include "Source/AspectOverlay.h"
#include "framework/effect_row.h"

class CAspectMergeFilter : public CBaseFilterProc {
 public:
  CAspectMergeFilter(const EffectRow& row, int32_t frameWidth, int32_t frameHeight, float alphaFactor);
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  AspectOverlay overlay_;
  float alphaFactor_;
};

#endif  // KVX_SOURCE_ASPECT_MERGE_FILTER_H_

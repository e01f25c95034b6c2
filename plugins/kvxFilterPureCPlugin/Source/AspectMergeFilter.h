// Overlays that lie over the frame by their own alpha and do nothing else.
#ifndef KVX_SOURCE_ASPECT_MERGE_FILTER_H_
#define KVX_SOURCE_ASPECT_MERGE_FILTER_H_

#include <cstdint>
#include <string>

#include "AspectOverlay.h"
#include "kvx/processor.h"

class CAspectMergeFilter : public CBaseFilterProc {
 public:
  CAspectMergeFilter(int32_t width, int32_t height, std::u16string wideFile, std::u16string narrowFile,
                     float alphaFactor = 1.0f);
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  AspectOverlay overlay_;
  float alphaFactor_;
};

// The overlay effect with this id; null for an id that has none.
CBaseFilterProc* MakeAspectMergeFilter(int32_t id, int32_t width, int32_t height);

#endif  // KVX_SOURCE_ASPECT_MERGE_FILTER_H_

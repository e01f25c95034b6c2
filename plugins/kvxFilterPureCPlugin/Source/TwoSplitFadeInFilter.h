// A red and a green half with a bar between, one half fading in at the clip's start.
#ifndef KVX_SOURCE_TWO_SPLIT_FADE_IN_FILTER_H_
#define KVX_SOURCE_TWO_SPLIT_FADE_IN_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

class CTwoSplitLeftFadeInFilter : public CTimeRelateFilter {
 public:
  using CTimeRelateFilter::CTimeRelateFilter;
  void ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray* params, int32_t currentFrameNumber,
                    int32_t totalFrameCount, double rate, int32_t srcStep, int32_t dstStep) override;
};

class CTwoSplitRightFadeInFilter : public CTimeRelateFilter {
 public:
  using CTimeRelateFilter::CTimeRelateFilter;
  void ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray* params, int32_t currentFrameNumber,
                    int32_t totalFrameCount, double rate, int32_t srcStep, int32_t dstStep) override;
};

#endif  // KVX_SOURCE_TWO_SPLIT_FADE_IN_FILTER_H_

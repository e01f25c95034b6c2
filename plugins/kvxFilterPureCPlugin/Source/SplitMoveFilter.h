// Strips of the picture's centre that grow in at a clip's start and shrink away at its end.
#ifndef KVX_SOURCE_SPLIT_MOVE_FILTER_H_
#define KVX_SOURCE_SPLIT_MOVE_FILTER_H_

#include <cstdint>

#include "kvx/processor.h"

// Three columns.
class CSplitMoveFilter : public CTimeRelateFilter {
 public:
  using CTimeRelateFilter::CTimeRelateFilter;
  void ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray* params, int32_t currentFrameNumber,
                    int32_t totalFrameCount, double rate, int32_t srcStep, int32_t dstStep) override;
};

// Two columns.
class CTwoSplitMoveFilter : public CTimeRelateFilter {
 public:
  using CTimeRelateFilter::CTimeRelateFilter;
  void ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray* params, int32_t currentFrameNumber,
                    int32_t totalFrameCount, double rate, int32_t srcStep, int32_t dstStep) override;
};

// Three rows.
class CThreeSplitMoveFilterTop2Bottom : public CTimeRelateFilter {
 public:
  using CTimeRelateFilter::CTimeRelateFilter;
  void ProcessTimed(uint8_t* src, uint8_t* dst, const ParamValueArray* params, int32_t currentFrameNumber,
                    int32_t totalFrameCount, double rate, int32_t srcStep, int32_t dstStep) override;
};

#endif  // KVX_SOURCE_SPLIT_MOVE_FILTER_H_

// Light in one colour channel, or levels and contrast in all three. Works on the frame alone.
#ifndef KVX_SOURCE_MERGE_FILTER_WITH_LIGHT_H_
#define KVX_SOURCE_MERGE_FILTER_WITH_LIGHT_H_

#include <cstdint>

#include "framework/effect_row.h"

enum class LightMode { kBlue, kGreen, kRed, kAdaptive };

class CMergeFilterWithLight : public CBaseFilterProc {
 public:
  CMergeFilterWithLight(int32_t frameWidth, int32_t frameHeight, LightMode mode);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  LightMode mode_;
  int32_t levelMin_;
  int32_t levelMax_;
};

// The light effects differ by mode, and the modes stand in the order of their ids.
CBaseFilterProc* MakeMergeFilterWithLight(const EffectRow& row, int32_t width, int32_t height);

#endif  // KVX_SOURCE_MERGE_FILTER_WITH_LIGHT_H_

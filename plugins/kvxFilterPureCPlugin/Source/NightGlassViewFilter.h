// A night glass over the frame in green.
#ifndef KVX_SOURCE_NIGHT_GLASS_VIEW_FILTER_H_
#define KVX_SOURCE_NIGHT_GLASS_VIEW_FILTER_H_

#include <cstdint>

#include "AspectOverlay.h"
#include "kvx/processor.h"

class CNightGlassViewFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  AspectOverlay overlay_{u"NightGlassView16_9.png", u"NightGlassView4_3.png"};
};

#endif  // KVX_SOURCE_NIGHT_GLASS_VIEW_FILTER_H_

// A camera's finder over the frame, with a mark that blinks.
#ifndef KVX_SOURCE_CAM_RECORDER_FILTER_H_
#define KVX_SOURCE_CAM_RECORDER_FILTER_H_

#include <cstdint>

#include "Source/AspectOverlay.h"
#include "framework/effect_row.h"

class CCamRecorderFilter : public CBaseFilterProc {
 public:
  CCamRecorderFilter(const EffectRow& row, int32_t frameWidth, int32_t frameHeight)
      : CBaseFilterProc(frameWidth, frameHeight),
        on_(row.materials[0], row.materials[1]),
        off_(row.materials[2], row.materials[3]) {}
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  AspectOverlay on_;
  AspectOverlay off_;
};

#endif  // KVX_SOURCE_CAM_RECORDER_FILTER_H_

// A camera's finder over the frame, with a mark that blinks.
#ifndef KVX_SOURCE_CAM_RECORDER_FILTER_H_
#define KVX_SOURCE_CAM_RECORDER_FILTER_H_

#include <cstdint>

#include "AspectOverlay.h"
#include "kvx/processor.h"

class CCamRecorderFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  AspectOverlay on_{u"CamcorderOn16_9.png", u"CamcorderOn4_3.png"};
  AspectOverlay off_{u"CamcorderOff16_9.png", u"CamcorderOff4_3.png"};
};

#endif  // KVX_SOURCE_CAM_RECORDER_FILTER_H_

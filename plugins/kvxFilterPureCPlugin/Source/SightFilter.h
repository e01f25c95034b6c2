// A gun sight over the frame in grey.
#ifndef KVX_SOURCE_SIGHT_FILTER_H_
#define KVX_SOURCE_SIGHT_FILTER_H_

#include <cstdint>

#include "AspectOverlay.h"
#include "kvx/processor.h"

class CSightFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  AspectOverlay overlay_{u"Sight16_9.png", u"Sight4_3.png"};
};

#endif  // KVX_SOURCE_SIGHT_FILTER_H_

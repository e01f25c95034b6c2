// Black bars above and below the picture.
#ifndef KVX_SOURCE_LETTER_BOX_H_
#define KVX_SOURCE_LETTER_BOX_H_

#include <cstdint>

#include "kvx/processor.h"

class CLetterBox : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double borderWidth_ = 0.4;  // of half the height
};

#endif  // KVX_SOURCE_LETTER_BOX_H_

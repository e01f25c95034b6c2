// Straightens the picture of a fisheye lens.
#ifndef KVX_SOURCE_DEFISH_FILTER_H_
#define KVX_SOURCE_DEFISH_FILTER_H_

#include <cstdint>

#include "Source/LensMap.h"
#include "kvx/processor.h"

// `focal` in millimetres of a lens for frames of 36 by 24 mm.
void BuildDefishMap(SourcePosition* map, int32_t width, int32_t height, double focal);

class CDefishFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  double focal_ = 20.0;
  Sampling sampling_ = Sampling::kBilinear;
  LensMap map_;
};

#endif  // KVX_SOURCE_DEFISH_FILTER_H_

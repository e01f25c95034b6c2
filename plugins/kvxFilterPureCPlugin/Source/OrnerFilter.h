// The picture pinned to four corners.
#ifndef KVX_SOURCE_ORNER_FILTER_H_
#define KVX_SOURCE_ORNER_FILTER_H_

#include <array>
#include <cstdint>

#include "Source/LensMap.h"
#include "kvx/processor.h"

// x and y of the top left, top right, bottom left and bottom right corner, where 1/3 is the left or top of the frame
// and 2/3 its right or bottom.
using CornerValues = std::array<double, 8>;

void BuildCornerMap(SourcePosition* map, int32_t width, int32_t height, const CornerValues& values);

class COrnerFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  CornerValues corners_ = {0.3, 0.3, 0.3, 0.3, 0.3, 0.6, 0.6, 0.6};
  LensMap map_;
};

#endif  // KVX_SOURCE_ORNER_FILTER_H_

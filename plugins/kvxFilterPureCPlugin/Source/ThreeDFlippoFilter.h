// The picture as a card that turns in space, a little further with every frame.
#ifndef KVX_SOURCE_THREE_D_FLIPPO_FILTER_H_
#define KVX_SOURCE_THREE_D_FLIPPO_FILTER_H_

#include <array>
#include <cstdint>

#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class C3DFlippoFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  bool RebuildMap();

  std::array<double, 3> rates_ = {0.5, 0.5, 0.5};   // turns per frame about x, y, z, plus 0.5
  std::array<double, 3> angles_ = {0.5, 0.5, 0.5};  // turns plus 0.5
  std::array<double, 2> center_ = {0.5, 0.5};
  bool fillBlank_ = true;
  bool invertRotation_ = false;
  ZeroedArray<int32_t> map_;
  bool static_ = false;  // in place of what the map says
};

#endif  // KVX_SOURCE_THREE_D_FLIPPO_FILTER_H_

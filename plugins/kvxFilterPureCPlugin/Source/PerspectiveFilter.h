// Pictures laid into a quadrilateral.
#ifndef KVX_SOURCE_PERSPECTIVE_FILTER_H_
#define KVX_SOURCE_PERSPECTIVE_FILTER_H_

#include <array>
#include <cstdint>

#include "framework/frame.h"
#include "kvx/processor.h"

class CPerspectiveFilter : public CBaseFilterProc {
 public:
  using CBaseFilterProc::CBaseFilterProc;
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  std::array<double, 8> corners_ = {0, 0, 1, 0, 0, 1, 1, 1};  // x and y of each, as fractions of the frame
};

#endif  // KVX_SOURCE_PERSPECTIVE_FILTER_H_

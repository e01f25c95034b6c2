// Hue rotation that keeps luminance.
#ifndef KVX_SOURCE_HUE_SHIFT_H_
#define KVX_SOURCE_HUE_SHIFT_H_

#include <array>
#include <cstdint>

#include "kvx/processor.h"

// Rows times columns, for row vectors.
using Matrix4 = std::array<std::array<float, 4>, 4>;

class CHueShift : public CBaseFilterProc {
 public:
  CHueShift(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  Matrix4 matrix_;
};

#endif  // KVX_SOURCE_HUE_SHIFT_H_

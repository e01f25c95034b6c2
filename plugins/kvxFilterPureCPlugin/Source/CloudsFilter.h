// Clouds that drift over the picture.
#ifndef KVX_SOURCE_CLOUDS_FILTER_H_
#define KVX_SOURCE_CLOUDS_FILTER_H_

#include <array>
#include <cstdint>

#include "framework/pixels.h"
#include "framework/zeroed_array.h"
#include "kvx/processor.h"

class CCloudsFilter : public CBaseFilterProc {
 public:
  CCloudsFilter(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

  struct Layer {
    ZeroedArray<uint8_t> values;
    int32_t x = 0;  // how far it has drifted
    int32_t y = 0;
  };

 private:
  void Drift();

  int32_t density_ = 3;
  int32_t speed_ = 3;
  bool interactive_ = false;
  bool color_ = false;
  ByteTable table_;  // brightness by thickness; 0 shows the sky
  std::array<Layer, 3> layers_;
};

#endif  // KVX_SOURCE_CLOUDS_FILTER_H_

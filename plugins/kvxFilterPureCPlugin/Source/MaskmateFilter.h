// Blur inside a rectangle.
#ifndef KVX_SOURCE_MASKMATE_FILTER_H_
#define KVX_SOURCE_MASKMATE_FILTER_H_

#include <cstdint>

#include "Source/SquareBlur.h"
#include "kvx/processor.h"

class CMaskmateFilter : public CBaseFilterProc {
 public:
  CMaskmateFilter(int32_t frameWidth, int32_t frameHeight);
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override;
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) override;

 private:
  // Fractions of the frame. Rows count from above, yet the top is the greater limit and the bottom the lesser one.
  double left_ = 0.3;
  double top_ = 0.6;
  double right_ = 0.6;
  double bottom_ = 0.3;
  double blur_ = 0.1;
  CSquareBlur squareBlur_;
};

#endif  // KVX_SOURCE_MASKMATE_FILTER_H_

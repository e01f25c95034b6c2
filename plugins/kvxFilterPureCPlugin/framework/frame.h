// Frames of 32-bit pixels: views, row copies, parameters of a frame.
#ifndef KVX_FRAMEWORK_FRAME_H_
#define KVX_FRAMEWORK_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "kvx/records.h"

// Pixels of a frame that somebody else owns: bytes blue, green, red, alpha. `step` is bytes from row to row.
template <typename Byte>
struct BasicFrameView {
  Byte* data;
  int32_t width;
  int32_t height;
  int32_t step;

  Byte* Row(int32_t y) const { return data + static_cast<ptrdiff_t>(y) * step; }
  Byte* Pixel(int32_t x, int32_t y) const { return Row(y) + static_cast<ptrdiff_t>(x) * 4; }
  bool Empty() const { return width <= 0 || height <= 0; }
};
using FrameView = BasicFrameView<uint8_t>;
using ConstFrameView = BasicFrameView<const uint8_t>;

// A frame taken as one run of pixels: rows are width * 4 bytes apart, whatever the step.
inline ConstFrameView PackedSource(const uint8_t* data, int32_t width, int32_t height) {
  return {data, width, height, width * 4};
}
inline FrameView PackedDest(uint8_t* data, int32_t width, int32_t height) {
  return {data, width, height, width * 4};
}

// False, and nothing copied, if a pointer is null or width, height or a step is not above 0. Equal steps copy
// height * dstStep bytes at once; otherwise each row copies the smaller step. The width is only tested.
bool CopyRows(const uint8_t* src, uint8_t* dst, int32_t width, int32_t height, int32_t srcStep, int32_t dstStep);

// Parameter `k` of a frame, from 1 to 12; 0.0 without an array.
inline double Param(const ParamValueArray* params, int k) {
  return params ? params->value[k - 1] : 0.0;
}

// One reported parameter. The default comes from the processor's fields at the moment of the question.
struct ParamRow {
  const char16_t* name;  // at most 31 characters
  int32_t type;          // as in FilterParamDesc
  double minimum;
  double maximum;
};

// Fills `desc` from row `index` and the default at the same place; leaves it alone if there is no such row.
void DescribeParam(FilterParamDesc* desc, int32_t index, std::span<const ParamRow> rows,
                   std::initializer_list<double> defaults);

#endif  // KVX_FRAMEWORK_FRAME_H_

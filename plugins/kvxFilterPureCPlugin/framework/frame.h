// Frames of 32-bit pixels: views and row copies.
#ifndef KVX_FRAMEWORK_FRAME_H_
#define KVX_FRAMEWORK_FRAME_H_

#include <cstddef>
#include <cstdint>

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

// The same on several threads where the frame is large. Both of one size.
void CopyRowsInBands(ConstFrameView src, FrameView dst);

#endif  // KVX_FRAMEWORK_FRAME_H_

// Runs of pixels.
#ifndef KVX_SOURCE_PIXEL_WORDS_H_
#define KVX_SOURCE_PIXEL_WORDS_H_

#include <cstdint>
#include <cstring>

#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/pixels.h"

inline constexpr uint32_t kOpaqueBlack = 0xFF000000;

// `count` pixels; none if it is not above 0. The runs may overlap, as they do where a host renders a frame onto itself.
inline void CopyPixels(const uint8_t* src, uint8_t* dst, int32_t count) {
  if (count > 0) std::memmove(dst, src, 4 * static_cast<size_t>(count));
}

inline void FillPixels(uint8_t* row, int32_t begin, int32_t end, uint32_t pixel) {
  for (int32_t x = begin; x < end; ++x) StorePixel(row, x, pixel);
}

// Row by row, the visible pixels only.
inline void CopyVisible(ConstFrameView src, FrameView dst) {
  for (int32_t y = 0; y < dst.height; ++y) CopyPixels(src.Row(y), dst.Row(y), dst.width);
}

// The same on several threads where the frame is large, before work that does so, too.
inline void CopyVisibleInBands(ConstFrameView src, FrameView dst) {
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) CopyPixels(src.Row(y), dst.Row(y), dst.width);
  });
}

// CopyRows on several threads where the frame is large.
inline void CopyRowsInBands(ConstFrameView src, FrameView dst) {
  if (!src.data || !dst.data) return;
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    CopyRows(src.Row(begin), dst.Row(begin), dst.width, end - begin, src.step, dst.step);
  });
}

#endif  // KVX_SOURCE_PIXEL_WORDS_H_

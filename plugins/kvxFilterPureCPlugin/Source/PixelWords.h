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

// What CopyRows gives beside the pixels, for passes that write every one of them: the bytes between rows.
inline void CopyBetweenRows(ConstFrameView src, FrameView dst) {
  if (src.step != dst.width * 4 || dst.step != src.step) {
    CopyRows(src.data, dst.data, dst.width, dst.height, src.step, dst.step);
  }
}

#endif  // KVX_SOURCE_PIXEL_WORDS_H_

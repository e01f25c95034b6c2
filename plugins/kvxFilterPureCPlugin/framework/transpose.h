// Rows of pixels as columns.
#ifndef KVX_FRAMEWORK_TRANSPOSE_H_
#define KVX_FRAMEWORK_TRANSPOSE_H_

#include <cstdint>
#include <cstring>

#include "framework/frame.h"

// Swaps rows and columns of 32-bit pixels, blocks of 4 by 4 in registers.
inline void Transpose(ConstFrameView src, FrameView dst) {
  using Four [[gnu::vector_size(16)]] = uint32_t;
  const int32_t width = src.width & ~3;
  const int32_t height = src.height & ~3;
  for (int32_t y = 0; y < height; y += 4) {
    for (int32_t x = 0; x < width; x += 4) {
      Four rows[4], columns[4];
      for (int i = 0; i < 4; ++i) std::memcpy(&rows[i], src.Pixel(x, y + i), sizeof(Four));
      const Four left01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
      const Four left23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
      const Four right01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
      const Four right23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
      columns[0] = __builtin_shufflevector(left01, left23, 0, 1, 4, 5);
      columns[1] = __builtin_shufflevector(left01, left23, 2, 3, 6, 7);
      columns[2] = __builtin_shufflevector(right01, right23, 0, 1, 4, 5);
      columns[3] = __builtin_shufflevector(right01, right23, 2, 3, 6, 7);
      for (int i = 0; i < 4; ++i) std::memcpy(dst.Pixel(y, x + i), &columns[i], sizeof(Four));
    }
  }
  for (int32_t y = 0; y < src.height; ++y) {
    for (int32_t x = y < height ? width : 0; x < src.width; ++x) std::memcpy(dst.Pixel(y, x), src.Pixel(x, y), 4);
  }
}

#endif  // KVX_FRAMEWORK_TRANSPOSE_H_

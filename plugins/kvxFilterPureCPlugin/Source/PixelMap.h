// Passes that compute every pixel from itself alone, shared by the point effects.
#ifndef KVX_SOURCE_PIXEL_MAP_H_
#define KVX_SOURCE_PIXEL_MAP_H_

#include <cstdint>

#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/pixel_kernels.h"
#include "framework/pixels.h"

// Every pixel through `pixelOf`, which takes and gives 0xAARRGGBB: byte 0 in the low bits, byte 3 in the high ones.
template <typename PixelOf>
void MapPixels(ConstFrameView src, FrameView dst, PixelOf pixelOf) {
  for (int32_t y = 0; y < dst.height; ++y) {
    const uint8_t* in = src.Row(y);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x) {
      StorePixel(out + 4 * x, pixelOf(LoadPixel(in + 4 * x)));
    }
  }
}

// The same on several threads where the frame is large, for what takes longer than memory does.
template <typename PixelOf>
void MapPixelsInBands(ConstFrameView src, FrameView dst, PixelOf pixelOf) {
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    MapPixels({src.Row(begin), src.width, end - begin, src.step}, {dst.Row(begin), dst.width, end - begin, dst.step},
              pixelOf);
  });
}

// Bytes 0, 1 and 2 of every pixel each through a table of its own, byte 3 copied.
inline void MapBytes(ConstFrameView src, FrameView dst, const ByteTable& table0, const ByteTable& table1,
                     const ByteTable& table2) {
  for (int32_t y = 0; y < dst.height; ++y) {
    MapRow(src.Row(y), dst.Row(y), dst.width, {table0.data(), table1.data(), table2.data()});
  }
}

#endif  // KVX_SOURCE_PIXEL_MAP_H_

// Tiles of a picture wall.
#ifndef KVX_SOURCE_TILE_ROWS_H_
#define KVX_SOURCE_TILE_ROWS_H_

#include <cstdint>

#include "Source/PixelWords.h"
#include "framework/frame.h"

// A whole tile with its top left pixel at (x, y).
inline void PlaceTile(ConstFrameView tile, FrameView dst, int32_t x, int32_t y) {
  for (int32_t row = 0; row < tile.height; ++row) CopyPixels(tile.Row(row), dst.Pixel(x, y + row), tile.width);
}

// A black line at the tile's top and left.
inline void LineTile(FrameView tile) {
  FillPixels(tile.data, 0, tile.width, kOpaqueBlack);
  for (int32_t row = 0; row < tile.height; ++row) StorePixel(tile.Row(row), 0, kOpaqueBlack);
}

#endif  // KVX_SOURCE_TILE_ROWS_H_

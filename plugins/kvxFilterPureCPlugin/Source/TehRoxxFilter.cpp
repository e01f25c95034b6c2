#include "Source/TehRoxxFilter.h"

#include "Source/TileRows.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/zeroed_array.h"

namespace {

constexpr int32_t kTilesPerSide = 4;

// The whole picture, shrunk to leave a rim of one tile, with a black line at its top and left.
void PlaceCentre(ConstFrameView src, FrameView dst, int32_t rimX, int32_t rimY) {
  const FrameView centre{dst.Pixel(rimX, rimY), dst.width - 2 * rimX, dst.height - 2 * rimY, dst.step};
  const double scaleX = static_cast<double>(dst.width) / centre.width;
  const double scaleY = static_cast<double>(dst.height) / centre.height;
  std::vector<int32_t> from(static_cast<size_t>(centre.width));
  for (int32_t x = 0; x < centre.width; ++x) from[static_cast<size_t>(x)] = Trunc32(x * scaleX);
  for (int32_t y = 0; y < centre.height; ++y) {
    const uint8_t* in = src.Row(Trunc32(y * scaleY));
    uint8_t* out = centre.Row(y);
    for (int32_t x = 0; x < centre.width; ++x) StorePixel(out, x, LoadPixel(in, from[static_cast<size_t>(x)]));
  }
  LineTile(centre);
}

void MakeTile(ConstFrameView src, FrameView tile) {
  const int32_t stepX = src.width / tile.width;
  const int32_t stepY = src.height / tile.height;
  for (int32_t y = 0; y < tile.height; ++y) {
    const uint8_t* in = src.Row(y * stepY);
    uint8_t* out = tile.Row(y);
    for (int32_t x = 0; x < tile.width; ++x) StorePixel(out, x, LoadPixel(in, x * stepX));
  }
  LineTile(tile);
}

void PlaceRing(ConstFrameView tile, FrameView dst) {
  for (int32_t i = 0; i < dst.width / tile.width; ++i) {
    PlaceTile(tile, dst, tile.width * i, 0);
    PlaceTile(tile, dst, tile.width * i, dst.height - tile.height);
  }
  for (int32_t j = 1; j <= dst.height / tile.height - 2; ++j) {
    PlaceTile(tile, dst, 0, tile.height * j);
    PlaceTile(tile, dst, dst.width - tile.width, tile.height * j);
  }
}

}  // namespace

void CTehRoxxFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  if (width <= 0 || height <= 0) return;
  const int32_t tileWidth = width / kTilesPerSide;
  const int32_t tileHeight = height / kTilesPerSide;
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  PlaceCentre(in, out, tileWidth, tileHeight);
  if (tileWidth == 0 || tileHeight == 0) return;
  tile_.resize(4 * PixelCount(tileWidth, tileHeight));
  const FrameView tile = PackedDest(tile_.data(), tileWidth, tileHeight);
  MakeTile(in, tile);
  PlaceRing(PackedSource(tile_.data(), tileWidth, tileHeight), out);
}

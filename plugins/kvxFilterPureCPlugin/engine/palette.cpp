// Codes 57 and 58: few colours.
#include <algorithm>
#include <array>
#include <span>

#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "engine/palette_tables.h"

namespace film {

namespace {

constexpr int32_t kSide = 32;  // of the cube over red, green and blue
constexpr int32_t kCells = kSide * kSide * kSide;

uint8_t NearestColor(std::span<const PaletteColor> palette, int32_t red, int32_t green, int32_t blue) {
  int32_t best = 0x100000;
  uint8_t nearest = 0;
  for (size_t i = 0; i < palette.size(); ++i) {
    const int32_t dr = palette[i].red - red;
    const int32_t dg = palette[i].green - green;
    const int32_t db = palette[i].blue - blue;
    const int32_t distance = dr * dr + dg * dg + db * db;
    if (distance < best) {
      best = distance;
      nearest = static_cast<uint8_t>(i);
    }
  }
  return nearest;
}

}  // namespace

// The cube knows for each of its cells the colour nearest to the cell's dark corner.
int32_t ReducePalette(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  const std::span<const PaletteColor> palette = record.code == code::kTcvga
                                                    ? std::span<const PaletteColor>(kTcvgaPalette)
                                                    : std::span<const PaletteColor>(kCartoonPalette);
  uint8_t* cube = EnsureTable(record, kCells, kDirtyTables);
  if (!cube) return kEngineNoScratch;
  if (record.dirtyFlags & kDirtyTables) {
    for (int32_t cell = 0; cell < kCells; ++cell) {
      cube[cell] = NearestColor(palette, cell >> 10 << 3, (cell >> 5 & 31) << 3, (cell & 31) << 3);
    }
    record.dirtyFlags &= ~kDirtyTables;
  }
  std::array<uint32_t, 256> words{};
  std::transform(palette.begin(), palette.end(), words.begin(), [](const PaletteColor& color) {
    return color.blue | uint32_t{color.green} << 8 | uint32_t{color.red} << 16;
  });
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* in = from.Row(y);
      uint8_t* out = image.Row(y);
      for (int32_t x = 0; x < image.width; ++x) {
        const uint32_t pixel = LoadPixel(in, x);
        const uint32_t cell = (pixel >> 3 & 31) | (pixel >> 6 & 31 << 5) | (pixel >> 9 & 31 << 10);
        StorePixel(out, x, (pixel & kAlphaByte) | words[cube[cell]]);
      }
    }
  });
  return kEngineDone;
}

}  // namespace film

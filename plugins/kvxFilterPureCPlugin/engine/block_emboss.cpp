// Blocks and relief.
#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "framework/numeric.h"
#include "framework/row_loops.h"

namespace film {

namespace {

uint32_t PixelWord(const EngineImage& image, int32_t x, int32_t y) {
  return LoadPixel(image.Row(y), x);
}

// The block takes one colour. A row of it that is longer than what is left of the frame's row runs on into the next
// row, but not beyond the frame.
void FillBlock(const EngineImage& image, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t word) {
  const auto fill = [&](int32_t row, int32_t from, int32_t to) {
    uint8_t* p = image.Row(row);
    for (int32_t i = from; i < to; ++i) std::memcpy(p + 4 * i, &word, 4);
  };
  const int32_t over = std::clamp(x + width - image.width, 0, image.width);
  for (int32_t row = y; row < y + height; ++row) {
    fill(row, x, std::min(x + width, image.width));
    if (row + 1 < image.height) fill(row + 1, 0, over);
  }
}

}  // namespace

// Whole blocks take their middle pixel. What is left at the right and at the bottom takes its own first pixel, unless
// it is a single column or row, which stays. At the right a block is filled in its full width all the same, and so runs
// on into the first pixels of the next row: that belongs to the look.
int32_t Mosaic(EngineRecord& record, const EngineImage& image) {
  const int32_t sum = ClampInt(record.level, 1, image.width) + 7;
  const int32_t n = sum >> 3;
  const int32_t middle = sum >> 4;
  const int32_t restX = image.width % n;
  const int32_t restY = image.height % n;
  const int32_t wholeX = image.width - restX;
  const int32_t wholeY = image.height - restY;
  for (int32_t y = 0; y < wholeY; y += n) {
    for (int32_t x = 0; x < wholeX; x += n) FillBlock(image, x, y, n, n, PixelWord(image, x + middle, y + middle));
  }
  if (restX > 1) {
    for (int32_t y = 0; y < wholeY; y += n) FillBlock(image, wholeX, y, n, n, PixelWord(image, wholeX, y));
  }
  if (restY > 1) {
    for (int32_t x = 0; x < wholeX; x += n) FillBlock(image, x, wholeY, n, restY, PixelWord(image, x, wholeY));
    if (restX > 1) FillBlock(image, wholeX, wholeY, restX, restY, PixelWord(image, wholeX, wholeY));
  }
  return kEngineDone;
}

// A grey relief, lit from the side: each pixel against the one `distance` to its right.
int32_t Emboss(EngineRecord& record, const EngineImage& image) {
  const float reach = static_cast<float>(record.level / 10 + 1) * static_cast<float>(image.width) / 640.0f;
  const int32_t distance = std::clamp(Trunc32(reach), 0, image.width);
  std::vector<int32_t> sums(static_cast<size_t>(image.width));
  for (int32_t y = 0; y < image.height; ++y) GrayReliefRow(image.Row(y), sums.data(), image.width, distance);
  return kEngineDone;
}

}  // namespace film

#include "pixel_rows.h"

#include <algorithm>

void FillRim(const EngineImage& image, uint8_t value) {
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* row = image.Row(y);
    const bool whole = y == 0 || y == image.height - 1;
    const int32_t stride = whole ? 1 : std::max(image.width - 1, 1);
    for (int32_t x = 0; x < image.width; x += stride) SetGray(row + 4 * x, value);
  }
}

void MakeGrayPlane(const EngineImage& image, uint8_t* plane) {
  for (int32_t y = 0; y < image.height; ++y, plane += image.width) {
    const uint8_t* row = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x) {
      const uint32_t word = LoadPixel(row + 4 * x);
      plane[x] = static_cast<uint8_t>(((word & 255) + (word >> 7 & 510) + (word >> 16 & 255)) >> 2);
    }
  }
}

void MaxOf3x3(const RowTriple& rows, int32_t apart, int32_t count, uint8_t* columns, uint8_t* out) {
  for (int32_t i = 0; i < count; ++i) columns[i] = std::max(std::max(rows.up[i], rows.mid[i]), rows.down[i]);
  for (int32_t i = apart; i < count - apart; ++i) {
    out[i] = std::max(std::max(columns[i - apart], columns[i]), columns[i + apart]);
  }
}

#include "engine/pixel_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "pixel_rows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace pixel_rows {
namespace HWY_NAMESPACE {

void MakeGrayRow(const uint8_t* row, int32_t width, uint8_t* out) {
  for (int32_t x = 0; x < width; ++x) {
    const uint32_t word = LoadPixel(row + 4 * x);
    out[x] = static_cast<uint8_t>(((word & 255) + (word >> 7 & 510) + (word >> 16 & 255)) >> 2);
  }
}

void MaxOf3x3(const RowTriple& rows, int32_t apart, int32_t count, uint8_t* columns, uint8_t* out) {
  const uint8_t *up = rows.up, *mid = rows.mid, *down = rows.down;
  for (int32_t i = 0; i < count; ++i) columns[i] = std::max(std::max(up[i], mid[i]), down[i]);
  for (int32_t i = apart; i < count - apart; ++i) {
    out[i] = std::max(std::max(columns[i - apart], columns[i]), columns[i + apart]);
  }
}

void HardBlendRow(const uint8_t* row, const uint8_t* over, int32_t count, uint8_t* out) {
#pragma GCC ivdep
  for (int32_t i = 0; i < count; ++i) {
    const uint16_t a = row[i], t = over[i];
    const uint16_t dark = static_cast<uint16_t>(a * t) >> 7;
    const uint16_t light = static_cast<uint16_t>((255 - a) * (255 - t)) >> 7;
    out[i] = static_cast<uint8_t>(t < 128 ? dark : 255 - light);
  }
}

// The quotient lies so far from the next whole number that a 32-bit float does not reach it by rounding.
void LiftRow(const uint8_t* row, const uint8_t* largest, const uint8_t* steps, int32_t count, uint8_t* __restrict out) {
  for (int32_t i = 0; i < count; ++i) {
    const int32_t c = row[i];
    const int32_t k = steps[i] > 1 ? steps[i] : 1;
    const auto lift =
        static_cast<int32_t>(static_cast<float>(3584 * k) / static_cast<float>(10 * (largest[i] - c + 2 * k)));
    out[i] = static_cast<uint8_t>(c + ((lift * (255 - c)) >> 8));
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace pixel_rows
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace pixel_rows {
HWY_EXPORT(MakeGrayRow);
HWY_EXPORT(MaxOf3x3);
HWY_EXPORT(HardBlendRow);
HWY_EXPORT(LiftRow);
}  // namespace pixel_rows

void FillRim(const EngineImage& image, uint8_t value) {
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* row = image.Row(y);
    const bool whole = y == 0 || y == image.height - 1;
    const int32_t stride = whole ? 1 : std::max(image.width - 1, 1);
    for (int32_t x = 0; x < image.width; x += stride) SetGray(row + 4 * x, value);
  }
}

void Sharpen3x3(const RowTriple& rows, int32_t count, uint8_t* out) {
  const uint8_t *up = rows.up, *mid = rows.mid, *down = rows.down;
  for (int32_t i = 4; i < count - 4; ++i) {
    const int32_t around =
        up[i - 4] + up[i] + up[i + 4] + mid[i - 4] + mid[i + 4] + down[i - 4] + down[i] + down[i + 4];
    out[i] = static_cast<uint8_t>(std::clamp(9 * mid[i] - around, 0, 255));
  }
}

void MakeGrayPlane(const EngineImage& image, uint8_t* plane) {
  using namespace pixel_rows;
  const auto makeRow = HWY_DYNAMIC_DISPATCH(MakeGrayRow);
  const int32_t width = image.width;
  ForEachRow(image, [=](int32_t y, const uint8_t* row) { makeRow(row, width, plane + ptrdiff_t{y} * width); });
}

void MaxOf3x3(const RowTriple& rows, int32_t apart, int32_t count, uint8_t* columns, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(MaxOf3x3)(rows, apart, count, columns, out);
}

void HardBlendRow(const uint8_t* row, const uint8_t* over, int32_t count, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(HardBlendRow)(row, over, count, out);
}

void LiftRow(const uint8_t* row, const uint8_t* largest, const uint8_t* steps, int32_t count, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(LiftRow)(row, largest, steps, count, out);
}

#endif  // HWY_ONCE

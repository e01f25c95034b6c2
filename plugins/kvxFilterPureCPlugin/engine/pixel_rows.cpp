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

void Sharpen3x3(const RowTriple& rows, int32_t count, uint8_t* __restrict out) {
  const uint8_t *up = rows.up, *mid = rows.mid, *down = rows.down;
  for (int32_t i = 4; i < count - 4; ++i) {
    const int32_t around =
        up[i - 4] + up[i] + up[i + 4] + mid[i - 4] + mid[i + 4] + down[i - 4] + down[i] + down[i + 4];
    const auto sharp = static_cast<int16_t>(9 * mid[i] - around);
    out[i] = static_cast<uint8_t>(std::min<int16_t>(std::max<int16_t>(sharp, 0), 255));
  }
}

// A root is so far from the next whole number that the float's does not reach it.
void EdgeFadeRow(const RowTriple& rows, int32_t count, uint8_t* __restrict out) {
  const uint8_t *above = rows.up, *row = rows.mid, *below = rows.down;
  if (count > 0) out[0] = out[count - 1] = 255;
  for (int32_t x = 1; x < count - 1; ++x) {
    const int32_t falling = below[x + 1] - above[x - 1];
    const int32_t rising = below[x - 1] - above[x + 1];
    const int32_t down = 2 * (below[x] - above[x]) + falling + rising;
    const int32_t across = 2 * (row[x + 1] - row[x - 1]) + falling - rising;
    const int32_t gy = std::min(down < 0 ? -down : down, 255), gx = std::min(across < 0 ? -across : across, 255);
    const auto strength = static_cast<int32_t>(__builtin_sqrtf(static_cast<float>(gx * gx + gy * gy)));
    out[x] = static_cast<uint8_t>(255 - std::min(strength, 255));
  }
}

void FadeRow(const uint8_t* in, const uint8_t* fades, int32_t width, uint8_t* out) {
#pragma GCC ivdep
  for (int32_t x = 0; x < width; ++x) {
    const uint32_t pixel = LoadPixel(in + 4 * x);
    const uint32_t fade = 2 * uint32_t{fades[x]};
    uint32_t faded = pixel & kAlphaByte;
    for (int shift = 0; shift < 24; shift += 8) {
      faded |= std::min(((pixel >> shift & 255) * fade + 255) >> 8, 255u) << shift;
    }
    StorePixel(out + 4 * x, faded);
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

// The quotients of whole numbers lie so far from each other that those of 32-bit floats are cut alike.
void SoftTintRow(uint8_t* row, const uint8_t* tints, int32_t width) {
#pragma GCC ivdep
  for (int32_t i = 0; i < 4 * width; ++i) {
    const uint16_t c = row[i], t = tints[i];
    const uint16_t dark = static_cast<uint16_t>((t + 128) * c) / 255;
    const uint16_t light = static_cast<uint16_t>((382 - t) * (255 - c) + 254) / 255;
    row[i] = static_cast<uint8_t>(c < 128 ? dark : 255 - light);
  }
  for (int32_t x = 0; x < width; ++x) {
    StorePixel(row + 4 * x, (LoadPixel(row + 4 * x) & kColorBytes) | (LoadPixel(tints + 4 * x) & kAlphaByte));
  }
}

namespace {

struct Extremes {
  int32_t greatest, least;
};
Extremes ExtremesOf(uint32_t pixel) {
  const auto b = static_cast<int32_t>(pixel & 255), g = static_cast<int32_t>(pixel >> 8 & 255),
             r = static_cast<int32_t>(pixel >> 16 & 255);
  const int32_t high = b > g ? b : g, low = b > g ? g : b;
  return {high > r ? high : r, low < r ? low : r};
}

}  // namespace

void GreatestRow(const uint8_t* row, uint8_t* out, int32_t width) {
#pragma GCC ivdep
  for (int32_t x = 0; x < width; ++x) {
    const uint32_t pixel = LoadPixel(row + 4 * x);
    StorePixel(out + 4 * x, (pixel & kAlphaByte) | static_cast<uint32_t>(ExtremesOf(pixel).greatest) * 0x010101u);
  }
}

// A grey has no saturation and stays, black among them.
void RehueRow(const uint8_t* row, uint8_t* out, int32_t width, const HueLevels& levels) {
  const double slope = levels.slope;
  const int32_t valueShift = 8 * levels.value, betweenShift = 8 * levels.between, lowestShift = 8 * levels.lowest;
#pragma GCC ivdep
  for (int32_t x = 0; x < width; ++x) {
    const uint32_t pixel = LoadPixel(row + 4 * x);
    const auto [value, least] = ExtremesOf(pixel);
    const double saturation = static_cast<double>(value - least) / (value > 1 ? value : 1);
    const auto between = static_cast<int32_t>((1 - slope * saturation) * value);
    const auto lowest = static_cast<int32_t>((1 - saturation) * value);
    StorePixel(out + 4 * x, (pixel & kAlphaByte) | static_cast<uint32_t>(value) << valueShift |
                                static_cast<uint32_t>(between) << betweenShift |
                                static_cast<uint32_t>(lowest) << lowestShift);
  }
}

// In pieces, one kind of number after the other: in one loop GCC would take doubles one at a time.
void LightRow(uint8_t* row, const float* distances, int32_t width, const CenterLight& light) {
  constexpr int32_t kPiece = 64;
  const double bright = light.bright, fall = light.fall;
  double factors[kPiece], gains[kPiece];
  int32_t lit[3][kPiece];
  for (int32_t begin = 0; begin < width; begin += kPiece, row += 4 * kPiece, distances += kPiece) {
    const int32_t count = std::min(kPiece, width - begin);
    for (int32_t x = 0; x < count; ++x) {
      const double d = distances[x];
      const bool outside = d >= bright;
      const double share = (outside ? d - bright : d) / (outside ? fall : bright);
      factors[x] = outside ? 1 - share * 0.6 : 1;
      gains[x] = outside ? 0 : (1 - share) * 0.1 * 255;
    }
    for (int c = 0; c < 3; ++c) {
      for (int32_t x = 0; x < count; ++x) {
        lit[c][x] = static_cast<int32_t>(LoadPixel(row + 4 * x) >> (8 * c) & 255);
      }
      for (int32_t x = 0; x < count; ++x) lit[c][x] = static_cast<int32_t>(lit[c][x] * factors[x] + gains[x] + 0.5);
    }
    for (int32_t x = 0; x < count; ++x) {
      const auto level = [&lit, x](int c) HWY_ATTR { return static_cast<uint32_t>(std::min(lit[c][x], 255)); };
      StorePixel(row + 4 * x, (LoadPixel(row + 4 * x) & kAlphaByte) | level(0) | level(1) << 8 | level(2) << 16);
    }
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
HWY_EXPORT(Sharpen3x3);
HWY_EXPORT(EdgeFadeRow);
HWY_EXPORT(FadeRow);
HWY_EXPORT(SoftTintRow);
HWY_EXPORT(GreatestRow);
HWY_EXPORT(RehueRow);
HWY_EXPORT(LightRow);
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
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(Sharpen3x3)(rows, count, out);
}

void EdgeFadeRow(const RowTriple& rows, int32_t count, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(EdgeFadeRow)(rows, count, out);
}

void FadeRow(const uint8_t* in, const uint8_t* fades, int32_t width, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(FadeRow)(in, fades, width, out);
}

void MakeGrayPlane(const EngineImage& image, uint8_t* plane) {
  using namespace pixel_rows;
  const int32_t width = image.width;
  ForEachRow(image, [=](int32_t y, const uint8_t* row) {
    HWY_DYNAMIC_DISPATCH(MakeGrayRow)(row, width, plane + ptrdiff_t{y} * width);
  });
}

void MaxOf3x3(const RowTriple& rows, int32_t apart, int32_t count, uint8_t* columns, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(MaxOf3x3)(rows, apart, count, columns, out);
}

void HardBlendRow(const uint8_t* row, const uint8_t* over, int32_t count, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(HardBlendRow)(row, over, count, out);
}

void SoftTintRow(uint8_t* row, const uint8_t* tints, int32_t width) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(SoftTintRow)(row, tints, width);
}

void GreatestRow(const uint8_t* row, uint8_t* out, int32_t width) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(GreatestRow)(row, out, width);
}

void RehueRow(const uint8_t* row, uint8_t* out, int32_t width, const HueLevels& levels) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(RehueRow)(row, out, width, levels);
}

void LightRow(uint8_t* row, const float* distances, int32_t width, const CenterLight& light) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(LightRow)(row, distances, width, light);
}

void LiftRow(const uint8_t* row, const uint8_t* largest, const uint8_t* steps, int32_t count, uint8_t* out) {
  using namespace pixel_rows;
  HWY_DYNAMIC_DISPATCH(LiftRow)(row, largest, steps, count, out);
}

#endif  // HWY_ONCE

// Rows of pixels as words, as flat bytes and as grey planes. A routine works out a whole row of bytes, alpha's place
// included, because that is one plain loop; storing the row then leaves alpha alone.
#ifndef KVX_ENGINE_PIXEL_ROWS_H_
#define KVX_ENGINE_PIXEL_ROWS_H_

#include <cstdint>

#include "engine/engine_internal.h"
#include "framework/pixels.h"

inline uint32_t FourTimes(uint32_t byte) {
  byte |= byte << 8;
  return byte | byte << 16;
}

// The colour bytes of `count` pixels.
inline void StoreColors(uint8_t* row, const uint8_t* colors, int32_t count) {
  for (int32_t x = 0; x < count; ++x) {
    StorePixel(row + 4 * x, (LoadPixel(row + 4 * x) & kAlphaByte) | (LoadPixel(colors + 4 * x) & kColorBytes));
  }
}

// One byte for the three colours of each of `count` pixels.
inline void StoreGrays(uint8_t* row, const uint8_t* grays, int32_t count) {
  for (int32_t x = 0; x < count; ++x) {
    StorePixel(row + 4 * x, (LoadPixel(row + 4 * x) & kAlphaByte) | (FourTimes(grays[x]) & kColorBytes));
  }
}

// The colour bytes of the outermost rows and columns.
void FillRim(const EngineImage& image, uint8_t value);

// Luma4 of every pixel, rows `image.width` bytes apart.
void MakeGrayPlane(const EngineImage& image, uint8_t* plane);

// Three rows of bytes, of which the inner ones stand between neighbours `apart` bytes away.
struct RowTriple {
  const uint8_t* up;
  const uint8_t* mid;
  const uint8_t* down;
};

// Nine times each byte less the eight around it, within 0 to 255, for the bytes of the inner pixels of a row of `count`
// bytes, four a pixel.
void Sharpen3x3(const RowTriple& rows, int32_t count, uint8_t* out);

// 255 less the strength of the edge at each of the inner bytes of three grey rows, the root of the sum of squares of
// the Sobel pair, whose amounts count up to 255; both are limited to 255. The outer ones get 255.
void EdgeFadeRow(const RowTriple& rows, int32_t count, uint8_t* out);

// Twice each colour byte, times the fade of its pixel in 1/256, rounded up and limited; alpha copied. `out` may be
// `in`.
void FadeRow(const uint8_t* in, const uint8_t* fades, int32_t width, uint8_t* out);

// The largest byte of each 3 by 3 neighbourhood, for bytes `apart` to count - apart - 1 of the middle row. `columns` is
// scratch of `count` bytes.
void MaxOf3x3(const RowTriple& rows, int32_t apart, int32_t count, uint8_t* columns, uint8_t* out);

// HardBlend of each byte of `row` with that of `over`. `out` may be `over`.
void HardBlendRow(const uint8_t* row, const uint8_t* over, int32_t count, uint8_t* out);

// A soft blend of each byte c of `row` with that of `tints`, t, which is even: below 128 (t + 128) * c / 255, from
// there on 255 - (382 - t) * (255 - c) / 255, both cut. Alpha is that of `tints`.
void SoftTintRow(uint8_t* row, const uint8_t* tints, int32_t width);

// The greatest colour byte of each pixel for all three; alpha copied. `out` may be `row`.
void GreatestRow(const uint8_t* row, uint8_t* out, int32_t width);

// A new hue at the pixel's value and saturation: which byte gets the value v, which (1 - slope * saturation) * v and
// which (1 - saturation) * v; alpha copied. `out` may be `row`.
struct HueLevels {
  double slope;
  int32_t value, between, lowest;
};
void RehueRow(const uint8_t* row, uint8_t* out, int32_t width, const HueLevels& levels);

// Light around a centre: within `bright` colours gain up to a tenth of white, outside they lose 0.6 of themselves over
// `fall`.
struct CenterLight {
  double bright;
  double fall;
};
void LightRow(uint8_t* row, const float* distances, int32_t width, const CenterLight& light);

// Each byte c with a byte L of at least c beside it, and a step k, taken as 1 if it is 0, becomes
// c + (((3584 * k / (L - c + 2 * k) / 10) * (255 - c)) >> 8).
void LiftRow(const uint8_t* row, const uint8_t* largest, const uint8_t* steps, int32_t count, uint8_t* out);

#endif  // KVX_ENGINE_PIXEL_ROWS_H_

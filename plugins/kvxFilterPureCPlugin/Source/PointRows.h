// Rows of point effects whose arithmetic is worth wide vectors. The loops are plain and compiled once for each vector
// target, so that all give the same bytes. `out` may be `in`; both hold `count` pixels.
#ifndef KVX_SOURCE_POINT_ROWS_H_
#define KVX_SOURCE_POINT_ROWS_H_

#include <array>
#include <cstdint>

// Bytes 0 to 2 times `factors`, by source and result, plus `offsets`, in 32-bit floats from left to right; cut within a
// byte. Byte 3 is copied.
struct ColorMatrix {
  std::array<std::array<float, 3>, 3> factors;
  std::array<float, 3> offsets;
};
void MatrixRow(const uint8_t* in, uint8_t* out, int32_t count, const ColorMatrix& matrix);

// Bytes 0 to 2 become the low byte of 0.705724361914764 times the distance of the colour from `key`, rounded to even.
// Byte 3 is copied.
void DistanceRow(const uint8_t* in, uint8_t* out, int32_t count, const std::array<int16_t, 3>& key);

// Byte 3 by the squared distance from green; the rest is copied.
void KeyOutRow(const uint8_t* in, uint8_t* out, int32_t count);

// Byte 3 becomes the larger of itself and an inverted soft-edged ball about a light gray; the rest is copied.
void SelectRow(const uint8_t* in, uint8_t* out, int32_t count);

#endif  // KVX_SOURCE_POINT_ROWS_H_

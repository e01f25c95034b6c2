// Single pixels: as words 0xAARRGGBB, their grey values, tables of bytes.
#ifndef KVX_FRAMEWORK_PIXELS_H_
#define KVX_FRAMEWORK_PIXELS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

inline constexpr uint32_t kColorBytes = 0x00FFFFFF;
inline constexpr uint32_t kAlphaByte = 0xFF000000;

inline uint32_t LoadPixel(const uint8_t* p) {
  uint32_t word;
  std::memcpy(&word, p, 4);
  return word;
}
inline void StorePixel(uint8_t* p, uint32_t word) {
  std::memcpy(p, &word, 4);
}
// Pixel `x` of a row.
inline uint32_t LoadPixel(const uint8_t* row, int32_t x) {
  return LoadPixel(row + 4 * static_cast<ptrdiff_t>(x));
}
inline void StorePixel(uint8_t* row, int32_t x, uint32_t word) {
  StorePixel(row + 4 * static_cast<ptrdiff_t>(x), word);
}

// The three grey forms of bytes 0 to 2, not to be mixed up. A fourth stands in the colourise routine.
inline int32_t Luma255(int32_t b0, int32_t b1, int32_t b2) {
  return (29 * b0 + 150 * b1 + 76 * b2 + 255) >> 8;
}
inline int32_t Luma255(const uint8_t* p) {
  return Luma255(p[0], p[1], p[2]);
}
inline int32_t Luma4(const uint8_t* p) {
  return (p[0] + 2 * p[1] + p[2]) >> 2;
}
inline int32_t Luma1024(const uint8_t* p) {
  return (306 * p[2] + 601 * p[1] + 117 * p[0] + 512) >> 10;
}

// A byte for each byte.
using ByteTable = std::array<uint8_t, 256>;

#endif  // KVX_FRAMEWORK_PIXELS_H_

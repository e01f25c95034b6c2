// Pictures of bytes at another size: whole numbers, or floats in one order, so that every machine gives the same bytes.
#ifndef KVX_PLATFORM_STRETCH_H_
#define KVX_PLATFORM_STRETCH_H_

#include <cstddef>
#include <cstdint>

// Pixels of 1 or 4 channels, a byte each. No side is below 1.
struct StretchSource {
  const uint8_t* data;
  int32_t width, height;
  ptrdiff_t step;
};
struct StretchTarget {
  uint8_t* data;
  int32_t width, height;
  ptrdiff_t step;
};

// Linear between the centres of pixels; exactly half the size both ways, which lies between centres, means four pixels.
// Throws std::bad_alloc.
void StretchLinear(const StretchSource& from, const StretchTarget& onto, int32_t channels);

// The mean of what a pixel of `onto` covers of `from`, of which no side is the smaller. 4 channels. Throws
// std::bad_alloc.
void StretchAreas(const StretchSource& from, const StretchTarget& onto);

#endif  // KVX_PLATFORM_STRETCH_H_

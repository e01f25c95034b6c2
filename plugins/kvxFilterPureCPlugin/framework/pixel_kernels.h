// Pixel loops worth vectors. Each has a scalar definition, which is what it means, and a vector form for whatever the
// machine offers, which gives the same bytes.
#ifndef KVX_FRAMEWORK_PIXEL_KERNELS_H_
#define KVX_FRAMEWORK_PIXEL_KERNELS_H_

#include <cstdint>

// gray = ((byte0 * w0 + byte1 * w1 + byte2 * w2 + add) * multiplier) >> shift, in unsigned 32-bit arithmetic that must
// not overflow; the multiplier makes exact divisions of a sum that is small enough.
struct GrayWeights {
  uint32_t w0, w1, w2;
  uint32_t add = 0;
  uint32_t multiplier = 1;
  int shift = 0;

  uint32_t operator()(uint32_t b0, uint32_t b1, uint32_t b2) const {
    return ((b0 * w0 + b1 * w1 + b2 * w2 + add) * multiplier) >> shift;
  }
};

// Bytes 0 to 2 become the gray value, byte 3 is copied. `dst` may be `src`.
void GrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights);
void GrayRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights);

// Byte c becomes clamp((y + offset[c]) >> 8) with y = (7450 byte0 + 38442 byte1 + 19668 byte2 + 65535) >> 8. Byte 3 is
// copied. `dst` may be `src`.
struct ColorizeOffsets {
  int32_t blue, green, red;
};
void ColorizeRow(const uint8_t* src, uint8_t* dst, int32_t count, const ColorizeOffsets& offsets);
void ColorizeRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const ColorizeOffsets& offsets);

// Byte c becomes trunc(c * s + gray), with gray = (byte0 * w0 + byte1 * w1 + byte2 * w2) >> 16, 32-bit wrapping. With
// `clamp` to 0..255, otherwise its low byte. Byte 3 is copied.
struct SaturationWeights {
  double s;
  int32_t w0, w1, w2;
  bool clamp;
};
void SaturateRow(const uint8_t* src, uint8_t* dst, int32_t count, const SaturationWeights& weights);
void SaturateRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const SaturationWeights& weights);

// With D(x) = (x + (x >> 8) + 128) >> 8 and t = D(top[3] * alpha): bytes 0 to 2 are D(bottom[c] * (255 - alpha)) +
// D(top[c] * t), byte 3 is D(bottom[3] * (255 - alpha)) + D(255 * t), each sum modulo 256. `out` may be `top`. `alpha`
// from 0 to 255.
void BlendRow(uint8_t* out, const uint8_t* top, const uint8_t* bottom, int32_t count, int32_t alpha);
void BlendRowScalar(uint8_t* out, const uint8_t* top, const uint8_t* bottom, int32_t count, int32_t alpha);

// Bytes 0 to 2 each through a table of its own of 256 bytes, byte 3 copied. `dst` may be `src`.
struct ByteTables {
  const uint8_t* table0;
  const uint8_t* table1;
  const uint8_t* table2;
};
void MapRow(const uint8_t* src, uint8_t* dst, int32_t count, const ByteTables& tables);
void MapRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const ByteTables& tables);

// Bytes 0 to 2 become what the tables have for the gray value, byte 3 is copied. `dst` may be `src`.
void MapGrayRow(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights, const ByteTables& tables);
void MapGrayRowScalar(const uint8_t* src, uint8_t* dst, int32_t count, const GrayWeights& weights,
                      const ByteTables& tables);

#endif  // KVX_FRAMEWORK_PIXEL_KERNELS_H_

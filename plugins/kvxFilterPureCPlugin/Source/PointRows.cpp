#include "Source/PointRows.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "framework/pixels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "PointRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace point_rows {
namespace HWY_NAMESPACE {
namespace {

struct Colors {
  int32_t b0, b1, b2;
};
Colors ColorsOf(uint32_t pixel) {
  return {static_cast<int32_t>(pixel & 255), static_cast<int32_t>(pixel >> 8 & 255),
          static_cast<int32_t>(pixel >> 16 & 255)};
}

// Clamped before the cut, which gives the same bytes for finite values.
uint32_t ByteOf(float value) {
  value = value > 0.0f ? value : 0.0f;
  value = value < 255.0f ? value : 255.0f;
  return static_cast<uint32_t>(static_cast<int32_t>(value));
}

}  // namespace

void MatrixRow(const uint8_t* in, uint8_t* out, int32_t count, const ColorMatrix& matrix) {
  const ColorMatrix m = matrix;
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(in + 4 * x);
    const Colors c = ColorsOf(pixel);
    const float b0 = static_cast<float>(c.b0), b1 = static_cast<float>(c.b1), b2 = static_cast<float>(c.b2);
    uint32_t made = pixel & kAlphaByte;
    for (size_t j = 0; j < 3; ++j) {
      const float v = b0 * m.factors[0][j] + b1 * m.factors[1][j] + b2 * m.factors[2][j] + m.offsets[j];
      made |= ByteOf(v) << (8 * j);
    }
    StorePixel(out + 4 * x, made);
  }
}

void DistanceRow(const uint8_t* in, uint8_t* out, int32_t count, const std::array<int16_t, 3>& key) {
  const int32_t k0 = key[0], k1 = key[1], k2 = key[2];
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(in + 4 * x);
    const Colors c = ColorsOf(pixel);
    const float d0 = static_cast<float>(k0 - c.b0), d1 = static_cast<float>(k1 - c.b1),
                d2 = static_cast<float>(k2 - c.b2);
    const float d = __builtin_sqrtf(d0 * d0 + d1 * d1 + d2 * d2);
    // The sum's low mantissa bits are the nearest integer, for amounts below 2^31.
    const double sum = d * 0.705724361914764 + 6755399441055744.0;
    const uint32_t v = static_cast<uint32_t>(std::bit_cast<uint64_t>(sum)) & 255;
    StorePixel(out + 4 * x, v * 0x010101u | (pixel & kAlphaByte));
  }
}

void KeyOutRow(const uint8_t* in, uint8_t* out, int32_t count) {
  // Pixels from kFar (squared) on are opaque, up to half of it transparent.
  constexpr int32_t kKey[3] = {0, 240, 0};
  constexpr uint32_t kFar = 127 * 127;
  constexpr uint32_t kNear = kFar >> 1;
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(in + 4 * x);
    const Colors c = ColorsOf(pixel);
    const int32_t d0 = c.b0 - kKey[0], d1 = c.b1 - kKey[1], d2 = c.b2 - kKey[2];
    const uint32_t d = static_cast<uint32_t>(d2 * d2 + d1 * d1 + d0 * d0);
    // Not limited: at the last step before kFar it is 256, which leaves byte 3 at 0. This is meant.
    const uint32_t within = d < kFar ? d : kFar;
    const uint32_t ramp = ((within > kNear ? within : kNear) - kNear) * 256 / kNear;
    const uint32_t alpha = d >= kFar ? 255 : ramp;
    StorePixel(out + 4 * x, (pixel & kColorBytes) | alpha << 24);
  }
}

void SelectRow(const uint8_t* in, uint8_t* out, int32_t count) {
  constexpr float kByte = 0.00392157f;
  constexpr float kColor = 0.8f;
  constexpr float kInverseTolerance = 1.0f / 0.2f;
  const auto away = [](int32_t byte)
                        HWY_ATTR { return (static_cast<float>(byte) * kByte - kColor) * kInverseTolerance; };
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(in + 4 * x);
    const Colors c = ColorsOf(pixel);
    const float e0 = away(c.b0), e1 = away(c.b1), e2 = away(c.b2);
    const float d = e0 * e0 + e1 * e1 + e2 * e2;
    const float m = d * (d * d * d);
    const float inside = m < 1.0f ? 1.0f - m : 0.0f;
    const int32_t mask = static_cast<int32_t>((1.0f - inside) * 255.0f);
    const int32_t alpha = static_cast<int32_t>(pixel >> 24);
    StorePixel(out + 4 * x, (pixel & kColorBytes) | static_cast<uint32_t>(alpha > mask ? alpha : mask) << 24);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace point_rows
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace point_rows {
HWY_EXPORT(MatrixRow);
HWY_EXPORT(DistanceRow);
HWY_EXPORT(KeyOutRow);
HWY_EXPORT(SelectRow);
}  // namespace point_rows

void MatrixRow(const uint8_t* in, uint8_t* out, int32_t count, const ColorMatrix& matrix) {
  using namespace point_rows;
  HWY_DYNAMIC_DISPATCH(MatrixRow)(in, out, count, matrix);
}

void DistanceRow(const uint8_t* in, uint8_t* out, int32_t count, const std::array<int16_t, 3>& key) {
  using namespace point_rows;
  HWY_DYNAMIC_DISPATCH(DistanceRow)(in, out, count, key);
}

void KeyOutRow(const uint8_t* in, uint8_t* out, int32_t count) {
  using namespace point_rows;
  HWY_DYNAMIC_DISPATCH(KeyOutRow)(in, out, count);
}

void SelectRow(const uint8_t* in, uint8_t* out, int32_t count) {
  using namespace point_rows;
  HWY_DYNAMIC_DISPATCH(SelectRow)(in, out, count);
}

#endif  // HWY_ONCE

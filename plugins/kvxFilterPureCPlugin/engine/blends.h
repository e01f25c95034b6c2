// Blends of two levels of 0 to 255, as the looks define them.
#ifndef KVX_ENGINE_BLENDS_H_
#define KVX_ENGINE_BLENDS_H_

#include <cstdint>

#include "engine/engine_internal.h"

inline uint8_t HardBlend(int32_t a, int32_t t) {
  return static_cast<uint8_t>(t < 128 ? (a * t) >> 7 : 255 - (((255 - a) * (255 - t)) >> 7));
}

inline uint8_t ScreenBlend(int32_t a, int32_t t) {
  return static_cast<uint8_t>(255 - (((255 - a) * (255 - t)) >> 8));
}

// Exclusion of every level with the constant `k`.
inline Curve ExclusionCurve(int32_t k) {
  Curve curve;
  for (int32_t c = 0; c < 256; ++c) curve[c] = static_cast<uint8_t>(static_cast<int32_t>(c + k - 2.0 * c * k / 255));
  return curve;
}

// Goes through both curves, `first` first.
inline Curve Compose(const Curve& first, const Curve& second) {
  Curve curve;
  for (int32_t i = 0; i < 256; ++i) curve[i] = second[first[i]];
  return curve;
}

// A function of two levels as a table: entry 256 * a + b.
using LevelPairTable = std::array<uint8_t, 65536>;
template <typename Function>
LevelPairTable MakeLevelPairTable(Function function) {
  LevelPairTable table;
  for (int32_t a = 0; a < 256; ++a) {
    for (int32_t b = 0; b < 256; ++b) table[256 * a + b] = function(a, b);
  }
  return table;
}

#endif  // KVX_ENGINE_BLENDS_H_

// Routines that combine the frame with a second image, the material.
#ifndef KVX_ENGINE_MERGE_ROUTINES_H_
#define KVX_ENGINE_MERGE_ROUTINES_H_

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "engine_internal.h"
#include "pixel_rows.h"

enum class MaterialUse {
  kNone,
  kPixelForPixel,  // the material is at least as large as the frame when the routine runs
  kOwnSize,        // the routine minds the material's size by itself
};

// Codes `first` to `last`.
struct MergeRoutine {
  uint32_t first;
  uint32_t last;
  int32_t (*run)(EngineRecord& record, const EngineImage& frame, const EngineImage& material);
  MaterialUse use = MaterialUse::kPixelForPixel;
};

std::span<const MergeRoutine> BlendModeRoutines();
std::span<const MergeRoutine> MergeLookRoutines();

// A run of pixels as Blend hands it to an Extra.
inline constexpr int32_t kBlendRun = 64;
using BlendBytes = uint8_t[4 * kBlendRun];

struct NoExtra {};

// Every colour byte becomes op(frame byte, material byte), or op(frame byte, material byte, extra byte) where
// extra(frame word, material word) gives the extra bytes of a pixel as one word.
template <typename Extra, typename Op>
void Blend(const EngineImage& frame, const EngineImage& material, Extra extra, Op op) {
  alignas(16) BlendBytes f, m, e, out;
  for (int32_t y = 0; y < frame.height; ++y) {
    for (int32_t x = 0; x < frame.width; x += kBlendRun) {
      uint8_t* pixels = frame.Row(y) + 4 * x;
      const int32_t count = std::min(kBlendRun, frame.width - x);
      std::memcpy(f, pixels, static_cast<size_t>(4 * count));
      std::memcpy(m, material.Row(y) + 4 * x, static_cast<size_t>(4 * count));
      if constexpr (std::is_same_v<Extra, NoExtra>) {
        for (int32_t i = 0; i < 4 * count; ++i) out[i] = static_cast<uint8_t>(op(f[i], m[i]));
      } else {
        for (int32_t i = 0; i < 4 * count; i += 4) StorePixel(e + i, extra(LoadPixel(f + i), LoadPixel(m + i)));
        for (int32_t i = 0; i < 4 * count; ++i) out[i] = static_cast<uint8_t>(op(f[i], m[i], e[i]));
      }
      StoreColors(pixels, out, count);
    }
  }
}

template <typename Op>
void Blend(const EngineImage& frame, const EngineImage& material, Op op) {
  Blend(frame, material, NoExtra{}, op);
}

// Of a dark `a` (below 128) the product with `b` in 1/128, of a bright one the same of the complements: 255 - x is x ^
// 255, so there is one formula for both.
inline int32_t DoubledProduct(int32_t a, int32_t b, int32_t rounding) {
  const int32_t flip = static_cast<uint8_t>(-(a >> 7));
  return (((a ^ flip) * (b ^ flip) + rounding) >> 7) ^ flip;
}

int32_t Multiply(EngineRecord& record, const EngineImage& frame, const EngineImage& material);
int32_t Overlay(EngineRecord& record, const EngineImage& frame, const EngineImage& material);

#endif  // KVX_ENGINE_MERGE_ROUTINES_H_

// Routines that combine the frame with a second image, the material.
#ifndef KVX_ENGINE_MERGE_ROUTINES_H_
#define KVX_ENGINE_MERGE_ROUTINES_H_

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include "engine/engine_internal.h"
#include "engine/pixel_rows.h"

// Colours of `from`, mixed with those of `material`, go to `to`, with the alpha of `from`. `from` and `to` are of one
// size and may be the same image; `material` is at least as large.
struct BlendImages {
  const EngineImage& from;
  const EngineImage& material;
  const EngineImage& to;
};

// Codes `first` to `last`: one blend.
struct BlendMode {
  uint32_t first;
  uint32_t last;
  int32_t (*run)(EngineRecord& record, const BlendImages& images);
  bool needsMaterial = true;
};

// Codes `first` to `last`: a look. It writes every pixel of `to` if it is direct; otherwise it works in place, on a
// copy that stands in `to`.
struct MergeLook {
  uint32_t first;
  uint32_t last;
  int32_t (*run)(EngineRecord& record, const BlendImages& images);
  bool direct;
  bool takesAnySize = false;  // of the material; otherwise it is at least as large as the frame
};

std::span<const BlendMode> BlendModeRows();
std::span<const MergeLook> MergeLookRows();

// Pixels that Blend takes at a time, and their bytes.
inline constexpr int32_t kBlendRun = 64;
using BlendBytes = std::array<uint8_t, 4 * kBlendRun>;

// All ones at the alphas.
inline constexpr BlendBytes kAlphas = [] {
  BlendBytes bytes{};
  for (size_t i = 3; i < bytes.size(); i += 4) bytes[i] = 255;
  return bytes;
}();

struct NoExtra {};

// Rows of the three images of a blend.
struct BlendRows {
  const uint8_t* from;
  const uint8_t* material;
  uint8_t* to;
};
inline BlendRows RowsOf(const BlendImages& images, int32_t y) {
  return {images.from.Row(y), images.material.Row(y), images.to.Row(y)};
}

// Every colour byte becomes op(frame byte, material byte), or op(frame byte, material byte, extra byte) where
// extra(frame word, material word) gives the extra bytes of a pixel as one word.
template <typename Extra, typename Op>
[[gnu::always_inline]] inline void BlendRow(const BlendRows& rows, int32_t width, Extra extra, Op op) {
  for (int32_t x = 0; x < width; x += kBlendRun) {
    const uint8_t* f = rows.from + 4 * x;
    const uint8_t* m = rows.material + 4 * x;
    uint8_t* to = rows.to + 4 * x;
    const int32_t count = std::min(kBlendRun, width - x);
    alignas(64) [[maybe_unused]] uint8_t e[4 * kBlendRun];
    if constexpr (std::is_same_v<Extra, BlendBytes>) {
      std::memcpy(e, extra.data() + 4 * x, sizeof(e));
    } else if constexpr (!std::is_same_v<Extra, NoExtra>) {
      for (int32_t i = 0; i < 4 * count; i += 4) StorePixel(e + i, extra(LoadPixel(f + i), LoadPixel(m + i)));
    }
    // `to` is `f` or apart from it.
#pragma GCC ivdep
    for (int32_t i = 0; i < 4 * count; ++i) {
      uint8_t color;
      if constexpr (std::is_same_v<Extra, NoExtra>) {
        color = static_cast<uint8_t>(op(f[i], m[i]));
      } else {
        color = static_cast<uint8_t>(op(f[i], m[i], e[i]));
      }
      const uint8_t alpha = kAlphas[static_cast<size_t>(i)];
      to[i] = static_cast<uint8_t>((color & ~alpha) | (f[i] & alpha));
    }
  }
}

template <typename Extra, typename Op>
[[gnu::always_inline]] inline void Blend(const BlendImages& images, Extra extra, Op op) {
  for (int32_t y = 0; y < images.to.height; ++y) BlendRow(RowsOf(images, y), images.to.width, extra, op);
}

template <typename Op>
[[gnu::always_inline]] inline void Blend(const BlendImages& images, Op op) {
  Blend(images, NoExtra{}, op);
}

inline int32_t Product(int32_t a, int32_t b) {
  return (a * b + 255) >> 8;
}

// Of a dark `a` (below 128) the product with `b` in 1/128, of a bright one the same of the complements: 255 - x is x ^
// 255, so there is one formula for both.
inline int32_t DoubledProduct(int32_t a, int32_t b, int32_t rounding) {
  const int32_t flip = static_cast<uint8_t>(-(a >> 7));
  return (((a ^ flip) * (b ^ flip) + rounding) >> 7) ^ flip;
}

#endif  // KVX_ENGINE_MERGE_ROUTINES_H_

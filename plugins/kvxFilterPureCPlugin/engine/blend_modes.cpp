// Blend modes: each colour byte of the frame from itself and the material's byte at the same place. Where a mode is a
// formula that a compiler turns into vector code it stands as that formula; the others go through a table of all byte
// pairs.
#include <cmath>

#include "merge_routines.h"
#include "numeric.h"

int32_t Multiply(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, [](int32_t f, int32_t m) { return (f * m + 255) >> 8; });
  return kEngineDone;
}

// The branch is on the frame.
int32_t Overlay(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, [](int32_t f, int32_t m) { return DoubledProduct(f, m, 127); });
  return kEngineDone;
}

namespace {

uint32_t ColorWord(const EngineRecord& record) {
  return record.colorBlue | static_cast<uint32_t>(record.colorGreen) << 8 |
         static_cast<uint32_t>(record.colorRed) << 16;
}

uint32_t Luma4Word(uint32_t pixel) {
  return FourTimes(((pixel & 255) + (pixel >> 7 & 510) + (pixel >> 16 & 255)) >> 2);
}

int32_t Tint(EngineRecord& record, const EngineImage& frame, const EngineImage&) {
  const uint32_t color = ColorWord(record);
  const int32_t weight = record.colorExtra;
  Blend(
      frame, frame, [color](uint32_t, uint32_t) { return color; },
      [weight](int32_t f, int32_t, int32_t c) { return (f * (256 - weight) + c * weight) >> 8; });
  return kEngineDone;
}

int32_t AlphaOver(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(
      frame, material, [](uint32_t, uint32_t m) { return FourTimes(m >> 24); },
      [](int32_t f, int32_t m, int32_t a) { return (f * (256 - a) + m * a + 255) >> 8; });
  return kEngineDone;
}

int32_t LumaMultiply(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(
      frame, material, [](uint32_t f, uint32_t) { return Luma4Word(f); },
      [](int32_t, int32_t m, int32_t luma) { return (luma * m + 255) >> 8; });
  return kEngineDone;
}

// The frame, in 64 steps, screened with a colour of which `inverse` is the complement.
inline int32_t Stencil(int32_t f, int32_t inverse) {
  return 255 - (((255 - (f & 252)) * inverse + 255) >> 8);
}

int32_t StencilMultiply(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  const uint32_t inverse = ~ColorWord(record);
  Blend(
      frame, material, [inverse](uint32_t, uint32_t) { return inverse; },
      [](int32_t f, int32_t m, int32_t c) { return (Stencil(f, c) * m + 255) >> 8; });
  return kEngineDone;
}

int32_t LinearBurnColor(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  const uint32_t inverse = ~ColorWord(record);
  Blend(
      frame, material, [inverse](uint32_t, uint32_t) { return inverse; },
      [](int32_t f, int32_t m, int32_t c) { return std::max(Stencil(f, c) + m - 255, 0); });
  return kEngineDone;
}

// The material where the frame is bright, one channel of it elsewhere; none if the channel is alpha.
int32_t ChannelGate(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  const uint32_t kept = record.channel >= 0 && record.channel < 3 ? 255u << (8 * record.channel) : 0;
  Blend(
      frame, material,
      [kept](uint32_t f, uint32_t) {
        const uint32_t brightness = ((f & 255) + (f >> 8 & 255) + (f >> 16 & 255) + 2) >> 7;
        return brightness >= 3 ? kColorBytes : kept;
      },
      [](int32_t, int32_t m, int32_t gate) { return m & gate; });
  return kEngineDone;
}

// The material's byte faded to white by a percentage of 0 to 100.
inline int32_t FadeToWhite(int32_t m, int32_t percent) {
  return static_cast<uint16_t>((m - 255) * percent + 25500) / 100;
}

// The branch is on the faded material, the reverse of Overlay.
int32_t HardMix(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  const int32_t percent = ClampInt(record.level, 0, 100);
  Blend(frame, material, [percent](int32_t f, int32_t m) { return DoubledProduct(FadeToWhite(m, percent), f, 127); });
  return kEngineDone;
}

// The percentage is kept from the first frame: a later level changes nothing.
int32_t LinearPercent(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  constexpr uint32_t kFlags = 3;
  uint8_t* kept = EnsureTable(record, 1, kFlags);
  if (!kept) return kEngineNoScratch;
  if (record.dirtyFlags & kFlags) {
    *kept = static_cast<uint8_t>(ClampInt(record.level, 0, 100));
    record.dirtyFlags &= ~kFlags;
  }
  const int32_t percent = *kept;
  Blend(frame, material, [percent](int32_t f, int32_t m) { return std::max(f + FadeToWhite(m, percent) - 255, 0); });
  return kEngineDone;
}

int32_t Add(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, [](int32_t f, int32_t m) { return std::min(f + m, 255); });
  return kEngineDone;
}

int32_t Darken(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, [](uint8_t f, uint8_t m) { return std::min(f, m); });
  return kEngineDone;
}

int32_t Screen(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, [](int32_t f, int32_t m) { return 255 - (((255 - m) * (255 - f) + 255) >> 8); });
  return kEngineDone;
}

int32_t LinearLight(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(frame, material, [](int32_t f, int32_t m) { return std::clamp(f + 2 * m - 255, 0, 255); });
  return kEngineDone;
}

// Through a table of all byte pairs, one row for each byte of the frame, built once by `entry(f, m)`.
template <typename Entry>
int32_t BlendByTable(EngineRecord& record, const EngineImage& frame, const EngineImage& material, Entry entry) {
  uint8_t* table = EnsureTable(record, 65536, kDirtyTables);
  if (!table) return kEngineNoScratch;
  if (record.dirtyFlags & kDirtyTables) {
    for (int32_t f = 0; f < 256; ++f) {
      for (int32_t m = 0; m < 256; ++m) table[f * 256 + m] = static_cast<uint8_t>(entry(f, m));
    }
    record.dirtyFlags &= ~kDirtyTables;
  }
  for (int32_t y = 0; y < frame.height; ++y) {
    uint8_t* f = frame.Row(y);
    const uint8_t* m = material.Row(y);
    for (int32_t x = 0; x < frame.width; ++x, f += 4, m += 4) {
      const uint8_t blue = table[f[0] << 8 | m[0]];
      const uint8_t green = table[f[1] << 8 | m[1]];
      const uint8_t red = table[f[2] << 8 | m[2]];
      f[0] = blue;
      f[1] = green;
      f[2] = red;
    }
  }
  return kEngineDone;
}

int32_t Dodge(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  return BlendByTable(record, frame, material,
                      [](int32_t f, int32_t m) { return m == 255 ? 255 : std::min(f * 255 / (255 - m), 255); });
}

int32_t SoftLight(EngineRecord& record, const EngineImage& frame, const EngineImage& material) {
  return BlendByTable(record, frame, material, [](int32_t f, int32_t m) {
    if (m < 128) return ((m - 128) * f * (255 - f) + f * 32768) >> 15;
    const float x = static_cast<float>(f);
    const int32_t lift = static_cast<int32_t>(16.0f * std::sqrt(x) - x);
    return ((m - 128) * lift + f * 128) >> 7;
  });
}

// 1.3 times what luma and material are together above white: 85196 / 65536, of which the whole part is added by itself.
int32_t BurntPaper(EngineRecord&, const EngineImage& frame, const EngineImage& material) {
  Blend(
      frame, material, [](uint32_t f, uint32_t) { return Luma4Word(f); },
      [](int32_t, int32_t m, int32_t luma) {
        const uint16_t above = static_cast<uint16_t>(std::max(m + luma - 255, 0));
        return std::min(above + (above * 19660u >> 16), 255u);
      });
  return kEngineDone;
}

}  // namespace

std::span<const MergeRoutine> BlendModeRoutines() {
  static constexpr MergeRoutine kRoutines[] = {
      {2049, 2049, Tint, MaterialUse::kNone},
      {2050, 2050, AlphaOver},
      {2052, 2061, Multiply},
      {2063, 2063, LumaMultiply},
      {2064, 2066, StencilMultiply},
      {2067, 2070, ChannelGate},
      {2072, 2078, Overlay},
      {2081, 2093, HardMix},
      {2096, 2104, Add},
      {2107, 2107, Dodge},
      {2110, 2113, Darken},
      {2116, 2166, Screen},
      {2169, 2174, SoftLight},
      {2177, 2184, LinearPercent},
      {2186, 2186, BurntPaper},
      {2187, 2189, LinearBurnColor},
      {2191, 2191, LinearLight},
  };
  return kRoutines;
}

// Blend modes: each colour byte of the frame from itself and the material's byte at the same place. Each mode stands as
// a formula that the compiler turns into vector code, once for every vector set.
#include <cmath>

#include "engine/merge_routines.h"
#include "framework/numeric.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blend_modes.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvx {
namespace HWY_NAMESPACE {

int32_t Multiply(EngineRecord&, const BlendImages& images) {
  Blend(images, Product);
  return kEngineDone;
}

// The branch is on the frame.
int32_t Overlay(EngineRecord&, const BlendImages& images) {
  Blend(images, [](int32_t f, int32_t m) { return DoubledProduct(f, m, 127); });
  return kEngineDone;
}

uint32_t ColorWord(const EngineRecord& record) {
  return record.colorBlue | static_cast<uint32_t>(record.colorGreen) << 8 |
         static_cast<uint32_t>(record.colorRed) << 16;
}

uint32_t Luma4Word(uint32_t pixel) {
  return FourTimes(((pixel & 255) + (pixel >> 7 & 510) + (pixel >> 16 & 255)) >> 2);
}

int32_t Tint(EngineRecord& record, const BlendImages& images) {
  const uint32_t color = ColorWord(record);
  const int32_t weight = record.colorExtra;
  Blend(
      images, [color](uint32_t, uint32_t) { return color; },
      [weight](int32_t f, int32_t, int32_t c) { return (f * (256 - weight) + c * weight) >> 8; });
  return kEngineDone;
}

int32_t AlphaOver(EngineRecord&, const BlendImages& images) {
  Blend(
      images, [](uint32_t, uint32_t m) { return FourTimes(m >> 24); },
      [](int32_t f, int32_t m, int32_t a) { return (f * (256 - a) + m * a + 255) >> 8; });
  return kEngineDone;
}

int32_t LumaMultiply(EngineRecord&, const BlendImages& images) {
  Blend(
      images, [](uint32_t f, uint32_t) { return Luma4Word(f); },
      [](int32_t, int32_t m, int32_t luma) { return (luma * m + 255) >> 8; });
  return kEngineDone;
}

// The frame, in 64 steps, screened with a colour of which `inverse` is the complement.
inline int32_t Stencil(int32_t f, int32_t inverse) {
  return 255 - (((255 - (f & 252)) * inverse + 255) >> 8);
}

int32_t StencilMultiply(EngineRecord& record, const BlendImages& images) {
  const uint32_t inverse = ~ColorWord(record);
  Blend(
      images, [inverse](uint32_t, uint32_t) { return inverse; },
      [](int32_t f, int32_t m, int32_t c) { return (Stencil(f, c) * m + 255) >> 8; });
  return kEngineDone;
}

int32_t LinearBurnColor(EngineRecord& record, const BlendImages& images) {
  const uint32_t inverse = ~ColorWord(record);
  Blend(
      images, [inverse](uint32_t, uint32_t) { return inverse; },
      [](int32_t f, int32_t m, int32_t c) { return std::max(Stencil(f, c) + m - 255, 0); });
  return kEngineDone;
}

// The material where the frame is bright, one channel of it elsewhere; none if the channel is alpha.
int32_t ChannelGate(EngineRecord& record, const BlendImages& images) {
  const uint32_t kept = record.channel >= 0 && record.channel < 3 ? 255u << (8 * record.channel) : 0;
  Blend(
      images,
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
int32_t HardMix(EngineRecord& record, const BlendImages& images) {
  const int32_t percent = ClampInt(record.level, 0, 100);
  Blend(images, [percent](int32_t f, int32_t m) { return DoubledProduct(FadeToWhite(m, percent), f, 127); });
  return kEngineDone;
}

// The percentage is kept from the first frame: a later level changes nothing.
int32_t LinearPercent(EngineRecord& record, const BlendImages& images) {
  constexpr uint32_t kFlags = 3;
  uint8_t* kept = EnsureTable(record, 1, kFlags);
  if (!kept) return kEngineNoScratch;
  if (record.dirtyFlags & kFlags) {
    *kept = static_cast<uint8_t>(ClampInt(record.level, 0, 100));
    record.dirtyFlags &= ~kFlags;
  }
  const int32_t percent = *kept;
  Blend(images, [percent](int32_t f, int32_t m) { return std::max(f + FadeToWhite(m, percent) - 255, 0); });
  return kEngineDone;
}

int32_t Add(EngineRecord&, const BlendImages& images) {
  Blend(images, [](int32_t f, int32_t m) { return std::min(f + m, 255); });
  return kEngineDone;
}

int32_t Darken(EngineRecord&, const BlendImages& images) {
  Blend(images, [](uint8_t f, uint8_t m) { return std::min(f, m); });
  return kEngineDone;
}

int32_t Screen(EngineRecord&, const BlendImages& images) {
  Blend(images, [](int32_t f, int32_t m) { return 255 - (((255 - m) * (255 - f) + 255) >> 8); });
  return kEngineDone;
}

int32_t LinearLight(EngineRecord&, const BlendImages& images) {
  Blend(images, [](int32_t f, int32_t m) { return std::clamp(f + 2 * m - 255, 0, 255); });
  return kEngineDone;
}

// The quotient of whole numbers this small keeps its integer part in floats. A white material gives white.
int32_t Dodge(EngineRecord&, const BlendImages& images) {
  ForRowBands(images.to.width, 0, images.to.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      BlendRow(RowsOf(images, y), images.to.width, NoExtra{}, [](int32_t f, int32_t m) {
        const int32_t white = (m + 1) >> 8;  // 1 or 0: a branch would keep the loop from becoming vector code
        const float lifted = static_cast<float>(f * 255) / static_cast<float>((255 - m) | white);
        return std::min(static_cast<int32_t>(lifted), 255) | -white;
      });
    }
  });
  return kEngineDone;
}

int32_t SoftLight(EngineRecord&, const BlendImages& images) {
  Curve lift;
  for (int32_t i = 0; i < 256; ++i) {
    const float x = static_cast<float>(i);
    lift[i] = static_cast<uint8_t>(16.0f * std::sqrt(x) - x);
  }
  const ByteTables lifts = {lift.data(), lift.data(), lift.data()};
  ForRowBands(images.to.width, 0, images.to.height, [=](int32_t begin, int32_t end) {
    BlendBytes lifted;
    for (int32_t y = begin; y < end; ++y) {
      for (int32_t x = 0; x < images.to.width; x += kBlendRun) {
        const int32_t count = std::min(kBlendRun, images.to.width - x);
        const auto [from, material, to] = RowsOf(images, y);
        MapRow(from + 4 * x, lifted.data(), count, lifts);
        BlendRow({from + 4 * x, material + 4 * x, to + 4 * x}, count, lifted, [](int32_t f, int32_t m, int32_t l) {
          // f + (((m - 128) * f * (255 - f)) >> 15) or f + (((m - 128) * l) >> 7), in 16 bits.
          const auto twice = static_cast<int16_t>(2 * m - 256), parabola = static_cast<int16_t>(f * (255 - f));
          const auto dark = static_cast<int16_t>(int32_t{twice} * parabola >> 16);
          const auto bright = static_cast<int16_t>(static_cast<int16_t>((m - 128) * l) >> 7);
          return f + (m < 128 ? dark : bright);
        });
      }
    }
  });
  return kEngineDone;
}

// 1.3 times what luma and material are together above white: 85196 / 65536, of which the whole part is added by itself.
int32_t BurntPaper(EngineRecord&, const BlendImages& images) {
  Blend(
      images, [](uint32_t f, uint32_t) { return Luma4Word(f); },
      [](int32_t, int32_t m, int32_t luma) {
        const uint16_t above = static_cast<uint16_t>(std::max(m + luma - 255, 0));
        return std::min(above + (above * 19660u >> 16), 255u);
      });
  return kEngineDone;
}

std::span<const BlendMode> BlendModes() {
  static constexpr BlendMode kModes[] = {
      {code::kTint, code::kTint, Tint, false},
      {code::kAlphaOver, code::kAlphaOver, AlphaOver},
      {code::kAncientCanvas, code::kWaterDrop3, Multiply},
      {code::kOldTv, code::kOldTv, LumaMultiply},
      {code::kStencilRed, code::kStencilBlue, StencilMultiply},
      {code::kAlphaGate, code::kBlueGate, ChannelGate},
      {code::kHardLight, code::kOverlayLast, Overlay},
      {code::kHardMix, code::kHardMixLast, HardMix},
      {code::kAddFirst, code::kAddLast, Add},
      {code::kDodge, code::kDodge, Dodge},
      {code::kDarken, code::kDarkenLast, Darken},
      {code::kScreenFirst, code::kScreenLast, Screen},
      {code::kSoftLight, code::kSoftLightLast, SoftLight},
      {code::kLinearPercent, code::kLinearPercentLast, LinearPercent},
      {code::kBurntPaper, code::kBurntPaper, BurntPaper},
      {code::kLinearBurnFirst, code::kLinearBurnLast, LinearBurnColor},
      {code::kLinearLight, code::kLinearLight, LinearLight},
      {code::kRadialOverlay, code::kRadialOverlay, Overlay},
  };
  return kModes;
}

}  // namespace HWY_NAMESPACE
}  // namespace kvx
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace kvx {
HWY_EXPORT(BlendModes);
}  // namespace kvx

std::span<const BlendMode> BlendModeRows() {
  using namespace kvx;
  return HWY_DYNAMIC_DISPATCH(BlendModes)();
}

#endif  // HWY_ONCE

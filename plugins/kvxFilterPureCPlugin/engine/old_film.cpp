// Old films: worn, flickering, each in the tone of its time.
#include <algorithm>
#include <array>

#include "engine/curve.h"
#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "engine/wear.h"
#include "framework/random.h"

namespace film {

namespace {

void AddFreshWear(const EngineImage& image, Rand& rand) {
  const int32_t scratches = rand.Next() % 5;
  const int32_t spots = rand.Next() % 30;
  AddWear(image, spots, scratches, rand);
}

// Noise that is read up to three entries beyond an index of 0 to 63.
using NoiseTable = std::array<int32_t, 68>;

NoiseTable DrawNoise(Rand& rand, int32_t mask, int32_t base) {
  NoiseTable table;
  for (int32_t& entry : table) entry = (rand.Next() & mask) + base;
  return table;
}

// In the films below each pixel waits for the one before it. Of their running numbers the low ten bits count, so they
// may wrap; and what the last step has found enters a sum last, so that nothing else waits for it.
constexpr uint32_t kNoiseMask = 0x3FF;

// The brightness of 192 to 223 for each entry of the noise.
std::array<uint32_t, kNoiseMask + 1> MakeFlicker() {
  std::array<uint32_t, kNoiseMask + 1> flicker;
  for (size_t i = 0; i < flicker.size(); ++i) flicker[i] = (randomTable[i] >> 3) + 192u;
  return flicker;
}

constexpr CurveKnots kOld70sRed = {25, 78, 131, 184, 236};

}  // namespace

// Sepia with noise that walks with the picture's own reds.
int32_t OldMovie(EngineRecord&, const EngineImage& image) {
  static const Curve kBlueGreen = MakeCurve(CurveKnots{50, 98, 145, 193, 240});
  static const Curve kRed = MakeCurve(CurveKnots{120, 153, 185, 218, 250});
  Rand rand;
  int32_t i = rand.Next() & 63;
  const NoiseTable noise = DrawNoise(rand, 31, -16);
  AddFreshWear(image, rand);
  const auto tint = [](uint8_t* p, int32_t n) -> int32_t {
    const int32_t s = (p[0] + p[2]) >> 1;
    p[0] = p[1] = Clamp(kBlueGreen[s & ~7] + n);  // in steps
    p[2] = Clamp(kRed[s] + n);
    return p[2];
  };
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    int32_t x = 0;
    for (; x + 4 <= image.width; x += 4, p += 16) {
      int32_t reds = 0;
      for (int k = 0; k < 4; ++k) reds += tint(p + 4 * k, noise[i + k]);
      i = (i + 4 + reds) & 63;
    }
    for (; x < image.width; ++x, p += 4) i = (i + tint(p, noise[i]) + 1) & 63;
  }
  return kEngineDone;
}

// The tint of the first photographs, flickering.
int32_t Old80s(EngineRecord&, const EngineImage& image) {
  static const Curve kTone = MakeCurve(CurveKnots{27, 86, 141, 195, 207});
  static const Curve kBlue = MakeCurve(CurveKnots{12, 55, 99, 142, 185});
  static const Curve kGreen = MakeCurve(CurveKnots{10, 61, 111, 162, 196});
  static const Curve kRed = MakeCurve(CurveKnots{1, 64, 121, 175, 216});
  Rand rand;
  int32_t i = rand.Next() & 63;
  const NoiseTable flicker = DrawNoise(rand, 63, 224);
  const auto tint = [](uint8_t* p, int32_t factor) {
    const int32_t v = std::min((kTone[Luma4(p)] * factor) >> 8, 255);
    p[0] = kBlue[v];
    p[1] = kGreen[v];
    p[2] = kRed[v];
    return v;
  };
  int32_t lastFactor = 0;
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    int32_t x = 0;
    for (; x + 4 <= image.width; x += 4, p += 16) {
      const int32_t first = tint(p, flicker[i]);
      for (int k = 1; k < 4; ++k) tint(p + 4 * k, flicker[i + k]);
      i = (i + 3 + flicker[i] * x + first * y + 1) & 63;
    }
    for (; x < image.width; ++x, p += 4) {
      // The pixels left over are brighter by 224 again.
      lastFactor = flicker[((y + 1) * Luma4(p) + lastFactor * x) & 63] + 224;
      tint(p, lastFactor);
    }
  }
  return kEngineDone;
}

// Grey with flicker.
int32_t Old90s(EngineRecord&, const EngineImage& image) {
  Rand rand;
  uint32_t a = static_cast<uint32_t>(rand.Next() & 255);
  AddFreshWear(image, rand);
  const auto flicker = MakeFlicker();
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const uint32_t g = flicker[a & kNoiseMask];
      const uint32_t v = (static_cast<uint32_t>(Luma4(p)) * g) >> 8;
      SetGray(p, static_cast<uint8_t>(v));
      a = (a + g) + v;
    }
  }
  return kEngineDone;
}

// Codes 47 and 56: worn, then in tones of their own.
int32_t WornCurves(EngineRecord& record, const EngineImage& image) {
  static const CurveSet kOld70s{MakeCurve(CurveKnots{0, 55, 110, 166, 220}),
                                MakeCurve(CurveKnots{11, 67, 124, 180, 226}), MakeCurve(kOld70sRed)};
  static const CurveSet kXpro{MakeCurve(CurveKnots{0, 83, 175, 233, 254}), MakeCurve(CurveKnots{0, 0, 134, 220, 254}),
                              MakeCurve(CurveKnots{0, 39, 141, 222, 254})};
  Rand rand;
  AddFreshWear(image, rand);
  const CurveSet& set = record.code == code::kOld70s ? kOld70s : kXpro;
  MapChannels(image, image, set.blue.data(), set.green.data(), set.red.data());
  return kEngineDone;
}

// Its red flickers over the whole range.
int32_t Siena(EngineRecord&, const EngineImage& image) {
  static const Curve kBlue = MakeCurve(CurveKnots{0, 48, 95, 143, 190});
  static const Curve kGreen = MakeCurve(CurveKnots{0, 54, 108, 162, 215});
  static const Curve kRed = MakeCurve(kOld70sRed);
  Rand rand;
  uint32_t a = static_cast<uint32_t>(rand.Next() & 255);
  AddFreshWear(image, rand);
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const uint32_t blue = kBlue[p[0]], green = kGreen[p[1]];
      const uint32_t red = (kRed[p[2]] * uint32_t{randomTable[a & kNoiseMask]}) >> 8;
      StorePixel(p, (LoadPixel(p) & kAlphaByte) | red << 16 | green << 8 | blue);
      a = (a + blue + green) + red;
    }
  }
  return kEngineDone;
}

// Flickering grey without wear.
int32_t GrayRetro(EngineRecord&, const EngineImage& image) {
  Rand rand;
  uint32_t a = static_cast<uint32_t>(rand.Next() & 0xFFFF);
  uint32_t g = static_cast<uint32_t>(rand.Next());
  const auto flicker = MakeFlicker();
  // What stands before the last brightness is added: the first pixel has none.
  uint32_t before = a - g;
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const uint32_t s = static_cast<uint32_t>(p[0] + p[2]) >> 1;
      // s * a + g with a = before + g.
      a = before + g;
      g = flicker[(s * before + (s + 1) * g) & kNoiseMask];
      SetGray(p, static_cast<uint8_t>((s * g) >> 8));
      before = a + static_cast<uint32_t>(x);
    }
  }
  return kEngineDone;
}

}  // namespace film

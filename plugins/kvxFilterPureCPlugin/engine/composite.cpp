// Composite looks whose steps work pixel by pixel, and the list of all composite looks.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "engine/blends.h"
#include "engine/color_tone.h"
#include "engine/composite_looks.h"
#include "engine/curve.h"
#include "engine/engine_internal.h"
#include "framework/numeric.h"

namespace {

// The columns from `begin` up to `end`; empty if there are none.
EngineImage Columns(const EngineImage& image, int32_t begin, int32_t end) {
  return MakeEngineImage(image.pixels + 4 * static_cast<ptrdiff_t>(begin), end - begin, image.height, image.stepBytes);
}

// Four vertical strips, a black gap after each of the first three. What is left of the width after four equal strips
// stays.
int32_t FourSeasons(EngineRecord&, const EngineImage& image) {
  static const CurveSet kStrips[] = {
      CrossProcessCurves(),
      {MakeCurve(CurveKnots{0, 45, 94, 153, 254}), MakeCurve(CurveKnots{0, 77, 134, 193, 255}),
       MakeCurve(CurveKnots{0, 31, 56, 199, 255})},
      TemperatureCurves(65),
      TemperatureCurves(20),
  };
  static constexpr Curve kBlack{};
  const int32_t quarter = image.width >> 2;
  const int32_t gap = Trunc32(2 * std::max(1.0, image.width / 640.0));
  for (int32_t i = 0; i < 4; ++i) {
    const CurveSet& set = kStrips[i];
    const int32_t next = (i + 1) * quarter;
    const int32_t end = i < 3 ? next - gap : next;
    MapChannels(Columns(image, i * quarter, end), Columns(image, i * quarter, end), set.blue.data(), set.green.data(),
                set.red.data());
    if (i < 3)
      MapChannels(Columns(image, std::max(end, 0), next), Columns(image, std::max(end, 0), next), kBlack.data(),
                  kBlack.data(), kBlack.data());
  }
  return kEngineDone;
}

int32_t YellowOnGray(EngineRecord&, const EngineImage& image) {
  const Curve blue = SineContrastCurve(5);
  Curve green, red;
  for (size_t i = 0; i < blue.size(); ++i) {
    green[i] = Clamp(blue[i] + 35);
    red[i] = Clamp(blue[i] + 41);
  }
  MapGray(image, image, {117, 601, 306, 512, 1, 10}, blue, green, red);  // the weights of Luma1024
  return kEngineDone;
}

struct FreshnessTables {
  Curve spread[3];          // by channel
  Curve tint[3];            // half the tint for a luma: tints are even
  uint8_t blend[128][256];  // by half the tint and the level, common curve included

  FreshnessTables() {
    static constexpr int32_t kCenter[] = {135, 39, 17};
    static constexpr CurveKnots kTint[] = {{153, 174, 204, 235, 255}, {51, 93, 153, 214, 255}, {2, 54, 129, 204, 255}};
    const Curve common = MakeCurve(CurveKnots{0, 145, 207, 238, 255});
    for (int c = 0; c < 3; ++c) {
      const Curve curve = MakeCurve(kTint[c]);
      for (int32_t i = 0; i < 256; ++i) {
        spread[c][i] = static_cast<uint8_t>((92 * std::abs(i - kCenter[c]) + 163 * i) >> 8);
        tint[c][i] = curve[i] >> 1;
      }
    }
    for (int32_t half = 0; half < 128; ++half) {
      for (int32_t c = 0; c < 256; ++c) {
        const int32_t t = 2 * half;
        const float soft = c < 128 ? static_cast<float>((t + 128) * c) / 255.0f
                                   : 255.0f - static_cast<float>((382 - t) * (255 - c)) / 255.0f;
        blend[half][c] = common[static_cast<uint8_t>(soft)];
      }
    }
  }
};

int32_t Freshness(EngineRecord&, const EngineImage& image) {
  static const FreshnessTables tables;
  ForEachPixel(image, [](uint8_t* p) {
    const uint8_t spread[] = {tables.spread[0][p[0]], tables.spread[1][p[1]], tables.spread[2][p[2]]};
    const int32_t luma = Luma255(spread);
    for (int c = 0; c < 3; ++c) p[c] = tables.blend[tables.tint[c][luma]][spread[c]];
  });
  return kEngineDone;
}

// Exclusion lifts the shadows into a violet haze, the curves brighten: all three rise faster than a square root at the
// dark end and hold back above it; blue does so most, and the highlights stay warm.
int32_t NewFresh(EngineRecord&, const EngineImage& image) {
  static const CurveSet kCurves = [] {
    static constexpr CurvePoint kBlue[] = {{0, 0},    {2, 25},    {6, 42},    {16, 62},  {64, 106},
                                           {96, 134}, {128, 166}, {174, 214}, {255, 255}};
    static constexpr CurvePoint kGreen[] = {{0, 0},    {2, 26},    {6, 44},    {16, 65},  {32, 84},
                                            {64, 118}, {128, 176}, {192, 223}, {255, 255}};
    static constexpr CurvePoint kRed[] = {{0, 0},    {2, 26},    {6, 44},    {16, 66},  {32, 86},
                                          {64, 121}, {128, 179}, {192, 226}, {255, 255}};
    return CurveSet{Compose(ExclusionCurve(81), MakeCurve(kBlue)), Compose(ExclusionCurve(25), MakeCurve(kGreen)),
                    Compose(ExclusionCurve(31), MakeCurve(kRed))};
  }();
  MapChannels(image, image, kCurves.blue.data(), kCurves.green.data(), kCurves.red.data());
  return kEngineDone;
}

// Distance of every pixel from (cx, cy), row after row.
void BuildDistanceMap(float* map, int32_t width, int32_t height, int32_t cx, int32_t cy) {
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const double dx = x - cx;
      const double dy = y - cy;
      *map++ = static_cast<float>(std::sqrt(dx * dx + dy * dy));
    }
  }
}

// A bright centre and dark corners, then curves and a tint.
int32_t Aegean(EngineRecord& record, const EngineImage& image) {
  static const CurveSet kCurves = [] {
    const auto screened = [](const CurveKnots& knots, int32_t tint) {
      Curve curve = MakeCurve(knots);
      for (uint8_t& entry : curve) entry = ScreenBlend(entry, tint);
      return curve;
    };
    return CurveSet{screened({53, 82, 126, 169, 199}, 0), screened({0, 63, 144, 214, 255}, 26),
                    screened({0, 30, 155, 236, 255}, 26)};
  }();
  record.radius = 65;
  const int32_t cx = record.posX * image.width / 100;
  const int32_t cy = record.posY * image.height / 100;
  auto* map = reinterpret_cast<float*>(EnsureTable(record, image.width * image.height * 4, kDirtyTables));
  if (!map) return kEngineNoScratch;
  if (record.dirtyFlags & (kDirtyTables | kDirtyParticles)) {
    BuildDistanceMap(map, image.width, image.height, cx, cy);
    record.dirtyFlags &= ~(kDirtyTables | kDirtyParticles);
  }
  const double reach = std::sqrt(static_cast<double>(cx) * cx + static_cast<double>(cy) * cy);
  const double bright = 0.65 * reach;
  const double fall = reach > 0 ? 0.35 * reach : 1;  // a frame of one pixel has no reach
  ForEachRow(image, [=](int32_t y, uint8_t* p) {
    const float* distances = map + static_cast<ptrdiff_t>(y) * image.width;
    for (const uint8_t* end = p + static_cast<ptrdiff_t>(image.width) * 4; p < end; p += 4) {
      const double d = *distances++;
      uint8_t lit[3];
      if (d >= bright) {
        const double k = 1 - (d - bright) / fall * 0.6;
        for (int c = 0; c < 3; ++c) lit[c] = static_cast<uint8_t>(static_cast<int32_t>(p[c] * k + 0.5));
      } else {
        const double gain = (1 - d / bright) * 0.1 * 255;
        for (int c = 0; c < 3; ++c) {
          lit[c] = static_cast<uint8_t>(std::min(static_cast<int32_t>(p[c] + gain + 0.5), 255));
        }
      }
      p[0] = kCurves.blue[lit[0]];
      p[1] = kCurves.green[lit[1]];
      p[2] = kCurves.red[lit[2]];
    }
  });
  return kEngineDone;
}

}  // namespace

std::span<const LookRoutine> CompositeRoutines() {
  static constexpr LookRoutine kRoutines[] = {
      {code::kFourSeasons, FourSeasons},
      {code::kSketchInPhoto, SketchInPhoto},
      {code::kSimpleElegant, SimpleElegant},
      {code::kYellowOnGray, YellowOnGray},
      {code::kGrayNoise, GrayNoise},
      {code::kFreshness, Freshness},
      {code::kBeautify, Beautify},
      {code::kFuzzy, Fuzzy, true},
      {code::kGloaming, Gloaming},
      {code::kNewFresh, NewFresh},
      {code::kAegean, Aegean},
      {code::kLineDrawing, LineDrawing},
      {code::kWash, Wash},
      {code::kComic, Comic, true},
      {code::kRainbow, Rainbow},
      {code::kLabTone, LabTone},
      {code::kSunriseBands, SunriseBands},
  };
  return kRoutines;
}

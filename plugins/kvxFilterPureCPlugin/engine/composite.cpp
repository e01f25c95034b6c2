// Composite looks whose steps work pixel by pixel, and the list of all composite looks.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "engine/blends.h"
#include "engine/color_tone.h"
#include "engine/composite_looks.h"
#include "engine/curve.h"
#include "engine/engine_internal.h"
#include "engine/pixel_rows.h"
#include "framework/numeric.h"

namespace {

ByteTables TablesOf(const CurveSet& set) {
  return {set.blue.data(), set.green.data(), set.red.data()};
}

// Four vertical strips, a black gap after each of the first three. What is left of the width after four equal strips
// stays.
int32_t FourSeasons(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  static const CurveSet kStrips[] = {
      CrossProcessCurves(),
      {MakeCurve(CurveKnots{0, 45, 94, 153, 254}), MakeCurve(CurveKnots{0, 77, 134, 193, 255}),
       MakeCurve(CurveKnots{0, 31, 56, 199, 255})},
      TemperatureCurves(65),
      TemperatureCurves(20),
  };
  const int32_t quarter = image.width >> 2;
  const int32_t gap = Trunc32(2 * std::max(1.0, image.width / 640.0));
  ForEachCopiedRow(from, image, [=](int32_t, uint8_t* row) {
    for (int32_t i = 0; i < 4; ++i) {
      const int32_t begin = i * quarter;
      const int32_t next = begin + quarter;
      const int32_t end = i < 3 ? next - gap : next;
      MapRow(row + 4 * begin, row + 4 * begin, end - begin, TablesOf(kStrips[i]));
      for (int32_t x = std::max(end, 0); x < next; ++x) StorePixel(row, x, LoadPixel(row, x) & kAlphaByte);
    }
  });
  return kEngineDone;
}

int32_t YellowOnGray(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  const Curve blue = SineContrastCurve(5);
  Curve green, red;
  for (size_t i = 0; i < blue.size(); ++i) {
    green[i] = Clamp(blue[i] + 35);
    red[i] = Clamp(blue[i] + 41);
  }
  MapGray(from, image, kLuma1024, blue, green, red);
  return kEngineDone;
}

struct FreshnessTables {
  Curve spread[3];  // by channel
  Curve tint[3];    // of a luma: even
  Curve common;

  FreshnessTables() {
    static constexpr int32_t kCenter[] = {135, 39, 17};
    static constexpr CurveKnots kTint[] = {{153, 174, 204, 235, 255}, {51, 93, 153, 214, 255}, {2, 54, 129, 204, 255}};
    common = MakeCurve(CurveKnots{0, 145, 207, 238, 255});
    for (int c = 0; c < 3; ++c) {
      const Curve curve = MakeCurve(kTint[c]);
      for (int32_t i = 0; i < 256; ++i) {
        spread[c][i] = static_cast<uint8_t>((92 * std::abs(i - kCenter[c]) + 163 * i) >> 8);
        tint[c][i] = curve[i] & ~1;
      }
    }
  }
};

int32_t Freshness(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  static const FreshnessTables tables;
  const auto tablesOf = [](const Curve(&c)[3]) { return ByteTables{c[0].data(), c[1].data(), c[2].data()}; };
  const uint8_t* common = tables.common.data();
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> tints(4 * static_cast<size_t>(image.width));
    for (int32_t y = begin; y < end; ++y) {
      uint8_t* row = image.Row(y);
      MapRow(from.Row(y), row, image.width, tablesOf(tables.spread));
      MapGrayRow(row, tints.data(), image.width, kLuma255, tablesOf(tables.tint));
      SoftTintRow(row, tints.data(), image.width);
      MapRow(row, row, image.width, {common, common, common});
    }
  });
  return kEngineDone;
}

// Exclusion lifts the shadows into a violet haze, the curves brighten: all three rise faster than a square root at the
// dark end and hold back above it; blue does so most, and the highlights stay warm.
int32_t NewFresh(EngineRecord&, const EngineImage& from, const EngineImage& image) {
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
  MapChannels(from, image, kCurves.blue.data(), kCurves.green.data(), kCurves.red.data());
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
int32_t Aegean(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
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
  const CenterLight light{0.65 * reach, reach > 0 ? 0.35 * reach : 1};  // a frame of one pixel has no reach
  ForEachCopiedRow(from, image, [=](int32_t y, uint8_t* row) {
    LightRow(row, map + static_cast<ptrdiff_t>(y) * image.width, image.width, light);
    MapRow(row, row, image.width, TablesOf(kCurves));
  });
  return kEngineDone;
}

}  // namespace

std::span<const DirectLook> CompositeLooks() {
  static constexpr DirectLook kLooks[] = {
      {code::kFourSeasons, FourSeasons},
      {code::kSimpleElegant, SimpleElegant},
      {code::kYellowOnGray, YellowOnGray},
      {code::kFreshness, Freshness},
      {code::kBeautify, Beautify},
      {code::kGloaming, Gloaming},
      {code::kNewFresh, NewFresh},
      {code::kAegean, Aegean},
      {code::kWash, Wash},
      {code::kRainbow, Rainbow},
      {code::kLabTone, LabTone},
      {code::kSunriseBands, SunriseBands},
  };
  return kLooks;
}

std::span<const LookRoutine> CompositeRoutines() {
  static constexpr LookRoutine kRoutines[] = {
      {code::kSketchInPhoto, SketchInPhoto}, {code::kGrayNoise, GrayNoise}, {code::kFuzzy, Fuzzy, true},
      {code::kLineDrawing, LineDrawing},     {code::kComic, Comic, true},
  };
  return kRoutines;
}

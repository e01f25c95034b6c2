// Point looks: each pixel from itself alone, alpha kept.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/color_tone.h"
#include "engine/curve.h"
#include "engine/engine_internal.h"
#include "framework/numeric.h"
#include "framework/pixel_kernels.h"

namespace {

// Codes 7 to 10: keep one channel. The level that the shells pass is not used.
int32_t KeepChannel(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  record.channel = static_cast<int32_t>(record.code - code::kBlueChannel);
  const uint32_t mask = 0xFF000000u | 0xFFu << (8 * record.channel);
  MapWords(from, image, [mask](uint32_t pixel) { return pixel & mask; });
  return kEngineDone;
}

int32_t Exposure(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  const int32_t level = ClampInt(record.level, 0, 100);
  Curve table;
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t exposed = Clamp(Trunc32(255 * std::log(i + 1.0) / std::log(256.0) + 0.5));
    table[i] = Clamp(exposed + level - 50);
  }
  MapChannels(from, image, table.data(), table.data(), table.data());
  return kEngineDone;
}

int32_t GrayScale(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  for (int32_t y = 0; y < image.height; ++y) GrayRow(from.Row(y), image.Row(y), image.width, kLuma255);
  return kEngineDone;
}

int32_t Binary(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  const uint32_t threshold = static_cast<uint32_t>(ClampInt(record.level, 0, 100) * 256 / 100);
  MapWords(from, image, [threshold](uint32_t pixel) {
    const uint32_t luma = ((pixel & 255) + (pixel >> 7 & 510) + (pixel >> 16 & 255)) >> 2;
    return (pixel & 0xFF000000) | (luma < threshold ? 0 : 0x00FFFFFF);
  });
  return kEngineDone;
}

int32_t XRays(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  Curve table;
  for (int32_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i);
  MapGray(from, image, kLuma4, table, table, table);
  return kEngineDone;
}

int32_t Negative(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  MapWords(from, image, [](uint32_t pixel) { return pixel ^ 0x00FFFFFF; });
  return kEngineDone;
}

int32_t Thermal(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  CurveSet set;
  for (int32_t v = 0; v < 256; ++v) {
    set.blue[v] = static_cast<uint8_t>(v < 128 ? v : 0);
    set.green[v] = static_cast<uint8_t>(v < 128 ? v : 255 - v);
    set.red[v] = static_cast<uint8_t>(v < 128 ? 0 : v);
  }
  MapGray(from, image, kLuma4, set.blue, set.green, set.red);
  return kEngineDone;
}

// Codes 16 and 17: a band of brightness picks one of three colours.
int32_t Tritone(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  static constexpr uint8_t kColors[2][3][3] = {{{0, 0, 255}, {0, 255, 0}, {255, 0, 0}},
                                               {{255, 0, 255}, {0, 255, 255}, {255, 255, 0}}};
  const auto& colors = kColors[record.code == code::kTritone2];
  CurveSet set;
  for (int32_t v = 0; v < 256; ++v) {
    const int32_t band = v >> 4;
    const auto& color = colors[band <= 4 ? 0 : band <= 9 ? 1 : 2];
    set.blue[v] = color[0];
    set.green[v] = color[1];
    set.red[v] = color[2];
  }
  MapGray(from, image, kLuma4, set.blue, set.green, set.red);
  return kEngineDone;
}

int32_t Solarize(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  Curve table;
  for (int32_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i < 128 ? i : 256 - i);
  MapChannels(from, image, table.data(), table.data(), table.data());
  return kEngineDone;
}

// Codes 25 to 28: colour temperature, each with a level of its own.
int32_t Temperature(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  static constexpr int32_t kLevels[] = {10, 30, 65, 80};
  record.level = kLevels[record.code - code::kCold];
  const CurveSet set = TemperatureCurves(record.level);
  MapChannels(from, image, set.blue.data(), set.green.data(), set.red.data());
  return kEngineDone;
}

// Keeps the pixel's luminance and takes the chroma of the record's colour.
int32_t Colorize(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  const int32_t b = record.colorBlue;
  const int32_t g = record.colorGreen;
  const int32_t r = record.colorRed;
  const int32_t u = ((((112 * b - 74 * g - 38 * r) >> 8) & 255) + 128) & 255;
  const int32_t v = (((112 * r - 94 * g - 18 * b) >> 8) + 128) & 255;
  const int32_t kb = (u - 128) * 516;
  const int32_t kr = (v - 128) * 408;
  const int32_t kg = 39424 - 100 * u - 208 * v;
  for (int32_t y = 0; y < image.height; ++y) ColorizeRow(from.Row(y), image.Row(y), image.width, {kb, kg, kr});
  return kEngineDone;
}

// Codes 30 to 42. Olive and teal each hold what is commonly called the other's colour, and are meant to.
int32_t NamedColor(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  struct Color {
    uint8_t blue, green, red;
  };
  static constexpr Color kColors[] = {
      {20, 190, 230},   // brown
      {23, 51, 92},     // chocolate
      {179, 222, 245},  // wheat
      {230, 240, 250},  // linen
      {128, 0, 128},    // purple
      {128, 128, 0},    // olive
      {0, 128, 128},    // teal
      {255, 0, 0},      // blue
      {0, 255, 0},      // green
      {0, 0, 255},      // red
      {0, 255, 255},    // yellow
      {255, 0, 255},    // fuchsia
      {255, 255, 0},    // cyan
  };
  const Color& color = kColors[record.code - code::kBrown];
  record.colorBlue = color.blue;
  record.colorGreen = color.green;
  record.colorRed = color.red;
  return Colorize(record, from, image);
}

int32_t HoodWink(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  MapWords(from, image, [](uint32_t pixel) {
    const uint32_t blue = (pixel & 255) * 29 >> 8;
    const uint32_t green = (pixel >> 8 & 255) * 150 >> 8;
    const uint32_t red = (pixel >> 16 & 255) * 77 >> 8;
    return (pixel & 0xFF000000) | red << 16 | green << 8 | blue;
  });
  return kEngineDone;
}

void BuildCyanBlueTables(uint8_t* tables) {
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t m = ((255 - i) * i) >> 7;
    const int32_t s = i <= 128 ? m : 255 - m;
    tables[i] = static_cast<uint8_t>(Trunc32(0.4 * s + 0.6 * i));
    tables[256 + i] = static_cast<uint8_t>(Trunc32(0.3 * s + 0.7 * i));
    const int32_t h = i == 0 ? 0 : std::max((i - 255) * 256 / i + 255, 0) & 255;
    tables[512 + i] = static_cast<uint8_t>(i == 0 ? 0 : Trunc32(0.7 * h + 0.30000000000000004 * i));
  }
}

int32_t CyanBlue(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  uint8_t* tables = EnsureTable(record, 768, kDirtyTables);
  if (!tables) return kEngineNoScratch;
  if (record.dirtyFlags & kDirtyTables) {
    BuildCyanBlueTables(tables);
    record.dirtyFlags &= ~kDirtyTables;
  }
  MapChannels(from, image, tables, tables + 256, tables + 512);
  return kEngineDone;
}

// A grey of high contrast.
int32_t Lnk(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  const int32_t k = 100 - ClampInt(record.level, 0, 100);
  Curve table;
  for (int32_t i = 0; i < 256; ++i) {
    table[i] =
        static_cast<uint8_t>(i < 128 ? ((i + k) * i + 255) >> 8 : 255 - (((i - 255 - k) * (i - 255) + 255) >> 8));
  }
  MapGray(from, image, kLuma255, table, table, table);
  return kEngineDone;
}

int32_t SineContrastLook(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  SineContrast(from, image, record.level);
  return kEngineDone;
}

struct CurveLook {
  uint32_t code;
  CurveKnots blue;
  CurveKnots green;
  CurveKnots red;
};

constexpr CurveLook kCrossProcess = {
    code::kCrossProcess, {60, 97, 148, 186, 209}, {0, 88, 184, 236, 255}, {0, 51, 194, 254, 255}};

constexpr CurveLook kCurveLooks[] = {
    {code::kJapanese, {105, 151, 218, 254, 255}, {25, 101, 174, 228, 249}, {25, 90, 178, 224, 235}},
    {code::kMovie, {0, 41, 86, 175, 229}, {0, 59, 121, 191, 250}, {0, 76, 161, 211, 255}},
    kCrossProcess,
    {code::kRetro, {57, 96, 135, 164, 192}, {21, 78, 131, 189, 243}, {0, 60, 146, 220, 255}},
    {code::kCinnamon, {114, 114, 128, 204, 253}, {0, 52, 128, 204, 236}, {0, 52, 128, 186, 187}},
    {code::kSunFlower, {69, 69, 92, 114, 122}, {36, 67, 137, 180, 192}, {43, 132, 210, 243, 254}},
    {code::kRomantic, {62, 62, 134, 192, 217}, {1, 69, 172, 227, 254}, {104, 151, 208, 236, 254}},
    {code::kHoliday, {97, 126, 154, 169, 173}, {37, 97, 170, 209, 222}, {57, 69, 188, 242, 254}},
    {code::kPurpleLomo, {104, 149, 192, 219, 232}, {20, 55, 175, 220, 235}, {35, 90, 178, 216, 235}},
    {code::kBlueTears, {34, 128, 195, 234, 252}, {5, 88, 171, 224, 253}, {0, 68, 155, 217, 253}},
    {code::kPurpleLove, {0, 81, 176, 232, 255}, {0, 0, 134, 220, 255}, {0, 39, 140, 222, 255}},
};

CurveSet MakeCurveSet(const CurveLook& look) {
  CurveSet set{MakeCurve(look.blue), MakeCurve(look.green), MakeCurve(look.red)};
  if (look.code == code::kRetro) {
    // The blue curve is measured, not smooth: its last three entries are known and go up and down.
    static constexpr CurvePoint kMeasured[] = {{0, 57},    {64, 96},   {128, 135}, {192, 164},
                                               {253, 195}, {254, 199}, {255, 192}};
    set.blue = MakeCurve(kMeasured);
  }
  return set;
}

// One routine for all curve looks; their curves are made once.
int32_t MapCurves(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  static const std::array<CurveSet, std::size(kCurveLooks)> sets = [] {
    std::array<CurveSet, std::size(kCurveLooks)> made;
    std::transform(std::begin(kCurveLooks), std::end(kCurveLooks), made.begin(), MakeCurveSet);
    return made;
  }();
  const auto* look = std::find_if(std::begin(kCurveLooks), std::end(kCurveLooks),
                                  [&](const CurveLook& l) { return l.code == record.code; });
  const CurveSet& set = sets[static_cast<size_t>(look - kCurveLooks)];
  MapChannels(from, image, set.blue.data(), set.green.data(), set.red.data());
  return kEngineDone;
}

}  // namespace

CurveSet TemperatureCurves(int32_t level) {
  const int32_t d = (level - 50) * 3;
  const int32_t e = d >> 1;
  CurveSet set;
  for (int32_t i = 0; i < 256; ++i) {
    set.blue[i] = Clamp(i - d);
    set.green[i] = Clamp(i - e);
    set.red[i] = Clamp(i + d);
  }
  return set;
}

CurveSet CrossProcessCurves() {
  return MakeCurveSet(kCrossProcess);
}

Curve SineContrastCurve(int32_t n) {
  // These digits, not pi: with the exact half of pi the top entry would wrap to 0.
  constexpr double kPi = 3.1415926;
  constexpr double kHalfPi = 1.5707963;
  const double f = (0.005 * ClampInt(n, 0, 100) + 1) * kPi;
  Curve table;
  for (int32_t v = -128; v <= 127; ++v) {
    const double x = ClampFloat(v * f / 256, -kHalfPi, kHalfPi);
    table[v + 128] = static_cast<uint8_t>(Trunc32(128 * std::sin(x) + 128));
  }
  return table;
}

void SineContrast(const EngineImage& from, const EngineImage& image, int32_t n) {
  const Curve table = SineContrastCurve(n);
  MapChannels(from, image, table.data(), table.data(), table.data());
}

std::span<const DirectLook> ColorToneLooks() {
  static constexpr DirectLook kLooks[] = {
      {code::kExposure, Exposure},
      {code::kBlueChannel, KeepChannel},
      {code::kGreenChannel, KeepChannel},
      {code::kRedChannel, KeepChannel},
      {code::kAlphaChannel, KeepChannel},
      {code::kGrayScale, GrayScale},
      {code::kBinary, Binary},
      {code::kXRays, XRays},
      {code::kNegative, Negative},
      {code::kThermal, Thermal},
      {code::kTritone, Tritone},
      {code::kTritone2, Tritone},
      {code::kSolarize, Solarize},
      {code::kCold, Temperature},
      {code::kCool, Temperature},
      {code::kWarm, Temperature},
      {code::kHot, Temperature},
      {code::kOneColor, Colorize},
      {code::kBrown, NamedColor},
      {code::kChocolate, NamedColor},
      {code::kWheat, NamedColor},
      {code::kLinen, NamedColor},
      {code::kPurple, NamedColor},
      {code::kOlive, NamedColor},
      {code::kTeal, NamedColor},
      {code::kBlue, NamedColor},
      {code::kGreen, NamedColor},
      {code::kRed, NamedColor},
      {code::kYellow, NamedColor},
      {code::kFuchsia, NamedColor},
      {code::kCyan, NamedColor},
      {code::kHoodWink, HoodWink},
      {code::kJapanese, MapCurves},
      {code::kCyanBlue, CyanBlue},
      {code::kMovie, MapCurves},
      {code::kCrossProcess, MapCurves},
      {code::kRetro, MapCurves},
      {code::kCinnamon, MapCurves},
      {code::kLnk, Lnk},
      {code::kSineContrast, SineContrastLook},
      {code::kSunFlower, MapCurves},
      {code::kRomantic, MapCurves},
      {code::kHoliday, MapCurves},
      {code::kPurpleLomo, MapCurves},
      {code::kBlueTears, MapCurves},
      {code::kPurpleLove, MapCurves},
  };
  return kLooks;
}

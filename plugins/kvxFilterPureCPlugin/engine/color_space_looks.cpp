// Looks in bands of hue.
#include <numeric>

#include "engine/composite_looks.h"
#include "engine/engine_internal.h"
#include "engine/pixel_rows.h"

namespace {

// Where a sector of 60 degrees puts its three levels: the value, the level between, the lowest.
struct Sector {
  int value;
  int between;
  int lowest;
};
constexpr Sector kSectors[] = {{2, 1, 0}, {1, 2, 0}, {1, 0, 2}, {0, 1, 2}, {0, 2, 1}, {2, 0, 1}};

// A hue in degrees. Even sectors rise towards the next colour, odd ones fall from the last.
struct Hue {
  explicit Hue(int32_t degrees) : sector(kSectors[degrees / 60 % 6]) {
    const double f = degrees / 60.0 - degrees / 60;
    slope = degrees / 60 % 2 ? f : 1 - f;
  }
  uint8_t Between(double saturation, int32_t value) const {
    return static_cast<uint8_t>(static_cast<int32_t>((1 - slope * saturation) * value));
  }

  Sector sector;
  double slope;
};

}  // namespace

// The full circle of hues from bottom to top; value and saturation stay.
int32_t Rainbow(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  ForEachRow(image, [=](int32_t y, uint8_t* row) {
    const Hue hue(360 * (image.height - y) / image.height);
    RehueRow(from.Row(y), row, image.width, {hue.slope, hue.sector.value, hue.sector.between, hue.sector.lowest});
  });
  return kEngineDone;
}

// From orange at the top to green at the bottom, fully saturated.
int32_t SunriseBands(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  static constexpr Curve kNone{};
  Curve same;
  std::iota(same.begin(), same.end(), uint8_t{0});
  Curve between;
  int32_t lastDegrees = -1;
  for (int32_t y = 0; y < image.height; ++y) {
    const int32_t degrees = 90 * y / image.height + 30;
    const Hue hue(degrees);
    for (int32_t value = 0; value < 256 && degrees != lastDegrees; ++value) between[value] = hue.Between(1.0, value);
    lastDegrees = degrees;
    const uint8_t* levels[3];
    levels[hue.sector.value] = same.data();
    levels[hue.sector.between] = between.data();
    levels[hue.sector.lowest] = kNone.data();
    GreatestRow(from.Row(y), image.Row(y), image.width);
    MapRow(image.Row(y), image.Row(y), image.width, {levels[0], levels[1], levels[2]});
  }
  return kEngineDone;
}

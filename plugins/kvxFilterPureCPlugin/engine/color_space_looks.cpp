// Looks in bands of hue.
#include <algorithm>

#include "engine/composite_looks.h"
#include "engine/engine_internal.h"

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
int32_t Rainbow(EngineRecord&, const EngineImage& image) {
  ForEachRow(image, [=](int32_t y, uint8_t* p) {
    const Hue hue(360 * (image.height - y) / image.height);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const int32_t value = std::max({p[0], p[1], p[2]});
      const int32_t least = std::min({p[0], p[1], p[2]});
      if (value == least) {
        SetGray(p, static_cast<uint8_t>(value));
        continue;
      }
      const double saturation = static_cast<double>(value - least) / value;
      p[hue.sector.value] = static_cast<uint8_t>(value);
      p[hue.sector.between] = hue.Between(saturation, value);
      p[hue.sector.lowest] = static_cast<uint8_t>(static_cast<int32_t>((1 - saturation) * value));
    }
  });
  return kEngineDone;
}

// From orange at the top to green at the bottom, fully saturated.
int32_t SunriseBands(EngineRecord&, const EngineImage& image) {
  for (int32_t y = 0; y < image.height; ++y) {
    const Hue hue(90 * y / image.height + 30);
    Curve between;
    for (int32_t value = 0; value < 256; ++value) between[value] = hue.Between(1.0, value);
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      const uint8_t value = std::max({p[0], p[1], p[2]});
      p[hue.sector.value] = value;
      p[hue.sector.between] = between[value];
      p[hue.sector.lowest] = 0;
    }
  }
  return kEngineDone;
}

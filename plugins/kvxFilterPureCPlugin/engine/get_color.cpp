// Code 63: the hue that dominates around a point stays, everything else turns grey.
#include <algorithm>
#include <array>

#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "framework/numeric.h"

namespace film {

namespace {

constexpr int32_t kNoHue = 512;

// Upper limits of the bins. They are on a scale of 360 while hues run to 255: the top bins stay empty, and are meant
// to.
constexpr int32_t kLimits[] = {22, 48, 76, 156, 200, 270, 330, 360, 1024};
constexpr int32_t kBins = 9;
constexpr int32_t kNoHueBin = 8;

// On a circle of 0 to 255; too grey a pixel has none.
class HueScale {
 public:
  HueScale() {
    for (int32_t spread = 1; spread < 256; ++spread) weights_[spread] = (43 << 20) / spread;
  }

  int32_t HueOf(const uint8_t* p) const {
    const int32_t blue = p[0];
    const int32_t green = p[1];
    const int32_t red = p[2];
    const int32_t most = std::max({blue, green, red});
    const int32_t spread = most - std::min({blue, green, red});
    if (most == 0 || spread < 21) return kNoHue;
    const int32_t w = weights_[spread];
    if (most == red) return green >= blue ? ((green - blue) * w) >> 20 : 255 - (((blue - green) * w) >> 20);
    if (most == green) return (((blue - red) * w) >> 20) + 85;
    return (((red - green) * w) >> 20) + 171;
  }

 private:
  std::array<int32_t, 256> weights_{};
};

int32_t BinOf(int32_t hue) {
  return static_cast<int32_t>(std::find_if(std::begin(kLimits), std::end(kLimits), [=](int32_t l) { return l > hue; }) -
                              std::begin(kLimits));
}

void TurnGray(uint8_t* p) {
  SetGray(p, static_cast<uint8_t>(Luma1024(p)));
}

}  // namespace

int32_t GetColor(EngineRecord& record, const EngineImage& image) {
  static const HueScale kHues;
  const int32_t centreX = Trunc32(ClampFloat(record.pointX, 0, 100) * image.width / 100);
  const int32_t centreY = Trunc32(ClampFloat(record.pointY, 0, 100) * image.height / 100);
  const int32_t reach = ClampInt(record.radius, 0, 100) * (std::min(image.width, image.height) >> 2) / 150;

  int32_t counts[kBins] = {};
  const int32_t right = std::min(WrapAdd(centreX, reach), image.width - 1);
  const int32_t bottom = std::min(WrapAdd(centreY, reach), image.height - 1);
  for (int32_t y = std::max(WrapSub(centreY, reach), 0); y <= bottom; ++y) {
    for (int32_t x = std::max(WrapSub(centreX, reach), 0); x <= right; ++x)
      ++counts[BinOf(kHues.HueOf(image.Row(y) + 4 * x))];
  }

  // Red stands at both ends of the scale.
  int32_t band = 0;
  int32_t best = counts[0] + counts[7];
  for (int32_t bin = 1; bin <= 6; ++bin) {
    if (counts[bin] > best) {
      best = counts[bin];
      band = bin;
    }
  }
  if (counts[kNoHueBin] >= best) {
    ForEachPixel(image, TurnGray);
    return kEngineDone;
  }

  std::array<bool, kNoHue + 1> grays{};
  for (int32_t hue = 0; hue < kNoHue; ++hue) {
    const int32_t bin = BinOf(hue);
    grays[hue] = bin != band && !(band == 0 && bin == 7);
  }
  ForEachPixel(image, [grays](uint8_t* p) {
    if (grays[kHues.HueOf(p)]) TurnGray(p);
  });
  return kEngineDone;
}

}  // namespace film

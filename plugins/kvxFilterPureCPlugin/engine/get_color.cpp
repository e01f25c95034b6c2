// Code 63: the hue that dominates around a point stays, everything else turns grey.
#include <algorithm>

#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "framework/numeric.h"

// The hues are plain arithmetic, compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "get_color.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef KVX_ENGINE_GET_COLOR_HUES
#define KVX_ENGINE_GET_COLOR_HUES
namespace get_color {

constexpr int32_t kNoHue = 512;

// From `low` to below `high`.
struct HueBand {
  int32_t low, high;
};

}  // namespace get_color
#endif

HWY_BEFORE_NAMESPACE();
namespace get_color {
namespace HWY_NAMESPACE {

// On a circle of 0 to 255; too grey a pixel has none.
inline int32_t HueOf(uint32_t pixel) {
  const auto blue = static_cast<int32_t>(pixel & 255), green = static_cast<int32_t>(pixel >> 8 & 255),
             red = static_cast<int32_t>(pixel >> 16 & 255);
  const int32_t high = blue > green ? blue : green, low = blue > green ? green : blue;
  const int32_t most = high > red ? high : red;
  const int32_t spread = most - (low < red ? low : red);
  const auto weight = static_cast<int32_t>((43 << 20) / static_cast<double>(spread > 1 ? spread : 1));
  const bool fromRed = most == red, fromGreen = most == green;
  const int32_t ahead = fromRed ? green - blue : fromGreen ? blue - red : red - green;
  const bool before = fromRed & (green < blue);
  const int32_t turn = ((before ? -ahead : ahead) * weight) >> 20;
  const int32_t hue = before ? 255 - turn : turn + (fromRed ? 0 : fromGreen ? 85 : 171);
  return spread < 21 ? kNoHue : hue;
}

// Hues outside the band turn grey; what has no hue stays.
void KeepHueRow(const uint8_t* in, uint8_t* out, int32_t count, const HueBand& band) {
  const int32_t from = band.low, to = band.high;
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const uint32_t pixel = LoadPixel(in + 4 * x);
    const int32_t hue = HueOf(pixel);
    const uint32_t gray = (306 * (pixel >> 16 & 255) + 601 * (pixel >> 8 & 255) + 117 * (pixel & 255) + 512) >> 10;
    const bool stays = (hue == kNoHue) | ((hue >= from) & (hue < to));
    StorePixel(out + 4 * x, stays ? pixel : (pixel & kAlphaByte) | gray * 0x010101u);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace get_color
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace get_color {
HWY_EXPORT(KeepHueRow);
}  // namespace get_color

namespace film {

namespace {

using get_color::HueBand;

// Upper limits of the bins. They are on a scale of 360 while hues run to 255: the top bins stay empty, red's second one
// among them, and are meant to.
constexpr int32_t kLimits[] = {22, 48, 76, 156, 200, 270, 330, 360, 1024};
constexpr int32_t kBins = 9;
constexpr int32_t kNoHueBin = 8;

int32_t BinOf(int32_t hue) {
  return static_cast<int32_t>(std::find_if(std::begin(kLimits), std::end(kLimits), [=](int32_t l) { return l > hue; }) -
                              std::begin(kLimits));
}

}  // namespace

int32_t GetColor(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  const int32_t centreX = Trunc32(ClampFloat(record.pointX, 0, 100) * image.width / 100);
  const int32_t centreY = Trunc32(ClampFloat(record.pointY, 0, 100) * image.height / 100);
  const int32_t reach = ClampInt(record.radius, 0, 100) * (std::min(image.width, image.height) >> 2) / 150;

  using namespace get_color;
  int32_t counts[kBins] = {};
  const int32_t right = std::min(WrapAdd(centreX, reach), image.width - 1);
  const int32_t bottom = std::min(WrapAdd(centreY, reach), image.height - 1);
  for (int32_t y = std::max(WrapSub(centreY, reach), 0); y <= bottom; ++y) {
    for (int32_t x = std::max(WrapSub(centreX, reach), 0); x <= right; ++x)
      ++counts[BinOf(HWY_STATIC_DISPATCH(HueOf)(LoadPixel(from.Row(y), x)))];
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
  const bool gray = counts[kNoHueBin] >= best;
  const HueBand kept{band > 0 ? kLimits[band - 1] : 0, kLimits[band]};
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      if (gray) {
        GrayRow(from.Row(y), image.Row(y), image.width, kLuma1024);
      } else {
        HWY_DYNAMIC_DISPATCH(KeepHueRow)(from.Row(y), image.Row(y), image.width, kept);
      }
    }
  });
  return kEngineDone;
}

}  // namespace film

#endif  // HWY_ONCE

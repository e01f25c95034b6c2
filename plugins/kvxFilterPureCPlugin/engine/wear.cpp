#include "engine/wear.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/engine_internal.h"
#include "engine/wear_tables.h"
#include "framework/zeroed_array.h"
#include "platform/stretch.h"

namespace {

// Where the dirt of one frame lies is laid out in this size, whatever the size of the frame.
constexpr int32_t kMaskWidth = 1024;
constexpr int32_t kMaskHeight = 768;

// One channel: it is grey.
std::vector<uint8_t> MakeSpotMask(int32_t spots, Rand& rand) {
  std::vector<uint8_t> mask(size_t{kMaskHeight} * kMaskWidth, 255);
  for (int32_t i = 0; i < spots; ++i) {
    const int32_t row = rand.Next() % (kMaskHeight - kStampSize);
    const int32_t column = rand.Next() % (kMaskWidth - kStampSize);
    const auto& stamp = kStamps[rand.Next() % kStampCount];
    for (int32_t y = 0; y < kStampSize; ++y) {
      std::memcpy(&mask[static_cast<size_t>((row + y) * kMaskWidth + column)], stamp[y], kStampSize);
    }
  }
  return mask;
}

// The mask comes upside down. Most of its rows are clean.
void LaySpots(const EngineImage& image, const std::vector<uint8_t>& spots) {
  const auto fitted = std::make_unique_for_overwrite<uint8_t[]>(PixelCount(image.width, image.height));
  StretchLinear({spots.data(), kMaskWidth, kMaskHeight, kMaskWidth},
                {fitted.get(), image.width, image.height, image.width}, 1);
  const std::vector<uint8_t> clean(static_cast<size_t>(image.width), 255);
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    const uint8_t* m = fitted.get() + ptrdiff_t{image.width} * (image.height - 1 - y);
    if (std::memcmp(m, clean.data(), clean.size()) == 0) continue;
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      StorePixel(p, LoadPixel(p) & (kAlphaByte | m[x] * 0x010101u));
    }
  }
}

void Scratch(const EngineImage& image, int32_t left, int32_t width) {
  static constexpr uint8_t kMasks[] = {243, 227, 225};
  const int32_t visible = std::min(width, image.width - left);
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y) + 4 * left;
    for (int32_t k = 0; k < visible; ++k, p += 4) {
      for (int c = 0; c < 3; ++c) p[c] = Clamp((p[c] & kMasks[k]) + 30);
    }
  }
}

}  // namespace

void AddWear(const EngineImage& image, int32_t spots, int32_t scratches, Rand& rand) {
  if (spots > 0) LaySpots(image, MakeSpotMask(spots, rand));
  for (int32_t i = 0; i < scratches; ++i) {
    const int32_t width = rand.Next() % 3 + 1;
    const int32_t left = image.width > 10 ? rand.Next() % (image.width - 10) : 0;
    Scratch(image, left, width);
  }
}

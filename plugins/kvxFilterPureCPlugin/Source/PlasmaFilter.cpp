#include "Source/PlasmaFilter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "Source/PixelWords.h"
#include "framework/frame.h"

namespace {

constexpr uint32_t kPeriod = 512;
constexpr float kDegreesPerEntry = 0.703125f;
constexpr float kRadiansPerDegree = 0.0174532f;

// 512 steps around the circle, 1024 high; single precision all the way.
using SineTable = std::array<int32_t, kPeriod>;

SineTable MakeSineTable() {
  SineTable table;
  for (uint32_t i = 0; i < kPeriod; ++i) {
    table[i] = static_cast<int32_t>(std::sin(static_cast<float>(i) * kDegreesPerEntry * kRadiansPerDegree) * 1024);
  }
  return table;
}

// Pixels with transparent alpha, and without blue: no entry of the palette has any.
using Palette = std::array<uint32_t, 256>;

Palette MakePalette() {
  Palette palette;
  for (uint32_t i = 0; i < 64; ++i) {
    const uint32_t falling = 254 - 4 * i;
    const uint32_t rising = 4 * i + 1;
    palette[i] = 4 * i << 16 | falling << 8;
    palette[64 + i] = 255 << 16 | rising << 8;
    palette[128 + i] = falling << 16 | falling << 8;
    palette[192 + i] = rising << 8;
  }
  return palette;
}

void PaintPlasma(FrameView dst, uint32_t horizontal, uint32_t vertical) {
  const SineTable sine = MakeSineTable();
  const Palette palette = MakePalette();
  std::vector<int32_t> column(static_cast<size_t>(std::max(dst.width, 0)));
  uint32_t e = horizontal + 5;
  uint32_t f = 3;
  for (int32_t& sum : column) {
    sum = sine[e % kPeriod] + sine[f % kPeriod];
    e += 5;
    f += 3;
  }
  uint32_t g = vertical;
  uint32_t k = 0;
  for (int32_t y = 0; y < dst.height; ++y, g += 1, k += 3) {
    const int32_t row = sine[k % kPeriod] + sine[g % kPeriod];
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < dst.width; ++x) {
      StorePixel(out, x, palette[static_cast<uint8_t>(((row + column[static_cast<size_t>(x)]) >> 4) + 128)]);
    }
  }
}

}  // namespace

void CPlasmaFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  if (!src || !dst) return;
  PaintPlasma(PackedDest(dst, width, height), horizontal_, vertical_);
  horizontal_ = static_cast<uint16_t>(horizontal_ + 9);
  vertical_ = static_cast<uint16_t>(vertical_ + 8);
}

// Noise: speckles, scattered pixels, grain. Their accumulators run on over pixels and rows, so that every pixel has a
// part in what its successors get.
#include <algorithm>
#include <array>
#include <cstring>

#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "framework/numeric.h"
#include "framework/random.h"

namespace film {

// Bright speckles.
int32_t AmNoise(EngineRecord& record, const EngineImage& image) {
  const int32_t q = WrapMul(record.level, 8) / 100;
  const int32_t threshold = WrapMul(q, q);
  Rand rand;
  uint32_t a = static_cast<uint32_t>(rand.Next()) & 0x1FF;
  uint32_t s = static_cast<uint32_t>(rand.Next()) & 0x3FF;
  const auto speckle = [&](uint8_t* p) {
    if (randomTable[s & 0x3FF] >= threshold) return;
    a = randomTable[p[0] + p[1] + p[2]];
    SetGray(p, Clamp(static_cast<int32_t>(a) + 128));
  };
  const int32_t grouped = image.width & ~3;
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* row = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x) {
      // Only the first pixel of a group of four, and each of those left over, brings its place in.
      const bool placed = x % 4 == 0 || x >= grouped;
      s += placed ? a + static_cast<uint32_t>(x) + static_cast<uint32_t>(y) : a;
      speckle(row + 4 * x);
    }
  }
  return kEngineDone;
}

namespace {

// Near a frame's edge an offset is brought inward.
int32_t Inward(int32_t offset, int32_t at, int32_t size, int32_t margin) {
  if (at < margin) return (offset + margin) >> 1;
  if (at >= size - margin) return (offset - margin) >> 1;
  return offset;
}

}  // namespace

// Scatters pixels in place, so that later ones take from what is scattered already. The frame number that seeds it is
// never set by a shell: the pattern stands still.
int32_t AmSplash(EngineRecord& record, const EngineImage& image) {
  Rand rand;
  rand.Seed(static_cast<uint32_t>(record.frameNumber));
  const int32_t widest = Trunc32(20 * image.width / 640.0);
  const int32_t n = std::max(ClampInt(record.level / 5, 1, widest), 1);
  const int32_t half = n >> 1;
  const int32_t margin = half + 1;
  uint32_t a = static_cast<uint32_t>(rand.Next());
  uint32_t b = static_cast<uint32_t>(rand.Next());
  std::array<int8_t, 64> offsets;
  for (int8_t& offset : offsets) offset = static_cast<int8_t>(half - rand.Next() % n);
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    for (int32_t x = 0; x < image.width; ++x, p += 4) {
      a += p[0];
      b += p[1];
      if (p[3] == 0) continue;
      const int32_t fromX = x + Inward(offsets[a & 63], x, image.width, margin);
      const int32_t fromY = y + Inward(offsets[b & 63], y, image.height, margin);
      const uint8_t* from =
          image.Row(std::clamp(fromY, 0, image.height - 1)) + 4 * std::clamp(fromX, 0, image.width - 1);
      StorePixel(p, LoadPixel(from));
    }
  }
  return kEngineDone;
}

// Grey grain.
int32_t FilmGrain(EngineRecord& record, const EngineImage& image) {
  const int32_t strength = ClampInt(record.level, 1, 100);
  Rand rand;
  std::array<uint32_t, 4> sums;
  for (uint32_t& sum : sums) sum = static_cast<uint32_t>(rand.Next());
  std::array<int8_t, 64> grains;
  for (int8_t& grain : grains) grain = static_cast<int8_t>((strength >> 1) - rand.Next() % strength);
  const auto addGrain = [&grains](uint8_t* p, uint32_t& sum) {
    sum += p[0] + p[1] + p[2];
    const int32_t n = grains[sum & 63];
    for (int c = 0; c < 3; ++c) p[c] = Clamp(p[c] + n);
  };
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* p = image.Row(y);
    int32_t x = 0;
    for (; x + 4 <= image.width; x += 4, p += 16) {
      for (int k = 0; k < 4; ++k) addGrain(p + 4 * k, sums[k]);
    }
    for (; x < image.width; ++x, p += 4) addGrain(p, sums[0]);
  }
  return kEngineDone;
}

}  // namespace film

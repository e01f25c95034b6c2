// Warps that move pixels by tables drawn at random.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "engine/pixel_rows.h"
#include "engine/warp_routines.h"
#include "framework/random.h"

namespace {

// Each pixel from nearby, by a table of 64 jumps drawn anew for every frame; each jump picks the next. A frame as wide
// as the jumps keeps the source.
int32_t Jitter(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const int32_t reach = std::max(ClampInt(record.level / 5, 1, 20) / 2, 1);
  Rand rand;
  int32_t jumps[64];
  for (int32_t& jump : jumps) jump = rand.Next() % (2 * reach) - reach;
  int32_t k = rand.Next() & 63;
  for (int32_t y = reach; y < frame.height - reach; ++y) {
    uint8_t* out = frame.Row(y);
    for (int32_t x = reach; x < frame.width - reach; ++x) {
      const int32_t sourceY = jumps[(k + y + x) & 63] + y;
      k = jumps[(sourceY + x) & 63];
      StorePixel(out + 4 * x, LoadPixel(copy.Row(sourceY) + 4 * (x + k)));
    }
  }
  return kEngineDone;
}

constexpr int32_t kWaveSize = 1024;
constexpr int32_t kWaveMask = kWaveSize - 1;
constexpr uint32_t kDirtyWave = 2;

// A wave kept between frames: built by `build(wave, level)` the first time, and not again for a later level.
template <typename Build>
const int16_t* WaveOf(EngineRecord& record, Build build) {
  auto* wave = reinterpret_cast<int16_t*>(EnsureTable(record, kWaveSize * 2, kDirtyWave));
  if (wave && record.dirtyFlags & kDirtyWave) {
    build(wave, Percent(record.level, 1));
    record.dirtyFlags &= ~kDirtyWave;
  }
  return wave;
}

// Rows shift by one entry of the wave each, columns by their own. Pixels from outside the frame come from its edge, or
// are opaque black.
template <bool kBlackOutside>
void DrawWave(const int16_t* wave, int32_t phase, const EngineImage& frame, const EngineImage& copy) {
  const int32_t right = frame.width - 1;
  const int32_t bottom = frame.height - 1;
  const auto rowOf = [=](int32_t x, int32_t y) { return ClampInt(wave[x & kWaveMask] + y, 0, bottom); };
  ForEachRow(frame, [=](int32_t y, uint8_t* out) {
    const int32_t last = y > 0 ? rowOf(right, y - 1) : 0;  // the source row of the pixel before
    const int32_t shift = wave[((phase & kWaveMask) + last + y) & kWaveMask];
    for (int32_t x = 0; x <= right; ++x) {
      const int32_t wantedY = wave[x & kWaveMask] + y;
      const int32_t wantedX = x + shift;
      const int32_t sourceY = rowOf(x, y);
      const int32_t sourceX = ClampInt(wantedX, 0, right);
      const bool outside = kBlackOutside && (sourceY != wantedY || sourceX != wantedX);
      StorePixel(out + 4 * x, outside ? kAlphaByte : LoadPixel(copy.Row(sourceY) + 4 * sourceX));
    }
  });
}

// Code 1030, which no effect uses: the wave walks up or down by one from entry to entry.
int32_t RandomWalk(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  Rand rand;
  const int16_t* wave = WaveOf(record, [&rand](int16_t* entries, int32_t level) {
    int32_t at = 0;
    for (int32_t i = 0; i < kWaveSize; ++i) {
      entries[i] = static_cast<int16_t>(at);
      at = ClampInt(at + (rand.Next() & 1 ? 1 : -1), -level, level);
    }
  });
  if (!wave) return kEngineNoScratch;
  DrawWave<true>(wave, rand.Next(), frame, copy);
  return kEngineDone;
}

int32_t Ripple(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  Rand rand;
  const int16_t* wave = WaveOf(record, [&rand](int16_t* entries, int32_t level) {
    for (int32_t i = 0; i < kWaveSize; ++i) {
      const int32_t height = std::abs(level - (rand.Next() + i) % (2 * level));
      entries[i] = static_cast<int16_t>(Trunc32(height * 0.25 * std::sin(i * 12.5663704 / level) + 0.5));
    }
  });
  if (!wave) return kEngineNoScratch;
  DrawWave<false>(wave, rand.Next(), frame, copy);
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> DisplaceRoutines() {
  static constexpr WarpRoutine kRoutines[] = {
      {code::kOil, Jitter}, {code::kRandomWalk, RandomWalk, true}, {code::kRipple, Ripple, true}};
  return kRoutines;
}

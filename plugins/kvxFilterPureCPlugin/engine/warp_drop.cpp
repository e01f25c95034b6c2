// Drops on water: two height fields that a wave equation steps in turns, and a refracted picture.
#include <algorithm>
#include <cstring>

#include "engine/pixel_rows.h"
#include "engine/warp_routines.h"
#include "framework/random.h"

namespace {

// Presses a disc into the field. A disc that crosses the edge is left out.
void PlantDrop(int32_t* field, const EngineImage& frame, int32_t cx, int32_t cy, int32_t radius, int32_t height) {
  if (cx - radius < 0 || cy - radius < 0 || cx + radius >= frame.width || cy + radius >= frame.height) return;
  for (int32_t dy = -radius; dy <= radius; ++dy) {
    int32_t* row = field + static_cast<ptrdiff_t>(cy + dy) * frame.width + cx;
    for (int32_t dx = -radius; dx <= radius; ++dx) {
      if (dx * dx + dy * dy < radius * radius) row[dx] = -height;
    }
  }
}

// The next state of the waves takes the place of the state before the current one.
void StepWaves(const int32_t* current, int32_t* previous, const EngineImage& frame) {
  const ptrdiff_t width = frame.width;
  ForRowBands(frame.width, 2, frame.height - 1, [=](int32_t begin, int32_t end) {
    for (ptrdiff_t i = begin * width; i < end * width; ++i) {
      const int32_t around = current[i - 1] + current[i + 1] + current[i - width] + current[i + width];
      const int32_t next = (around >> 1) - previous[i];
      previous[i] = next - (next >> 5);
    }
  });
}

void Refract(const int32_t* field, const EngineImage& frame, const EngineImage& copy) {
  const ptrdiff_t width = frame.width;
  ForRowBands(frame.width, 1, frame.height - 1, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const int32_t* row = field + y * width;
      uint8_t* out = frame.Row(y);
      for (int32_t x = 1; x < frame.width - 1; ++x) {
        const int32_t sourceX = x + (row[x - 1] - row[x + 1]);
        const int32_t sourceY = y + (row[x - width] - row[x + width]);
        if (sourceX < 0 || sourceX >= frame.width || sourceY < 0 || sourceY >= frame.height) continue;
        StorePixel(out + 4 * x, LoadPixel(copy.Row(sourceY) + 4 * sourceX));
      }
    }
  });
}

int32_t Raindrops(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const int64_t cells = static_cast<int64_t>(frame.width) * frame.height;
  if (cells * 8 > INT32_MAX) return kEngineNoScratch;
  auto* fields = reinterpret_cast<int32_t*>(EnsureTable(record, static_cast<int32_t>(cells * 8), kDirtyParticles));
  if (!fields) return kEngineNoScratch;
  record.frameToggle ^= 1;
  int32_t* current = fields + (record.frameToggle ? cells : 0);
  int32_t* previous = fields + (record.frameToggle ? 0 : cells);

  const int32_t longer = std::max(frame.width, frame.height);
  Rand rand;
  int32_t at = rand.Next() & 511;
  const auto plant = [&](int32_t radius, int32_t height) {
    const uint8_t* b = randomTable + at;
    at += 4;
    PlantDrop(current, frame, (b[0] * frame.width) >> 7, (b[1] * frame.height) >> 7, (b[2] * radius) >> 8,
              (b[3] * height) >> 8);
  };
  if (record.dirtyFlags & kDirtyParticles) {
    std::memset(fields, 0, static_cast<size_t>(cells) * 8);
    for (int32_t i = 0; i < 20; ++i) plant(longer >> 3, 1000);
    record.dirtyFlags &= ~kDirtyParticles;
  }
  const int32_t radius = Percent(record.radius, 1) * (longer >> 5) / 100;
  for (int32_t i = 0; i < 2; ++i) plant(radius, Percent(record.level) + 80);

  StepWaves(current, previous, frame);
  Refract(previous, frame, copy);
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> DropRoutines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kRaindropWarp, Raindrops}};
  return kRoutines;
}

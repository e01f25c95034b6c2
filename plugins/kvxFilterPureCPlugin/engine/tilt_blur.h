// The blur of a row by a kernel of whole-number weights.
#ifndef KVX_ENGINE_TILT_BLUR_H_
#define KVX_ENGINE_TILT_BLUR_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/engine_internal.h"

// A kernel is the same in all its eight eighths. One quarter is kept: rows 0 to `radius` of columns 0 to `radius`,
// weights from 0 to 4096.
struct BlurKernel {
  int32_t radius;
  const uint16_t* quarter;

  uint16_t At(int32_t dx, int32_t dy) const { return quarter[dy * (radius + 1) + dx]; }
  int64_t Total() const {
    int64_t total = 0;
    for (int32_t dy = 0; dy <= radius; ++dy) {
      for (int32_t dx = 0; dx <= radius; ++dx) total += At(dx, dy) * (dx ? 2 : 1) * (dy ? 2 : 1);
    }
    return total;
  }
};

// Where rows are summed up, for kernels of a radius up to `largest`. A tile's working set stays in the nearest cache.
struct BlurScratch {
  static constexpr int32_t kTile = 128;  // pixels

  explicit BlurScratch(int32_t largest)
      : step((4 * (kTile + 2 * largest) + 63) / 64 * 64),
        words(static_cast<size_t>(step) * static_cast<size_t>(largest / 2 + 1)),
        column(static_cast<size_t>(step)),
        weights(static_cast<size_t>(largest / 2 + 1)) {}

  int32_t step;                   // numbers of a row: a tile's bytes and those around it, rounded up for vectors
  std::vector<uint32_t> words;    // two numbers each
  std::vector<int32_t> column;    // sums of one column of the kernel
  std::vector<uint32_t> weights;  // of one column of the kernel, two each
};

// Row `y` of the blurred picture, all four bytes, to `out`: sums over the kernel, divided by its total and cut. The
// nearest pixel stands in for those outside.
void BlurRow(const EngineImage& image, int32_t y, const BlurKernel& kernel, BlurScratch& scratch, uint8_t* out);

#endif  // KVX_ENGINE_TILT_BLUR_H_

// A band of the frame stays sharp; rows blur the more the farther they are from it. A tone curve goes over all of it.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "engine/color_tone.h"
#include "engine/pixel_rows.h"
#include "engine/tilt_blur.h"
#include "engine/warp_routines.h"

namespace {

constexpr uint32_t kDirtyKernels = kDirtyTables | kDirtyParticles;

int32_t LargestRadius(int32_t width) {
  return Trunc32(std::sqrt(static_cast<double>(width)) * 0.1 + 5.0);
}

// One quarter of a kernel is kept; those of radius 1, 2 ... lie one after the other.
int32_t QuarterSize(int32_t q) {
  return (q + 1) * (q + 1);
}

void BuildKernels(uint16_t* weights, int32_t largest, int32_t level) {
  for (int32_t q = 1; q <= largest; ++q) {
    const double t = q * (level * 0.04 + 1) / largest + 1;
    for (int32_t dy = 0; dy <= q; ++dy) {
      for (int32_t dx = 0; dx <= q; ++dx) {
        const double exponent = -(dx * dx + dy * dy) * 3 * t / (2.0 * q * q) / (2 * t * t);
        *weights++ = static_cast<uint16_t>(4096 * std::exp(exponent));
      }
    }
  }
}

int32_t TiltShift(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const int32_t width = frame.width;
  const int32_t height = frame.height;
  const int32_t largest = LargestRadius(width);
  int32_t entries = 0;
  for (int32_t q = 1; q <= largest; ++q) entries += QuarterSize(q);
  auto* weights = reinterpret_cast<uint16_t*>(EnsureTable(record, entries * 2, kDirtyKernels));
  if (!weights) return kEngineNoScratch;
  if (record.dirtyFlags & kDirtyKernels) {
    BuildKernels(weights, largest, Percent(record.level));
    record.dirtyFlags &= ~kDirtyKernels;
  }
  std::vector<BlurKernel> kernels = {{0, nullptr}};
  for (int32_t q = 1; q <= largest; weights += QuarterSize(q++)) kernels.push_back({q, weights});

  const int32_t left = Percent(record.rectLeft) * width / 100;
  const int32_t right = std::max(Percent(record.rectRight) * width / 100, left);
  const int32_t top = Percent(record.rectTop) * height / 100;
  const int32_t bottom = Percent(record.rectBottom) * height / 100;
  const int32_t center = (top + bottom) / 2;
  const int32_t half = (bottom - top) / 2;
  const int32_t fade = height / 2 - half;

  const Curve contrast = SineContrastCurve(record.level);
  ForRowBands(width, 0, height, [=, &kernels](int32_t begin, int32_t end) {
    BlurScratch scratch(largest);
    std::vector<uint8_t> out(static_cast<size_t>(width) * 4);
    for (int32_t y = begin; y < end; ++y) {
      const int32_t q = fade ? ClampInt((std::abs(y - center) - half) * largest / fade, 0, largest) : 0;
      uint8_t* row = frame.Row(y);
      if (q > 0) {
        BlurRow(copy, y, kernels[static_cast<size_t>(q)], scratch, out.data());
        const bool beside = y >= top && y < bottom;  // rows of the rectangle blur only left and right of it
        StoreColors(row, out.data(), beside ? left : width);
        if (beside) StoreColors(row + 4 * right, out.data() + 4 * static_cast<ptrdiff_t>(right), width - right);
      }
      MapRow(row, row, width, {contrast.data(), contrast.data(), contrast.data()});
    }
  });
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> TiltShiftRoutines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kTiltShift, TiltShift}};
  return kRoutines;
}

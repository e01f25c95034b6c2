// A band of the frame stays sharp; rows blur the more the farther they are from it. A tone curve goes over all of it.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "color_tone.h"
#include "pixel_rows.h"
#include "warp_routines.h"

namespace {

constexpr uint32_t kDirtyKernels = kDirtyTables | kDirtyParticles;

int32_t LargestRadius(int32_t width) {
  return Trunc32(std::sqrt(static_cast<double>(width)) * 0.1 + 5.0);
}

// A kernel is the same in all its eight eighths. One quarter is kept: rows 0 to q of columns 0 to q; the kernels of
// radius 1, 2
// ... one after the other.
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

struct Kernel {
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

// sums[i] += weight * (the sum of all terms[i]). Up to eight bytes fit a term.
template <typename... Term>
void Accumulate(uint32_t* __restrict sums, int32_t count, uint16_t weight, const Term*... terms) {
  for (int32_t i = 0; i < count; ++i)
    sums[i] += static_cast<uint32_t>(weight) * static_cast<uint16_t>((terms[i] + ...));
}

// One row of the blurred picture, in tiles whose working set stays in the nearest cache. All sums are whole numbers, so
// they may be taken in any order: rows at the same distance are added first, then columns, and places that mirror each
// other at the diagonal share a multiplication.
class RowBlur {
 public:
  RowBlur(const EngineImage& copy, int32_t largest)
      : copy_(copy),
        pairStep_(4 * (kTile + 2 * largest)),
        pairs_(static_cast<size_t>(pairStep_) * static_cast<size_t>(largest + 1)) {}

  void Draw(int32_t y, const Kernel& kernel, uint8_t* out) {
    // Half a unit keeps the product above the whole numbers that it must not fall below.
    const double part = 1.0 / static_cast<double>(kernel.Total());
    for (int32_t x = 0; x < copy_.width; x += kTile) {
      const int32_t count = std::min(kTile, copy_.width - x);
      for (int32_t dy = 0; dy <= kernel.radius; ++dy) AddRows(y, dy, x - kernel.radius, count + 2 * kernel.radius);
      Sum(kernel, 4 * count);
      for (int32_t i = 0; i < 4 * count; ++i) {
        out[4 * x + i] = static_cast<uint8_t>(static_cast<int32_t>((static_cast<int32_t>(sums_[i]) + 0.5) * part));
      }
    }
  }

 private:
  static constexpr int32_t kTile = 128;

  uint16_t* Pairs(int32_t dy) { return pairs_.data() + static_cast<ptrdiff_t>(dy) * pairStep_; }

  // Rows y - dy and y + dy together, columns from `first` on.
  void AddRows(int32_t y, int32_t dy, int32_t first, int32_t count) {
    const int32_t inside = std::max(-first, 0);
    const int32_t end = std::min(count, copy_.width - first);
    uint16_t* out = Pairs(dy);
    const uint8_t* up = copy_.Row(std::max(y - dy, 0)) + 4 * static_cast<ptrdiff_t>(first);
    const uint8_t* down = copy_.Row(std::min(y + dy, copy_.height - 1)) + 4 * static_cast<ptrdiff_t>(first);
    if (dy == 0) {
      for (int32_t i = 4 * inside; i < 4 * end; ++i) out[i] = up[i];
    } else {
      for (int32_t i = 4 * inside; i < 4 * end; ++i) out[i] = static_cast<uint16_t>(up[i] + down[i]);
    }
    for (int32_t i = 0; i < inside; ++i) std::copy_n(out + 4 * inside, 4, out + 4 * i);
    for (int32_t i = end; i < count; ++i) std::copy_n(out + 4 * (end - 1), 4, out + 4 * i);
  }

  void Sum(const Kernel& kernel, int32_t count) {
    std::fill_n(sums_, count, 0u);
    const ptrdiff_t middle = 4 * kernel.radius;
    const uint16_t* center = Pairs(0) + middle;
    Accumulate(sums_, count, kernel.At(0, 0), center);
    for (ptrdiff_t b = 1; b <= kernel.radius; ++b) {
      const uint16_t* far = Pairs(static_cast<int32_t>(b)) + middle;
      Accumulate(sums_, count, kernel.At(0, static_cast<int32_t>(b)), far, center - 4 * b, center + 4 * b);
      for (ptrdiff_t a = 1; a < b; ++a) {
        const uint16_t* near = Pairs(static_cast<int32_t>(a)) + middle;
        Accumulate(sums_, count, kernel.At(static_cast<int32_t>(a), static_cast<int32_t>(b)), far - 4 * a, far + 4 * a,
                   near - 4 * b, near + 4 * b);
      }
      Accumulate(sums_, count, kernel.At(static_cast<int32_t>(b), static_cast<int32_t>(b)), far - 4 * b, far + 4 * b);
    }
  }

  const EngineImage& copy_;
  int32_t pairStep_;
  std::vector<uint16_t> pairs_;
  uint32_t sums_[4 * kTile];
};

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
  std::vector<Kernel> kernels = {{0, nullptr}};
  for (int32_t q = 1; q <= largest; weights += QuarterSize(q++)) kernels.push_back({q, weights});

  const int32_t left = Percent(record.rectLeft) * width / 100;
  const int32_t right = std::max(Percent(record.rectRight) * width / 100, left);
  const int32_t top = Percent(record.rectTop) * height / 100;
  const int32_t bottom = Percent(record.rectBottom) * height / 100;
  const int32_t center = (top + bottom) / 2;
  const int32_t half = (bottom - top) / 2;
  const int32_t fade = height / 2 - half;

  RowBlur blur(copy, largest);
  std::vector<uint8_t> out(static_cast<size_t>(width) * 4);
  for (int32_t y = 0; y < height; ++y) {
    const int32_t q = fade ? ClampInt((std::abs(y - center) - half) * largest / fade, 0, largest) : 0;
    if (q == 0) continue;
    blur.Draw(y, kernels[static_cast<size_t>(q)], out.data());
    const bool beside = y >= top && y < bottom;  // rows of the rectangle blur only left and right of it
    StoreColors(frame.Row(y), out.data(), beside ? left : width);
    if (beside) StoreColors(frame.Row(y) + 4 * right, out.data() + 4 * static_cast<ptrdiff_t>(right), width - right);
  }
  SineContrast(frame, frame, record.level);
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> TiltShiftRoutines() {
  static constexpr WarpRoutine kRoutines[] = {{1041, TiltShift}};
  return kRoutines;
}

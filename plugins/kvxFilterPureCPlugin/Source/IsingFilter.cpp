#include "Source/IsingFilter.h"

#include <array>
#include <atomic>
#include <cstring>

#include "Source/PixelWords.h"
#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"FillBlack", 1, 0, 1}};

// One stream for all instances, shared as the process's other streams are: taken at the start of an operation, put back
// at its end.
std::atomic<uint32_t> g_generator{1};
class SpinRandom {
 public:
  SpinRandom() : state_(g_generator.load(std::memory_order_relaxed)) {}
  ~SpinRandom() { g_generator.store(state_, std::memory_order_relaxed); }
  uint32_t Next() { return state_ *= 0xB5262C85u; }

 private:
  uint32_t state_;
};

// A spin flips by chance if a draw is below the entry at half of what its neighbours hold it with. The lattice is at
// temperature zero: only the undecided flip, 15 times in 32.
constexpr uint32_t kHalf = 0x78000000;
constexpr std::array<uint32_t, 3> kThresholds = {kHalf, 0, 0};

void DrawGrid(int8_t* spins, int32_t width, int32_t height) {
  SpinRandom random;
  std::memset(spins, 1, PixelCount(width, height));
  for (int32_t y = 1; y < height - 1; ++y) {
    int8_t* row = spins + static_cast<ptrdiff_t>(y) * width;
    for (int32_t x = 1; x < width - 1; ++x) row[x] = random.Next() < kHalf ? -1 : 1;
  }
}

void Sweep(int8_t* spins, int32_t width, int32_t height) {
  SpinRandom random;
  for (int32_t y = 1; y < height - 1; ++y) {
    int8_t* row = spins + static_cast<ptrdiff_t>(y) * width;
    for (int32_t x = 1; x < width - 1; ++x) {
      const int32_t held = (row[x - 1] + row[x + 1] + row[x - width] + row[x + width]) * row[x];
      const bool flip = held < 0 || random.Next() < kThresholds[static_cast<size_t>(held / 2)];
      row[x] = static_cast<int8_t>(flip ? -row[x] : row[x]);
    }
  }
}

void PaintSpins(const int8_t* spins, FrameView dst, bool fillBlack) {
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      const int8_t* row = spins + static_cast<ptrdiff_t>(y) * dst.width;
      uint8_t* out = dst.Row(y);
      for (int32_t x = 0; x < dst.width; ++x) {
        const uint32_t pixel = LoadPixel(out, x);
        StorePixel(out, x, row[x] == 1 ? pixel : fillBlack ? 0 : pixel ^ 0x00FFFFFF);
      }
    }
  });
}

}  // namespace

void CIsingFilter::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {static_cast<double>(fillBlack_)});
}

void CIsingFilter::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep,
                           const ParamValueArray* params) {
  fillBlack_ = Trunc32(Param(params, 1));
  if (Param(params, 2) == 1.0) spins_.Free();
  if (!spins_) {
    if (!spins_.Allocate(PixelCount(width, height))) return;
    DrawGrid(spins_.Data(), width, height);
  }
  CopyRowsInBands({src, width, height, srcStep}, {dst, width, height, dstStep});
  Sweep(spins_.Data(), width, height);
  PaintSpins(spins_.Data(), PackedDest(dst, width, height), fillBlack_ != 0);
}

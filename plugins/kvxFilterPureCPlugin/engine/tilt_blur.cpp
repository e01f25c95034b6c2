#include "engine/tilt_blur.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tilt_blur.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// All sums are whole numbers, so they may be taken in any order: rows at the same distance are added first, and two
// such sums of 16 bits lie in one word, which one instruction multiplies by two weights and adds up; then each column
// of the kernel counts left and right of the middle.
HWY_BEFORE_NAMESPACE();
namespace tilt_blur {
namespace HWY_NAMESPACE {
namespace {

// The rows dy above and below y from column `first` on; the outermost where there is none.
struct RowPair {
  const uint8_t* up;
  const uint8_t* down;
};
RowPair RowsAt(const EngineImage& image, int32_t y, int32_t dy, int32_t first) {
  const ptrdiff_t offset = 4 * static_cast<ptrdiff_t>(first);
  return {image.Row(std::max(y - dy, 0)) + offset, image.Row(std::min(y + dy, image.height - 1)) + offset};
}

// The two rows at the distance dy, even, added up in the low half of each word, those at dy + 1 in the high half.
void AddRows(const EngineImage& image, int32_t y, int32_t dy, int32_t first, int32_t count,
             uint32_t* __restrict words) {
  const int32_t inside = std::max(-first, 0);
  const int32_t end = std::min(count, image.width - first);
  const auto [up, down] = RowsAt(image, y, dy, first);
  const auto [farUp, farDown] = RowsAt(image, y, dy + 1, first);
  const uint32_t twice = dy == 0 ? 0 : 255;  // the middle row counts once
  for (int32_t i = 4 * inside; i < 4 * end; ++i) {
    const uint32_t near = up[i] + (down[i] & twice);
    const uint32_t far = static_cast<uint32_t>(farUp[i] + farDown[i]);
    words[i] = near | far << 16;
  }
  for (int32_t i = 0; i < inside; ++i) std::copy_n(words + 4 * inside, 4, words + 4 * i);
  for (int32_t i = end; i < count; ++i) std::copy_n(words + 4 * (end - 1), 4, words + 4 * i);
}

// sums[i] = the sum over `rows` words, one below the other, of both halves times those of the row's weights. `count` is
// a multiple of 64.
void WeighRows(const uint32_t* words, ptrdiff_t step, const uint32_t* weights, int32_t rows, int32_t* sums,
               int32_t count) {
#if HWY_TARGET == HWY_SCALAR
  for (int32_t i = 0; i < count; ++i) {
    uint32_t sum = 0;
    for (int32_t k = 0; k < rows; ++k) {
      const uint32_t word = words[k * step + i];
      sum += (word & 0xFFFF) * (weights[k] & 0xFFFF) + (word >> 16) * (weights[k] >> 16);
    }
    sums[i] = static_cast<int32_t>(sum);
  }
#else
  namespace hn = hwy::HWY_NAMESPACE;
  const hn::ScalableTag<int32_t> d;
  const hn::RebindToUnsigned<decltype(d)> du;
  const hn::Repartition<int16_t, decltype(d)> d16;
  const auto lanes = static_cast<int32_t>(hn::Lanes(d));
  // Four vectors at a time share the weights.
  for (int32_t i = 0; i < count; i += 4 * lanes) {
    auto sum0 = hn::Zero(d), sum1 = sum0, sum2 = sum0, sum3 = sum0;
    auto rest0 = sum0, rest1 = sum0, rest2 = sum0, rest3 = sum0;
    const uint32_t* row = words + i;
    for (int32_t k = 0; k < rows; ++k, row += step) {
      const auto weight = hn::BitCast(d16, hn::Set(du, weights[k]));
      const auto load = [&](int32_t n) HWY_ATTR { return hn::BitCast(d16, hn::LoadU(du, row + n * lanes)); };
      sum0 = hn::ReorderWidenMulAccumulate(d, load(0), weight, sum0, rest0);
      sum1 = hn::ReorderWidenMulAccumulate(d, load(1), weight, sum1, rest1);
      sum2 = hn::ReorderWidenMulAccumulate(d, load(2), weight, sum2, rest2);
      sum3 = hn::ReorderWidenMulAccumulate(d, load(3), weight, sum3, rest3);
    }
    hn::StoreU(hn::RearrangeToOddPlusEven(sum0, rest0), d, sums + i);
    hn::StoreU(hn::RearrangeToOddPlusEven(sum1, rest1), d, sums + i + lanes);
    hn::StoreU(hn::RearrangeToOddPlusEven(sum2, rest2), d, sums + i + 2 * lanes);
    hn::StoreU(hn::RearrangeToOddPlusEven(sum3, rest3), d, sums + i + 3 * lanes);
  }
#endif
}

}  // namespace

void BlurRow(const EngineImage& image, int32_t y, const BlurKernel& kernel, BlurScratch& scratch, uint8_t* out) {
  constexpr int32_t kTile = BlurScratch::kTile;
  const int32_t radius = kernel.radius;
  const int32_t pairs = radius / 2 + 1;
  // Half a unit keeps the product above the whole numbers that it must not fall below.
  const double part = 1.0 / static_cast<double>(kernel.Total());
  int32_t sums[4 * kTile];
  for (int32_t x = 0; x < image.width; x += kTile, out += 4 * kTile) {
    const int32_t pixels = std::min(kTile, image.width - x);
    const int32_t count = 4 * pixels;
    const int32_t around = (count + 8 * radius + 63) / 64 * 64;
    for (int32_t k = 0; k < pairs; ++k) {
      AddRows(image, y, 2 * k, x - radius, pixels + 2 * radius, &scratch.words[static_cast<size_t>(k * scratch.step)]);
    }
    const int32_t* middle = &scratch.column[static_cast<size_t>(4 * radius)];
    for (int32_t dx = 0; dx <= radius; ++dx) {
      for (int32_t k = 0; k < pairs; ++k) {
        const uint32_t far = 2 * k < radius ? kernel.At(dx, 2 * k + 1) : 0;
        scratch.weights[static_cast<size_t>(k)] = kernel.At(dx, 2 * k) | far << 16;
      }
      WeighRows(scratch.words.data(), scratch.step, scratch.weights.data(), pairs, scratch.column.data(), around);
      if (dx == 0) {
        std::copy_n(middle, count, sums);
      } else {
        for (int32_t i = 0; i < count; ++i) sums[i] += middle[i - 4 * dx] + middle[i + 4 * dx];
      }
    }
    for (int32_t i = 0; i < count; ++i) out[i] = static_cast<uint8_t>(static_cast<int32_t>((sums[i] + 0.5) * part));
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace tilt_blur
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace tilt_blur {
HWY_EXPORT(BlurRow);
}  // namespace tilt_blur

void BlurRow(const EngineImage& image, int32_t y, const BlurKernel& kernel, BlurScratch& scratch, uint8_t* out) {
  using namespace tilt_blur;
  HWY_DYNAMIC_DISPATCH(BlurRow)(image, y, kernel, scratch, out);
}

#endif  // HWY_ONCE

#include "Source/LumaLevels.h"

#include <array>

#include "Source/Histogram.h"
#include "Source/PixelMap.h"
#include "framework/numeric.h"
#include "framework/pixels.h"

namespace {

constexpr uint32_t kBlack = 0xFF000000;
constexpr uint32_t kGray = 0xFF808080;
constexpr uint32_t kWhite = 0xFFFFFFFF;

uint32_t LumaOf(uint32_t pixel) {
  return ((pixel >> 8 & 255) + (pixel >> 16 & 255) * 2 + (pixel & 255)) >> 2;
}

// Neighbouring pixels are often alike: they count in different tables, so that none waits for the one before.
Histogram Count(ConstFrameView src) {
  const auto parts = CountRows<4>(src, [width = src.width](const uint8_t* in, std::array<Histogram, 4>& counts) {
    for (int32_t x = 0; x < width; ++x) ++counts[static_cast<size_t>(x & 3)][LumaOf(LoadPixel(in + 4 * x))];
  });
  Histogram histogram;
  for (size_t i = 0; i < 256; ++i) histogram[i] = parts[0][i] + parts[1][i] + parts[2][i] + parts[3][i];
  return histogram;
}

// The cut mean luma of bins from `from` up to but not with `to`; its low byte is 0 if they are empty.
int32_t MeanOf(const Histogram& histogram, int32_t from, int32_t to) {
  double sum = 0, count = 0;
  for (int32_t i = from; i < to; ++i) {
    sum += static_cast<double>(i) * histogram[static_cast<size_t>(i)];
    count += histogram[static_cast<size_t>(i)];
  }
  return Trunc32(sum / count);
}

// Moves to the middle between the means of both sides until it stays. That takes fewer steps than there are values.
int32_t ThresholdOf(const Histogram& histogram) {
  int32_t threshold = 127;
  for (int step = 0; step < 256; ++step) {
    const int32_t low = MeanOf(histogram, 0, threshold);
    const int32_t high = MeanOf(histogram, threshold, 256);
    const int32_t next = ((high & 255) + (low & 255)) >> 1;
    if (next == threshold) break;
    threshold = next;
  }
  return threshold;
}

struct Thresholds {
  int32_t low = 1;
  int32_t high = 255;
};

// The highest luma values below which fewer than 4 and 8 tenths of the pixels lie, themselves counted.
Thresholds ThresholdsOf(const Histogram& histogram, int32_t pixels) {
  const int32_t lowCount = WrapMul(pixels, 4) / 10;
  const int32_t highCount = WrapMul(pixels, 8) / 10;
  Thresholds thresholds;
  int32_t sum = 0;
  for (int32_t i = 0; i < 256; ++i) {
    sum += static_cast<int32_t>(histogram[static_cast<size_t>(i)]);
    if (sum < lowCount) thresholds.low = i;
    if (sum < highCount) thresholds.high = i;
  }
  return thresholds;
}

}  // namespace

void CTwoLay::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  const ConstFrameView in{src, width, height, srcStep};
  const int32_t threshold = ThresholdOf(Count(in));
  MapPixelsInBands(in, {dst, width, height, dstStep}, [threshold](uint32_t pixel) {
    return static_cast<int32_t>(LumaOf(pixel)) < threshold ? kBlack : kWhite;
  });
}

void CThreeLay::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  const ConstFrameView in{src, width, height, srcStep};
  const Thresholds thresholds = ThresholdsOf(Count(in), WrapMul(width, height));
  MapPixelsInBands(in, {dst, width, height, dstStep}, [thresholds](uint32_t pixel) {
    const int32_t luma = static_cast<int32_t>(LumaOf(pixel));
    return luma < thresholds.low ? kBlack : luma < thresholds.high ? kGray : kWhite;
  });
}

#include "Source/SquareBlur.h"

#include <algorithm>

#include "Source/PixelWords.h"
#include "Source/StackBlur.h"
#include "framework/frame.h"
#include "framework/params.h"
#include "framework/zeroed_array.h"

namespace {

constexpr ParamRow kSquareBlurParams[] = {{u"Size", 0, 0, 100}};

constexpr int32_t kFirstBoxRadius = 254;

// Cut toward zero; what cannot be a radius of a window within the frame becomes the nearest one that can.
int32_t RadiusOf(double radius, int32_t longerSide) {
  if (!(radius >= 1) || radius >= 9223372036854775808.0) return 0;
  return static_cast<int32_t>(std::min(radius, static_cast<double>(std::max(longerSide, kFirstBoxRadius))));
}

// The mean of all four bytes over the window of 2 * radius + 1 pixels each way, cut at the frame's edges. Sums are 32
// bits and wrap. Column sums follow the window down the frame; in each row, differences of their running sums are the
// windows. Without memory for the sums the picture is copied.
void BoxBlur(ConstFrameView src, FrameView dst, int32_t radius) {
  const int32_t width = src.width;
  const size_t lanes = static_cast<size_t>(width) * 4;
  ZeroedArray<uint32_t> columnSums, runningSums;
  if (!columnSums.Allocate(lanes) || !runningSums.Allocate(lanes + 4)) return CopyVisible(src, dst);
  uint32_t* columns = columnSums.Data();
  uint32_t* running = runningSums.Data();
  const auto addRow = [&](int32_t y) {
    const uint8_t* row = src.Row(y);
    for (size_t j = 0; j < lanes; ++j) columns[j] += row[j];
  };
  const auto dropRow = [&](int32_t y) {
    const uint8_t* row = src.Row(y);
    for (size_t j = 0; j < lanes; ++j) columns[j] -= row[j];
  };

  for (int32_t y = 0; y < std::min(radius, src.height); ++y) addRow(y);
  for (int32_t y = 0; y < src.height; ++y) {
    if (y + radius < src.height) addRow(y + radius);
    if (y > radius) dropRow(y - radius - 1);
    uint32_t sum[4] = {};
    for (size_t j = 0; j < lanes; j += 4) {
      for (size_t c = 0; c < 4; ++c) running[j + 4 + c] = sum[c] += columns[j + c];
    }
    const int32_t rows = std::min(y + radius + 1, src.height) - std::max(y - radius, 0);
    uint8_t* out = dst.Row(y);
    for (int32_t x = 0; x < width; ++x, out += 4) {
      const int32_t x1 = std::max(x - radius, 0);
      const int32_t x2 = std::min(x + radius + 1, width);
      // Quotients of 32-bit integers keep their integer part in 64-bit floats.
      const double area = static_cast<double>((x2 - x1) * rows);
      const uint32_t* high = &running[static_cast<size_t>(x2) * 4];
      const uint32_t* low = &running[static_cast<size_t>(x1) * 4];
      for (int c = 0; c < 4; ++c) out[c] = static_cast<uint8_t>(static_cast<int32_t>((high[c] - low[c]) / area));
    }
  }
}

}  // namespace

void CSquareBlur::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kSquareBlurParams, {size_ * 100});
}

void CSquareBlur::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  size_ = Param(params, 1) / 100;
  const int32_t longerSide = std::max(width, height);
  const int32_t radius = RadiusOf(size_ * (longerSide * 0.5), longerSide);
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  if (radius < kFirstBoxRadius) {
    CopyVisibleInBands(in, out);
    StackBlur(out, radius);
  } else {
    BoxBlur(in, out, radius);
  }
}

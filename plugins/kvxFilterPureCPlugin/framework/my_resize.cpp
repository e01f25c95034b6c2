#include "my_resize.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "frame.h"
#include "numeric.h"
#include "parallel.h"

namespace {

// As BlendTables::multiply, in a form that runs many bytes at a time.
uint16_t Multiply(uint8_t a, uint8_t b) {
  const uint16_t t = static_cast<uint16_t>(a * b + 128);
  return static_cast<uint16_t>(static_cast<uint16_t>(t + (t >> 8)) >> 8);
}

class parallelMyResizeInvoker : public cv::ParallelLoopBody {
 public:
  parallelMyResizeInvoker(const uint8_t* src, uint8_t* dst, int32_t dstWidth, int32_t dstHeight, int32_t dstStep,
                          int32_t srcWidth, int32_t srcHeight, int32_t srcStep)
      : src_(src),
        dst_(dst),
        dstWidth_(dstWidth),
        dstStep_(dstStep),
        srcHeight_(srcHeight),
        srcStep_(srcStep),
        verticalRatio_(static_cast<float>(srcHeight) / static_cast<float>(dstHeight)),
        columns_(static_cast<size_t>(dstWidth)) {
    const float horizontalRatio = static_cast<float>(srcWidth) / static_cast<float>(dstWidth);
    for (int32_t x = 0; x < dstWidth; ++x) {
      const float fx = static_cast<float>(x) * horizontalRatio;
      const int32_t ix = static_cast<int32_t>(fx);
      const int32_t x0 = ClampInt(ix, 0, srcWidth - 1);
      columns_[static_cast<size_t>(x)] = {x0, ClampInt(x0 + 1, 0, srcWidth - 1), fx - static_cast<float>(ix)};
    }
  }

  // The range is over pixels.
  void operator()(const cv::Range& range) const override {
    int32_t y = range.start / dstWidth_;
    int32_t x = range.start % dstWidth_;
    for (int32_t n = range.start; n < range.end; ++y, x = 0) {
      const int32_t end = x + std::min(dstWidth_ - x, range.end - n);
      n += end - x;
      for (; x < end; x += kRun) ResizeRun(y, x, std::min(kRun, end - x));
    }
  }

 private:
  // Where a destination column reads.
  struct Column {
    int32_t x0;
    int32_t x1;
    float weight;  // of x1
  };

  // Pixels taken at a time.
  static constexpr int32_t kRun = 64;

  void ResizeRun(int32_t y, int32_t x, int32_t count) const {
    const float fy = static_cast<float>(y) * verticalRatio_;
    const int32_t iy = static_cast<int32_t>(fy);
    const float wy = fy - static_cast<float>(iy);
    const float wy1 = 1.0f - wy;
    const int32_t y0 = ClampInt(iy, 0, srcHeight_ - 1);
    const uint8_t* row0 = SourceRow(y0);
    const uint8_t* row1 = SourceRow(ClampInt(y0 + 1, 0, srcHeight_ - 1));

    // Weights and neighbours of each pixel, byte by byte: first those of column x0 and row y0.
    uint8_t weights[4][4 * kRun];
    uint8_t neighbours[4][4 * kRun];
    for (int32_t i = 0; i < count; ++i) {
      const Column& column = columns_[static_cast<size_t>(x + i)];
      const float wx = column.weight;
      const float wx1 = 1.0f - wx;
      const float products[4] = {wx1 * wy1 * 255, wx * wy1 * 255, wx1 * wy * 255, wx * wy * 255};
      const uint8_t* pixels[4] = {
          row0 + 4 * static_cast<ptrdiff_t>(column.x0), row0 + 4 * static_cast<ptrdiff_t>(column.x1),
          row1 + 4 * static_cast<ptrdiff_t>(column.x0), row1 + 4 * static_cast<ptrdiff_t>(column.x1)};
      for (int k = 0; k < 4; ++k) {
        const uint32_t weight = static_cast<uint32_t>(static_cast<int32_t>(products[k])) * 0x01010101u;
        std::memcpy(weights[k] + 4 * i, &weight, 4);
        std::memcpy(neighbours[k] + 4 * i, pixels[k], 4);
      }
    }
    uint8_t* out = dst_ + static_cast<ptrdiff_t>(y) * dstStep_ + 4 * static_cast<ptrdiff_t>(x);
    for (int32_t j = 0; j < 4 * count; ++j) {
      const uint16_t sum =
          static_cast<uint16_t>(Multiply(weights[0][j], neighbours[0][j]) + Multiply(weights[1][j], neighbours[1][j]) +
                                Multiply(weights[2][j], neighbours[2][j]) + Multiply(weights[3][j], neighbours[3][j]));
      out[j] = static_cast<uint8_t>(sum < 255 ? sum : 255);
    }
  }

  const uint8_t* SourceRow(int32_t y) const { return src_ + static_cast<ptrdiff_t>(y) * srcStep_; }

  const uint8_t* src_;
  uint8_t* dst_;
  int32_t dstWidth_;
  int32_t dstStep_;
  int32_t srcHeight_;
  int32_t srcStep_;
  float verticalRatio_;
  std::vector<Column> columns_;
};

}  // namespace

void MyResize(const uint8_t* src, uint8_t* dst, int32_t dstWidth, int32_t dstHeight, int32_t dstStep, int32_t srcWidth,
              int32_t srcHeight, int32_t srcStep) {
  if (!src || !dst || dstWidth <= 0 || dstHeight <= 0 || srcStep <= 0 || dstStep <= 0) return;
  if (srcWidth <= 0 || srcHeight <= 0) return;
  if (srcWidth == dstWidth && srcHeight == dstHeight) {
    CopyRows(src, dst, dstWidth, dstHeight, srcStep, dstStep);
    return;
  }
  const parallelMyResizeInvoker body(src, dst, dstWidth, dstHeight, dstStep, srcWidth, srcHeight, srcStep);
  ParallelFor(cv::Range(0, dstWidth * dstHeight), body);
}

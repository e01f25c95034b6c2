#include "my_resize.h"

#include <algorithm>
#include <opencv2/core/utility.hpp>

#include "blend_tables.h"
#include "frame.h"
#include "numeric.h"

namespace {

class parallelMyResizeInvoker : public cv::ParallelLoopBody {
 public:
  parallelMyResizeInvoker(const uint8_t* src, uint8_t* dst, int32_t dstWidth, int32_t dstHeight, int32_t dstStep,
                          int32_t srcWidth, int32_t srcHeight, int32_t srcStep)
      : src_(src), dst_(dst), dstWidth_(dstWidth), dstStep_(dstStep), srcWidth_(srcWidth), srcHeight_(srcHeight),
        srcStep_(srcStep), verticalRatio_(static_cast<float>(srcHeight) / static_cast<float>(dstHeight)),
        horizontalRatio_(static_cast<float>(srcWidth) / static_cast<float>(dstWidth)),
        multiply_(BlendTables::Get().multiply) {}

  // The range is over pixels.
  void operator()(const cv::Range& range) const override {
    int32_t y = range.start / dstWidth_;
    int32_t x = range.start % dstWidth_;
    for (int32_t n = range.start; n < range.end; ++y, x = 0) {
      const int32_t count = std::min(dstWidth_ - x, range.end - n);
      ResizeRow(y, x, x + count);
      n += count;
    }
  }

 private:
  void ResizeRow(int32_t y, int32_t x, int32_t end) const {
    const float fy = static_cast<float>(y) * verticalRatio_;
    const int32_t iy = static_cast<int32_t>(fy);
    const float wy = fy - static_cast<float>(iy);
    const float wy1 = 1.0f - wy;
    const uint8_t* row0 = SourceRow(iy);
    const uint8_t* row1 = SourceRow(ClampInt(iy, 0, srcHeight_ - 1) + 1);
    for (; x < end; ++x) {
      const float fx = static_cast<float>(x) * horizontalRatio_;
      const int32_t ix = static_cast<int32_t>(fx);
      const float wx = fx - static_cast<float>(ix);
      const float wx1 = 1.0f - wx;
      const uint8_t* m00 = multiply_[static_cast<uint8_t>(wx1 * wy1 * 255)];
      const uint8_t* m10 = multiply_[static_cast<uint8_t>(wx * wy1 * 255)];
      const uint8_t* m01 = multiply_[static_cast<uint8_t>(wx1 * wy * 255)];
      const uint8_t* m11 = multiply_[static_cast<uint8_t>(wx * wy * 255)];
      const int32_t x0 = ClampInt(ix, 0, srcWidth_ - 1);
      const int32_t x1 = ClampInt(x0 + 1, 0, srcWidth_ - 1);
      const uint8_t* p00 = row0 + 4 * static_cast<ptrdiff_t>(x0);
      const uint8_t* p10 = row0 + 4 * static_cast<ptrdiff_t>(x1);
      const uint8_t* p01 = row1 + 4 * static_cast<ptrdiff_t>(x0);
      const uint8_t* p11 = row1 + 4 * static_cast<ptrdiff_t>(x1);
      uint8_t* out = dst_ + static_cast<ptrdiff_t>(y) * dstStep_ + 4 * static_cast<ptrdiff_t>(x);
      for (int c = 0; c < 4; ++c) {
        out[c] = static_cast<uint8_t>(std::min(m00[p00[c]] + m10[p10[c]] + m01[p01[c]] + m11[p11[c]], 255));
      }
    }
  }

  const uint8_t* SourceRow(int32_t y) const {
    return src_ + static_cast<ptrdiff_t>(ClampInt(y, 0, srcHeight_ - 1)) * srcStep_;
  }

  const uint8_t* src_;
  uint8_t* dst_;
  int32_t dstWidth_;
  int32_t dstStep_;
  int32_t srcWidth_;
  int32_t srcHeight_;
  int32_t srcStep_;
  float verticalRatio_;
  float horizontalRatio_;
  const uint8_t (&multiply_)[256][256];
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
  cv::parallel_for_(cv::Range(0, dstWidth * dstHeight), body, -1.0);
}

#include "Source/Glow.h"

#include <algorithm>
#include <new>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "framework/frame_matrix.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"
#include "workers/workers.h"

namespace {

constexpr ParamRow kGlowParams[] = {{u"Blur", 0, 0, 100}};

// Up to this window the blur's 32-bit sums hold.
constexpr int32_t kMaxDistance = 2900;

// The side of the blur's window: odd, and at most 253 for the values that a host's control gives.
int32_t WindowOf(double amount, int32_t longerSide) {
  const double half = longerSide * 0.5;
  int32_t distance = Trunc32(amount / 100 * half);
  const int32_t wholeHalf = Trunc32(half);
  if (wholeHalf > 253) distance = Trunc32(253.0f / static_cast<float>(wholeHalf) * static_cast<float>(distance));
  return (std::min(distance, kMaxDistance) & ~1) + 1;
}

// The screen of two frames, all four bytes: 255 - (((255 - a) * (255 - b)) >> 8), as arithmetic because that runs many
// bytes at a time.
class parallelCGlowInvoker : public cv::ParallelLoopBody {
 public:
  parallelCGlowInvoker(cv::Mat* dst, const cv::Mat* second, const cv::Mat* first)
      : dst_(dst), second_(second), first_(first) {}

  void operator()(const cv::Range& rows) const override {
    const int32_t bytes = dst_->cols * 4;
    for (int32_t y = rows.start; y < rows.end; ++y) {
      const uint8_t* a = first_->ptr(y);
      const uint8_t* b = second_->ptr(y);
      uint8_t* out = dst_->ptr(y);
      for (int32_t j = 0; j < bytes; ++j) {
        const uint16_t product = static_cast<uint16_t>((255 - a[j]) * (255 - b[j]));
        out[j] = static_cast<uint8_t>(255 - (product >> 8));
      }
    }
  }

 private:
  cv::Mat* dst_;
  const cv::Mat* second_;
  const cv::Mat* first_;
};

}  // namespace

// Reports a hundred times what it holds: 10 before the first frame, a hundred times the parameter after it.
void CGlow::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kGlowParams, {amount_ * 100});
}

void CGlow::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray* params) {
  if (width <= 0 || height <= 0) return;
  const size_t scratchBytes = static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
  if (!scratch_) scratch_.reset(new (std::nothrow) uint8_t[scratchBytes]);
  if (!scratch_) {
    CopyRows(src, dst, width, height, srcStep, dstStep);
    return;
  }
  const double amount = Param(params, 1);
  amount_ = amount / 100 * 100;

  const cv::Mat source = MatrixOf({src, width, height, srcStep});
  cv::Mat blurred(height, width, CV_8UC4, scratch_.get());
  cv::Mat result(height, width, CV_8UC4, dst, static_cast<size_t>(dstStep));
  const int32_t window = WindowOf(amount, std::max(width, height));
  if (window > 1) {
    // A band's blur sees the rows of the picture around it; adding up the first window is paid for in each.
    ForRowBands(width, 0, height,
                [&](int32_t begin, int32_t end) {
                  cv::Mat band = blurred.rowRange(begin, end);
                  WithWorkers([&] {
                    cv::blur(source.rowRange(begin, end), band, cv::Size(window, window), cv::Point(-1, -1),
                             cv::BORDER_DEFAULT);
                  });
                },
                {.rows = 4 * window});
    ParallelFor(cv::Range(0, height), parallelCGlowInvoker(&result, &blurred, &source));
  } else {
    ParallelFor(cv::Range(0, height), parallelCGlowInvoker(&result, &source, &source));
  }
}

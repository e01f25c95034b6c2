#include "framework/my_resize.h"

#include <algorithm>
#include <cstring>

#include "framework/numeric.h"
#include "framework/parallel.h"

// ResizeSpan is compiled once for each vector target. Its loops are plain, so that all targets give the same bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "my_resize.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace resize {
namespace HWY_NAMESPACE {

// Weighs the four neighbours of each of `count` pixels, first those of the upper row: near and far, then the lower
// row's. `farWeights` are the columns', `lowerWeight` is the row's.
void ResizeSpan(const uint8_t* const neighbours[4], const float* farWeights, float lowerWeight, uint8_t* out,
                int32_t count) {
  constexpr int32_t kRun = 64;
  // As BlendTables::multiply, in a form that runs many bytes at a time.
  const auto multiply = [](uint8_t a, uint8_t b) HWY_ATTR {
    const uint16_t t = static_cast<uint16_t>(a * b + 128);
    return static_cast<uint16_t>(t * 257u >> 16);  // (t + (t >> 8)) >> 8
  };
  const float upperWeight = 1.0f - lowerWeight;
  for (int32_t x = 0; x < count; x += kRun) {
    const int32_t n = std::min(kRun, count - x);
    // Each pixel's weights, four times over, for its four bytes.
    uint32_t weights[4][kRun];
    for (int32_t i = 0; i < n; ++i) {
      const float far = farWeights[x + i];
      const float near = 1.0f - far;
      weights[0][i] = static_cast<uint32_t>(static_cast<int32_t>(near * upperWeight * 255)) * 0x01010101u;
      weights[1][i] = static_cast<uint32_t>(static_cast<int32_t>(far * upperWeight * 255)) * 0x01010101u;
      weights[2][i] = static_cast<uint32_t>(static_cast<int32_t>(near * lowerWeight * 255)) * 0x01010101u;
      weights[3][i] = static_cast<uint32_t>(static_cast<int32_t>(far * lowerWeight * 255)) * 0x01010101u;
    }
    const uint8_t* w[4];
    const uint8_t* p[4];
    for (int k = 0; k < 4; ++k) {
      w[k] = reinterpret_cast<const uint8_t*>(weights[k]);
      p[k] = neighbours[k] + 4 * x;
    }
    for (int32_t j = 0; j < 4 * n; ++j) {
      const uint16_t sum = static_cast<uint16_t>(multiply(w[0][j], p[0][j]) + multiply(w[1][j], p[1][j]) +
                                                 multiply(w[2][j], p[2][j]) + multiply(w[3][j], p[3][j]));
      out[4 * x + j] = static_cast<uint8_t>(sum < 255 ? sum : 255);
    }
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace resize
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace resize {
HWY_EXPORT(ResizeSpan);
}  // namespace resize

ResizedFrame::Place::Place(int32_t at, float ratio, int32_t size) {
  const float place = static_cast<float>(at) * ratio;
  const int32_t whole = static_cast<int32_t>(place);
  near = ClampInt(whole, 0, size - 1);
  far = ClampInt(near + 1, 0, size - 1);
  weight = place - static_cast<float>(whole);
}

ResizedFrame::ResizedFrame(ConstFrameView src, int32_t width, int32_t height)
    : src_(src),
      verticalRatio_(static_cast<float>(src.height) / static_cast<float>(height)),
      farWeights_(static_cast<size_t>(width)) {
  const float horizontalRatio = static_cast<float>(src.width) / static_cast<float>(width);
  columns_.reserve(farWeights_.size());
  for (int32_t x = 0; x < width; ++x) {
    columns_.emplace_back(x, horizontalRatio, src.width);
    farWeights_[static_cast<size_t>(x)] = columns_.back().weight;
  }
}

const uint8_t* ResizedFrame::Reader::Spread(int32_t y) {
  uint8_t* spread = spread_.data() + (y % 2 ? spread_.size() / 2 : 0);
  if (held_[y % 2] == y) return spread;
  held_[y % 2] = y;
  const uint8_t* row = frame_.src_.Row(y);
  uint8_t* near = spread;
  uint8_t* far = spread + spread_.size() / 4;
  for (const Place& column : frame_.columns_) {
    std::memcpy(near, row + 4 * static_cast<ptrdiff_t>(column.near), 4);
    std::memcpy(far, row + 4 * static_cast<ptrdiff_t>(column.far), 4);
    near += 4;
    far += 4;
  }
  return spread;
}

void ResizedFrame::Reader::Read(int32_t x, int32_t y, int32_t count, uint8_t* out) {
  using namespace resize;
  const Place row(y, frame_.verticalRatio_, frame_.src_.height);
  const uint8_t* upper = Spread(row.near) + 4 * static_cast<ptrdiff_t>(x);
  const uint8_t* lower = Spread(row.far) + 4 * static_cast<ptrdiff_t>(x);
  const size_t far = spread_.size() / 4;
  const uint8_t* neighbours[4] = {upper, upper + far, lower, lower + far};
  HWY_DYNAMIC_DISPATCH(ResizeSpan)(neighbours, frame_.farWeights_.data() + x, row.weight, out, count);
}

namespace {

class parallelMyResizeInvoker : public cv::ParallelLoopBody {
 public:
  parallelMyResizeInvoker(ConstFrameView src, FrameView dst) : resized_(src, dst.width, dst.height), dst_(dst) {}

  // The range is over pixels.
  void operator()(const cv::Range& range) const override {
    ResizedFrame::Reader reader(resized_);
    int32_t y = range.start / dst_.width;
    int32_t x = range.start % dst_.width;
    for (int32_t n = range.start; n < range.end; ++y, x = 0) {
      const int32_t count = std::min(dst_.width - x, range.end - n);
      n += count;
      reader.Read(x, y, count, dst_.Pixel(x, y));
    }
  }

 private:
  ResizedFrame resized_;
  FrameView dst_;
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
  const parallelMyResizeInvoker body(ConstFrameView{src, srcWidth, srcHeight, srcStep},
                                     FrameView{dst, dstWidth, dstHeight, dstStep});
  ParallelFor(cv::Range(0, dstWidth * dstHeight), body);
}

#endif  // HWY_ONCE

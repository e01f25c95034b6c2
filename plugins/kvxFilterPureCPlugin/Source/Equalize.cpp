#include "Source/Equalize.h"

#include <memory>
#include <opencv2/imgproc.hpp>

#include "Source/Histogram.h"
#include "Source/PixelWords.h"
#include "framework/frame_matrix.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/pixel_kernels.h"
#include "framework/zeroed_array.h"
#include "workers/workers.h"

namespace {

// The box around everything that is not black.
ConstFrameView PictureOf(const cv::Mat& frame) {
  const auto bytes = std::make_unique_for_overwrite<uint8_t[]>(PixelCount(frame.cols, frame.rows));
  cv::Mat gray(frame.rows, frame.cols, CV_8UC1, bytes.get());
  WithWorkers([&] { cv::cvtColor(frame, gray, cv::COLOR_BGRA2GRAY, 0); });
  const cv::Rect box = cv::boundingRect(gray);
  const cv::Mat region = frame(box);
  return {region.data, region.cols, region.rows, static_cast<int32_t>(frame.step)};
}

// One histogram for each of bytes 0 to 2.
std::array<Histogram, 3> Count(ConstFrameView picture) {
  return CountRows<3>(picture, [width = picture.width](const uint8_t* in, std::array<Histogram, 3>& counts) {
    for (int32_t x = 0; x < width; ++x, in += 4) {
      ++counts[0][in[0]];
      ++counts[1][in[1]];
      ++counts[2][in[2]];
    }
  });
}

// The share of pixels up to and with each value.
ByteTable TableOf(const Histogram& histogram, uint64_t pixels) {
  ByteTable table;
  uint64_t sum = 0;
  for (size_t i = 0; i < 256; ++i) {
    sum += histogram[i];
    table[i] = static_cast<uint8_t>(CLAMP0255(static_cast<int32_t>((sum << 8) / pixels)));
  }
  return table;
}

}  // namespace

void CEqualize::Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t dstStep, const ParamValueArray*) {
  if (width <= 0 || height <= 0) return;
  const ConstFrameView in{src, width, height, srcStep};
  const FrameView out{dst, width, height, dstStep};
  const cv::Mat frame = MatrixOf(in);
  const ConstFrameView picture = PictureOf(frame);
  if (picture.Empty()) return CopyRowsInBands(in, out);
  CopyBetweenRows(in, out);
  const std::array<Histogram, 3> counts = Count(picture);
  const uint64_t pixels = static_cast<uint64_t>(picture.width) * static_cast<uint64_t>(picture.height);
  const ByteTable table0 = TableOf(counts[0], pixels), table1 = TableOf(counts[1], pixels),
                  table2 = TableOf(counts[2], pixels);
  const ByteTables tables = {table0.data(), table1.data(), table2.data()};
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) MapRow(in.Row(y), out.Row(y), out.width, tables);
  });
}

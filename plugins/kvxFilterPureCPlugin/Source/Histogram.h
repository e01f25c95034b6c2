// How often byte values occur.
#ifndef KVX_SOURCE_HISTOGRAM_H_
#define KVX_SOURCE_HISTOGRAM_H_

#include <array>
#include <cstdint>
#include <mutex>

#include "framework/frame.h"
#include "framework/parallel.h"

using Histogram = std::array<uint32_t, 256>;

// `countRow(row, histograms)` adds what a row holds; the rows of a large frame on several threads.
template <size_t kCount, typename CountRow>
std::array<Histogram, kCount> CountRows(ConstFrameView frame, CountRow countRow) {
  std::array<Histogram, kCount> totals{};
  std::mutex lock;
  ForRowBands(frame.width, 0, frame.height, [=, &totals, &lock](int32_t begin, int32_t end) {
    std::array<Histogram, kCount> counts{};
    for (int32_t y = begin; y < end; ++y) countRow(frame.Row(y), counts);
    const std::lock_guard guard(lock);
    for (size_t i = 0; i < kCount; ++i) {
      for (size_t value = 0; value < 256; ++value) totals[i][value] += counts[i][value];
    }
  });
  return totals;
}

#endif  // KVX_SOURCE_HISTOGRAM_H_

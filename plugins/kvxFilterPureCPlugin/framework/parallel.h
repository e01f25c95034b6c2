// Loops over OpenCV's worker threads.
#ifndef KVX_FRAMEWORK_PARALLEL_H_
#define KVX_FRAMEWORK_PARALLEL_H_

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <opencv2/core/utility.hpp>

#include "workers/workers.h"

// Pixels from which on a frame is worth several threads. Hosts render 1920 by 1080 on threads of their own.
constexpr int64_t kLargeFrame = 1 << 21;

// What is worth a split: pixels from which on, and rows that a band has at the least.
struct BandRules {
  int64_t pixels = kLargeFrame;
  int32_t rows = 1;
};

// Objects that are in ForRowBands just now.
inline std::atomic<int32_t> rowBandsBusy{0};

// Inlined around a copy of its own: otherwise each byte that a loop writes might be one of what it holds by itself.
template <typename Rows>
[[gnu::noinline, gnu::flatten]] void RunRows(Rows rows, int32_t begin, int32_t end) {
  rows(begin, end);
}

// Calls `rows(begin, end)` for rows `first` to `last` - 1 of `width` pixels each: at once, or, where the frame
// is large, in bands that OpenCV's threads share out among them. No row may read what another writes. Each row is done
// once, even where a thread cannot be started, so rows may be worked on in place. Objects that are at work at the same
// time share the threads: with fewer than two for each, the calling thread works alone.
template <typename Rows>
void ForRowBands(int64_t width, int32_t first, int32_t last, const Rows& rows, const BandRules& rules = {}) {
  if (first >= last) return;
  const int32_t count = last - first;
  if (width * count < rules.pixels) return RunRows(rows, first, last);
  struct Busy {
    int32_t others = rowBandsBusy.fetch_add(1, std::memory_order_relaxed);
    ~Busy() { rowBandsBusy.fetch_sub(1, std::memory_order_relaxed); }
  } busy;
  const int32_t threads = cv::getNumThreads() / (busy.others + 1);
  if (threads < 2) return RunRows(rows, first, last);
  const int32_t bands = std::clamp(count / std::max(rules.rows, 1), 1, 8 * threads);
  const auto startOf = [=](int32_t band) { return first + static_cast<int32_t>(int64_t{band} * count / bands); };
  std::atomic<int32_t> next{0};
  const cv::ParallelLoopBodyLambdaWrapper takeBands([&](const cv::Range&) {
    for (int32_t band; (band = next.fetch_add(1, std::memory_order_relaxed)) < bands;) {
      RunRows(rows, startOf(band), startOf(band + 1));
    }
  });
  ParallelFor(cv::Range(0, threads), takeBands, threads);
}

#endif  // KVX_FRAMEWORK_PARALLEL_H_

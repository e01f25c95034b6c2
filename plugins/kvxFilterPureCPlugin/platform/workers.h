// Work that OpenCV shares out among its worker threads, where a thread may fail to start.
#ifndef KVX_PLATFORM_WORKERS_H_
#define KVX_PLATFORM_WORKERS_H_

#include <opencv2/core/utility.hpp>
#include <stdexcept>

// Calls `work`, which calls OpenCV and does not read what it writes. If a worker thread cannot be started, which comes
// as std::runtime_error from below OpenCV, `work` is done again by the calling thread alone: within a loop, and be it
// of one turn, OpenCV shares out nothing more. Other threads may be in a loop just then and end it too early for that,
// hence several tries.
template <typename Work>
void WithWorkers(const Work& work) {
  try {
    work();
    return;
  } catch (const std::runtime_error&) {
  }
  constexpr int kTries = 8;
  for (int i = 1;; ++i) {
    try {
      cv::parallel_for_(cv::Range(0, 1), [&work](const cv::Range&) { work(); });
      return;
    } catch (const std::runtime_error&) {
      if (i == kTries) throw;
    }
  }
}

#endif  // KVX_PLATFORM_WORKERS_H_

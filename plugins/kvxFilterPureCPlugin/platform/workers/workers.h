// Work that OpenCV's worker threads share, where a thread may fail to start.
#ifndef KVX_WORKERS_WORKERS_H_
#define KVX_WORKERS_WORKERS_H_

#include <atomic>
#include <opencv2/core/utility.hpp>
#include <stdexcept>

#if defined(__SANITIZE_THREAD__)

// OpenCV's pool orders its workers behind the caller and the caller behind its workers, but out of the thread
// sanitizer's sight. Two counters show it that order; races between workers stay visible.
class OrderedLoopBody : public cv::ParallelLoopBody {
 public:
  explicit OrderedLoopBody(const cv::ParallelLoopBody& body) : body_(body) { begun_.fetch_add(1); }
  ~OrderedLoopBody() override { ended_.load(); }

  void operator()(const cv::Range& range) const override {
    begun_.load();
    body_(range);
    ended_.fetch_add(1);
  }

 private:
  inline static std::atomic<int> begun_{0};
  inline static std::atomic<int> ended_{0};
  const cv::ParallelLoopBody& body_;
};

#else

using OrderedLoopBody = const cv::ParallelLoopBody&;

#endif

// A loop whose turns do not read what others, or they themselves, write. If a worker thread cannot be started, which
// comes as std::runtime_error from below OpenCV, the calling thread goes through all of it alone.
inline void ParallelFor(const cv::Range& range, const cv::ParallelLoopBody& body, double stripes = -1.0) {
  try {
    cv::parallel_for_(range, OrderedLoopBody(body), stripes);
  } catch (const std::runtime_error&) {
    body(range);
  }
}

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

#endif  // KVX_WORKERS_WORKERS_H_

// Loops over OpenCV's worker threads.
#ifndef KVX_FRAMEWORK_PARALLEL_H_
#define KVX_FRAMEWORK_PARALLEL_H_

#include <opencv2/core/utility.hpp>

#if defined(__SANITIZE_THREAD__)

#include <atomic>

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

inline void ParallelFor(const cv::Range& range, const cv::ParallelLoopBody& body, double stripes = -1.0) {
  cv::parallel_for_(range, OrderedLoopBody(body), stripes);
}

#else

inline void ParallelFor(const cv::Range& range, const cv::ParallelLoopBody& body, double stripes = -1.0) {
  cv::parallel_for_(range, body, stripes);
}

#endif

#endif  // KVX_FRAMEWORK_PARALLEL_H_

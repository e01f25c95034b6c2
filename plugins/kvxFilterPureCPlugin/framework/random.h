// The one pseudo-random stream of the process.
#ifndef KVX_FRAMEWORK_RANDOM_H_
#define KVX_FRAMEWORK_RANDOM_H_

#include <atomic>
#include <cstdint>

// Draws from the stream for the length of one operation: takes the state when made, puts it back when it ends. So one
// thread sees one exact stream from operation to operation, and threads never race. Keep at most one alive per thread.
class Rand {
 public:
  Rand() : state_(shared_.load(std::memory_order_relaxed)) {}
  ~Rand() { shared_.store(state_, std::memory_order_relaxed); }
  Rand(const Rand&) = delete;
  Rand& operator=(const Rand&) = delete;

  void Seed(uint32_t value) { state_ = value; }

  // 0 to 32767.
  int32_t Next() {
    state_ = state_ * 214013u + 2531011u;
    return static_cast<int32_t>(state_ >> 16 & 0x7FFF);
  }

 private:
  inline static std::atomic<uint32_t> shared_{1};
  uint32_t state_;
};

#endif  // KVX_FRAMEWORK_RANDOM_H_

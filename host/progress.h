// One line on a terminal that says how far a long piece of work is.
#ifndef KVX_HOST_PROGRESS_H_
#define KVX_HOST_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <string>

// Writes to stderr, only if that is a terminal and only once the work has taken a second.
class Progress {
 public:
  Progress(std::string unit, int64_t total);
  ~Progress();
  void Advance();

 private:
  using Clock = std::chrono::steady_clock;
  std::string unit_;
  int64_t total_;
  int64_t done_ = 0;
  bool terminal_;
  bool shown_ = false;
  Clock::time_point start_ = Clock::now();
  Clock::time_point lastShown_ = start_;
};

#endif  // KVX_HOST_PROGRESS_H_

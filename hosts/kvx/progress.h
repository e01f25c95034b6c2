// How far a long piece of work is: a line on a terminal, and blocks of key=value in a file for whoever reads along.
#ifndef KVX_HOSTS_KVX_PROGRESS_H_
#define KVX_HOSTS_KVX_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <fstream>
#include <string>

namespace kvx {

struct ProgressOptions {
  bool quiet = false;
  // Gets a block every half second. The last one ends in progress=end, progress=interrupted or progress=failed. Empty
  // for none.
  std::string file;
  double rate = 0;  // frames per second of the clip, for telling how fast the work is against it; 0 if there is none
};

// The line goes to stderr, only if that is a terminal, and only once the work has taken a second.
class Progress {
 public:
  // `total` of 0: not known. Throws Error if the file cannot be written.
  Progress(std::string unit, int64_t total, const ProgressOptions& options = {});
  ~Progress();
  void Advance();
  // The work is done, or somebody interrupted it: writes the last block. Without either it has failed.
  void Finish();
  void Interrupt();

 private:
  using Clock = std::chrono::steady_clock;
  void WriteBlock(const char* state);
  void ShowLine(double elapsed);
  void End(const char* state);

  std::string unit_;
  int64_t total_;
  int64_t done_ = 0;
  double rate_;
  bool terminal_;
  bool shown_ = false;
  std::ofstream file_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point lastLine_ = start_;
  Clock::time_point lastBlock_ = start_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_PROGRESS_H_

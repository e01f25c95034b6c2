#include "hosts/kvx/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "hostkit/plugin.h"

namespace kvx {

Progress::Progress(std::string unit, int64_t total, const ProgressOptions& options)
    : unit_(std::move(unit)), total_(std::max<int64_t>(total, 0)), terminal_(!options.quiet && isatty(STDERR_FILENO)) {
  if (options.file.empty()) return;
  file_.open(options.file);
  if (!file_) throw Error(fmt::format("{}: cannot be written", options.file));
}

Progress::~Progress() {
  if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::Advance() {
  ++done_;
  const Clock::time_point now = Clock::now();
  if (file_.is_open() && now - lastBlock_ >= std::chrono::milliseconds(500)) {
    lastBlock_ = now;
    WriteBlock("continue");
  }
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  if (terminal_ && elapsed >= 1 && now - lastLine_ >= std::chrono::milliseconds(100)) {
    lastLine_ = now;
    ShowLine(elapsed);
  }
}

void Progress::Finish() {
  if (file_.is_open()) WriteBlock("end");
}

void Progress::WriteBlock(const char* state) {
  const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
  file_ << fmt::format("{}={}\ntotal={}\nfps={:.2f}\nelapsed={:.3f}\nprogress={}\n", unit_, done_, total_,
                       elapsed > 0 ? static_cast<double>(done_) / elapsed : 0.0, elapsed, state);
  file_.flush();
}

void Progress::ShowLine(double elapsed) {
  shown_ = true;
  const double rate = static_cast<double>(done_) / elapsed;
  std::string line = fmt::format("\r{} {}", unit_, done_);
  if (total_ > 0) {
    const int64_t reached = std::min(done_, total_);
    const auto left = static_cast<int64_t>(static_cast<double>(total_ - reached) / rate + 0.5);
    line += fmt::format("/{}  {:.1f} fps  {:.2f}x  {}%  {}:{:02} left", total_, rate, rate / 25, reached * 100 / total_,
                        left / 60, left % 60);
  } else {
    line += fmt::format("  {:.1f} fps", rate);
  }
  std::fputs((line + "\033[K").c_str(), stderr);
}

}  // namespace kvx

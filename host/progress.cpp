#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

Progress::Progress(std::string unit, int64_t total)
    : unit_(std::move(unit)), total_(std::max<int64_t>(total, 1)), terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::Advance() {
  ++done_;
  if (!terminal_) return;
  const Clock::time_point now = Clock::now();
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  if (elapsed < 1 || now - lastShown_ < std::chrono::milliseconds(100)) return;
  lastShown_ = now;
  shown_ = true;
  constexpr int kWidth = 24;
  const int filled = static_cast<int>(std::min(done_, total_) * kWidth / total_);
  const double rate = static_cast<double>(done_) / elapsed;
  const auto left = static_cast<int64_t>(static_cast<double>(std::max<int64_t>(total_ - done_, 0)) / rate + 0.5);
  const std::string line = fmt::format("\r[{:<{}}] {} {}/{}  {:.1f}/s  {}:{:02} left\033[K", std::string(filled, '='),
                                       kWidth, unit_, done_, total_, rate, left / 60, left % 60);
  std::fputs(line.c_str(), stderr);
}

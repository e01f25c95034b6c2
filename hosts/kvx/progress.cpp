#include "hosts/kvx/progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "hostkit/plugin.h"

namespace kvx {

Progress::Progress(std::string unit, int64_t total, const ProgressOptions& options)
    : unit_(std::move(unit)),
      total_(std::max<int64_t>(total, 0)),
      rate_(options.rate),
      terminal_(!options.quiet && isatty(STDERR_FILENO)) {
  if (options.file.empty()) return;
  file_.open(options.file);
  if (!file_) throw Error(fmt::format("{}: cannot be written: {}", options.file, std::strerror(errno)));
}

Progress::~Progress() {
  if (file_.is_open()) End("failed");
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
  End("end");
}

void Progress::Interrupt() {
  End("interrupted");
}

void Progress::End(const char* state) {
  if (!file_.is_open()) return;
  WriteBlock(state);
  file_.close();
}

void Progress::WriteBlock(const char* state) {
  const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
  file_ << fmt::format("{}={}\ntotal={}\nfps={:.2f}\nelapsed={:.3f}\nprogress={}\n", unit_, done_, total_,
                       elapsed > 0 ? static_cast<double>(done_) / elapsed : 0.0, elapsed, state);
  file_.flush();
}

void Progress::ShowLine(double elapsed) {
  shown_ = true;
  const double speed = static_cast<double>(done_) / elapsed;
  std::string line = fmt::format("{} {}", unit_, done_);
  if (total_ > 0) line += fmt::format("/{}", total_);
  line += fmt::format("  {:.1f} fps", speed);
  if (rate_ > 0) line += fmt::format("  {:.2f}x", speed / rate_);
  if (total_ > 0) {
    const int64_t reached = std::min(done_, total_);
    const auto left = static_cast<int64_t>(static_cast<double>(total_ - reached) / speed + 0.5);
    line += fmt::format("  {}%  {}:{:02} left", reached * 100 / total_, left / 60, left % 60);
  }
  winsize window = {};
  // The last column stays free: some terminals wrap there.
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 1 && line.size() >= window.ws_col) {
    line.resize(window.ws_col - 1);
  }
  std::fputs(("\r" + line + "\033[K").c_str(), stderr);
}

}  // namespace kvx

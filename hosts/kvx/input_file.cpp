#include "hosts/kvx/input_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "hostkit/error.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace {

constexpr int kTick = 200;        // milliseconds between looks at the stop flag
constexpr int kWriterTicks = 25;  // so many for somebody to open the other end of a pipe

}  // namespace

InputFile::InputFile(const std::string& path) : path_(path == "-" ? "" : path), name_(path) {
  struct stat info;
  if (path == "-") {
    name_ = "standard input";
    file_ = STDIN_FILENO;
    owned_ = false;
    if (fstat(file_, &info) != 0) throw Error(fmt::format("{}: {}", name_, std::strerror(errno)));
  } else {
    if (stat(path.c_str(), &info) != 0) {
      throw Error(fmt::format("{}: {}", name_, errno == ENOENT ? "no such file" : std::strerror(errno)));
    }
    if (S_ISDIR(info.st_mode)) throw Error(fmt::format("{}: is a directory", name_));
    if (S_ISCHR(info.st_mode) || S_ISBLK(info.st_mode)) throw Error(fmt::format("{}: is a device, not a file", name_));
    if (S_ISSOCK(info.st_mode)) throw Error(fmt::format("{}: is a socket, not a file", name_));
    // A pipe without a writer must not hold up the opening.
    file_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file_ < 0) throw Error(fmt::format("{}: cannot be read: {}", name_, std::strerror(errno)));
  }
  if (S_ISREG(info.st_mode)) {
    // Standard input may be a file that somebody has read a part of; its end counts from there.
    const off_t start = owned_ ? 0 : lseek(file_, 0, SEEK_CUR);
    if (start == 0) size_ = info.st_size;
  }
  if (owned_ && S_ISFIFO(info.st_mode)) AwaitWriter();
  if (owned_) fcntl(file_, F_SETFL, fcntl(file_, F_GETFL) & ~O_NONBLOCK);
}

InputFile::~InputFile() {
  if (owned_ && file_ >= 0) close(file_);
}

// Reading says 0 while nobody writes and "again" while a writer is silent.
void InputFile::AwaitWriter() {
  for (int tick = 0;; ++tick) {
    char byte;
    const ssize_t got = read(file_, &byte, 1);
    if (got > 0) head_.push_back(byte);
    if (got != 0) return;
    if (tick == kWriterTicks) {
      close(file_);
      throw Error(fmt::format("{}: nobody writes into this pipe", name_));
    }
    ThrowIfStopAsked();
    usleep(kTick * 1000);
  }
}

size_t InputFile::ReadSystem(void* bytes, size_t count) {
  for (;;) {
    if (StopAsked() || abandoned_) return 0;
    if (!size_) {
      // A silent pipe must not hold up Ctrl-C.
      pollfd ready = {file_, POLLIN, 0};
      if (poll(&ready, 1, kTick) == 0) continue;
    }
    const ssize_t got = read(file_, bytes, count);
    if (got >= 0) return static_cast<size_t>(got);
    if (errno != EINTR && errno != EAGAIN) {
      throw Error(fmt::format("{}: cannot be read: {}", name_, std::strerror(errno)));
    }
  }
}

std::string_view InputFile::Peek(size_t count) {
  while (head_.size() < count) {
    const size_t have = head_.size();
    head_.resize(count);
    const size_t got = ReadSystem(head_.data() + have, count - have);
    head_.resize(have + got);
    if (got == 0) break;
  }
  return std::string_view(head_).substr(0, count);
}

size_t InputFile::Read(void* bytes, size_t count) {
  size_t got = std::min(count, head_.size());
  if (got > 0) {
    std::memcpy(bytes, head_.data(), got);
    head_.erase(0, got);
  } else {
    got = ReadSystem(bytes, count);
  }
  position_ += static_cast<int64_t>(got);
  return got;
}

std::string InputFile::ReadAll(size_t limit) {
  if (size_ && *size_ > static_cast<int64_t>(limit)) {
    throw Error(fmt::format("{}: {} bytes are more than the {} that can be", name_, *size_, limit));
  }
  std::string all;
  size_t room = 1 << 16;
  for (;;) {
    const size_t have = all.size();
    all.resize(have + room);
    const size_t got = Read(all.data() + have, room);
    all.resize(have + got);
    if (got == 0) break;
    if (all.size() > limit) throw Error(fmt::format("{}: more than the {} bytes that can be", name_, limit));
    room = std::max<size_t>(room, all.size() / 4);
  }
  ThrowIfStopAsked();
  return all;
}

void InputFile::MakeSeekable() {
  if (size_) return;
  std::FILE* spool = std::tmpfile();
  if (!spool) throw Error(fmt::format("{}: no temporary file for it: {}", name_, std::strerror(errno)));
  char block[1 << 16];
  while (const size_t got = Read(block, sizeof block)) {
    if (std::fwrite(block, 1, got, spool) == got) continue;
    const int cause = errno;
    std::fclose(spool);
    throw Error(fmt::format("{}: no temporary file for it: {}", name_, std::strerror(cause)));
  }
  const bool flushed = std::fflush(spool) == 0;
  const int spooled = flushed ? dup(fileno(spool)) : -1;
  std::fclose(spool);
  if (spooled < 0) throw Error(fmt::format("{}: no temporary file for it: {}", name_, std::strerror(errno)));
  if (owned_) close(file_);
  file_ = spooled;
  owned_ = true;
  size_ = position_;
  Seek(0);
}

void InputFile::Seek(int64_t position) {
  head_.clear();
  if (lseek(file_, position, SEEK_SET) < 0) throw Error(fmt::format("{}: {}", name_, std::strerror(errno)));
  position_ = position;
}

}  // namespace kvx

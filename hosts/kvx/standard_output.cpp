#include "hosts/kvx/standard_output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "hostkit/error.h"

namespace kvx {

namespace {

[[noreturn]] void Fail() {
  throw Error(fmt::format("standard output cannot be written: {}", std::strerror(errno)));
}

}  // namespace

void GuardStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free number is this one. Output opened for reading fails at the first byte, as closed output should.
    if (open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY) != stream) _exit(1);
  }
}

void WriteStandardOutput(const void* bytes, size_t size) {
  if (std::fwrite(bytes, 1, size, stdout) != size) Fail();
}

void FlushStandardOutput() {
  if (std::fflush(stdout) != 0) Fail();
}

void Print(std::string_view text) {
  WriteStandardOutput(text.data(), text.size());
}

}  // namespace kvx

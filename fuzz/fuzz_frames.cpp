// What users feed as pictures in motion. The first byte says how: Y4M through a pipe, raw frames through a pipe, a
// video file. At most eight frames are read.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "hostkit/error.h"
#include "hosts/kvx/frame_io.h"
#include "tests/support/fake_host.h"

namespace {

void OnStandardInput(const uint8_t* data, size_t size) {
  static const int file = memfd_create("input", 0);
  if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
  lseek(file, 0, SEEK_SET);
  dup2(file, STDIN_FILENO);
  std::rewind(stdin);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const TemporaryDirectory directory;
  if (size == 0) return 0;
  kvx::InputOptions options;
  options.path = "-";
  options.frames = 8;
  const uint8_t kind = data[0] % 3;
  if (kind == 2) {
    directory.Write("clip.video", std::string(data + 1, data + size));
    options.path = (directory.Path() / "clip.video").string();
    if (data[0] & 0x40) options.start = 0.1;
    if (data[0] & 0x80) options.end = 0.2;
  } else {
    OnStandardInput(data + 1, size - 1);
    if (kind == 1) options.rawSize = kvx::FrameSize{1 + data[0] / 16, 1 + data[0] % 16};
  }
  try {
    const auto reader = kvx::OpenReader(options);
    kvx::Frame frame;
    for (int64_t count = 0; reader->Read(frame); ++count) {
      if (count >= 8 || frame.picture.width <= 0 || frame.picture.height <= 0) std::abort();
      if (frame.picture.pixels.size() != size_t{4} * frame.picture.width * frame.picture.height) std::abort();
    }
  } catch (const kvx::Error&) {
  }
  return 0;
}

#include "memory_probe.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

namespace {

enum class Access { kRead, kWrite };

// Reads hexadecimal digits at `text` and moves it behind them.
uintptr_t ParseHex(const char*& text) {
  uintptr_t value = 0;
  for (;; ++text) {
    if (*text >= '0' && *text <= '9') {
      value = value << 4 | static_cast<uintptr_t>(*text - '0');
    } else if (*text >= 'a' && *text <= 'f') {
      value = value << 4 | static_cast<uintptr_t>(*text - 'a' + 10);
    } else {
      return value;
    }
  }
}

// Walks the lines "from-to rwxp ..." of the address map, which stand in order of address, and moves `next` over every
// mapping that allows the access. Returns true when a line behind `next` shows that no more can follow.
class MapWalk {
 public:
  MapWalk(uintptr_t first, uintptr_t last, Access access) : next_(first), last_(last), access_(access) {}

  bool Covered() const { return covered_; }

  // `line` ends in a newline. Returns false when the answer is known.
  bool Line(const char* line) {
    const uintptr_t from = ParseHex(line);
    const uintptr_t to = ParseHex(++line);
    if (to <= next_) return true;
    const bool allowed = line[access_ == Access::kRead ? 1 : 2] == (access_ == Access::kRead ? 'r' : 'w');
    if (from > next_ || !allowed) return false;
    if (to > last_) {
      covered_ = true;
      return false;
    }
    next_ = to;
    return true;
  }

 private:
  uintptr_t next_;
  uintptr_t last_;
  Access access_;
  bool covered_ = false;
};

// The kernel's list of mappings costs far less than a question for every page, and needs neither a read nor a write.
bool IsBad(const void* address, size_t size, Access access) {
  if (size == 0) return false;
  const uintptr_t first = reinterpret_cast<uintptr_t>(address);
  if (first == 0 || first + (size - 1) < first) return true;

  const int maps = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (maps < 0) {
    // Without the list: let the kernel fault the pages in as an access would.
    const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t start = first & ~(page - 1);
    constexpr int kPopulateRead = 22;
    constexpr int kPopulateWrite = 23;
    return madvise(reinterpret_cast<void*>(start), first + size - start,
                   access == Access::kRead ? kPopulateRead : kPopulateWrite) != 0;
  }
  MapWalk walk(first, first + (size - 1), access);
  char buffer[16384];
  size_t held = 0;
  bool open = true;
  while (open) {
    const ssize_t got = read(maps, buffer + held, sizeof buffer - held);
    if (got <= 0) break;
    held += static_cast<size_t>(got);
    char* line = buffer;
    while (open) {
      char* end = static_cast<char*>(std::memchr(line, '\n', held - static_cast<size_t>(line - buffer)));
      if (!end) break;
      open = walk.Line(line);
      line = end + 1;
    }
    held -= static_cast<size_t>(line - buffer);
    std::memmove(buffer, line, held);
    if (held == sizeof buffer) break;
  }
  close(maps);
  return !walk.Covered();
}

}  // namespace

bool IsBadReadPtr(const void* address, size_t size) {
  return IsBad(address, size, Access::kRead);
}
bool IsBadWritePtr(const void* address, size_t size) {
  return IsBad(address, size, Access::kWrite);
}

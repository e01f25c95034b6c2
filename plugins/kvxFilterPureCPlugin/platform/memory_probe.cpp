#include "platform/memory_probe.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace {

enum class Access { kRead, kWrite };

// The kernel's question for one mapping, as its interface lays it down since Linux 6.11; headers of that age are not
// needed.
struct MappingQuery {
  uint64_t size;
  uint64_t flags;  // permissions that the mapping must have
  uint64_t address;
  uint64_t from, to;
  uint64_t unused[3];
  uint64_t file;  // its inode, 0 for memory without a file
  uint64_t unused2[4];
};
static_assert(sizeof(MappingQuery) == 104);
constexpr unsigned long kQueryMapping = _IOWR('f', 17, MappingQuery);
constexpr uint64_t kReadable = 1;
constexpr uint64_t kWritable = 2;

enum class Answer { kCovered, kNotCovered, kUnknown };

// Lets the kernel fault a page in as an access would; nothing is changed.
bool Populate(uintptr_t address, Access access) {
  constexpr int kPopulateRead = 22;
  constexpr int kPopulateWrite = 23;
  const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  return madvise(reinterpret_cast<void*>(address & ~(page - 1)), page,
                 access == Access::kRead ? kPopulateRead : kPopulateWrite) == 0;
}

// A mapping may go on behind the end of its file, and it may be one of the kernel's own, such as its clock: an access
// there ends the process, whatever the mapping allows. So its last wanted byte is tried. Kernels before 5.14 cannot.
bool IsThere(uintptr_t address, Access access) {
  static const char known = 1;
  static const bool able = Populate(reinterpret_cast<uintptr_t>(&known), Access::kRead);
  return !able || Populate(address, access);
}

// Goes from mapping to mapping.
Answer AskForMappings(int maps, uintptr_t first, uintptr_t last, Access access) {
  MappingQuery query{};
  query.size = sizeof query;
  query.flags = access == Access::kRead ? kReadable : kWritable;
  for (uintptr_t next = first;; next = query.to) {
    query.address = next;
    if (ioctl(maps, kQueryMapping, &query) != 0) return errno == ENOENT ? Answer::kNotCovered : Answer::kUnknown;
    // The common case, all in one piece of plain memory, needs no look.
    const bool plain = query.file == 0 && next == first;
    if (!plain && !IsThere(std::min<uintptr_t>(query.to - 1, last), access)) return Answer::kNotCovered;
    if (query.to > last) return Answer::kCovered;
  }
}

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

// Whether a line "from-to rwxp offset device inode ..." names an inode.
bool NamesFile(const char* line) {
  for (int field = 0; field < 4; ++field) {
    while (*line != ' ' && *line != '\n') ++line;
    while (*line == ' ') ++line;
  }
  return *line >= '1' && *line <= '9';
}

// Walks the lines "from-to rwxp ..." of the address map, which stand in order of address, and moves `next` over every
// mapping that allows the access. Returns true when a line behind `next` shows that no more can follow.
class MapWalk {
 public:
  MapWalk(uintptr_t first, uintptr_t last, Access access) : first_(first), next_(first), last_(last), access_(access) {}

  bool Covered() const { return covered_; }

  // `line` ends in a newline. Returns false when the answer is known.
  bool Line(const char* line) {
    const bool file = NamesFile(line);
    const uintptr_t from = ParseHex(line);
    const uintptr_t to = ParseHex(++line);
    if (to <= next_) return true;
    const bool allowed = line[access_ == Access::kRead ? 1 : 2] == (access_ == Access::kRead ? 'r' : 'w');
    if (from > next_ || !allowed) return false;
    const bool plain = !file && next_ == first_;
    if (!plain && !IsThere(std::min(to - 1, last_), access_)) return false;
    if (to > last_) {
      covered_ = true;
      return false;
    }
    next_ = to;
    return true;
  }

 private:
  uintptr_t first_;
  uintptr_t next_;
  uintptr_t last_;
  Access access_;
  bool covered_ = false;
};

// Older kernels only give the whole list.
Answer ReadMappings(int maps, uintptr_t first, uintptr_t last, Access access) {
  MapWalk walk(first, last, access);
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
  return walk.Covered() ? Answer::kCovered : Answer::kNotCovered;
}

// The kernel's knowledge of mappings costs far less than a question for every page, and needs neither a read nor a
// write.
bool IsBad(const void* address, size_t size, Access access) {
  if (size == 0) return false;
  const uintptr_t first = reinterpret_cast<uintptr_t>(address);
  const uintptr_t last = first + (size - 1);
  if (first == 0 || last < first) return true;

  const int maps = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (maps < 0) return !IsThere(first, access) || !IsThere(last, access);
  Answer answer = AskForMappings(maps, first, last, access);
  if (answer == Answer::kUnknown) answer = ReadMappings(maps, first, last, access);
  close(maps);
  return answer != Answer::kCovered;
}

}  // namespace

bool IsBadReadPtr(const void* address, size_t size) {
  return IsBad(address, size, Access::kRead);
}
bool IsBadWritePtr(const void* address, size_t size) {
  return IsBad(address, size, Access::kWrite);
}

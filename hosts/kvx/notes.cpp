#include "hosts/kvx/notes.h"

#include <unistd.h>

#include <cstdio>
#include <mutex>
#include <set>

namespace kvx {

void Note(const std::string& line) {
  static std::mutex mutex;
  static std::set<std::string> said;
  const std::lock_guard lock(mutex);
  if (!said.insert(line).second) return;
  // Over a progress line that may stand there.
  std::fprintf(stderr, "%skvx: %s\n", isatty(STDERR_FILENO) ? "\r\033[K" : "", line.c_str());
}

}  // namespace kvx

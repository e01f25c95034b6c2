#include "hosts/kvx/overlap.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <set>
#include <utility>

#include "hostkit/error.h"
#include "hosts/kvx/sequence.h"

namespace kvx {

void RefuseOverlap(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs,
                   const std::string& outputPattern) {
  std::set<std::pair<dev_t, ino_t>> read;
  struct stat info;
  for (const std::string& path : inputs) {
    if (!path.empty() && stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode))
      read.emplace(info.st_dev, info.st_ino);
  }
  std::vector<std::string> written = outputs;
  if (const auto pattern = SequencePattern::Parse(outputPattern)) {
    for (const NumberedFile& file : pattern->List()) written.push_back(file.path);
  }
  for (const std::string& path : written) {
    if (path.empty() || stat(path.c_str(), &info) != 0 || !read.count({info.st_dev, info.st_ino})) continue;
    throw UsageError(fmt::format("the output is the input: {} would be written over", path));
  }
}

}  // namespace kvx

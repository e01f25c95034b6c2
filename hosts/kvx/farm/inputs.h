// The files that a job reads: which they are, and whether they are still what they were.
#ifndef KVX_HOSTS_KVX_FARM_INPUTS_H_
#define KVX_HOSTS_KVX_FARM_INPUTS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kvx {

struct InputRecord {
  std::string path;  // absolute
  int64_t size = 0;
  int64_t time = 0;  // of the last change, in nanoseconds since 1970
  std::string checksum;
};

// The checksum is made from samples: the first and the last 4096 bytes, and in a file above 64 MiB 62 blocks between
// them. Throws Error.
InputRecord RecordInput(const std::string& path);

// Throws Error, which says what changed, if the file is not what the record says.
void CheckInput(const InputRecord& record);

// A line of JSON, and back.
std::string InputLine(const InputRecord& record);
InputRecord ParseInputLine(const std::string& line);

// What several inputs are named by.
struct InputNames {
  std::vector<std::string> paths;  // files, folders, and patterns with * ? [ ] where there is no such file
  std::string filesFrom;  // a list of names, a line each or with a zero byte behind each; "-" for standard input
};

// Goes over all files in order; holds the names of one folder at a time. Of a folder pictures and videos are taken, in
// folders below too; `skipped` counts what is neither. Throws Error.
void ForEachFile(const InputNames& names, const std::function<void(const std::string& path)>& visit, int64_t& skipped);

bool IsPatternOrFolder(const std::string& path);

// An absolute path without links that lead nowhere else.
std::string AbsolutePath(const std::string& path);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FARM_INPUTS_H_

// Files by wide or UTF-8 path. Backslashes separate directories as slashes do.
#ifndef KVX_PLATFORM_FILES_H_
#define KVX_PLATFORM_FILES_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct DirectoryEntry {
  std::string name;  // UTF-8, without the directory
  bool isDirectory;
};

// Identity of a directory, equal for two paths that lead to one directory.
using DirectoryId = std::pair<uint64_t, uint64_t>;

// Entries sorted by name in byte order, without "." and ".."; nothing if the directory cannot be read. Names that are
// not valid UTF-8 are left out.
std::optional<std::vector<DirectoryEntry>> ListDirectory(const std::string& path);

std::optional<DirectoryId> IdentifyDirectory(const std::string& path);

// True for anything that exists under this path and is not a directory.
bool FileExists(std::u16string_view path);

// The whole content of a regular file; nothing if it cannot be opened or read, is above 1 GiB, or if the path is not
// valid UTF-8.
std::optional<std::string> ReadFile(const std::string& path);
std::optional<std::string> ReadFile(std::u16string_view path);

#endif  // KVX_PLATFORM_FILES_H_

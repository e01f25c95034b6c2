#include "platform/files.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "platform/text.h"

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

// No catalogue and no picture comes near it; what is larger, or has no end, would only use up memory.
constexpr size_t kLargestFile = size_t{1} << 30;

std::string NativePath(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

bool IsDirectory(const std::string& nativePath) {
  struct stat info;
  return stat(nativePath.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

std::optional<std::vector<DirectoryEntry>> ListDirectory(const std::string& path) {
  if (!WidenUtf8(path)) return std::nullopt;
  const std::string native = NativePath(path);
  const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(native.c_str()));
  if (!directory) return std::nullopt;
  std::vector<DirectoryEntry> entries;
  while (const dirent* entry = readdir(directory.get())) {
    std::string name = entry->d_name;
    if (name == "." || name == ".." || !WidenUtf8(name)) continue;
    const bool isDirectory = IsDirectory(native + "/" + name);
    entries.push_back({std::move(name), isDirectory});
  }
  std::sort(entries.begin(), entries.end(),
            [](const DirectoryEntry& a, const DirectoryEntry& b) { return a.name < b.name; });
  return entries;
}

std::optional<DirectoryId> IdentifyDirectory(const std::string& path) {
  struct stat info;
  if (stat(NativePath(path).c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return std::nullopt;
  return DirectoryId(info.st_dev, info.st_ino);
}

bool FileExists(std::u16string_view path) {
  struct stat info;
  return stat(NativePath(NarrowUtf8(path)).c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

std::optional<std::string> ReadFile(const std::string& path) {
  if (!WidenUtf8(path)) return std::nullopt;
  const std::string native = NativePath(path);
  struct stat info;
  // A pipe or device would block or never end.
  if (stat(native.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  if (info.st_size > static_cast<off_t>(kLargestFile)) return std::nullopt;
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(native.c_str(), "rb"));
  if (!file) return std::nullopt;
  std::string content;
  content.reserve(static_cast<size_t>(info.st_size));
  char block[65536];
  while (const size_t count = std::fread(block, 1, sizeof block, file.get())) {
    content.append(block, count);
    if (content.size() > kLargestFile) return std::nullopt;
  }
  if (std::ferror(file.get())) return std::nullopt;
  return content;
}

std::optional<std::string> ReadFile(std::u16string_view path) {
  return ReadFile(NarrowUtf8(path));
}

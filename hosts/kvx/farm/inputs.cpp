#include "hosts/kvx/farm/inputs.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "hostkit/error.h"
#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/picture_file.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

constexpr int64_t kBlock = 4096;
constexpr int64_t kLarge = int64_t{64} << 20;
constexpr int64_t kBlocksOfLarge = 64;

Error Unreadable(const std::string& path, int code) {
  return Error(fmt::format("{}: cannot be read: {}", path, std::strerror(code)));
}

class OpenFile {
 public:
  explicit OpenFile(const std::string& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (file_ < 0) throw Unreadable(path, errno);
  }
  ~OpenFile() { close(file_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  int Get() const { return file_; }

 private:
  int file_;
};

uint32_t SampleBlock(int file, int64_t at, uint32_t sum, const std::string& path) {
  Bytef bytes[kBlock];
  const ssize_t got = pread(file, bytes, sizeof bytes, at);
  if (got < 0) throw Unreadable(path, errno);
  return static_cast<uint32_t>(crc32(sum, bytes, static_cast<uInt>(got)));
}

bool IsMedia(const std::string& name) {
  return IsPictureName(name) || IsVideoName(name);
}

void WalkFolder(const fs::path& folder, const std::function<void(const std::string&)>& visit, int64_t& skipped) {
  std::vector<fs::directory_entry> entries;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) entries.push_back(*at);
  if (error) throw Error(fmt::format("{}: cannot be read: {}", folder.string(), error.message()));
  std::sort(entries.begin(), entries.end());
  for (const fs::directory_entry& entry : entries) {
    ThrowIfStopAsked();
    if (entry.is_directory(error) && !entry.is_symlink(error)) {
      WalkFolder(entry.path(), visit, skipped);
    } else if (entry.is_regular_file(error) && IsMedia(entry.path().string())) {
      visit(entry.path().string());
    } else {
      ++skipped;
    }
  }
}

void ReadList(const std::string& path, const std::function<void(const std::string&)>& visit) {
  std::ifstream file;
  if (path != "-") file.open(path);
  std::istream& in = path == "-" ? std::cin : file;
  if (!in) throw Unreadable(path, errno);
  // find -print0 writes such lists.
  std::string first;
  std::getline(in, first);
  const bool zeros = first.find('\0') != std::string::npos;
  const auto each = [&](const std::string& line) {
    ThrowIfStopAsked();
    if (!line.empty()) visit(line);
  };
  if (!zeros) {
    each(first);
    for (std::string line; std::getline(in, line);) each(line);
    return;
  }
  std::string rest = first + (in.eof() ? "" : "\n");
  for (std::string part;;) {
    for (size_t end; (end = rest.find('\0')) != std::string::npos; rest.erase(0, end + 1)) each(rest.substr(0, end));
    if (!std::getline(in, part, '\0')) break;
    rest += part + '\0';
  }
  each(rest);
}

}  // namespace

InputRecord RecordInput(const std::string& path) {
  const OpenFile file(path);
  struct stat info;
  if (fstat(file.Get(), &info) != 0) throw Unreadable(path, errno);
  if (!S_ISREG(info.st_mode)) throw Error(fmt::format("{}: is not a plain file", path));
  InputRecord record{path, info.st_size, info.st_mtim.tv_sec * int64_t{1000000000} + info.st_mtim.tv_nsec, ""};
  const int64_t blocks = record.size > kLarge ? kBlocksOfLarge : 2;
  uint32_t sum = SampleBlock(file.Get(), 0, 0, path);
  for (int64_t i = 1; i < blocks && record.size > kBlock; ++i) {
    sum = SampleBlock(file.Get(), (record.size - kBlock) / (blocks - 1) * i, sum, path);
  }
  record.checksum = fmt::format("{:08x}", sum);
  return record;
}

void CheckInput(const InputRecord& record) {
  const InputRecord now = RecordInput(record.path);
  const char* what = now.size != record.size           ? "its size is another one"
                     : now.checksum != record.checksum ? "its content is another one"
                     : now.time != record.time         ? "it was written since"
                                                       : nullptr;
  if (what) throw Error(fmt::format("{}: has changed since the job was planned: {}; plan anew", record.path, what));
}

std::string InputLine(const InputRecord& record) {
  const nlohmann::ordered_json line = {
      {"path", record.path}, {"size", record.size}, {"time", record.time}, {"checksum", record.checksum}};
  try {
    return line.dump();
  } catch (const nlohmann::json::type_error&) {
    throw Error(fmt::format("{}: its name is not UTF-8, so that no job can hold it", record.path));
  }
}

InputRecord ParseInputLine(const std::string& line) {
  const auto from = nlohmann::json::parse(line);
  return {from.at("path"), from.at("size"), from.at("time"), from.at("checksum")};
}

bool IsPatternOrFolder(const std::string& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) return true;
  return !fs::exists(path, error) && path.find_first_of("*?[") != std::string::npos;
}

std::string AbsolutePath(const std::string& path) {
  return fs::absolute(path).lexically_normal().string();
}

void ForEachFile(const InputNames& names, const std::function<void(const std::string& path)>& visit, int64_t& skipped) {
  const auto file = [&](const std::string& path) { visit(AbsolutePath(path)); };
  const auto chosen = [&](const std::string& path) {
    if (!IsMedia(path))
      throw UsageError(fmt::format("{}: neither a picture (.png, .jpg) nor a video by its name", path));
    file(path);
  };
  for (const std::string& path : names.paths) {
    std::error_code error;
    if (fs::is_directory(path, error)) {
      WalkFolder(path, file, skipped);
    } else if (IsPatternOrFolder(path)) {
      glob_t found = {};
      const int status = glob(path.c_str(), 0, nullptr, &found);
      const std::vector<std::string> matches(found.gl_pathv, found.gl_pathv + found.gl_pathc);
      globfree(&found);
      if (status != 0) throw Error(fmt::format("{}: nothing matches", path));
      for (const std::string& match : matches) chosen(match);
    } else {
      chosen(path);
    }
  }
  if (!names.filesFrom.empty()) ReadList(names.filesFrom, chosen);
}

}  // namespace kvx

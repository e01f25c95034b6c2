#include "hosts/kvx/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

#include "hostkit/error.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

Error Failure(const std::string& path, int code) {
  return Error(fmt::format("{}: cannot be written: {}", path, std::strerror(code)));
}

// A link stays a link; what it points to is replaced.
std::string FollowLinks(const std::string& path) {
  fs::path at(path);
  std::error_code error;
  for (int i = 0; i < 40 && fs::is_symlink(at, error); ++i) {
    const fs::path target = fs::read_symlink(at, error);
    if (error) break;
    at = target.is_absolute() ? target : at.parent_path() / target;
  }
  return at.string();
}

// Never over a file that is there, even if it came a moment ago. False if there is one.
bool MoveToFreeName(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  // Some file systems know no such rename.
  if (errno != EINVAL && errno != ENOSYS) throw Failure(to, errno);
  if (link(from.c_str(), to.c_str()) == 0) {
    unlink(from.c_str());
    return true;
  }
  if (errno == EEXIST) return false;
  if (access(to.c_str(), F_OK) == 0) return false;
  if (rename(from.c_str(), to.c_str()) != 0) throw Failure(to, errno);
  return true;
}

}  // namespace

void CheckReplaceable(const std::string& path, bool overwrite) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return;
  if (S_ISDIR(info.st_mode)) throw Error(fmt::format("{}: is a directory", path));
  if (!S_ISREG(info.st_mode)) throw Error(fmt::format("{}: is not a plain file", path));
  if (!overwrite) throw UsageError(fmt::format("{} exists; --overwrite replaces it", path));
  if (access(path.c_str(), W_OK) != 0) throw Failure(path, errno);
}

OutputFile::OutputFile(const std::string& path, bool overwrite)
    : path_(path), final_(FollowLinks(path)), overwrite_(overwrite) {
  CheckReplaceable(path, overwrite);
  const fs::path folder = fs::path(final_).parent_path();
  std::error_code error;
  if (!folder.empty() && !fs::is_directory(folder, error)) {
    throw Error(fmt::format("{}: cannot be written: no such folder: {}", path, folder.string()));
  }
  std::random_device random;
  do {
    temporary_ = (folder / fmt::format(".kvx-{:08x}{:08x}.part", random(), random())).string();
    file_ = open(temporary_.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
  } while (file_ < 0 && errno == EEXIST);
  if (file_ < 0) throw Failure(path, errno);
  doomed_ = std::make_unique<DoomedFile>(temporary_);
}

OutputFile::~OutputFile() {
  if (file_ >= 0) close(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw Failure(path_, errno);
    bytes.remove_prefix(static_cast<size_t>(written));
  }
}

void OutputFile::Close() {
  const int file = file_;
  file_ = -1;
  if (file >= 0 && close(file) != 0) throw Failure(path_, errno);
}

void OutputFile::Commit() {
  Close();
  if (overwrite_) {
    struct stat old;
    if (stat(final_.c_str(), &old) == 0 && chmod(temporary_.c_str(), old.st_mode & 07777) != 0) {
      throw Failure(path_, errno);
    }
    if (rename(temporary_.c_str(), final_.c_str()) != 0) throw Failure(path_, errno);
  } else if (!MoveToFreeName(temporary_, final_)) {
    const std::string kept = CommitBeside("other");
    throw Error(fmt::format("{}: another file of this name came meanwhile; this one is {}", path_, kept));
  }
  temporary_.clear();
  doomed_.reset();
}

std::string OutputFile::CommitBeside(const std::string& mark) {
  Close();
  const fs::path whole(final_);
  for (int i = 1;; ++i) {
    const std::string middle = i == 1 ? "." + mark : fmt::format(".{}-{}", mark, i);
    std::string name = (whole.parent_path() / (whole.stem().string() + middle + whole.extension().string())).string();
    if (!MoveToFreeName(temporary_, name)) continue;
    temporary_.clear();
    doomed_.reset();
    return name;
  }
}

void WriteWholeFile(const std::string& path, std::string_view bytes, bool overwrite) {
  OutputFile file(path, overwrite);
  file.Write(bytes);
  file.Commit();
}

}  // namespace kvx

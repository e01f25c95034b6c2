#include "hosts/kvx/farm/piece_folder.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include "hostkit/error.h"
#include "hosts/kvx/input_file.h"
#include "hosts/kvx/output_file.h"

namespace kvx {

namespace fs = std::filesystem;
using nlohmann::json;
using nlohmann::ordered_json;

namespace {

constexpr char kResultName[] = "result.json";

std::string HostName() {
  char name[256] = "";
  gethostname(name, sizeof name - 1);
  return name;
}

std::string FailurePath(const Job& job, int64_t piece) {
  return fmt::format("{}/failures/{:06}.txt", job.folder, piece);
}

// A name that nobody else has.
std::string UniqueName(const Job& job, int64_t piece, const char* ending) {
  std::random_device random;
  return fmt::format("{}/pieces/.{:06}-{:08x}{:08x}.{}", job.folder, piece, random(), random(), ending);
}

void RemoveFolder(const std::string& path) noexcept {
  std::error_code error;
  fs::remove_all(path, error);
}

void WriteResult(const PieceResult& result, const std::string& folder) {
  ordered_json to = {{"job", result.job},   {"frames", result.frames},     {"seconds", result.seconds},
                     {"host", result.host}, {"finished", result.finished}, {"damage", result.damage}};
  ordered_json files = ordered_json::array();
  for (const PieceFile& file : result.files) {
    files.push_back({{"name", file.name}, {"size", file.size}, {"checksum", fmt::format("{:08x}", file.checksum)}});
  }
  to["files"] = files;
  WriteWholeFile(folder + "/" + kResultName, to.dump(1) + "\n", false);
}

PieceResult ReadResult(const std::string& folder) {
  InputFile file(folder + "/" + kResultName);
  const json from = json::parse(file.ReadAll(kLargestSmallFile));
  PieceResult result{from.at("job"),   from.at("frames"), from.at("seconds"), from.at("host"), from.at("finished"), {},
                     from.at("damage")};
  for (const json& entry : from.at("files")) {
    result.files.push_back({entry.at("name"), entry.at("size"),
                            static_cast<uint32_t>(std::stoul(entry.at("checksum").get<std::string>(), nullptr, 16))});
  }
  return result;
}

}  // namespace

std::string PiecePath(const Job& job, int64_t piece) {
  return fmt::format("{}/pieces/{:06}", job.folder, piece);
}

PieceFile ReadPieceFile(const std::string& folder, const std::string& name) {
  const std::string path = folder + "/" + name;
  std::ifstream in(path, std::ios::binary);
  if (!in) throw Error(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
  PieceFile file{name, 0, 0};
  std::vector<char> block(1 << 20);
  while (in.read(block.data(), static_cast<std::streamsize>(block.size())), in.gcount() > 0) {
    file.size += in.gcount();
    file.checksum = static_cast<uint32_t>(
        crc32(file.checksum, reinterpret_cast<const Bytef*>(block.data()), static_cast<uInt>(in.gcount())));
  }
  if (in.bad()) throw Error(fmt::format("{}: cannot be read", path));
  return file;
}

std::optional<PieceResult> FindPiece(const Job& job, int64_t piece, std::string& trouble) {
  const std::string folder = PiecePath(job, piece);
  trouble.clear();
  std::error_code error;
  if (!fs::exists(folder, error)) return std::nullopt;
  try {
    PieceResult result = ReadResult(folder);
    if (result.job != job.id) throw Error("it belongs to another job");
    for (const PieceFile& file : result.files) {
      struct stat info;
      if (stat((folder + "/" + file.name).c_str(), &info) != 0) throw Error(file.name + " is missing");
      if (info.st_size != file.size) {
        throw Error(fmt::format("{} has {} bytes instead of {}", file.name, info.st_size, file.size));
      }
    }
    return result;
  } catch (const std::exception& problem) {
    trouble = fmt::format("{}: damaged: {}", folder, problem.what());
    return std::nullopt;
  }
}

std::optional<PieceResult> VerifyPiece(const Job& job, int64_t piece, std::string& trouble) {
  std::optional<PieceResult> result = FindPiece(job, piece, trouble);
  if (!result) return result;
  const std::string folder = PiecePath(job, piece);
  try {
    for (const PieceFile& file : result->files) {
      if (ReadPieceFile(folder, file.name).checksum != file.checksum) {
        throw Error(fmt::format("{} has another checksum", file.name));
      }
    }
  } catch (const Error& problem) {
    trouble = fmt::format("{}: damaged: {}", folder, problem.what());
    return std::nullopt;
  }
  return result;
}

PieceFolder::PieceFolder(const Job& job, int64_t piece)
    : job_(job), piece_(piece), part_(UniqueName(job, piece, "part")) {
  std::error_code error;
  fs::create_directories(job.folder + "/pieces", error);
  if (mkdir(part_.c_str(), 0777) != 0) {
    throw Error(fmt::format("{}: cannot be made: {}", part_, std::strerror(errno)));
  }
}

PieceFolder::~PieceFolder() {
  if (!part_.empty()) RemoveFolder(part_);
}

bool PieceFolder::Commit(PieceResult result) {
  result.job = job_.id;
  result.host = HostName();
  result.finished = TimeText();
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(part_)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) result.files.push_back(ReadPieceFile(part_, name));
  WriteResult(result, part_);
  const std::string folder = PiecePath(job_, piece_);
  for (;;) {
    // Only an empty folder could be in the way unnoticed.
    if (rename(part_.c_str(), folder.c_str()) == 0) break;
    if (errno != EEXIST && errno != ENOTEMPTY) {
      throw Error(fmt::format("{}: cannot be written: {}", folder, std::strerror(errno)));
    }
    std::string trouble;
    if (VerifyPiece(job_, piece_, trouble)) return false;
    const std::string aside = UniqueName(job_, piece_, "damaged");
    if (rename(folder.c_str(), aside.c_str()) == 0) RemoveFolder(aside);
  }
  part_.clear();
  return true;
}

void NoteFailure(const Job& job, int64_t piece, const std::string& line) noexcept {
  try {
    fs::create_directories(job.folder + "/failures");
    WriteWholeFile(FailurePath(job, piece), fmt::format("{} {}: {}\n", TimeText(), HostName(), line), true);
  } catch (const std::exception&) {
    // A full disk has no place for this either; the process says it on stderr.
  }
}

void ForgetFailure(const Job& job, int64_t piece) noexcept {
  std::error_code error;
  fs::remove(FailurePath(job, piece), error);
}

std::string LastFailure(const Job& job, int64_t piece) {
  std::ifstream file(FailurePath(job, piece));
  std::string line;
  std::getline(file, line);
  return line;
}

}  // namespace kvx

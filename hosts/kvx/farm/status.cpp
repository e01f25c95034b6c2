#include "hosts/kvx/farm/status.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "hostkit/error.h"
#include "hosts/kvx/farm/piece_folder.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/sequence.h"
#include "hosts/kvx/signals.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

namespace {

constexpr size_t kMostFailuresShown = 10;

bool IsJoined(const Job& job) {
  std::ifstream file(JoinedPath(job.folder));
  const auto joined = nlohmann::json::parse(file, nullptr, false);
  return joined.is_object() && joined.value("job", "") == job.id;
}

const char* UnitOf(const Job& job) {
  return job.kind == JobKind::kFiles ? "files" : "frames";
}

}  // namespace

JobStatus LookAtJob(const Job& job) {
  JobStatus status;
  status.joined = IsJoined(job);
  for (size_t i = 0; i < job.pieces.size(); ++i) {
    ThrowIfStopAsked();
    const auto piece = static_cast<int64_t>(i);
    std::string trouble;
    if (const auto result = FindPiece(job, piece, trouble)) {
      ++status.done;
      status.frames += result->frames;
      status.seconds += result->seconds;
      continue;
    }
    status.missing.push_back(piece);
    if (trouble.empty()) trouble = LastFailure(job, piece);
    if (!trouble.empty()) status.failed.emplace_back(piece, trouble);
  }
  return status;
}

std::string PieceRanges(const std::vector<int64_t>& pieces) {
  return NumberRanges(pieces, ",", "-");
}

void ShowStatus(const std::string& folder, bool json) {
  const Job job = ReadJob(folder);
  const JobStatus status = LookAtJob(job);
  if (json) {
    ordered_json failed = ordered_json::array();
    for (const auto& [piece, message] : status.failed) failed.push_back({{"piece", piece}, {"message", message}});
    const ordered_json out = {
        {"job", job.folder},       {"output", job.output.path}, {"unit", UnitOf(job)},    {"pieces", job.pieces.size()},
        {"done", status.done},     {"missing", status.missing}, {"failed", failed},       {"total", job.Total()},
        {"frames", status.frames}, {"seconds", status.seconds}, {"joined", status.joined}};
    Print(out.dump(2) + "\n");
    return;
  }
  Print(fmt::format("{} of {} pieces are done: {} of {} {}, {:.1f} s of work\n", status.done, job.pieces.size(),
                    status.frames, job.Total(), UnitOf(job), status.seconds));
  if (!status.missing.empty()) Print(fmt::format("missing: {}\n", PieceRanges(status.missing)));
  for (size_t i = 0; i < status.failed.size() && i < kMostFailuresShown; ++i) {
    Print(fmt::format("piece {} failed: {}\n", status.failed[i].first, status.failed[i].second));
  }
  if (status.failed.size() > kMostFailuresShown) {
    Print(fmt::format("and {} more failed\n", status.failed.size() - kMostFailuresShown));
  }
  if (status.joined) Print(fmt::format("joined: {}\n", job.output.path));
}

void CleanJob(const std::string& folder) {
  const Job job = ReadJob(folder);
  const JobStatus status = LookAtJob(job);
  for (const char* name : {"pieces", "failures", "logs"}) fs::remove_all(fs::path(job.folder) / name);
  for (const std::string& file : {JoinedPath(job.folder), InputListPath(job.folder), JobPath(job.folder)}) {
    fs::remove(file);
  }
  std::error_code error;
  if (!fs::remove(job.folder, error)) Note(fmt::format("{}: stays: there are other files in it", job.folder));
  if (!status.joined && status.done > 0) Note(fmt::format("{} pieces were done and never joined", status.done));
}

}  // namespace kvx

#include "hosts/kvx/farm/join.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "hostkit/error.h"
#include "hosts/kvx/farm/job.h"
#include "hosts/kvx/farm/piece_folder.h"
#include "hosts/kvx/farm/status.h"
#include "hosts/kvx/input_file.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/output_file.h"
#include "hosts/kvx/signals.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

constexpr auto kPatience = std::chrono::seconds(2);

Error Damaged(const Job& job, int64_t piece, const std::string& trouble) {
  return Error(fmt::format("{}; kvx farm run {} {} makes it anew", trouble, job.folder, piece));
}

// Waits, or throws Error, until every piece is there.
void AwaitPieces(const Job& job, bool wait) {
  for (;;) {
    const JobStatus status = LookAtJob(job);
    if (status.missing.empty()) return;
    if (!wait) {
      throw Error(fmt::format("{}: {} of {} pieces are missing: {}{}", job.folder, status.missing.size(),
                              job.pieces.size(), PieceRanges(status.missing),
                              status.failed.empty() ? "" : "; the last failure: " + status.failed.back().second));
    }
    std::this_thread::sleep_for(kPatience);
    ThrowIfStopAsked();
  }
}

PieceResult ResultOf(const Job& job, int64_t piece, bool verify) {
  std::string trouble;
  auto result = verify ? VerifyPiece(job, piece, trouble) : FindPiece(job, piece, trouble);
  if (!result) throw Damaged(job, piece, trouble.empty() ? fmt::format("piece {} is missing", piece) : trouble);
  const int64_t count = job.pieces[static_cast<size_t>(piece)].count;
  if (count > 0 && result->frames != count && !job.keepGoing) {
    throw Error(fmt::format("{}: has {} of {} frames", PiecePath(job, piece), result->frames, count));
  }
  return *result;
}

// Another name for the piece's file where the file system allows it, else a copy. A file that is the same already is
// left alone: a join may be done again.
void Place(const std::string& folder, const PieceFile& file, const std::string& to, bool overwrite) {
  const std::string from = folder + "/" + file.name;
  std::error_code error;
  if (fs::exists(to, error)) {
    if (fs::equivalent(from, to, error)) return;
    const fs::path path(to);
    const PieceFile there = ReadPieceFile(path.parent_path().string(), path.filename().string());
    if (there.size == file.size && there.checksum == file.checksum) return;
  } else if (link(from.c_str(), to.c_str()) == 0) {
    return;
  }
  InputFile in(from);
  OutputFile out(to, overwrite);
  std::vector<char> block(1 << 20);
  while (const size_t got = in.Read(block.data(), block.size())) out.Write({block.data(), got});
  out.Commit();
}

// Pictures and clips, each under its name.
void PlaceFiles(const Job& job, std::vector<std::string>& damage) {
  const fs::path output(job.output.path);
  for (size_t i = 0; i < job.pieces.size(); ++i) {
    const auto number = static_cast<int64_t>(i);
    const PieceResult result = ResultOf(job, number, true);
    damage.insert(damage.end(), result.damage.begin(), result.damage.end());
    const std::string folder = PiecePath(job, number);
    const auto place = [&](const PieceFile& file, const std::string& to) {
      ThrowIfStopAsked();
      Place(folder, file, to, job.output.overwrite);
    };
    if (job.kind == JobKind::kSequence) {
      for (const PieceFile& file : result.files) place(file, (output.parent_path() / file.name).string());
      continue;
    }
    int64_t at = 0;
    auto file = result.files.begin();  // sorted by name, so in the order of the inputs
    ForEachInput(job, job.pieces[i], [&](const InputRecord& record) {
      if (file == result.files.end() || file->name != PieceFileName(record.path, at++)) return;
      const std::string to = ResultPath(job, record.path);
      fs::create_directories(fs::path(to).parent_path());
      place(*file++, to);
    });
  }
}

void PutTogether(const Job& job, std::vector<std::string>& damage) {
  VideoJoin join;
  join.input = job.input;
  join.output = job.output;
  join.fps = job.input.fps;
  join.firstStamp = job.clip.firstStamp;
  std::vector<uint32_t> checksums;
  for (size_t i = 0; i < job.pieces.size(); ++i) {
    const auto number = static_cast<int64_t>(i);
    const PieceResult result = ResultOf(job, number, false);
    const std::string folder = PiecePath(job, number);
    for (const PieceFile& file : result.files) {
      const std::vector<std::string> names = VideoPieceFiles();
      if (file.name == names[0]) checksums.push_back(file.checksum);
      if (file.name == names[1] && ReadPieceFile(folder, file.name).checksum != file.checksum) {
        throw Damaged(job, number, fmt::format("{}: {} has another checksum", folder, file.name));
      }
    }
    if (checksums.size() != i + 1) throw Damaged(job, number, folder + ": its packets are missing");
    damage.insert(damage.end(), result.damage.begin(), result.damage.end());
    join.frames += result.frames;
    join.folders.push_back(folder);
  }
  join.check = [&](size_t piece, uint32_t checksum) {
    if (checksum == checksums[piece]) return;
    throw Damaged(job, static_cast<int64_t>(piece), join.folders[piece] + ": its packets have another checksum");
  };
  Piece first = job.pieces.front();
  ForEachInput(job, first, CheckInput);
  JoinVideo(join);
}

}  // namespace

bool JoinJob(const std::string& folder, bool wait) {
  const Job job = ReadJob(folder);
  AwaitPieces(job, wait);
  std::vector<std::string> damage;
  if (job.kind == JobKind::kVideo) {
    PutTogether(job, damage);
  } else {
    PlaceFiles(job, damage);
  }
  const nlohmann::ordered_json joined = {{"job", job.id}, {"output", job.output.path}, {"finished", TimeText()}};
  WriteWholeFile(JoinedPath(job.folder), joined.dump(1) + "\n", true);
  Print(fmt::format("{}: done\n", job.output.path));
  for (const std::string& line : damage) Note(line);
  return damage.empty() || job.keepGoing;
}

}  // namespace kvx

#include <fmt/format.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <set>
#include <thread>

#include "hostkit/error.h"
#include "hostkit/locate.h"
#include "hostkit/text.h"
#include "hosts/kvx/farm/job.h"
#include "hosts/kvx/farm/piece_folder.h"
#include "hosts/kvx/farm/status.h"
#include "hosts/kvx/farm/submit.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/progress.h"
#include "hosts/kvx/signals.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace {

using Words = std::vector<std::string>;

constexpr auto kPause = std::chrono::seconds(1);
// So often in a row the cluster may fail to answer.
constexpr int kMostSilences = 60;
// Where the cluster does not say it.
constexpr int64_t kUsualArraySize = 1001;

std::string LineOf(const Words& words) {
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + ShellWord(word);
  return line;
}

struct Ended {
  int status;
  std::string out;
};

// What a program says on standard output; its complaints go where ours go, unless nobody wants them.
Ended RunProgram(const Words& words, bool quiet = false) {
  FILE* pipe = popen((LineOf(words) + (quiet ? " 2>/dev/null" : "")).c_str(), "re");
  if (!pipe) throw Error(fmt::format("{}: cannot be run", words.front()));
  Ended ended{0, ""};
  char block[4096];
  while (const size_t got = std::fread(block, 1, sizeof block, pipe)) ended.out.append(block, got);
  const int status = pclose(pipe);
  ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
  while (!ended.out.empty() && ended.out.back() == '\n') ended.out.pop_back();
  return ended;
}

Words With(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

// The number of the new job.
std::string Submit(const Words& words) {
  const Ended ended = RunProgram(words);
  if (ended.status == 127) throw Error("sbatch cannot be run: is Slurm installed here?");
  // "123", or "123;cluster".
  std::string number = ended.out.substr(0, ended.out.find(';'));
  if (ended.status != 0 || number.empty() || number.find_first_not_of("0123456789") != std::string::npos) {
    throw Error(fmt::format("sbatch did not take the job{}", ended.out.empty() ? "" : ": " + ended.out));
  }
  return number;
}

int64_t ArraySize() {
  const Ended ended = RunProgram({"scontrol", "show", "config"}, true);
  const size_t at = ended.out.find("MaxArraySize");
  const size_t number = at == std::string::npos ? at : ended.out.find_first_of("0123456789", at);
  return number == std::string::npos ? kUsualArraySize : std::max<int64_t>(2, std::atoll(ended.out.c_str() + number));
}

// Pieces that one array can hold, counted from the first of them.
struct Array {
  int64_t offset;
  std::vector<int64_t> indexes;
};

std::vector<Array> ArraysOf(const std::vector<int64_t>& pieces, int64_t size) {
  std::vector<Array> arrays;
  for (const int64_t piece : pieces) {
    if (arrays.empty() || piece - arrays.back().offset >= size) {
      arrays.push_back({arrays.empty() && piece < size ? 0 : piece, {}});
    }
    arrays.back().indexes.push_back(piece - arrays.back().offset);
  }
  return arrays;
}

// What Slurm says of the job; empty once it has forgotten it or does not answer.
std::string StateOf(const std::string& number) {
  return RunProgram({"squeue", "--noheader", "--states=all", "--jobs=" + number, "--format=%T"}, true).out;
}

bool Follow(const Job& job, const std::string& joining) {
  static const std::set<std::string> going = {"PENDING",   "RUNNING",      "COMPLETING", "CONFIGURING", "REQUEUED",
                                              "SUSPENDED", "REQUEUE_HOLD", "RESIZING",   "SIGNALING",   "STAGE_OUT",
                                              "STOPPED",   "SPECIAL_EXIT", "REQUEUE_FED"};
  std::vector<int64_t> missing = LookAtJob(job).missing;
  Progress progress("piece", static_cast<int64_t>(missing.size()), {});
  for (int silences = 0; silences < kMostSilences;) {
    if (StopAsked()) {
      Note(fmt::format("the jobs go on without this; scancel ends them, kvx farm status {} looks at them", job.folder));
      throw Interrupted();
    }
    std::string trouble;
    const auto arrived = [&](int64_t piece) { return FindPiece(job, piece, trouble).has_value(); };
    const auto left = std::remove_if(missing.begin(), missing.end(), arrived);
    for (auto i = left; i != missing.end(); ++i) progress.Advance();
    missing.erase(left, missing.end());
    const std::string state = StateOf(joining);
    if (!state.empty() && going.count(state) == 0) break;
    silences = state.empty() ? silences + 1 : 0;
    if (state.empty() && LookAtJob(job).joined) break;
    std::this_thread::sleep_for(kPause);
  }
  progress.Finish();
  const JobStatus status = LookAtJob(job);
  ShowStatus(job.folder, false);
  return status.joined;
}

}  // namespace

CommandWords OwnCommand(const std::string& plugin, const std::string& resources) {
  Words words = {OwnBinary()};
  if (plugin != DefaultPluginPath()) words = With(words, {"--plugin", AbsolutePath(plugin)});
  if (resources != DefaultResourceRoot()) words = With(words, {"--resources", AbsolutePath(resources)});
  return words;
}

void PrintCommands(const std::string& folder, const CommandWords& command) {
  const Job job = ReadJob(folder);
  for (const int64_t piece : LookAtJob(job).missing) {
    Print(LineOf(With(command, {"farm", "run", job.folder, std::to_string(piece)})) + "\n");
  }
  Note("when all of them have run: " + LineOf(With(command, {"farm", "join", job.folder})));
}

bool SubmitToSlurm(const std::string& folder, const CommandWords& command, const SlurmOptions& options) {
  const Job job = ReadJob(folder);
  const JobStatus status = LookAtJob(job);
  const std::string name = std::filesystem::path(job.folder).filename().string();
  const std::string logs = job.folder + "/logs";
  std::filesystem::create_directories(logs);
  std::filesystem::remove(JoinedPath(job.folder));
  const auto batch = [&](const Words& own, const Words& run) {
    Words words = {"sbatch", "--parsable", "--requeue", "--open-mode=append", "--job-name=kvx-" + name};
    words = With(With(words, own), options.words);
    return Submit(With(words, {"--wrap=exec " + LineOf(With(command, run))}));
  };
  std::string after;
  for (const Array& array : ArraysOf(status.missing, status.missing.empty() ? 1 : ArraySize())) {
    Words run = {"farm", "run", job.folder, "--quiet"};
    if (array.offset > 0) run = With(run, {"--offset", std::to_string(array.offset)});
    const std::string number =
        batch({"--array=" + PieceRanges(array.indexes), "--output=" + logs + "/run-%A-%a.txt"}, run);
    Print(fmt::format("job {}: {} pieces\n", number, array.indexes.size()));
    after += ":" + number;
  }
  Words own = {"--output=" + logs + "/join-%j.txt"};
  // A join whose pieces failed would wait for ever.
  if (!after.empty()) own = With(own, {"--dependency=afterok" + after, "--kill-on-invalid-dep=yes"});
  const std::string joining = batch(own, {"farm", "join", job.folder});
  Print(fmt::format("job {}: joins them\n", joining));
  FlushStandardOutput();
  return !options.wait || Follow(job, joining);
}

}  // namespace kvx

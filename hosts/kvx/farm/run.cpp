#include "hosts/kvx/farm/run.h"

#include <fmt/format.h>

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

#include "hosts/kvx/commands.h"
#include "hosts/kvx/farm/job.h"
#include "hosts/kvx/farm/piece_folder.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/pipeline.h"
#include "hosts/kvx/progress.h"
#include "hosts/kvx/seeded_clock.h"
#include "hosts/kvx/signals.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace {

// Where batch systems say which of a job's tasks this is.
struct TaskVariable {
  const char* name;
  int64_t first;  // how they begin to count
};
constexpr TaskVariable kTaskVariables[] = {{"SLURM_ARRAY_TASK_ID", 0},
                                           {"JOB_COMPLETION_INDEX", 0},
                                           {"AWS_BATCH_JOB_ARRAY_INDEX", 0},
                                           {"PBS_ARRAY_INDEX", 0},
                                           {"SGE_TASK_ID", 1}};

std::optional<int64_t> NumberIn(const char* variable) {
  const char* text = std::getenv(variable);
  // One of them says "undefined" outside of an array.
  if (!text || !*text || std::string(text) == "undefined") return std::nullopt;
  const std::string value = text;
  int64_t number = 0;
  const auto [end, bad] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (bad != std::errc() || end != value.data() + value.size()) {
    throw UsageError(fmt::format("{} is \"{}\", which is no number of a piece", variable, value));
  }
  return number;
}

int64_t PieceOf(const RunOptions& options, const Job& job) {
  std::optional<int64_t> piece = options.piece;
  for (const TaskVariable& variable : kTaskVariables) {
    if (piece) break;
    if (const auto number = NumberIn(variable.name)) piece = *number - variable.first + options.offset;
  }
  if (!piece) throw UsageError("which piece? None was named, and no batch system runs this that would name one");
  const auto count = static_cast<int64_t>(job.pieces.size());
  if (*piece < 0 || *piece >= count) {
    throw UsageError(fmt::format("{}: there is no piece {}: they go from 0 to {}", job.folder, *piece, count - 1));
  }
  return *piece;
}

int Threads(const RunOptions& options) {
  if (options.jobs > 0) return options.jobs;
  for (const char* variable : {"SLURM_CPUS_PER_TASK", "SLURM_CPUS_ON_NODE"}) {
    if (const auto number = NumberIn(variable); number && *number > 0) return static_cast<int>(*number);
  }
  return 0;
}

// What a chain draws by chance, or keeps in the process, must not come from the file before: then every file gets a
// plug-in that has just been started, as in a run by itself.
class FreshPlugin {
 public:
  FreshPlugin(const PluginOptions& options, const Job& job) : options_(options), job_(job) { Start(); }
  Plugin& Get() { return *plugin_; }
  const Chain& Effects() const { return chain_; }
  void NextFile() {
    if (!chain_.IsStateless()) Start();
  }

 private:
  void Start() {
    chain_ = Chain();
    plugin_.reset();
    SetClipTime(0);
    plugin_ = std::make_unique<Plugin>(options_);
    chain_ = job_.BuildChain(plugin_->Effects());
  }

  const PluginOptions& options_;
  const Job& job_;
  std::unique_ptr<Plugin> plugin_;
  Chain chain_;
};

InputOptions RangeOf(const Job& job, const Piece& piece) {
  InputOptions input = job.input;
  if (piece.count == 0) return input;
  const Cut& cut = piece.cut;
  input.range =
      FrameRange{piece.first, piece.count, job.clip.firstStamp, cut.stamp, cut.keyStamp, cut.keyDecoded, job.clip.size};
  return input;
}

std::unique_ptr<FrameWriter> WriterOf(const Job& job, const Piece& piece, const FrameReader& reader,
                                      const std::string& folder) {
  if (job.kind == JobKind::kVideo) {
    PieceBounds bounds{job.clip.firstTimestamp, std::nullopt, piece.until};
    if (piece.first > 0) bounds.resultStamp = piece.cut.resultStamp;
    return CreateVideoPiece(job.output, reader, job.input.fps, bounds, folder);
  }
  OutputOptions output = job.output;
  output.path = (std::filesystem::path(folder) / std::filesystem::path(job.output.path).filename()).string();
  return OpenWriter(output, reader, job.input.fps);
}

PieceResult RenderClip(const PluginOptions& options, const Job& job, const Piece& piece, const RunOptions& run,
                       const std::string& folder) {
  FreshPlugin plugin(options, job);
  const std::unique_ptr<FrameReader> reader = OpenReader(RangeOf(job, piece));
  if (!reader->Media() && piece.count > 0 && reader->Count() != piece.count) {
    throw Error(fmt::format("{}: has fewer pictures than when the job was planned; plan anew", job.input.path));
  }
  const std::unique_ptr<FrameWriter> writer = WriterOf(job, piece, *reader, folder);
  Progress progress("frame", reader->Count().value_or(0), {run.quiet, "", reader->Rate()});
  PipelineOptions pipeline;
  pipeline.jobs = Threads(run);
  pipeline.pad = job.pad;
  pipeline.onFrame = [&](int64_t) { progress.Advance(); };
  pipeline.stopped = StopAsked;
  const PipelineResult done =
      RunPipeline(plugin.Get(), plugin.Effects(), *reader, *writer, job.clip.totalFrames, pipeline);
  if (!done.whole) {
    AcknowledgeStop();
    throw Interrupted();
  }
  progress.Finish();
  PieceResult result;
  result.frames = done.frames;
  result.damage = reader->Damage();
  const bool mayLack = job.keepGoing && (job.kind == JobKind::kSequence || job.pieces.size() == 1);
  if (piece.count > 0 && done.frames != piece.count && !mayLack) {
    throw Error(fmt::format("gave {} of {} frames{}", done.frames, piece.count,
                            result.damage.empty() ? "" : ": " + result.damage.front()));
  }
  return result;
}

PieceResult RenderFiles(const PluginOptions& options, const Job& job, const Piece& piece, const RunOptions& run,
                        const std::string& folder) {
  FreshPlugin plugin(options, job);
  Progress progress("file", piece.inputs, {run.quiet, "", 0});
  PieceResult result;
  int64_t failed = 0;
  std::string failure;
  ForEachInput(job, piece, [&](const InputRecord& record) {
    if (result.frames + failed > 0) plugin.NextFile();
    RenderOptions render;
    render.input = job.input;
    render.input.path = record.path;
    render.output = job.output;
    render.output.path = (std::filesystem::path(folder) / PieceFileName(record.path, result.frames + failed)).string();
    render.input.literal = render.output.literal = true;
    render.pad = job.pad;
    render.jobs = Threads(run);
    render.quiet = true;
    render.keepGoing = job.keepGoing;
    try {
      CheckInput(record);
      if (!RenderFrames(plugin.Get(), plugin.Effects(), render)) result.damage.push_back(record.path + ": is damaged");
      ++result.frames;
    } catch (const Error& error) {
      if (failed++ == 0) failure = error.what();
      Note(error.what());
      if (job.keepGoing) result.damage.push_back(error.what());
    }
    progress.Advance();
  });
  progress.Finish();
  if (failed == 0 || (job.keepGoing && result.frames > 0)) return result;
  throw Error(failed == 1 ? failure : fmt::format("{} files failed, the first: {}", failed, failure));
}

}  // namespace

void RunPiece(const PluginOptions& plugin, const std::string& version, const RunOptions& options) {
  const Job job = ReadJob(options.job);
  if (job.version != version) {
    throw Error(fmt::format("{}: was planned by kvx {}, and this is {}: their frames may differ", job.folder,
                            job.version, version));
  }
  const int64_t number = PieceOf(options, job);
  const Piece& piece = job.pieces[static_cast<size_t>(number)];
  std::string trouble;
  if (VerifyPiece(job, number, trouble)) {
    Print(fmt::format("piece {} is whole already\n", number));
    return;
  }
  if (!trouble.empty()) Note(trouble + "; it is made anew");
  try {
    const auto start = std::chrono::steady_clock::now();
    PieceFolder folder(job, number);
    if (job.kind != JobKind::kFiles) ForEachInput(job, piece, CheckInput);
    if (job.seed) SeedClock(*job.seed);
    PieceResult result =
        (job.kind == JobKind::kFiles ? RenderFiles : RenderClip)(plugin, job, piece, options, folder.Path());
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const int64_t frames = result.frames;
    const double seconds = result.seconds;
    const bool first = folder.Commit(std::move(result));
    ForgetFailure(job, number);
    Print(first ? fmt::format("piece {}: {} {}{}, {:.1f} s\n", number, frames,
                              job.kind == JobKind::kFiles ? "file" : "frame", frames == 1 ? "" : "s", seconds)
                : fmt::format("piece {}: another worker was first\n", number));
  } catch (const Error& error) {
    NoteFailure(job, number, error.what());
    throw Error(fmt::format("piece {}: {}", number, error.what()), error.Kind());
  }
}

}  // namespace kvx

#include "hosts/kvx/farm/plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <unordered_set>

#include "hostkit/error.h"
#include "hosts/kvx/farm/job.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/output_file.h"
#include "hosts/kvx/overlap.h"
#include "hosts/kvx/sequence.h"
#include "hosts/kvx/signals.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

constexpr int64_t kUsualFramesPerPiece = 1000;
// Encoders cut their work by their threads, so that every machine must use as many.
constexpr int kEncoderThreads = 4;

// A folder for the job that goes away again if the plan fails.
class NewFolder {
 public:
  explicit NewFolder(const std::string& path) : path_(path) {
    std::error_code error;
    if (fs::exists(path, error) && !(fs::is_directory(path, error) && fs::is_empty(path, error))) {
      const bool job = fs::exists(JobPath(path), error);
      throw UsageError(fmt::format("{} exists{}", path, job ? "; kvx farm clean removes a job" : " and is not empty"));
    }
    made_ = fs::create_directories(path, error);
    if (error) throw Error(fmt::format("{}: cannot be made: {}", path, error.message()));
  }
  ~NewFolder() {
    std::error_code error;
    if (kept_) return;
    fs::remove(InputListPath(path_), error);
    if (made_) fs::remove(path_, error);
  }
  void Keep() { kept_ = true; }

 private:
  std::string path_;
  bool made_ = false;
  bool kept_ = false;
};

// The list of inputs as it is written, and what grouping needs of it.
class ListWriter {
 public:
  explicit ListWriter(const std::string& folder) : file_(InputListPath(folder), false) {}
  void Add(const InputRecord& record) {
    const std::string line = InputLine(record) + "\n";
    file_.Write(line);
    places_.push_back(at_);
    bytes_.push_back(record.size);
    at_ += static_cast<int64_t>(line.size());
  }
  void Finish() { file_.Commit(); }
  int64_t Count() const { return static_cast<int64_t>(places_.size()); }
  int64_t Place(int64_t input) const { return places_[static_cast<size_t>(input)]; }
  int64_t Bytes(int64_t input) const { return bytes_[static_cast<size_t>(input)]; }

 private:
  OutputFile file_;
  std::vector<int64_t> places_;
  std::vector<int64_t> bytes_;
  int64_t at_ = 0;
};

Job NewJob(const PlanOptions& options) {
  Job job;
  job.folder = AbsolutePath(options.folder);
  while (job.folder.size() > 1 && job.folder.ends_with('/')) job.folder.pop_back();
  std::random_device random;
  job.id = fmt::format("{:08x}{:08x}", random(), random());
  job.version = options.version;
  job.planned = TimeText();
  job.input = options.render.input;
  job.output = options.render.output;
  job.output.path = AbsolutePath(job.output.path);
  job.output.encoderThreads = kEncoderThreads;
  job.pad = options.render.pad;
  job.keepGoing = options.render.keepGoing;
  job.seed = options.seed;
  return job;
}

// Names are looked at again by machines that stand elsewhere.
std::string AbsoluteInput(const InputOptions& input) {
  return input.path == "demo" ? input.path : AbsolutePath(input.path);
}

// Which of a sequence's files a piece's frames come from.
class SequenceInputs {
 public:
  SequenceInputs(const Job& job, const FrameReader& reader) : hold_(job.input.gaps == Gaps::kHold) {
    if (!IsSequenceName(job.input)) return;
    files_ = SequencePattern::Parse(job.input.path)->List();
    before_ = reader.FirstPlace();
  }
  void Assign(Piece& piece) const {
    if (files_.empty() || piece.count == 0) return;
    piece.firstInput = FileOf(before_ + piece.first);
    piece.inputs = FileOf(before_ + piece.first + piece.count - 1) - piece.firstInput + 1;
  }

 private:
  int64_t FileOf(int64_t frame) const {
    if (!hold_) return frame;
    const int64_t number = files_.front().number + frame;
    const auto behind = std::upper_bound(files_.begin(), files_.end(), number,
                                         [](int64_t n, const NumberedFile& file) { return n < file.number; });
    return behind - files_.begin() - 1;
  }

  std::vector<NumberedFile> files_;
  int64_t before_ = 0;
  bool hold_;
};

std::string CountText(int64_t count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

void PlanOneInput(Plugin& plugin, const Chain& chain, const PlanOptions& options, Job& job, ListWriter& list) {
  job.input.path = AbsoluteInput(job.input);
  job.kind = IsVideoName(job.output.path) ? JobKind::kVideo : JobKind::kSequence;
  const fs::path target = fs::path(job.output.path).parent_path();
  std::error_code error;
  if (!fs::is_directory(target, error)) throw Error(fmt::format("{}: there is no such folder", target.string()));
  CutWish wish = options.cut;
  std::string whole;
  if (!chain.IsStateless()) {
    wish = {1, 0};
    whole = "its effects need all frames in order";
  }
  std::unique_ptr<FrameReader> reader = OpenReader(job.input);
  if (options.render.fpsGiven && reader->Media()) {
    throw UsageError(fmt::format("--fps is for inputs without a rate; {} has {:.6g}", job.input.path, reader->Rate()));
  }
  const std::vector<std::string> files = reader->Files();
  const SequenceInputs inputs(job, *reader);
  std::vector<std::string> read = files;
  read.push_back(options.render.recipe);
  const bool sequence = job.kind == JobKind::kSequence;
  RefuseOverlap(read, {sequence ? "" : job.output.path}, sequence ? job.output.path : "");
  const auto render = [&](Frame& frame, int64_t totalFrames) {
    if (job.pad) frame.picture = PadPicture(frame.picture, *job.pad);
    ChainRunner(plugin, chain).Render(frame.picture, frame.place, totalFrames, frame.clipSeconds);
  };
  job.clip = PlanClip(job.input, std::move(reader), job.output, wish, render);
  job.output.pixelFormat = job.clip.pixelFormat;
  if (whole.empty()) whole = job.clip.whole;
  job.clip.whole = whole;
  for (const std::string& file : files) {
    ThrowIfStopAsked();
    list.Add(RecordInput(file));
  }
  const std::vector<Cut>& cuts = job.clip.cuts;
  for (size_t i = 0; i < cuts.size(); ++i) {
    Piece piece;
    piece.cut = cuts[i];
    piece.first = cuts[i].frame;
    const bool last = i + 1 == cuts.size();
    if (!last && job.kind == JobKind::kVideo) piece.until = cuts[i + 1].resultStamp;
    if (cuts.size() > 1) piece.count = (last ? job.clip.frames : cuts[i + 1].frame) - piece.first;
    piece.inputs = list.Count();
    inputs.Assign(piece);
    if (piece.inputs > 0) piece.listPlace = list.Place(piece.firstInput);
    job.pieces.push_back(piece);
  }
  if (!whole.empty()) Note(fmt::format("{} is one piece: {}", job.input.path, whole));
}

// The folder that all lie in.
void Widen(fs::path& base, const std::string& file) {
  const fs::path folder = fs::path(file).parent_path();
  if (base.empty()) base = folder;
  while (base != base.root_path()) {
    const auto [end, _] = std::mismatch(base.begin(), base.end(), folder.begin(), folder.end());
    if (end == base.end()) return;
    base = base.parent_path();
  }
}

// Frames that a file will give: only clips have more than one.
int64_t FramesOf(const Job& job, const std::string& file) {
  if (IsPictureName(file)) return 1;
  InputOptions input = job.input;
  input.path = file;
  input.literal = true;
  return std::max<int64_t>(1, OpenReader(input)->Count().value_or(1));
}

void PlanFiles(const PlanOptions& options, Job& job, ListWriter& list) {
  job.kind = JobKind::kFiles;
  fs::path base;
  std::unordered_set<uint64_t> seen;
  std::vector<int64_t> starts = {0};  // of pieces, where frames are counted
  int64_t frames = 0;
  int64_t skipped = 0;
  const auto take = [&](const std::string& path) {
    ThrowIfStopAsked();
    if (!seen.insert(std::hash<std::string>()(path)).second) return;
    list.Add(RecordInput(path));
    Widen(base, path);
    if (options.cut.framesPerPiece == 0) return;
    const int64_t own = FramesOf(job, path);
    if (frames > 0 && frames + own > options.cut.framesPerPiece) {
      starts.push_back(list.Count() - 1);
      frames = 0;
    }
    frames += own;
  };
  ForEachFile(options.inputs, take, skipped);
  if (list.Count() == 0) throw Error("there is no picture and no video to render");
  if (skipped > 0) Note(fmt::format("{}: neither pictures nor videos, left out", CountText(skipped, "file")));
  job.input.path = base.string();
  if (options.cut.pieces > 0) {
    int64_t all = 0, done = 0;
    for (int64_t i = 0; i < list.Count(); ++i) all += list.Bytes(i) + 1;
    const int64_t pieces = std::min(options.cut.pieces, list.Count());
    for (int64_t i = 0; i < list.Count(); ++i) {
      const auto next = static_cast<int64_t>(starts.size());
      const bool due = static_cast<double>(done) * static_cast<double>(pieces) >=
                       static_cast<double>(all) * static_cast<double>(next);
      // The rest must do for the pieces that are left.
      const bool last = list.Count() - i <= pieces - next;
      if (i > starts.back() && next < pieces && (due || last)) starts.push_back(i);
      done += list.Bytes(i) + 1;
    }
  }
  for (size_t i = 0; i < starts.size(); ++i) {
    Piece piece;
    piece.first = piece.firstInput = starts[i];
    piece.count = piece.inputs = (i + 1 < starts.size() ? starts[i + 1] : list.Count()) - starts[i];
    piece.listPlace = list.Place(starts[i]);
    job.pieces.push_back(piece);
  }
}

// What the results would write over.
void CheckResults(const Job& job) {
  Piece all;
  all.inputs = job.inputs;
  ForEachInput(job, all, [&](const InputRecord& record) {
    ThrowIfStopAsked();
    const std::string result = ResultPath(job, record.path);
    std::error_code error;
    if (!fs::exists(result, error)) return;
    RefuseOverlap({record.path}, {result});
    CheckReplaceable(result, job.output.overwrite);
  });
}

}  // namespace

bool IsForFiles(const InputNames& inputs, const std::string& output) {
  if (!inputs.filesFrom.empty() || inputs.paths.size() != 1 || IsPatternOrFolder(inputs.paths.front())) return true;
  std::error_code error;
  return output.ends_with('/') || fs::is_directory(output, error);
}

void PlanJob(Plugin& plugin, const Chain& chain, const PlanOptions& options) {
  PlanOptions plan = options;
  if (plan.cut.pieces == 0 && plan.cut.framesPerPiece == 0) plan.cut.framesPerPiece = kUsualFramesPerPiece;
  Job job = NewJob(plan);
  const bool random = std::any_of(chain.Links().begin(), chain.Links().end(),
                                  [](const ChainLink& link) { return link.effect->random; });
  if (random && !job.seed) {
    // Else no piece could be made again.
    job.seed = std::random_device()();
    Note(fmt::format("the effects draw by chance: the job's seed is {}; --seed sets another", *job.seed));
  }
  NewFolder folder(job.folder);
  ListWriter list(job.folder);
  if (IsForFiles(plan.inputs, plan.render.output.path)) {
    if (!plan.render.output.path.ends_with('/') && (IsPictureName(job.output.path) || IsVideoName(job.output.path))) {
      throw UsageError(fmt::format("{}: several inputs go into a folder, with a name each", plan.render.output.path));
    }
    PlanFiles(plan, job, list);
  } else {
    PlanOneInput(plugin, chain, plan, job, list);
  }
  job.inputs = list.Count();
  list.Finish();
  if (job.kind == JobKind::kFiles) CheckResults(job);
  WriteJob(job, chain);
  folder.Keep();
  const bool files = job.kind == JobKind::kFiles;
  Print(fmt::format("{}: {}, {}\n", job.folder, CountText(job.Total(), files ? "file" : "frame"),
                    CountText(static_cast<int64_t>(job.pieces.size()), "piece")));
}

}  // namespace kvx

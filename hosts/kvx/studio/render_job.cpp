#include "hosts/kvx/studio/render_job.h"

#include <fmt/format.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#include "hostkit/text.h"
#include "hosts/kvx/pipeline.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

constexpr size_t kLongestName = 200;
constexpr const char* kEndings[] = {".png", ".jpg", ".jpeg", ".mp4", ".mkv", ".mov", ".webm", ".avi", ".ogv"};

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));  // a link to nothing is something too
}

// Whether any file could be one of the sequence's.
bool SequenceExists(const fs::path& folder, const std::string& pattern) {
  const std::string head = pattern.substr(0, pattern.find('%'));
  const std::string tail = pattern.substr(pattern.find('d', pattern.find('%')) + 1);
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (name.size() <= head.size() + tail.size() || !name.starts_with(head) || !name.ends_with(tail)) continue;
    const std::string digits = name.substr(head.size(), name.size() - head.size() - tail.size());
    if (digits.find_first_not_of("0123456789") == std::string::npos) return true;
  }
  return false;
}

struct Stopped {};

// Ends the run as soon as it is asked to, before the file is finished.
class StoppableWriter : public FrameWriter {
 public:
  StoppableWriter(FrameWriter& writer, const std::function<bool()>& stopped) : writer_(writer), stopped_(stopped) {}
  void Write(const Frame& frame) override {
    if (stopped_()) throw Stopped();
    writer_.Write(frame);
  }
  void Finish() override {
    if (stopped_()) throw Stopped();
    writer_.Finish();
  }

 private:
  FrameWriter& writer_;
  const std::function<bool()>& stopped_;
};

}  // namespace

std::string ResultPath(const Clip& clip, const std::string& name) {
  const auto refuse = [&](const std::string& why) { return UsageError(fmt::format("\"{}\": {}", name, why)); };
  if (name.empty()) throw UsageError("the file needs a name");
  if (name.size() > kLongestName) throw UsageError(fmt::format("the name is longer than {} bytes", kLongestName));
  if (std::any_of(name.begin(), name.end(), IsControl)) throw UsageError("the name holds a control character");
  if (name.find('/') != std::string::npos || name.find('\\') != std::string::npos) {
    throw refuse("a name alone is wanted, without a folder: results go beside the input");
  }
  if (name.front() == '.') throw refuse("the name begins with a dot");
  const std::string ending = Lower(fs::path(name).extension().string());
  if (std::find(std::begin(kEndings), std::end(kEndings), ending) == std::end(kEndings)) {
    throw refuse(fmt::format("the name must end in one of {}", fmt::join(kEndings, " ")));
  }
  const fs::path folder = clip.Folder();
  if (IsSequence(name)) {
    if (ending != ".png" && ending != ".jpg" && ending != ".jpeg") throw refuse("numbered files are pictures");
    if (SequenceExists(folder, name)) throw refuse("files of such names exist already; choose another name");
  }
  const fs::path path = folder / name;
  if (Exists(path)) throw refuse("exists already; choose another name");
  return folder == "." ? name : path.string();
}

std::string PngOf(const Clip& clip, Frame frame, Picture picture) {
  std::string folder = (fs::temp_directory_path() / "kvx-studio-XXXXXX").string();
  if (!mkdtemp(folder.data())) throw Error(fmt::format("{}: cannot be made", folder));
  const std::unique_ptr<void, std::function<void(void*)>> remove(&folder, [&](void*) {
    std::error_code error;
    fs::remove_all(folder, error);
  });
  InputOptions input;
  input.path = clip.Input();
  OutputOptions output;
  output.path = folder + "/frame.png";
  const std::unique_ptr<FrameReader> reader = OpenReader(input);
  const std::unique_ptr<FrameWriter> writer = OpenWriter(output, *reader, input.fps);
  frame.picture = std::move(picture);
  writer->Write(frame);
  writer->Finish();
  std::ifstream file(output.path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file || bytes.empty()) throw Error(fmt::format("{}: cannot be read", output.path));
  return bytes;
}

std::string SuggestName(const Project& project, const Clip& clip) {
  std::string stem = clip.Input() == "demo" ? "demo" : fs::path(clip.Input()).stem().string();
  if (IsSequence(clip.Input())) stem = stem.substr(0, stem.find('%'));
  while (!stem.empty() && (stem.back() == '_' || stem.back() == '-' || stem.back() == '.')) stem.pop_back();
  while (!stem.empty() && stem.front() == '.') stem.erase(0, 1);
  stem = (stem.empty() ? "result" : stem.substr(0, kLongestName / 2)) + "-";
  const auto& links = project.chain.Links();
  stem += links.size() == 1 ? links.front().effect->slug : "studio";
  const bool still = project.Total(clip) == 1;
  const fs::path own(clip.Input());
  const std::string ending = Lower(own.extension().string());
  const bool keeps = !still && !IsSequence(clip.Input()) &&
                     (ending == ".mkv" || ending == ".mov" || ending == ".webm" || ending == ".avi");
  const std::string suffix = still ? ".png" : IsSequence(clip.Input()) ? "_%04d.png" : keeps ? ending : ".mp4";
  for (int number = 1;; ++number) {
    std::string name = stem + (number == 1 ? "" : fmt::format("-{}", number)) + suffix;
    const bool taken = IsSequence(name) ? SequenceExists(clip.Folder(), name) : Exists(fs::path(clip.Folder()) / name);
    if (!taken) return name;
  }
}

RenderJob::~RenderJob() {
  Cancel();
  if (thread_.joinable()) thread_.join();
}

JobState RenderJob::State() const {
  const std::lock_guard lock(mutex_);
  JobState state = state_;
  if (state.phase == JobState::Phase::kRunning) {
    state.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
  }
  return state;
}

void RenderJob::Start(Project project, const Clip& clip, const std::string& name, std::function<bool()> abandoned) {
  const std::lock_guard starting(starting_);
  if (Running()) throw UsageError("a render is running; wait for it or cancel it");
  const std::string path = ResultPath(clip, name);
  InputOptions input;
  input.path = clip.Input();
  if (clip.IsEndless()) input.frames = project.frames;
  if (thread_.joinable()) thread_.join();
  cancelled_ = false;
  {
    const std::lock_guard lock(mutex_);
    state_ = {JobState::Phase::kRunning, path, "", 0, project.Total(clip), 0};
    started_ = std::chrono::steady_clock::now();
  }
  thread_ = std::thread([this, project = std::move(project), input, path, abandoned = std::move(abandoned)] {
    Run(project, input, path, abandoned);
  });
}

void RenderJob::Run(const Project& project, const InputOptions& input, const std::string& path,
                    const std::function<bool()>& abandoned) {
  try {
    const std::unique_ptr<FrameReader> reader = OpenReader(input);
    OutputOptions output;
    output.path = path;
    const std::unique_ptr<FrameWriter> writer = OpenWriter(output, *reader, input.fps);
    const std::function<bool()> stopped = [&] { return cancelled_ || abandoned(); };
    StoppableWriter stoppable(*writer, stopped);
    PipelineOptions options;
    options.pad = project.pad;
    options.stopped = stopped;
    options.onFrame = [this](int64_t done) {
      const std::lock_guard lock(mutex_);
      state_.done = done;
    };
    const int64_t count = reader->Count().value_or(0);
    if (!RunPipeline(plugin_, project.chain, *reader, stoppable, count, options).whole) throw Stopped();
    End(JobState::Phase::kDone, "");
  } catch (const Stopped&) {
    End(JobState::Phase::kCancelled,
        IsSequence(path) ? "the pictures finished until then are there" : "nothing was written");
  } catch (const std::exception& error) {
    End(JobState::Phase::kFailed, error.what());
  }
  malloc_trim(0);  // frames may have been large
}

void RenderJob::End(JobState::Phase phase, const std::string& message) {
  const std::lock_guard lock(mutex_);
  state_.phase = phase;
  state_.message = message;
  state_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
}

}  // namespace kvx

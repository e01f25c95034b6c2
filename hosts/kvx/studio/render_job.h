// The full render of a project into a file, in the background.
#ifndef KVX_HOSTS_KVX_STUDIO_RENDER_JOB_H_
#define KVX_HOSTS_KVX_STUDIO_RENDER_JOB_H_

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "hosts/kvx/studio/clip.h"
#include "hosts/kvx/studio/preview.h"

namespace kvx {

struct JobState {
  enum class Phase { kNone, kRunning, kDone, kCancelled, kFailed };
  Phase phase = Phase::kNone;
  std::string file;     // where it is written
  std::string message;  // why it failed or stopped
  int64_t done = 0;     // frames
  int64_t total = 0;    // 0 if not known
  double seconds = 0;   // since the start
};

// One at a time.
class RenderJob {
 public:
  explicit RenderJob(Plugin& plugin) : plugin_(plugin) {}
  ~RenderJob();

  // Checks everything that can be checked, then renders on a thread of its own. `name` is a file name in the clip's
  // folder, of something that does not exist. `abandoned` ends the job when nobody wants it any more. Throws Error.
  void Start(Project project, const Clip& clip, const std::string& name, std::function<bool()> abandoned);
  // Returns at once; the file does not appear.
  void Cancel() { cancelled_ = true; }

  JobState State() const;
  bool Running() const { return State().phase == JobState::Phase::kRunning; }

 private:
  void Run(const Project& project, const InputOptions& input, const std::string& path,
           const std::function<bool()>& abandoned);
  void End(JobState::Phase phase, const std::string& message);

  Plugin& plugin_;
  mutable std::mutex mutex_;  // over state_, started_
  JobState state_;
  std::chrono::steady_clock::time_point started_;
  std::atomic<bool> cancelled_{false};
  std::mutex starting_;
  std::thread thread_;
};

// The path of a result: `name` in the clip's folder. Throws Error for anything that is more than a plain name with an
// ending that can be written, and for files that exist.
std::string ResultPath(const Clip& clip, const std::string& name);

// `picture` as the command writes this frame of the clip to a PNG file, metadata included. Throws Error.
std::string PngOf(const Clip& clip, Frame frame, Picture picture);

// A name for this project's result that is free.
std::string SuggestName(const Project& project, const Clip& clip);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_RENDER_JOB_H_

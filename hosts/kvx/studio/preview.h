// What a chain makes of one frame of the clip, quickly enough to watch while a slider moves.
#ifndef KVX_HOSTS_KVX_STUDIO_PREVIEW_H_
#define KVX_HOSTS_KVX_STUDIO_PREVIEW_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/chain.h"
#include "hostkit/plugin.h"
#include "hosts/kvx/studio/clip.h"

namespace kvx {

// What a page shows and renders.
struct Project {
  Chain chain;
  std::optional<FrameSize> pad;
  int64_t frames = 1;  // of an endless clip

  int64_t Total(const Clip& clip) const { return clip.IsEndless() ? frames : clip.Count(); }
  FrameSize Size(const Clip& clip) const { return pad.value_or(clip.Size()); }
};

struct PreviewRequest {
  int64_t frame = 0;
  int32_t x = 0, y = 0;       // region of the full-size frame
  FrameSize region{0, 0};     // all of it if the width is 0
  FrameSize fit{1280, 1280};  // the result is scaled down to fit
  bool draft = false;         // may be rendered from a smaller frame if that is quicker
  bool before = false;        // without the effects
  std::function<bool()> stopped;
};

struct PreviewResult {
  Picture picture;
  bool exact = true;  // from the full-size frame, and from the clip's first frame on where effects remember frames
  double milliseconds = 0;
};

// Effect objects for one chain after another. Objects are used again while only values change: some read picture files
// when they are made.
class ChainObjects {
 public:
  using Source = std::function<SharedFrame(int64_t)>;
  explicit ChainObjects(Plugin& plugin) : plugin_(plugin) {}

  // The chain's result at `frame`. Effects that remember frames are run over at most `runUp` frames before it; `exact`
  // tells whether that was enough. `setup` stands for size and length of the frames.
  const Picture& Render(const Chain& chain, const std::string& setup, int64_t frame, int64_t total, int64_t runUp,
                        const Source& source, const std::function<bool()>& stopped, bool& exact);

 private:
  void Prepare(const Chain& chain, const std::string& setup);
  // Links `from` to `to` over `input`.
  void Run(const Chain& chain, size_t from, size_t to, const Picture& input, const Frame& frame, int64_t total,
           Picture& output);

  Plugin& plugin_;
  std::string setup_;
  std::vector<const EffectInfo*> kinds_;
  std::vector<std::unique_ptr<Effect>> effects_;
  // Behind the last effect that remembers frames:
  std::string rememberedKey_;
  int64_t rememberedFrame_ = -1;
  int64_t rememberedStart_ = 0;
  Picture remembered_;
  // The last result:
  std::string lastKey_;
  int64_t lastFrame_ = -1;
  bool lastExact_ = false;
  Picture last_;
  Picture scratch_[2];
};

class Previewer {
 public:
  Previewer(Plugin& plugin, Clip& clip) : clip_(clip), draft_(plugin), full_(plugin) {}

  // Throws Error; "stopped" if the request said so.
  PreviewResult Render(const Project& project, const PreviewRequest& request);
  // The whole frame in full size, as a render of the clip gives it.
  Picture RenderExactly(const Project& project, int64_t frame, const std::function<bool()>& stopped);

  // Milliseconds since the last request for a preview began.
  double Idle() const;

 private:
  struct Lane {
    explicit Lane(Plugin& plugin) : objects(plugin) {}
    std::mutex mutex;
    ChainObjects objects;
    std::string measured;  // what `cost` was measured on
    double cost = 0;       // milliseconds for a frame; 0 if not known
    double answer = 0;     // the same with cutting and scaling the result
  };
  // The whole frame at this size, held while `use` looks at it.
  void RenderIn(Lane& lane, const Project& project, int64_t frame, FrameSize size, double patience,
                const std::function<bool()>& stopped, const std::function<void(const Picture&, bool exact)>& use);

  Clip& clip_;
  Lane draft_;
  Lane full_;
  std::atomic<int64_t> lastRequest_{0};
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_PREVIEW_H_

// The first frames of an input, for showing what effects do with them.
#ifndef KVX_HOSTS_KVX_FRAME_CACHE_H_
#define KVX_HOSTS_KVX_FRAME_CACHE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/param_track.h"
#include "hostkit/plugin.h"
#include "hosts/kvx/frame_io.h"

namespace kvx {

class FrameCache {
 public:
  // Frames wider than `maxWidth` are scaled down; the demo is drawn at `demoSize`.
  FrameCache(const std::string& input, FrameSize demoSize, std::optional<FrameSize> pad, int32_t maxWidth);

  // The same frames, fitted anew: a pipe can be read only once. `from` must live as long.
  FrameCache(FrameCache& from, std::optional<FrameSize> pad, int32_t maxWidth);

  // Beyond the input's end its last frame.
  const Picture& At(int64_t frame);

 private:
  bool Reaches(int64_t frame);  // reads as far as that, if the input does
  bool Next(Picture& picture);

  std::unique_ptr<FrameReader> reader_;
  FrameCache* from_ = nullptr;  // instead of a reader
  std::optional<FrameSize> pad_;
  int32_t maxWidth_;
  std::vector<Picture> frames_;
  bool ended_ = false;
};

// A fresh effect over frames 0 to `frames` - 1; `output` gets the last, and `each` (if given) every one.
void RenderSample(Plugin& plugin, const EffectInfo& effect, const ParamTracks& tracks, FrameCache& source,
                  int64_t frames, Picture& output, std::vector<Picture>* each = nullptr);

// Frames after which an effect shows what it does: a second for those that move, two for those that remember.
int64_t SampleLength(const EffectInfo& effect);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_FRAME_CACHE_H_

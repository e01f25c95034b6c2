#include "frame_cache.h"

#include <algorithm>
#include <utility>

#include "effect_traits.h"

namespace {
constexpr double kFps = 25;
constexpr int64_t kLongest = 60;
}  // namespace

FrameCache::FrameCache(const std::string& input, FrameSize demoSize, std::optional<FrameSize> pad, int32_t maxWidth)
    : pad_(pad), maxWidth_(maxWidth) {
  InputOptions options;
  options.path = input;
  options.demoSize = demoSize;
  if (input == "demo") options.frames = kLongest;
  reader_ = OpenReader(options);
}

const Picture& FrameCache::At(int64_t frame) {
  while (!ended_ && static_cast<int64_t>(frames_.size()) <= frame) {
    Frame next;
    if (!reader_->Read(next)) {
      ended_ = true;
      break;
    }
    Picture picture = std::move(next.picture);
    if (picture.width > maxWidth_) {
      const int32_t height = std::max(1, picture.height * maxWidth_ / picture.width);
      picture = PadPicture(picture, {maxWidth_, height});
    }
    frames_.push_back(pad_ ? PadPicture(picture, *pad_) : std::move(picture));
  }
  if (frames_.empty()) throw KvxError("the input has no frames");
  return frames_[static_cast<size_t>(std::min<int64_t>(frame, static_cast<int64_t>(frames_.size()) - 1))];
}

void RenderSample(Plugin& plugin, const EffectInfo& effect, const ParamTracks& tracks, FrameCache& source, int64_t frames,
                  Picture& output, std::vector<Picture>* each) {
  const std::unique_ptr<Effect> object = plugin.Create(effect);
  for (int64_t frame = 0; frame < frames; ++frame) {
    object->Render(source.At(frame), output, frame, frames, tracks.At(frame, static_cast<double>(frame) * 1000 / kFps));
    if (each) each->push_back(output);
  }
}

int64_t SampleLength(const EffectInfo& effect) { return effect.dynamic ? 48 : IsStatelessEffect(effect.id) ? 1 : 2; }

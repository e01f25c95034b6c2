#include "hosts/kvx/frame_cache.h"

#include <algorithm>
#include <utility>

#include "hosts/kvx/seeded_clock.h"

namespace kvx {

namespace {

constexpr double kFps = 25;
constexpr int64_t kLongest = 60;

// The middle of the picture, as a clip that does not fill its frame: background fills show nothing without open sides.
Picture WithOpenSides(Picture picture) {
  const int32_t left = picture.width * 3 / 10;
  for (int32_t y = 0; y < picture.height; ++y) {
    uint8_t* row = picture.Row(y);
    std::fill(row, row + 4 * left, uint8_t{0});
    std::fill(row + 4 * (picture.width - left), row + 4 * picture.width, uint8_t{0});
  }
  return picture;
}

}  // namespace

FrameCache::FrameCache(const std::string& input, FrameSize demoSize, std::optional<FrameSize> pad, int32_t maxWidth)
    : pad_(pad), maxWidth_(maxWidth) {
  InputOptions options;
  options.path = input;
  options.demoSize = demoSize;
  if (input == "demo") options.frames = kLongest;
  reader_ = OpenReader(options);
}

FrameCache::FrameCache(FrameCache& from, std::optional<FrameSize> pad, int32_t maxWidth)
    : from_(&from), pad_(pad), maxWidth_(maxWidth) {}

bool FrameCache::Next(Picture& picture) {
  const auto number = static_cast<int64_t>(frames_.size());
  if (from_) {
    if (!from_->Reaches(number)) return false;
    picture = from_->At(number);
    return true;
  }
  Frame next;
  if (!reader_->Read(next)) return false;
  picture = std::move(next.picture);
  return true;
}

bool FrameCache::Reaches(int64_t frame) {
  Picture picture;
  while (!ended_ && static_cast<int64_t>(frames_.size()) <= frame) {
    ended_ = !Next(picture);
    if (ended_) break;
    if (picture.width > maxWidth_) {
      const int32_t height = std::max(1, picture.height * maxWidth_ / picture.width);
      picture = PadPicture(picture, {maxWidth_, height});
    }
    frames_.push_back(pad_ ? PadPicture(picture, *pad_) : std::move(picture));
  }
  return static_cast<int64_t>(frames_.size()) > frame;
}

const Picture& FrameCache::At(int64_t frame) {
  if (Reaches(frame)) return frames_[static_cast<size_t>(frame)];
  if (frames_.empty()) throw Error("the input has no frames");
  return frames_.back();
}

void RenderSample(Plugin& plugin, const EffectInfo& effect, const ParamTracks& tracks, FrameCache& source,
                  int64_t frames, Picture& output, std::vector<Picture>* each) {
  const std::unique_ptr<Effect> object = plugin.Create(effect);
  const bool openSides = effect.family == "background fills" && IsOpaque(source.At(0));
  for (int64_t frame = 0; frame < frames; ++frame) {
    SetClipTime(static_cast<double>(frame) / kFps);
    object->Render(openSides ? WithOpenSides(source.At(frame)) : source.At(frame), output, {frame, frames},
                   tracks.At(frame, static_cast<double>(frame) * 1000 / kFps));
    if (each) each->push_back(output);
  }
}

int64_t SampleLength(const EffectInfo& effect) {
  return effect.moving ? 48 : !effect.ordered ? 1 : 2;
}

}  // namespace kvx

#include "hosts/kvx/studio/thumbnails.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "hostkit/param_track.h"
#include "hosts/kvx/labelled_grid.h"
#include "hosts/kvx/picture_file.h"
#include "hosts/kvx/seeded_clock.h"

namespace kvx {

namespace {

constexpr int32_t kWidth = 240;
constexpr int32_t kTallest = 240;
constexpr int kQuality = 82;
constexpr int64_t kMovingFrames = 48;
constexpr int kWaiting = 20;  // milliseconds
constexpr int kMostWaiting = 300;

// Background fills show nothing in a frame that is full.
Picture WithOpenSides(const Picture& picture) {
  const int32_t width = std::max(1, picture.width * 2 / 5);
  return PadPicture(CropPicture(picture, (picture.width - width) / 2, 0, {width, picture.height}),
                    {picture.width, picture.height});
}

}  // namespace

Thumbnails::Thumbnails(Plugin& plugin, Clip& clip, std::function<bool()> mayWork)
    : plugin_(plugin), clip_(clip), mayWork_(std::move(mayWork)) {}

const Picture& Thumbnails::SourceAt(int64_t frame) {
  const FrameSize size = clip_.Size();
  const double scale =
      std::min({1.0, static_cast<double>(kWidth) / size.width, static_cast<double>(kTallest) / size.height});
  const FrameSize small{std::max(1, static_cast<int32_t>(size.width * scale)),
                        std::max(1, static_cast<int32_t>(size.height * scale))};
  if (sources_.empty()) {
    // A third into the clip: many begin black.
    const int64_t spare = std::max<int64_t>(0, clip_.Count() - kMovingFrames);
    InputOptions options;
    options.path = clip_.Input();
    if (clip_.IsEndless()) options.frames = kMovingFrames;
    if (spare > 0) options.start = static_cast<double>(spare / 3) / clip_.Fps();
    reader_ = OpenReader(options);
  }
  Frame full;
  while (reader_ && static_cast<int64_t>(sources_.size()) <= frame) {
    if (reader_->Read(full)) sources_.push_back(ScalePicture(full.picture, small));
    if (full.picture.pixels.empty() || sources_.size() == kMovingFrames) reader_.reset();
    full = Frame();
  }
  if (sources_.empty()) throw Error(clip_.Input() + ": cannot be read");
  return sources_[static_cast<size_t>(std::min<int64_t>(frame, static_cast<int64_t>(sources_.size()) - 1))];
}

std::string Thumbnails::Make(const EffectInfo& effect, bool strip, const std::function<bool()>& stopped) {
  const int64_t frames = effect.moving ? kMovingFrames : effect.ordered ? 2 : 1;
  const std::unique_ptr<Effect> object = plugin_.Create(effect);
  const ParamTracks tracks(effect, {}, 100);
  const bool openSides = effect.family == "background fills" && IsOpaque(SourceAt(0));
  Picture output;
  Picture all;
  for (int64_t frame = 0; frame < frames; ++frame) {
    if (stopped && stopped()) throw Error("stopped");
    const Picture& source = SourceAt(frame);
    SetClipTime(static_cast<double>(frame) / clip_.Fps());
    object->Render(openSides ? WithOpenSides(source) : source, output, {frame, frames},
                   tracks.At(frame, static_cast<double>(frame) * 1000 / clip_.Fps()));
    const int64_t every = std::max<int64_t>(1, frames / kStripFrames);
    if (!strip || frame % every != every - 1) continue;
    if (all.pixels.empty()) all = Picture(output.width, output.height * kStripFrames);
    std::memcpy(all.Row(static_cast<int32_t>(frame / every) * output.height), output.pixels.data(),
                output.pixels.size());
  }
  return EncodeJpeg(OverCheckerboard(strip && effect.moving ? all : output), kQuality);
}

std::shared_ptr<const std::string> Thumbnails::Get(const EffectInfo& effect, bool strip,
                                                   const std::function<bool()>& stopped) {
  const std::pair<int32_t, bool> key(effect.id, strip && effect.moving);
  const auto find = [&] {
    const std::lock_guard lock(mutex_);
    const auto found = kept_.find(key);
    return found == kept_.end() ? nullptr : found->second;
  };
  if (auto found = find()) return found;
  const std::lock_guard lock(working_);
  if (auto found = find()) return found;
  for (int waited = 0; waited < kMostWaiting && !mayWork_(); waited += kWaiting) {
    if (stopped && stopped()) throw Error("stopped");
    std::this_thread::sleep_for(std::chrono::milliseconds(kWaiting));
  }
  auto made = std::make_shared<const std::string>(Make(effect, key.second, stopped));
  const std::lock_guard keeping(mutex_);
  return kept_[key] = std::move(made);
}

}  // namespace kvx

#include "hosts/kvx/studio/preview.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

#include "hosts/kvx/seeded_clock.h"

namespace kvx {

namespace {

using Clock = std::chrono::steady_clock;

constexpr FrameSize kDraftSize{1280, 1280};
constexpr double kQuick = 25;          // milliseconds below which a draft is not worth it
constexpr double kDraftPatience = 60;  // milliseconds that a draft may run effects over earlier frames
constexpr double kExactPatience = 3000;
constexpr double kUnknownCost = 5;

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

int64_t Now() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch()).count();
}

void AddKey(const ChainLink& link, std::string& key) {
  key += fmt::format("{} {}\n", link.effect->id, link.opacity);
  for (const std::string& setting : link.settings) key += setting + "\n";
}

std::string EffectsOf(const Chain& chain) {
  std::string text;
  for (const ChainLink& link : chain.Links()) text += fmt::format("{} ", link.effect->id);
  return text;
}

FrameSize FitInto(FrameSize size, FrameSize limit) {
  const double scale =
      std::min({1.0, static_cast<double>(limit.width) / size.width, static_cast<double>(limit.height) / size.height});
  return {std::max(1, static_cast<int32_t>(std::lround(size.width * scale))),
          std::max(1, static_cast<int32_t>(std::lround(size.height * scale)))};
}

void CheckStopped(const std::function<bool()>& stopped) {
  if (stopped && stopped()) throw Error("stopped");
}

}  // namespace

void ChainObjects::Prepare(const Chain& chain, const std::string& setup) {
  if (setup != setup_) {
    effects_.clear();
    kinds_.clear();
  }
  setup_ = setup;
  // Objects of the same effect are taken over from wherever they stood.
  std::vector<const EffectInfo*> kinds;
  std::vector<std::unique_ptr<Effect>> effects;
  for (const ChainLink& link : chain.Links()) {
    const auto found = std::find(kinds_.begin(), kinds_.end(), link.effect);
    kinds.push_back(link.effect);
    if (found == kinds_.end()) {
      effects.push_back(plugin_.Create(*link.effect));
    } else {
      effects.push_back(std::move(effects_[static_cast<size_t>(found - kinds_.begin())]));
      *found = nullptr;
    }
  }
  kinds_ = std::move(kinds);
  effects_ = std::move(effects);
}

void ChainObjects::Run(const Chain& chain, size_t from, size_t to, const Picture& input, const Frame& frame,
                       int64_t total, Picture& output) {
  if (from == to) {
    output = input;
    return;
  }
  const Picture* in = &input;
  for (size_t i = from; i < to; ++i) {
    Picture& out = i + 1 == to ? output : scratch_[i % 2];
    SetClipTime(frame.seconds);
    effects_[i]->Render(*in, out, {frame.number, total},
                        chain.Links()[i].tracks.At(frame.number, frame.seconds * 1000));
    in = &out;
  }
}

const Picture& ChainObjects::Render(const Chain& chain, const std::string& setup, int64_t frame, int64_t total,
                                    int64_t runUp, const Source& source, const std::function<bool()>& stopped,
                                    bool& exact) {
  const std::vector<ChainLink>& links = chain.Links();
  size_t ordered = 0;  // links up to the last one that remembers frames
  for (size_t i = 0; i < links.size(); ++i) {
    if (links[i].effect->ordered) ordered = i + 1;
  }
  std::string key = setup + "\n";
  for (size_t i = 0; i < ordered; ++i) AddKey(links[i], key);
  const std::string orderedKey = key;
  for (size_t i = ordered; i < links.size(); ++i) AddKey(links[i], key);
  exact = lastExact_;
  if (key == lastKey_ && frame == lastFrame_ && (exact || runUp <= frame - rememberedStart_)) return last_;

  lastKey_.clear();
  Prepare(chain, setup);
  exact = true;
  if (ordered == 0) {
    const SharedFrame at = source(frame);
    Run(chain, 0, links.size(), at->picture, *at, total, last_);
  } else {
    const bool same = orderedKey == rememberedKey_;
    const bool goesOn = same && frame >= rememberedFrame_ && frame - rememberedFrame_ <= std::max<int64_t>(runUp, 1) &&
                        (rememberedStart_ == 0 || frame - rememberedStart_ >= std::min(runUp, frame));
    if (!goesOn) {
      rememberedKey_.clear();
      for (size_t i = 0; i < ordered; ++i) effects_[i] = plugin_.Create(*links[i].effect);
      rememberedStart_ = std::max<int64_t>(0, frame - runUp);
      rememberedFrame_ = rememberedStart_ - 1;
    }
    SharedFrame at;
    while (rememberedFrame_ < frame) {
      CheckStopped(stopped);
      rememberedKey_.clear();  // until the frame is whole
      at = source(rememberedFrame_ + 1);
      Run(chain, 0, ordered, at->picture, *at, total, remembered_);
      ++rememberedFrame_;
      rememberedKey_ = orderedKey;
    }
    if (!at) at = source(frame);
    Run(chain, ordered, links.size(), remembered_, *at, total, last_);
    exact = rememberedStart_ == 0;
  }
  lastKey_ = key;
  lastFrame_ = frame;
  lastExact_ = exact;
  return last_;
}

double Previewer::Idle() const {
  return static_cast<double>(Now() - lastRequest_);
}

void Previewer::RenderIn(Lane& lane, const Project& project, int64_t frame, FrameSize size, double patience,
                         const std::function<bool()>& stopped,
                         const std::function<void(const Picture&, bool exact)>& use) {
  const std::lock_guard lock(lane.mutex);
  CheckStopped(stopped);
  const int64_t total = project.Total(clip_);
  const FrameSize whole = clip_.Size();
  const bool asItIs = !project.pad && size.width == whole.width && size.height == whole.height;
  int64_t steps = 0;
  const auto source = [&](int64_t number) {
    ++steps;
    SharedFrame found =
        asItIs ? clip_.At(number, stopped) : clip_.Scaled(number, size, project.pad.has_value(), stopped);
    if (found->number == number) return found;
    // A picture stands for all its frames.
    auto moved = std::make_shared<Frame>(*found);
    moved->number = number;
    moved->seconds = static_cast<double>(number) / clip_.Fps();
    return SharedFrame(std::move(moved));
  };
  const std::string setup = fmt::format("{}x{} {} {}", size.width, size.height, project.pad.has_value(), total);
  const std::string measured = setup + EffectsOf(project.chain);
  if (measured != lane.measured) lane.cost = lane.answer = 0;
  lane.measured = measured;
  const double cost = lane.cost > 0 ? lane.cost : kUnknownCost;
  const auto runUp =
      patience < 0 ? std::numeric_limits<int64_t>::max() : std::max<int64_t>(2, static_cast<int64_t>(patience / cost));
  bool exact = true;
  const Clock::time_point start = Clock::now();
  const Picture& picture = lane.objects.Render(project.chain, setup, frame, total, runUp, source, stopped, exact);
  if (steps > 0) {
    const double spent = MillisecondsSince(start) / static_cast<double>(steps);
    lane.cost = lane.cost > 0 ? (lane.cost + spent) / 2 : spent;
  }
  use(picture, exact);
  if (steps == 1)
    lane.answer = lane.answer > 0 ? (lane.answer + MillisecondsSince(start)) / 2 : MillisecondsSince(start);
}

PreviewResult Previewer::Render(const Project& project, const PreviewRequest& request) {
  lastRequest_ = Now();
  const Clock::time_point start = Clock::now();
  const FrameSize size = project.Size(clip_);
  const FrameSize small = FitInto(size, kDraftSize);
  const bool canBeSmall = small.width < size.width;
  bool draft = request.draft && canBeSmall;
  if (draft) {
    const std::unique_lock lock(full_.mutex, std::try_to_lock);
    if (lock && full_.answer > 0 && full_.answer < kQuick && full_.measured.ends_with(EffectsOf(project.chain))) {
      draft = false;
    }
  }
  PreviewResult result;
  const FrameSize region = request.region.width > 0 ? request.region : size;
  if (request.x < 0 || request.y < 0 || region.width < 1 || region.height < 1 ||
      request.x > size.width - region.width || request.y > size.height - region.height) {
    throw UsageError("the region lies outside the frame");
  }
  const auto cut = [&](const Picture& picture, bool exact) {
    // The region in the picture at hand, which may be smaller than the frame.
    const double sx = static_cast<double>(picture.width) / size.width;
    const double sy = static_cast<double>(picture.height) / size.height;
    const auto left = static_cast<int32_t>(std::floor(request.x * sx));
    const auto top = static_cast<int32_t>(std::floor(request.y * sy));
    const FrameSize inside{
        std::clamp(static_cast<int32_t>(std::ceil((request.x + region.width) * sx)) - left, 1, picture.width - left),
        std::clamp(static_cast<int32_t>(std::ceil((request.y + region.height) * sy)) - top, 1, picture.height - top)};
    const FrameSize out = FitInto(inside, request.fit);
    const bool whole = inside.width == picture.width && inside.height == picture.height;
    const bool scaled = out.width != inside.width || out.height != inside.height;
    if (whole && scaled) {
      result.picture = ScalePicture(picture, out);
    } else {
      result.picture = CropPicture(picture, left, top, inside);
      if (scaled) result.picture = ScalePicture(result.picture, out);
    }
    result.exact = exact && picture.width == size.width;
  };
  if (request.before) {
    const FrameSize from = draft ? small : size;
    const FrameSize whole = clip_.Size();
    const bool asItIs = !project.pad && from.width == whole.width;
    const SharedFrame frame = asItIs ? clip_.At(request.frame, request.stopped)
                                     : clip_.Scaled(request.frame, from, project.pad.has_value(), request.stopped);
    cut(frame->picture, true);
  } else {
    RenderIn(draft ? draft_ : full_, project, request.frame, draft ? small : size,
             request.draft ? kDraftPatience : kExactPatience, request.stopped, cut);
  }
  result.milliseconds = MillisecondsSince(start);
  return result;
}

Picture Previewer::RenderExactly(const Project& project, int64_t frame, const std::function<bool()>& stopped) {
  Picture copy;
  RenderIn(full_, project, frame, project.Size(clip_), -1, stopped,
           [&](const Picture& picture, bool) { copy = picture; });
  return copy;
}

}  // namespace kvx

#include "hostkit/chain.h"

#include <algorithm>
#include <utility>

#include "hostkit/text.h"

namespace kvx {

void Chain::Add(const EffectInfo& effect, std::vector<std::string> settings, double opacity) {
  ParamTracks tracks(effect, settings, opacity);
  links_.push_back({&effect, std::move(settings), opacity, std::move(tracks)});
}

void Chain::AddText(const EffectList& effects, const std::string& text) {
  const size_t colon = text.find(':');
  const EffectInfo& effect = effects.Find(text.substr(0, colon));
  std::vector<std::string> settings;
  double opacity = 100;
  if (colon != std::string::npos) {
    for (std::string& setting : Split(text.substr(colon + 1), ';')) {
      if (Lower(setting.substr(0, 8)) == "opacity=") {
        opacity = ParseOpacity(setting.substr(8));
      } else {
        settings.push_back(std::move(setting));
      }
    }
  }
  Add(effect, std::move(settings), opacity);
}

bool Chain::IsStateless() const {
  return std::all_of(links_.begin(), links_.end(), [](const ChainLink& link) { return !link.effect->ordered; });
}

std::vector<Chain::Stage> Chain::Stages() const {
  // Whether anybody shows where the random stream stands.
  const bool shown = std::any_of(links_.begin(), links_.end(), [](const ChainLink& link) {
    return link.effect->random || (link.effect->ordered && link.effect->movesStream);
  });
  const auto mustFollow = [&](const EffectInfo& later, const EffectInfo& earlier) {
    const bool oneStream = shown && later.movesStream && earlier.movesStream;
    const bool oneCounter = later.ordered && later.id == earlier.id;
    return oneStream || oneCounter;
  };
  std::vector<Stage> stages;
  for (size_t i = 0; i < links_.size();) {
    size_t end = i + 1;
    for (size_t k = i; k < end; ++k) {
      for (size_t other = end; other < links_.size(); ++other) {
        if (mustFollow(*links_[other].effect, *links_[k].effect)) end = other + 1;
      }
    }
    const bool ordered = end - i > 1 || links_[i].effect->ordered;
    if (!ordered && !stages.empty() && !stages.back().ordered) {
      ++stages.back().count;
    } else {
      stages.push_back({i, end - i, ordered});
    }
    i = end;
  }
  return stages;
}

ChainRunner::ChainRunner(Plugin& plugin, const Chain& chain)
    : ChainRunner(plugin, chain, {0, chain.Links().size(), true}) {}

ChainRunner::ChainRunner(Plugin& plugin, const Chain& chain, const Chain::Stage& stage)
    : chain_(chain), first_(stage.first) {
  for (size_t i = 0; i < stage.count; ++i) effects_.push_back(plugin.Create(*chain.Links()[first_ + i].effect));
}

void ChainRunner::Render(Picture& picture, int64_t frame, int64_t totalFrames, double seconds) {
  for (size_t i = 0; i < effects_.size(); ++i) {
    effects_[i]->Render(picture, output_, {frame, totalFrames},
                        chain_.Links()[first_ + i].tracks.At(frame, seconds * 1000));
    std::swap(picture, output_);
  }
}

}  // namespace kvx

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

ChainRunner::ChainRunner(Plugin& plugin, const Chain& chain) : chain_(chain) {
  for (const ChainLink& link : chain.Links()) effects_.push_back(plugin.Create(*link.effect));
}

void ChainRunner::Render(Picture& picture, int64_t frame, int64_t totalFrames, double seconds) {
  for (size_t i = 0; i < effects_.size(); ++i) {
    effects_[i]->Render(picture, output_, {frame, totalFrames}, chain_.Links()[i].tracks.At(frame, seconds * 1000));
    std::swap(picture, output_);
  }
}

}  // namespace kvx

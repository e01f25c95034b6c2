// What a run does to every frame: one effect or several, with their parameters over time.
#ifndef KVX_HOSTKIT_CHAIN_H_
#define KVX_HOSTKIT_CHAIN_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/param_track.h"
#include "hostkit/plugin.h"

namespace kvx {

struct ChainLink {
  const EffectInfo* effect;
  std::vector<std::string> settings;  // NAME=VALUE
  double opacity = 100;
  ParamTracks tracks;
};

class Chain {
 public:
  void Add(const EffectInfo& effect, std::vector<std::string> settings, double opacity);
  // "NAME" or "NAME:PARAM=VALUE;PARAM=VALUE"; opacity=PERCENT sets the effect's opacity.
  void AddText(const EffectList& effects, const std::string& text);

  // What the effects draw by chance goes by this number. Whoever runs the chain sees to it.
  void SetSeed(std::optional<uint32_t> seed) { seed_ = seed; }
  std::optional<uint32_t> Seed() const { return seed_; }

  const std::vector<ChainLink>& Links() const { return links_; }
  bool Empty() const { return links_.empty(); }

  // A run of links. Frames may pass it in any order, on several sets of objects, unless it is `ordered`: then one after
  // another, on one.
  struct Stage {
    size_t first;
    size_t count;
    bool ordered;
  };
  // The links in as many stages as can work side by side with the result of one thread. Effects that draw from the one
  // random stream and those that count together are in one, with all that lies between.
  std::vector<Stage> Stages() const;

  // True if frames may be rendered in any order, on several sets of objects.
  bool IsStateless() const;

 private:
  std::vector<ChainLink> links_;
  std::optional<uint32_t> seed_;
};

// A set of effect objects for one chain, or for a stage of it.
class ChainRunner {
 public:
  ChainRunner(Plugin& plugin, const Chain& chain);
  ChainRunner(Plugin& plugin, const Chain& chain, const Chain::Stage& stage);
  // `picture` is the frame before and after.
  void Render(Picture& picture, int64_t frame, int64_t totalFrames, double seconds);

 private:
  const Chain& chain_;
  size_t first_;
  std::vector<std::unique_ptr<Effect>> effects_;
  Picture output_;
};

}  // namespace kvx

#endif  // KVX_HOSTKIT_CHAIN_H_

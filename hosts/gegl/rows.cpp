#include "hosts/gegl/rows.h"

#include <fmt/format.h>

#include <map>

#include "hostkit/shared_plugin.h"
#include "hosts/gegl/operations_plugin.h"

namespace kvx {

namespace {

// GEGL's own word for a family, so that our operations stand beside its kin; the family's slug follows it.
std::string CategoriesOf(const std::string& family) {
  static const std::map<std::string, const char*> words = {{"colour and tone", "color"},
                                                           {"colour looks", "color"},
                                                           {"composite looks", "artistic"},
                                                           {"film and noise", "noise"},
                                                           {"blur, edges, stylise", "artistic"},
                                                           {"warps and sketches", "distort"},
                                                           {"flips and panes", "map"},
                                                           {"lenses and water", "distort"},
                                                           {"time and layouts", "map"},
                                                           {"particles and generators", "render"},
                                                           {"overlays", "light"},
                                                           {"background fills", "render"}};
  const auto found = words.find(family);
  return fmt::format("{}:{}", found == words.end() ? "generic" : found->second, Slug(family));
}

std::string DescriptionOf(const EffectInfo& effect) {
  std::string text = fmt::format("{}, of the family \"{}\".", effect.name, effect.family);
  if (effect.moving) text += " Moves: \"Frame\" picks what a still shows.";
  if (effect.random) text += " Random: each rendering differs.";
  return text;
}

OperationRow RowOf(const EffectInfo& effect) {
  const bool shared = effect.slug != Slug(effect.name);
  return {effect,
          "kvx:" + effect.slug,
          shared ? fmt::format("kvx: {} ({})", effect.name, effect.id) : "kvx: " + effect.name,
          CategoriesOf(effect.family),
          DescriptionOf(effect),
          PropertiesOf(effect),
          ParamTracks(effect, {}, 100)};
}

}  // namespace

const std::vector<OperationRow>& Rows() {
  static const auto* const rows = [] {
    auto* made = new std::vector<OperationRow>;
    const EffectList effects = DescribedEffects(WarnOnce);
    for (const EffectInfo& effect : effects.All()) made->push_back(RowOf(effect));
    return made;
  }();
  return *rows;
}

}  // namespace kvx

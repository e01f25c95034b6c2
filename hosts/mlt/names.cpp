#include "hosts/mlt/names.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace kvx {

std::string ServiceName(const EffectInfo& effect) {
  return "kvx." + effect.slug;
}

std::string ServiceTitle(const EffectInfo& effect) {
  const bool shared = effect.slug != Slug(effect.name);
  return shared ? fmt::format("kvx: {} ({})", effect.name, effect.id) : "kvx: " + effect.name;
}

std::string PropertyName(const ParamInfo& param) {
  constexpr std::array<std::string_view, 9> kTaken = {"disable", "id",         "in",       "name", kOpacityProperty,
                                                      "out",     "properties", "resource", "track"};
  std::string slug = Slug(param.name);
  return std::find(kTaken.begin(), kTaken.end(), slug) == kTaken.end() ? slug : "kvx-" + slug;
}

std::string ArgumentProperty(const EffectInfo& effect) {
  const auto shown =
      std::find_if(effect.params.begin(), effect.params.end(), [](const ParamInfo& param) { return !param.hidden; });
  return shown == effect.params.end() ? kOpacityProperty : PropertyName(*shown);
}

std::string Describe(const EffectInfo& effect) {
  std::string text = fmt::format("{}, of the family \"{}\".", effect.name, effect.family);
  if (effect.ordered) text += " It builds on the frames before.";
  if (effect.moving) text += " It moves on a still picture.";
  if (effect.random) text += " It draws at random: no two runs are equal.";
  return text;
}

std::string NumberText(double value) {
  const auto single = static_cast<float>(value);
  return single == value ? fmt::format("{}", single) : fmt::format("{}", value);
}

std::string ColorText(double value) {
  return fmt::format("#{:06x}", static_cast<uint32_t>(value) & 0xFFFFFFu);
}

}  // namespace kvx

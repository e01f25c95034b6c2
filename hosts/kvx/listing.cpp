#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "hosts/kvx/commands.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace {

nlohmann::ordered_json DescribeEffect(const EffectInfo& effect) {
  nlohmann::ordered_json params = nlohmann::ordered_json::array();
  for (const ParamInfo& param : effect.params) {
    nlohmann::ordered_json entry = {{"name", param.name}, {"kind", ParamTypeName(param.type)}};
    if (!param.IsText()) {
      entry["min"] = param.minimum;
      entry["max"] = param.maximum;
      entry["default"] = param.defaultValue;
    }
    params.push_back(entry);
  }
  return {{"id", effect.id},         {"name", effect.name},
          {"guid", effect.guid},     {"family", effect.family},
          {"moving", effect.moving}, {"stateless", !effect.ordered},
          {"random", effect.random}, {"material", !effect.materials.empty()},
          {"params", params}};
}

void PrintFamilies(const std::vector<const EffectInfo*>& effects) {
  for (const std::string& family : Families()) {
    bool first = true;
    for (const EffectInfo* effect : effects) {
      if (effect->family != family) continue;
      if (first) Print(family + "\n");
      first = false;
      std::string names;
      for (const ParamInfo& param : effect->params) names += (names.empty() ? "" : ", ") + param.name;
      Print(fmt::format("{:>6}  {:<20} {}  {}\n", effect->id, effect->name, effect->guid, names));
    }
  }
}

}  // namespace

bool MatchesPattern(const std::string& name, const std::string& pattern) {
  if (pattern.empty()) return true;
  const bool wild = pattern.find_first_of("*?[") != std::string::npos;
  const std::string whole = wild ? pattern : "*" + pattern + "*";
  return fnmatch(whole.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
}

void ListEffects(const EffectList& list, const ListOptions& options) {
  std::vector<const EffectInfo*> chosen;
  for (const EffectInfo& effect : list.All()) {
    if (MatchesPattern(effect.name, options.pattern) && MatchesPattern(effect.family, options.family) &&
        (!options.moving || effect.moving) && (!options.withMaterial || !effect.materials.empty())) {
      chosen.push_back(&effect);
    }
  }
  if (options.json) {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const EffectInfo* effect : chosen) all.push_back(DescribeEffect(*effect));
    Print(all.dump(2) + "\n");
  } else {
    PrintFamilies(chosen);
  }
  if (chosen.empty()) throw Error("no effect matches");
}

void ShowEffect(const EffectInfo& effect, bool json) {
  if (json) {
    Print(DescribeEffect(effect).dump(2) + "\n");
    return;
  }
  Print(fmt::format("{} (id {})\nGUID {}\nfamily {}\n", effect.name, effect.id, effect.guid, effect.family));
  if (effect.moving) Print("moves on a still source\n");
  if (effect.random) Print("random: two runs differ, unless --seed is given\n");
  if (!effect.materials.empty()) Print("uses a picture of the resources\n");
  if (effect.params.empty()) Print("no parameters\n");
  std::string sample;
  for (const ParamInfo& param : effect.params) {
    if (param.IsText()) {
      Print(fmt::format("  {:<20} {}\n", param.name, ParamTypeName(param.type)));
      continue;
    }
    Print(fmt::format("  {:<20} {:<14} {} to {}, default {}{}\n", param.name, ParamTypeName(param.type), param.minimum,
                      param.maximum, param.defaultValue, param.hidden ? ", hidden" : ""));
    sample += fmt::format(" -p {}={}", param.name, param.defaultValue);
  }
  Print(fmt::format("try: kvx render {}{} demo out.png\n", effect.id, sample));
}

}  // namespace kvx

#include "hostkit/effects.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>

#include "hostkit/error.h"
#include "hostkit/text.h"

namespace kvx {

// Made by the build from the same file.
extern const char kBuiltinDescription[];

namespace {

using nlohmann::ordered_json;

constexpr const char* kTypeNames[] = {"float",       "integer",      "colour",         "check box",
                                      "text",        "double",       "nine positions", "mask list",
                                      "mosaic list", "first colour", "last colour",    "float x100"};

size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row[b.size()];
}

ParamType TypeOfName(const std::string& name) {
  const auto* found = std::find(std::begin(kTypeNames), std::end(kTypeNames), name);
  if (found == std::end(kTypeNames)) throw Error(fmt::format("unknown kind \"{}\"", name));
  return static_cast<ParamType>(found - std::begin(kTypeNames));
}

EffectInfo EffectOf(const ordered_json& entry) {
  EffectInfo effect;
  entry.at("id").get_to(effect.id);
  entry.at("name").get_to(effect.name);
  entry.at("guid").get_to(effect.guid);
  entry.at("family").get_to(effect.family);
  entry.at("moving").get_to(effect.moving);
  entry.at("ordered").get_to(effect.ordered);
  entry.at("random").get_to(effect.random);
  effect.movesStream = entry.value("movesStream", true);
  entry.at("writesSource").get_to(effect.writesSource);
  entry.at("leavesPixels").get_to(effect.leavesPixels);
  entry.at("materials").get_to(effect.materials);
  for (const ordered_json& value : entry.at("params")) {
    ParamInfo param;
    value.at("name").get_to(param.name);
    param.type = TypeOfName(value.at("kind").get<std::string>());
    if (!param.IsText()) {
      value.at("min").get_to(param.minimum);
      value.at("max").get_to(param.maximum);
      value.at("default").get_to(param.defaultValue);
    }
    param.hidden = value.value("hidden", false);
    effect.params.push_back(std::move(param));
  }
  return effect;
}

ordered_json EntryOf(const EffectInfo& effect) {
  ordered_json params = ordered_json::array();
  for (const ParamInfo& param : effect.params) {
    ordered_json entry = {{"name", param.name}, {"kind", ParamTypeName(param.type)}};
    if (!param.IsText()) {
      entry["min"] = param.minimum;
      entry["max"] = param.maximum;
      entry["default"] = param.defaultValue;
    }
    if (param.hidden) entry["hidden"] = true;
    params.push_back(std::move(entry));
  }
  return {{"id", effect.id},
          {"name", effect.name},
          {"guid", effect.guid},
          {"family", effect.family},
          {"moving", effect.moving},
          {"ordered", effect.ordered},
          {"random", effect.random},
          {"movesStream", effect.movesStream},
          {"writesSource", effect.writesSource},
          {"leavesPixels", effect.leavesPixels},
          {"materials", effect.materials},
          {"params", std::move(params)}};
}

// `source` names the text in errors.
EffectList ParseDescription(const std::string& text, const std::string& source) {
  std::vector<EffectInfo> effects;
  try {
    const ordered_json description = ordered_json::parse(text);
    for (const ordered_json& entry : description.at("effects")) effects.push_back(EffectOf(entry));
  } catch (const std::exception& error) {
    throw Error(fmt::format("{}: {}", source, error.what()));
  }
  return EffectList(std::move(effects));
}

}  // namespace

const char* ParamTypeName(ParamType type) {
  return kTypeNames[static_cast<size_t>(type)];
}

std::string Slug(std::string_view name) {
  std::string slug;
  for (const char c : Lower(std::string(name))) {
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
      slug += c;
    } else if (!slug.empty() && slug.back() != '-') {
      slug += '-';
    }
  }
  if (!slug.empty() && slug.back() == '-') slug.pop_back();
  return slug;
}

const std::vector<std::string>& Families() {
  static const std::vector<std::string> families = {"colour and tone",
                                                    "colour looks",
                                                    "composite looks",
                                                    "film and noise",
                                                    "blur, edges, stylise",
                                                    "warps and sketches",
                                                    "flips and panes",
                                                    "lenses and water",
                                                    "time and layouts",
                                                    "particles and generators",
                                                    "overlays",
                                                    "background fills",
                                                    "other"};
  return families;
}

EffectList::EffectList(std::vector<EffectInfo> effects) : effects_(std::move(effects)) {
  std::map<std::string, int> uses;
  for (EffectInfo& effect : effects_) ++uses[effect.slug = Slug(effect.name)];
  for (EffectInfo& effect : effects_) {
    if (uses[effect.slug] > 1) effect.slug += fmt::format("-{}", effect.id);
  }
}

const EffectInfo* EffectList::WithId(int32_t id) const {
  const auto found =
      std::find_if(effects_.begin(), effects_.end(), [id](const EffectInfo& effect) { return effect.id == id; });
  return found == effects_.end() ? nullptr : &*found;
}

const EffectInfo& EffectList::Find(const std::string& text) const {
  const std::string wanted = Lower(text);
  std::vector<const EffectInfo*> named;
  for (const EffectInfo& effect : effects_) {
    if (std::to_string(effect.id) == text || Lower(effect.guid) == wanted || effect.slug == wanted) return effect;
    if (Lower(effect.name) == wanted) named.push_back(&effect);
  }
  if (named.size() == 1) return *named.front();
  if (named.size() > 1) {
    std::string message = fmt::format("\"{}\" stands for several effects, use the id:", text);
    for (const EffectInfo* effect : named) message += fmt::format(" {} ({})", effect->id, effect->guid);
    throw Error(message, ErrorKind::kUnknownName);
  }
  std::vector<std::string> names;
  for (const EffectInfo& effect : effects_) names.push_back(effect.name);
  throw Error(fmt::format("no effect \"{}\"; did you mean {}?", text, fmt::join(NearestNames(text, names), ", ")),
              ErrorKind::kUnknownName);
}

const ParamInfo& FindParam(const EffectInfo& effect, const std::string& name) {
  const std::string wanted = Lower(name);
  std::vector<std::string> known;
  for (const ParamInfo& param : effect.params) {
    if (Lower(param.name) == wanted || Slug(param.name) == wanted) return param;
    known.push_back(param.name);
  }
  std::string line = fmt::format("{} has no parameter \"{}\"; it has {}", effect.name, name,
                                 known.empty() ? "none" : fmt::format("{}", fmt::join(known, ", ")));
  if (known.size() > 1) line += fmt::format("; did you mean {}?", fmt::join(NearestNames(name, known), ", "));
  throw Error(line, ErrorKind::kUnknownName);
}

std::vector<std::string> NearestNames(const std::string& wanted, const std::vector<std::string>& candidates,
                                      size_t count) {
  std::vector<std::pair<size_t, std::string>> near;
  for (const std::string& name : candidates) {
    std::pair<size_t, std::string> entry(EditDistance(Lower(wanted), Lower(name)), name);
    if (std::find(near.begin(), near.end(), entry) == near.end()) near.push_back(std::move(entry));
  }
  std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (size_t i = 0; i < std::min(count, near.size()); ++i) names.push_back(near[i].second);
  return names;
}

std::string DescriptionPath(const std::string& resourceRoot) {
  return resourceRoot + "/kvx_effect/material/effects.json";
}

EffectList BuiltinDescription() {
  return ParseDescription(kBuiltinDescription, "the built-in description");
}

EffectList ReadDescription(const std::string& resourceRoot) {
  const std::string path = DescriptionPath(resourceRoot);
  std::ifstream file(path, std::ios::binary);
  if (!file) return BuiltinDescription();
  return ParseDescription(std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()), path);
}

std::string WriteDescription(const std::vector<EffectInfo>& effects) {
  std::string text = "{\"effects\": [";
  for (const EffectInfo& effect : effects) {
    text += (&effect == &effects.front() ? "\n" : ",\n") + EntryOf(effect).dump();
  }
  return text + "\n]}\n";
}

}  // namespace kvx

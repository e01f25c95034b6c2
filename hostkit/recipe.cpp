#include "hostkit/recipe.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "hostkit/error.h"
#include "hostkit/text.h"

namespace kvx {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

// A key that stands twice in one object would silently take the other's place.
json ParseJson(const std::string& text, const std::string& name) {
  std::vector<std::set<std::string>> keys;  // of the objects that are open
  std::string twice;
  const auto watch = [&](int, json::parse_event_t event, json& value) {
    if (event == json::parse_event_t::object_start) keys.emplace_back();
    if (event == json::parse_event_t::object_end) keys.pop_back();
    if (event == json::parse_event_t::key && !keys.back().insert(value.get<std::string>()).second) {
      twice = value.get<std::string>();
    }
    return true;
  };
  try {
    json parsed = json::parse(text, watch);
    if (!twice.empty()) throw UsageError(fmt::format("{}: \"{}\" stands twice in one object", name, twice));
    return parsed;
  } catch (const json::parse_error& error) {
    const auto line =
        1 + std::count(text.begin(), text.begin() + static_cast<ptrdiff_t>(std::min(error.byte, text.size())), '\n');
    throw UsageError(fmt::format("{}: not JSON at line {}", name, line));
  } catch (const json::out_of_range&) {
    throw UsageError(fmt::format("{}: a number is too large", name));
  }
}

// Throws Error if what stands there is no seed.
std::optional<uint32_t> SeedOf(const json& recipe) {
  if (!recipe.is_object() || !recipe.contains("seed")) return std::nullopt;
  const json& seed = recipe["seed"];
  if (!seed.is_number_unsigned() || seed.get<uint64_t>() > UINT32_MAX) {
    throw UsageError("must be a whole number from 0 to 4294967295");
  }
  return seed.get<uint32_t>();
}

// The setting that a recipe's value stands for.
std::string SettingOf(const std::string& name, const json& value) {
  if (value.is_number()) return fmt::format("{}={}", name, value.get<double>());
  if (value.is_string()) return name + "=" + value.get<std::string>();
  if (value.is_object() && !value.empty()) {
    std::string points;
    for (const auto& [frame, at] : value.items()) {
      if (!at.is_number()) throw UsageError("values at frames must be numbers");
      points += fmt::format("{}{}:{}", points.empty() ? "" : ",", frame, at.get<double>());
    }
    return name + "=" + points;
  }
  throw UsageError("must be a number, a text or an object of frames and numbers");
}

}  // namespace

std::optional<uint32_t> RecipeSeed(const std::string& text) {
  try {
    return SeedOf(ParseJson(text, ""));
  } catch (const Error&) {
    return std::nullopt;
  }
}

Chain ParseRecipe(const EffectList& effects, const std::string& text, const std::string& name) {
  const json recipe = ParseJson(text, name);
  if (!recipe.is_object() || !recipe.contains("effects") || !recipe["effects"].is_array() ||
      recipe["effects"].empty()) {
    throw UsageError(fmt::format("{}: effects: must be a list of at least one effect", name));
  }
  Chain chain;
  for (size_t i = 0; i < recipe["effects"].size(); ++i) {
    const json& entry = recipe["effects"][i];
    std::string place = fmt::format("effects[{}]", i);
    try {
      if (!entry.is_object()) throw UsageError("must be an object");
      for (const auto& [key, value] : entry.items()) {
        if (key != "effect" && key != "opacity" && key != "params")
          throw UsageError(fmt::format("unknown key \"{}\"", key));
      }
      place += ".effect";
      if (!entry.contains("effect") || !(entry["effect"].is_string() || entry["effect"].is_number_integer())) {
        throw UsageError("must be a name, an id or a GUID");
      }
      const EffectInfo& effect =
          effects.Find(entry["effect"].is_string() ? entry["effect"].get<std::string>()
                                                   : std::to_string(entry["effect"].get<int64_t>()));
      place = fmt::format("effects[{}].opacity", i);
      double opacity = 100;
      if (entry.contains("opacity")) {
        if (!entry["opacity"].is_number()) throw UsageError("must be a number from 0 to 100");
        opacity = ParseOpacity(fmt::format("{}", entry["opacity"].get<double>()));
      }
      place = fmt::format("effects[{}].params", i);
      std::vector<std::string> settings;
      if (entry.contains("params")) {
        if (!entry["params"].is_object()) throw UsageError("must be an object");
        for (const auto& [param, value] : entry["params"].items()) {
          place = fmt::format("effects[{}].params.{}", i, param);
          settings.push_back(SettingOf(param, value));
          ParamTracks(effect, {settings.back()}, opacity);
        }
      }
      chain.Add(effect, std::move(settings), opacity);
    } catch (const Error& error) {
      if (!error.IsUsage()) throw;
      throw Error(fmt::format("{}: {}: {}", name, place, error.what()), error.Kind());
    }
  }
  try {
    chain.SetSeed(SeedOf(recipe));
  } catch (const Error& error) {
    throw UsageError(fmt::format("{}: seed: {}", name, error.what()));
  }
  return chain;
}

std::string RecipeText(const Chain& chain) {
  ordered_json effects = ordered_json::array();
  for (const ChainLink& link : chain.Links()) {
    // Names can stand twice; ids cannot.
    ordered_json entry = {{"effect", link.effect->id}, {"opacity", link.opacity}};
    ordered_json params = ordered_json::object();
    for (const std::string& setting : link.settings) {
      const size_t equals = setting.find('=');
      const std::string value = setting.substr(equals + 1);
      double number = 0;
      const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
      if (error == std::errc() && end == value.data() + value.size()) {
        params[setting.substr(0, equals)] = number;
        continue;
      }
      ordered_json points = ordered_json::object();
      for (const std::string& point : Split(value, ',')) {
        const size_t colon = point.find(':');
        if (colon == std::string::npos) break;
        points[point.substr(0, colon)] = std::strtod(point.c_str() + colon + 1, nullptr);
      }
      params[setting.substr(0, equals)] = points.empty() ? ordered_json(value) : points;
    }
    if (!params.empty()) entry["params"] = params;
    effects.push_back(entry);
  }
  ordered_json recipe = {{"effects", effects}};
  if (chain.Seed()) recipe["seed"] = *chain.Seed();
  return recipe.dump(2) + "\n";
}

}  // namespace kvx

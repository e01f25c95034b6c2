#include "hosts/kvx/commands.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "hosts/kvx/pipeline.h"
#include "hosts/kvx/progress.h"

namespace kvx {

namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t g_interrupted = 0;
void OnInterrupt(int) {
  g_interrupted = 1;
}

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
  return {{"id", effect.id},
          {"name", effect.name},
          {"guid", effect.guid},
          {"family", effect.family},
          {"moving", effect.moving},
          {"stateless", !effect.ordered},
          {"random", effect.random},
          {"material", !effect.materials.empty()},
          {"params", params}};
}

bool SameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return a == b || fs::equivalent(a, b, error);
}

}  // namespace

bool MatchesPattern(const std::string& name, const std::string& pattern) {
  if (pattern.empty()) return true;
  const bool wild = pattern.find_first_of("*?[") != std::string::npos;
  const std::string whole = wild ? pattern : "*" + pattern + "*";
  return fnmatch(whole.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
}

void ListEffects(const Plugin& plugin, const ListOptions& options) {
  std::vector<const EffectInfo*> chosen;
  for (const EffectInfo& effect : plugin.Effects().All()) {
    if (MatchesPattern(effect.name, options.pattern) && MatchesPattern(effect.family, options.family) &&
        (!options.moving || effect.moving) && (!options.withMaterial || !effect.materials.empty())) {
      chosen.push_back(&effect);
    }
  }
  if (options.json) {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const EffectInfo* effect : chosen) all.push_back(DescribeEffect(*effect));
    fmt::print("{}\n", all.dump(2));
    return;
  }
  for (const std::string& family : Families()) {
    bool first = true;
    for (const EffectInfo* effect : chosen) {
      if (effect->family != family) continue;
      if (first) fmt::print("{}\n", family);
      first = false;
      std::string names;
      for (const ParamInfo& param : effect->params) names += (names.empty() ? "" : ", ") + param.name;
      fmt::print("{:>6}  {:<20} {}  {}\n", effect->id, effect->name, effect->guid, names);
    }
  }
}

void ShowEffect(const EffectInfo& effect) {
  fmt::print("{} (id {})\nGUID {}\nfamily {}\n", effect.name, effect.id, effect.guid, effect.family);
  if (effect.moving) fmt::print("moves on a still source\n");
  if (!effect.materials.empty()) fmt::print("uses a picture of the resources\n");
  if (effect.params.empty()) fmt::print("no parameters\n");
  std::string sample;
  for (const ParamInfo& param : effect.params) {
    if (param.IsText()) {
      fmt::print("  {:<20} {}\n", param.name, ParamTypeName(param.type));
      continue;
    }
    fmt::print("  {:<20} {:<14} {} to {}, default {}{}\n", param.name, ParamTypeName(param.type), param.minimum,
               param.maximum, param.defaultValue, param.hidden ? ", hidden" : "");
    sample += fmt::format(" -p {}={}", param.name, param.defaultValue);
  }
  fmt::print("try: kvx render {}{} demo out.png\n", effect.id, sample);
}

bool RenderFrames(Plugin& plugin, const Chain& chain, const RenderOptions& options) {
  if (options.input.path != "-" && options.input.path != "demo" && SameFile(options.input.path, options.output.path)) {
    throw UsageError("the output is the input");
  }
  const std::unique_ptr<FrameReader> reader = OpenReader(options.input);
  const std::unique_ptr<FrameWriter> writer = OpenWriter(options.output, *reader, options.input.fps);
  const int64_t total = reader->Count().value_or(0);

  Progress progress("frame", total, {options.quiet, options.progressFile});
  g_interrupted = 0;
  std::signal(SIGINT, OnInterrupt);
  std::signal(SIGPIPE, SIG_IGN);
  PipelineOptions pipeline;
  pipeline.jobs = options.jobs;
  pipeline.pad = options.pad;
  pipeline.onFrame = [&](int64_t) { progress.Advance(); };
  pipeline.stopped = [] { return g_interrupted != 0; };
  RunPipeline(plugin, chain, *reader, *writer, total, pipeline);
  progress.Finish();
  return g_interrupted == 0;
}

bool CheckResources(const std::string& pluginPath, const std::string& resourceRoot) {
  int problems = 0;
  const auto report = [&problems](const std::string& line) {
    fmt::print("{}\n", line);
    ++problems;
  };
  const fs::path material = fs::path(resourceRoot) / "kvx_effect" / "material";
  nlohmann::json catalogue;
  {
    std::ifstream file(material / "PureCFilter.conf");
    if (!file) {
      report(fmt::format("{}: cannot be read", (material / "PureCFilter.conf").string()));
    } else {
      try {
        catalogue = nlohmann::json::parse(file);
      } catch (const nlohmann::json::exception& error) {
        report(fmt::format("PureCFilter.conf: {}", error.what()));
      }
    }
  }
  std::vector<EffectInfo> effects;
  try {
    PluginOptions options;
    options.path = pluginPath;
    options.resourceRoot = resourceRoot;
    const Plugin plugin(options);
    effects = plugin.Effects().All();
  } catch (const Error& error) {
    report(error.what());
  }
  if (catalogue.is_array()) {
    for (size_t i = 0; i < catalogue.size(); ++i) {
      const nlohmann::json& entry = catalogue[i];
      const auto text = [&](const char* key) {
        return entry.is_object() && entry.contains(key) && entry[key].is_string() ? entry[key].get<std::string>()
                                                                                  : std::string();
      };
      const std::string guid = text("GUID");
      if (guid.empty()) {
        report(fmt::format("PureCFilter.conf: entry {} has no GUID", i));
      } else if (text("DATAPATH").empty()) {
        report(fmt::format("PureCFilter.conf: entry {} ({}) has no DATAPATH, so it is skipped", i, text("NAME")));
      } else if (!effects.empty() && std::none_of(effects.begin(), effects.end(),
                                                  [&](const EffectInfo& effect) { return effect.guid == guid; })) {
        report(fmt::format("PureCFilter.conf: entry {} ({}) has no effect: {}", i, text("NAME"), guid));
      }
    }
  }
  const bool wantsMaterial =
      std::any_of(effects.begin(), effects.end(), [](const EffectInfo& effect) { return !effect.materials.empty(); });
  std::error_code error;
  if (wantsMaterial && !fs::is_directory(material / "Merge", error)) {
    report(
        fmt::format("{}: no such directory; effects with a material show the source", (material / "Merge").string()));
  }
  for (const EffectInfo& effect : effects) {
    for (const std::string& name : effect.materials) {
      const fs::path file = material / "Merge" / name;
      if (!fs::exists(file, error)) {
        if (fs::is_directory(material / "Merge", error))
          report(fmt::format("{}: missing, wanted by {}", name, effect.name));
        continue;
      }
      try {
        ReadPicture(file.string());
      } catch (const Error& failure) {
        report(fmt::format("{} (wanted by {})", failure.what(), effect.name));
      }
    }
  }
  if (problems == 0) fmt::print("{}: {} effects, everything is in place\n", resourceRoot, effects.size());
  return problems == 0;
}

}  // namespace kvx

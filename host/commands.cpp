#include "commands.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "param_track.h"
#include "progress.h"

bool MatchesPattern(const std::string& name, const std::string& pattern) {
  if (pattern.empty()) return true;
  const bool wild = pattern.find_first_of("*?[") != std::string::npos;
  const std::string whole = wild ? pattern : "*" + pattern + "*";
  return fnmatch(whole.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
}

void ListEffects(const Plugin& plugin, const std::string& pattern, bool json) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const EffectInfo& effect : plugin.Effects()) {
    if (!MatchesPattern(effect.name, pattern)) continue;
    if (json) {
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
      all.push_back({{"id", effect.id}, {"name", effect.name}, {"guid", effect.guid}, {"moving", effect.dynamic},
                     {"params", params}});
      continue;
    }
    std::string names;
    for (const ParamInfo& param : effect.params) names += (names.empty() ? "" : ", ") + param.name;
    fmt::print("{:>5}  {:<22} {}  {}\n", effect.id, effect.name, effect.guid, names);
  }
  if (json) fmt::print("{}\n", all.dump(2));
}

void ShowEffect(const EffectInfo& effect) {
  fmt::print("{} (id {})\nGUID {}\n", effect.name, effect.id, effect.guid);
  if (effect.dynamic) fmt::print("moves on a still source\n");
  if (effect.params.empty()) fmt::print("no parameters\n");
  for (const ParamInfo& param : effect.params) {
    if (param.IsText()) {
      fmt::print("  {:<20} {}\n", param.name, ParamTypeName(param.type));
    } else {
      fmt::print("  {:<20} {:<14} {} to {}, default {}{}\n", param.name, ParamTypeName(param.type), param.minimum,
                 param.maximum, param.defaultValue, param.hidden ? ", hidden" : "");
    }
  }
}

void RenderFrames(Plugin& plugin, const EffectInfo& effect, const RenderOptions& options) {
  const ParamTracks tracks(effect, options.settings, options.opacity);
  const std::unique_ptr<FrameSource> source = OpenFrames(options.input, options.size);
  int64_t total = source->Count().value_or(1);
  if (options.frames) total = source->Count() ? std::min(total, *options.frames) : *options.frames;
  const bool sequence = IsSequence(options.output);
  std::error_code error;
  if (!sequence && std::filesystem::equivalent(options.input, options.output, error)) {
    throw UsageError("the output is the input");
  }
  if (sequence && options.input == options.output) throw UsageError("the output is the input");

  const std::unique_ptr<Effect> object = plugin.Create(effect);
  Progress progress("frame", total);
  Picture output;
  for (int64_t frame = 0; frame < total; ++frame) {
    Picture input = source->Read(frame);
    if (options.pad) input = PadPicture(input, *options.pad);
    const double milliseconds = static_cast<double>(frame) * 1000 / options.fps;
    object->Render(input, output, frame, total, tracks.At(frame, milliseconds));
    if (sequence) WritePicture(output, SequenceName(options.output, frame));
    progress.Advance();
  }
  if (!sequence) WritePicture(output, options.output);
}

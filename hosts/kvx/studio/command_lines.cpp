#include "hosts/kvx/studio/command_lines.h"

#include <fmt/format.h>

#include <filesystem>

#include "hostkit/text.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

// The name that finds exactly this effect.
const std::string& WordOf(const EffectInfo& effect) {
  return effect.slug == Slug(effect.name) ? effect.name : effect.slug;
}

bool IsKeyed(const ParamInfo& param, const std::string& value) {
  return !param.IsText() && value.find(':') != std::string::npos;
}

// A name that no program takes for an option.
std::string FileWord(const std::string& path) {
  return ShellWord(path.starts_with('-') ? "./" + path : path);
}

}  // namespace

ProgramLine KvxLine(const Project& project, const Clip& clip, const std::string& output) {
  std::string line = "kvx render";
  if (clip.IsEndless() && project.frames > 1) line += fmt::format(" --frames {}", project.frames);
  if (project.pad) line += fmt::format(" --pad {}x{}", project.pad->width, project.pad->height);
  for (const ChainLink& link : project.chain.Links()) {
    std::string settings = link.opacity == 100 ? "" : fmt::format("opacity={}", link.opacity);
    for (const std::string& setting : link.settings) {
      if (setting.find(';') != std::string::npos) {
        return {"", fmt::format("\"{}\" holds a semicolon: take the recipe", setting)};
      }
      settings += (settings.empty() ? "" : ";") + setting;
    }
    line += " -e " + ShellWord(WordOf(*link.effect) + (settings.empty() ? "" : ":" + settings));
  }
  if (project.chain.Seed()) line += fmt::format(" --seed {}", *project.chain.Seed());
  const fs::path folder = clip.Folder();
  const std::string target = folder == "." ? output : (folder / output).string();
  return {line + " " + FileWord(clip.Input()) + " " + FileWord(target), ""};
}

ProgramLine GstLine(const Project& project, const Clip& clip) {
  if (clip.Input() == "demo") return {"", "the demo is known to kvx alone"};
  if (IsSequence(clip.Input())) return {"", "for numbered pictures use kvx"};
  if (project.pad) return {"", "the frame is padded, which only kvx does"};
  std::string line = "gst-launch-1.0 filesrc location=" + FileWord(clip.Input()) + " ! decodebin";
  if (clip.IsEndless()) line += " ! imagefreeze";
  line += " ! videoconvert n-threads=0";
  for (const ChainLink& link : project.chain.Links()) {
    line += " ! kvx-" + link.effect->slug;
    for (const std::string& setting : link.settings) {
      const size_t equals = setting.find('=');
      const ParamInfo& param = FindParam(*link.effect, setting.substr(0, equals));
      std::string value = setting.substr(equals + 1);
      if (IsKeyed(param, value)) return {"", "values over time cannot stand in this line: take the recipe"};
      if (param.type == ParamType::kCheckBox) value = value == "0" ? "false" : "true";
      line += " " + ShellWord(Slug(param.name) + "=" + value);
    }
    if (link.opacity != 100) line += fmt::format(" opacity={}", link.opacity);
  }
  return {line + " ! videoconvert n-threads=0 ! autovideosink", ""};
}

ProgramLine MeltLine(const Project& project, const Clip& clip) {
  if (clip.Input() == "demo") return {"", "the demo is known to kvx alone"};
  if (IsSequence(clip.Input())) return {"", "for numbered pictures use kvx"};
  if (project.pad) return {"", "the frame is padded, which only kvx does"};
  std::string line = "melt " + FileWord(clip.Input());
  if (clip.IsEndless()) line += fmt::format(" length={} out={}", project.frames, project.frames - 1);
  for (const ChainLink& link : project.chain.Links()) {
    line += " -filter kvx." + link.effect->slug;
    for (const std::string& setting : link.settings) {
      const size_t equals = setting.find('=');
      const ParamInfo& param = FindParam(*link.effect, setting.substr(0, equals));
      std::string value = setting.substr(equals + 1);
      if (IsKeyed(param, value)) {
        // MLT goes from colour to colour by channel, kvx by number.
        if (param.IsColor()) return {"", "colours over time cannot stand in this line: take the recipe"};
        std::string points;
        for (const std::string& point : Split(value, ',')) {
          const size_t colon = point.find(':');
          points += (points.empty() ? "" : ";") + point.substr(0, colon) + "=" + point.substr(colon + 1);
        }
        value = points;
      }
      line += " " + ShellWord(Slug(param.name) + "=" + value);
    }
    if (link.opacity != 100) line += fmt::format(" opacity={}", link.opacity);
  }
  return {line, ""};
}

}  // namespace kvx

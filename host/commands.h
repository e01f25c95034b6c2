// What `kvx` does, behind its command line.
#ifndef KVX_HOST_COMMANDS_H_
#define KVX_HOST_COMMANDS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame_files.h"
#include "plugin.h"

// `pattern` is a part of a name, or a name with * and ?; case does not matter.
void ListEffects(const Plugin& plugin, const std::string& pattern, bool json);
void ShowEffect(const EffectInfo& effect);

struct RenderOptions {
  std::string input;
  std::string output;
  std::vector<std::string> settings;  // NAME=VALUE
  std::optional<int64_t> frames;
  double fps = 25;
  double opacity = 100;
  FrameSize size{1280, 720};          // of the demo
  std::optional<FrameSize> pad;
};

// Renders every frame through the plug-in. A sequence gets every frame, a single file the last one.
void RenderFrames(Plugin& plugin, const EffectInfo& effect, const RenderOptions& options);

struct ContactSheetOptions {
  std::string input;
  std::string output;
  std::string each;  // directory for one picture per effect; empty for none
  std::string pattern;
  FrameSize size{640, 360};
  std::optional<FrameSize> pad;
};

// Every effect of the catalogue on one picture, labelled. Effects that move are shown after a second.
void RenderContactSheet(Plugin& plugin, const ContactSheetOptions& options);

bool MatchesPattern(const std::string& name, const std::string& pattern);

#endif  // KVX_HOST_COMMANDS_H_

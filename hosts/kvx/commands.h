// What `kvx` does, behind its command line.
#ifndef KVX_HOSTS_KVX_COMMANDS_H_
#define KVX_HOSTS_KVX_COMMANDS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/chain.h"
#include "hostkit/plugin.h"
#include "hosts/kvx/frame_io.h"

namespace kvx {

struct ListOptions {
  std::string pattern;  // part of a name, or a name with * and ?; case does not matter
  std::string family;   // part of a family's name
  bool moving = false;
  bool withMaterial = false;
  bool json = false;
};
void ListEffects(const Plugin& plugin, const ListOptions& options);

// Parameters as declared to the host, with a line that uses them.
void ShowEffect(const EffectInfo& effect);

struct RenderOptions {
  InputOptions input;
  OutputOptions output;
  std::optional<FrameSize> pad;
  int jobs = 0;
  bool quiet = false;
  std::string progressFile;
};
// Renders every frame through the plug-in. A sequence or video gets every frame, a picture the last one. False if it
// was interrupted; what was rendered until then is written.
bool RenderFrames(Plugin& plugin, const Chain& chain, const RenderOptions& options);

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

struct PreviewOptions {
  std::string input;
  std::string output;
  FrameSize size{640, 360};
};
// One effect at a grid of values of its first one or two parameters, labelled.
void RenderPreview(Plugin& plugin, const EffectInfo& effect, const PreviewOptions& options);

// Says what is wrong with a resource root. True if nothing is.
bool CheckResources(const std::string& pluginPath, const std::string& resourceRoot);

bool MatchesPattern(const std::string& name, const std::string& pattern);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_COMMANDS_H_

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
// Throws Error if nothing matches.
void ListEffects(const EffectList& list, const ListOptions& options);

// Parameters as declared to the host, with a line that uses them.
void ShowEffect(const EffectInfo& effect, bool json);

struct RenderOptions {
  InputOptions input;
  OutputOptions output;
  std::optional<FrameSize> pad;
  int jobs = 0;
  bool quiet = false;
  std::string progressFile;
  bool fpsGiven = false;   // which is refused where the input has a rate of its own
  std::string recipe;      // the file that the chain came from, which must not be written over
  bool keepGoing = false;  // damage in the input is no failure
};
// Renders every frame through the plug-in. A sequence or video gets every frame, a picture the last one. False if the
// input was damaged, which is said. Throws Interrupted after a signal: what is whole by then is kept.
bool RenderFrames(Plugin& plugin, const Chain& chain, const RenderOptions& options);

struct ContactSheetOptions {
  std::string input;
  std::string output;
  std::string each;  // directory for one picture per effect; empty for none
  std::string pattern;
  FrameSize size{640, 360};
  std::optional<FrameSize> pad;
  bool overwrite = false;
};
// Every effect of the catalogue on one picture, labelled. Effects that move are shown after a second.
void RenderContactSheet(Plugin& plugin, const ContactSheetOptions& options);

struct PreviewOptions {
  std::string input;
  std::string output;
  FrameSize size{640, 360};
  bool overwrite = false;
};
// One effect at a grid of values of its first one or two parameters, labelled.
void RenderPreview(Plugin& plugin, const EffectInfo& effect, const PreviewOptions& options);

// Says what is wrong with a resource root. True if nothing is.
bool CheckResources(const std::string& pluginPath, const std::string& resourceRoot, bool json = false);

bool MatchesPattern(const std::string& name, const std::string& pattern);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_COMMANDS_H_

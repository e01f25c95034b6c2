#include "hosts/mlt/shared_plugin.h"

#include <framework/mlt.h>

#include <mutex>
#include <set>
#include <string>

namespace kvx {

namespace {

// What the plug-in itself has to say, each complaint once.
void Log(int32_t level, const std::string& line) {
  static std::mutex mutex;
  static auto* const said = new std::set<std::string>;  // threads may outlive static objects
  const std::lock_guard lock(mutex);
  if (level < kHostLogError) {
    mlt_log_debug(nullptr, "kvx: %s\n", line.c_str());
  } else if (said->insert(line).second) {
    mlt_log_warning(nullptr, "kvx: %s\n", line.c_str());
  }
}

Plugin& SharedPlugin() {
  static Plugin* const plugin = [] {
    PluginOptions options;
    options.log = Log;
    return new Plugin(std::move(options));
  }();
  return *plugin;
}

}  // namespace

std::unique_ptr<Effect> CreateEffect(const EffectInfo& effect) {
  Plugin& plugin = SharedPlugin();
  const EffectInfo* offered = plugin.Effects().WithId(effect.id);
  if (!offered) throw Error("the catalogue does not offer " + effect.name);
  return plugin.Create(*offered);
}

}  // namespace kvx

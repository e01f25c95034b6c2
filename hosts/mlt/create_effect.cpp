#include "hosts/mlt/create_effect.h"

#include <framework/mlt.h>

#include <mutex>
#include <set>
#include <string>

#include "hostkit/shared_plugin.h"

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

}  // namespace

std::unique_ptr<Effect> CreateEffect(const EffectInfo& effect) {
  Plugin& plugin = SharedPlugin(Log);
  return plugin.Create(OfferedEffect(plugin, effect));
}

}  // namespace kvx

#include "hosts/gegl/shared_plugin.h"

#include <glib.h>

#include <mutex>
#include <set>

namespace kvx {

namespace {

Plugin* Load() {
  try {
    PluginOptions options;
    options.log = [](int32_t level, const std::string& line) {
      if (level >= kHostLogError) {
        WarnOnce(line);
      } else {
        g_debug("%s", line.c_str());
      }
    };
    return new Plugin(std::move(options));
  } catch (const std::exception& error) {
    WarnOnce(std::string("kvx operations show their input: ") + error.what() +
             "; KVX_PLUGIN and KVX_RESOURCES name other places");
    return nullptr;
  }
}

}  // namespace

Plugin* SharedPlugin() {
  static Plugin* const plugin = Load();
  return plugin;
}

void WarnOnce(const std::string& line) {
  static std::mutex mutex;
  static auto* const said = new std::set<std::string>;  // operations may outlive static objects
  {
    const std::lock_guard lock(mutex);
    if (!said->insert(line).second) return;
  }
  g_warning("%s", line.c_str());
}

}  // namespace kvx

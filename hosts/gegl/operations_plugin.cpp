#include "hosts/gegl/operations_plugin.h"

#include <glib.h>

#include <mutex>
#include <set>

#include "hostkit/shared_plugin.h"

namespace kvx {

namespace {

void Log(int32_t level, const std::string& line) {
  if (level >= kHostLogError) {
    WarnOnce(line);
  } else {
    g_debug("%s", line.c_str());
  }
}

Plugin* Load() {
  try {
    return &SharedPlugin(Log);
  } catch (const std::exception& error) {
    WarnOnce(std::string("kvx operations show their input: ") + error.what() +
             "; KVX_PLUGIN and KVX_RESOURCES name other places");
    return nullptr;
  }
}

}  // namespace

Plugin* OperationsPlugin() {
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

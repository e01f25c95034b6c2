#include "hostkit/shared_plugin.h"

#include <fmt/format.h>

#include <mutex>

#include "hostkit/locate.h"

namespace kvx {

Plugin& SharedPlugin(const decltype(PluginOptions::log)& log) {
  static std::mutex loading;
  static Plugin* plugin = nullptr;
  const std::lock_guard lock(loading);
  if (!plugin) {
    PluginOptions options;
    options.log = log;
    plugin = new Plugin(std::move(options));
  }
  return *plugin;
}

const EffectInfo& OfferedEffect(const Plugin& plugin, const EffectInfo& effect) {
  const EffectInfo* offered = plugin.Effects().WithId(effect.id);
  if (!offered) throw Error(fmt::format("the catalogue no longer offers {} (id {})", effect.name, effect.id));
  return *offered;
}

EffectList DescribedEffects(const std::function<void(const std::string& line)>& complain) {
  try {
    return ReadDescription(DefaultResourceRoot());
  } catch (const Error& error) {
    complain(error.what());
    return BuiltinDescription();
  }
}

}  // namespace kvx

// The one plug-in of a process, for modules that programs load.
#ifndef KVX_HOSTKIT_SHARED_PLUGIN_H_
#define KVX_HOSTKIT_SHARED_PLUGIN_H_

#include <functional>
#include <memory>
#include <string>

#include "hostkit/plugin.h"

namespace kvx {

// Any thread. The first call that succeeds loads the plug-in, with its `log`; it stays until the process ends, because
// no order of unloading is safe while a program's threads may render. Throws Error if it cannot be loaded.
Plugin& SharedPlugin(const decltype(PluginOptions::log)& log);

// The effect with this id as the catalogue has it. Throws Error if it is not offered.
const EffectInfo& OfferedEffect(const Plugin& plugin, const EffectInfo& effect);

// What effects there are, without loading them: the description beside the catalogue, or, after a complaint if that is
// damaged, the built-in one.
EffectList DescribedEffects(const std::function<void(const std::string& line)>& complain);

}  // namespace kvx

#endif  // KVX_HOSTKIT_SHARED_PLUGIN_H_

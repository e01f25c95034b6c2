// Effects of the one plug-in of the process.
#ifndef KVX_HOSTS_MLT_CREATE_EFFECT_H_
#define KVX_HOSTS_MLT_CREATE_EFFECT_H_

#include <memory>

#include "hostkit/plugin.h"

namespace kvx {

// An object of the catalogue's effect with this id. Loads the plug-in if nobody has; it stays until the process ends.
// Throws Error if the plug-in cannot be loaded, does not offer the effect or fails to make it. Any thread.
std::unique_ptr<Effect> CreateEffect(const EffectInfo& effect);

}  // namespace kvx

#endif  // KVX_HOSTS_MLT_CREATE_EFFECT_H_

// Chains in files.
#ifndef KVX_HOSTKIT_RECIPE_H_
#define KVX_HOSTKIT_RECIPE_H_

#include <string>

#include "hostkit/chain.h"

namespace kvx {

// Recipes are JSON: {"effects": [{"effect": "Snow", "opacity": 80, "params": {"Percent": 40, "Radius": {"0": 10, "50":
// 90}}}]}. Errors name the place in the file.
Chain ReadRecipe(const EffectList& effects, const std::string& path);
void WriteRecipe(const Chain& chain, const std::string& path);

}  // namespace kvx

#endif  // KVX_HOSTKIT_RECIPE_H_

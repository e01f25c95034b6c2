// Chains as texts, for files.
#ifndef KVX_HOSTKIT_RECIPE_H_
#define KVX_HOSTKIT_RECIPE_H_

#include <string>

#include "hostkit/chain.h"

namespace kvx {

// Recipes are JSON: {"effects": [{"effect": "Snow", "opacity": 80, "params": {"Percent": 40, "Radius": {"0": 10, "50":
// 90}}}]}. `name` is what errors call the file; they name the place in it. Throws Error.
Chain ParseRecipe(const EffectList& effects, const std::string& text, const std::string& name);
std::string RecipeText(const Chain& chain);

// The same without a file; errors call the text `name`.
Chain ParseRecipe(const EffectList& effects, const std::string& text, const std::string& name);
std::string RecipeText(const Chain& chain);

}  // namespace kvx

#endif  // KVX_HOSTKIT_RECIPE_H_

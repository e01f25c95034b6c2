// Chains as texts, for files.
#ifndef KVX_HOSTKIT_RECIPE_H_
#define KVX_HOSTKIT_RECIPE_H_

#include <cstdint>
#include <optional>
#include <string>

#include "hostkit/chain.h"

namespace kvx {

// Recipes are JSON: {"effects": [{"effect": "Snow", "opacity": 80, "params": {"Percent": 40, "Radius": {"0": 10, "50":
// 90}}}], "seed": 7}, the seed being a whole number from 0 to 4294967295 that may be left out. `name` is what errors call
// the file; they name the place in it. Throws Error.
Chain ParseRecipe(const EffectList& effects, const std::string& text, const std::string& name);
// The seed alone, for whoever has to know it before the effects; nothing if there is none, or if the text is no recipe,
// which ParseRecipe says.
std::optional<uint32_t> RecipeSeed(const std::string& text);
std::string RecipeText(const Chain& chain);

}  // namespace kvx

#endif  // KVX_HOSTKIT_RECIPE_H_

// The effects of a run as they stand on the command line.
#ifndef KVX_HOSTS_KVX_CHAIN_WORDS_H_
#define KVX_HOSTS_KVX_CHAIN_WORDS_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/chain.h"
#include "hostkit/recipe.h"

namespace kvx {

// Reads a recipe from a file or pipe. Throws Error.
Chain ReadRecipe(const EffectList& list, const std::string& path);

// One positional EFFECT with -p, several -e, or a recipe.
struct ChainWords {
  std::vector<std::string> words;     // positional
  std::vector<std::string> settings;  // -p
  std::vector<std::string> effects;   // -e
  std::string recipe;
  double opacity = 100;
  CLI::Option* opacityOption = nullptr;
  std::string recipeText, recipeName;

  void AddTo(CLI::App& sub);

  // Reads the recipe, if there is one: before the plug-in starts, for its seed. Throws Error.
  void ReadRecipeText();
  std::optional<uint32_t> RecipeSeed() const { return kvx::RecipeSeed(recipeText); }

  // `files` is how many words follow the effect; only they are left in `words`. Throws Error.
  Chain Build(const EffectList& list, size_t files);
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_CHAIN_WORDS_H_

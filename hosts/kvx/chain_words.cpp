#include "hosts/kvx/chain_words.h"

#include "hosts/kvx/input_file.h"

namespace kvx {

Chain ReadRecipe(const EffectList& list, const std::string& path) {
  InputFile file(path);
  return ParseRecipe(list, file.ReadAll(kLargestSmallFile), file.Name());
}

void ChainWords::ReadRecipeText() {
  if (recipe.empty()) return;
  InputFile file(recipe);
  recipeText = file.ReadAll(kLargestSmallFile);
  recipeName = file.Name();
}

void ChainWords::AddTo(CLI::App& sub) {
  sub.add_option("-p,--param", settings, "NAME=VALUE, or NAME=FRAME:VALUE,... with values linear between")
      ->allow_extra_args(false);
  sub.add_option("-e,--effect", effects, "One more effect of a chain: NAME or NAME:PARAM=VALUE;PARAM=VALUE")
      ->allow_extra_args(false);
  opacityOption =
      sub.add_option("--opacity", opacity, "Opacity of the effect in percent")->check(CLI::Range(0.0, 100.0));
}

Chain ChainWords::Build(const EffectList& list, size_t files) {
  Chain chain;
  if (!recipe.empty()) {
    if (!effects.empty() || !settings.empty()) throw UsageError("--recipe goes without -e and -p");
    if (opacityOption->count() > 0) throw UsageError("--opacity goes without --recipe: a recipe holds every opacity");
    chain = ParseRecipe(list, recipeText, recipeName);
  }
  for (const std::string& text : effects) chain.AddText(list, text);
  if (chain.Empty()) {
    if (words.size() != files + 1) {
      throw UsageError(files == 2 ? "an effect, the input and the output are wanted"
                                  : "an effect and the output are wanted");
    }
    chain.Add(list.Find(words.front()), settings, opacity);
    words.erase(words.begin());
  } else if (!effects.empty() && !settings.empty()) {
    throw UsageError("with -e, parameters stand behind the effect: -e \"NAME:PARAM=VALUE\"");
  } else if (!effects.empty() && opacityOption->count() > 0) {
    throw UsageError("with -e, the opacity stands behind the effect: -e \"NAME:opacity=60\"");
  }
  if (words.size() != files) throw UsageError(files == 2 ? "an input and an output are wanted" : "an output is wanted");
  return chain;
}

}  // namespace kvx

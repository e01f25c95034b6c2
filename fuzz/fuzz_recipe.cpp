// What users write of effects: a recipe, or, where the input does not begin with '{', one effect a line as it stands
// behind -e. What is taken gives values at every frame, and a recipe that is written of it reads back the same.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "hostkit/chain.h"
#include "hostkit/recipe.h"
#include "hostkit/text.h"

namespace {

using namespace kvx;

const EffectList& Effects() {
  static const EffectList effects = ReadDescription("/nowhere");
  return effects;
}

Chain ReadChain(const std::string& input) {
  if (input.starts_with('{')) {
    RecipeSeed(input);
    return ParseRecipe(Effects(), input, "recipe");
  }
  Chain chain;
  for (const std::string& line : Split(input, '\n')) chain.AddText(Effects(), line);
  return chain;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Chain chain;
  try {
    chain = ReadChain({data, data + size});
  } catch (const Error&) {
    return 0;
  }
  if (chain.Empty()) return 0;
  const Chain again = ParseRecipe(Effects(), RecipeText(chain), "written");
  if (again.Links().size() != chain.Links().size() || again.Seed() != chain.Seed()) std::abort();
  for (size_t i = 0; i < chain.Links().size(); ++i) {
    for (const int64_t frame : {int64_t{0}, int64_t{7}, int64_t{100000}}) {
      const FrameValues values = chain.Links()[i].tracks.At(frame, 40);
      const FrameValues same = again.Links()[i].tracks.At(frame, 40);
      if (values.texts != same.texts || values.numbers != same.numbers) std::abort();
      for (const auto& [name, value] : values.numbers) {
        if (!std::isfinite(value)) std::abort();
      }
    }
  }
  return 0;
}

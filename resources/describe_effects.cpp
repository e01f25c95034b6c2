// describe_effects PLUGIN RESOURCE_ROOT OUTPUT: what hosts of ours know of the effects, as one file. Identity, family
// and traits come from the effect table, parameters from the plug-in with its catalogue. Run by the build.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "framework/factory/effect_table.h"
#include "hostkit/effects.h"
#include "hostkit/plugin.h"

namespace kvx {
extern const char kBuiltinDescription[];
const char kBuiltinDescription[] = "{\"effects\": []}";
}  // namespace kvx

namespace {

std::string Narrow(const char16_t* text) {
  std::string out;
  for (; *text; ++text) out += static_cast<char>(*text);
  return out;
}

void TakeRow(const EffectRow& row, kvx::EffectInfo& effect) {
  effect.family = kvx::Families().at(static_cast<size_t>(row.family));
  effect.ordered = row.traits & kOrdered;
  effect.random = row.traits & kRandom;
  effect.movesStream = row.traits & (kRandom | kMovesStream);
  effect.writesSource = row.traits & kWritesSource;
  effect.leavesPixels = row.traits & kLeavesPixels;
  for (const char* file : row.materials) {
    if (file) effect.materials.emplace_back(file);
  }
}

// Says of every effect that the table and the catalogue do not both have what is missing. The number of those.
int CheckCatalogue(const std::vector<kvx::EffectInfo>& effects) {
  int missing = 0;
  for (const EffectRow& row : RecordRows()) {
    const auto sameGuid = [&](const kvx::EffectInfo& effect) { return effect.guid == Narrow(row.guid); };
    if (std::any_of(effects.begin(), effects.end(), sameGuid)) continue;
    std::fprintf(
        stderr,
        "effect %d, %s: no entry with GUID %s in PureCFilter.conf. Add one, with its parameters in the order in "
        "which Process reads them.\n",
        row.id, Narrow(row.name).c_str(), Narrow(row.guid).c_str());
    ++missing;
  }
  return missing;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: describe_effects PLUGIN RESOURCE_ROOT OUTPUT\n");
    return 2;
  }
  try {
    kvx::PluginOptions options;
    options.path = argv[1];
    options.resourceRoot = argv[2];
    // What an earlier run wrote must not come in again.
    std::remove(argv[3]);
    const kvx::Plugin plugin(options);
    std::vector<kvx::EffectInfo> effects = plugin.Effects().All();
    if (CheckCatalogue(effects) != 0) return 1;
    for (kvx::EffectInfo& effect : effects) TakeRow(*FindEffectRow(effect.id), effect);
    std::ofstream file(argv[3], std::ios::binary);
    file << kvx::WriteDescription(effects);
    file.close();
    if (!file) throw kvx::Error(std::string(argv[3]) + ": cannot be written");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "describe_effects: %s\n", error.what());
    return 1;
  }
  return 0;
}

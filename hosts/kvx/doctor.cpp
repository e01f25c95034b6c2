#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "hosts/kvx/commands.h"
#include "hosts/kvx/standard_output.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

using Problems = std::vector<std::string>;

constexpr char kCatalogueFile[] = "PureCFilter.conf";

nlohmann::json ReadCatalogue(const fs::path& path, Problems& problems) {
  std::ifstream file(path);
  if (!file) {
    problems.push_back(fmt::format("{}: cannot be read", path.string()));
    return {};
  }
  try {
    return nlohmann::json::parse(file);
  } catch (const nlohmann::json::exception& error) {
    problems.push_back(fmt::format("{}: {}", kCatalogueFile, error.what()));
    return {};
  }
}

std::vector<EffectInfo> LoadEffects(const std::string& pluginPath, const std::string& resourceRoot,
                                    Problems& problems) {
  try {
    PluginOptions options;
    options.path = pluginPath;
    options.resourceRoot = resourceRoot;
    return Plugin(options).Effects().All();
  } catch (const Error& error) {
    problems.emplace_back(error.what());
    return {};
  }
}

// What is wrong with an entry of the catalogue; empty if nothing is.
std::string ProblemOfEntry(const nlohmann::json& entry, const std::vector<EffectInfo>& effects) {
  const auto text = [&](const char* key) {
    const bool there = entry.is_object() && entry.contains(key) && entry[key].is_string();
    return there ? entry[key].get<std::string>() : std::string();
  };
  const std::string guid = text("GUID");
  const auto isThis = [&](const EffectInfo& effect) { return effect.guid == guid; };
  if (guid.empty()) return " has no GUID";
  if (text("DATAPATH").empty()) return fmt::format(" ({}) has no DATAPATH, so it is skipped", text("NAME"));
  if (effects.empty() || std::any_of(effects.begin(), effects.end(), isThis)) return "";
  return fmt::format(" ({}) has no effect: {}", text("NAME"), guid);
}

void CheckMaterials(const fs::path& folder, const std::vector<EffectInfo>& effects, Problems& problems) {
  const auto wants = [](const EffectInfo& effect) { return !effect.materials.empty(); };
  if (std::none_of(effects.begin(), effects.end(), wants)) return;
  std::error_code error;
  if (!fs::is_directory(folder, error)) {
    problems.push_back(fmt::format("{}: no such directory; effects with a material show the source", folder.string()));
    return;
  }
  for (const EffectInfo& effect : effects) {
    for (const std::string& name : effect.materials) {
      if (!fs::exists(folder / name, error)) {
        problems.push_back(fmt::format("{}: missing, wanted by {}", name, effect.name));
        continue;
      }
      try {
        ReadPicture((folder / name).string());
      } catch (const Error& failure) {
        problems.push_back(fmt::format("{} (wanted by {})", failure.what(), effect.name));
      }
    }
  }
}

}  // namespace

bool CheckResources(const std::string& pluginPath, const std::string& resourceRoot, bool json) {
  Problems problems;
  const fs::path material = fs::path(resourceRoot) / "kvx_effect" / "material";
  const nlohmann::json catalogue = ReadCatalogue(material / kCatalogueFile, problems);
  const std::vector<EffectInfo> effects = LoadEffects(pluginPath, resourceRoot, problems);
  for (size_t i = 0; catalogue.is_array() && i < catalogue.size(); ++i) {
    const std::string problem = ProblemOfEntry(catalogue[i], effects);
    if (!problem.empty()) problems.push_back(fmt::format("{}: entry {}{}", kCatalogueFile, i, problem));
  }
  CheckMaterials(material / "Merge", effects, problems);
  if (json) {
    const nlohmann::ordered_json report = {
        {"plugin", pluginPath}, {"resources", resourceRoot}, {"effects", effects.size()}, {"problems", problems}};
    Print(report.dump(2) + "\n");
  } else {
    for (const std::string& problem : problems) Print(problem + "\n");
    if (problems.empty()) Print(fmt::format("{}: {} effects, everything is in place\n", resourceRoot, effects.size()));
  }
  return problems.empty();
}

}  // namespace kvx

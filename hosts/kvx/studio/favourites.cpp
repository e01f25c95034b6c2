#include "hosts/kvx/studio/favourites.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "hostkit/error.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

fs::path FilePath() {
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config == '/') {
    return fs::path(config) / "kvx" / "favourites.json";
  }
  const char* home = std::getenv("HOME");
  return home && *home == '/' ? fs::path(home) / ".config" / "kvx" / "favourites.json" : fs::path();
}

}  // namespace

std::vector<int32_t> ReadFavourites() {
  std::ifstream file(FilePath());
  try {
    return nlohmann::json::parse(file).at("favourites").get<std::vector<int32_t>>();
  } catch (const nlohmann::json::exception&) {
    return {};
  }
}

void WriteFavourites(const std::vector<int32_t>& ids) {
  const fs::path path = FilePath();
  if (path.empty()) throw Error("favourites cannot be kept: there is no home directory");
  const fs::path part = fmt::format("{}.{}.part", path.string(), getpid());
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  std::ofstream file(part);
  file << nlohmann::json{{"favourites", ids}}.dump() << "\n";
  file.close();
  if (file) fs::rename(part, path, error);
  if (!file || error) {
    std::error_code ignored;
    fs::remove(part, ignored);
    throw Error(fmt::format("favourites cannot be kept: {} cannot be written", path.string()));
  }
}

}  // namespace kvx

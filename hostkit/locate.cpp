#include "hostkit/locate.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace kvx {

namespace {

constexpr int kLevelsUp = 6;

// From the folder of this binary upwards, the first place below which `inside` exists.
fs::path FindUpwards(const char* subdirectory, const char* inside) {
  const fs::path start = fs::path(OwnBinary()).parent_path();
  std::error_code error;
  fs::path at = start;
  for (int level = 0; level < kLevelsUp; ++level, at = at.parent_path()) {
    if (fs::exists(at / subdirectory / inside, error)) return at / subdirectory;
  }
  return start.parent_path() / subdirectory;
}

constexpr char kPluginFile[] = "kvxFilterPureCPlugin.so";

}  // namespace

std::string OwnBinary() {
  static const char here = 0;
  std::error_code error;
  Dl_info info;
  link_map* map = nullptr;
  // The executable itself has no name among the loaded files.
  if (dladdr1(&here, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) && map && *map->l_name) {
    const fs::path resolved = fs::canonical(map->l_name, error);
    if (!error) return resolved.string();
  }
  return fs::read_symlink("/proc/self/exe", error).string();
}

std::string DefaultPluginPath() {
  if (const char* path = std::getenv("KVX_PLUGIN"); path && *path) return path;
  return (FindUpwards(KVX_PLUGIN_SUBDIR, kPluginFile) / kPluginFile).string();
}

std::string DefaultResourceRoot() {
  if (const char* path = std::getenv("KVX_RESOURCES"); path && *path) return path;
  return FindUpwards(KVX_RESOURCE_SUBDIR, "kvx_effect").string();
}

}  // namespace kvx

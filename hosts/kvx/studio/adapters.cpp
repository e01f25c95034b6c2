#include "hosts/kvx/studio/adapters.h"

#include <filesystem>

#include "hostkit/locate.h"

namespace kvx {

namespace fs = std::filesystem;

namespace {

// `file` in the library folders beside the binary's, or in the system's.
bool Exists(const char* file) {
  const fs::path root = fs::path(OwnBinary()).parent_path().parent_path();
  const fs::path system = "/usr";
  std::error_code error;
  for (const fs::path& base : {root, system}) {
    for (const char* folder : {"lib", KVX_LIBRARY_FOLDER}) {
      if (fs::exists(base / folder / file, error)) return true;
    }
  }
  return false;
}

}  // namespace

bool HasGstModule() {
  return Exists("gstreamer-1.0/libgstkvx.so");
}

bool HasMltModule() {
  return Exists("mlt-7/libmltkvx.so");
}

}  // namespace kvx

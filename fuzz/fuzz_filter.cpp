// The input is one filter's directory: its configuration, and after a form feed, if there is one, its filter.xml. An
// input that begins with '<' is a filter.xml beside a sound configuration.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "fuzz/catalogue_use.h"
#include "tests/support/fake_host.h"

namespace {

const char* const kDirectory = "kvx_effect/nle_default/filter/";

const std::string& SoundConfiguration() {
  static const std::string text =
      "{\"GUID\": \"" + GuidOf(71) + "\", \"PARAMS\": [{\"NAME\": \"Level\", \"TYPE\": \"int\", \"MAX\": 100}]}";
  return text;
}

// Links lead back to where the walk comes from, and to each other.
const TemporaryDirectory& Root() {
  static const TemporaryDirectory root;
  [[maybe_unused]] static const bool linked = [] {
    const auto top = root.Path() / "kvx_effect/nle_default";
    std::filesystem::create_directories(top / "filter");
    std::filesystem::create_directory_symlink(top, top / "filter/up");
    std::filesystem::create_directory_symlink(top / "filter", top / "again");
    std::filesystem::create_symlink("nowhere", top / "filter/lost.conf");
    return true;
  }();
  return root;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const TemporaryDirectory& root = Root();
  const std::string input(data, data + size);
  const size_t cut = input.starts_with('<') ? 0 : std::min(input.find('\f'), size);
  const std::string xmlName = std::string(kDirectory) + "filter.xml";
  root.Write(std::string(kDirectory) + "filter.conf", cut == 0 ? SoundConfiguration() : input.substr(0, cut));
  if (cut == size) {
    std::filesystem::remove(root.Path() / xmlName);
  } else {
    root.Write(xmlName, input.substr(input[cut] == '\f' ? cut + 1 : cut));
  }
  UseCatalogue(root.Path().string(), (root.Path() / kDirectory).string());
  return 0;
}

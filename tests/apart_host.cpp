// A host that keeps the plug-in's libraries apart from its own. It has none: tests/impostor.sh gives it false ones.
// Usage: apart_host PLUGIN RESOURCE_ROOT FILTER_DIRECTORY. Renders effects that use OpenCV, PNG and JPEG and prints a
// sum for each; reads a filter from a directory with a filter.xml.
#include <dlfcn.h>
#include <kvx/exports.h>

#include <cstdio>
#include <vector>

#include "tests/support/quiet_host.h"

namespace {

constexpr int32_t kWidth = 320, kHeight = 180;
constexpr int32_t kIds[] = {15, 39, 63, 71, 184, 194, 196, 348, 1374, 1380};

struct Image : HostImage {
  std::vector<uint8_t> pixels = std::vector<uint8_t>(kWidth * kHeight * 4);
  int32_t Width() override { return kWidth; }
  int32_t Height() override { return kHeight; }
  int32_t Step() override { return kWidth * 4; }
  uint8_t* Data() override { return pixels.data(); }
};

struct Frame : HostRenderContext {
  Image input, output;
  int64_t CurrentFrame() override { return 0; }
  int64_t TotalFrames() override { return 1; }
  HostImage* InputImage(int32_t) override { return &input; }
  HostImage* OutputImage() override { return &output; }
  int32_t ParameterValue(const char*, int64_t, HostParamValue*) override { return 1; }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  void* plugin = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
  if (!plugin) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  const auto startup = reinterpret_cast<decltype(&StartupKVX)>(dlsym(plugin, "StartupKVX"));
  const auto rowAt = reinterpret_cast<decltype(&GetEffectPluginsInfo)>(dlsym(plugin, "GetEffectPluginsInfo"));
  const auto create = reinterpret_cast<decltype(&CreateKVXEffect)>(dlsym(plugin, "CreateKVXEffect"));
  const auto release = reinterpret_cast<decltype(&ReleaseKVXEffect)>(dlsym(plugin, "ReleaseKVXEffect"));
  const auto registerFromPath =
      reinterpret_cast<decltype(&RegisterKVXEffectFromConfPath)>(dlsym(plugin, "RegisterKVXEffectFromConfPath"));
  QuietProvider provider;
  provider.util.root = argv[2];
  HostStartupRecord host{nullptr, &provider};
  PluginStartupInfo info{};
  startup(&host, &info);
  QuietRegistrar registrar;
  const int32_t read = registerFromPath(argv[3], &registrar);
  std::printf("%u effects, filter directory %d\n", info.filterCount, read);
  uint32_t rows = 0;
  bool done = read == 0;
  for (; const EffectPluginInfo* row = rowAt(rows); ++rows) {
    bool wanted = false;
    for (const int32_t id : kIds) wanted |= row->effectId == id;
    if (!wanted) continue;
    char guid[37] = "";
    for (int k = 0; k < 36; ++k) guid[k] = static_cast<char>(row->guid[k]);
    KVXEffect* effect = nullptr;
    Frame frame;
    for (size_t k = 0; k < frame.input.pixels.size(); ++k) {
      frame.input.pixels[k] = k % 4 == 3 ? 255 : static_cast<uint8_t>(k * 7 / 16);
    }
    int32_t status = create(guid, 0, &effect);
    if (status == 0) status = effect->Render(&frame);
    uint32_t sum = 1;
    for (const uint8_t byte : frame.output.pixels) sum = sum * 31 + byte;
    std::printf("%d: %d %08x\n", row->effectId, status, sum);
    done &= status == 0;
    release(effect);
  }
  return done && rows == info.filterCount ? 0 : 1;
}

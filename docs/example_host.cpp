// Usage: example_host PLUGIN RESOURCE_ROOT. Inverts one small frame.
#include <dlfcn.h>
#include <kvx/exports.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <vector>

struct Util : HostUtilSuite {
  const char* root;
  void GetHostPath(int32_t, char* buffer, int32_t size) override { std::snprintf(buffer, size, "%s", root); }
  void HostLog(int32_t, const char* format, ...) override {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::puts("");
  }
};

struct Provider : HostSuiteProvider {
  Util util;
  int32_t GetSuite(const char* name, int32_t, void** suite) override {
    if (std::strcmp(name, "Host Util Suite") != 0) return 1;
    *suite = static_cast<HostUtilSuite*>(&util);
    return 0;
  }
};

struct Image : HostImage {
  std::vector<uint8_t> pixels = std::vector<uint8_t>(16 * 9 * 4, 255);
  int32_t Width() override { return 16; }
  int32_t Height() override { return 9; }
  int32_t Step() override { return 16 * 4; }
  uint8_t* Data() override { return pixels.data(); }
};

struct Frame : HostRenderContext {
  Image input, output;
  int64_t CurrentFrame() override { return 0; }
  int64_t TotalFrames() override { return 1; }
  HostImage* InputImage(int32_t) override { return &input; }
  HostImage* OutputImage() override { return &output; }
  int32_t ParameterValue(const char*, int64_t, HostParamValue*) override { return 1; }  // defaults
};

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  void* plugin = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!plugin) return 1;
  const auto startup = reinterpret_cast<decltype(&StartupKVX)>(dlsym(plugin, "StartupKVX"));
  const auto shutdown = reinterpret_cast<decltype(&ShutdownKVX)>(dlsym(plugin, "ShutdownKVX"));
  const auto rowAt = reinterpret_cast<decltype(&GetEffectPluginsInfo)>(dlsym(plugin, "GetEffectPluginsInfo"));
  const auto create = reinterpret_cast<decltype(&CreateKVXEffect)>(dlsym(plugin, "CreateKVXEffect"));
  const auto release = reinterpret_cast<decltype(&ReleaseKVXEffect)>(dlsym(plugin, "ReleaseKVXEffect"));

  Provider provider;
  provider.util.root = argv[2];
  HostStartupRecord host{nullptr, &provider};
  PluginStartupInfo info{};
  startup(&host, &info);
  std::printf("%s offers %u effects\n", info.name, info.filterCount);

  char guid[37] = "";
  for (uint32_t i = 0; const EffectPluginInfo* row = rowAt(i); ++i) {
    if (row->effectId != 71) continue;  // Invert
    for (int k = 0; k < 36; ++k) guid[k] = static_cast<char>(row->guid[k]);
  }
  KVXEffect* effect = nullptr;
  if (create(guid, 0, &effect) != 0) return 1;
  Frame frame;
  effect->Prepare(&frame);
  const int32_t status = effect->Render(&frame);
  std::printf("status %d, first pixel %d %d %d\n", status, frame.output.pixels[0], frame.output.pixels[1],
              frame.output.pixels[2]);
  release(effect);
  shutdown();
  dlclose(plugin);
  return status == 0 && frame.output.pixels[0] == 0 ? 0 : 1;
}

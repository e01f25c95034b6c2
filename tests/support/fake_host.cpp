#include "tests/support/fake_host.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <mutex>
#include <stdexcept>

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (fs::temp_directory_path() / "kvx_test_XXXXXX").string();
  if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary directory");
  path_ = pattern;
}
TemporaryDirectory::~TemporaryDirectory() {
  std::error_code error;
  fs::remove_all(path_, error);
}
void TemporaryDirectory::Write(const std::string& name, const std::string& content) const {
  const fs::path file = path_ / name;
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

void FakeUtil::GetHostPath(int32_t kind, char* buffer, int32_t size) {
  asked = std::to_string(kind) + " " + buffer + " " + std::to_string(size);
  std::snprintf(buffer, static_cast<size_t>(size), "%s", root.c_str());
  if (!endsPath) std::memset(buffer, 'p', static_cast<size_t>(size));
}

void FakeUtil::HostLog(int32_t level, const char* format, ...) {
  char text[2048];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  static std::mutex lock;  // objects on other threads log too
  const std::lock_guard guard(lock);
  log.push_back({level, text});
}

int32_t FakeProvider::GetSuite(const char* name, int32_t version, void** suite) {
  asked.push_back(std::string(name) + " " + std::to_string(version));
  if (std::strcmp(name, "Host Util Suite") == 0 && offersUtil) *suite = &util;
  return 7;  // ignored
}

int32_t FakeContext::ParameterValue(const char* name, int64_t atFrame, HostParamValue* value) {
  asked.push_back(std::string(name) + " " + std::to_string(value->type) + " " + std::to_string(atFrame));
  if (value->type == HostParamValue::kText) {
    const auto text = texts.find(name);
    if (text == texts.end()) return 1;
    value->value.text = text->second.c_str();
    return 0;
  }
  const auto number = numbers.find(name);
  if (number == numbers.end()) return 1;
  switch (value->type) {
    case HostParamValue::kInt32:
      value->value.int32 = static_cast<int32_t>(number->second);
      break;
    case HostParamValue::kFloat:
      value->value.float32 = static_cast<float>(number->second);
      break;
    case HostParamValue::kDouble:
      value->value.float64 = number->second;
      break;
    default:
      return 1;
  }
  return 0;
}

LoadedPlugin::LoadedPlugin() : library_(dlopen(KVX_TEST_PLUGIN, RTLD_NOW | RTLD_LOCAL)) {
  if (!library_) throw std::runtime_error(dlerror());
  const auto take = [&](auto& function, const char* name) {
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library_, name));
    if (!function) throw std::runtime_error(name);
  };
  take(startup, "StartupKVX");
  take(shutdown, "ShutdownKVX");
  take(registerEffect, "RegisterKVXEffect");
  take(registerFromPath, "RegisterKVXEffectFromConfPath");
  take(create, "CreateKVXEffect");
  take(release, "ReleaseKVXEffect");
  take(counts, "GetEffectsCounts");
  take(info, "GetEffectPluginsInfo");
  take(find, "FindEffectByID");
  take(pixFormat, "GetEffectPixFormat");
  take(setMergePath, "SetMergeImagePath");
}

LoadedPlugin::~LoadedPlugin() {
  shutdown();
  dlclose(library_);
}

PluginStartupInfo LoadedPlugin::Start(const std::string& root) {
  provider.util.root = root;
  HostStartupRecord host{nullptr, &provider};
  PluginStartupInfo filled{};
  startup(&host, &filled);
  return filled;
}

std::string GuidOf(int32_t id) {
  for (int32_t i = 0; i < GetEffectsCounts(); ++i) {
    const EffectPluginInfo* row = GetEffectPluginsInfo(static_cast<uint32_t>(i));
    if (row->effectId == id) return std::string(row->guid, row->guid + 36);
  }
  return {};
}

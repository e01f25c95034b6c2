#include "plugin.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <numeric>

#include <fmt/format.h>

namespace fs = std::filesystem;

namespace {

fs::path ExecutableDirectory() {
  std::error_code error;
  const fs::path path = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::path(".") : path.parent_path();
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string Narrow(const char16_t* text) {
  std::string out;
  for (; *text; ++text) out += *text < 0x80 ? static_cast<char>(*text) : '?';  // names and GUIDs are ASCII
  return out;
}

size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row[b.size()];
}

class UtilSuite : public HostUtilSuite {
 public:
  void GetHostPath(int32_t, char* buffer, int32_t size) override {
    std::snprintf(buffer, static_cast<size_t>(size), "%s", root.c_str());
  }
  void HostLog(int32_t level, const char* format, ...) override {
    char line[4096];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    if (level >= kHostLogError) lastError = line;
    if (verbose) std::fprintf(stderr, "plug-in [%d]: %s\n", level, line);
  }

  std::string root;
  std::string lastError;
  bool verbose = false;
};

class SuiteProvider : public HostSuiteProvider {
 public:
  int32_t GetSuite(const char* name, int32_t version, void** suite) override {
    if (version != 1 || std::strcmp(name, "Host Util Suite") != 0) return 1;
    *suite = &util;
    return 0;
  }
  UtilSuite util;
};

class Registrar : public HostEffectRegistrar {
 public:
  explicit Registrar(EffectInfo& info) : info_(info) {}
  void Identity(const char* guid, const char* name) override {
    info_.guid = guid;
    info_.name = name;
  }
  void Flags(uint32_t flags) override { info_.dynamic = (flags & 0x800000) != 0; }
  void Reserved2(int32_t) override {}
  void Float(int32_t, int32_t, const char* name, const char*, float minimum, float maximum, float value,
             int32_t visibility) override {
    Add(name, ParamType::kFloat, minimum, maximum, value, visibility == 1);
  }
  void Integer(int32_t, int32_t, const char* name, const char*, int32_t minimum, int32_t maximum, int32_t value,
               int32_t, int32_t visibility) override {
    Add(name, ParamType::kInteger, minimum, maximum, value, visibility == 1);
  }
  void Color(int32_t, int32_t, const char* name, const char*, int32_t value, int32_t minimum, int32_t maximum,
             int32_t) override {
    Add(name, ParamType::kColor, minimum, maximum, value);
  }
  void CheckBox(int32_t, int32_t, const char* name, const char*, int32_t minimum, int32_t maximum, int32_t value,
                int32_t) override {
    Add(name, ParamType::kCheckBox, minimum, maximum, value);
  }
  void Text(int32_t, int32_t, const char* name, const char*, const char*, int32_t) override {
    Add(name, ParamType::kText, 0, 0, 0);
  }
  void Double(int32_t, int32_t, const char* name, const char*, double minimum, double maximum, double value,
              int32_t visibility) override {
    Add(name, ParamType::kDouble, minimum, maximum, value, visibility == 1);
  }
  void NinePositions(int32_t, int32_t, const char* name, const char*, int32_t minimum, int32_t maximum, int32_t value,
                     int32_t) override {
    Add(name, ParamType::kNinePositions, minimum, maximum, value);
  }
  void MaskList(int32_t, int32_t, const char* name, const char*, const char*, int32_t) override {
    Add(name, ParamType::kMaskList, 0, 0, 0);
  }
  void MosaicList(int32_t, int32_t, const char* name, const char*, int32_t minimum, int32_t maximum, int32_t value,
                  int32_t) override {
    Add(name, ParamType::kMosaicList, minimum, maximum, value);
  }
  void FirstColor(int32_t, int32_t, const char* name, const char*, int32_t minimum, int32_t maximum, int32_t value,
                  int32_t) override {
    Add(name, ParamType::kFirstColor, minimum, maximum, value);
  }
  void LastColor(int32_t, int32_t, const char* name, const char*, int32_t minimum, int32_t maximum, int32_t value,
                 int32_t) override {
    Add(name, ParamType::kLastColor, minimum, maximum, value);
  }
  void SpecialFloat(int32_t, int32_t, const char* name, const char*, float minimum, float maximum, float value,
                    int32_t) override {
    Add(name, ParamType::kSpecialFloat, minimum, maximum, value);
  }

 private:
  void Add(const char* name, ParamType type, double minimum, double maximum, double value, bool hidden = false) {
    info_.params.push_back({name, type, minimum, maximum, value, hidden});
  }
  EffectInfo& info_;
};

class Image : public HostImage {
 public:
  explicit Image(Picture& picture) : picture_(picture) {}
  int32_t Width() override { return picture_.width; }
  int32_t Height() override { return picture_.height; }
  int32_t Step() override { return picture_.Step(); }
  uint8_t* Data() override { return picture_.pixels.data(); }

 private:
  Picture& picture_;
};

class RenderContext : public HostRenderContext {
 public:
  RenderContext(Image& input, Image& output, int64_t frame, int64_t totalFrames, const FrameValues& values)
      : input_(input), output_(output), frame_(frame), totalFrames_(totalFrames), values_(values) {}
  int64_t CurrentFrame() override { return frame_; }
  int64_t TotalFrames() override { return totalFrames_; }
  HostImage* InputImage(int32_t index) override { return index == 0 ? &input_ : nullptr; }
  HostImage* OutputImage() override { return &output_; }
  int32_t ParameterValue(const char* name, int64_t, HostParamValue* value) override {
    if (value->type == HostParamValue::kText) {
      const auto found = values_.texts.find(name);
      if (found == values_.texts.end()) return 1;
      value->value.text = found->second.c_str();
      return 0;
    }
    const auto found = values_.numbers.find(name);
    if (found == values_.numbers.end()) return 1;
    switch (value->type) {
      case HostParamValue::kInt32:
        value->value.int32 = static_cast<int32_t>(std::clamp<double>(found->second, INT_MIN, INT_MAX));
        return 0;
      case HostParamValue::kFloat:
        value->value.float32 = static_cast<float>(found->second);
        return 0;
      case HostParamValue::kDouble:
        value->value.float64 = found->second;
        return 0;
      case HostParamValue::kByte:
        value->value.byte = found->second != 0;
        return 0;
      default:
        return 1;
    }
  }

 private:
  Image& input_;
  Image& output_;
  int64_t frame_;
  int64_t totalFrames_;
  const FrameValues& values_;
};

}  // namespace

const char* ParamTypeName(ParamType type) {
  static constexpr const char* kNames[] = {"float",       "integer",      "colour",         "check box",
                                           "text",        "double",       "nine positions", "mask list",
                                           "mosaic list", "first colour", "last colour",    "float x100"};
  return kNames[static_cast<size_t>(type)];
}

std::string DefaultPluginPath() {
  return (ExecutableDirectory() / ".." / KVX_PLUGIN_SUBDIR / "kvxFilterPureCPlugin.so").lexically_normal().string();
}
std::string DefaultResourceRoot() {
  return (ExecutableDirectory() / ".." / KVX_RESOURCE_SUBDIR).lexically_normal().string();
}

struct Plugin::Impl {
  void* library = nullptr;
  SuiteProvider provider;
  bool started = false;
  std::vector<EffectInfo> effects;
  decltype(&::ShutdownKVX) shutdown = nullptr;
  decltype(&::CreateKVXEffect) create = nullptr;
  decltype(&::ReleaseKVXEffect) release = nullptr;

  template <typename Function>
  Function Take(const char* name) {
    auto function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function) throw KvxError(fmt::format("the plug-in does not export {}", name));
    return function;
  }
  ~Impl() {
    if (started) shutdown();
    if (library) dlclose(library);
  }
};

Plugin::Plugin(const std::string& path, const std::string& resourceRoot, bool verbose)
    : impl_(std::make_unique<Impl>()) {
  Impl& impl = *impl_;
  if (!fs::is_directory(resourceRoot)) throw KvxError("no resource directory: " + resourceRoot);
  UtilSuite& util = impl.provider.util;
  util.root = fs::absolute(resourceRoot).lexically_normal().string();
  while (util.root.size() > 1 && util.root.back() == '/') util.root.pop_back();
  util.verbose = verbose;
  if (util.root.size() > 511) throw KvxError("the resource directory's path is longer than 511 bytes");
  impl.library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!impl.library) throw KvxError(fmt::format("the plug-in cannot be loaded: {}", dlerror()));
  impl.shutdown = impl.Take<decltype(&::ShutdownKVX)>("ShutdownKVX");
  impl.create = impl.Take<decltype(&::CreateKVXEffect)>("CreateKVXEffect");
  impl.release = impl.Take<decltype(&::ReleaseKVXEffect)>("ReleaseKVXEffect");
  const auto startup = impl.Take<decltype(&::StartupKVX)>("StartupKVX");
  const auto registerEffect = impl.Take<decltype(&::RegisterKVXEffect)>("RegisterKVXEffect");
  const auto tableSize = impl.Take<decltype(&::GetEffectsCounts)>("GetEffectsCounts")();
  const auto tableRow = impl.Take<decltype(&::GetEffectPluginsInfo)>("GetEffectPluginsInfo");

  HostStartupRecord host{nullptr, &impl.provider};
  PluginStartupInfo info{};
  try {
    impl.started = true;
    startup(&host, &info);
  } catch (const std::exception& error) {
    throw KvxError(fmt::format("the catalogue below {} is malformed: {}", util.root, error.what()));
  }
  std::map<std::string, int32_t> idOfGuid;
  for (int32_t i = 0; i < tableSize; ++i) {
    const EffectPluginInfo* row = tableRow(static_cast<uint32_t>(i));
    idOfGuid[Narrow(row->guid)] = row->effectId;
  }
  for (uint32_t i = 0; i < info.filterCount; ++i) {
    EffectInfo effect;
    Registrar registrar(effect);
    if (registerEffect(static_cast<int32_t>(i), &registrar) != 0) continue;
    effect.id = idOfGuid[effect.guid];
    impl.effects.push_back(std::move(effect));
  }
  if (impl.effects.empty()) {
    throw KvxError(fmt::format("no effects in the catalogue below {}{}", util.root,
                               util.lastError.empty() ? "" : " (" + util.lastError + ")"));
  }
}

Plugin::~Plugin() = default;

const std::vector<EffectInfo>& Plugin::Effects() const {
  return impl_->effects;
}

const EffectInfo& Plugin::Find(const std::string& text) const {
  const std::string wanted = Lower(text);
  std::vector<const EffectInfo*> named;
  for (const EffectInfo& effect : impl_->effects) {
    if (std::to_string(effect.id) == text || Lower(effect.guid) == wanted) return effect;
    if (Lower(effect.name) == wanted) named.push_back(&effect);
  }
  if (named.size() == 1) return *named.front();
  if (named.size() > 1) {
    std::string message = fmt::format("\"{}\" stands for several effects, use the id:", text);
    for (const EffectInfo* effect : named) message += fmt::format(" {} ({})", effect->id, effect->guid);
    throw UsageError(message);
  }
  std::vector<std::pair<size_t, const EffectInfo*>> near;
  for (const EffectInfo& effect : impl_->effects) near.emplace_back(EditDistance(wanted, Lower(effect.name)), &effect);
  const size_t shown = std::min<size_t>(3, near.size());
  std::partial_sort(near.begin(), near.begin() + static_cast<ptrdiff_t>(shown), near.end(),
                    [](const auto& a, const auto& b) { return a.first < b.first; });
  std::string message = fmt::format("no effect \"{}\"; did you mean", text);
  for (size_t i = 0; i < shown; ++i) message += fmt::format("{} {}", i ? "," : "", near[i].second->name);
  throw UsageError(message + "?");
}

std::unique_ptr<Effect> Plugin::Create(const EffectInfo& info) {
  KVXEffect* object = nullptr;
  if (impl_->create(info.guid.c_str(), 0, &object) != 0 || !object) {
    throw KvxError(fmt::format("the plug-in cannot make {}", info.name));
  }
  return std::make_unique<Effect>(object, impl_->release);
}

void Effect::Render(const Picture& input, Picture& output, int64_t frame, int64_t totalFrames,
                    const FrameValues& values) {
  source_ = input;
  // Some effects leave pixels, or only alpha, of their destination alone: there the source stands.
  output = input;
  Image from(source_);
  Image to(output);
  RenderContext context(from, to, frame, totalFrames, values);
  object_->Prepare(&context);
  const int32_t status = object_->Render(&context);
  if (status != 0) throw KvxError(fmt::format("the plug-in failed on frame {} with status {}", frame, status));
}

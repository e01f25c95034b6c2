#include "hostkit/plugin.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <vector>

#include "hostkit/locate.h"

namespace fs = std::filesystem;

namespace kvx {

namespace {

std::string Narrow(const char16_t* text) {
  std::string out;
  for (; *text; ++text) out += *text < 0x80 ? static_cast<char>(*text) : '?';  // names and GUIDs are ASCII
  return out;
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
    const std::lock_guard lock(mutex);
    if (level >= kHostLogError) lastError = line;
    if (log) log(level, line);
  }

  std::string root;
  std::mutex mutex;  // effects log from their own threads
  std::string lastError;
  std::function<void(int32_t, const std::string&)> log;
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
  void Flags(uint32_t flags) override { info_.moving = (flags & 0x800000) != 0; }
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
  explicit Image(ImageView image) : image_(image) {}
  int32_t Width() override { return image_.width; }
  int32_t Height() override { return image_.height; }
  int32_t Step() override { return image_.stride; }
  uint8_t* Data() override { return image_.data; }

 private:
  ImageView image_;
};

class RenderContext : public HostRenderContext {
 public:
  RenderContext(Image& input, Image& output, FramePlace place, const FrameValues& values)
      : input_(input), output_(output), place_(place), values_(values) {}
  int64_t CurrentFrame() override { return place_.frame; }
  int64_t TotalFrames() override { return place_.totalFrames; }
  HostImage* InputImage(int32_t index) override { return index == 0 ? &input_ : nullptr; }
  HostImage* OutputImage() override { return &output_; }
  int32_t ParameterValue(const char* name, int64_t, HostParamValue* value) override {
    if (value->type == HostParamValue::kText) {
      const auto found = values_.texts.find(std::string_view(name));
      if (found == values_.texts.end()) return 1;
      value->value.text = found->second.c_str();
      return 0;
    }
    const auto found = values_.numbers.find(std::string_view(name));
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
  FramePlace place_;
  const FrameValues& values_;
};

template <typename Byte>
void CopyImage(BasicImage<Byte> from, ImageView to) {
  const auto length = static_cast<size_t>(from.width) * 4;
  for (int32_t y = 0; y < from.height; ++y) {
    std::memcpy(to.data + static_cast<ptrdiff_t>(y) * to.stride, from.data + static_cast<ptrdiff_t>(y) * from.stride,
                length);
  }
}

ImageView ViewOf(Picture& picture) {
  return {picture.pixels.data(), picture.width, picture.height, picture.Step()};
}

// The picture as scratch of this size; what it held is of no interest.
ImageView Scratch(Picture& picture, int32_t width, int32_t height) {
  picture.Reshape(width, height);
  return ViewOf(picture);
}

bool IsAligned(const uint8_t* data, size_t bytes) {
  return reinterpret_cast<uintptr_t>(data) % bytes == 0;
}

bool Overlap(ConstImageView a, ImageView b) {
  const auto* endA = a.data + static_cast<ptrdiff_t>(a.height) * a.stride;
  const auto* endB = b.data + static_cast<ptrdiff_t>(b.height) * b.stride;
  return std::less<>()(a.data, endB) && std::less<>()(static_cast<const uint8_t*>(b.data), endA);
}

}  // namespace

struct Plugin::Impl {
  void* library = nullptr;
  SuiteProvider provider;
  bool started = false;
  EffectList effects;
  decltype(&::ShutdownKVX) shutdown = nullptr;
  decltype(&::CreateKVXEffect) create = nullptr;
  decltype(&::ReleaseKVXEffect) release = nullptr;
  std::mutex creating;  // two effects made at once would both extend one description

  template <typename Function>
  Function Take(const char* name) {
    auto function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function) throw Error(fmt::format("the plug-in does not export {}", name));
    return function;
  }
  ~Impl() {
    if (started) shutdown();
    if (library) dlclose(library);
  }
};

Plugin::Plugin(PluginOptions options) : impl_(std::make_shared<Impl>()) {
  Impl& impl = *impl_;
  const std::string path = options.path.empty() ? DefaultPluginPath() : options.path;
  const std::string root = options.resourceRoot.empty() ? DefaultResourceRoot() : options.resourceRoot;
  if (!fs::is_directory(root)) throw Error("no resource directory: " + root);
  UtilSuite& util = impl.provider.util;
  util.root = fs::absolute(root).lexically_normal().string();
  while (util.root.size() > 1 && util.root.back() == '/') util.root.pop_back();
  util.log = std::move(options.log);
  if (util.root.size() > 511) throw Error("the resource directory's path is longer than 511 bytes");
  impl.library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!impl.library) throw Error(fmt::format("the plug-in cannot be loaded: {}", dlerror()));
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
    throw Error(fmt::format("the catalogue below {} is malformed: {}", util.root, error.what()));
  }
  std::map<std::string, int32_t> idOfGuid;
  for (int32_t i = 0; i < tableSize; ++i) {
    const EffectPluginInfo* row = tableRow(static_cast<uint32_t>(i));
    idOfGuid[Narrow(row->guid)] = row->effectId;
  }
  const EffectList described = ReadDescription(root);
  std::vector<EffectInfo> effects;
  for (uint32_t i = 0; i < info.filterCount; ++i) {
    EffectInfo effect;
    Registrar registrar(effect);
    if (registerEffect(static_cast<int32_t>(i), &registrar) != 0) continue;
    effect.id = idOfGuid[effect.guid];
    if (const EffectInfo* known = described.WithId(effect.id)) {
      effect.family = known->family;
      effect.ordered = known->ordered;
      effect.random = known->random;
      effect.movesStream = known->movesStream;
      effect.writesSource = known->writesSource;
      effect.leavesPixels = known->leavesPixels;
      effect.materials = known->materials;
    }
    effects.push_back(std::move(effect));
  }
  if (effects.empty()) {
    throw Error(fmt::format("no effects in the catalogue below {}{}", util.root,
                            util.lastError.empty() ? "" : " (" + util.lastError + ")"));
  }
  impl.effects = EffectList(std::move(effects));
}

Plugin::~Plugin() = default;

const EffectList& Plugin::Effects() const {
  return impl_->effects;
}

std::unique_ptr<Effect> Plugin::Create(const EffectInfo& info) {
  const std::lock_guard lock(impl_->creating);
  KVXEffect* object = nullptr;
  if (impl_->create(info.guid.c_str(), 0, &object) != 0 || !object) {
    throw Error(fmt::format("the plug-in cannot make {}", info.name));
  }
  return std::unique_ptr<Effect>(new Effect(impl_, object, info.writesSource, info.leavesPixels));
}

Effect::Effect(std::shared_ptr<Plugin::Impl> plugin, KVXEffect* object, bool writesSource, bool leavesPixels)
    : plugin_(std::move(plugin)), object_(object), writesSource_(writesSource), leavesPixels_(leavesPixels) {}

Effect::~Effect() {
  plugin_->release(object_);
}

void Effect::Render(ConstImageView input, ImageView output, FramePlace place, const FrameValues& values) {
  const int32_t width = input.width;
  const int32_t height = input.height;
  // Some effects take rows as if they were packed. Which pixels are blended four at a time depends on where a row
  // begins: off that grid the bytes would differ.
  ImageView to = output.Packed() && IsAligned(output.data, 16) ? output : Scratch(result_, width, height);
  ImageView from{const_cast<uint8_t*>(input.data), width, height, input.stride};
  if (writesSource_ || !input.Packed() || !IsAligned(input.data, 4) || Overlap(input, to)) {
    from = Scratch(source_, width, height);
    CopyImage(input, from);
  }
  if (leavesPixels_) CopyImage(from, to);
  Image source(from);
  Image destination(to);
  RenderContext context(source, destination, place, values);
  object_->Prepare(&context);
  const int32_t status = object_->Render(&context);
  if (status != 0) throw Error(fmt::format("the plug-in failed on frame {} with status {}", place.frame, status));
  if (to.data != output.data) CopyImage(to, output);
}

void Effect::Render(const Picture& input, Picture& output, FramePlace place, const FrameValues& values) {
  Scratch(output, input.width, input.height);
  Render({input.pixels.data(), input.width, input.height, input.Step()}, ViewOf(output), place, values);
}

}  // namespace kvx

// Opening, closing, and what there is.
#include <cstdio>

#include "hostkit/locate.h"
#include "hosts/c/handles.h"

namespace kvx {

namespace {

// The plug-in as long as somebody has a share of it, and what it was opened with.
struct OpenPlugin {
  std::mutex mutex;
  std::weak_ptr<Plugin> plugin;
  std::string path;
  std::string resourceRoot;
};

OpenPlugin& Opened() {
  // Never destroyed: effects may end after the static objects.
  static auto* opened = new OpenPlugin;
  return *opened;
}

thread_local char lastError[2048];

const EffectInfo& EffectAt(const kvx_library* library, int32_t index) {
  if (!library) throw UsageError("the library is null");
  const auto& effects = library->plugin->Effects().All();
  if (index < 0 || static_cast<size_t>(index) >= effects.size()) {
    throw UsageError("there is no effect with index " + std::to_string(index));
  }
  return effects[static_cast<size_t>(index)];
}

}  // namespace

SharedPlugin::SharedPlugin(const PluginOptions& options) {
  OpenPlugin& opened = Opened();
  const std::lock_guard lock(opened.mutex);
  plugin_ = opened.plugin.lock();
  if (!plugin_) {
    plugin_ = std::make_shared<Plugin>(options);
    opened.plugin = plugin_;
    opened.path = options.path;
    opened.resourceRoot = options.resourceRoot;
  } else if (opened.path != options.path || opened.resourceRoot != options.resourceRoot) {
    const std::string line = "already open with plug-in " + opened.path + " and resources " + opened.resourceRoot;
    throw UsageError(line);
  }
}

SharedPlugin::SharedPlugin(const SharedPlugin& other) : plugin_(other.plugin_) {}

SharedPlugin::~SharedPlugin() {
  const std::lock_guard lock(Opened().mutex);
  plugin_.reset();
}

int32_t Fail(int32_t status, const char* line) noexcept {
  std::snprintf(lastError, sizeof lastError, "%s", line);
  return status;
}

int32_t StatusOf(const Error& error) noexcept {
  switch (error.Kind()) {
    case ErrorKind::kUsage:
      return KVX_BAD_ARGUMENT;
    case ErrorKind::kUnknownName:
      return KVX_UNKNOWN_NAME;
    case ErrorKind::kBadValue:
      return KVX_BAD_VALUE;
    case ErrorKind::kFailure:
      break;
  }
  return KVX_FAILED;
}

}  // namespace kvx

using namespace kvx;

int32_t kvx_open(const kvx_options* options, kvx_library** library) {
  return Guarded([&] {
    if (!library) throw UsageError("nowhere to put the library");
    *library = nullptr;
    const kvx_options given = TakeStruct(options, {sizeof(kvx_options), nullptr, nullptr});
    PluginOptions wanted;
    wanted.path = given.plugin && *given.plugin ? given.plugin : DefaultPluginPath();
    wanted.resourceRoot = given.resources && *given.resources ? given.resources : DefaultResourceRoot();
    *library = new kvx_library{SharedPlugin(wanted)};
    return KVX_OK;
  });
}

void kvx_close(kvx_library* library) {
  delete library;
}

int32_t kvx_effect_count(const kvx_library* library) {
  return Guarded([&] {
    if (!library) throw UsageError("the library is null");
    return static_cast<int32_t>(library->plugin->Effects().All().size());
  });
}

int32_t kvx_describe_effect(const kvx_library* library, int32_t index, kvx_effect_info* info) {
  return Guarded([&] {
    const EffectInfo& effect = EffectAt(library, index);
    kvx_effect_info known{};
    known.id = effect.id;
    known.name = effect.name.c_str();
    known.slug = effect.slug.c_str();
    known.guid = effect.guid.c_str();
    known.family = effect.family.c_str();
    known.flags = (effect.moving ? KVX_EFFECT_MOVING : 0) | (effect.ordered ? KVX_EFFECT_ORDERED : 0) |
                  (effect.random ? KVX_EFFECT_RANDOM : 0) | (effect.materials.empty() ? 0 : KVX_EFFECT_MATERIAL);
    known.param_count = static_cast<int32_t>(effect.params.size());
    FillStruct(info, known);
    return KVX_OK;
  });
}

int32_t kvx_describe_param(const kvx_library* library, int32_t index, int32_t param, kvx_param_info* info) {
  return Guarded([&] {
    const EffectInfo& effect = EffectAt(library, index);
    if (param < 0 || static_cast<size_t>(param) >= effect.params.size()) {
      throw UsageError(effect.name + " has no parameter with index " + std::to_string(param));
    }
    const ParamInfo& from = effect.params[static_cast<size_t>(param)];
    const bool whole = !from.IsText() && !from.TakesFractions();
    kvx_param_info known{};
    known.flags = (from.IsText() ? KVX_PARAM_TEXT : 0) | (whole ? KVX_PARAM_WHOLE : 0) |
                  (from.IsColor() ? KVX_PARAM_COLOUR : 0) | (from.hidden ? KVX_PARAM_HIDDEN : 0);
    known.name = from.name.c_str();
    known.kind = ParamTypeName(from.type);
    known.minimum = from.minimum;
    known.maximum = from.maximum;
    known.default_value = from.defaultValue;
    FillStruct(info, known);
    return KVX_OK;
  });
}

int32_t kvx_find(const kvx_library* library, const char* effect) {
  return Guarded([&] {
    if (!library || !effect) throw UsageError("the library or the effect's name is null");
    const EffectList& effects = library->plugin->Effects();
    return static_cast<int32_t>(&effects.Find(effect) - effects.All().data());
  });
}

const char* kvx_last_error() {
  return lastError;
}

// The plug-in, loaded and started as any host would do it: through the eleven exports and the public headers alone.
#ifndef KVX_HOST_PLUGIN_H_
#define KVX_HOST_PLUGIN_H_

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "kvx/exports.h"
#include "picture.h"

// A failure with one clear line for the user.
struct KvxError : std::runtime_error {
  using std::runtime_error::runtime_error;
};
// The same for a wrong command line.
struct UsageError : KvxError {
  using KvxError::KvxError;
};

// How a parameter was declared to the host.
enum class ParamType {
  kFloat,
  kInteger,
  kColor,
  kCheckBox,
  kText,
  kDouble,
  kNinePositions,
  kMaskList,
  kMosaicList,
  kFirstColor,
  kLastColor,
  kSpecialFloat
};
const char* ParamTypeName(ParamType type);

struct ParamInfo {
  std::string name;
  ParamType type;
  double minimum = 0;
  double maximum = 0;
  double defaultValue = 0;
  bool hidden = false;

  bool IsText() const { return type == ParamType::kText || type == ParamType::kMaskList; }
  bool TakesFractions() const {
    return type == ParamType::kFloat || type == ParamType::kDouble || type == ParamType::kSpecialFloat;
  }
};

struct EffectInfo {
  int32_t id = 0;
  std::string name;
  std::string guid;
  bool dynamic = false;  // moves on a still source
  std::vector<ParamInfo> params;
};

// Where the installed or built tree keeps the plug-in and its resources, relative to this executable.
std::string DefaultPluginPath();
std::string DefaultResourceRoot();

class Effect;

// One at a time per process. Throws KvxError if the library cannot be loaded or its catalogue offers nothing.
class Plugin {
 public:
  Plugin(const std::string& path, const std::string& resourceRoot, bool verbose);
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  // In the order of the catalogue.
  const std::vector<EffectInfo>& Effects() const;

  // By id, GUID or name (case does not matter). Throws UsageError with the nearest names, or with the candidates if a
  // name stands twice.
  const EffectInfo& Find(const std::string& text) const;

  std::unique_ptr<Effect> Create(const EffectInfo& info);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// The values of one frame. Parameters that are not named keep their defaults.
struct FrameValues {
  std::map<std::string, double> numbers;
  std::map<std::string, std::string> texts;
};

// An effect object of the plug-in. State that the effect keeps from frame to frame lives in it.
class Effect {
 public:
  Effect(KVXEffect* object, int32_t (*release)(KVXEffect*)) : object_(object), release_(release) {}
  ~Effect() { release_(object_); }
  Effect(const Effect&) = delete;
  Effect& operator=(const Effect&) = delete;

  // Renders `input` to `output`, which gets input's size. Throws KvxError if the plug-in refuses.
  void Render(const Picture& input, Picture& output, int64_t frame, int64_t totalFrames, const FrameValues& values);

 private:
  KVXEffect* object_;
  int32_t (*release_)(KVXEffect*);
  Picture source_;  // effects may write into their source
};

#endif  // KVX_HOST_PLUGIN_H_

// The plug-in, loaded and started as any host would do it: through the eleven exports and the public headers alone.
#ifndef KVX_HOSTKIT_PLUGIN_H_
#define KVX_HOSTKIT_PLUGIN_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "codecs/picture.h"
#include "hostkit/effects.h"
#include "hostkit/error.h"
#include "kvx/exports.h"

namespace kvx {

// A frame that somebody else owns: rows of 32-bit pixels, bytes blue, green, red, alpha; `stride` bytes from row to
// row, at least width * 4.
template <typename Byte>
struct BasicImage {
  Byte* data;
  int32_t width;
  int32_t height;
  int32_t stride;

  bool Packed() const { return stride == width * 4; }
};
using ImageView = BasicImage<uint8_t>;
using ConstImageView = BasicImage<const uint8_t>;

// The values of one frame. Parameters that are not named keep their defaults.
struct FrameValues {
  std::map<std::string, double, std::less<>> numbers;
  std::map<std::string, std::string, std::less<>> texts;
};

struct FramePlace {
  int64_t frame = 0;
  int64_t totalFrames = 0;  // 0 if unknown
};

class Effect;

struct PluginOptions {
  std::string path;          // empty for DefaultPluginPath()
  std::string resourceRoot;  // empty for DefaultResourceRoot()
  std::function<void(int32_t level, const std::string& line)> log;
};

// The loaded library. One at a time per process; it stays valid as long as an effect of it lives. Different effects may
// be made, used and destroyed by different threads.
class Plugin {
 public:
  // Throws Error if the library cannot be loaded or its catalogue offers nothing.
  explicit Plugin(PluginOptions options = {});
  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  // What the catalogue offers, in its order: parameters as declared, the rest from the description.
  const EffectList& Effects() const;

  // Throws Error.
  std::unique_ptr<Effect> Create(const EffectInfo& info);

 private:
  struct Impl;
  std::shared_ptr<Impl> impl_;
  friend class Effect;
};

// An effect object of the plug-in. State that the effect keeps from frame to frame lives in it. One thread at a time.
class Effect {
 public:
  ~Effect();
  Effect(const Effect&) = delete;
  Effect& operator=(const Effect&) = delete;

  // Renders `input` to `output`, both of one size. They may be one buffer and need not be packed: what must be copied
  // for the effect's sake is copied, and nothing else. Bytes that the effect leaves alone get the source's. Throws
  // Error if the plug-in refuses.
  void Render(ConstImageView input, ImageView output, FramePlace place, const FrameValues& values);

  // The same; `output` gets input's size.
  void Render(const Picture& input, Picture& output, FramePlace place, const FrameValues& values);

 private:
  friend class Plugin;
  Effect(std::shared_ptr<Plugin::Impl> plugin, KVXEffect* object, bool writesSource, bool leavesPixels);

  std::shared_ptr<Plugin::Impl> plugin_;
  KVXEffect* object_;
  bool writesSource_;
  bool leavesPixels_;
  Picture source_;  // copies, where there must be one
  Picture result_;
};

}  // namespace kvx

#endif  // KVX_HOSTKIT_PLUGIN_H_

// The effect object behind one element.
#ifndef KVX_HOSTS_GSTREAMER_EFFECT_RUNNER_H_
#define KVX_HOSTS_GSTREAMER_EFFECT_RUNNER_H_

#include <memory>

#include "codecs/picture.h"
#include "hostkit/plugin.h"

namespace kvx {

// One thread at a time.
class EffectRunner {
 public:
  // Makes the object; the first in the process to do so loads the plug-in, which then stays. Throws Error.
  void Open(const EffectInfo& effect);
  void Close();

  // What the effect remembers is forgotten before the next frame.
  void Restart() { restart_ = true; }

  // Throws Error. `isOpaque` says that the fourth byte of the input's pixels means nothing.
  void Render(ConstImageView input, bool isOpaque, ImageView output, FramePlace place, const FrameValues& values);

 private:
  const EffectInfo* info_ = nullptr;  // as the catalogue has it
  std::unique_ptr<Effect> effect_;
  bool restart_ = false;
  bool used_ = false;
  bool needsCopy_ = false;  // a frame's fourth bytes were not all 255
  Picture opaque_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_GSTREAMER_EFFECT_RUNNER_H_

// The effect objects behind one filter.
#ifndef KVX_HOSTS_MLT_EFFECT_RENDERER_H_
#define KVX_HOSTS_MLT_EFFECT_RENDERER_H_

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "hostkit/plugin.h"

namespace kvx {

// A frame as MLT has it: packed rows, bytes red, green, blue, alpha.
struct RgbaImage {
  uint8_t* pixels;
  int width;
  int height;
};

// The values at a frame of the filter's range.
using ValuesAt = std::function<FrameValues(int64_t frame)>;

// Any thread. `Render` puts the effect's picture in the image's place; it throws Error and leaves the image as it was
// if that cannot be done. The plug-in is loaded by the first frame of the process.
class EffectRenderer {
 public:
  virtual ~EffectRenderer() = default;
  virtual void Render(RgbaImage image, FramePlace place, const ValuesAt& valuesAt) = 0;
};

// Frames that an ordered effect did not get, up to so many in a row, are rendered with the next frame's picture in
// their place; behind a longer gap, and on the way back, the effect starts anew.
inline constexpr int64_t kMostFramesMadeUp = 8;

std::unique_ptr<EffectRenderer> MakeRenderer(const EffectInfo& effect);

}  // namespace kvx

#endif  // KVX_HOSTS_MLT_EFFECT_RENDERER_H_

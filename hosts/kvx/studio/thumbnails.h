// A small picture of the clip through every effect, made when asked for and kept.
#ifndef KVX_HOSTS_KVX_STUDIO_THUMBNAILS_H_
#define KVX_HOSTS_KVX_STUDIO_THUMBNAILS_H_

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/plugin.h"
#include "hosts/kvx/studio/clip.h"

namespace kvx {

class Thumbnails {
 public:
  static constexpr int kStripFrames = 12;

  // `mayWork` is waited for before a picture is made, though not for long, so that more urgent work goes first.
  Thumbnails(Plugin& plugin, Clip& clip, std::function<bool()> mayWork);

  // A JPEG; with `strip`, kStripFrames frames of the effect in motion below each other. Throws Error.
  std::shared_ptr<const std::string> Get(const EffectInfo& effect, bool strip, const std::function<bool()>& stopped);

 private:
  const Picture& SourceAt(int64_t frame);
  std::string Make(const EffectInfo& effect, bool strip, const std::function<bool()>& stopped);

  Plugin& plugin_;
  Clip& clip_;
  std::function<bool()> mayWork_;
  std::mutex working_;                   // over the sources and their reader too
  std::unique_ptr<FrameReader> reader_;  // of its own: the clip's would be torn between two places
  std::vector<Picture> sources_;
  std::mutex mutex_;
  std::map<std::pair<int32_t, bool>, std::shared_ptr<const std::string>> kept_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_THUMBNAILS_H_

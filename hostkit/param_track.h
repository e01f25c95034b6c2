// Parameter values of a run: what the user set, as constants or as values at frames.
#ifndef KVX_HOSTKIT_PARAM_TRACK_H_
#define KVX_HOSTKIT_PARAM_TRACK_H_

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "hostkit/plugin.h"

namespace kvx {

class ParamTracks {
 public:
  // `settings` are texts "NAME=VALUE" or "NAME=FRAME:VALUE,FRAME:VALUE,...", linear between the frames. Throws
  // Error for an unknown parameter and for a value that is no number or out of range. `opacity` is in percent.
  ParamTracks(const EffectInfo& effect, const std::vector<std::string>& settings, double opacity);

  // `milliseconds` feeds a parameter "Time" that the user did not set.
  FrameValues At(int64_t frame, double milliseconds) const;

 private:
  using Track = std::map<double, double>;  // frame -> value
  std::map<std::string, Track> tracks_;
  std::map<std::string, std::string, std::less<>> texts_;
  bool feedsTime_ = false;
};

}  // namespace kvx

#endif  // KVX_HOSTKIT_PARAM_TRACK_H_

// Parameter values at a frame, from a filter's properties.
#ifndef KVX_HOSTS_MLT_VALUES_H_
#define KVX_HOSTS_MLT_VALUES_H_

#include <framework/mlt.h>

#include "hostkit/plugin.h"

namespace kvx {

// Where MLT evaluates keyframes.
struct KeyframePlace {
  int position;
  int length;
};

// Properties that are not set keep the effect's defaults. Numbers may be keyframes; between these, values stay within
// the parameter's range. Colours are #RRGGBB, #AARRGGBB, 0xRRGGBBAA or, without keyframes, the effect's own number.
// `milliseconds` feeds a parameter "Time" that is not set. Throws Error, kBadValue, for what is no number or no colour
// or is out of range, in a keyframe too. Whoever calls holds the filter's lock.
FrameValues ReadValues(mlt_properties properties, const EffectInfo& effect, KeyframePlace place, double milliseconds);

}  // namespace kvx

#endif  // KVX_HOSTS_MLT_VALUES_H_

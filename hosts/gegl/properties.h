// Parameters of effects as properties of operations.
#ifndef KVX_HOSTS_GEGL_PROPERTIES_H_
#define KVX_HOSTS_GEGL_PROPERTIES_H_

#include <gegl.h>

#include <string>
#include <vector>

#include "hostkit/effects.h"

namespace kvx {

inline constexpr char kFrameProperty[] = "frame";
// The clip that a still of a moving effect is taken from: ten seconds.
inline constexpr int kClipFrames = 250;

struct Property {
  std::string name;   // as GObject wants it, unique in its operation
  std::string label;  // what a dialog shows
  std::string blurb;
  ParamInfo param;  // range in order, default inside
};

// What the operation of an effect offers: its parameters, "opacity", and "frame" if the effect moves.
std::vector<Property> PropertiesOf(const EffectInfo& effect);

// A new, floating GParamSpec.
GParamSpec* MakeParamSpec(const Property& property);

// The number that the effect takes for a property's value; colours are 0xRRGGBB in `space`. Not for texts.
double NumberOf(const Property& property, const GValue& value, const Babl* space);

// What NumberOf gives for the value that the property starts with.
double StartNumber(const Property& property);

}  // namespace kvx

#endif  // KVX_HOSTS_GEGL_PROPERTIES_H_

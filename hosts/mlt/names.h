// What effects and parameters are called in MLT. Needs no MLT.
#ifndef KVX_HOSTS_MLT_NAMES_H_
#define KVX_HOSTS_MLT_NAMES_H_

#include <string>

#include "hostkit/effects.h"

namespace kvx {

// The property that every filter has for the opacity, in percent.
inline constexpr char kOpacityProperty[] = "opacity";

// "kvx.warm".
std::string ServiceName(const EffectInfo& effect);

// "kvx: Warm"; "kvx: Canvas (33)" where several effects share the name. Unique.
std::string ServiceTitle(const EffectInfo& effect);

// The parameter's slug; with "kvx-" before it where MLT or we give that property another meaning.
std::string PropertyName(const ParamInfo& param);

// What the text behind a colon sets, as in "kvx.gamma:50": the first parameter that users see, else the opacity.
std::string ArgumentProperty(const EffectInfo& effect);

// One or two sentences: the family, and what a user should know of the effect over time.
std::string Describe(const EffectInfo& effect);

// As short as the number that was meant allows: 0.8, not 0.800000011920929, for what was a single-precision number.
std::string NumberText(double value);

// "#RRGGBB" of a colour parameter's number, 0xRRGGBB.
std::string ColorText(double value);

}  // namespace kvx

#endif  // KVX_HOSTS_MLT_NAMES_H_

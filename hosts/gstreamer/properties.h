// The parameters of an effect as properties of its element.
#ifndef KVX_HOSTS_GSTREAMER_PROPERTIES_H_
#define KVX_HOSTS_GSTREAMER_PROPERTIES_H_

#include <glib-object.h>

#include <mutex>
#include <string>
#include <vector>

#include "hostkit/effects.h"
#include "hostkit/plugin.h"

namespace kvx {

inline constexpr char kOpacityProperty[] = "opacity";

// The parameters that a user sees, in the order of the properties.
std::vector<const ParamInfo*> ShownParams(const EffectInfo& effect);

// Installs the opacity as property 1, the parameters from 2 on. A name that the class has already gets "param-" before
// it.
void InstallProperties(GObjectClass* objectClass, const EffectInfo& effect,
                       const std::vector<const ParamInfo*>& params);

// What a user set, from any thread while frames are rendered from another.
class Settings {
 public:
  double Opacity() const;
  void SetOpacity(double percent);

  // `value` holds what InstallProperties made of the parameter.
  void Set(const ParamInfo& param, const GValue* value);
  void Get(const ParamInfo& param, GValue* value) const;

  // Puts everything that was set over `values`.
  void ApplyTo(FrameValues& values) const;

 private:
  mutable std::mutex mutex_;
  FrameValues set_;
  double opacity_ = 100;
};

}  // namespace kvx

#endif  // KVX_HOSTS_GSTREAMER_PROPERTIES_H_

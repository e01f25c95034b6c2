// The element: one type of element for each effect, all over one body.
#ifndef KVX_HOSTS_GSTREAMER_VIDEO_EFFECT_H_
#define KVX_HOSTS_GSTREAMER_VIDEO_EFFECT_H_

#include <gst/gst.h>

#include "hostkit/effects.h"

namespace kvx {

// The category "kvx" of GStreamer's log, for the module and what the plug-in says.
GstDebugCategory* DebugCategory();

// Registers the element "kvx-" + slug. `effect` must stay valid as long as the process lives.
bool RegisterEffect(GstPlugin* module, const EffectInfo& effect);

}  // namespace kvx

#endif  // KVX_HOSTS_GSTREAMER_VIDEO_EFFECT_H_

// The one plug-in of the process, and how operations complain.
#ifndef KVX_HOSTS_GEGL_OPERATIONS_PLUGIN_H_
#define KVX_HOSTS_GEGL_OPERATIONS_PLUGIN_H_

#include <string>

#include "hostkit/plugin.h"

namespace kvx {

// Loaded on first use and kept until the process ends. Null, after one warning, if it cannot be loaded. Any thread.
Plugin* OperationsPlugin();

// A warning on GLib's log, domain "kvx": each line once in a process. Any thread.
void WarnOnce(const std::string& line);

}  // namespace kvx

#endif  // KVX_HOSTS_GEGL_OPERATIONS_PLUGIN_H_

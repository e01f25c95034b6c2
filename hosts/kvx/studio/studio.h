// `kvx studio`: effects chosen, tuned and chained by looking, in the user's browser.
#ifndef KVX_HOSTS_KVX_STUDIO_STUDIO_H_
#define KVX_HOSTS_KVX_STUDIO_STUDIO_H_

#include <string>

#include "hostkit/plugin.h"

namespace kvx {

struct StudioOptions {
  std::string input = "demo";  // picture, sequence, video or demo
  int port = 0;                // 0 for any that is free
  bool open = false;           // in the user's browser
};

// Prints the page's address and serves until SIGINT, SIGTERM or SIGHUP. False if that stopped a render. Throws Error.
bool RunStudio(Plugin& plugin, const StudioOptions& options);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STUDIO_STUDIO_H_

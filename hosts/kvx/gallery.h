// A static web page of every effect.
#ifndef KVX_HOSTS_KVX_GALLERY_H_
#define KVX_HOSTS_KVX_GALLERY_H_

#include <cstdint>
#include <string>

#include "hostkit/plugin.h"

namespace kvx {

struct GalleryOptions {
  std::string input = "demo";
  std::string directory;
  int32_t width = 480;  // of the pictures
  bool overwrite = false;
};

// Writes index.html with its pictures and loops. Opens from disk without a network.
void WriteGallery(Plugin& plugin, const GalleryOptions& options);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_GALLERY_H_

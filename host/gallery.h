// A static web page of every effect.
#ifndef KVX_HOST_GALLERY_H_
#define KVX_HOST_GALLERY_H_

#include <cstdint>
#include <string>

#include "plugin.h"

struct GalleryOptions {
  std::string input = "demo";
  std::string directory;
  int32_t width = 480;  // of the pictures
};

// Writes index.html with its pictures and loops. Opens from disk without a network.
void WriteGallery(Plugin& plugin, const GalleryOptions& options);

#endif  // KVX_HOST_GALLERY_H_

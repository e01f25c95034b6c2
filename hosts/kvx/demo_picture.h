// The built-in demo picture: a scene with what effects work on, drawn at any size, moving from frame to frame.
#ifndef KVX_HOSTS_KVX_DEMO_PICTURE_H_
#define KVX_HOSTS_KVX_DEMO_PICTURE_H_

#include <cstdint>

#include "codecs/picture.h"

namespace kvx {

// Frame `frame` at 25 frames a second. Opaque. Sizes from 1 by 1.
Picture DrawDemoPicture(int32_t width, int32_t height, int64_t frame);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_DEMO_PICTURE_H_

// Pictures drawn for a screen shape, and the way in which they are laid over a frame.
#ifndef KVX_SOURCE_ASPECT_OVERLAY_H_
#define KVX_SOURCE_ASPECT_OVERLAY_H_

#include <cstdint>

#include "framework/frame.h"
#include "platform/image.h"

// One overlay in two files: one for frames of exactly 16:9, one for all others. Files are read on the first frame.
class AspectOverlay {
 public:
  AspectOverlay(const char* wideFile, const char* narrowFile) : wideFile_(wideFile), narrowFile_(narrowFile) {}

  // The picture at this size, rows packed. Null on the frame that finds its file missing: later frames get a
  // transparent picture, and so does every frame whose file holds no picture.
  const uint8_t* PictureFor(int32_t width, int32_t height);

 private:
  const char* wideFile_;  // static texts
  const char* narrowFile_;
  ImageHandle wideImage_;
  ImageHandle narrowImage_;
  ImageHandle frameImage_;
};

// What becomes of the source before it is covered: it is changed itself.
enum class OverlayTone {
  kKeep,
  kGray,
  kGreen,  // a dark grey with a bright green
};

// The picture, its alpha times the factor, over the toned source. Alpha becomes 255.
void DrawOverlay(FrameView src, FrameView dst, const uint8_t* picture, float alphaFactor, OverlayTone tone);

#endif  // KVX_SOURCE_ASPECT_OVERLAY_H_

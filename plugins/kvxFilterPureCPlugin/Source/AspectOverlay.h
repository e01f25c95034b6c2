// Pictures drawn for a screen shape, and the way in which they are laid over a frame.
#ifndef KVX_SOURCE_ASPECT_OVERLAY_H_
#define KVX_SOURCE_ASPECT_OVERLAY_H_

#include <cstdint>
#include <type_traits>

#include "framework/frame.h"
#include "framework/parallel.h"
#include "framework/pixels.h"
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

// A third of blue, green and red.
inline uint32_t ThirdOf(uint32_t pixel) {
  return ((pixel & 0xFF) + (pixel >> 8 & 0xFF) + (pixel >> 16 & 0xFF)) / 3;
}

// (s * (256 - a) + m * a + 255) >> 8 on blue, green and red of 32-bit pixels, two of them in one multiplication. Alpha
// becomes 255.
inline uint32_t LayOver(uint32_t s, uint32_t m, uint32_t a) {
  constexpr uint32_t kPair = 0x00FF00FF;
  const uint32_t redBlue = ((s & kPair) * (256 - a) + (m & kPair) * a + kPair) >> 8;
  const uint32_t green = ((s >> 8 & 0xFF) * (256 - a) + (m >> 8 & 0xFF) * a + 0xFF) >> 8;
  return 0xFF000000 | (redBlue & kPair) | green << 8;
}

// A tone that leaves the source as it is.
struct KeepSource {
  uint32_t operator()(uint32_t pixel) const { return pixel; }
};

// `tone` gives the pixel that is covered, and the source becomes that pixel.
template <typename Tone>
void DrawOverlay(FrameView src, FrameView dst, const uint8_t* picture, float alphaFactor, Tone tone) {
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) {
    for (int32_t y = begin; y < end; ++y) {
      uint8_t* in = src.Row(y);
      uint8_t* out = dst.Row(y);
      const uint8_t* over = picture + 4 * static_cast<ptrdiff_t>(dst.width) * y;
      for (int32_t x = 0; x < dst.width; ++x, in += 4, out += 4, over += 4) {
        const uint32_t s = tone(LoadPixel(in));
        const uint32_t m = LoadPixel(over);
        if constexpr (!std::is_same_v<Tone, KeepSource>) StorePixel(in, s);
        const uint32_t a = static_cast<uint32_t>(static_cast<int32_t>(static_cast<float>(m >> 24) * alphaFactor));
        StorePixel(out, LayOver(s, m, a));
      }
    }
  });
}

#endif  // KVX_SOURCE_ASPECT_OVERLAY_H_

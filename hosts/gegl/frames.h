// Frames of the effects from GEGL's tiles and back.
#ifndef KVX_HOSTS_GEGL_FRAMES_H_
#define KVX_HOSTS_GEGL_FRAMES_H_

#include <gegl.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "hostkit/plugin.h"

namespace kvx {

struct MemoryBlock {
  std::unique_ptr<uint8_t[]> bytes;
  size_t size = 0;
};

// The pixels of a rectangle of a picture: packed rows, bytes blue, green, red, alpha.
class Frame {
 public:
  // Throws std::bad_alloc. The pixels are not set.
  explicit Frame(const GeglRectangle& box);
  ~Frame();
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  // `format` has the bytes red, green, blue, alpha; GEGL converts where the buffer has another. Outside the buffer's
  // extent pixels are transparent black.
  void Read(GeglBuffer* buffer, const Babl* format);
  // Writes the part inside `region`.
  void Write(GeglBuffer* buffer, const Babl* format, const GeglRectangle& region) const;

  ImageView View() const { return {block_.bytes.get(), box_.width, box_.height, box_.width * 4}; }

 private:
  uint8_t* At(int x, int y) const;

  GeglRectangle box_;
  MemoryBlock block_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_GEGL_FRAMES_H_

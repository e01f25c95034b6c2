// Where libpng's writers put their bytes: into a std::string.
#ifndef KVX_CODECS_PNG_SINK_H_
#define KVX_CODECS_PNG_SINK_H_

#include <png.h>

#include <new>
#include <string>

namespace kvx {

// For png_set_write_fn with a pointer to the string. What goes wrong leaves by png_error; no exception goes through C.
inline void AppendPngBytes(png_structp png, png_bytep bytes, size_t count) {
  bool appended = true;
  try {
    static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(bytes), count);
  } catch (const std::bad_alloc&) {
    appended = false;
  }
  if (!appended) png_error(png, "out of memory");
}
inline void FlushPngBytes(png_structp) {}

}  // namespace kvx

#endif  // KVX_CODECS_PNG_SINK_H_

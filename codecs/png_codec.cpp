#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include "codecs/codec_impl.h"
#include "codecs/png_sink.h"

namespace kvx {

// The row interface, because the library's simplified one applies gamma and scales 16 bits in another way.

namespace {

// What goes wrong inside the library leaves it by longjmp; no exception may go through it.
struct Failure {
  char message[128] = "";
};

[[noreturn]] void OnError(png_structp png, png_const_charp message) {
  auto* failure = static_cast<Failure*>(png_get_error_ptr(png));
  std::snprintf(failure->message, sizeof failure->message, "%s", message);
  png_longjmp(png, 1);
}
void OnWarning(png_structp, png_const_charp) {}

void ReadBytes(png_structp png, png_bytep out, size_t count) {
  auto* rest = static_cast<std::string_view*>(png_get_io_ptr(png));
  if (rest->size() < count) png_error(png, "the file is cut short");
  std::memcpy(out, rest->data(), count);
  rest->remove_prefix(count);
}

struct Reader {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
};

struct Writer {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ~Writer() { png_destroy_write_struct(&png, &info); }
};

// Everything between setjmp and a possible longjmp; objects with destructors live in the callers.
bool ReadHeader(Reader& reader, std::string_view& rest) {
  if (setjmp(png_jmpbuf(reader.png))) return false;
  png_set_read_fn(reader.png, &rest, ReadBytes);
  png_set_user_limits(reader.png, kMaxPictureSide, kMaxPictureSide);
  // Texts, profiles and the like would be allocated as large as they claim to be. Nothing here depends on them.
  png_set_keep_unknown_chunks(reader.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  // Nor does the library then mind where they stand.
  if (rest.size() >= 16 && rest.substr(12, 4) != "IHDR") png_error(reader.png, "missing IHDR");
  png_read_info(reader.png, reader.info);
  png_set_expand(reader.png);
  png_set_strip_16(reader.png);
  png_set_gray_to_rgb(reader.png);
  png_set_bgr(reader.png);
  png_set_add_alpha(reader.png, 0xFF, PNG_FILLER_AFTER);
  return true;
}

bool ReadRows(Reader& reader, Picture& picture) {
  if (setjmp(png_jmpbuf(reader.png))) return false;
  const int passes = png_set_interlace_handling(reader.png);
  png_read_update_info(reader.png, reader.info);
  if (png_get_rowbytes(reader.png, reader.info) != static_cast<size_t>(picture.Step())) {
    png_error(reader.png, "unexpected row size");
  }
  const size_t step = static_cast<size_t>(picture.Step());
  for (int pass = 0; pass < passes; ++pass) {
    for (int32_t y = 0; y < picture.height; ++y) {
      // Memory grows with the rows that really come, not with what the header claims.
      if (pass == 0) picture.pixels.resize((static_cast<size_t>(y) + 1) * step);
      png_read_row(reader.png, picture.Row(y), nullptr);
    }
  }
  png_read_end(reader.png, nullptr);
  return true;
}

bool WriteAll(Writer& writer, const Picture& picture, std::string& out) {
  if (setjmp(png_jmpbuf(writer.png))) return false;
  png_set_write_fn(writer.png, &out, AppendPngBytes, FlushPngBytes);
  png_set_user_limits(writer.png, kMaxPictureSide, kMaxPictureSide);
  png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(writer.png, 3);
  png_set_filter(writer.png, 0, PNG_FILTER_SUB | PNG_FILTER_UP);
  png_write_info(writer.png, writer.info);
  png_set_bgr(writer.png);
  for (int32_t y = 0; y < picture.height; ++y) png_write_row(writer.png, picture.Row(y));
  png_write_end(writer.png, nullptr);
  return true;
}

}  // namespace

bool DecodePng(std::string_view bytes, Picture& picture, std::string& error) {
  Failure failure;
  Reader reader;
  reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &failure, OnError, OnWarning);
  if (reader.png) reader.info = png_create_info_struct(reader.png);
  if (!reader.info) {
    error = "out of memory";
    return false;
  }
  if (!ReadHeader(reader, bytes)) {
    error = std::string("broken PNG: ") + failure.message;
    return false;
  }
  const uint32_t width = png_get_image_width(reader.png, reader.info);
  const uint32_t height = png_get_image_height(reader.png, reader.info);
  if (!CheckPictureSize(width, height, error)) return false;
  picture = Picture();
  picture.width = static_cast<int32_t>(width);
  picture.height = static_cast<int32_t>(height);
  if (!ReadRows(reader, picture)) {
    error = std::string("broken PNG: ") + failure.message;
    return false;
  }
  return true;
}

std::string EncodePng(const Picture& picture) {
  Failure failure;
  Writer writer;
  std::string out;
  if (picture.width <= 0 || picture.height <= 0) return out;
  writer.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &failure, OnError, OnWarning);
  if (writer.png) writer.info = png_create_info_struct(writer.png);
  if (!writer.info || !WriteAll(writer, picture, out)) out.clear();
  return out;
}

}  // namespace kvx

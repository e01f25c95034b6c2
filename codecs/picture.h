// A decoded picture, and the file formats that it can come from and go to.
#ifndef KVX_CODECS_PICTURE_H_
#define KVX_CODECS_PICTURE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kvx {

// 32-bit pixels, bytes blue, green, red, alpha; rows follow each other without padding.
struct Picture {
  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> pixels;

  Picture() = default;
  Picture(int32_t w, int32_t h) : width(w), height(h), pixels(static_cast<size_t>(w) * static_cast<size_t>(h) * 4) {}

  // Gives it this size; what it holds then is unspecified. Memory that is large enough is used again.
  void Reshape(int32_t w, int32_t h) {
    width = w;
    height = h;
    pixels.resize(static_cast<size_t>(w) * static_cast<size_t>(h) * 4);
  }

  int32_t Step() const { return width * 4; }
  uint8_t* Row(int32_t y) { return pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(Step()); }
  const uint8_t* Row(int32_t y) const { return pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(Step()); }
};

// Pictures whose header asks for more are refused before anything of their size is allocated.
inline constexpr int32_t kMaxPictureSide = 32768;
inline constexpr int64_t kMaxPicturePixels = int64_t{1} << 28;

enum class PictureFormat { kUnknown, kPng, kJpeg };

// By the first bytes, whatever the file is called.
PictureFormat DetectFormat(std::string_view bytes);

// Decodes a PNG (any colour type and depth; 16 bits are cut to 8) or a JPEG (grey or colour; alpha 255). False, with a
// reason in `error` and `picture` in an unspecified but valid state, if the bytes are not a whole and sound picture.
bool DecodePicture(std::string_view bytes, Picture& picture, std::string& error);

// The file's bytes, alpha included; empty if it cannot be encoded.
std::string EncodePng(const Picture& picture);

// The same pixels in as few bytes as the format allows within reason: fewer channels or a palette where that says
// everything, and as much time as it takes. For files that are written once and read often.
std::string EncodeSmallPng(const Picture& picture);

// Alpha is dropped. `quality` from 1 to 100.
std::string EncodeJpeg(const Picture& picture, int quality = 95);

}  // namespace kvx

#endif  // KVX_CODECS_PICTURE_H_

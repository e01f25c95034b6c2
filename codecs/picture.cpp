#include "codecs/picture.h"

#include "codecs/codec_impl.h"

namespace kvx {

PictureFormat DetectFormat(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return PictureFormat::kPng;
  if (bytes.starts_with("\xFF\xD8\xFF")) return PictureFormat::kJpeg;
  return PictureFormat::kUnknown;
}

bool DecodePicture(std::string_view bytes, Picture& picture, std::string& error) {
  switch (DetectFormat(bytes)) {
    case PictureFormat::kPng:
      return DecodePng(bytes, picture, error);
    case PictureFormat::kJpeg:
      return DecodeJpeg(bytes, picture, error);
    case PictureFormat::kUnknown:
      break;
  }
  error = bytes.empty() ? "the file is empty" : "neither PNG nor JPEG";
  return false;
}

bool CheckPictureSize(int64_t width, int64_t height, std::string& error) {
  if (width > 0 && height > 0 && width <= kMaxPictureSide && height <= kMaxPictureSide &&
      width * height <= kMaxPicturePixels) {
    return true;
  }
  error = "the picture is too large: " + std::to_string(width) + " by " + std::to_string(height);
  return false;
}

}  // namespace kvx

#include "platform/image.h"

#include <exception>
#include <string>

#include "codecs/picture.h"
#include "platform/files.h"
#include "platform/stretch.h"

using kvx::DecodePicture;
using kvx::Picture;

struct QKImage {
  Picture picture;
};

namespace {

constexpr int32_t kStretchSmooth = 2;

bool IsEmpty(const Picture& picture) {
  return picture.pixels.empty();
}

}  // namespace

QKImage* QK_ImageCreate() {
  return new QKImage;
}

void QK_ImageDestroy(QKImage* image) {
  delete image;
}

int32_t QK_ImageLoad(QKImage* image, std::u16string_view path) {
  try {
    const auto bytes = ReadFile(path);
    return QK_ImageLoadBytes(image, bytes ? *bytes : std::string());
  } catch (const std::exception&) {  // no memory
    image->picture = Picture();
    return 0;
  }
}

int32_t QK_ImageLoadBytes(QKImage* image, std::string_view bytes) {
  try {
    std::string error;
    if (DecodePicture(bytes, image->picture, error)) return 1;
  } catch (const std::exception&) {
  }
  image->picture = Picture();
  return 0;
}

int32_t QK_ImageAlloc(QKImage* image, int32_t width, int32_t height, int32_t bits) {
  image->picture = Picture();
  if (bits != 32 || width <= 0 || height <= 0 || width > kvx::kMaxPictureSide || height > kvx::kMaxPictureSide ||
      int64_t{width} * height > kvx::kMaxPicturePixels) {
    return 0;
  }
  try {
    image->picture = Picture(width, height);
    return 1;
  } catch (const std::exception&) {
    return 0;
  }
}

uint8_t* QK_ImageBits(QKImage* image) {
  return IsEmpty(image->picture) ? nullptr : image->picture.pixels.data();
}
int32_t QK_ImageStep(const QKImage* image) {
  return image->picture.Step();
}
int32_t QK_ImageWidth(const QKImage* image) {
  return image->picture.width;
}
int32_t QK_ImageHeight(const QKImage* image) {
  return image->picture.height;
}

int32_t QK_ImageStretch(const QKImage* from, QKImage* onto, int32_t mode) {
  const Picture& source = from->picture;
  Picture& target = onto->picture;
  if (mode != kStretchSmooth || IsEmpty(source) || IsEmpty(target)) return 0;
  const StretchSource in{source.pixels.data(), source.width, source.height, source.Step()};
  const StretchTarget out{target.pixels.data(), target.width, target.height, target.Step()};
  try {
    if (target.width == source.width && target.height == source.height) {
      target.pixels = source.pixels;
    } else if (target.width > source.width || target.height > source.height) {
      StretchLinear(in, out, 4);
    } else {
      StretchAreas(in, out);
    }
    return 1;
  } catch (const std::exception&) {  // no memory: no half-made picture is left to be taken for the whole
    target = Picture();
    return 0;
  }
}

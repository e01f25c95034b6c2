#include "platform/image.h"

#include <exception>
#include <opencv2/imgproc.hpp>
#include <string>

#include "codecs/picture.h"
#include "platform/files.h"
#include "platform/workers.h"

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

cv::Mat View(const Picture& picture) {
  return cv::Mat(picture.height, picture.width, CV_8UC4, const_cast<uint8_t*>(picture.pixels.data()));
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
  const bool grows = target.width > source.width || target.height > source.height;
  try {
    if (target.width == source.width && target.height == source.height) {
      target.pixels = source.pixels;
    } else {
      cv::Mat out = View(target);
      WithWorkers([&] { cv::resize(View(source), out, out.size(), 0, 0, grows ? cv::INTER_LINEAR : cv::INTER_AREA); });
    }
    return 1;
  } catch (const std::exception&) {  // no memory: no half-made picture is left to be taken for the whole
    target = Picture();
    return 0;
  }
}

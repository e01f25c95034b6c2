// The image layer: pictures of 32-bit pixels (bytes blue, green, red, alpha, rows unpadded) behind a handle. Whoever
// creates a handle destroys it. Failures, want of memory for pixels included, are a 0 and nothing more.
#ifndef KVX_PLATFORM_IMAGE_H_
#define KVX_PLATFORM_IMAGE_H_

#include <cstdint>
#include <memory>
#include <string_view>

struct QKImage;

// A new empty image: no pixels, size 0 by 0.
QKImage* QK_ImageCreate();

// Null is harmless.
void QK_ImageDestroy(QKImage* image);

// Decodes a PNG or JPEG file, told apart by content, at its own size. 0 on failure, and the image is empty then. A JPEG
// gets alpha 255.
int32_t QK_ImageLoad(QKImage* image, std::u16string_view path);

// The same from a file's bytes: who must have a file early and its picture late reads now and decodes then.
int32_t QK_ImageLoadBytes(QKImage* image, std::string_view bytes);

// Replaces what the image held by transparent black of this size. `bits` must be 32. 0 on failure, and the image is
// empty then, as after a failed load.
int32_t QK_ImageAlloc(QKImage* image, int32_t width, int32_t height, int32_t bits);

// Null for an empty image. Valid until the image is loaded, allocated or destroyed.
uint8_t* QK_ImageBits(QKImage* image);

int32_t QK_ImageStep(const QKImage* image);
int32_t QK_ImageWidth(const QKImage* image);
int32_t QK_ImageHeight(const QKImage* image);

// Scales `from` onto `onto`, whose size stays. Mode 2, the only one: averages areas when neither side grows,
// interpolates linearly otherwise, copies when the sizes are equal. 0, and `onto` as it was, if either is empty.
int32_t QK_ImageStretch(const QKImage* from, QKImage* onto, int32_t mode);

struct ImageDestroyer {
  void operator()(QKImage* image) const { QK_ImageDestroy(image); }
};
using ImageHandle = std::unique_ptr<QKImage, ImageDestroyer>;

#endif  // KVX_PLATFORM_IMAGE_H_

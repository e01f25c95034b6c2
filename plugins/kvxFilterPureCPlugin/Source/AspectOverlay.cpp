#include "Source/AspectOverlay.h"

#include <string>

#include "framework/material_path.h"
#include "platform/files.h"

namespace {

// Only an exact 16:9 counts: 1366 by 768 does not.
bool IsWide(int32_t width, int32_t height) {
  return static_cast<double>(width) / static_cast<double>(height) == 1.7777777777777777;
}

}  // namespace

const uint8_t* AspectOverlay::PictureFor(int32_t width, int32_t height) {
  const bool wide = IsWide(width, height);
  ImageHandle& decoded = wide ? wideImage_ : narrowImage_;
  if (!decoded) {
    const std::u16string path = MaterialPath(wide ? wideFile_ : narrowFile_);
    decoded.reset(QK_ImageCreate());
    // The handle stays: the file is not looked for again.
    if (!FileExists(path)) return nullptr;
    QK_ImageLoad(decoded.get(), path);
  }
  if (!frameImage_) frameImage_.reset(QK_ImageCreate());
  if (QK_ImageWidth(frameImage_.get()) != width || QK_ImageHeight(frameImage_.get()) != height) {
    QK_ImageAlloc(frameImage_.get(), width, height, 32);
    QK_ImageStretch(decoded.get(), frameImage_.get(), 2);
  }
  return QK_ImageBits(frameImage_.get());
}

#include "Source/MaterialFile.h"

#include <new>
#include <utility>

#include "framework/material_path.h"
#include "platform/files.h"

void MaterialFile::Read(const char* fileName) {
  bytes_ = std::string();
  if (!fileName) return;
  try {
    const std::u16string path = MaterialPath(fileName);
    if (FileExists(path)) bytes_ = ReadFile(path).value_or(std::string());
  } catch (const std::bad_alloc&) {  // as good as no file
  }
}

ImageHandle MaterialFile::TakePicture(int32_t width, int32_t height) {
  const std::string bytes = std::exchange(bytes_, std::string());
  if (bytes.empty()) return nullptr;
  try {
    const ImageHandle decoded(QK_ImageCreate());
    ImageHandle picture(QK_ImageCreate());
    if (QK_ImageLoadBytes(decoded.get(), bytes) && QK_ImageAlloc(picture.get(), width, height, 32) &&
        QK_ImageStretch(decoded.get(), picture.get(), 2)) {
      return picture;
    }
  } catch (const std::bad_alloc&) {
  }
  return nullptr;
}

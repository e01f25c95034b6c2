#include "Source/MaterialFile.h"

#include <new>
#include <utility>

#include "framework/material_path.h"
#include "platform/files.h"

namespace {

std::string ReadIfThere(const std::u16string& path) {
  try {
    if (FileExists(path)) return ReadFile(path).value_or(std::string());
  } catch (const std::bad_alloc&) {  // as good as no file
  }
  return {};
}

}  // namespace

void MaterialFile::Read(const char* fileName, int32_t width, int32_t height) {
  path_.clear();
  bytes_.clear();
  if (!fileName) return;
  try {
    path_ = MaterialPath(fileName);
  } catch (const std::bad_alloc&) {
    return;
  }
  if (width != 1 || height != 1) bytes_ = ReadIfThere(std::exchange(path_, std::u16string()));
}

ImageHandle MaterialFile::TakePicture(int32_t width, int32_t height) {
  if (!path_.empty()) bytes_ = ReadIfThere(std::exchange(path_, std::u16string()));
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

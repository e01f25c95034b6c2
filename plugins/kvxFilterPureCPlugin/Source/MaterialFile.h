// The material that an effect's set-up names and its first frame needs.
#ifndef KVX_SOURCE_MATERIAL_FILE_H_
#define KVX_SOURCE_MATERIAL_FILE_H_

#include <cstdint>
#include <string>

#include "platform/image.h"

// A host makes processors by the dozen only to ask what they are. So the file is read when the processor is set up and
// stays what it was then, and decoded when the first frame wants it. Processors of one pixel are made for each effect
// at start-up and hardly ever draw: for them the file waits for the first frame, too.
class MaterialFile {
 public:
  // The file of this name in the material directory, for a frame of this size; nothing if there is none, or for null.
  void Read(const char* fileName, int32_t width, int32_t height);

  // The picture, stretched to this size. Null if the file holds none, or after the first call: the bytes are let go.
  ImageHandle TakePicture(int32_t width, int32_t height);

 private:
  std::u16string path_;  // while it is not read
  std::string bytes_;
};

#endif  // KVX_SOURCE_MATERIAL_FILE_H_

// Pictures from files and into them.
#ifndef KVX_HOSTS_KVX_PICTURE_FILE_H_
#define KVX_HOSTS_KVX_PICTURE_FILE_H_

#include <memory>
#include <string>

#include "codecs/picture.h"
#include "hosts/kvx/input_file.h"
#include "hosts/kvx/picture_metadata.h"

namespace kvx {

struct LoadedPicture {
  Picture picture;                                  // upright
  std::shared_ptr<const PictureMetadata> metadata;  // for the upright picture; may be null
};

// The largest side of a frame.
inline constexpr int32_t kMaxFrameSide = 16384;

// Reads the rest of the file as PNG or JPEG. Throws Error.
LoadedPicture LoadPicture(InputFile& file);
Picture ReadPicture(const std::string& path);

bool IsOpaque(const Picture& picture);

// True for names that end as pictures do that can be written: .png, .jpg, .jpeg.
bool IsPictureName(const std::string& path);

// The bytes of a PNG or JPEG file by the ending of `path`. `metadata` may be null. What the format cannot hold is
// noted. Throws Error.
std::string EncodePicture(const Picture& picture, const std::string& path, const PictureMetadata* metadata);

// Writes such a file, which appears under its name only when it is whole. Throws Error.
void WritePicture(const Picture& picture, const std::string& path, bool overwrite = false,
                  const PictureMetadata* metadata = nullptr);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_PICTURE_FILE_H_

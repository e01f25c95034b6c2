// The two decoders behind DecodePicture.
#ifndef KVX_CODECS_CODEC_IMPL_H_
#define KVX_CODECS_CODEC_IMPL_H_

#include <string>
#include <string_view>

#include "codecs/picture.h"

namespace kvx {

bool DecodePng(std::string_view bytes, Picture& picture, std::string& error);
bool DecodeJpeg(std::string_view bytes, Picture& picture, std::string& error);

// False, with the reason, for a size beyond the limits.
bool CheckPictureSize(int64_t width, int64_t height, std::string& error);

}  // namespace kvx

#endif  // KVX_CODECS_CODEC_IMPL_H_

// The two halves of picture_metadata.h.
#ifndef KVX_HOSTS_KVX_METADATA_FORMATS_H_
#define KVX_HOSTS_KVX_METADATA_FORMATS_H_

#include <string>
#include <string_view>
#include <vector>

#include "hosts/kvx/picture_metadata.h"

namespace kvx {

void ReadPngMetadata(std::string_view file, PictureMetadata& metadata);
void ReadJpegMetadata(std::string_view file, PictureMetadata& metadata);
std::string AddPngMetadata(std::string file, const PictureMetadata& metadata, std::vector<std::string>& lost);
std::string AddJpegMetadata(std::string file, const PictureMetadata& metadata, std::vector<std::string>& lost);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_METADATA_FORMATS_H_

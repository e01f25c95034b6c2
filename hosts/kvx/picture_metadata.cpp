#include "hosts/kvx/picture_metadata.h"

#include "hosts/kvx/metadata_formats.h"

namespace kvx {

bool PictureMetadata::Empty() const {
  return exif.empty() && icc.empty() && xmp.empty() && photoshop.empty() && texts.empty();
}

PictureMetadata ReadMetadata(std::string_view file) {
  PictureMetadata metadata;
  metadata.format = DetectFormat(file);
  if (metadata.format == PictureFormat::kPng) ReadPngMetadata(file, metadata);
  if (metadata.format == PictureFormat::kJpeg) ReadJpegMetadata(file, metadata);
  return metadata;
}

std::string AddMetadata(std::string file, const PictureMetadata& metadata, std::vector<std::string>& lost) {
  PictureMetadata fitting = metadata;
  // The result is in colour whatever the source was.
  if (metadata.icc.size() >= 20 && metadata.icc.compare(16, 4, "RGB ") != 0) {
    fitting.icc.clear();
    lost.emplace_back("ICC profile, which is not one of RGB pictures");
  }
  return DetectFormat(file) == PictureFormat::kPng ? AddPngMetadata(std::move(file), fitting, lost)
                                                   : AddJpegMetadata(std::move(file), fitting, lost);
}

}  // namespace kvx

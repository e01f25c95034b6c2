// What a PNG or JPEG file says beside its pixels.
#ifndef KVX_HOSTS_KVX_PICTURE_METADATA_H_
#define KVX_HOSTS_KVX_PICTURE_METADATA_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/picture.h"

namespace kvx {

// Pixels per metre and so on, as both formats tell it.
struct Density {
  enum Unit { kNone, kRatio, kPerInch, kPerMetre, kPerCentimetre } unit = kNone;
  uint32_t x = 0;
  uint32_t y = 0;
};

struct PictureText {
  std::string key;   // empty for a plain comment
  std::string text;  // UTF-8
};

struct PictureMetadata {
  PictureFormat format = PictureFormat::kUnknown;  // where it comes from
  std::string exif;                                // a TIFF structure
  std::string icc;
  std::string xmp;
  std::string photoshop;  // JPEG's APP13, which holds IPTC
  Density density;
  std::vector<PictureText> texts;
  std::vector<std::string> colorChunks;  // PNG's gAMA, cHRM and sRGB, whole
  std::string time;                      // PNG's tIME, its content
  int bitDepth = 8;

  // True if nothing of it would be missed.
  bool Empty() const;
};

// Never fails: what cannot be understood is not there.
PictureMetadata ReadMetadata(std::string_view file);

// `file`, a PNG or JPEG that says nothing yet, with everything in `metadata` that its format can hold. `lost` gets a
// word for each thing that it cannot hold.
std::string AddMetadata(std::string file, const PictureMetadata& metadata, std::vector<std::string>& lost);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_PICTURE_METADATA_H_

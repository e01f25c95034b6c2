#include <algorithm>
#include <cmath>
#include <map>

#include "hosts/kvx/metadata_formats.h"

namespace kvx {

namespace {

using namespace std::string_view_literals;

constexpr auto kExifMark = "Exif\0\0"sv;
constexpr auto kXmpMark = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr auto kIccMark = "ICC_PROFILE\0"sv;
constexpr auto kPhotoshopMark = "Photoshop 3.0\0"sv;
constexpr auto kJfifMark = "JFIF\0"sv;
constexpr int kApp0 = 0xE0, kApp1 = 0xE1, kApp2 = 0xE2, kApp13 = 0xED, kComment = 0xFE, kStartOfScan = 0xDA;
constexpr size_t kLargestSegment = 65533;
constexpr size_t kJfifEnd = 20;  // behind the start of the image and JFIF's own segment
constexpr size_t kDensityAt = 13;

size_t Big16(std::string_view bytes) {
  return static_cast<size_t>(static_cast<uint8_t>(bytes[0]) << 8 | static_cast<uint8_t>(bytes[1]));
}

std::string Big16(size_t value) {
  return {static_cast<char>(value >> 8), static_cast<char>(value)};
}

std::string Segment(int marker, std::string_view mark, std::string_view content) {
  return std::string("\xFF") + static_cast<char>(marker) + Big16(mark.size() + content.size() + 2) + std::string(mark) +
         std::string(content);
}

// False if one segment cannot hold it.
bool AddSegment(std::string& segments, int marker, std::string_view mark, std::string_view content) {
  if (mark.size() + content.size() > kLargestSegment) return false;
  if (!content.empty()) segments += Segment(marker, mark, content);
  return true;
}

void ReadDensity(std::string_view jfif, Density& density) {
  if (jfif.size() < 12) return;
  static constexpr Density::Unit kUnits[] = {Density::kRatio, Density::kPerInch, Density::kPerCentimetre};
  const auto unit = static_cast<uint8_t>(jfif[7]);
  density = {unit <= 2 ? kUnits[unit] : Density::kNone, static_cast<uint32_t>(Big16(jfif.substr(8))),
             static_cast<uint32_t>(Big16(jfif.substr(10)))};
  // What everybody writes who knows none.
  if (density.unit == Density::kRatio && density.x == 1 && density.y == 1) density.unit = Density::kNone;
}

// JFIF counts per inch or centimetre, in 16 bits.
std::string DensityBytes(Density density) {
  if (density.unit == Density::kPerMetre) {
    const auto inch = [](uint32_t value) { return static_cast<uint32_t>(std::lround(value * 0.0254)); };
    density = {Density::kPerInch, inch(density.x), inch(density.y)};
  }
  while (density.x > 65535 || density.y > 65535) density = {density.unit, density.x / 2, density.y / 2};
  const char unit = density.unit == Density::kRatio ? 0 : density.unit == Density::kPerInch ? 1 : 2;
  return unit + Big16(density.x) + Big16(density.y);
}

}  // namespace

void ReadJpegMetadata(std::string_view file, PictureMetadata& metadata) {
  std::map<int, std::string> profile;  // in its parts
  size_t at = 2;
  while (at + 4 <= file.size() && file[at] == '\xFF') {
    const int marker = static_cast<uint8_t>(file[at + 1]);
    if (marker == 0xFF) {
      ++at;
      continue;
    }
    const size_t size = Big16(file.substr(at + 2));
    if (marker == kStartOfScan || size < 2 || size > file.size() - at - 2) break;
    const std::string_view content = file.substr(at + 4, size - 2);
    if (marker == kApp0 && content.starts_with(kJfifMark)) ReadDensity(content, metadata.density);
    if (marker == kApp1 && content.starts_with(kExifMark)) metadata.exif = content.substr(kExifMark.size());
    if (marker == kApp1 && content.starts_with(kXmpMark)) metadata.xmp = content.substr(kXmpMark.size());
    if (marker == kApp13 && content.starts_with(kPhotoshopMark)) {
      metadata.photoshop += content.substr(kPhotoshopMark.size());
    }
    if (marker == kComment) metadata.texts.push_back({"", std::string(content)});
    if (marker == kApp2 && content.starts_with(kIccMark) && content.size() > kIccMark.size() + 2) {
      profile[static_cast<uint8_t>(content[kIccMark.size()])] = content.substr(kIccMark.size() + 2);
    }
    at += size + 2;
  }
  for (const auto& [number, part] : profile) metadata.icc += part;
}

std::string AddJpegMetadata(std::string file, const PictureMetadata& metadata, std::vector<std::string>& lost) {
  std::string segments;
  if (!AddSegment(segments, kApp1, kExifMark, metadata.exif)) lost.emplace_back("EXIF");
  if (!AddSegment(segments, kApp1, kXmpMark, metadata.xmp)) lost.emplace_back("XMP");
  const size_t part = kLargestSegment - kIccMark.size() - 2;
  const size_t parts = (metadata.icc.size() + part - 1) / part;
  if (parts > 255) lost.emplace_back("ICC profile");
  for (size_t i = 0; i < parts && parts <= 255; ++i) {
    const std::string count = {static_cast<char>(i + 1), static_cast<char>(parts)};
    AddSegment(segments, kApp2, kIccMark, count + metadata.icc.substr(i * part, part));
  }
  for (size_t i = 0; i < metadata.photoshop.size(); i += kLargestSegment - kPhotoshopMark.size()) {
    AddSegment(segments, kApp13, kPhotoshopMark, metadata.photoshop.substr(i, kLargestSegment - kPhotoshopMark.size()));
  }
  for (const PictureText& text : metadata.texts) {
    const std::string line = text.key.empty() ? text.text : text.key + ": " + text.text;
    if (!AddSegment(segments, kComment, "", line)) lost.push_back("text \"" + text.key + "\"");
  }
  const bool srgb = std::any_of(metadata.colorChunks.begin(), metadata.colorChunks.end(),
                                [](const std::string& chunk) { return chunk.substr(4, 4) == "sRGB"; });
  if (metadata.icc.empty() && !metadata.colorChunks.empty() && !srgb) lost.emplace_back("gamma and primaries");
  if (!metadata.time.empty()) lost.emplace_back("time of change");
  if (metadata.density.unit != Density::kNone) file.replace(kDensityAt, 5, DensityBytes(metadata.density));
  file.insert(kJfifEnd, segments);
  return file;
}

}  // namespace kvx

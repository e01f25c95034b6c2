#include "hosts/kvx/picture_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <opencv2/core.hpp>
#include <utility>

#include "hostkit/error.h"
#include "hostkit/text.h"
#include "hosts/kvx/exif.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/output_file.h"

namespace kvx {

namespace {

// What a deflate stream can grow to at most.
constexpr int64_t kLargestGrowth = 1032;

// Before anything of the size that the header claims is allocated.
void CheckPngHeader(const std::string& name, std::string_view bytes) {
  if (bytes.size() < 26) return;
  const auto big32 = [&](size_t at) {
    int64_t value = 0;
    for (size_t i = at; i < at + 4; ++i) value = value << 8 | static_cast<uint8_t>(bytes[i]);
    return value;
  };
  const int64_t width = big32(16), height = big32(20);
  if (width > kMaxFrameSide || height > kMaxFrameSide) {
    throw Error(fmt::format("{}: {} by {} is larger than {} by {}", name, width, height, kMaxFrameSide, kMaxFrameSide));
  }
  const int64_t bits = width * static_cast<uint8_t>(bytes[24]);  // at least: one channel
  if (bits * height / 8 / kLargestGrowth > static_cast<int64_t>(bytes.size())) {
    throw Error(fmt::format("{}: broken PNG: too small a file for {} by {}", name, width, height));
  }
}

// EXIF's eight orientations: how the stored picture is turned and mirrored to stand upright.
Picture Upright(Picture picture, int orientation) {
  if (orientation == 1) return picture;
  const cv::Mat from(picture.height, picture.width, CV_8UC4, picture.pixels.data());
  const bool swapped = orientation >= 5;
  Picture turned(swapped ? picture.height : picture.width, swapped ? picture.width : picture.height);
  cv::Mat to(turned.height, turned.width, CV_8UC4, turned.pixels.data());
  switch (orientation) {
    case 2:
      cv::flip(from, to, 1);
      break;
    case 3:
      cv::rotate(from, to, cv::ROTATE_180);
      break;
    case 4:
      cv::flip(from, to, 0);
      break;
    case 5:
      cv::transpose(from, to);
      break;
    case 6:
      cv::rotate(from, to, cv::ROTATE_90_CLOCKWISE);
      break;
    case 7: {
      cv::Mat mirrored;
      cv::transpose(from, mirrored);
      cv::rotate(mirrored, to, cv::ROTATE_180);
      break;
    }
    case 8:
      cv::rotate(from, to, cv::ROTATE_90_COUNTERCLOCKWISE);
      break;
  }
  return turned;
}

// XMP may repeat the orientation, as an attribute or as an element.
void MakeXmpUpright(std::string& xmp) {
  for (const char* mark : {"tiff:Orientation=\"", "<tiff:Orientation>"}) {
    const size_t at = xmp.find(mark);
    if (at == std::string::npos) continue;
    const size_t digit = at + std::string_view(mark).size();
    if (digit < xmp.size() && xmp[digit] >= '1' && xmp[digit] <= '8') xmp[digit] = '1';
  }
}

}  // namespace

LoadedPicture LoadPicture(InputFile& file) {
  const std::string bytes = file.ReadAll(kLargestSmallFile);
  const PictureFormat format = DetectFormat(bytes);
  if (format == PictureFormat::kPng) CheckPngHeader(file.Name(), bytes);
  LoadedPicture loaded;
  std::string reason;
  if (!DecodePicture(bytes, loaded.picture, reason)) throw Error(fmt::format("{}: {}", file.Name(), reason));
  if (loaded.picture.width > kMaxFrameSide || loaded.picture.height > kMaxFrameSide) {
    throw Error(fmt::format("{}: larger than {} by {}", file.Name(), kMaxFrameSide, kMaxFrameSide));
  }
  auto metadata = std::make_shared<PictureMetadata>(ReadMetadata(bytes));
  if (metadata->bitDepth > 8) {
    Note(fmt::format("{} bits per channel become 8: the effects work on 8 bits", metadata->bitDepth));
  }
  loaded.picture = Upright(std::move(loaded.picture), ExifOrientation(metadata->exif));
  MakeExifUpright(metadata->exif, loaded.picture.width, loaded.picture.height);
  MakeXmpUpright(metadata->xmp);
  loaded.metadata = std::move(metadata);
  return loaded;
}

Picture ReadPicture(const std::string& path) {
  InputFile file(path);
  return LoadPicture(file).picture;
}

bool IsOpaque(const Picture& picture) {
  for (size_t i = 3; i < picture.pixels.size(); i += 4) {
    if (picture.pixels[i] != 255) return false;
  }
  return true;
}

bool IsPictureName(const std::string& path) {
  const std::string ending = Lower(std::filesystem::path(path).extension().string());
  return ending == ".png" || ending == ".jpg" || ending == ".jpeg";
}

std::string EncodePicture(const Picture& picture, const std::string& path, const PictureMetadata* metadata) {
  if (!IsPictureName(path)) throw UsageError(fmt::format("{}: pictures are written as .png, .jpg or .jpeg", path));
  const bool png = Lower(std::filesystem::path(path).extension().string()) == ".png";
  std::string bytes = png ? EncodePng(picture) : EncodeJpeg(picture);
  if (bytes.empty()) throw Error(fmt::format("{}: cannot be encoded", path));
  if (!png && !IsOpaque(picture)) Note("the transparency is lost: JPEG has none");
  if (!metadata) return bytes;
  std::vector<std::string> lost;
  bytes = AddMetadata(std::move(bytes), *metadata, lost);
  for (const std::string& what : lost) Note(fmt::format("not kept in a {}: {}", png ? "PNG" : "JPEG", what));
  return bytes;
}

void WritePicture(const Picture& picture, const std::string& path, bool overwrite, const PictureMetadata* metadata) {
  OutputFile file(path, overwrite);
  file.Write(EncodePicture(picture, path, metadata));
  file.Commit();
}

}  // namespace kvx

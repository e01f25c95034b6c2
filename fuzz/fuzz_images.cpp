// The input is a picture file. What decodes is stretched, written and read back.
#include <turbojpeg.h>
#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>

#include "codecs/picture.h"
#include "platform/image.h"

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

using namespace kvx;

namespace {

constexpr int64_t kDullPixels = int64_t{1} << 16;
constexpr size_t kPngSignature = 8;

uint32_t BigEndian(const char* at) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(at[i]);
  return value;
}

struct Claim {
  int64_t pixels = 0;
  std::string kind;
};

Claim ClaimOf(std::string_view bytes) {
  if (DetectFormat(bytes) == PictureFormat::kPng && bytes.size() >= 29) {
    const auto pixels = static_cast<double>(BigEndian(&bytes[16])) * BigEndian(&bytes[20]);
    return {static_cast<int64_t>(std::min(pixels, 1e18)), "PNG" + std::string(bytes.substr(24, 5))};
  }
  if (DetectFormat(bytes) != PictureFormat::kJpeg) return {};
  const tjhandle handle = tjInitDecompress();
  int width = 0, height = 0, subsampling = 0, colorSpace = 0;
  tjDecompressHeader3(handle, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), &width, &height,
                      &subsampling, &colorSpace);
  tjDestroy(handle);
  return {int64_t{width} * height,
          "JPEG" + std::string(1, static_cast<char>('a' + subsampling)) + static_cast<char>('a' + colorSpace)};
}

// A sound picture of many pixels only costs time. A claim without the bytes for it must cost nothing, so it is tried;
// but in an arithmetically coded JPEG nobody can tell.
bool IsDull(std::string_view bytes, int64_t pixels) {
  const auto has = [bytes](std::string_view marker) { return bytes.find(marker) != std::string_view::npos; };
  if (pixels <= kDullPixels || pixels > kMaxPicturePixels) return false;
  return pixels / 512 <= static_cast<int64_t>(bytes.size()) || has("\xFF\xC9") || has("\xFF\xCA");
}

// The libraries are not instrumented. So that the fuzzer sees what they said, an error counts by its text and a sound
// picture by its kind.
__attribute__((section("__libfuzzer_extra_counters"))) uint8_t g_seen[1 << 12];

void Mark(std::string said) {
  if (const size_t last = said.rfind(": "); last != std::string::npos) said.erase(0, last);
  std::erase_if(said, [](char c) { return c >= '0' && c <= '9'; });
  g_seen[std::hash<std::string>()(said) % std::size(g_seen)] = 1;
}

void Require(bool holds) {
  if (!holds) std::abort();
}

// Sizes come from the last bytes, which no decoder reads in a sound file.
void Stretch(const QKImage* image, std::string_view bytes) {
  const ImageHandle target(QK_ImageCreate());
  const int32_t width = 1 + static_cast<uint8_t>(bytes[bytes.size() - 1]) % 80;
  const int32_t height = 1 + static_cast<uint8_t>(bytes[bytes.size() - 2]) % 80;
  Require(QK_ImageStretch(image, target.get(), 2) == 0);
  Require(QK_ImageAlloc(target.get(), width, height, 32) == 1);
  Require(QK_ImageStretch(image, target.get(), 2) == 1);
  Require(QK_ImageWidth(target.get()) == width && QK_ImageHeight(target.get()) == height);
}

void WriteAndReadBack(const Picture& picture) {
  Picture again;
  std::string error;
  Require(DecodePicture(EncodePng(picture), again, error));
  Require(again.width == picture.width && again.height == picture.height && again.pixels == picture.pixels);
  Require(DecodePicture(EncodeJpeg(picture), again, error));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const Claim claim = ClaimOf(bytes);
  if (IsDull(bytes, claim.pixels)) return -1;
  const ImageHandle image(QK_ImageCreate());
  Picture picture;
  std::string error;
  const bool decodes = DecodePicture(bytes, picture, error);
  Mark(decodes ? claim.kind : error);
  Require(decodes == error.empty());
  Require(QK_ImageLoadBytes(image.get(), bytes) == (decodes ? 1 : 0));
  Require((QK_ImageBits(image.get()) != nullptr) == decodes);
  if (!decodes) return 0;
  Require(std::memcmp(QK_ImageBits(image.get()), picture.pixels.data(), picture.pixels.size()) == 0);
  Stretch(image.get(), bytes);
  WriteAndReadBack(picture);
  return 0;
}

// Most changes to a PNG end at a checksum. Three times in four the checksums are made right again.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
  size = LLVMFuzzerMutate(data, size, maxSize);
  char* bytes = reinterpret_cast<char*>(data);
  if (seed % 4 == 0 || DetectFormat({bytes, size}) != PictureFormat::kPng) return size;
  for (size_t at = kPngSignature; at + 12 <= size;) {
    const size_t length = BigEndian(bytes + at);
    if (length > size - at - 12) break;
    uint8_t* checksum = data + at + 8 + length;
    const uLong crc = crc32(0, data + at + 4, static_cast<uInt>(length + 4));
    for (int i = 0; i < 4; ++i) checksum[i] = static_cast<uint8_t>(crc >> (24 - 8 * i));
    at += length + 12;
  }
  return size;
}

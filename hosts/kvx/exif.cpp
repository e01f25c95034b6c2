#include "hosts/kvx/exif.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kvx {

namespace {

constexpr uint32_t kOrientation = 0x0112, kExifFolder = 0x8769, kPixelWidth = 0xA002, kPixelHeight = 0xA003;
constexpr uint32_t kShort = 3, kLong = 4;

// Numbers of 2 and 4 bytes in the structure's own order. Outside it, they are 0 and writes do nothing.
class Tiff {
 public:
  explicit Tiff(std::string& bytes) : bytes_(bytes), big_(bytes.starts_with("MM")) {}

  bool IsSound() const {
    return bytes_.starts_with(std::string_view("II*\0", 4)) || bytes_.starts_with(std::string_view("MM\0*", 4));
  }
  uint32_t Get(size_t at, int size) const {
    uint32_t value = 0;
    for (int i = 0; i < size && at + static_cast<size_t>(size) <= bytes_.size(); ++i) {
      value |= static_cast<uint32_t>(static_cast<uint8_t>(bytes_[at + static_cast<size_t>(i)])) << Shift(i, size);
    }
    return value;
  }
  void Set(size_t at, int size, uint32_t value) {
    for (int i = 0; i < size && at + static_cast<size_t>(size) <= bytes_.size(); ++i) {
      bytes_[at + static_cast<size_t>(i)] = static_cast<char>(value >> Shift(i, size));
    }
  }

  size_t FirstFolder() const { return Get(4, 4); }
  // Where the entry with this tag begins.
  std::optional<size_t> Find(size_t folder, uint32_t tag) const {
    const uint32_t entries = Get(folder, 2);
    for (uint32_t i = 0; folder != 0 && i < entries; ++i) {
      const size_t at = folder + 2 + 12 * size_t{i};
      if (at + 12 > bytes_.size()) break;
      if (Get(at, 2) == tag) return at;
    }
    return std::nullopt;
  }
  uint32_t Value(size_t entry) const { return Get(entry + 8, Get(entry + 2, 2) == kShort ? 2 : 4); }
  void SetValue(size_t entry, uint32_t value) {
    const uint32_t type = Get(entry + 2, 2);
    if (type == kShort || type == kLong) Set(entry + 8, type == kShort ? 2 : 4, value);
  }

 private:
  int Shift(int i, int size) const { return 8 * (big_ ? size - 1 - i : i); }

  std::string& bytes_;
  bool big_;
};

}  // namespace

int ExifOrientation(const std::string& exif) {
  std::string copy = exif;
  const Tiff tiff(copy);
  if (!tiff.IsSound()) return 1;
  const auto entry = tiff.Find(tiff.FirstFolder(), kOrientation);
  const uint32_t value = entry ? tiff.Value(*entry) : 1;
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void MakeExifUpright(std::string& exif, int width, int height) {
  Tiff tiff(exif);
  if (!tiff.IsSound()) return;
  const size_t first = tiff.FirstFolder();
  if (const auto entry = tiff.Find(first, kOrientation)) tiff.SetValue(*entry, 1);
  if (const auto folder = tiff.Find(first, kExifFolder)) {
    const size_t inner = tiff.Value(*folder);
    if (const auto entry = tiff.Find(inner, kPixelWidth)) tiff.SetValue(*entry, static_cast<uint32_t>(width));
    if (const auto entry = tiff.Find(inner, kPixelHeight)) tiff.SetValue(*entry, static_cast<uint32_t>(height));
  }
  // The thumbnail stands in a second folder and shows the picture before.
  tiff.Set(first + 2 + 12 * size_t{tiff.Get(first, 2)}, 4, 0);
}

}  // namespace kvx

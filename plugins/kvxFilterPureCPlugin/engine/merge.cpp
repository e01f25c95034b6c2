// The merge range: code -> routine.
#include <algorithm>
#include <vector>

#include "engine/merge_routines.h"

namespace {

template <typename Row>
const Row* FindCode(std::span<const Row> rows, uint32_t code) {
  const auto row =
      std::find_if(rows.begin(), rows.end(), [code](const Row& r) { return code >= r.first && code <= r.last; });
  return row == rows.end() ? nullptr : &*row;
}

// The material carried on to the frame's size by its last column and row.
std::vector<uint8_t> Extend(const EngineImage& material, const EngineImage& frame) {
  std::vector<uint8_t> pixels;
  pixels.reserve(static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height) * 4);
  for (int32_t y = 0; y < frame.height; ++y) {
    const uint8_t* row = material.Row(std::min(y, material.height - 1));
    for (int32_t x = 0; x < frame.width; ++x) {
      const uint8_t* p = row + 4 * std::min(x, material.width - 1);
      pixels.insert(pixels.end(), p, p + 4);
    }
  }
  return pixels;
}

}  // namespace

bool IsDirectMerge(uint32_t code) {
  const MergeLook* look = FindCode(MergeLookRows(), code);
  return FindCode(BlendModeRows(), code) || (look && look->direct);
}

int32_t EngineRunMerge(EngineRecord& record, const EngineImage& from, const EngineImage& image,
                       const EngineImage* second) {
  const BlendMode* mode = FindCode(BlendModeRows(), record.code);
  const MergeLook* look = FindCode(MergeLookRows(), record.code);
  if (mode && !mode->needsMaterial) return mode->run(record, {from, from, image});
  if (!second || !second->pixels || second->width <= 0 || second->height <= 0) return kEngineBadImage;
  const auto run = [&](const EngineImage& material) {
    const BlendImages images{from, material, image};
    return mode ? mode->run(record, images) : look->run(record, images);
  };
  if (!mode && !look) return kEngineFailed;
  const bool large = second->width >= image.width && second->height >= image.height;
  if (large || (look && look->takesAnySize)) return run(*second);
  std::vector<uint8_t> pixels = Extend(*second, image);
  return run(MakeEngineImage(pixels.data(), image.width, image.height, image.width * 4));
}

// The merge range: code -> routine.
#include <algorithm>
#include <vector>

#include "merge_routines.h"

namespace {

const MergeRoutine* FindRoutine(uint32_t code) {
  for (const auto group : {BlendModeRoutines(), MergeLookRoutines()}) {
    for (const MergeRoutine& routine : group) {
      if (code >= routine.first && code <= routine.last) return &routine;
    }
  }
  return nullptr;
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

int32_t EngineRunMerge(EngineRecord& record, const EngineImage& image, const EngineImage* second) {
  const MergeRoutine* routine = FindRoutine(record.code);
  if (routine && routine->use == MaterialUse::kNone) return routine->run(record, image, image);
  if (!second || !second->pixels || second->width <= 0 || second->height <= 0) return kEngineBadImage;
  if (!routine) return kEngineFailed;
  const bool large = second->width >= image.width && second->height >= image.height;
  if (large || routine->use == MaterialUse::kOwnSize) return routine->run(record, image, *second);
  std::vector<uint8_t> pixels = Extend(*second, image);
  return routine->run(record, image, MakeEngineImage(pixels.data(), image.width, image.height, image.width * 4));
}

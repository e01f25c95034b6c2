// Flips and mirrors: whole pixels move, alpha included. And the list of the looks that move or partition the picture.
#include <algorithm>
#include <cstring>
#include <opencv2/core.hpp>

#include "engine_internal.h"
#include "pane_looks.h"

namespace {

void SwapPixels(uint8_t* a, uint8_t* b) {
  std::swap_ranges(a, a + 4, b);
}

int32_t FlipLeftRight(EngineRecord&, const EngineImage& image) {
  for (int32_t y = 0; y < image.height; ++y) {
    uint8_t* left = image.Row(y);
    uint8_t* right = left + 4 * static_cast<ptrdiff_t>(image.width - 1);
    for (; left < right; left += 4, right -= 4) SwapPixels(left, right);
  }
  return kEngineDone;
}

int32_t FlipTopBottom(EngineRecord&, const EngineImage& image) {
  const ptrdiff_t rowBytes = 4 * static_cast<ptrdiff_t>(image.width);
  for (int32_t top = 0, bottom = image.height - 1; top < bottom; ++top, --bottom) {
    std::swap_ranges(image.Row(top), image.Row(top) + rowBytes, image.Row(bottom));
  }
  return kEngineDone;
}

int32_t FlipAll(EngineRecord&, const EngineImage& image) {
  cv::Mat matrix(image.height, image.width, CV_8UC4, image.pixels, static_cast<size_t>(image.stepBytes));
  cv::flip(matrix, matrix, 0);
  cv::flip(matrix, matrix, 1);
  return kEngineDone;
}

int32_t MirrorLeftRight(EngineRecord&, const EngineImage& image) {
  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* left = image.Row(y);
    uint8_t* right = image.Row(y) + 4 * static_cast<ptrdiff_t>(image.width - 1);
    for (; left < right; left += 4, right -= 4) std::memcpy(right, left, 4);
  }
  return kEngineDone;
}

// The top half is rebuilt from the lower half; the bottom row of an even height is not used.
int32_t MirrorTopBottom(EngineRecord&, const EngineImage& image) {
  const int32_t half = std::max(image.height / 2, 1);
  for (int32_t k = 1; k < half; ++k) {
    std::memcpy(image.Row(half - 1 - k), image.Row(half - 1 + k), 4 * static_cast<size_t>(image.width));
  }
  return kEngineDone;
}

}  // namespace

std::span<const LookRoutine> PaneRoutines() {
  static constexpr LookRoutine kRoutines[] = {
      {19, FlipLeftRight},   {20, FlipTopBottom}, {21, FlipAll}, {22, MirrorLeftRight},
      {23, MirrorTopBottom}, {89, Jigsaw},        {90, Jigsaw},  {91, Jigsaw},
      {92, Jigsaw},          {93, Jigsaw},        {94, Jigsaw},  {97, Kaleidoscope},
  };
  return kRoutines;
}

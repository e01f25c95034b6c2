// Flips and mirrors: whole pixels move, alpha included. And the list of the looks that move or partition the picture.
#include <algorithm>
#include <cstring>
#include <opencv2/core.hpp>

#include "engine/engine_internal.h"
#include "engine/pane_looks.h"

namespace {

// `code` as OpenCV has it: 1 across, 0 down, -1 both.
template <int code>
int32_t Flip(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  const auto matrix = [](const EngineImage& i) {
    return cv::Mat(i.height, i.width, CV_8UC4, i.pixels, static_cast<size_t>(i.stepBytes));
  };
  cv::Mat flipped = matrix(image);
  cv::flip(matrix(from), flipped, code);
  return kEngineDone;
}

int32_t MirrorLeftRight(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  ForEachCopiedRow(from, image, [width = image.width](int32_t, uint8_t* row) {
    const uint8_t* left = row;
    uint8_t* right = row + 4 * static_cast<ptrdiff_t>(width - 1);
    for (; left < right; left += 4, right -= 4) std::memcpy(right, left, 4);
  });
  return kEngineDone;
}

// The top half is rebuilt from the lower half; the bottom row of an even height is not used.
int32_t MirrorTopBottom(EngineRecord&, const EngineImage& from, const EngineImage& image) {
  const int32_t middle = std::max(image.height / 2, 1) - 1;
  for (int32_t y = middle; y < image.height; ++y) {
    const size_t bytes = 4 * static_cast<size_t>(image.width);
    if (from.pixels != image.pixels) std::memcpy(image.Row(y), from.Row(y), bytes);
    if (const int32_t above = 2 * middle - y; above >= 0 && y > middle)
      std::memcpy(image.Row(above), from.Row(y), bytes);
  }
  return kEngineDone;
}

}  // namespace

std::span<const DirectLook> PaneLooks() {
  static constexpr DirectLook kLooks[] = {
      {code::kFlipLeftRight, Flip<1>},
      {code::kFlipTopBottom, Flip<0>},
      {code::kFlipAll, Flip<-1>},
      {code::kMirrorLeftRight, MirrorLeftRight},
      {code::kMirrorTopBottom, MirrorTopBottom},
      {code::kJigsawA, Jigsaw},
      {code::kJigsawB, Jigsaw},
      {code::kJigsawC, Jigsaw},
      {code::kJigsawD, Jigsaw},
      {code::kJigsawE, Jigsaw},
      {code::kJigsawF, Jigsaw},
  };
  return kLooks;
}

std::span<const LookRoutine> PaneRoutines() {
  static constexpr LookRoutine kRoutines[] = {{code::kKaleidoscope, Kaleidoscope}};
  return kRoutines;
}

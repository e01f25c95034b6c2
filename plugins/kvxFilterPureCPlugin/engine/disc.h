// Discs on an image.
#ifndef KVX_ENGINE_DISC_H_
#define KVX_ENGINE_DISC_H_

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "engine/engine.h"

// The largest whole number whose square is not above `square`, which is not negative.
inline int32_t RootBelow(int64_t square) {
  return static_cast<int32_t>(std::sqrt(static_cast<double>(square)));
}

// `perPixel` gets the address of every pixel of the image that is nearer to (centreX, centreY) than `radius`, and the
// square of its distance, row by row.
template <typename PerPixel>
void ForEachInDisc(const EngineImage& image, int32_t centreX, int32_t centreY, int32_t radius, PerPixel perPixel) {
  const int64_t radius2 = int64_t{radius} * radius;
  const int32_t bottom = std::min(centreY + radius - 1, image.height - 1);
  for (int32_t y = std::max(centreY - radius + 1, 0); y <= bottom; ++y) {
    const int64_t dy2 = int64_t{y - centreY} * (y - centreY);
    const int32_t reach = RootBelow(radius2 - 1 - dy2);
    const int32_t right = std::min(centreX + reach, image.width - 1);
    int32_t x = std::max(centreX - reach, 0);
    for (uint8_t* p = image.Row(y) + 4 * int64_t{x}; x <= right; ++x, p += 4) {
      perPixel(p, int64_t{x - centreX} * (x - centreX) + dy2);
    }
  }
}

#endif  // KVX_ENGINE_DISC_H_

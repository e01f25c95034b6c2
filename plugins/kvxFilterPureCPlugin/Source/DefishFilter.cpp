#include "Source/DefishFilter.h"

#include <cmath>

#include "framework/host_log.h"

// A common fisheye keeps areas: light at angle a from the axis falls 2 f sin(a / 2) from the middle of the picture,
// where a straight lens of the same focal length f, which keeps lines, has it at r = f tan(a). So the pixel at r shows
// the fisheye's picture at g r with
//   g = 2 sin(atan(r / f) / 2) / (r / f) = sqrt(2 / (h (h + 1))), h = sqrt(1 + (r / f)^2),
// which is 1 in the middle, where the scale stays, and less outwards: the rim is pulled straight, nothing outside is
// ever asked for. Lengths are in half diagonals, which are sqrt(36^2 + 24^2) / 2 mm on the film that focal lengths
// refer to.
void BuildDefishMap(SourcePosition* map, int32_t width, int32_t height, double focal) {
  const double cx = (width - 1) / 2.0;
  const double cy = (height - 1) / 2.0;
  const double millimetres = std::hypot(36.0, 24.0) / std::hypot(width, height);  // of a pixel
  const double k = millimetres / focal;
  for (int32_t y = 0; y < height; ++y) {
    const double dy = y - cy;
    for (int32_t x = 0; x < width; ++x) {
      const double dx = x - cx;
      const double h = std::sqrt(1 + (dx * dx + dy * dy) * (k * k));
      const double g = std::sqrt(2 / (h * (h + 1)));
      *map++ = {static_cast<float>(cx + g * dx), static_cast<float>(cy + g * dy)};
    }
  }
}

void CDefishFilter::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  if (!src || !dst || width <= 0 || height <= 0) return;
  if (!map_) {
    map_ = AllocateLensMap(width, height);
    if (!map_) {
      KVX_LOG_ALLOCATION_FAILURE("DefishFilter");
      return;
    }
    BuildDefishMap(map_.Data(), width, height, focal_);
  }
  RemapFrame(PackedSource(src, width, height), PackedDest(dst, width, height), map_.Data(), sampling_, 0xFF000000);
}

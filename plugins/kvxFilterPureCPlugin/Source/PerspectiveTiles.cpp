#include "Source/PerspectiveTiles.h"

#include <cstdlib>
#include <cstring>

void parallelPerspectInvoker::operator()(const cv::Range& rows) const {
  for (int32_t i = rows.start; i < rows.end; ++i) {
    const uint8_t* in = src_.Row(src_.height - 1 - std::abs(2 * i) % src_.height);
    uint8_t* out = dst_.Row(i);
    for (int32_t j = 0; j < dst_.width; ++j, out += 4) std::memcpy(out, in + 4 * (2 * j % src_.width), 3);
  }
}

#include "Sobel.h"

#include <algorithm>
#include <cstring>

#include "frame.h"

namespace {

int16_t Abs(int16_t v) {
  return static_cast<int16_t>(v < 0 ? -v : v);
}

// |gx| + |gy| of each of bytes 0 to 2, limited to 255; byte 3 copied. The rim is cleared, alpha included.
void Sobel(ConstFrameView src, FrameView dst) {
  if (dst.Empty()) return;
  const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(dst.width) * 4;
  for (int32_t y = 0; y < dst.height; ++y) {
    uint8_t* out = dst.Row(y);
    if (y == 0 || y == dst.height - 1 || dst.width < 3) {
      std::memset(out, 0, static_cast<size_t>(rowBytes));
      continue;
    }
    const uint8_t* above = src.Row(y - 1);
    const uint8_t* in = src.Row(y);
    const uint8_t* below = src.Row(y + 1);
    for (ptrdiff_t i = 4; i < rowBytes - 4; ++i) {
      const int16_t gx =
          static_cast<int16_t>(2 * (in[i + 4] - in[i - 4]) - above[i - 4] - below[i - 4] + above[i + 4] + below[i + 4]);
      const int16_t gy =
          static_cast<int16_t>(2 * (above[i] - below[i]) - below[i + 4] - below[i - 4] + above[i + 4] + above[i - 4]);
      out[i] = static_cast<uint8_t>(std::min<int16_t>(static_cast<int16_t>(Abs(gx) + Abs(gy)), 255));
    }
    for (ptrdiff_t i = 4; i < rowBytes - 4; i += 4) out[i + 3] = in[i + 3];
    std::memset(out, 0, 4);
    std::memset(out + rowBytes - 4, 0, 4);
  }
}

}  // namespace

void CSoble::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  Sobel(PackedSource(src, width, height), PackedDest(dst, width, height));
}

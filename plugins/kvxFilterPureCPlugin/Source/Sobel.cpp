#include "Source/Sobel.h"

#include <cstring>

#include "framework/frame.h"
#include "framework/row_loops.h"

namespace {

// Edges of each of bytes 0 to 2; byte 3 copied. The rim is cleared, alpha included.
void Sobel(ConstFrameView src, FrameView dst) {
  if (dst.Empty()) return;
  const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(dst.width) * 4;
  for (int32_t y = 0; y < dst.height; ++y) {
    uint8_t* out = dst.Row(y);
    if (y == 0 || y == dst.height - 1 || dst.width < 3) {
      std::memset(out, 0, static_cast<size_t>(rowBytes));
      continue;
    }
    SobelRow(src.Pixel(1, y - 1), src.Pixel(1, y), src.Pixel(1, y + 1), out + 4, dst.width - 2);
    std::memset(out, 0, 4);
    std::memset(out + rowBytes - 4, 0, 4);
  }
}

}  // namespace

void CSoble::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray*) {
  Sobel(PackedSource(src, width, height), PackedDest(dst, width, height));
}

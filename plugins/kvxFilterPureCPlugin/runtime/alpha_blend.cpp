#include "runtime/alpha_blend.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "framework/pixel_kernels.h"

namespace vizcore {

namespace {

// Each row: up to 3 pixels by the scalar form, blocks of four pixels by BlendRow, the rest by the scalar form.

// Exact truncating divisions throughout.
void BlendPixelScalar(uint8_t* out, const uint8_t* top, const uint8_t* bottom, uint32_t a, uint32_t b) {
  const uint32_t topAlpha = top[3];
  const uint32_t alpha = (bottom[3] * b + topAlpha * a) / 255;
  if (alpha == 0) {
    std::memset(out, 0, 4);
    return;
  }
  const uint32_t topWeight = topAlpha * a;
  const uint32_t bottomWeight = b * 255;
  for (int c = 0; c < 3; ++c) out[c] = static_cast<uint8_t>((top[c] * topWeight + bottom[c] * bottomWeight) / 65025);
  out[3] = static_cast<uint8_t>(alpha);
}

// Pixels before the first one whose address is a multiple of 16: at most 3.
int32_t PixelsToAlignment(const uint8_t* row, int32_t width) {
  int32_t count = 0;
  while (count < 3 && count < width && reinterpret_cast<uintptr_t>(row + 4 * count) % 16 != 0) ++count;
  return count;
}

}  // namespace

void AlphaBlendFrame(uint8_t* out, int32_t outStep, const uint8_t* top, int32_t topStep, const uint8_t* bottom,
                     int32_t bottomStep, int32_t alpha, int32_t width, int32_t height) {
  if (width < 1 || height < 1) return;
  const uint32_t a = static_cast<uint32_t>(std::clamp(alpha, 0, 255));
  const uint32_t b = 255 - a;
  if (a == 0) {
    if (outStep == bottomStep) {
      std::memcpy(out, bottom, static_cast<size_t>(outStep) * static_cast<size_t>(height));
      return;
    }
    for (int32_t y = 0; y < height; ++y) {
      std::memcpy(out + static_cast<ptrdiff_t>(y) * outStep, bottom + static_cast<ptrdiff_t>(y) * bottomStep,
                  static_cast<size_t>(width) * 4);
    }
    return;
  }
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* o = out + static_cast<ptrdiff_t>(y) * outStep;
    const uint8_t* t = top + static_cast<ptrdiff_t>(y) * topStep;
    const uint8_t* u = bottom + static_cast<ptrdiff_t>(y) * bottomStep;
    int32_t x = 0;
    const int32_t head = PixelsToAlignment(o, width);
    for (; x < head; ++x) BlendPixelScalar(o + 4 * x, t + 4 * x, u + 4 * x, a, b);
    const int32_t blocks = (width - x) / 4 * 4;
    BlendRow(o + 4 * x, t + 4 * x, u + 4 * x, blocks, static_cast<int32_t>(a));
    x += blocks;
    for (; x < width; ++x) BlendPixelScalar(o + 4 * x, t + 4 * x, u + 4 * x, a, b);
  }
}

}  // namespace vizcore

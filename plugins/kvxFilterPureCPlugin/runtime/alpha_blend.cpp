#include "alpha_blend.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

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

// D(x) = (x + (x >> 8) + 128) >> 8 in eight 16-bit lanes.
__m128i Divide255(__m128i x) {
  return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(x, _mm_srli_epi16(x, 8)), _mm_set1_epi16(128)), 8);
}

// Two pixels in 16-bit lanes: out[c] = D(bottom[c] * b) + D(top[c] * t) with t = D(topAlpha * a), and 255 in place of
// top's alpha for byte 3. The sums wrap modulo 256.
__m128i BlendTwoPixels(__m128i top, __m128i bottom, __m128i a, __m128i b) {
  const __m128i alphaLanes = _mm_set1_epi64x(static_cast<int64_t>(0xFFFF000000000000));
  const __m128i topAlpha = _mm_shufflehi_epi16(_mm_shufflelo_epi16(top, 0xFF), 0xFF);
  const __m128i t = Divide255(_mm_mullo_epi16(topAlpha, a));
  const __m128i opaqueTop = _mm_or_si128(_mm_andnot_si128(alphaLanes, top),
                                         _mm_and_si128(alphaLanes, _mm_set1_epi16(255)));
  const __m128i sum = _mm_add_epi16(Divide255(_mm_mullo_epi16(bottom, b)), Divide255(_mm_mullo_epi16(opaqueTop, t)));
  return _mm_and_si128(sum, _mm_set1_epi16(255));
}

void BlendFourPixels(uint8_t* out, const uint8_t* top, const uint8_t* bottom, __m128i a, __m128i b) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i t = _mm_loadu_si128(reinterpret_cast<const __m128i*>(top));
  const __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bottom));
  const __m128i low = BlendTwoPixels(_mm_unpacklo_epi8(t, zero), _mm_unpacklo_epi8(u, zero), a, b);
  const __m128i high = BlendTwoPixels(_mm_unpackhi_epi8(t, zero), _mm_unpackhi_epi8(u, zero), a, b);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
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
  const __m128i aLanes = _mm_set1_epi16(static_cast<int16_t>(a));
  const __m128i bLanes = _mm_set1_epi16(static_cast<int16_t>(b));
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* o = out + static_cast<ptrdiff_t>(y) * outStep;
    const uint8_t* t = top + static_cast<ptrdiff_t>(y) * topStep;
    const uint8_t* u = bottom + static_cast<ptrdiff_t>(y) * bottomStep;
    int32_t x = 0;
    const int32_t head = PixelsToAlignment(o, width);
    for (; x < head; ++x) BlendPixelScalar(o + 4 * x, t + 4 * x, u + 4 * x, a, b);
    for (; x + 4 <= width; x += 4) BlendFourPixels(o + 4 * x, t + 4 * x, u + 4 * x, aLanes, bLanes);
    for (; x < width; ++x) BlendPixelScalar(o + 4 * x, t + 4 * x, u + 4 * x, a, b);
  }
}

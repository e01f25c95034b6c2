#include "engine/half_box.h"
#include "framework/parallel.h"

#include <algorithm>
#include <vector>

#include "framework/pixels.h"
#include "framework/transpose.h"

// The loops are plain and compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "half_box.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace half_box {
namespace HWY_NAMESPACE {
namespace {

// Sums of levels over a window that shrinks at the frame's edges, and their cut means. (sum + 1/2) / count never comes
// nearer to a whole number than the rounding of a 32-bit float reaches.
inline float InverseOf(int32_t count) {
  return 1.0f / static_cast<float>(count);
}
inline int32_t CutMean(int32_t sum, float inverse) {
  return static_cast<int32_t>((static_cast<float>(sum) + 0.5f) * inverse);
}

// Rows that the row pass turns into columns and takes side by side.
constexpr int32_t kBandHeight = 16;
// Columns that one thread takes at the least.
constexpr int32_t kStripWidth = 64;

// Even pixels take the mean of the window around them, in place: what lies before is averaged already. Odd pixels then
// take the mean of their neighbours. `line` is `length` pixels of as many rows as make up `bytes`; alpha goes along.
void HalfBoxLine(uint8_t* line, int32_t length, int32_t bytes, int32_t radius) {
  int32_t sums[4 * kBandHeight] = {};
  const auto at = [&](int32_t x) { return line + static_cast<ptrdiff_t>(x) * bytes; };
  int32_t end = 0;  // of the window
  for (int32_t x = 0; x <= length - 2; x += 2) {
    for (; end < std::min(length, x + radius + 1); ++end) {
      const uint8_t* in = at(end);
      for (int32_t i = 0; i < bytes; ++i) sums[i] += in[i];
    }
    for (int32_t gone = std::max(x - radius - 2, 0); gone < x - radius; ++gone) {
      const uint8_t* in = at(gone);
      for (int32_t i = 0; i < bytes; ++i) sums[i] -= in[i];
    }
    const float share = InverseOf(end - std::max(x - radius, 0));
    uint8_t* p = at(x);
    for (int32_t i = 0; i < bytes; ++i) {
      const int32_t mean = CutMean(sums[i], share);
      sums[i] += mean - p[i];
      p[i] = static_cast<uint8_t>(mean);
    }
  }
  for (int32_t x = 1; x <= length - 2; x += 2) {
    uint8_t* p = at(x);
    for (int32_t i = 0; i < bytes; ++i) p[i] = static_cast<uint8_t>((p[i - bytes] + p[i + bytes]) / 2);
  }
}

// Every row, alpha too, from the image to `rows`.
void HalfBoxRows(const EngineImage& image, uint8_t* rows, int32_t radius, int32_t first, int32_t last) {
  std::vector<uint8_t> columns(static_cast<size_t>(image.width) * kBandHeight * 4);
  for (int32_t y = first; y < last; y += kBandHeight) {
    const int32_t height = std::min(kBandHeight, image.height - y);
    const FrameView turned{columns.data(), height, image.width, height * 4};
    Transpose({image.Row(y), image.width, height, image.stepBytes}, turned);
    HalfBoxLine(columns.data(), image.width, height * 4, radius);
    Transpose({turned.data, turned.width, turned.height, turned.step},
              {rows + static_cast<ptrdiff_t>(y) * image.stepBytes, image.width, height, image.stepBytes});
  }
}

inline void StoreColor(uint8_t* p, uint32_t word) {
  StorePixel(p, (word & kColorBytes) | (LoadPixel(p) & kAlphaByte));
}

// Even rows from the row pass's result in `rows`, odd rows between two even ones from those, the last row as it is
// there. `sums` holds a number for every byte of a row.
void HalfBoxColumns(const EngineImage& image, const uint8_t* rows, int32_t radius, int32_t* sums, uint8_t* means) {
  const int32_t rowBytes = image.width * 4;
  std::fill_n(sums, rowBytes, 0);
  const auto rowOf = [&](int32_t y) { return rows + static_cast<ptrdiff_t>(y) * image.stepBytes; };
  int32_t end = 0;
  for (int32_t y = 0; y <= image.height - 2; y += 2) {
    for (; end < std::min(image.height, y + radius + 1); ++end) {
      const uint8_t* row = rowOf(end);
      for (int32_t i = 0; i < rowBytes; ++i) sums[i] += row[i];
    }
    for (int32_t gone = std::max(y - radius - 2, 0); gone < y - radius; ++gone) {
      const uint8_t* row = rowOf(gone);
      for (int32_t i = 0; i < rowBytes; ++i) sums[i] -= row[i];
    }
    const float share = InverseOf(end - std::max(y - radius, 0));
    for (int32_t i = 0; i < rowBytes; ++i) means[i] = static_cast<uint8_t>(CutMean(sums[i], share));
    uint8_t* out = image.Row(y);
    for (int32_t i = 0; i < rowBytes; i += 4) StoreColor(out + i, LoadPixel(means + i));
  }
  const uint8_t* lastRow = rowOf(image.height - 1);
  for (int32_t i = 0; i < rowBytes; i += 4) StoreColor(image.Row(image.height - 1) + i, LoadPixel(lastRow + i));
  for (int32_t y = 1; y <= image.height - 2; y += 2) {
    const uint8_t* above = image.Row(y - 1);
    const uint8_t* below = image.Row(y + 1);
    uint8_t* out = image.Row(y);
    for (int32_t i = 0; i < rowBytes; i += 4) {
      const uint32_t a = LoadPixel(above + i);
      const uint32_t b = LoadPixel(below + i);
      StoreColor(out + i, (a & b) + (((a ^ b) & 0xFEFEFEFE) >> 1));  // byte by byte, cut
    }
  }
}

}  // namespace

void HalfBoxBlur(const EngineImage& image, uint8_t* rows, int32_t radius, int32_t* sums, uint8_t* means) {
  const auto partsOf = [](int32_t size, int32_t part) { return (size + part - 1) / part; };
  ForRowBands(int64_t{image.width} * kBandHeight, 0, partsOf(image.height, kBandHeight),
              [=](int32_t begin, int32_t end) {
                HalfBoxRows(image, rows, radius, begin * kBandHeight, std::min(end * kBandHeight, image.height));
              });
  ForRowBands(int64_t{image.height} * kStripWidth, 0, partsOf(image.width, kStripWidth),
              [=](int32_t begin, int32_t end) {
                const int32_t left = begin * kStripWidth;
                const ptrdiff_t offset = 4 * static_cast<ptrdiff_t>(left);
                EngineImage strip = image;
                strip.pixels += offset;
                strip.width = std::min(end * kStripWidth, image.width) - left;
                HalfBoxColumns(strip, rows + offset, radius, sums + offset, means + offset);
              });
}

}  // namespace HWY_NAMESPACE
}  // namespace half_box
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace half_box {
HWY_EXPORT(HalfBoxBlur);
}  // namespace half_box

void HalfBoxBlur(const EngineImage& image, uint8_t* rows, int32_t radius, int32_t* sums, uint8_t* means) {
  using namespace half_box;
  HWY_DYNAMIC_DISPATCH(HalfBoxBlur)(image, rows, radius, sums, means);
}

#endif  // HWY_ONCE

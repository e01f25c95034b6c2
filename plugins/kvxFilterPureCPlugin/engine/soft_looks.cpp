// Looks that end in a box blur: grey noise, and a glow over the sharp picture.
#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/blends.h"
#include "engine/composite_looks.h"
#include "engine/curve.h"
#include "engine/engine_internal.h"
#include "framework/random.h"
#include "framework/transpose.h"

namespace {

// The last level of a row has no place in this pass. In place: the left neighbour is averaged already.
void BlurRow(uint8_t* row, int32_t width) {
  if (width < 2) return;
  int32_t left = row[0] = static_cast<uint8_t>((row[0] + row[1]) / 2);
  for (int32_t x = 1; x < width - 1; ++x) row[x] = static_cast<uint8_t>(left = (left + row[x] + row[x + 1]) / 3);
}

// In place as well: the row above is averaged already.
void BlurColumns(uint8_t* plane, int32_t width, int32_t height) {
  if (height < 2) return;
  const auto size = static_cast<size_t>(width);
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* row = plane + size * static_cast<size_t>(y);
    if (y == 0 || y == height - 1) {
      const uint8_t* other = y == 0 ? row + size : row - size;
      for (size_t x = 0; x < size; ++x) row[x] = static_cast<uint8_t>((row[x] + other[x]) / 2);
    } else {
      const uint8_t* above = row - size;
      const uint8_t* below = row + size;
      for (size_t x = 0; x < size; ++x) {
        row[x] = static_cast<uint8_t>(static_cast<uint16_t>(above[x] + row[x] + below[x]) / 3);
      }
    }
  }
}

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
void HalfBoxRows(const EngineImage& image, uint8_t* rows, int32_t radius) {
  std::vector<uint8_t> columns(static_cast<size_t>(image.width) * kBandHeight * 4);
  for (int32_t y = 0; y < image.height; y += kBandHeight) {
    const int32_t height = std::min(kBandHeight, image.height - y);
    const FrameView turned{columns.data(), height, image.width, height * 4};
    Transpose({image.Row(y), image.width, height, image.stepBytes}, turned);
    HalfBoxLine(columns.data(), image.width, height * 4, radius);
    Transpose({turned.data, turned.width, turned.height, turned.step},
              {rows + static_cast<ptrdiff_t>(y) * image.stepBytes, image.width, height, image.stepBytes});
  }
}

inline void StoreColor(uint8_t* p, uint32_t word) {
  word = (word & 0x00FFFFFF) | (LoadPixel(p) & 0xFF000000);
  std::memcpy(p, &word, 4);
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

// Only blue enters: a soft grey of blue and noise.
int32_t GrayNoise(EngineRecord& record, const EngineImage& image) {
  const int32_t width = image.width;
  uint8_t* plane = EnsureWorkCopy(record, width * image.height);
  if (!plane) return kEngineNoScratch;
  Rand rand;
  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* p = image.Row(y);
    uint8_t* row = plane + static_cast<ptrdiff_t>(y) * width;
    for (int32_t x = 0; x < width; ++x) row[x] = static_cast<uint8_t>((185 * p[4 * x] + 71 * (rand.Next() & 255)) >> 8);
    BlurRow(row, width);
  }
  BlurColumns(plane, width, image.height);
  ForEachPixel(image, [&plane](uint8_t* p) { SetGray(p, *plane++); });
  return kEngineDone;
}

// A glow: the blurred picture lies over the sharp one, which stands in workCopy.
int32_t Fuzzy(EngineRecord& record, const EngineImage& image) {
  static const Curve kGlow = MakeCurve(CurveKnots{0, 97, 175, 223, 255});
  static const LevelPairTable kOver =
      MakeLevelPairTable([](int32_t sharp, int32_t blurred) { return kGlow[HardBlend(sharp, kGlow[blurred])]; });
  const int32_t rowBytes = image.width * 4;
  uint8_t* scratch = EnsureTable(record, rowBytes * 5, 0);
  if (!scratch) return kEngineNoScratch;
  auto* sums = reinterpret_cast<int32_t*>(scratch);

  const int32_t radius = (image.totalBytes >> 21) + 4;
  HalfBoxRows(image, record.sourceCopy, radius);
  HalfBoxColumns(image, record.sourceCopy, radius, sums, scratch + 4 * static_cast<size_t>(rowBytes));

  for (int32_t y = 0; y < image.height; ++y) {
    const uint8_t* sharp = record.workCopy + static_cast<ptrdiff_t>(y) * image.stepBytes;
    uint8_t* p = image.Row(y);
    for (int32_t i = 0; i < rowBytes; i += 4) {
      for (int c = 0; c < 3; ++c) p[i + c] = kOver[256 * sharp[i + c] + p[i + c]];
    }
  }
  return kEngineDone;
}

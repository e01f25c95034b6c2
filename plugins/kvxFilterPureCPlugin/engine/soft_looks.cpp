// Looks that end in a box blur: grey noise, and a glow over the sharp picture.
#include "engine/blends.h"
#include "engine/composite_looks.h"
#include "engine/curve.h"
#include "engine/engine_internal.h"
#include "engine/half_box.h"
#include "engine/pixel_rows.h"
#include "framework/random.h"

namespace {

// Rows that are averaged side by side: each level waits for the one before it.
constexpr int32_t kSideBySide = 8;
// Columns that one thread takes at the least.
constexpr int32_t kStripWidth = 64;

// The last level of a row has no place in this pass. In place: the left neighbour is averaged already.
template <int32_t rows>
void BlurRows(uint8_t* plane, int32_t width) {
  if (width < 2) return;
  uint8_t* row[rows];
  uint32_t left[rows];
  for (int32_t i = 0; i < rows; ++i) {
    row[i] = plane + static_cast<ptrdiff_t>(i) * width;
    left[i] = row[i][0] = static_cast<uint8_t>((row[i][0] + row[i][1]) / 2);
  }
  for (int32_t x = 1; x < width - 1; ++x) {
    for (int32_t i = 0; i < rows; ++i) {
      left[i] = (left[i] + row[i][x] + row[i][x + 1]) / 3;
      row[i][x] = static_cast<uint8_t>(left[i]);
    }
  }
}

// In place as well: the row above is averaged already. `count` columns of a plane with rows of `size` bytes.
void BlurColumns(uint8_t* plane, size_t count, size_t size, int32_t height) {
  if (height < 2) return;
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* row = plane + size * static_cast<size_t>(y);
    if (y == 0 || y == height - 1) {
      const uint8_t* other = y == 0 ? row + size : row - size;
      for (size_t x = 0; x < count; ++x) row[x] = static_cast<uint8_t>((row[x] + other[x]) / 2);
    } else {
      const uint8_t* above = row - size;
      const uint8_t* below = row + size;
      for (size_t x = 0; x < count; ++x) {
        row[x] = static_cast<uint8_t>(static_cast<uint16_t>(above[x] + row[x] + below[x]) / 3);
      }
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
  }
  ForRowBands(width, 0, image.height, [=](int32_t begin, int32_t end) {
    int32_t y = begin;
    for (; y + kSideBySide <= end; y += kSideBySide) {
      BlurRows<kSideBySide>(plane + static_cast<ptrdiff_t>(y) * width, width);
    }
    for (; y < end; ++y) BlurRows<1>(plane + static_cast<ptrdiff_t>(y) * width, width);
  });
  // The columns, in bands side by side.
  ForRowBands(image.height, 0, width,
              [=, height = image.height](int32_t begin, int32_t end) {
                BlurColumns(plane + begin, static_cast<size_t>(end - begin), static_cast<size_t>(width), height);
              },
              {.rows = kStripWidth});
  ForEachRow(image,
             [=](int32_t y, uint8_t* row) { StoreGrays(row, plane + static_cast<ptrdiff_t>(y) * width, width); });
  return kEngineDone;
}

// A glow: the blurred picture lies over the sharp one, which stands in workCopy.
int32_t Fuzzy(EngineRecord& record, const EngineImage& image) {
  static const Curve kGlow = MakeCurve(CurveKnots{0, 97, 175, 223, 255});
  const int32_t rowBytes = image.width * 4;
  uint8_t* scratch = EnsureTable(record, rowBytes * 5, 0);
  if (!scratch) return kEngineNoScratch;
  auto* sums = reinterpret_cast<int32_t*>(scratch);

  const ByteTables glow = {kGlow.data(), kGlow.data(), kGlow.data()};
  const int32_t radius = (image.totalBytes >> 21) + 4;
  HalfBoxBlur(image, record.sourceCopy, radius, sums, scratch + 4 * static_cast<size_t>(rowBytes));

  const uint8_t* sharp = record.workCopy;
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> row(static_cast<size_t>(rowBytes));
    for (int32_t y = begin; y < end; ++y) {
      MapRow(image.Row(y), row.data(), image.width, glow);
      HardBlendRow(sharp + static_cast<ptrdiff_t>(y) * image.stepBytes, row.data(), rowBytes, row.data());
      MapRow(row.data(), row.data(), image.width, glow);
      StoreColors(image.Row(y), row.data(), image.width);
    }
  });
  return kEngineDone;
}

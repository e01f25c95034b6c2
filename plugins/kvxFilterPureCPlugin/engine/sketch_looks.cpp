// Looks made from the 3 by 3 neighbourhood: a pencil sketch in the photograph, a line drawing, washed-out edges, a
// comic.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "engine/blends.h"
#include "engine/composite_looks.h"
#include "engine/engine_internal.h"
#include "engine/pixel_rows.h"
#include "framework/numeric.h"

namespace {

// A plane of luma4, `width` bytes a row.
struct LumaPlane {
  uint8_t* data;
  int32_t width;

  uint8_t* Row(int32_t y) const { return data + static_cast<ptrdiff_t>(y) * width; }
};

// The largest luma around each inner pixel of a row.
class MaximaRows {
 public:
  explicit MaximaRows(int32_t width) : width_(width), bytes_(2 * static_cast<size_t>(width)) {}

  const uint8_t* Of(const LumaPlane& luma, int32_t y) {
    uint8_t* maxima = bytes_.data() + width_;
    MaxOf3x3({luma.Row(y - 1), luma.Row(y), luma.Row(y + 1)}, 1, width_, bytes_.data(), maxima);
    return maxima;
  }

 private:
  int32_t width_;
  std::vector<uint8_t> bytes_;
};

// A pixel's share of the brightest around it: near white in even areas, dark where something brighter is close.
int32_t PencilLevel(int32_t maximum, int32_t level) {
  return std::min((16777216 / (maximum + 8) * level) >> 16, 255);
}

struct Triangle {
  int32_t x[3];
  int32_t y[3];

  // Points on an edge belong to it.
  bool Contains(int32_t px, int32_t py) const {
    const int32_t a = Side(0, 1, px, py);
    const int32_t b = Side(1, 2, px, py);
    const int32_t c = Side(2, 0, px, py);
    return (a >= 0 && b >= 0 && c >= 0) || (a <= 0 && b <= 0 && c <= 0);
  }

 private:
  int32_t Side(int from, int to, int32_t px, int32_t py) const {
    return (x[to] - x[from]) * (py - y[from]) - (y[to] - y[from]) * (px - x[from]);
  }
};

}  // namespace

// A tilted sketch inset in the photograph: the sketch is drawn over the box around the quadrilateral and kept inside
// it.
int32_t SketchInPhoto(EngineRecord& record, const EngineImage& image) {
  static constexpr int32_t kQuadX[] = {25, 35, 85, 65};
  static constexpr int32_t kQuadY[] = {25, 75, 55, 10};
  static const LevelPairTable kPencil = MakeLevelPairTable(
      [](int32_t maximum, int32_t level) { return static_cast<uint8_t>(PencilLevel(maximum, level)); });
  std::copy(std::begin(kQuadX), std::end(kQuadX), record.quadX);
  std::copy(std::begin(kQuadY), std::end(kQuadY), record.quadY);
  record.angle = 245.0;  // radians, as it stands

  const double cosine = std::cos(record.angle);
  const double sine = std::sin(record.angle);
  int32_t x[4], y[4];
  for (int k = 0; k < 4; ++k) {
    const int32_t px = record.quadX[k] * image.width / 100;
    const int32_t py = record.quadY[k] * image.height / 100;
    x[k] = Trunc32(cosine * px + sine * py);
    y[k] = Trunc32(cosine * py - sine * px);
  }
  const Triangle triangles[] = {{{x[0], x[1], x[2]}, {y[0], y[1], y[2]}}, {{x[0], x[2], x[3]}, {y[0], y[2], y[3]}}};

  // Only pixels one in from the box's edges are drawn; a flat frame's box reaches out of it.
  const int32_t left = std::max(std::min(x[0], x[1]) + 1, 0);
  const int32_t right = std::min(std::max(x[2], x[3]), image.width);
  const int32_t top = std::max(std::min(y[0], y[3]) + 1, 0);
  const int32_t bottom = std::min(std::max(y[1], y[2]), image.height);
  if (left >= right || top >= bottom) return kEngineDone;

  // Luma of those pixels with a rim of one.
  const int32_t width = right - left + 2;
  const int32_t height = bottom - top + 2;
  uint8_t* scratch = EnsureWorkCopy(record, width * height);
  if (!scratch) return kEngineNoScratch;
  const LumaPlane luma{scratch, width};
  ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
    for (int32_t row = begin; row < end; ++row) {
      const uint8_t* p = image.Row(std::clamp(top - 1 + row, 0, image.height - 1));
      uint8_t* out = luma.Row(row);
      for (int32_t column = 0; column < width; ++column) {
        out[column] = static_cast<uint8_t>(Luma4(p + 4 * std::clamp(left - 1 + column, 0, image.width - 1)));
      }
    }
  });

  ForRowBands(width, 1, height - 1, [=](int32_t begin, int32_t end) {
    MaximaRows maxima(width);
    for (int32_t row = begin; row < end; ++row) {
      const uint8_t* largest = maxima.Of(luma, row);
      const int32_t py = top - 1 + row;
      for (int32_t column = 1; column < width - 1; ++column) {
        const int32_t px = left - 1 + column;
        if (!triangles[0].Contains(px, py) && !triangles[1].Contains(px, py)) continue;
        SetGray(image.Row(py) + 4 * px, kPencil[256 * largest[column] + luma.Row(row)[column - 1]]);
      }
    }
  });
  return kEngineDone;
}

// Pencil lines blended into the picture's grey. The frame's border has no window: it is drawn from its own level alone,
// and its black turns white.
int32_t LineDrawing(EngineRecord& record, const EngineImage& image) {
  static const LevelPairTable kDrawn =
      MakeLevelPairTable([](int32_t maximum, int32_t level) { return HardBlend(level, PencilLevel(maximum, level)); });
  const int32_t width = image.width;
  uint8_t* scratch = EnsureWorkCopy(record, width * image.height);
  if (!scratch) return kEngineNoScratch;
  const LumaPlane luma{scratch, width};
  MakeGrayPlane(image, luma.data);

  const auto drawBorder = [luma](uint8_t* p, int32_t x, int32_t y) {
    const int32_t level = luma.Row(y)[x];
    SetGray(p, level == 0 ? HardBlend(0, 255) : kDrawn[256 * level + level]);
  };
  ForRowBands(width, 0, image.height, [=](int32_t begin, int32_t end) {
    MaximaRows maxima(width);
    for (int32_t y = begin; y < end; ++y) {
      uint8_t* p = image.Row(y);
      if (y == 0 || y == image.height - 1) {
        for (int32_t x = 0; x < width; ++x) drawBorder(p + 4 * x, x, y);
        continue;
      }
      const uint8_t* row = luma.Row(y);
      const uint8_t* largest = maxima.Of(luma, y);
      for (int32_t x = 1; x < width - 1; ++x) SetGray(p + 4 * x, kDrawn[256 * largest[x] + row[x - 1]]);
      drawBorder(p, 0, y);
      drawBorder(p + 4 * (width - 1), width - 1, y);
    }
  });
  return kEngineDone;
}

// Twice the brightness, faded out at edges.
int32_t Wash(EngineRecord& record, const EngineImage& from, const EngineImage& image) {
  const int32_t width = image.width;
  uint8_t* scratch = EnsureWorkCopy(record, width * image.height);
  if (!scratch) return kEngineNoScratch;
  const LumaPlane luma{scratch, width};
  MakeGrayPlane(from, luma.data);

  ForRowBands(width, 0, image.height, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> fades(static_cast<size_t>(width));
    for (int32_t y = begin; y < end; ++y) {
      if (y > 0 && y < image.height - 1) {
        EdgeFadeRow({luma.Row(y - 1), luma.Row(y), luma.Row(y + 1)}, width, fades.data());
      } else {
        std::fill(fades.begin(), fades.end(), uint8_t{255});
      }
      FadeRow(from.Row(y), fades.data(), width, image.Row(y));
    }
  });
  return kEngineDone;
}

// Strongly sharpened, then through a curve that lifts black and holds white back.
int32_t Comic(EngineRecord& record, const EngineImage& image) {
  static const Curve kInk = [] {
    Curve curve;
    for (int32_t i = 0; i < 256; ++i) {
      const float v = static_cast<float>(i) * 0.003922f;
      const float level = (0.627f * std::exp(0.3634f * v) - 0.5467f * std::exp(-10.891f * v)) * 255.0f;
      curve[i] = static_cast<uint8_t>(std::clamp(Trunc32(level), 0, 255));
    }
    return curve;
  }();
  const int32_t rowBytes = image.width * 4;
  const uint8_t* work = record.workCopy;
  ForRowBands(image.width, 0, image.height, [=](int32_t begin, int32_t end) {
    std::vector<uint8_t> sharp(static_cast<size_t>(rowBytes));
    for (int32_t y = begin; y < end; ++y) {
      const uint8_t* row = work + static_cast<ptrdiff_t>(y) * image.stepBytes;
      const bool inner = y > 0 && y < image.height - 1;
      std::memcpy(sharp.data(), row, static_cast<size_t>(rowBytes));
      if (inner) Sharpen3x3({row - image.stepBytes, row, row + image.stepBytes}, rowBytes, sharp.data());
      MapRow(sharp.data(), sharp.data(), image.width, {kInk.data(), kInk.data(), kInk.data()});
      StoreColors(image.Row(y), sharp.data(), image.width);
    }
  });
  return kEngineDone;
}

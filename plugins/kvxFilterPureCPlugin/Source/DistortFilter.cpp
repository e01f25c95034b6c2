#include "Source/DistortFilter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "framework/frame.h"
#include "framework/host_log.h"
#include "framework/numeric.h"
#include "framework/parallel.h"
#include "framework/params.h"

namespace {

constexpr ParamRow kParams[] = {{u"Amplitude", 0, 0, 300}, {u"Frequency", 0, 0, 200}};

constexpr int32_t kCell = 8;

// By the side of a cell. Nearly all have the whole one, by which the compiler divides without a division.
int64_t DivideBySide(int64_t value, int32_t side) {
  return side == kCell ? value / kCell : value / side;
}

// A source position, 16.16 fixed point.
struct GridPoint {
  int32_t x;
  int32_t y;
};

// Where the grid's lines run along an axis: every 8th pixel and the last one.
std::vector<int32_t> GridLines(int32_t size) {
  std::vector<int32_t> lines;
  for (int32_t at = 0; at < size - 1; at += kCell) lines.push_back(at);
  lines.push_back(size - 1);
  return lines;
}

// Rows of grid points. The frame is at least 2 by 2.
std::vector<GridPoint> BendGrid(const std::vector<int32_t>& columns, const std::vector<int32_t>& rows, int32_t width,
                                int32_t height, double amplitude, double frequency) {
  const double w = width - 1;
  const double h = height - 1;
  const double c = std::fmod(1.0, 2 * M_PI);
  std::vector<GridPoint> grid;
  grid.reserve(columns.size() * rows.size());
  for (const int32_t y : rows) {
    const double sineOfRow = std::sin(y * frequency / h + c);
    // 4 / w here and 4 / (h * h) behind it: the odd pairing is meant. The bulge is 0 at the top only, unless w is h.
    const double bulgeOfRow = (4 / w - (4 / (h * h)) * y) * y * (h * 0.25 * amplitude);
    for (const int32_t x : columns) {
      const double bulge = (4 / w - (4 / (w * w)) * x) * x * (w * 0.25 * amplitude);
      const double sx = x + sineOfRow * bulge;
      const double sy = y + std::sin(x * frequency / w + c) * bulgeOfRow;
      grid.push_back({Trunc32(sx * 65536), Trunc32(sy * 65536)});
    }
  }
  return grid;
}

// A value that runs from `from` to `to` in `count` equal steps, read to the nearest whole number and kept in 0..size
// - 1.
class Run {
 public:
  Run(int64_t from, int64_t to, int32_t count)
      : at_(from * kScale + kHalf), step_(DivideBySide((to - from) * kScale, count)) {}
  int32_t Next(int32_t size) {
    const int64_t value = at_ >> 32;
    at_ += step_;
    return static_cast<int32_t>(std::clamp<int64_t>(value, 0, size - 1));
  }

 private:
  static constexpr int64_t kScale = int64_t{1} << 16;  // 16.16 becomes 32.32
  static constexpr int64_t kHalf = int64_t{1} << 31;
  int64_t at_;
  int64_t step_;
};

// Between grid points positions are bilinear: with P the four corners of a cell that is w by h, and (i, j) the place in
// it,
//   left = P00 + (P01 - P00) * j / h, right = P10 + (P11 - P10) * j / h, position = left + (right - left) * i / w,
// and the nearest source pixel is taken, so that an even grid gives the source. Cells end where the next begins; the
// last ones include the last column and row.
void FillCells(ConstFrameView src, FrameView dst, const std::vector<int32_t>& columns, const std::vector<int32_t>& rows,
               const std::vector<GridPoint>& grid) {
  const auto last = static_cast<int32_t>(rows.size()) - 1;
  ForRowBands(int64_t{dst.width} * kCell, 0, last, [=, &columns, &rows, &grid](int32_t begin, int32_t end) {
    for (auto r = static_cast<size_t>(begin); r < static_cast<size_t>(end); ++r) {
      const int32_t h = rows[r + 1] - rows[r];
      const int32_t endRow = r + 2 == rows.size() ? rows[r + 1] + 1 : rows[r + 1];
      for (int32_t y = rows[r]; y < endRow; ++y) {
        const int64_t j = y - rows[r];
        const auto onLine = [&](size_t line) {
          const GridPoint& top = grid[r * columns.size() + line];
          const GridPoint& bottom = grid[(r + 1) * columns.size() + line];
          return GridPoint{static_cast<int32_t>(top.x + DivideBySide((int64_t{bottom.x} - top.x) * j, h)),
                           static_cast<int32_t>(top.y + DivideBySide((int64_t{bottom.y} - top.y) * j, h))};
        };
        uint8_t* out = dst.Row(y);
        GridPoint left = onLine(0);
        for (size_t k = 0; k + 1 < columns.size(); ++k) {
          const GridPoint right = onLine(k + 1);
          const int32_t w = columns[k + 1] - columns[k];
          const int32_t count = k + 2 == columns.size() ? w + 1 : w;
          Run x(left.x, right.x, w), sourceY(left.y, right.y, w);
          for (int32_t i = 0; i < count; ++i, out += 4) {
            const int32_t column = x.Next(src.width);
            std::memcpy(out, src.Pixel(column, sourceY.Next(src.height)), 4);
          }
          left = right;
        }
      }
    }
  });
}

}  // namespace

void CDistort::GetParamDesc(FilterParamDesc* desc, int32_t index) {
  DescribeParam(desc, index, kParams, {amplitude_ * 100, frequency_ * 100});
}

void CDistort::Process(uint8_t* src, uint8_t* dst, int32_t, int32_t, const ParamValueArray* params) {
  amplitude_ = Param(params, 1) / 100;
  frequency_ = Param(params, 2) / 100;
  const ConstFrameView in = PackedSource(src, width, height);
  const FrameView out = PackedDest(dst, width, height);
  if (out.Empty()) return;
  if (width < 2 || height < 2) {  // nothing but rim
    std::memcpy(dst, src, static_cast<size_t>(width) * 4 * static_cast<size_t>(height));
    return;
  }
  try {
    const std::vector<int32_t> columns = GridLines(width);
    const std::vector<int32_t> rows = GridLines(height);
    FillCells(in, out, columns, rows, BendGrid(columns, rows, width, height, amplitude_, frequency_));
  } catch (const std::bad_alloc&) {
    KVX_LOG_ALLOCATION_FAILURE("DistortFilter");
  }
}

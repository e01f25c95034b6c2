#include "Source/WaterSurface.h"

#include <cmath>
#include <cstring>
#include <utility>

#include "framework/parallel.h"

uint32_t ISqrt(uint32_t v) {
  // Exact: a 32-bit value and its root fit into a double with room to spare.
  return static_cast<uint32_t>(std::sqrt(static_cast<double>(v)));
}

const WaterTables& WaterTables::Get() {
  static const WaterTables tables = [] {
    WaterTables t;
    for (int32_t i = 0; i < 2048; ++i) {
      const double angle = i * 0.0030679615757712823;
      t.sineTable[i] = Trunc32(std::sin(angle) * 65536.0);
      t.cosineTable[i] = Trunc32(std::cos(angle) * 65536.0);
    }
    return t;
  }();
  return tables;
}

namespace {

// Columns first to last - 1 of a row. `cells` and `out` are the row's, `index` is its first cell's.
void DisplaceRow(const int32_t* cells, int32_t width, int32_t index, int32_t first, int32_t last, int32_t factor,
                 const uint32_t* copy, uint32_t limit, uint32_t lastPixel, uint8_t* out) {
  for (int32_t x = first; x < last; ++x) {
    const int32_t h = cells[x];
    const int32_t rows = WrapMul(WrapSub(h, cells[x + width]), factor) >> 3;
    const int32_t columns = WrapMul(WrapSub(h, cells[x + 1]), factor) >> 3;
    const uint32_t j = static_cast<uint32_t>(WrapAdd(WrapAdd(WrapMul(rows, width), index + x), columns));
    if (j <= limit) std::memcpy(out + 4 * static_cast<ptrdiff_t>(x), &copy[std::min(j, lastPixel)], 4);
  }
}

void WaveRow(const int32_t* newest, int32_t* other, int32_t width, int32_t damping) {
  const int32_t* above = newest - width;
  const int32_t* below = newest + width;
  for (int32_t x = 1; x < width - 1; ++x) {
    const uint32_t sum = uint32_t(above[x - 1]) + uint32_t(above[x]) + uint32_t(above[x + 1]) +
                         uint32_t(newest[x - 1]) + uint32_t(newest[x + 1]) + uint32_t(below[x - 1]) +
                         uint32_t(below[x]) + uint32_t(below[x + 1]);
    const int32_t n = WrapSub(static_cast<int32_t>(sum) >> 2, other[x]);
    other[x] = WrapSub(n, n >> damping);
  }
}

}  // namespace

WaterSurface::WaterSurface(int32_t width, int32_t height) : width_(width), height_(height) {}

bool WaterSurface::Allocate(size_t heightFieldCells) {
  if (Cells() > INT32_MAX) return false;  // cells are counted in 32 bits
  ZeroedArray<int32_t> a, b;
  ZeroedArray<uint32_t> copy;
  if (!fieldA_ && !a.Allocate(heightFieldCells)) return false;
  if (!fieldB_ && !b.Allocate(heightFieldCells)) return false;
  if (!copy_ && !copy.Allocate(Cells())) return false;
  if (a) fieldA_ = std::move(a);
  if (b) fieldB_ = std::move(b);
  if (copy) copy_ = std::move(copy);
  return true;
}

void WaterSurface::Free() {
  fieldA_.Free();
  fieldB_.Free();
  copy_.Free();
}

void WaterSurface::Displace(FrameView dst, const WaterRefraction& refraction) const {
  const int32_t rim = refraction.wholeRows ? 0 : 1;
  const int32_t* newest = current_ ? fieldB_.Data() : fieldA_.Data();
  const uint32_t pixels = static_cast<uint32_t>(Cells());
  const uint32_t limit = refraction.onePastEnd ? pixels : pixels - 1;
  ForRowBands(width_, rim, height_ - 1,
              [=, width = width_, copy = copy_.Data(), factor = refraction.factor](int32_t begin, int32_t end) {
                for (int32_t y = begin; y < end; ++y) {
                  const int32_t index = y * width;
                  DisplaceRow(newest + index, width, index, rim, width - rim, factor, copy, limit, pixels - 1,
                              dst.Row(y));
                }
              });
}

void WaterSurface::WaveStep(int32_t damping) {
  const int32_t* newest = Field(current_);
  int32_t* other = Field(1 - current_);
  const int32_t width = width_;
  ForRowBands(width, 1, height_ - 1, [=](int32_t begin, int32_t end) {
    for (int32_t i = begin * width; i < end * width; i += width) WaveRow(newest + i, other + i, width, damping & 31);
  });
  current_ = 1 - current_;
}

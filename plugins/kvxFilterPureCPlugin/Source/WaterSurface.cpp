#include "Source/WaterSurface.h"

#include <cmath>
#include <utility>

#include "framework/parallel.h"
#include "framework/pixels.h"

// The rows are plain arithmetic, compiled once for each vector target.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "WaterSurface.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace water {
namespace HWY_NAMESPACE {

// Which pixels of the copy `count` cells show, from that numbered `index` on; `width` cells are a row. Gives the last
// of them.
uint32_t FindSources(const int32_t* cells, int32_t width, int32_t index, int32_t count, int32_t factor,
                     uint32_t* sources) {
  uint32_t last = 0;
#pragma GCC ivdep
  for (int32_t x = 0; x < count; ++x) {
    const int32_t h = cells[x];
    const int32_t rows = WrapMul(WrapSub(h, cells[x + width]), factor) >> 3;
    const int32_t columns = WrapMul(WrapSub(h, cells[x + 1]), factor) >> 3;
    const uint32_t source = static_cast<uint32_t>(WrapAdd(WrapAdd(WrapMul(rows, width), index + x), columns));
    sources[x] = source;
    last = source > last ? source : last;
  }
  return last;
}

void WaveRow(const int32_t* newest, int32_t* other, int32_t width, int32_t damping) {
  const int32_t* above = newest - width;
  const int32_t* below = newest + width;
#pragma GCC ivdep
  for (int32_t x = 1; x < width - 1; ++x) {
    const uint32_t sum = uint32_t(above[x - 1]) + uint32_t(above[x]) + uint32_t(above[x + 1]) +
                         uint32_t(newest[x - 1]) + uint32_t(newest[x + 1]) + uint32_t(below[x - 1]) +
                         uint32_t(below[x]) + uint32_t(below[x + 1]);
    const int32_t n = WrapSub(static_cast<int32_t>(sum) >> 2, other[x]);
    other[x] = WrapSub(n, n >> damping);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace water
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace water {
HWY_EXPORT(FindSources);
HWY_EXPORT(WaveRow);
}  // namespace water

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
  using namespace water;
  const int32_t rim = refraction.wholeRows ? 0 : 1;
  const int32_t* newest = current_ ? fieldB_.Data() : fieldA_.Data();
  const uint32_t pixels = static_cast<uint32_t>(Cells());
  const uint32_t limit = refraction.onePastEnd ? pixels : pixels - 1;
  ForRowBands(width_, rim, height_ - 1,
              [=, width = width_, copy = copy_.Data(), factor = refraction.factor,
               find = HWY_DYNAMIC_DISPATCH(FindSources)](int32_t begin, int32_t end) {
                constexpr int32_t kChunk = 256;
                uint32_t sources[kChunk];
                for (int32_t y = begin; y < end; ++y) {
                  for (int32_t x = rim; x < width - rim; x += kChunk) {
                    const int32_t count = std::min(kChunk, width - rim - x);
                    const int32_t index = y * width + x;
                    const uint32_t last =
                        HWY_DYNAMIC_DISPATCH(FindSources)(newest + index, width, index, count, factor, sources);
                    uint8_t* out = dst.Pixel(x, y);
                    if (last < pixels) {
                      for (int32_t i = 0; i < count; ++i) StorePixel(out, i, copy[sources[i]]);
                      continue;
                    }
                    for (int32_t i = 0; i < count; ++i) {
                      if (sources[i] <= limit) StorePixel(out, i, copy[std::min(sources[i], pixels - 1)]);
                    }
                  }
                }
              });
}

void WaterSurface::WaveStep(int32_t damping) {
  using namespace water;
  const int32_t* newest = Field(current_);
  int32_t* other = Field(1 - current_);
  const int32_t width = width_;
  ForRowBands(width, 1, height_ - 1, [=](int32_t begin, int32_t end) {
    for (int32_t i = begin * width; i < end * width; i += width)
      HWY_DYNAMIC_DISPATCH(WaveRow)(newest + i, other + i, width, damping & 31);
  });
  current_ = 1 - current_;
}

#endif  // HWY_ONCE

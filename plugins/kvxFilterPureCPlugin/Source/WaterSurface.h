// The water that the water effects share: two height fields that take turns, and the picture seen through the newest.
#ifndef KVX_SOURCE_WATER_SURFACE_H_
#define KVX_SOURCE_WATER_SURFACE_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/frame.h"
#include "framework/numeric.h"
#include "framework/zeroed_array.h"

// The whole part of the square root.
uint32_t ISqrt(uint32_t v);

class WaterRandom {
 public:
  uint32_t Next() { return randomState_ = randomState_ * 1103515245u + 12345u; }
  // A value modulo `modulus`, which is taken as unsigned; 0 for a modulus of 0.
  int32_t Below(int32_t modulus) {
    const uint32_t value = Next();
    return modulus == 0 ? 0 : static_cast<int32_t>(value % static_cast<uint32_t>(modulus));
  }

 private:
  uint32_t randomState_ = 0;
};

// One turn in 2048 steps, in units of 1/65536.
struct WaterTables {
  std::array<int32_t, 2048> sineTable;
  std::array<int32_t, 2048> cosineTable;
  static const WaterTables& Get();
};

// How a class looks through its surface.
struct WaterRefraction {
  int32_t factor;   // of the slope
  bool wholeRows;   // every column of every row but the last; otherwise the interior
  bool onePastEnd;  // also a source position just behind the last pixel, which then is the last pixel
};

// Which cells drops fall on: never the first row and column, and the last ones with one class only.
enum class WaterRim { kNone, kLast };

class WaterSurface {
 public:
  WaterSurface(int32_t frameWidth, int32_t frameHeight);

  size_t Cells() const { return static_cast<size_t>(width_) * static_cast<size_t>(height_); }

  // Makes sure that fields of `heightFieldCells` cells and the copy exist. False without memory: what this call
  // allocated is freed again.
  bool Allocate(size_t heightFieldCells);
  void Free();

  uint8_t* Copy() { return reinterpret_cast<uint8_t*>(copy_.Data()); }
  int32_t CopyStep() const { return width_ * 4; }

  // Adds heightOf(squared distance) to every cell of the newest field nearer than `r` to (x, y), within `rim`.
  template <typename HeightOf>
  void AddDrop(int32_t x, int32_t y, int32_t r, WaterRim rim, HeightOf heightOf);

  // Writes what `dst` shows of the copy through the newest field. Pixels whose source position lies outside stay.
  void Displace(FrameView dst, const WaterRefraction& refraction) const;

  // One step of the wave; the overwritten field becomes the newest.
  void WaveStep(int32_t damping);

 private:
  int32_t* Field(int32_t which) { return which ? fieldB_.Data() : fieldA_.Data(); }

  int32_t width_;
  int32_t height_;
  ZeroedArray<int32_t> fieldA_;
  ZeroedArray<int32_t> fieldB_;
  ZeroedArray<uint32_t> copy_;
  int32_t current_ = 0;  // which field is newest
};

template <typename HeightOf>
void WaterSurface::AddDrop(int32_t x, int32_t y, int32_t r, WaterRim rim, HeightOf heightOf) {
  int32_t* field = Field(current_);
  const int64_t radius = r;
  const int64_t square = radius * radius;
  const int32_t last = rim == WaterRim::kLast ? 1 : 0;
  const int64_t left = std::max(-radius, int64_t{1} - x);
  const int64_t right = std::min(radius, int64_t{width_} - x - 1 + last);
  const int64_t top = std::max(-radius, int64_t{1} - y);
  const int64_t bottom = std::min(radius, int64_t{height_} - y - 1 + last);
  for (int64_t dy = top; dy < bottom; ++dy) {
    const int64_t index = (y + dy) * width_ + x;
    for (int64_t dx = left; dx < right; ++dx) {
      const int64_t distance = dx * dx + dy * dy;
      if (distance >= square) continue;
      int32_t& cell = field[index + dx];
      cell = WrapAdd(cell, heightOf(static_cast<uint32_t>(distance)));
    }
  }
}

#endif  // KVX_SOURCE_WATER_SURFACE_H_

#include "Source/LensMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "framework/numeric.h"
#include "framework/parallel.h"

// The samplers are compiled once for each vector target; all give the same bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "LensMap.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lens_map {
namespace HWY_NAMESPACE {
namespace {

uint32_t Load(const uint8_t* pixel) {
  uint32_t word;
  std::memcpy(&word, pixel, 4);
  return word;
}

// The position itself from -1 to `size`; any other, NaN included, gives one of these.
float Inside(float position, float size) {
  const float low = position > -1.0f ? position : -1.0f;
  return low < size ? low : size;
}

// As roundf. The largest float below a half makes the sum cross the next whole number exactly where rounding does.
int32_t Round(float position) {
  return static_cast<int32_t>(position + std::copysign(0.49999997f, position));
}

// The whole number below a position that is at least -1.
int32_t FloorOf(float position) {
  return static_cast<int32_t>(position + 1.0f) - 1;
}

// Samplers say what of a position they want to know, along each axis, and read with that. Nearest: the pixel.
struct Nearest {
  static int32_t Coordinate(float, int32_t nearest) { return nearest; }
  static uint32_t Read(ConstFrameView src, SourcePosition, int32_t x, int32_t y) { return Load(src.Pixel(x, y)); }
};

// In steps of 1/256 of a pixel, first down, then across, rounding each time, all bytes of two pixels at once.
struct Bilinear {
  using Bytes = uint8_t __attribute__((vector_size(8)));
  using Lanes = uint16_t __attribute__((vector_size(16)));

  static int32_t Coordinate(float position, int32_t) {
    return static_cast<int32_t>((position + 1.0f) * 256 + 0.5f) - 256;
  }

  static Bytes Pair(const uint8_t* left, const uint8_t* right) {
    Bytes pair;
    std::memcpy(&pair, left, 4);
    std::memcpy(reinterpret_cast<uint8_t*>(&pair) + 4, right, 4);
    return pair;
  }

  static Lanes Mix(Lanes a, Lanes b, uint16_t f) { return ((a << 8) + (b - a) * f + 128) >> 8; }

  static uint32_t Read(ConstFrameView src, SourcePosition, int32_t x, int32_t y) {
    const int32_t column = x >> 8;
    const int32_t row = y >> 8;
    Bytes top, bottom;
    if (static_cast<uint32_t>(column) < static_cast<uint32_t>(src.width - 1) &&
        static_cast<uint32_t>(row) < static_cast<uint32_t>(src.height - 1)) {
      const uint8_t* pixel = src.Pixel(column, row);
      std::memcpy(&top, pixel, 8);
      std::memcpy(&bottom, pixel + src.step, 8);
    } else {
      const int32_t first = std::max(column, 0), second = std::min(column + 1, src.width - 1);
      const int32_t above = std::max(row, 0), below = std::min(row + 1, src.height - 1);
      top = Pair(src.Pixel(first, above), src.Pixel(second, above));
      bottom = Pair(src.Pixel(first, below), src.Pixel(second, below));
    }
    const Lanes left = Mix(__builtin_convertvector(top, Lanes), __builtin_convertvector(bottom, Lanes), y & 255);
    const Lanes right = __builtin_shufflevector(left, left, 4, 5, 6, 7, 4, 5, 6, 7);
    const Bytes mixed = __builtin_convertvector(Mix(left, right, x & 255), Bytes);
    uint32_t pixel;
    std::memcpy(&pixel, &mixed, 4);
    return pixel;
  }
};

// Kernels: how far they reach on each side, and the weight at distance d from 0 to that.
template <int Slope4>  // the slope at distance 1, in quarters
struct Cubic {
  static constexpr int kReach = 2;
  static float Weight(float d) {
    constexpr float a = Slope4 / 4.0f;
    return d < 1 ? ((a + 2) * d - (a + 3)) * d * d + 1 : ((a * d - 5 * a) * d + 8 * a) * d - 4 * a;
  }
};

struct Spline16 {
  static constexpr int kReach = 2;
  static float Weight(float d) {
    if (d < 1) return ((d - 9.0f / 5) * d - 1.0f / 5) * d + 1;
    d -= 1;
    return ((-1.0f / 3 * d + 4.0f / 5) * d - 7.0f / 15) * d;
  }
};

struct Spline36 {
  static constexpr int kReach = 3;
  static float Weight(float d) {
    if (d < 1) return ((13.0f / 11 * d - 453.0f / 209) * d - 3.0f / 209) * d + 1;
    if (d < 2) {
      d -= 1;
      return ((-6.0f / 11 * d + 270.0f / 209) * d - 156.0f / 209) * d;
    }
    d -= 2;
    return ((1.0f / 11 * d - 45.0f / 209) * d + 26.0f / 209) * d;
  }
};

struct Lanczos {
  static constexpr int kReach = 4;
  static float Weight(float d) {
    if (d < 1e-6f) return 1;
    const double x = d * M_PI;
    return static_cast<float>(kReach * std::sin(x) * std::sin(x / kReach) / (x * x));
  }
};

template <typename Kernel>
struct Separable {
  static constexpr int kTaps = 2 * Kernel::kReach;

  // Weights around a position between `first + kReach - 1` and the pixel behind it, adding up to 1; and where they
  // read.
  struct Taps {
    std::array<float, kTaps> weight;
    std::array<int32_t, kTaps> at;
  };
  static Taps TapsAt(float position, int32_t size) {
    const int32_t first = FloorOf(position) - Kernel::kReach + 1;
    Taps taps;
    float sum = 0;
    for (int i = 0; i < kTaps; ++i) {
      const size_t k = static_cast<size_t>(i);
      taps.weight[k] = Kernel::Weight(std::abs(position - static_cast<float>(first + i)));
      taps.at[k] = ClampInt(first + i, 0, size - 1);
      sum += taps.weight[k];
    }
    for (float& weight : taps.weight) weight /= sum;
    return taps;
  }

  static int32_t Coordinate(float, int32_t nearest) { return nearest; }
  static uint32_t Read(ConstFrameView src, SourcePosition at, int32_t, int32_t) {
    const Taps across = TapsAt(at.x, src.width);
    const Taps down = TapsAt(at.y, src.height);
    std::array<float, 4> total{};
    for (size_t j = 0; j < kTaps; ++j) {
      const uint8_t* row = src.Row(down.at[j]);
      for (size_t i = 0; i < kTaps; ++i) {
        const uint8_t* pixel = row + 4 * across.at[i];
        const float weight = down.weight[j] * across.weight[i];
        for (size_t c = 0; c < 4; ++c) total[c] += weight * pixel[c];
      }
    }
    uint32_t word = 0;
    for (size_t c = 0; c < 4; ++c) {
      word |= static_cast<uint32_t>(CLAMP0255(static_cast<int32_t>(total[c] + 0.5f))) << (8 * c);
    }
    return word;
  }
};

// Rows `begin` to `end` - 1. Not inlined: together in one function the samplers would fight for registers.
template <typename Sampler>
[[gnu::noinline]] void Remap(ConstFrameView src, FrameView dst, const SourcePosition* map, uint32_t fill, int32_t begin,
                             int32_t end) {
  constexpr int32_t kChunk = 256;
  constexpr int32_t kOutside = INT32_MIN;
  const auto coordinate = [](float position, int32_t size) {
    const float inside = Inside(position, static_cast<float>(size));
    const int32_t nearest = Round(inside);
    const int32_t wanted = Sampler::Coordinate(inside, nearest);
    return static_cast<uint32_t>(nearest) < static_cast<uint32_t>(size) ? wanted : kOutside;
  };
  int32_t columns[kChunk];
  int32_t rows[kChunk];
  map += static_cast<ptrdiff_t>(begin) * dst.width;
  for (int32_t y = begin; y < end; ++y) {
    for (int32_t x0 = 0; x0 < dst.width; x0 += kChunk) {
      const int32_t count = std::min(kChunk, dst.width - x0);
      for (int32_t i = 0; i < count; ++i) {
        columns[i] = coordinate(map[i].x, src.width);
        rows[i] = coordinate(map[i].y, src.height);
      }
      uint8_t* out = dst.Pixel(x0, y);
      for (int32_t i = 0; i < count; ++i, out += 4) {
        const bool outside = (columns[i] == kOutside) | (rows[i] == kOutside);
        const uint32_t pixel = outside ? fill : Sampler::Read(src, map[i], columns[i], rows[i]);
        std::memcpy(out, &pixel, 4);
      }
      map += count;
    }
  }
}

using RemapRows = void (*)(ConstFrameView src, FrameView dst, const SourcePosition* map, uint32_t fill, int32_t begin,
                           int32_t end);

}  // namespace

RemapRows RemapOf(Sampling sampling) {
  switch (sampling) {
    case Sampling::kNearest:
      return Remap<Nearest>;
    case Sampling::kBilinear:
      return Remap<Bilinear>;
    case Sampling::kCubicSmooth:
      return Remap<Separable<Cubic<-2>>>;
    case Sampling::kCubicSharp:
      return Remap<Separable<Cubic<-4>>>;
    case Sampling::kSpline16:
      return Remap<Separable<Spline16>>;
    case Sampling::kSpline36:
      return Remap<Separable<Spline36>>;
    case Sampling::kLanczos:
      break;
  }
  return Remap<Separable<Lanczos>>;
}

}  // namespace HWY_NAMESPACE
}  // namespace lens_map
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace lens_map {
HWY_EXPORT(RemapOf);
}  // namespace lens_map

LensMap AllocateLensMap(int32_t width, int32_t height) {
  LensMap map;
  map.Allocate(PixelCount(width, height));
  return map;
}

void RemapFrame(ConstFrameView src, FrameView dst, const SourcePosition* map, Sampling sampling, uint32_t fill) {
  using namespace lens_map;
  const auto remap = HWY_DYNAMIC_DISPATCH(RemapOf)(sampling);
  ForRowBands(dst.width, 0, dst.height, [=](int32_t begin, int32_t end) { remap(src, dst, map, fill, begin, end); });
}

#endif  // HWY_ONCE

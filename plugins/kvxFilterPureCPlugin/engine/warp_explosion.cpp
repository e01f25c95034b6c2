// Radial zoom blur.
#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/pixel_rows.h"
#include "engine/warp_routines.h"

// All of this file is compiled once for each vector target; its loops are plain, so that all give the same bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "warp_explosion.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace warp_explosion {
namespace HWY_NAMESPACE {

namespace {

// Columns that read neighbouring columns.
struct Run {
  int32_t x;
  int32_t from;
  int32_t length;
};

// Samples of one 8.8 scale: how many there are, and what each column reads.
struct Zoom {
  int32_t scale;
  int32_t samples;
  std::vector<Run> runs;
};

int32_t Scaled(int32_t at, int32_t center, int32_t scale, int32_t size) {
  return ClampInt((((at - center) * scale) >> 8) + center, 0, size - 1);
}

// The samples lie so close that neighbours share an 8.8 scale: some 185 samples of a pixel are 25 reads.
std::vector<Zoom> MakeZooms(int32_t taps, const EngineImage& frame, int32_t cx) {
  const int32_t step = static_cast<int32_t>((static_cast<int64_t>(taps) << 16) /
                                            (static_cast<int64_t>(std::max(frame.width, frame.height)) * (taps - 1)));
  std::vector<Zoom> zooms;
  for (int32_t i = 0; i < 2 * taps - 1; ++i) {
    const int32_t scale = (65536 + (taps - 1 + i) * step) >> 8;
    if (zooms.empty() || zooms.back().scale != scale) zooms.push_back({scale, 0, {}});
    ++zooms.back().samples;
  }
  for (Zoom& zoom : zooms) {
    for (int32_t x = 0; x < frame.width; ++x) {
      const int32_t from = Scaled(x, cx, zoom.scale, frame.width);
      if (!zoom.runs.empty() && zoom.runs.back().from + zoom.runs.back().length == from) {
        ++zoom.runs.back().length;
      } else {
        zoom.runs.push_back({x, from, 1});
      }
    }
  }
  return zooms;
}

// Four pixels at a time: a run may write beyond its end, as the next one writes over that. `out` has room for three
// more.
void ReadRow(const Zoom& zoom, const uint8_t* row, int32_t width, uint8_t* out) {
  for (const Run& run : zoom.runs) {
    const uint8_t* from = row + 4 * static_cast<ptrdiff_t>(run.from);
    uint8_t* to = out + 4 * static_cast<ptrdiff_t>(run.x);
    if (run.from + run.length + 3 <= width) {
      for (int32_t i = 0; i < run.length; i += 4) std::memcpy(to + 4 * i, from + 4 * i, 16);
    } else {
      for (int32_t i = 0; i < run.length; ++i) StorePixel(to + 4 * i, LoadPixel(from + 4 * i));
    }
  }
}

// `Sum` holds (2 * taps - 1) * 255.
template <typename Sum>
void DrawExplosion(const std::vector<Zoom>& zooms, int32_t taps, int32_t cy, const EngineImage& frame,
                   const EngineImage& copy) {
  const size_t bytes = static_cast<size_t>(frame.width) * 4;
  std::vector<uint8_t> zoomed(bytes + 12);
  std::vector<Sum> sums(bytes);
  // Half a part of the divisor keeps the product above the whole numbers that it must not fall below.
  const float part = 1.0f / static_cast<float>(taps);
  for (int32_t y = 0; y < frame.height; ++y) {
    std::fill(sums.begin(), sums.end(), Sum{0});
    for (const Zoom& zoom : zooms) {
      ReadRow(zoom, copy.Row(Scaled(y, cy, zoom.scale, frame.height)), frame.width, zoomed.data());
      const Sum samples = static_cast<Sum>(zoom.samples);
      for (size_t i = 0; i < bytes; ++i) sums[i] = static_cast<Sum>(sums[i] + samples * zoomed[i]);
    }
    for (size_t i = 0; i < bytes; ++i) {
      const float half = static_cast<float>(static_cast<int32_t>(sums[i] >> 1));
      zoomed[i] = static_cast<uint8_t>(static_cast<int32_t>((half + 0.5f) * part));
    }
    StoreColors(frame.Row(y), zoomed.data(), frame.width);
  }
}

int32_t Explosion(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const int32_t taps = std::max((Percent(record.radius) * frame.width) >> 10, 5);
  const int32_t cy = CenterY(record, frame);
  const std::vector<Zoom> zooms = MakeZooms(taps, frame, CenterX(record, frame));
  if ((2 * taps - 1) * 255 <= UINT16_MAX) {
    DrawExplosion<uint16_t>(zooms, taps, cy, frame, copy);
  } else {
    DrawExplosion<uint32_t>(zooms, taps, cy, frame, copy);
  }
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> Routines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kExplosion, Explosion}};
  return kRoutines;
}

}  // namespace HWY_NAMESPACE
}  // namespace warp_explosion
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace warp_explosion {
HWY_EXPORT(Routines);
}  // namespace warp_explosion

std::span<const WarpRoutine> ExplosionRoutines() {
  using namespace warp_explosion;
  return HWY_DYNAMIC_DISPATCH(Routines)();
}

#endif  // HWY_ONCE

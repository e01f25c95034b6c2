// Flames: a field of heat that is fed at its bottom and rises, drawn through a palette.
#include <algorithm>
#include <array>
#include <cstring>

#include "engine/pixel_rows.h"
#include "engine/warp_routines.h"
#include "framework/random.h"

// All of this file is compiled once for each vector target; its loops are plain, so that all give the same bytes.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "warp_flames.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace warp_flames {
namespace HWY_NAMESPACE {

namespace {

using Palette = std::array<uint16_t, 256>;

// 5-6-5 words from black through red and yellow to white.
constexpr Palette MakePalette() {
  Palette palette{};
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t red = std::min(i * i / 16, 255);
    const int32_t green = std::clamp((i - 44) * 5, 0, 255);
    const int32_t blue = std::clamp((i - 104) * 4, 0, 255);
    palette[static_cast<size_t>(i)] = static_cast<uint16_t>((red >> 3) << 11 | (green >> 2) << 5 | blue >> 3);
  }
  return palette;
}
constexpr Palette kPalette = MakePalette();

// The bottom five rows, column by column from below: every third cell takes a byte, doubled within its eight bits if it
// is bright and as none if it is dark, and the two cells above take the same.
void Seed(int32_t* field, const EngineImage& frame) {
  const int32_t rows = std::min(5, frame.height);
  Rand rand;
  int32_t at = rand.Next() & 511;
  for (int32_t x = 0; x < frame.width; ++x) {
    int32_t heat = 0;
    for (int32_t i = 0; i < rows; ++i) {
      if (i % 3 == 0) {
        const int32_t byte = randomTable[at++ & 0x3FF];
        heat = byte > 128 ? 2 * byte & 255 : 0;
      }
      field[static_cast<ptrdiff_t>(frame.height - 1 - i) * frame.width + x] = heat;
    }
  }
}

// Heat rises by a row: each cell takes the mean of three cells in the row behind it and one in the row behind that. As
// the mean is cut, heat fades on its way.
void RiseInto(int32_t* row, int32_t width) {
  const int32_t last = width - 1;
  const int32_t* behind = row + width;
  const int32_t* farther = behind + width;
  const auto mean = [=](int32_t left, int32_t x, int32_t right) {
    return (behind[left] + behind[x] + behind[right] + farther[x]) >> 2;
  };
#pragma GCC ivdep
  for (int32_t x = 1; x < last; ++x) row[x] = mean(x - 1, x, x + 1);
  row[0] = mean(0, 0, std::min(1, last));
  row[last] = mean(std::max(last - 1, 0), last, last);
}

// Heat rises `rounds` times. A round is done with a row as soon as the one before is done with the two behind it, so
// that all go down the field together. The first row has nowhere to pass heat on to and copies its neighbour.
void Rise(int32_t* field, const EngineImage& frame, int32_t rounds) {
  const int32_t width = frame.width;
  const int32_t end = frame.height - 2;
  for (int32_t front = 1; front < end + 3 * (rounds - 1); ++front) {
    for (int32_t round = 0; round < rounds; ++round) {
      const int32_t y = front - 3 * round;
      if (y >= 1 && y < end) RiseInto(field + static_cast<ptrdiff_t>(y) * width, width);
    }
  }
  if (frame.height > 1) std::copy_n(field + width, width, field);
}

int32_t Flames(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const int32_t width = frame.width;
  const int32_t height = frame.height;
  const int64_t size = static_cast<int64_t>(width) * height;
  if (size * 4 > INT32_MAX) return kEngineNoScratch;
  const bool fresh = size * 4 > record.tableCapacity;
  auto* field = reinterpret_cast<int32_t*>(EnsureTable(record, static_cast<int32_t>(size * 4), 0));
  if (!field) return kEngineNoScratch;
  if (fresh) std::memset(field, 0, static_cast<size_t>(size) * 4);
  Seed(field, frame);
  Rise(field, frame, 3);

  uint32_t alpha[256];
  const uint32_t strength = static_cast<uint32_t>(Percent(record.level) * 45 / 200);
  for (size_t i = 0; i < 256; ++i) alpha[i] = std::min(kPalette[i] * strength * 20 / 64453, 255u);

  const bool forward = record.direction == 1;
  const uint32_t* alphas = alpha;
  ForEachRow(frame, [=](int32_t y, uint8_t* out) {
    // Most of the field is cold: whole blocks of it are passed over.
    constexpr int32_t kBlock = 32;
    const int32_t* heat = field + (forward ? y : height - 1 - y) * static_cast<ptrdiff_t>(width);
    for (int32_t x = 0; x < width; x += kBlock) {
      const int32_t count = std::min(kBlock, width - x);
      const int32_t* cells = heat + (forward ? x : width - x - count);
      int32_t any = 0;
      for (int32_t i = 0; i < count; ++i) any |= cells[i];
      if ((any & 255) == 0) continue;
      for (int32_t i = 0; i < count; ++i) {
        const int32_t index = cells[forward ? i : count - 1 - i] & 255;
        if (index == 0) continue;
        const uint32_t word = kPalette[static_cast<size_t>(index)];
        const uint32_t a = alphas[index];
        const uint8_t* in = copy.Row(y) + 4 * (x + i);
        uint8_t* p = out + 4 * (x + i);
        p[0] = static_cast<uint8_t>((in[0] * (256 - a) + (word & 31) * 8 * a) >> 8);
        p[1] = static_cast<uint8_t>((in[1] * (256 - a) + (word >> 3 & 252) * a) >> 8);
        p[2] = static_cast<uint8_t>((in[2] * (256 - a) + (word >> 8 & 248) * a) >> 8);
      }
    }
  });
  return kEngineDone;
}

}  // namespace

std::span<const WarpRoutine> Routines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kFlames, Flames}};
  return kRoutines;
}

}  // namespace HWY_NAMESPACE
}  // namespace warp_flames
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace warp_flames {
HWY_EXPORT(Routines);
}  // namespace warp_flames

std::span<const WarpRoutine> FlameRoutines() {
  using namespace warp_flames;
  return HWY_DYNAMIC_DISPATCH(Routines)();
}

#endif  // HWY_ONCE

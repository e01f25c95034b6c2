// Warps by a map that stands until the parameters or the size change: for each pixel one word, source row in the high
// half and source column in the low half.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "engine/pixel_rows.h"
#include "engine/warp_routines.h"

namespace {

struct Place {
  int32_t x;
  int32_t y;
};

// A place has 16 bits for its row and 16 for its column.
constexpr int32_t kLongestSide = 1 << 16;

// a * b / c, with as many bits as the product of two sides needs.
int32_t Scaled(int64_t a, int32_t b, int32_t c) {
  return static_cast<int32_t>(a * b / c);
}

double Distance(int32_t dx, int32_t dy) {
  return std::sqrt(static_cast<double>(static_cast<int64_t>(dx) * dx + static_cast<int64_t>(dy) * dy));
}

// The centre of a warp, and the distance from there to the farthest corner.
struct Center {
  int32_t x;
  int32_t y;
  int32_t reach;
};

Center CenterOf(const EngineRecord& record, const EngineImage& frame) {
  const int32_t x = CenterX(record, frame);
  const int32_t y = CenterY(record, frame);
  return {x, y, Trunc32(Distance(std::max(x, frame.width - x), std::max(y, frame.height - y)))};
}

// Draws the frame through its map; makes the map by `placeOf(x, y)` where one of `flags` asks for it.
template <typename PlaceOf>
int32_t DrawByMap(EngineRecord& record, const EngineImage& frame, const EngineImage& copy, uint32_t flags,
                  PlaceOf placeOf) {
  const int32_t width = frame.width;
  const int32_t height = frame.height;
  const int64_t bytes = static_cast<int64_t>(width) * height * 4;
  if (bytes > INT32_MAX || std::max(width, height) > kLongestSide) return kEngineNoScratch;
  auto* map = reinterpret_cast<uint32_t*>(EnsureTable(record, static_cast<int32_t>(bytes), flags));
  if (!map) return kEngineNoScratch;
  if (record.dirtyFlags & flags) {
    ForRowBands(width, 0, height, [=](int32_t begin, int32_t end) {
      uint32_t* entry = map + static_cast<ptrdiff_t>(begin) * width;
      for (int32_t y = begin; y < end; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          const Place place = placeOf(x, y);
          *entry++ = static_cast<uint32_t>(ClampInt(place.y, 0, height - 1)) << 16 |
                     static_cast<uint32_t>(ClampInt(place.x, 0, width - 1));
        }
      }
    });
    record.dirtyFlags &= ~flags;
  }
  const uint32_t* places = map;
  ForEachRow(frame, [=](int32_t y, uint8_t* out) {
    const uint32_t* row = places + static_cast<ptrdiff_t>(y) * width;
    for (int32_t x = 0; x < width; ++x) {
      StorePixel(out + 4 * x, LoadPixel(copy.Row(static_cast<int32_t>(row[x] >> 16)) + 4 * (row[x] & 0xFFFF)));
    }
  });
  return kEngineDone;
}

constexpr uint32_t kMapFlags = 2 | kDirtyMap | kDirtyParticles;

// Pixels outside a circle fall onto it. A place beside the frame runs on into the neighbouring row.
int32_t Tunnel(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const int32_t width = frame.width;
  const int32_t height = frame.height;
  const int32_t cx = CenterX(record, frame);
  const int32_t cy = (100 - Percent(record.posY)) * height / 100;
  const int32_t radius = Percent(record.radius, 2) * std::min(width, height) / 200;
  return DrawByMap(record, frame, copy, kDirtyMap | kDirtyParticles, [=](int32_t x, int32_t y) -> Place {
    const int32_t dx = x - cx;
    const int32_t dy = y - cy;
    const int32_t d = Trunc32(Distance(dx, dy));
    if (d <= radius) return {x, y};
    const int64_t index = static_cast<int64_t>(cy + Scaled(radius, dy, d)) * width + cx + Scaled(radius, dx, d);
    const int64_t limited = std::clamp<int64_t>(index, 0, static_cast<int64_t>(width) * height - 1);
    return {static_cast<int32_t>(limited % width), static_cast<int32_t>(limited / width)};
  });
}

// Radial zoom. The map's rows run from the frame's last row to its first.
int32_t Enlarge(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const Center center = CenterOf(record, frame);
  const int32_t near = (100 - Percent(record.level)) * center.reach / 100;
  const int32_t total = center.reach + near;
  const int32_t bottom = frame.height - 1;
  return DrawByMap(record, frame, copy, kMapFlags, [=](int32_t x, int32_t y) -> Place {
    const int32_t dx = x - center.x;
    const int32_t dy = bottom - y - center.y;
    const int32_t d = Trunc32(Distance(dx, dy)) + near;
    return {center.x + Scaled(dx, d, total), bottom - (center.y + Scaled(dy, d, total))};
  });
}

// Power-law pinch.
int32_t Narrow(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const Center center = CenterOf(record, frame);
  const double exponent = 1 / (Percent(record.level, 1) / 100.0 + 1);
  return DrawByMap(record, frame, copy, kMapFlags, [=](int32_t x, int32_t y) -> Place {
    const int32_t dx = x - center.x;
    const int32_t dy = y - center.y;
    if (std::abs(dx) < 2 && std::abs(dy) < 2) return {x, y};
    const double base = Distance(dx, dy) / center.reach;
    const double scale = std::pow(base, exponent) * exponent / base;
    return {center.x + Trunc32(dx * scale), center.y + Trunc32(dy * scale)};
  });
}

int32_t Whirl(EngineRecord& record, const EngineImage& frame, const EngineImage& copy) {
  const Center center = CenterOf(record, frame);
  const double twist = Percent(record.level, 1) * -0.031415926;
  return DrawByMap(record, frame, copy, kMapFlags, [=](int32_t x, int32_t y) -> Place {
    const int32_t dx = x - center.x;
    const int32_t dy = y - center.y;
    const double r = Distance(dx, dy) / center.reach;
    const double angle = (1 - r) * (1 - r) * twist;
    const double sine = std::sin(angle);
    const double cosine = std::cos(angle);
    return {Trunc32(dx * cosine - dy * sine) + center.x, Trunc32(dy * cosine + dx * sine) + center.y};
  });
}

}  // namespace

std::span<const WarpRoutine> MapRoutines() {
  static constexpr WarpRoutine kRoutines[] = {{code::kTunnel, Tunnel, true},
                                              {code::kEnlarge, Enlarge, true},
                                              {code::kNarrow, Narrow, true},
                                              {code::kWhirl, Whirl, true}};
  return kRoutines;
}

// Stars, snow and bubbles. Particles live in the record's table buffer from frame to frame, in a square of their own
// that is mapped to pixels only when they are drawn. One without size is born in the next frame.
#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <vector>

#include "engine/disc.h"
#include "engine/engine_internal.h"
#include "engine/film_wear.h"
#include "engine/frame_rate.h"
#include "framework/numeric.h"
#include "framework/random.h"

namespace film {

namespace {

struct Particle {
  int32_t size;
  int32_t x;
  int32_t y;
  int32_t look;  // a star's life, a flake's shade, a bubble's colour
};
static_assert(sizeof(Particle) == 16);

// Fewer for a larger `divisor`.
int32_t CountOf(const EngineRecord& record, const EngineImage& image, int32_t divisor) {
  return ClampInt(record.level, 1, 100) * std::max(image.width, image.height) / divisor;
}

// Empty without memory. A new frame size or a larger array starts all of them anew.
std::span<Particle> Particles(EngineRecord& record, int32_t count) {
  uint8_t* buffer = EnsureTable(record, count * static_cast<int32_t>(sizeof(Particle)), kDirtyParticles);
  if (!buffer) return {};
  if (record.dirtyFlags & kDirtyParticles) {
    std::memset(buffer, 0, static_cast<size_t>(record.tableCapacity));
    record.dirtyFlags &= ~kDirtyParticles;
  }
  return {reinterpret_cast<Particle*>(buffer), static_cast<size_t>(count)};
}

// The particle's disc, kept inside the frame.
template <typename PerPixel>
void DrawParticle(const EngineImage& image, const Particle& particle, int radius, int positionBits, PerPixel perPixel) {
  const int32_t x = (particle.x * image.width) >> positionBits;
  const int32_t y = (particle.y * image.height) >> positionBits;
  ForEachInDisc(image, ClampInt(x, radius, image.width - 1 - radius), ClampInt(y, radius, image.height - 1 - radius),
                radius, perPixel);
}

// Directions 0 to 3: up, down, left, right.
struct Velocity {
  Velocity(const EngineRecord& record, int32_t direction) {
    static constexpr int32_t kUnits[4][2] = {{0, -1}, {0, 1}, {-1, 0}, {1, 0}};
    const double pace = 25.0 / FrameRateOf(record);
    x = kUnits[direction][0] * pace;
    y = kUnits[direction][1] * pace;
  }
  double x;
  double y;
};

int32_t DirectionOf(const EngineRecord& record) {
  return ClampInt(record.direction, 0, 3);
}

// Whether a particle of this size reaches over the rim of its square.
bool Leaves(int64_t x, int64_t y, int32_t size, int32_t last) {
  return x < size || y < size || x + size > last || y + size > last;
}

}  // namespace

// A star that has a place keeps it for ever: only its size and its light change.
int32_t Star(EngineRecord& record, const EngineImage& image) {
  const int32_t count = CountOf(record, image, 25);
  const auto stars = Particles(record, count);
  if (stars.empty()) return count > 0 ? kEngineNoScratch : kEngineDone;
  const int32_t step = Trunc32(375.0 / FrameRateOf(record));
  Rand rand;
  for (Particle& star : stars) {
    const int32_t life = star.look - (rand.Next() & step);
    if (star.size < 1 || life < 1) {
      star.size = rand.Next() % 3 + 1;
      star.look = (rand.Next() & 63) + 192;
      if (star.x == 0 || star.y == 0) {
        star.x = rand.Next() % 1023 + 1;
        star.y = rand.Next() % 1023 + 1;
      }
    } else {
      star.look = life;
    }
    const int32_t radius2 = star.size * star.size;
    DrawParticle(image, star, star.size, 10, [&](uint8_t* p, int64_t d2) {
      const int32_t a = (radius2 - static_cast<int32_t>(d2)) * star.look / radius2;
      for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>((p[c] * (255 - a) + 255 * a) >> 8);
    });
  }
  return kEngineDone;
}

namespace {

constexpr int32_t kLargestFlake = 11;

// How much of the picture a flake lets through, in 256ths, by squared distance: a third in the middle, all at the rim.
using FlakeTable = std::array<uint8_t, 4 * kLargestFlake * kLargestFlake>;

std::array<FlakeTable, kLargestFlake + 1> MakeFlakes() {
  std::array<FlakeTable, kLargestFlake + 1> flakes{};
  for (int32_t size = 1; size <= kLargestFlake; ++size) {
    const int32_t radius2 = 4 * size * size;
    for (int32_t d2 = 0; d2 < radius2; ++d2) {
      flakes[size][d2] = static_cast<uint8_t>((radius2 + 2 * d2) * 256 / (3 * radius2));
    }
  }
  return flakes;
}

}  // namespace

int32_t Snow(EngineRecord& record, const EngineImage& image) {
  static const auto kFlakes = MakeFlakes();
  const int32_t count = CountOf(record, image, 100);
  const auto flakes = Particles(record, count);
  if (flakes.empty()) return count > 0 ? kEngineNoScratch : kEngineDone;
  const int32_t largest = ClampInt(record.radius, 0, 100) / 10;
  const int32_t direction = DirectionOf(record);
  const Velocity velocity(record, direction);
  const int32_t scale = (direction < 2 ? image.height : image.width) >> 8;
  Rand rand;
  for (Particle& flake : flakes) {
    const int32_t step = scale * flake.size + 1;
    const int32_t x = Trunc32(flake.x + velocity.x * step);
    const int32_t y = Trunc32(flake.y + velocity.y * step);
    if (flake.size == 0 || Leaves(x, y, flake.size, 1023)) {
      flake.size = rand.Next() % (largest + 1) + 1;
      flake.x = rand.Next() & 0x3FF;
      flake.y = rand.Next() & 0x3FF;
      flake.look = rand.Next() % 56 + 200;
    } else {
      flake.x = x;
      flake.y = y;
    }
    const FlakeTable& through = kFlakes[flake.size];
    DrawParticle(image, flake, 2 * flake.size, 10, [&](uint8_t* p, int64_t d2) {
      const int32_t t = through[static_cast<size_t>(d2)];
      for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>((p[c] * t + (256 - t) * flake.look) >> 8);
    });
  }
  return kEngineDone;
}

namespace {

// How much of a bubble's colour is seen, in 256ths, by squared distance: a clear middle, brightest near 0.9 of the
// radius.
std::vector<uint8_t> MakeRing(int32_t radius) {
  const int64_t radius2 = int64_t{radius} * radius;
  std::vector<uint8_t> ring(static_cast<size_t>(radius2));
  for (int64_t d2 = (radius2 >> 3) + 1; d2 < radius2; ++d2) {
    ring[static_cast<size_t>(d2)] =
        static_cast<uint8_t>(5 * d2 < 4 * radius2 ? 160 * d2 / radius2 : 800 * (radius2 - d2) / radius2);
  }
  return ring;
}

}  // namespace

// A bubble's colour follows from where it was born.
int32_t Bubble(EngineRecord& record, const EngineImage& image) {
  const int32_t count = CountOf(record, image, 300);
  const auto bubbles = Particles(record, count);
  if (bubbles.empty()) return count > 0 ? kEngineNoScratch : kEngineDone;
  const int32_t largest = ClampInt(record.radius, 0, 100) / 4;
  const int32_t direction = DirectionOf(record);
  const Velocity velocity(record, direction);
  const double roundX = direction == 3 ? 0.5 : -0.5;
  const double roundY = direction == 1 ? 0.5 : -0.5;
  std::array<std::vector<uint8_t>, 26> rings;  // by size, made when needed
  Rand rand;
  for (Particle& bubble : bubbles) {
    const int32_t step = (bubble.size >> 2) + 1 + (largest + 1) / 5;
    const int64_t x = int64_t{bubble.x} + Trunc32(velocity.x * step + roundX);
    const int64_t y = int64_t{bubble.y} + Trunc32(velocity.y * step + roundY);
    if (bubble.size == 0 || Leaves(x, y, bubble.size, 255)) {
      bubble.size = rand.Next() % std::max(largest, 1) + 1;
      const int32_t r1 = rand.Next();
      const int32_t r2 = rand.Next();
      const int32_t r3 = rand.Next();
      bubble.x = r1 & 255;
      bubble.y = r2 & 255;
      bubble.look = (r3 & 255) << 16 | (r2 & 255) << 8 | (r1 & 255);
    } else {
      bubble.x = static_cast<int32_t>(x);
      bubble.y = static_cast<int32_t>(y);
    }
    const int32_t radius = (bubble.size * std::max(image.width, image.height)) >> 8;
    std::vector<uint8_t>& ring = rings[static_cast<size_t>(bubble.size)];
    if (ring.empty()) ring = MakeRing(radius);
    const int32_t color[3] = {bubble.look & 255, bubble.look >> 8 & 255, bubble.look >> 16};
    DrawParticle(image, bubble, radius, 8, [&](uint8_t* p, int64_t d2) {
      const int32_t a = ring[static_cast<size_t>(d2)];
      for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>((p[c] * (256 - a) + a * color[c]) >> 8);
    });
  }
  return kEngineDone;
}

}  // namespace film

// The warps: effects 170 to 190 over the engine.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>

#include "engine/engine_internal.h"
#include "framework/random.h"
#include "tests/support/frames.h"

namespace {

// The stream of random numbers that an effect sees after `seed`.
class Draws {
 public:
  explicit Draws(uint32_t seed) : state_(seed) { Rand().Seed(seed); }
  int Next() {
    state_ = state_ * 214013u + 2531011u;
    return static_cast<int>(state_ >> 16 & 0x7FFF);
  }

 private:
  uint32_t state_;
};

// A picture, with ways to read it that keep to the frame.
struct Picture {
  Picture(int width, int height, int padding = 0) : frame(width, height, padding) { frame.FillTestPicture(3); }
  uint32_t Word(int x, int y) const {
    return frame.Word(std::clamp(x, 0, frame.Width() - 1), std::clamp(y, 0, frame.Height() - 1));
  }
  int Byte(int x, int y, int c) const { return static_cast<int>(Word(x, y) >> (8 * c) & 255); }
  int Gray(int x, int y) const { return (Byte(x, y, 0) + 2 * Byte(x, y, 1) + Byte(x, y, 2)) >> 2; }
  FrameBuffer frame;
};

using ByteAt = std::function<int(int x, int y, int c)>;

// Colours as told, alpha as it was.
void ExpectColors(const Picture& before, const FrameBuffer& after, const std::string& what, const ByteAt& expected) {
  for (int y = 0; y < after.Height(); ++y) {
    for (int x = 0; x < after.Width(); ++x) {
      for (int c = 0; c < 3; ++c) {
        ASSERT_EQ(after.Pixel(x, y)[c], expected(x, y, c)) << what << " at " << x << " " << y << " " << c;
      }
      ASSERT_EQ(after.Pixel(x, y)[3], before.Byte(x, y, 3)) << what << " at " << x << " " << y;
    }
  }
}

// Whole pixels from a place, which is limited to the frame.
using PlaceOf = std::function<std::pair<int, int>(int x, int y)>;
void ExpectMoved(const Picture& before, const FrameBuffer& after, const std::string& what, const PlaceOf& place) {
  for (int y = 0; y < after.Height(); ++y) {
    for (int x = 0; x < after.Width(); ++x) {
      const auto [sx, sy] = place(x, y);
      ASSERT_EQ(after.Word(x, y), before.Word(sx, sy)) << what << " at " << x << " " << y;
    }
  }
}

bool Inside(const Picture& p, int x, int y) {
  return x > 0 && y > 0 && x < p.frame.Width() - 1 && y < p.frame.Height() - 1;
}

TEST(WarpEdges, NeighbourhoodsOfThree) {
  Picture p(41, 23, 12);
  const auto around = [](int x, int y, const std::function<int(int, int)>& at) {  // at(x + dx, y + dy) in reading order
    std::array<int, 9> n;
    for (int i = 0; i < 9; ++i) n[static_cast<size_t>(i)] = at(x + i % 3 - 1, y + i / 3 - 1);
    return n;
  };
  const auto largest = [&](int x, int y, const std::function<int(int, int)>& at) {
    const auto n = around(x, y, at);
    return *std::max_element(n.begin(), n.end());
  };
  const auto sobel = [&](int x, int y, const std::function<int(int, int)>& at) {
    const auto n = around(x, y, at);
    const int gx = 2 * (n[5] - n[3]) - n[0] - n[6] + n[2] + n[8];
    const int gy = 2 * (n[7] - n[1]) - n[0] - n[2] + n[6] + n[8];
    return std::min(std::min(std::abs(gx), 255) + std::min(std::abs(gy), 255), 255);
  };
  const auto gray = [&](int x, int y) { return p.Gray(x, y); };
  const auto channel = [&](int c) { return [&p, c](int x, int y) { return p.Byte(x, y, c); }; };

  ExpectColors(p, RunEffect(171, p.frame), "sharpen", [&](int x, int y, int c) {
    if (!Inside(p, x, y)) return p.Byte(x, y, c);
    int sum = 0;
    for (const int n : around(x, y, channel(c))) sum += n;
    return std::clamp(10 * p.Byte(x, y, c) - sum, 0, 255);
  });
  for (const int id : {173, 175}) {
    ExpectColors(p, RunEffect(id, p.frame, {30}), "sketch", [&](int x, int y, int c) {
      return Inside(p, x, y) ? 255 - ((sobel(x, y, gray) + 30) >> 1) : p.Byte(x, y, c);
    });
  }
  ExpectColors(p, RunEffect(174, p.frame, {140}), "neon",
               [&](int x, int y, int c) { return Inside(p, x, y) ? std::max(sobel(x, y, channel(c)), 100) : 0; });
  ExpectColors(p, RunEffect(187, p.frame, {50}), "sketch b", [&](int x, int y, int) {
    const int m = largest(x, y, gray);
    return m == 0 || !Inside(p, x, y) ? 255 : std::min((((1 << 24) / m) * p.Gray(x, y)) >> 16, 255);
  });
  ExpectColors(p, RunEffect(188, p.frame), "neon b", [&](int x, int y, int c) {
    const int m = largest(x, y, channel(c));
    return m == 0 || !Inside(p, x, y) ? 0 : std::min((((1 << 24) / (m + 8)) * p.Byte(x, y, c)) >> 16, 255);
  });
  ExpectColors(p, RunEffect(189, p.frame), "neon c", [&](int x, int y, int c) {
    const int value = p.Byte(x, y, c);
    const int d = Inside(p, x, y) ? largest(x, y, channel(c)) - value : 0;
    // Read one entry beyond where it was filled: the next k, or the first of the next row.
    const int s = static_cast<int>(std::sqrt(value + 1.0));
    const int r = s == 16 ? d + 1 : d, k = s == 16 ? 1 : s + 1;
    return value + ((3584 * k / (r + 2 * k) / 10 * (255 - value)) >> 8);
  });
}

TEST(WarpEdges, FramesWithoutInnerPixels) {
  for (const auto& [width, height] : {std::pair{2, 5}, {5, 2}, {1, 1}, {1, 4}}) {
    Picture p(width, height);
    EXPECT_EQ(RunEffect(171, p.frame).Packed(), p.frame.Packed());
    EXPECT_EQ(RunEffect(173, p.frame, {50}).Packed(), p.frame.Packed());
    ExpectColors(p, RunEffect(174, p.frame, {50}), "neon", [](int, int, int) { return 0; });
    ExpectColors(p, RunEffect(187, p.frame), "sketch b", [](int, int, int) { return 255; });
    ExpectColors(p, RunEffect(188, p.frame), "neon b", [](int, int, int) { return 0; });
  }
}

TEST(WarpBlur, BoxOfOpaqueAndOfPartlyTransparentFrames) {
  Picture p(660, 6);  // side 3
  p.frame.FillOpaquePicture();
  const FrameBuffer blurred = RunEffect(172, p.frame);
  int sum = 0;
  for (int i = 0; i < 9; ++i) sum += p.Byte(100 + i % 3 - 1, 3 + i / 3 - 1, 1);
  EXPECT_NEAR(blurred.Pixel(100, 3)[1], sum / 9.0, 0.51);
  // The rim mirrors without its own pixel.
  sum = 0;
  for (int i = 0; i < 9; ++i) sum += p.Byte(100 + i % 3 - 1, std::abs(i / 3 - 1), 1);
  EXPECT_NEAR(blurred.Pixel(100, 0)[1], sum / 9.0, 0.51);
  Picture narrow(300, 4);
  EXPECT_EQ(RunEffect(172, narrow.frame).Packed(), narrow.frame.Packed()) << "side 1";

  FrameBuffer patch(640, 8);
  patch.Fill(0);
  for (int y = 2; y < 5; ++y) {
    for (int x = 10; x < 14; ++x) patch.SetPixel(x, y, 90, 90, 90, 90);
  }
  patch.SetPixel(9, 3, 90, 90, 90, 0);  // colour without alpha lies outside the region, yet weighs in
  const FrameBuffer part = RunEffect(172, patch);
  EXPECT_EQ(part.Word(11, 3), 0x5A5A5A5Au);
  EXPECT_EQ(part.Word(9, 3), 0x005A5A5Au) << "outside the region nothing changes";
  EXPECT_EQ(part.Word(10, 3), 0x3C464646u) << "alpha is filtered too";
}

TEST(WarpDisplace, JitterFollowsTheStream) {
  Picture p(37, 29, 8);
  Draws draws(99);
  int jumps[64];
  for (int& jump : jumps) jump = draws.Next() % 8 - 4;
  int k = draws.Next() & 63;
  const FrameBuffer after = RunEffect(170, p.frame, {44});  // reach 44 / 5 / 2 = 4
  ExpectMoved(p, after, "jitter", [&](int x, int y) {
    if (x < 4 || y < 4 || x >= 33 || y >= 25) return std::pair{x, y};
    const int sy = jumps[(k + y + x) & 63] + y;
    k = jumps[(sy + x) & 63];
    return std::pair{x + k, sy};
  });
}

TEST(WarpDisplace, RippleKeepsItsWave) {
  Picture p(70, 40, 8);
  const auto processor = MakeEffect(176, 70, 40);
  Draws draws(7);
  int wave[1024];
  for (int i = 0; i < 1024; ++i) {
    const int height = std::abs(30 - (draws.Next() + i) % 60);
    wave[i] = static_cast<int>(height * 0.25 * std::sin(i * 12.5663704 / 30) + 0.5);
  }
  for (const double level : {30, 80}) {  // the second level is not looked at
    FrameBuffer after(70, 40);
    RunFrame(*processor, p.frame, after, Values(176, {level}));
    const int r = draws.Next();
    int last = 0, shift = 0;
    ExpectMoved(p, after, "ripple", [&](int x, int y) {
      if (x == 0) shift = wave[((r & 1023) + last + y) & 1023];
      last = std::clamp(wave[x] + y, 0, 39);
      return std::pair{x + shift, last};
    });
  }
}

TEST(WarpMaps, PlacesAndRebuild) {
  constexpr int kWidth = 48, kHeight = 30;
  Picture p(kWidth, kHeight, 4);
  const auto distance = [](int dx, int dy) { return std::sqrt(static_cast<double>(dx * dx + dy * dy)); };
  for (const auto& place : {std::array{50, 50, 50}, {20, 90, 100}, {100, 0, 1}, {0, 30, 0}}) {
    const int posX = place[0], posY = place[1], percent = place[2];  // clang 14 captures no structured bindings
    const auto run = [&](int id) {
      const auto processor = MakeEffect(id, kWidth, kHeight);
      FrameBuffer after(kWidth, kHeight);
      RunFrame(*processor, p.frame, after, Values(id, {10, 80, 70}));  // a map that must not stay
      RunFrame(*processor, p.frame, after, Values(id, {double(posX), double(posY), double(percent)}));
      return after;
    };
    const int cx = posX * kWidth / 100, cy = posY * kHeight / 100;
    const int reach = static_cast<int>(distance(std::max(cx, kWidth - cx), std::max(cy, kHeight - cy)));
    ExpectMoved(p, run(177), "tunnel", [&](int x, int y) {
      const int tunnelY = (100 - posY) * kHeight / 100, radius = std::max(percent, 2) * kHeight / 200;
      const int dx = x - cx, dy = y - tunnelY, d = static_cast<int>(distance(dx, dy));
      if (d <= radius) return std::pair{x, y};
      const int index = (tunnelY + radius * dy / d) * kWidth + cx + radius * dx / d;  // runs on into other rows
      const int limited = std::clamp(index, 0, kWidth * kHeight - 1);
      return std::pair{limited % kWidth, limited / kWidth};
    });
    ExpectMoved(p, run(178), "enlarge", [&](int x, int y) {
      const int mapRow = kHeight - 1 - y, dx = x - cx, dy = mapRow - cy;
      const int d = static_cast<int>(distance(dx, dy)), k = (100 - percent) * reach / 100;
      return std::pair{cx + dx * (d + k) / (reach + k), kHeight - 1 - (cy + dy * (d + k) / (reach + k))};
    });
    ExpectMoved(p, run(179), "narrow", [&](int x, int y) {
      const int dx = x - cx, dy = y - cy;
      if (std::abs(dx) < 2 && std::abs(dy) < 2) return std::pair{x, y};
      const double e = 1 / (std::max(percent, 1) / 100.0 + 1), base = distance(dx, dy) / reach;
      const double scale = std::pow(base, e) * e / base;
      return std::pair{cx + static_cast<int>(dx * scale), cy + static_cast<int>(dy * scale)};
    });
    ExpectMoved(p, run(180), "whirl", [&](int x, int y) {
      const int dx = x - cx, dy = y - cy;
      const double r = distance(dx, dy) / reach, angle = (1 - r) * (1 - r) * (std::max(percent, 1) * -0.031415926);
      return std::pair{cx + static_cast<int>(dx * std::cos(angle) - dy * std::sin(angle)),
                       cy + static_cast<int>(dy * std::cos(angle) + dx * std::sin(angle))};
    });
  }
}

// Random bytes of our own for the length of a test.
class OwnRandomBytes {
 public:
  OwnRandomBytes() { std::copy_n(randomTable, 1024, kept_); }
  ~OwnRandomBytes() { std::copy_n(kept_, 1024, randomTable); }

 private:
  uint8_t kept_[1024];
};

TEST(WarpDrop, WavesAndRefraction) {
  constexpr int kWidth = 60, kHeight = 50;
  Picture p(kWidth, kHeight);
  FrameBuffer after(kWidth, kHeight);
  const auto still = MakeEffect(181, kWidth, kHeight), drop = MakeEffect(181, kWidth, kHeight);
  const OwnRandomBytes own;
  std::fill_n(randomTable, 1024, uint8_t{0});  // no drop has a radius
  RunFrame(*still, p.frame, after, Values(181, {0, 0, 20}));
  EXPECT_EQ(after.Packed(), p.frame.Packed());

  // Every drop of the start falls on (32, 27): radius 70 * (60 >> 3) >> 8 = 1, which is one cell, height 70 * 1000
  // >> 8. The two of each frame have radius 0.
  std::fill_n(randomTable, 1024, uint8_t{70});
  std::vector<int> fields[2] = {std::vector<int>(kWidth * kHeight), std::vector<int>(kWidth * kHeight)};
  fields[0][27 * kWidth + 32] = -273;
  for (size_t frame = 0; frame < 6; ++frame) {
    RunFrame(*drop, p.frame, after, Values(181, {0, 0, 20}));
    const int* now = fields[frame % 2].data();
    int* next = fields[(frame + 1) % 2].data();
    for (int i = 2 * kWidth; i < (kHeight - 1) * kWidth; ++i) {
      const int n = ((now[i - 1] + now[i + 1] + now[i - kWidth] + now[i + kWidth]) >> 1) - next[i];
      next[i] = n - (n >> 5);
    }
    ExpectMoved(p, after, "drop", [&](int x, int y) {
      if (!Inside(p, x, y)) return std::pair{x, y};
      const int* cell = next + y * kWidth + x;
      const int sx = x + cell[-1] - cell[1], sy = y + cell[-kWidth] - cell[kWidth];
      const bool inside = sx >= 0 && sy >= 0 && sx < kWidth && sy < kHeight;
      return inside ? std::pair{sx, sy} : std::pair{x, y};
    });
  }
}

TEST(WarpFlames, RiseFromTheirEdge) {
  Picture p(64, 60);
  const auto unused = MakeEffect(182, 64, 60);  // the table stands from the first effect on
  const OwnRandomBytes own;
  for (int i = 0; i < 1024; ++i) randomTable[i] = static_cast<uint8_t>(i * 151 + i / 7);
  const auto changedRows = [&](double level, double direction, int frames) {
    const auto processor = MakeEffect(182, 64, 60);
    FrameBuffer after(64, 60);
    for (int i = 0; i < frames; ++i) RunFrame(*processor, p.frame, after, Values(182, {level, direction}));
    std::string rows;
    for (int y = 0; y < 60; ++y) {
      bool changed = false;
      for (int x = 0; x < 64; ++x) {
        changed |= after.Word(x, y) != p.frame.Word(x, y);
        EXPECT_EQ(after.Pixel(x, y)[3], p.frame.Pixel(x, y)[3]);
      }
      rows += changed ? '#' : '.';
    }
    return rows;
  };
  EXPECT_EQ(changedRows(100, 1, 1).substr(0, 50), std::string(50, '.'));
  EXPECT_EQ(changedRows(100, 1, 1).substr(54), std::string(6, '#'));
  EXPECT_EQ(changedRows(100, 0, 1).substr(10), std::string(50, '.'));
  EXPECT_EQ(changedRows(100, 0, 1).substr(0, 6), std::string(6, '#'));
  EXPECT_EQ(changedRows(100, 1, 12).substr(35), std::string(25, '#')) << "three rows a frame";
  EXPECT_EQ(changedRows(0, 1, 12), std::string(60, '.')) << "without strength nothing shows";
}

TEST(WarpTiltShift, WeightsStayAndToneFollows) {
  for (const auto& size : {std::pair{45, 40}, {150, 16}, {9, 31}}) {
    const int width = size.first, height = size.second;
    Picture p(width, height, 8);
    const int largest = static_cast<int>(std::sqrt(width) * 0.1 + 5.0);
    const int top = 40 * height / 100, bottom = 60 * height / 100;
    const int center = (top + bottom) / 2, half = (bottom - top) / 2;
    const auto processor = MakeEffect(183, width, height);
    for (const int level : {35, 100, 0}) {
      FrameBuffer after(width, height);
      RunFrame(*processor, p.frame, after, Values(183, {double(level), 2}));
      ExpectColors(p, after, "tilt shift", [&](int x, int y, int c) {
        const int q = std::clamp((std::abs(y - center) - half) * largest / (height / 2 - half), 0, largest);
        int64_t sum = p.Byte(x, y, c), total = 1;
        if (q > 0) {
          sum = total = 0;
          const double t = q * (35 * 0.04 + 1) / largest + 1;  // the first frame's level
          for (int dy = -q; dy <= q; ++dy) {
            for (int dx = -q; dx <= q; ++dx) {
              const auto w =
                  static_cast<int>(4096 * std::exp(-(dx * dx + dy * dy) * 3 * t / (2 * q * q) / (2 * t * t)));
              sum += int64_t{w} * p.Byte(x + dx, y + dy, c);
              total += w;
            }
          }
        }
        const double x0 = (static_cast<double>(sum / total) - 128) * (level * 0.005 + 1) * 3.1415926 / 256;
        return static_cast<int>(std::sin(std::clamp(x0, -1.5707963, 1.5707963)) * 128 + 128);
      });
    }
  }
}

TEST(WarpExplosion, MeanAlongTheRay) {
  for (const auto& [width, height] : {std::pair{170, 30}, {20, 33}, {1, 1}}) {
    Picture p(width, height, 4);
    const int taps = std::max(50 * width >> 10, 5), cx = width / 2, cy = height / 2;
    const int step = (taps << 16) / (std::max(width, height) * (taps - 1));
    ExpectColors(p, RunEffect(190, p.frame), "explosion", [&](int x, int y, int c) {
      int sum = 0;
      for (int i = 0; i < 2 * taps - 1; ++i) {
        const int scale = (65536 + (taps - 1 + i) * step) >> 8;
        sum += p.Byte((((x - cx) * scale) >> 8) + cx, (((y - cy) * scale) >> 8) + cy, c);
      }
      return (sum >> 1) / taps;
    });
  }
}

}  // namespace

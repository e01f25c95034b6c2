// Fire, clouds, plasma, rain and the other effects that paint something of their own.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "framework/random.h"
#include "tests/support/frames.h"

namespace {

// Sets the process's stream, and draws from a copy of it.
class Draws {
 public:
  explicit Draws(uint32_t seed) : state_(seed) { Rand().Seed(seed); }
  int operator()() {
    state_ = state_ * 214013 + 2531011;
    return static_cast<int>(state_ >> 16 & 0x7FFF);
  }
  int PeekAtProcess() const { return Rand().Next(); }

 private:
  uint32_t state_;
};

FrameBuffer Render(CBaseFilterProc& processor, FrameBuffer& src, const ParamValueArray& values) {
  FrameBuffer dst(src.Width(), src.Height(), src.Step() - 4 * src.Width());
  dst.Fill(0xCD);
  RunFrame(processor, src, dst, values);
  return dst;
}

// The fire's heat, column by column and cell by cell.
class FireModel {
 public:
  FireModel(int w, int h) : w_(w), rows_(h + 3), heat_(static_cast<size_t>(w * rows_), 0) {}

  void Step(double position, double fraction, int n, Draws& draws) {
    for (int x = 0; x < w_; ++x) {
      for (int k = 0; k <= std::min(n, rows_ - 1); ++k) At(k, x) = 0;
      const bool outside = w_ * position > x || x >= (position + fraction) * w_ - 1;
      for (int k = 3; k < rows_ && outside; ++k) At(k, x) = 0;
    }
    const int end = static_cast<int>(std::min<double>(w_, w_ * position + w_ * fraction));
    for (int x = 0; x < w_; ++x) {
      if (draws() % 101 >= 20) continue;
      for (int left = draws() % 35 + 1; left > 0; --left) {
        if (x > w_ * position && x < end) At(n, x++) = 254;
      }
    }
    for (int x = static_cast<int>(w_ * position); x < end; ++x) {
      for (int k = n; k <= rows_ - 4; ++k) {
        const int sum = Read(std::max(k - 1, 0), x) + Read(k, x - 2) + Read(k, x + 2) + Read(k, x - 1) +
                        Read(k, x + 1) + Read(k, x) + Read(k + 1, x);
        At(k + 1, x) = sum / 7 >= 60 ? sum / 7 : 0;
      }
    }
  }

  // Red to 84, yellow to 169, white from there on; what is below 60 is dark.
  uint32_t Color(int x, int y) {
    const int h = At(y + 3, x);
    const uint32_t ramp = static_cast<uint32_t>(h % 85 * 3 + 2);
    return h < 60 ? 0 : h < 85 ? ramp << 16 : h < 170 ? 0xFF0000 | ramp << 8 : 0xFFFF00 | ramp;
  }

 private:
  int& At(int k, int x) { return heat_[static_cast<size_t>((rows_ - 1 - k) * w_ + x)]; }
  int Read(int k, int x) {
    const size_t at = static_cast<size_t>((rows_ - 1 - k) * w_ + x);
    return at < heat_.size() ? heat_[at] : 0;
  }
  int w_, rows_;
  std::vector<int> heat_;
};

TEST(Fire, BurnsAsTheHeatSpreads) {
  const struct {
    int w, h;
    double x, width, row;
  } cases[] = {{40, 30, 0, 100, 1}, {40, 30, 25, 50, 10}, {57, 21, 70, 60, 20}, {3, 12, 0, 100, 10}, {2, 9, 0, 100, 12},
               {1, 9, 0, 100, 12},  {5, 40, 0, 100, 3},   {40, 30, 10, 0, 5},   {33, 200, 3, 90, 7}};
  for (const auto& c : cases) {
    const auto processor = MakeEffect(57, c.w, c.h);
    FireModel model(c.w, c.h);
    Draws draws(12);
    FrameBuffer black(c.w, c.h);
    for (int frame = 0; frame < 25; ++frame) {
      const FrameBuffer shown = Render(*processor, black, Values(57, {c.x, c.width, c.row, 60, 256}));
      model.Step(c.x / 100, c.width / 100, static_cast<int>(c.row / 100 * c.h), draws);
      for (int y = 0; y < c.h; ++y) {
        for (int x = 0; x < c.w; ++x) ASSERT_EQ(shown.Word(x, y), model.Color(x, y)) << c.w << ": " << x << ", " << y;
      }
    }
  }
}

TEST(Fire, BlendsByAlphaAndStartsSoftly) {
  // Flames of height 1 show any heat; the red ramp then ends at entry 84 + 83 instead of 84.
  for (const auto& [alpha, height] : {std::pair<double, double>{128, 60}, {128, 1}}) {
    FrameBuffer src(60, 40, 8);
    src.Fill(100);
    Draws draws(12);
    const auto processor = MakeEffect(57, 60, 40);
    FireModel model(60, 40);
    bool red = false;
    for (int frame = 0; frame < 10; ++frame) {
      const FrameBuffer shown = Render(*processor, src, Values(57, {0, 100, 10, height, alpha}));
      model.Step(0, 1, 4, draws);
      for (int i = 0; i < 60 * 40; ++i) {
        const uint8_t* p = shown.Data() + 4 * i;  // one run, whatever the step
        const uint32_t color = model.Color(i % 60, i / 60);
        if (height == 1) {
          // Entries 85 to 167 are red now, though they were yellow.
          red = red || (color >> 8 & 255 && color >> 16 == 255 && p[1] == 50 && p[2] > 50);
        } else if (color == 0) {
          ASSERT_EQ(p[1], 100);
        } else {
          ASSERT_EQ(p[2], 100 + ((static_cast<int>(color >> 16) - 100) >> 1));
          ASSERT_EQ(p[0], 100 + ((static_cast<int>(color & 255) - 100) >> 1));
        }
        ASSERT_EQ(p[3], 100);
      }
    }
    EXPECT_EQ(red, height == 1);
  }
  FrameBuffer src(2, 2);
  FrameBuffer dst(2, 2);
  dst.Fill(9);
  RunFrame(*MakeEffect(57, 2, 2), src, dst, Values(58, {0, 100, 1, 60, 150}));
  EXPECT_EQ(dst.Pixel(0, 0)[0], 9) << "values for another effect";
}

TEST(Clouds, DrawAsManyNumbersAsTheirMapsNeed) {
  // Per map and level of n by n cells: three draws a cell, and one more along each of two rims.
  int perMap = 0;
  for (int n = 1; n <= 128; n *= 2) perMap += 3 * n * n + 2 * n;
  for (const auto& [density, maps] : {std::pair<double, int>{3, 3}, {5, 6}}) {
    Draws draws(4);
    FrameBuffer src(9, 7);
    Render(*MakeEffect(58, 9, 7), src, Values(58, {density, 0, 3, 0}));
    for (int i = 0; i < maps * perMap; ++i) draws();
    EXPECT_EQ(draws.PeekAtProcess(), draws()) << density;
  }
}

// A cloud map by the rules of its points: level by level, diamonds of corners a, b, c, d.
std::vector<int> CloudMap(int density, Draws& draws) {
  std::vector<int> m(256 * 256, 0);
  for (int step = 256; step >= 2; step /= 2) {
    const int h = step / 2, r = 2 * density * step;
    for (int cell = 0; cell < (256 / step) * (256 / step); ++cell) {
      const int y = cell / (256 / step) * step, x = cell % (256 / step) * step;
      const int y2 = (y + step) & 255, x2 = (x + step) & 255;
      const int a = m[y * 256 + x], b = m[y2 * 256 + x], c = m[y * 256 + x2], d = m[y2 * 256 + x2];
      const auto put = [&](int at, int mean) {
        m[at] = std::clamp(static_cast<int>(draws() % 1000 / 1000.0 * r) - r / 2 + mean, 0, 255);
      };
      put((y + h) * 256 + x + h, (a + b + c + d) / 4);
      if (y == 0) put((y + h) * 256 + x, (a + b) / 2);
      if (x == 0) put(y * 256 + x + h, (a + c) / 2);
      put((y + h) * 256 + x2, (c + d) / 2);
      put(y2 * 256 + x + h, (b + d) / 2);
    }
  }
  return m;
}

TEST(Clouds, DriftInThreeLayers) {
  const int w = 40, h = 30;
  FrameBuffer src(w, h);
  src.FillTestPicture();
  const auto processor = MakeEffect(58, w, h);
  Draws draws(99);
  std::vector<int> maps[3];
  for (auto& map : maps) map = CloudMap(3, draws);
  const int speed = 7;
  int cloudy = 0;
  for (int frame = 1; frame <= 12; ++frame) {
    const bool color = frame % 2 == 0, interactive = frame > 6;
    const FrameBuffer shown = Render(
        *processor, src, Values(58, {3, interactive ? 1.0 : 0.0, static_cast<double>(speed), color ? 1.0 : 0.0}));
    const int drift[3] = {frame * speed, frame * (speed / 2), frame * (speed / 2) + speed / 3};
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        int sum = 0;
        for (int i = 0; i < 3; ++i) sum += maps[i][(x + drift[i]) % w * 256 / w * 256 + (y + drift[i]) % h * 256 / h];
        double m = sum / 3;
        if (!interactive)
          m = std::pow(std::sin(std::max(0.0, m / 256 - 0.525) / 0.475 * 1.570796326795), 17.0 / 23) * 255;
        const uint32_t v = static_cast<uint32_t>(m), gray = std::min(v + 50, 255u);
        const uint32_t cloud = color ? 0xFF0000FF | v * 0x010100 : 0xFF000000 | gray * 0x010101;
        ASSERT_EQ(shown.Word(x, y), v < 100 ? src.Word(x, y) : cloud) << frame << ": " << x << ", " << y;
        cloudy += v >= 100;
      }
    }
  }
  EXPECT_GT(cloudy, 500);
  EXPECT_EQ(RunEffect(58, src, {0, 1, 3, 0}).Packed(), src.Packed()) << "no density, no clouds";
}

TEST(Plasma, WavesByHand) {
  const auto processor = MakeEffect(50, 3, 2);
  FrameBuffer src(3, 2, 8);
  const auto next = [&] { return Render(*processor, src, Values(50)); };
  const FrameBuffer first = next();
  EXPECT_EQ(first.Word(0, 0), 0x00E6E600u);                    // 62 + 37 + 0 + 0 = 99: entry 134
  EXPECT_EQ(first.Data()[13], 0xDA) << "row 1 follows row 0";  // 62 + 37 + 37 + 12 = 148: entry 137, alpha 0
  EXPECT_EQ(first.Data()[24], 0xCD);
  EXPECT_EQ(next().Word(0, 0), 0x00B2B200u);  // the waves have moved by 9 and 8: 175 + 37 + 0 + 100 = 312: entry 147
}

// Water as two maps and nothing else.
TEST(RainDrop, DropsSpreadAndRefract) {
  const int w = 90, h = 70, lift = 300;
  std::vector<int> maps[2] = {std::vector<int>(w * h), std::vector<int>(w * h)};
  uint32_t seed = 0;
  const auto draw = [&] { return seed = seed * 1103515245u + 12345u; };
  const auto processor = MakeEffect(72, w, h);
  FrameBuffer src(w, h, 4);
  int moved = 0;
  for (int frame = 0; frame < 40; ++frame) {
    src.FillTestPicture(static_cast<uint32_t>(frame));
    const FrameBuffer shown = Render(*processor, src, Values(72, {42, 100, lift}));  // a drop on every frame
    std::vector<int>& now = maps[frame % 2];
    std::vector<int>& next = maps[1 - frame % 2];
    const int r = 10;
    int cy = static_cast<int>(draw() % h) - 20, cx = static_cast<int>(draw() % w) - 20;
    if (cx < 0) cx = r + 1 + static_cast<int>(draw() % (w - 2 * r - 1));
    if (cy < 0) cy = r + 1 + static_cast<int>(draw() % (h - 2 * r - 1));
    for (int y = 1; y < h; ++y) {
      for (int x = 1; x < w; ++x) {
        if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r) now[y * w + x] += lift;
      }
    }
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const int i = y * w + x;
        int from = i;
        if (y > 0 && x > 0 && y < h - 1 && x < w - 1) {
          const int j = i + ((now[i] - now[i + w]) >> 3) * w + ((now[i] - now[i + 1]) >> 3);
          from = j >= 0 && j < w * h ? j : i;
          int sum = 0;
          for (const int d : {-w - 1, -w, -w + 1, -1, 1, w - 1, w, w + 1}) sum += now[i + d];
          const int v = (sum >> 2) - next[i];
          next[i] = v - (v >> 3);
        }
        ASSERT_EQ(shown.Word(x, y), src.Word(from % w, from / w)) << frame << ": " << x << ", " << y;
        moved += from != i;
      }
    }
  }
  EXPECT_GT(moved, 1000);
}

TEST(RainDrop, CountdownIsShared) {
  // After the last drop the count is 10 for all: with density 0 the eleventh frame, whoever's it is, brings the next.
  FrameBuffer src(90, 70);
  src.FillTestPicture();
  const auto one = MakeEffect(72, 90, 70), two = MakeEffect(72, 90, 70);
  Render(*one, src, Values(72, {100, 1000, 0}));
  for (int frame = 1; frame <= 22; ++frame) {
    const FrameBuffer shown = Render(frame % 2 ? *one : *two, src, Values(72, {100, 0, 1000}));
    if (frame < 11) {
      EXPECT_EQ(shown.Packed(), src.Packed()) << frame;
    }
    if (frame == 11 || frame == 22) {
      EXPECT_NE(shown.Packed(), src.Packed()) << frame;
    }
  }
}

TEST(Flash, LightByDistance) {
  FrameBuffer src(20, 1);
  for (int32_t x = 0; x < 20; ++x) src.SetPixel(x, 0, 10, 130, 255, 77);
  const FrameBuffer dst = RunEffect(9, src, {50, 0, 50});  // about column 10 with radius 10
  EXPECT_EQ(dst.Word(10, 0), 0x4DFFFFFFu);
  EXPECT_EQ(dst.Word(5, 0), 0x4D800300u);  // f is 0.5: -127
  EXPECT_EQ(dst.Word(15, 0), dst.Word(5, 0));
  EXPECT_EQ(dst.Word(13, 0), 0x4DFA7D05u);  // f is 0.3: 0.49 * 510 - 255 = -5
  EXPECT_EQ(dst.Word(1, 0), 0x4D060000u);   // f is 0.9: -249
  EXPECT_EQ(dst.Word(0, 0), 0xFF000000u);
  EXPECT_EQ(RunEffect(9, src, {50, 0, 0}).Word(10, 0), 0xFF000000u) << "no radius, no light";
}

TEST(Flash, IsAlikeOnAllSidesOfItsCentre) {
  for (const double at : {0.0, 20.0, 55.0, 100.0, 300.0}) {
    FrameBuffer src(61, 45, 0);
    src.FillTestPicture();
    const FrameBuffer dst = RunEffect(9, src, {at, 100 - at, 40});
    const int cx = static_cast<int>(61 * at / 100), cy = static_cast<int>(45 * (100 - at) / 100);
    const float radius = std::floor(std::sqrt(61.0f * 61 + 45 * 45) * 0.4f);
    for (int i = 0; i < 61 * 45; ++i) {
      const int x = i % 61, y = i / 61, d2 = (x - cx) * (x - cx) + (y - cy) * (y - cy);
      const float rest = 1 - std::sqrt(static_cast<float>(d2)) / radius;
      const int green = std::clamp(src.Pixel(x, y)[1] + static_cast<int>(rest * 510 * rest - 255), 0, 255);
      ASSERT_EQ(dst.Pixel(x, y)[1], rest > 0 ? green : 0) << at << ": " << x << ", " << y;
      ASSERT_EQ(dst.Pixel(x, y)[3], rest > 0 ? src.Pixel(x, y)[3] : 255);
    }
  }
}

TEST(Ribbon, MovesColumnsAndCutsTowardZero) {
  FrameBuffer src(2, 4, 4);
  src.FillTestPicture();
  // Column 1 stands at a quarter of the wave and moves down by 2 less a hair: rows 0 and 1 both come from row 0.
  const FrameBuffer dst = RunEffect(4, src, {1.8, 0.2});
  for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(dst.Word(0, y), src.Word(0, y));
  EXPECT_EQ(dst.Word(1, 0), 0xFF000000u);
  EXPECT_EQ(dst.Word(1, 1), src.Word(1, 0));
  EXPECT_EQ(dst.Word(1, 2), src.Word(1, 0));
  EXPECT_EQ(dst.Word(1, 3), src.Word(1, 1));
  EXPECT_EQ(RunEffect(4, src, {0, 41}).Packed(), src.Packed());
}

TEST(Grid, BevelsEveryCell) {
  const std::string cell[] = {"     ", " --- ", " + - ", " +++ ", "     "};
  FrameBuffer src(12, 11, 4);
  for (int i = 0; i < 132; ++i) src.SetPixel(i % 12, i / 12, 10, 100, 250, 33);
  const FrameBuffer dst = RunEffect(3, src, {27.9, 5.9});
  for (int y = 0; y < 11; ++y) {
    for (int x = 0; x < 12; ++x) {
      const char kind = cell[y % 5][static_cast<size_t>(x % 5)];
      EXPECT_EQ(dst.Word(x, y), kind == '+' ? 0x21FF7F25u : kind == '-' ? 0x21DF4900u : 0x21FA640Au) << x << ", " << y;
    }
  }
  EXPECT_EQ(RunEffect(3, src, {27, 2}).Packed(), src.Packed()) << "cells of 2 have no inside";
}

TEST(Ising, LatticeFollowsItsGenerator) {
  const int w = 7, h = 6;
  uint32_t g = 1;
  const auto draw = [&] { return g *= 0xB5262C85u; };
  std::vector<int> spin(w * h);
  const auto processor = MakeEffect(52, w, h);
  FrameBuffer src(w, h);
  src.FillTestPicture();
  for (int frame = 0; frame < 12; ++frame) {
    const bool reset = frame == 0 || frame == 7, fill = frame % 3 == 2;
    const FrameBuffer shown = Render(*processor, src, Values(52, {fill ? 1.0 : 0.0, reset ? 1.0 : 0.0}));
    const auto inner = [&](int i) { return i % w > 0 && i % w < w - 1 && i >= w && i < w * (h - 1); };
    for (int i = 0; i < w * h && reset; ++i) spin[i] = inner(i) && draw() < 0x78000000 ? -1 : 1;
    for (int i = 0; i < w * h; ++i) {
      if (!inner(i)) continue;
      const int s = (spin[i - 1] + spin[i + 1] + spin[i - w] + spin[i + w]) * spin[i];
      if (s < 0 || (draw() < 0x78000000 && s == 0)) spin[i] = -spin[i];
    }
    for (int i = 0; i < w * h; ++i) {
      const uint32_t pixel = src.Word(i % w, i / w);
      ASSERT_EQ(shown.Word(i % w, i / w), spin[i] == 1 ? pixel : fill ? 0 : pixel ^ 0xFFFFFF) << frame << ": " << i;
    }
  }
}

TEST(Lissajous, DrawsACurveOfWhitePixels) {
  FrameBuffer src(41, 31);
  src.Fill(9);
  const FrameBuffer dst = RunEffect(53, src, {0, 0});
  int white = 0;
  for (int y = 0; y < 31; ++y) {
    for (int x = 0; x < 41; ++x) {
      const bool on = dst.Word(x, y) == 0xFFFFFFFF;
      white += on;
      EXPECT_TRUE(on || dst.Word(x, y) == 0x09090909);
      // Nearly one ratio on both axes is nearly a circle; cut toward zero it leans to the upper left.
      if (on) {
        EXPECT_NEAR(std::hypot((x + 0.5 - 20) / 20, (y + 0.5 - 15) / 15), 1, 0.06);
      }
    }
  }
  EXPECT_GT(white, 80);
  EXPECT_EQ(dst.Word(20, 30), 0xFFFFFFFFu) << "the start";
  // Twice as fast sideways: the curve crosses itself at the bottom, and the circle's right end is empty.
  EXPECT_EQ(RunEffect(53, src, {0.5, 0}).Word(39, 15), 0x09090909u);
}

}  // namespace

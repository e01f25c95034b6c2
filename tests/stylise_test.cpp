// Edges, reliefs, mosaics and the other stylising effects.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "framework/random.h"
#include "platform/clock.h"
#include "tests/support/frames.h"

namespace {

// A pixel of the frame or the nearest one inside.
const uint8_t* Near(const FrameBuffer& frame, int32_t x, int32_t y) {
  return frame.Pixel(std::clamp(x, 0, frame.Width() - 1), std::clamp(y, 0, frame.Height() - 1));
}

void SeedRand(uint32_t seed) {
  Rand rand;
  rand.Seed(seed);
}

TEST(Sobel, EdgesInsideAClearedRim) {
  FrameBuffer src(37, 6);
  src.FillTestPicture();
  const FrameBuffer dst = RunEffect(37, src);
  for (int32_t y = 0; y < 6; ++y) {
    for (int32_t x = 0; x < 37; ++x) {
      const bool rim = x == 0 || y == 0 || x == 36 || y == 5;
      for (int c = 0; c < 4; ++c) {
        int gx = 0, gy = 0;
        for (const int i : {-1, 0, 1}) {
          const int weight = i == 0 ? 2 : 1;
          gx += weight * (Near(src, x + 1, y + i)[c] - Near(src, x - 1, y + i)[c]);
          gy += weight * (Near(src, x + i, y + 1)[c] - Near(src, x + i, y - 1)[c]);
        }
        const int edge = c == 3 ? src.Pixel(x, y)[3] : std::min(255, std::abs(gx) + std::abs(gy));
        ASSERT_EQ(dst.Pixel(x, y)[c], rim ? 0 : edge) << x << " " << y;
      }
    }
  }
  FrameBuffer thin(2, 5);
  thin.Fill(77);
  EXPECT_EQ(RunEffect(37, thin).Packed(), std::vector<uint8_t>(40, 0));
}

TEST(Relief, RowsAgainstTheirNeighbours) {
  FrameBuffer src(1, 3, 8);
  src.SetPixel(0, 0, 10, 100, 0, 1);
  src.SetPixel(0, 1, 30, 250, 200, 2);
  src.SetPixel(0, 2, 60, 0, 90, 3);
  // Lowest 10 is 25, high 50 is 127: emboss down, its last row up; carve up, its first row down.
  const FrameBuffer emboss = RunEffect(1, src, {10, 50});
  EXPECT_EQ(emboss.Word(0, 0), 0x0149'196Bu);  // 107; |-23| below 25; |-73|
  EXPECT_EQ(emboss.Word(0, 1), 0x02ED'FF61u);  // 97; 377 limited; 237
  EXPECT_EQ(emboss.Word(0, 2), 0x0319'7B9Du);  // 157; |-123|; 17 below 25
  const FrameBuffer carve = RunEffect(10, src, {10, 50});
  EXPECT_EQ(carve.Word(0, 0), 0x0149'196Bu);
  EXPECT_EQ(carve.Word(0, 1), 0x02FF'FF93u);  // 147; 277 and 327 limited
  EXPECT_EQ(carve.Word(0, 2), 0x0319'7B9Du);
  FrameBuffer row(2, 1);
  row.Fill(9);
  for (const int32_t id : {1, 10}) EXPECT_EQ(RunEffect(id, row, {0, 50}).Word(1, 0), 0x097F7F7Fu) << "one row: itself";
}

TEST(Canvas, OnePatternASecond) {
  FrameBuffer src(50, 20);
  src.FillTestPicture();
  PinCalendarSeconds(1234567);
  const FrameBuffer dst = RunEffect(11, src, {9.9});
  EXPECT_EQ(RunEffect(11, src, {9}).Packed(), dst.Packed());
  uint32_t s = 1234567;
  for (int32_t y = 0; y < 20; ++y) {
    for (int32_t x = 0; x < 50; ++x) {
      s = s * 214013u + 2531011u;
      const int o = static_cast<int>(s >> 16 & 0x7FFF) % 9 - 4;
      ASSERT_EQ(dst.Word(x, y), src.Word(std::clamp(x + o, 0, 49), y));
    }
  }
  PinCalendarSeconds(1234568);
  EXPECT_NE(RunEffect(11, src, {9}).Packed(), dst.Packed());
  EXPECT_EQ(RunEffect(11, src, {0}).Packed(), src.Packed());
  PinCalendarSeconds(0);
}

TEST(Cartoon, LinesWhereAWrappedMeasureIsHigh) {
  FrameBuffer src(21, 13);
  src.FillTestPicture();
  const auto pair = [&](int32_t xa, int32_t ya, int32_t xb, int32_t yb) {
    const uint8_t *a = Near(src, xa, ya), *b = Near(src, xb, yb);
    int sum = 0;
    for (int c = 0; c < 3; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
    return sum % 65536;
  };
  for (const double distance : {0.0, 1.0, 3.7, 15.0, 1e9}) {
    for (const double level : {-1.0, 50.01, 900.0}) {
      const FrameBuffer dst = RunEffect(33, src, {level, distance});
      const int32_t d = static_cast<int32_t>(std::min(distance, 1000.0));
      for (int32_t y = 0; y < 13; ++y) {
        for (int32_t x = 0; x < 21; ++x) {
          const int measure = std::max({pair(x - d, y, x + d, y), pair(x, y - d, x, y + d),
                                        pair(x - d, y - d, x + d, y + d), pair(x + d, y - d, x - d, y + d)});
          const uint32_t expected = measure > level * 50 ? 0 : src.Word(x, y) & 0xFFE0E0E0;
          ASSERT_EQ(dst.Word(x, y), expected) << distance << " " << level << " " << x << " " << y;
        }
      }
    }
  }
  EXPECT_EQ(RunEffect(33, src, {50, 1e9}).Word(3, 3), RunEffect(33, src, {50, 21}).Word(3, 3));
}

TEST(Noise, FiveDrawsADot) {
  FrameBuffer src(10, 8, 12);
  src.FillTestPicture();
  for (const double colored : {0.0, 1.0}) {
    FrameBuffer expected(10, 8, 12);
    std::copy_n(src.Data(), src.Size(), expected.Data());
    uint32_t s = 99;
    const auto draw = [&s](uint32_t below) {
      s = s * 214013u + 2531011u;
      return (s >> 16 & 0x7FFF) % below;
    };
    for (int i = 0; i < 24; ++i) {  // 30.9 percent of 80, cut
      const uint32_t x = draw(10), y = draw(8), a = draw(256), b = draw(256), c = draw(256);
      uint8_t* dot = expected.Data() + (y * 10 + x) * 4;  // not by the step
      dot[0] = static_cast<uint8_t>(colored != 0 ? c : a);
      dot[1] = static_cast<uint8_t>(colored != 0 ? b : a);
      dot[2] = static_cast<uint8_t>(a);
      dot[3] = 255;
    }
    SeedRand(99);
    const FrameBuffer dst = RunEffect(51, src, {30.9, colored});
    EXPECT_TRUE(std::equal(dst.Data(), dst.Data() + dst.Size(), expected.Data()));
    Rand rand;
    EXPECT_EQ(static_cast<uint32_t>(rand.Next()), draw(0x8000)) << "the stream goes on from the last draw";
  }
  EXPECT_EQ(RunEffect(51, src, {0, 1}).Packed(), src.Packed());
}

TEST(Cluster, NearestByPlaceAndColor) {
  constexpr int32_t kWidth = 300, kHeight = 7;
  FrameBuffer src(kWidth, kHeight);
  src.FillTestPicture();
  for (int32_t x = 0; x < 100; ++x) src.SetPixel(x, 3, 5, 5, 5, 5);
  struct Point {
    int x, y, c[3];
  } points[40];
  uint32_t s = 7;
  const auto draw = [&s](int below) {
    s = s * 214013u + 2531011u;
    return static_cast<int>(s >> 16 & 0x7FFF) % below;
  };
  for (Point& p : points) {
    p.x = draw(kWidth);
    p.y = draw(kHeight);
    for (int& c : p.c) c = draw(255);
  }
  const float diagonal = std::sqrt(static_cast<float>(kWidth * kWidth + kHeight * kHeight));
  for (const double number : {-1.0, 0.5, 20.0, 40.0, 1e6}) {
    for (const double dist : {0.0, 10.0, 70.0, 100.0, 250.0, -40.0}) {
      SeedRand(7);
      const FrameBuffer dst = RunEffect(22, src, {number, dist});
      const double t = dist / 100;
      for (int32_t y = 0; y < kHeight; ++y) {
        for (int32_t x = 0; x < kWidth; ++x) {
          const uint8_t* pixel = src.Pixel(x, y);
          float best = diagonal;
          int winner = 0;
          for (int i = 0; i < number && i < 40; ++i) {
            const Point& p = points[i];
            int color = 0;
            for (int c = 0; c < 3; ++c) color += (pixel[c] - p.c[c]) * (pixel[c] - p.c[c]);
            const float dc = std::sqrt(float(color)) / std::sqrt(195075.0f);
            const float ds = std::sqrt(float((x - p.x) * (x - p.x) + (y - p.y) * (y - p.y))) / diagonal;
            const float e = std::sqrt(float(ds * t * ds + dc * (1 - t) * dc));
            if (e < best) {
              best = e;
              winner = i;
            }
          }
          const int* c = points[winner].c;
          ASSERT_EQ(dst.Word(x, y), 0xCD000000u | static_cast<uint32_t>(c[2] << 16 | c[1] << 8 | c[0]))
              << number << " " << dist << " " << x << " " << y;
        }
      }
    }
  }
}

TEST(Mosaics, MeansOfBlocksAndOfTheRest) {
  FrameBuffer src(11, 7);
  src.FillTestPicture();
  for (const auto& [bw, bh] : {std::pair{4, 3}, {1, 5}, {3, 1}, {20, 30}, {1, 1}}) {
    const FrameBuffer dst = RunEffect(24, src, {bw - 1.0, bh - 0.5});
    for (int32_t y = 0; y < 7; ++y) {
      for (int32_t x = 0; x < 11; ++x) {
        for (int c = 0; c < 4; ++c) {
          int sum = 0, count = 0;
          for (int32_t v = y / bh * bh; v < std::min(7, y / bh * bh + bh); ++v) {
            for (int32_t u = x / bw * bw; u < std::min(11, x / bw * bw + bw); ++u, ++count) sum += src.Pixel(u, v)[c];
          }
          ASSERT_EQ(dst.Pixel(x, y)[c], sum / count) << bw << " " << bh;
        }
      }
    }
  }
}

// A row of grays, each so often, through an effect.
std::vector<uint32_t> LevelsOf(int32_t id, std::initializer_list<std::pair<int, int>> grays) {
  std::vector<uint8_t> bytes;
  for (const auto& [gray, times] : grays) bytes.insert(bytes.end(), static_cast<size_t>(times), uint8_t(gray));
  FrameBuffer src(static_cast<int32_t>(bytes.size()), 1);
  for (int32_t x = 0; x < src.Width(); ++x) std::fill_n(src.Pixel(x, 0), 3, bytes[static_cast<size_t>(x)]);
  const FrameBuffer dst = RunEffect(id, src);
  std::vector<uint32_t> levels;
  int32_t x = 0;
  for (const auto& [gray, times] : grays) {
    levels.push_back(dst.Word(x, 0));
    x += times;
  }
  return levels;
}

TEST(LumaLevels, ThresholdsFromTheHistogram) {
  constexpr uint32_t kBlack = 0xFF000000, kGray = 0xFF808080, kWhite = 0xFFFFFFFF;
  using Levels = std::vector<uint32_t>;
  // 127 parts 10, 60 | 200: means 35 and 200, then 117, which stays.
  EXPECT_EQ(LevelsOf(35, {{10, 1}, {60, 1}, {200, 1}}), (Levels{kBlack, kBlack, kWhite}));
  // 127 with means 35 and 136, 85 with 22 and 134, 78 with 20 and 133, 76.
  EXPECT_EQ(LevelsOf(35, {{20, 24}, {80, 1}, {100, 5}, {130, 30}, {140, 30}, {250, 1}}),
            (Levels{kBlack, kWhite, kWhite, kWhite, kWhite, kWhite}));
  // One side empty: 0 and 120 give 60, above which all lies.
  EXPECT_EQ(LevelsOf(35, {{120, 4}}), Levels{kWhite});
  EXPECT_EQ(LevelsOf(35, {{0, 4}}), Levels{kWhite});
  // Of 10 pixels fewer than 4 lie up to 79, fewer than 8 up to 149.
  EXPECT_EQ(LevelsOf(36, {{50, 3}, {80, 4}, {150, 3}}), (Levels{kBlack, kGray, kWhite}));
  EXPECT_EQ(LevelsOf(36, {{50, 4}, {80, 4}, {150, 2}}), (Levels{kGray, kWhite, kWhite})) << "49 and 79";
  EXPECT_EQ(LevelsOf(36, {{0, 5}}), Levels{kBlack});
  // Byte 2 counts twice: lumas 60 and 130.
  FrameBuffer src(2, 1);
  src.SetPixel(0, 0, 240, 0, 0, 0);
  src.SetPixel(1, 0, 10, 0, 255, 0);
  const FrameBuffer dst = RunEffect(35, src);
  EXPECT_EQ(dst.Word(0, 0), kBlack);
  EXPECT_EQ(dst.Word(1, 0), kWhite);
}

TEST(Stylise, ReportsAndSteps) {
  const struct {
    int32_t id;
    std::vector<double> fresh, used, after;
  } cases[] = {
      {1, {0, 50}, {100, 20}, {255, 51}},  {10, {20, 50}, {100, 20}, {255, 51}}, {11, {10}, {0}, {1}},
      {33, {50, 1}, {70, 2.5}, {70, 2.5}}, {51, {3, 1}, {40, 0}, {40, 0}},       {22, {20, 10}, {7, 30}, {7, 30}},
      {24, {3, 3}, {9, 5}, {9, 5}}};
  for (const auto& c : cases) {
    const auto processor = MakeEffect(c.id, 2, 2);
    ParamValueArray values = Values(c.id);
    std::copy(c.used.begin(), c.used.end(), values.value);
    for (const auto& expected : {c.fresh, c.after}) {
      for (size_t i = 0; i < expected.size(); ++i) {
        FilterParamDesc desc{};
        processor->GetParamDesc(&desc, static_cast<int32_t>(i));
        EXPECT_DOUBLE_EQ(desc.defaultValue, expected[i]) << c.id << " " << i;
      }
      FrameBuffer src(2, 2), dst(2, 2);
      RunFrame(*processor, src, dst, values);
    }
  }
  FrameBuffer src(3, 3, 8);
  src.FillTestPicture();
  for (const int32_t id : {37, 11, 33, 24}) {  // one run: its end leaves the last padded row alone
    const FrameBuffer dst = RunEffect(id, src, {1, 1});
    EXPECT_NE(dst.Data()[12 + 3], 0xCD) << id;
    EXPECT_EQ(dst.Data()[36], 0xCD) << id;
  }
  for (const int32_t id : {1, 10, 35, 36}) EXPECT_EQ(RunEffect(id, src, {1, 1}).Data()[12], 0xCD) << id;
}

}  // namespace

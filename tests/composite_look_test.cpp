// The composite looks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "engine/curve.h"
#include "framework/random.h"
#include "tests/support/frames.h"

namespace {

FrameBuffer Filled(int32_t width, int32_t height, uint8_t b, uint8_t g, uint8_t r) {
  FrameBuffer frame(width, height);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) frame.SetPixel(x, y, b, g, r, 77);
  }
  return frame;
}

// What an effect makes of one colour, as 0xRRGGBB. For effects that look at single pixels only.
uint32_t ColorOf(int32_t id, uint8_t b, uint8_t g, uint8_t r) {
  FrameBuffer src = Filled(1, 1, b, g, r);
  return RunEffect(id, src).Word(0, 0) & 0xFFFFFF;
}

int Hard(int a, int t) {
  return t < 128 ? a * t / 128 : 255 - (255 - a) * (255 - t) / 128;
}
int Screen(int a, int t) {
  return 255 - (255 - a) * (255 - t) / 256;
}
int Gray4(const FrameBuffer& frame, int32_t x, int32_t y) {
  const uint8_t* p = frame.Pixel(x, y);
  return (p[0] + 2 * p[1] + p[2]) / 4;
}

TEST(CompositeLooks, KeepAlphaAndHonourSteps) {
  for (const int32_t id : {138, 139, 143, 144, 147, 148, 149, 150, 151, 154, 155, 156, 157, 158, 159, 160}) {
    FrameBuffer packed(41, 30), padded(41, 30, 24);
    packed.FillTestPicture(3);
    padded.FillTestPicture(3);
    const FrameBuffer out = RunEffect(id, packed);
    EXPECT_EQ(out.Packed(), RunEffect(id, padded).Packed()) << id;
    EXPECT_NE(out.Packed(), packed.Packed()) << id;
    for (int32_t i = 0; i < 41 * 30; ++i) ASSERT_EQ(out.Data()[4 * i + 3], packed.Data()[4 * i + 3]) << id;
  }
}

TEST(FourSeasons, FourStripsThreeGapsAndARest) {
  FrameBuffer src = Filled(1003, 1, 64, 64, 64);
  const FrameBuffer dst = RunEffect(138, src);
  for (int32_t x = 0; x < 1003; ++x) {
    // Quarters of 250; gaps of trunc(2 * 1003 / 640) = 3 before each next strip; the last three pixels stay.
    const bool gap = x < 750 && x % 250 >= 247;
    const uint32_t strips[] = {0x335861, 0x1F4D2D, 0x6D2A13, 0x006D9A};
    EXPECT_EQ(dst.Word(x, 0) & 0xFFFFFF, x >= 1000 ? 0x404040 : gap ? 0 : strips[x / 250]) << x;
  }
  FrameBuffer narrow = Filled(7, 1, 64, 64, 64);  // the gaps are wider than the strips
  const FrameBuffer out = RunEffect(138, narrow);
  const uint32_t expected[] = {0, 0, 0, 0x006D9A, 0x404040, 0x404040, 0x404040};
  for (int32_t x = 0; x < 7; ++x) EXPECT_EQ(out.Word(x, 0) & 0xFFFFFF, expected[x]) << x;
}

TEST(PointLooks, GrayShares) {
  EXPECT_EQ(ColorOf(143, 10, 20, 30), 0x1A140Fu);  // grey 22: 26, 20, 15
  EXPECT_EQ(ColorOf(144, 0, 0, 0), 0x292300u);
  EXPECT_EQ(ColorOf(144, 128, 128, 128), 0xA9A380u);  // the middle of the sine stays
  EXPECT_EQ(ColorOf(144, 255, 255, 255), 0xFFFFFFu);
}

// The curves are checked where they are given: at their knots.
TEST(PointLooks, FreshnessAtTheKnotsOfItsCurves) {
  FrameBuffer src(400, 400);
  uint32_t s = 7;
  for (size_t i = 0; i < src.Size(); ++i) src.Data()[i] = static_cast<uint8_t>((s = s * 1664525u + 1013904223u) >> 24);
  const FrameBuffer dst = RunEffect(147, src);
  int checked = 0;
  for (int32_t i = 0; i < 160000; ++i) {
    const uint8_t* p = src.Data() + 4 * i;
    const int spread[] = {(92 * std::abs(p[0] - 135) + 163 * p[0]) / 256, (92 * std::abs(p[1] - 39) + 163 * p[1]) / 256,
                          (92 * std::abs(p[2] - 17) + 163 * p[2]) / 256};
    const int luma = (150 * spread[1] + 76 * spread[2] + 29 * spread[0] + 255) / 256;
    if (luma == 0 || luma % 64) continue;
    const int tints[3][3] = {{174, 92, 54}, {204, 152, 128}, {234, 214, 204}};
    for (int c = 0; c < 3; ++c) {
      const int t = tints[luma / 64 - 1][c];
      const float soft = spread[c] < 128 ? static_cast<float>((t + 128) * spread[c]) / 255.0f
                                         : 255.0f - static_cast<float>((382 - t) * (255 - spread[c])) / 255.0f;
      const int level = static_cast<int>(soft);
      if (level == 0 || level % 64) continue;
      const int common[] = {145, 207, 238};
      EXPECT_EQ(dst.Data()[4 * i + c], common[level / 64 - 1]);
      ++checked;
    }
  }
  EXPECT_GT(checked, 20);
}

TEST(PointLooks, BeautifyTurnsLightToDark) {
  EXPECT_EQ(ColorOf(148, 0, 0, 0), 0xFEFEFEu);  // the lift leaves 1
  EXPECT_EQ(ColorOf(148, 255, 255, 255), 0u);
  // Grey 128 lifts to 192; hard(255 - (127 K >> 8), 63) with K 200, 194, 160.
  EXPECT_EQ(ColorOf(148, 128, 128, 128), 0x564E4Cu);
  // Red: lifted to 77, 77, 255; the distance 178 takes 11, 22 and 44, each times (255 - level) >> 8.
  EXPECT_EQ(ColorOf(148, 0, 0, 255), 0x00BEB3u);
}

TEST(PointLooks, GloamingMovesTheChannels) {
  const Curve blue = MakeCurve(CurveKnots{54, 102, 145, 184, 221});
  const Curve green = MakeCurve(CurveKnots{0, 74, 142, 201, 255});
  const Curve red = MakeCurve(CurveKnots{0, 92, 166, 215, 255});
  const struct {
    uint8_t from[3];
    int to[3];  // before the curves
  } cases[] = {
      {{64, 64, 64}, {75, 56, 71}},        // shadow: k = 127
      {{20, 60, 200}, {45, 44, 238}},      // red and yellow: e = 140, f = 40
      {{200, 210, 220}, {204, 213, 220}},  // highlight: k = 145, e = f = 10
      {{128, 128, 128}, {128, 128, 128}},  // neither shadow nor highlight
      {{129, 129, 129}, {129, 129, 129}},  // k = 3: all shares are cut to 0
      {{200, 60, 60}, {200, 60, 60}},      // blue leads, and no channel alone is lowest
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ColorOf(150, c.from[0], c.from[1], c.from[2]),
              static_cast<uint32_t>(red[c.to[2]] << 16 | green[c.to[1]] << 8 | blue[c.to[0]]));
  }
}

TEST(PointLooks, NewFreshBrightensItsExclusion) {
  const int k[] = {81, 25, 31};
  for (int level = 0; level < 256; ++level) {
    const uint32_t color = ColorOf(151, level, level, level);
    for (int c = 0; c < 3; ++c) {
      const int excluded = static_cast<int>(level + k[c] - 2.0 * level * k[c] / 255);
      EXPECT_GT(static_cast<int>(color >> 8 * c & 255), excluded);
    }
  }
}

TEST(Aegean, LightFallsFromTheCentre) {
  FrameBuffer src(61, 44);
  src.FillTestPicture();
  const auto processor = MakeEffect(154, 61, 44);
  FrameBuffer dst(61, 44, 8);
  for (int frame = 0; frame < 2; ++frame) RunFrame(*processor, src, dst, Values(154));
  const Curve curves[] = {MakeCurve(CurveKnots{53, 82, 126, 169, 199}), MakeCurve(CurveKnots{0, 63, 144, 214, 255}),
                          MakeCurve(CurveKnots{0, 30, 155, 236, 255})};
  const double reach = std::sqrt(30.0 * 30 + 22 * 22);
  for (int32_t y = 0; y < 44; ++y) {
    for (int32_t x = 0; x < 61; ++x) {
      const float d = static_cast<float>(std::hypot(x - 30.0, y - 22.0));
      for (int c = 0; c < 3; ++c) {
        const int from = src.Pixel(x, y)[c];
        const int lit = d >= 0.65 * reach
                            ? static_cast<int>(from * (1 - (d - 0.65 * reach) / (0.35 * reach) * 0.6) + 0.5)
                            : std::min(static_cast<int>(from + (1 - d / (0.65 * reach)) * 0.1 * 255 + 0.5), 255);
        EXPECT_EQ(dst.Pixel(x, y)[c], Screen(curves[c][lit], c == 0 ? 0 : 26)) << x << " " << y;
      }
    }
  }
  EXPECT_EQ(ColorOf(154, 64, 64, 64) & 0xFF, 82u + 1) << "one pixel: neither lit nor darkened, screened with 0";
}

TEST(GrayNoise, BluePlusNoiseBlurredInPlace) {
  for (const auto& [width, height] : {std::pair{6, 5}, {1, 4}, {2, 1}, {1, 1}, {3, 2}}) {
    FrameBuffer src(width, height, 4);
    src.FillTestPicture();
    Rand{}.Seed(99);
    const FrameBuffer dst = RunEffect(145, src);
    uint32_t s = 99;
    std::vector<int> v;
    for (int32_t i = 0; i < width * height; ++i) {
      s = s * 214013u + 2531011u;
      v.push_back((185 * src.Pixel(i % width, i / width)[0] + 71 * static_cast<int>(s >> 16 & 255)) / 256);
    }
    const auto mean = [&v](int at, int step, int index, int count) {
      int sum = 0, n = 0;
      for (int k = -1; k <= 1; ++k) {
        if (index + k >= 0 && index + k < count) sum += v[at + k * step], ++n;
      }
      v[at] = sum / n;
    };
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width - 1; ++x) mean(y * width + x, 1, x, width);
    }
    for (int x = 0; x < width; ++x) {
      for (int y = 0; y < height; ++y) mean(y * width + x, width, y, height);
    }
    for (int32_t i = 0; i < width * height; ++i) {
      const uint32_t alpha = src.Word(i % width, i / width) & 0xFF000000;
      EXPECT_EQ(dst.Word(i % width, i / width), alpha | static_cast<uint32_t>(v[i] * 0x010101)) << width << " " << i;
    }
  }
}

// By plain sums over the window. The radius grows with the bytes of the frame.
void ExpectFuzzy(int32_t width, int32_t height, int radius) {
  FrameBuffer src(width, height), dst(width, height);
  src.FillTestPicture();
  RunFrame(*MakeEffect(149, width, height), src, dst, Values(149));
  const Curve glow = MakeCurve(CurveKnots{0, 97, 175, 223, 255});
  for (int c = 0; c < 3; ++c) {
    std::vector<int> v(static_cast<size_t>(width * height));
    for (int i = 0; i < width * height; ++i) v[i] = src.Data()[4 * i + c];
    const auto mean = [&](const std::vector<int>& from, int base, int step, int at, int count) {
      const int first = std::max(at - radius, 0), last = std::min(at + radius, count - 1);
      int sum = 0;
      for (int k = first; k <= last; ++k) sum += from[base + k * step];
      return sum / (last - first + 1);
    };
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x <= width - 2; x += 2) v[y * width + x] = mean(v, y * width, 1, x, width);
      for (int x = 1; x <= width - 2; x += 2) v[y * width + x] = (v[y * width + x - 1] + v[y * width + x + 1]) / 2;
    }
    const std::vector<int> rows = v;
    for (int x = 0; x < width; ++x) {
      for (int y = 0; y <= height - 2; y += 2) v[y * width + x] = mean(rows, x, width, y, height);
      for (int y = 1; y <= height - 2; y += 2) v[y * width + x] = (v[(y - 1) * width + x] + v[(y + 1) * width + x]) / 2;
    }
    for (int i = 0; i < width * height; ++i) {
      ASSERT_EQ(dst.Data()[4 * i + c], glow[Hard(src.Data()[4 * i + c], glow[v[i]])]) << width << " at " << i;
    }
  }
}

TEST(Fuzzy, GlowOfAHalfBox) {
  ExpectFuzzy(31, 22, 4);
  ExpectFuzzy(8, 27, 4);
  ExpectFuzzy(1, 1, 4);
  ExpectFuzzy(1030, 511, 5);  // 2.1 million bytes
}

int WindowMax(const FrameBuffer& frame, int32_t x, int32_t y) {
  int maximum = 0;
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) maximum = std::max(maximum, Gray4(frame, x + dx, y + dy));
  }
  return maximum;
}

TEST(Sketches, LineDrawingWithItsBorder) {
  FrameBuffer src(13, 9);
  src.FillTestPicture();
  for (int32_t x = 0; x < 6; ++x) {  // black on the border and inside
    for (int32_t y = 0; y < 5; ++y) src.SetPixel(x, y, 0, 0, 0, 5);
  }
  const FrameBuffer dst = RunEffect(155, src);
  for (int32_t y = 0; y < 9; ++y) {
    for (int32_t x = 0; x < 13; ++x) {
      const bool border = x == 0 || y == 0 || x == 12 || y == 8;
      const int p = border ? Gray4(src, x, y) : Gray4(src, x - 1, y);
      const int maximum = border ? p : WindowMax(src, x, y);
      const int n = p > 0    ? static_cast<int>(16777216 / (maximum + 8) * static_cast<int64_t>(p) / 65536)
                    : border ? 255
                             : 0;
      EXPECT_EQ(dst.Word(x, y) & 0xFFFFFF, static_cast<uint32_t>(Hard(p, n) * 0x010101)) << x << " " << y;
    }
  }
}

TEST(Sketches, WashFadesEdges) {
  FrameBuffer src(17, 11);
  src.FillTestPicture();
  const FrameBuffer dst = RunEffect(156, src);
  for (int32_t y = 0; y < 11; ++y) {
    for (int32_t x = 0; x < 17; ++x) {
      int e = 255;
      if (x > 0 && y > 0 && x < 16 && y < 10) {
        int gx = 0, gy = 0;
        for (int k = -1; k <= 1; ++k) {
          const int weight = k == 0 ? 2 : 1;
          gx += weight * (Gray4(src, x + 1, y + k) - Gray4(src, x - 1, y + k));
          gy += weight * (Gray4(src, x + k, y + 1) - Gray4(src, x + k, y - 1));
        }
        gx = std::min(std::abs(gx), 255);
        gy = std::min(std::abs(gy), 255);
        e = 255 - std::min(static_cast<int>(std::sqrt(gx * gx + gy * gy)), 255);
      }
      for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(dst.Pixel(x, y)[c], std::min((2 * src.Pixel(x, y)[c] * e + 255) / 256, 255)) << x << " " << y;
      }
    }
  }
}

TEST(Sketches, ComicSharpensInside) {
  FrameBuffer src(12, 8);
  src.FillTestPicture();
  const FrameBuffer dst = RunEffect(157, src);
  for (int32_t y = 0; y < 8; ++y) {
    for (int32_t x = 0; x < 12; ++x) {
      for (int c = 0; c < 3; ++c) {
        int s = src.Pixel(x, y)[c];
        if (x > 0 && y > 0 && x < 11 && y < 7) {
          s *= 10;
          for (int k = 0; k < 9; ++k) s -= src.Pixel(x - 1 + k % 3, y - 1 + k / 3)[c];
          s = std::clamp(s, 0, 255);
        }
        const double v = s * 0.003922;
        EXPECT_EQ(dst.Pixel(x, y)[c],
                  static_cast<int>((0.627 * std::exp(0.3634 * v) - 0.5467 * std::exp(-10.891 * v)) * 255));
      }
    }
  }
}

TEST(Sketches, SketchStaysInsideItsQuadrilateral) {
  FrameBuffer src = Filled(640, 360, 200, 200, 200);
  src.SetPixel(320, 180, 40, 40, 40, 77);
  const FrameBuffer dst = RunEffect(139, src);
  // The corners turned by 245 radians, 2.5 degrees short of 39 turns.
  const double x[] = {155.85, 211.86, 534.72, 414.0};
  const double y[] = {96.99, 279.64, 221.90, 54.37};
  for (int32_t py = 0; py < 360; ++py) {
    for (int32_t px = 0; px < 640; ++px) {
      double nearest = 1e9;  // distance into the quadrilateral
      for (int k = 0; k < 4; ++k) {
        const double dx = x[(k + 1) % 4] - x[k], dy = y[(k + 1) % 4] - y[k];
        nearest = std::min(nearest, (dy * (px - x[k]) - dx * (py - y[k])) / std::hypot(dx, dy));
      }
      if (std::abs(nearest) < 2 || std::hypot(px - 320, py - 180) < 3) continue;
      ASSERT_EQ(dst.Pixel(px, py)[1], nearest > 0 ? 246 : 200) << px << " " << py;
    }
  }
  EXPECT_EQ(dst.Pixel(321, 180)[0], 49) << "right of the dark pixel: its level beside 200";
  EXPECT_EQ(dst.Pixel(320, 180)[0], 246) << "the dark pixel itself looks at its left neighbour";
}

TEST(HueBands, RainbowGoesRoundTheCircle) {
  FrameBuffer src = Filled(2, 12, 50, 100, 200);  // value 200, saturation 3/4
  for (int32_t y = 0; y < 12; ++y) src.SetPixel(1, y, 90, 90, 90, 3);
  const FrameBuffer dst = RunEffect(158, src);
  const uint32_t expected[] = {0xC83232, 0xC8327D, 0xC832C8, 0x7D32C8, 0x3232C8, 0x327DC8,
                               0x32C8C8, 0x32C87D, 0x32C832, 0x7DC832, 0xC8C832, 0xC87D32};  // 360, 330, 300 .. 30
  for (int32_t y = 0; y < 12; ++y) {
    EXPECT_EQ(dst.Word(0, y) & 0xFFFFFF, expected[y]) << y;
    EXPECT_EQ(dst.Word(1, y), 0x035A5A5Au);
  }
}

TEST(HueBands, Rainbow2IsFullySaturated) {
  FrameBuffer src = Filled(1, 9, 50, 100, 200);
  const FrameBuffer dst = RunEffect(160, src);
  for (int32_t y = 0; y < 9; ++y) {  // hues 30, 40 .. 110
    const double hue = 30 + 10 * y;
    const auto red = static_cast<uint32_t>(hue < 60 ? 200 : (1 - (hue / 60 - 1)) * 200);
    const auto green = static_cast<uint32_t>(hue < 60 ? (1 - (1 - hue / 60)) * 200 : 200);
    EXPECT_EQ(dst.Word(0, y) & 0xFFFFFF, red << 16 | green << 8) << y;
  }
}

TEST(LabTone, BlackensShadowsAndKeepsEnds) {
  EXPECT_EQ(ColorOf(159, 0, 0, 0), 0u);
  EXPECT_EQ(ColorOf(159, 20, 20, 20), 0u);
  EXPECT_EQ(ColorOf(159, 255, 255, 255), 0xFFFFFFu);
  EXPECT_GT(ColorOf(159, 150, 150, 150) & 255, 155u);
  // Rows are converted in bands: each must come out as by itself.
  FrameBuffer src(500, 70);
  src.FillTestPicture();
  const FrameBuffer whole = RunEffect(159, src);
  for (const int32_t y : {0, 31, 32, 33, 69}) {
    FrameBuffer row(500, 1);
    std::copy_n(src.Pixel(0, y), 2000, row.Data());
    EXPECT_TRUE(std::equal(whole.Pixel(0, y), whole.Pixel(0, y) + 2000, RunEffect(159, row).Data())) << y;
  }
}

}  // namespace

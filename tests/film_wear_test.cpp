// Film wear, noise and particles. The random stream is set before each run, and a model beside the effect draws from
// its own.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "engine/curve.h"
#include "engine/engine_internal.h"
#include "engine/wear.h"
#include "engine/wear_tables.h"
#include "framework/numeric.h"
#include "framework/random.h"
#include "tests/support/frames.h"

namespace {

struct Stream {
  uint32_t s;
  int operator()() {
    s = s * 214013u + 2531011u;
    return static_cast<int>(s >> 16 & 0x7FFF);
  }
};

void SeedStream(uint32_t seed) {
  Rand rand;
  rand.Seed(seed);
}

FrameBuffer Picture(int32_t width, int32_t height, uint32_t seed = 1) {
  FrameBuffer frame(width, height);
  frame.FillTestPicture(seed);
  return frame;
}

FrameBuffer RunSeeded(int32_t id, FrameBuffer& src, std::initializer_list<double> values = {}, uint32_t seed = 7) {
  const auto processor = MakeEffect(id, src.Width(), src.Height());  // before seeding: the first record draws
  FrameBuffer dst(src.Width(), src.Height());
  SeedStream(seed);
  RunFrame(*processor, src, dst, Values(id, values));
  return dst;
}

void Gray(uint8_t* p, int v) {
  p[0] = p[1] = p[2] = static_cast<uint8_t>(v);
}
int Byte(int v) {
  return std::clamp(v, 0, 255);
}

void ExpectSame(const FrameBuffer& actual, const FrameBuffer& expected, const std::string& what = "") {
  for (int32_t y = 0; y < expected.Height(); ++y) {
    for (int32_t x = 0; x < expected.Width(); ++x) {
      ASSERT_EQ(actual.Word(x, y), expected.Word(x, y)) << what << " at " << x << ", " << y;
    }
  }
}

// The picture as the wear of this stream leaves it, laid down the long way. `stream` must stand behind the routine's
// own start values.
void Wear(FrameBuffer& frame, Stream& stream) {
  const int scratches = stream() % 5;
  const int spots = stream() % 30;
  cv::Mat mask(768, 1024, CV_8UC4, cv::Scalar::all(255)), fitted;
  for (int i = 0; i < spots; ++i) {
    const int row = stream() % 758, column = stream() % 1014, stamp = stream() % 6;
    for (int y = 0; y < 10; ++y) {
      for (int x = 0; x < 10; ++x) Gray(mask.ptr(row + y, column + x), kStamps[stamp][y][x]);
    }
  }
  cv::resize(mask, fitted, cv::Size(frame.Width(), frame.Height()), 0, 0, cv::INTER_LINEAR);
  for (int y = 0; y < frame.Height(); ++y) {
    for (int i = 0; i < 4 * frame.Width(); ++i) frame.Pixel(0, y)[i] &= fitted.ptr(frame.Height() - 1 - y)[i];
  }
  for (int i = 0; i < scratches; ++i) {
    const int width = stream() % 3 + 1;
    const int left = frame.Width() > 10 ? stream() % (frame.Width() - 10) : 0;
    for (int y = 0; y < frame.Height(); ++y) {
      for (int k = 0; k < width && left + k < frame.Width(); ++k) {
        uint8_t* p = frame.Pixel(left + k, y);
        for (int c = 0; c < 3; ++c)
          p[c] = static_cast<uint8_t>(Byte((p[c] & (k == 0 ? 243 : k == 1 ? 227 : 225)) + 30));
      }
    }
  }
}

TEST(Noise, SpecklesDependOnPlaceOncePerGroup) {
  FrameBuffer src = Picture(43, 20), expected = Picture(43, 20);
  ExpectSame(RunSeeded(75, src, {0}), src, "level 0");
  Stream stream{7};
  int a = stream() & 0x1FF, s = stream() & 0x3FF;
  for (int y = 0; y < 20; ++y) {
    for (int x = 0; x < 43; ++x) {
      s += x % 4 == 0 || x >= 40 ? a + y + x : a;
      uint8_t* p = expected.Pixel(x, y);
      if (randomTable[s & 0x3FF] >= 49) continue;
      a = randomTable[p[0] + p[1] + p[2]];
      Gray(p, Byte(a + 128));
    }
  }
  ExpectSame(RunSeeded(75, src, {90}), expected);
}

TEST(Noise, SplashScattersInPlace) {
  for (const int32_t width : {9, 320, 640}) {  // spans 1, 10, 20
    FrameBuffer src = Picture(width, 40), expected = Picture(width, 40);
    const int span = width == 9 ? 1 : width / 32, half = span / 2, rim = half + 1;
    Stream stream{0};
    int a = stream(), b = stream(), offsets[64];
    for (int& offset : offsets) offset = half - stream() % span;
    const auto inward = [rim](int d, int at, int size) {
      return at < rim ? (d + rim) >> 1 : at >= size - rim ? (d - rim) >> 1 : d;
    };
    for (int y = 0; y < 40; ++y) {
      for (int x = 0; x < width; ++x) {
        uint8_t* p = expected.Pixel(x, y);
        a += p[0];
        b += p[1];
        if (p[3] == 0) continue;
        const uint8_t* from = expected.Pixel(x + inward(offsets[a & 63], x, width), y + inward(offsets[b & 63], y, 40));
        std::copy_n(from, 4, p);
      }
    }
    for (const uint32_t seed : {3u, 4u})
      ExpectSame(RunSeeded(77, src, {100}, seed), expected, "the same in every frame");
  }
  FrameBuffer clear = Picture(320, 5);
  for (int i = 3; i < 4 * 320 * 5; i += 4) clear.Data()[i] = 0;
  ExpectSame(RunSeeded(77, clear, {100}), clear);
}

TEST(Noise, GrainIsGrayAndTailUsesTheFirstSum) {
  FrameBuffer src = Picture(7, 9), expected = Picture(7, 9);
  ExpectSame(RunSeeded(78, src, {1}), src, "strength 1");
  Stream stream{7};
  int sums[4], grains[64];
  for (int& sum : sums) sum = stream();
  for (int& grain : grains) grain = 20 - stream() % 40;
  for (int i = 0; i < 63; ++i) {
    uint8_t* p = expected.Pixel(i % 7, i / 7);
    int& sum = sums[i % 7 < 4 ? i % 7 : 0];
    sum += p[0] + p[1] + p[2];
    for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>(Byte(p[c] + grains[sum & 63]));
  }
  ExpectSame(RunSeeded(78, src, {40}), expected);
}

TEST(Blocks, MosaicRunsOnAtTheRight) {
  FrameBuffer src = Picture(17, 8), expected = Picture(17, 8);
  const auto fill = [&](int x0, int y0, int x1, int y1, uint32_t word) {
    for (int y = y0; y < y1; ++y) {
      for (int x = x0; x < x1; ++x) std::memcpy(expected.Pixel(x, y), &word, 4);
    }
  };
  for (int y = 0; y < 6; y += 3) {
    for (int x = 0; x < 15; x += 3) fill(x, y, x + 3, y + 3, src.Word(x + 1, y + 1));
    fill(15, y, 17, y + 3, src.Word(15, y));
  }
  for (int y = 1; y < 6; ++y) fill(0, y, 1, y + 1, src.Word(15, y <= 3 ? 0 : 3));
  fill(0, 6, 3, 8, src.Word(15, 3));  // its first pixel had been run over
  for (int x = 3; x < 15; x += 3) fill(x, 6, x + 3, 8, src.Word(x, 6));
  fill(15, 6, 17, 8, src.Word(15, 6));
  ExpectSame(RunEffect(76, src, {640}), expected);  // blocks of 3

  FrameBuffer padded(17, 8, 20);  // runs on into the row below, not into the padding
  for (int i = 0; i < 17 * 8; ++i) std::memcpy(padded.Pixel(i % 17, i / 17), src.Pixel(i % 17, i / 17), 4);
  const FrameBuffer stepped = RunEffect(76, padded, {640});
  for (int i = 0; i < 17 * 8; ++i) EXPECT_EQ(stepped.Word(i % 17, i / 17), expected.Word(i % 17, i / 17)) << i;

  FrameBuffer narrow = Picture(16, 7), result = RunEffect(76, narrow, {400});  // blocks of 2
  for (int x = 0; x < 16; ++x) EXPECT_EQ(result.Word(x, 6), narrow.Word(x, 6)) << "a single row stays";
  EXPECT_EQ(result.Word(2, 2), narrow.Word(3, 3));
}

TEST(Blocks, EmbossLooksToTheRight) {
  FrameBuffer src = Picture(640, 3), expected = Picture(640, 3);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 640; ++x) {
      const uint8_t* p = src.Pixel(x, y);
      const uint8_t* q = p + 12;
      Gray(expected.Pixel(x, y),
           x < 637 ? Byte(128 + static_cast<int>(std::floor((p[0] + 2 * p[1] + p[2] - q[0] - 2 * q[1] - q[2]) / 4.0)))
                   : 128);
    }
  }
  ExpectSame(RunEffect(80, src, {29}), expected);  // (29 / 10 + 1) * 640 / 640
  FrameBuffer small = Picture(100, 2), flat = RunEffect(80, small, {50});
  EXPECT_EQ(flat.Word(50, 1) & 0xFFFFFF, 0x808080u) << "no distance, no relief";
}

TEST(Light, SunshineFades) {
  FrameBuffer src(100, 120);
  src.Fill(10);
  const FrameBuffer dst = RunEffect(98, src, {50, 50, 100, 100});  // place, radius, level
  // r 50, strength 128, shift 12.
  EXPECT_EQ(dst.Word(50, 60), 0x0A585858u);       // 10 + (2500 * 128 >> 12)
  EXPECT_EQ(dst.Word(50 + 30, 60), 0x0A3C3C3Cu);  // 10 + (1600 * 128 >> 12)
  EXPECT_EQ(dst.Word(1, 60), 0x0A0D0D0Du);        // 10 + (99 * 128 >> 12)
  EXPECT_EQ(dst.Word(0, 60), 0x0A0A0A0Au);
  EXPECT_EQ(dst.Word(50, 9), 0x0A0A0A0Au);
}

TEST(Light, VignetteClearsAlphaOutside) {
  for (const auto& [width, height] : {std::pair{60, 40}, std::pair{41, 61}}) {
    for (const double level : {0.0, 20.0, 85.0, 100.0}) {
      FrameBuffer src = Picture(width, height), expected = Picture(width, height);
      const double f = level / 100;
      const int outer = static_cast<int>(30 * (0.1 * f + f + 0.1)),
                inner = f > 0.3 ? static_cast<int>(30 * (f - 0.3)) : 0;
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          const int d2 = (x - width / 2) * (x - width / 2) + (y - height / 2) * (y - height / 2);
          uint8_t* p = expected.Pixel(x, y);
          if (d2 > outer * outer) {
            std::fill_n(p, 4, 0);
          } else if (d2 > inner * inner) {
            const double factor = (outer - std::sqrt(d2)) / (outer - inner);
            for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>(p[c] * factor);
          }
        }
      }
      ExpectSame(RunEffect(167, src, {level}), expected, std::to_string(level));
    }
  }
}

TEST(OldFilm, WearLiesAsOnAFourChannelMask) {
  EXPECT_EQ(std::vector<int>(kStamps[0][1], kStamps[0][1] + 10),
            (std::vector<int>{255, 255, 252, 245, 239, 240, 247, 253, 255, 255}));
  EXPECT_EQ(*std::min_element(&kStamps[0][0][0], &kStamps[0][0][0] + 100), 130);
  const auto ramp = [](const CurveKnots& knots) { return MakeCurve(knots); };
  const Curve blue = ramp({0, 55, 110, 166, 220}), green = ramp({11, 67, 124, 180, 226}),
              red = ramp({25, 78, 131, 184, 236});
  uint32_t seed = 1;
  for (const auto& [width, height] :
       {std::pair{320, 180}, std::pair{512, 384}, std::pair{1500, 400}, std::pair{37, 50}, std::pair{5, 2}}) {
    for (int repeat = 0; repeat < 8; ++repeat, ++seed) {
      FrameBuffer src = Picture(width, height, seed), expected = Picture(width, height, seed);
      Stream stream{seed};
      Wear(expected, stream);
      for (int i = 0; i < width * height; ++i) {
        uint8_t* p = expected.Pixel(i % width, i / width);
        p[0] = blue[p[0]];
        p[1] = green[p[1]];
        p[2] = red[p[2]];
      }
      ExpectSame(RunSeeded(121, src, {}, seed), expected);
      Rand rand;
      EXPECT_EQ(rand.Next(), stream()) << "both streams stand at the same place";
    }
  }
  FrameBuffer gray(300, 3);
  gray.Fill(64);
  EXPECT_EQ(RunSeeded(130, gray).Word(299, 0), 0x40270053u) << "the last ten columns get no scratch";
}

TEST(OldFilm, OldMovieWalksWithItsReds) {
  const Curve ta = MakeCurve(CurveKnots{50, 98, 145, 193, 240}), tb = MakeCurve(CurveKnots{120, 153, 185, 218, 250});
  FrameBuffer src = Picture(23, 31), expected = Picture(23, 31);
  Stream stream{7};
  int i = stream() & 63, noise[68];
  for (int& n : noise) n = (stream() & 31) - 16;
  Wear(expected, stream);
  for (int y = 0; y < 31; ++y) {
    int reds = 0;
    for (int x = 0; x < 23; ++x) {
      uint8_t* p = expected.Pixel(x, y);
      const int s = (p[0] + p[2]) / 2, n = noise[x < 20 ? i + x % 4 : i];
      p[0] = p[1] = static_cast<uint8_t>(Byte(ta[s / 8 * 8] + n));
      p[2] = static_cast<uint8_t>(Byte(tb[s] + n));
      reds = x % 4 == 0 ? p[2] : reds + p[2];
      if (x < 20 && x % 4 == 3) i = (i + 4 + reds) & 63;
      if (x >= 20) i = (i + p[2] + 1) & 63;
    }
  }
  ExpectSame(RunSeeded(118, src), expected);
}

TEST(OldFilm, EightiesFlicker) {
  const Curve tl = MakeCurve(CurveKnots{27, 86, 141, 195, 207}), tb = MakeCurve(CurveKnots{12, 55, 99, 142, 185}),
              tg = MakeCurve(CurveKnots{10, 61, 111, 162, 196}), tr = MakeCurve(CurveKnots{1, 64, 121, 175, 216});
  FrameBuffer src = Picture(10, 12), expected = Picture(10, 12);
  Stream stream{7};
  int i = stream() & 63, f[68], factor = 0;
  for (int& entry : f) entry = (stream() & 63) + 224;
  for (int y = 0; y < 12; ++y) {
    int first = 0;
    for (int x = 0; x < 10; ++x) {
      uint8_t* p = expected.Pixel(x, y);
      const int luma = (p[0] + 2 * p[1] + p[2]) / 4;
      if (x >= 8) factor = f[((y + 1) * luma + factor * x) & 63] + 224;
      const int v = std::min(tl[luma] * (x < 8 ? f[i + x % 4] : factor) / 256, 255);
      p[0] = tb[v];
      p[1] = tg[v];
      p[2] = tr[v];
      if (x % 4 == 0) first = v;
      if (x == 3 || x == 7) i = (i + 3 + f[i] * (x - 3) + first * y + 1) & 63;
    }
  }
  ExpectSame(RunSeeded(119, src), expected);
}

TEST(OldFilm, GraysAndSienaCarryOnAcrossRows) {
  FrameBuffer src = Picture(19, 8), nineties = Picture(19, 8), siena = Picture(19, 8), retro = Picture(19, 8);
  Stream stream{7};
  int a = stream() & 255;
  Wear(nineties, stream);
  for (int i = 0; i < 152; ++i) {
    uint8_t* p = nineties.Pixel(i % 19, i / 19);
    const int g = randomTable[a % 1024] / 8 + 192, v = (p[0] + 2 * p[1] + p[2]) / 4 * g / 256;
    Gray(p, v);
    a = (a + v + g) % 65536;
  }
  ExpectSame(RunSeeded(120, src), nineties);

  const Curve blue = MakeCurve(CurveKnots{0, 48, 95, 143, 190}), green = MakeCurve(CurveKnots{0, 54, 108, 162, 215}),
              red = MakeCurve(CurveKnots{25, 78, 131, 184, 236});
  stream = {7};
  a = stream() & 255;
  Wear(siena, stream);
  for (int i = 0; i < 152; ++i) {
    uint8_t* p = siena.Pixel(i % 19, i / 19);
    p[0] = blue[p[0]];
    p[1] = green[p[1]];
    p[2] = static_cast<uint8_t>(red[p[2]] * randomTable[a % 1024] / 256);
    a = (a + p[0] + p[1] + p[2]) % 65536;
  }
  ExpectSame(RunSeeded(122, src), siena);

  stream = {7};
  a = stream();
  int g = stream();
  for (int i = 0; i < 152; ++i) {
    uint8_t* p = retro.Pixel(i % 19, i / 19);
    const int s = (p[0] + p[2]) / 2;
    g = randomTable[(s * a + g) % 1024] / 8 + 192;
    Gray(p, s * g / 256);
    a = (a + g + i % 19) % 65536;
  }
  ExpectSame(RunSeeded(128, src), retro);
}

TEST(Palette, NearestToTheCellsCorner) {
  const struct {
    int32_t id, r, g, b;
    uint32_t expected;
  } cases[] = {{131, 100, 100, 100, 0xA52A2A},  // from 96, 96, 96
               {131, 255, 255, 255, 0xFFFFFF}, {131, 7, 7, 7, 0x000000},       {131, 255, 0, 250, 0xFF00FF},
               {131, 0, 130, 0, 0x008000},     {131, 144, 238, 150, 0x90EE90}, {131, 176, 216, 232, 0xADD8E6},
               {132, 255, 0, 0, 0xFF0000},     {132, 92, 51, 23, 0x5C3317},    {132, 159, 95, 159, 0x9F5F9F},
               {132, 0, 255, 255, 0x00FFFF},   {132, 255, 255, 0, 0xFFFF00},   {132, 3, 3, 3, 0x000000}};
  for (const auto& c : cases) {
    FrameBuffer src(1, 1);
    src.SetPixel(0, 0, static_cast<uint8_t>(c.b), static_cast<uint8_t>(c.g), static_cast<uint8_t>(c.r), 5);
    EXPECT_EQ(RunEffect(c.id, src).Word(0, 0), 0x05000000u | c.expected) << c.r << " " << c.g << " " << c.b;
  }
}

struct Particle {
  int size = 0, x = 0, y = 0, look = 0;
};

// `blend` gives the new byte for (old byte, channel, squared distance).
template <typename Blend>
void Disc(FrameBuffer& frame, int x, int y, int radius, Blend blend) {
  x = ClampInt(x, radius, frame.Width() - 1 - radius);
  y = ClampInt(y, radius, frame.Height() - 1 - radius);
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      const bool inside = x + dx >= 0 && x + dx < frame.Width() && y + dy >= 0 && y + dy < frame.Height();
      if (!inside || dx * dx + dy * dy >= radius * radius) continue;
      uint8_t* p = frame.Pixel(x + dx, y + dy);
      for (int c = 0; c < 3; ++c) p[c] = static_cast<uint8_t>(blend(p[c], c, dx * dx + dy * dy));
    }
  }
}

constexpr int kUnits[4][2] = {{0, -1}, {0, 1}, {-1, 0}, {1, 0}};

// Frames of a particle effect beside a model that moves and draws the same particles.
template <typename Model>
void FollowParticles(int32_t id, std::initializer_list<double> values, size_t count, Model model) {
  FrameBuffer src = Picture(640, 300), dst(640, 300);
  const auto processor = MakeEffect(id, 640, 300);
  std::vector<Particle> particles(count);
  Stream stream{99};
  SeedStream(99);
  for (int frame = 0; frame < 30; ++frame) {
    FrameBuffer expected = Picture(640, 300);
    for (Particle& particle : particles) model(particle, stream, expected);
    RunFrame(*processor, src, dst, Values(id, values), frame);
    ExpectSame(dst, expected, "frame " + std::to_string(frame));
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(Particles, StarsKeepTheirPlaces) {
  FollowParticles(134, {50}, 50 * 640 / 25, [](Particle& s, Stream& stream, FrameBuffer& frame) {
    const int life = s.look - (stream() & 15);
    if (s.size < 1 || life < 1) {
      s.size = stream() % 3 + 1;
      s.look = (stream() & 63) + 192;
      if (s.x == 0 || s.y == 0) {
        s.x = stream() % 1023 + 1;
        s.y = stream() % 1023 + 1;
      }
    } else {
      s.look = life;
    }
    Disc(frame, s.x * 640 / 1024, s.y * 300 / 1024, s.size, [&s](int old, int, int d2) {
      const int a = (s.size * s.size - d2) * s.look / (s.size * s.size);
      return (old * (255 - a) + 255 * a) / 256;
    });
  });
}

TEST(Particles, SnowFallsEveryWay) {
  for (int direction = 0; direction < 4; ++direction) {
    const int scale = direction < 2 ? 1 : 2;
    FollowParticles(74, {20, static_cast<double>(direction), 80}, 20 * 640 / 100,
                    [=](Particle& s, Stream& stream, FrameBuffer& frame) {
                      const int step = scale * s.size + 1;
                      const int x = s.x + kUnits[direction][0] * step, y = s.y + kUnits[direction][1] * step;
                      if (s.size == 0 || x < s.size || y < s.size || x + s.size >= 1024 || y + s.size >= 1024) {
                        s.size = stream() % 9 + 1;
                        s.x = stream() & 1023;
                        s.y = stream() & 1023;
                        s.look = stream() % 56 + 200;
                      } else {
                        s.x = x;
                        s.y = y;
                      }
                      const int r2 = 4 * s.size * s.size;
                      Disc(frame, s.x * 640 / 1024, s.y * 300 / 1024, 2 * s.size, [&](int old, int, int d2) {
                        const int t = (r2 + 2 * d2) * 256 / (3 * r2);
                        return (old * t + (256 - t) * s.look) / 256;
                      });
                    });
  }
}

TEST(Particles, BubblesDriftEveryWay) {
  for (int direction = 0; direction < 4; ++direction) {
    FollowParticles(135, {60, static_cast<double>(direction), 60}, 60 * 640 / 300,
                    [=](Particle& s, Stream& stream, FrameBuffer& frame) {
                      const int step = s.size / 4 + 1 + 16 / 5;  // sizes to 15
                      const int x = s.x + kUnits[direction][0] * step, y = s.y + kUnits[direction][1] * step;
                      if (s.size == 0 || x < s.size || y < s.size || x + s.size > 255 || y + s.size > 255) {
                        s.size = stream() % 15 + 1;
                        const int r1 = stream(), r2 = stream(), r3 = stream();
                        s.x = r1 & 255;
                        s.y = r2 & 255;
                        s.look = s.x | s.y << 8 | (r3 & 255) << 16;
                      } else {
                        s.x = x;
                        s.y = y;
                      }
                      const int radius = s.size * 640 / 256, r2 = radius * radius;
                      Disc(frame, s.x * 640 / 256, s.y * 300 / 256, radius, [&](int old, int c, int d2) {
                        if (d2 <= r2 / 8) return old;
                        const int a = 5 * d2 < 4 * r2 ? 160 * d2 / r2 : 800 * (r2 - d2) / r2;
                        return (old * (256 - a) + a * (s.look >> (8 * c) & 255)) / 256;
                      });
                    });
  }
}

TEST(Particles, StartAnewWithSizeOrNumberOnly) {
  EngineRecord* record = nullptr;
  ASSERT_EQ(EngineCreate(&record, 60), kEngineDone);
  record->frameRate = 25;
  FrameBuffer wide(200, 100), high(100, 200);
  const auto run = [record](FrameBuffer& frame, int level) {
    record->level = level;
    const EngineImage image = MakeEngineImage(frame.Data(), frame.Width(), frame.Height(), frame.Step());
    EXPECT_EQ(EngineRun(record, &image, nullptr), kEngineDone);
    const auto* words = reinterpret_cast<const int32_t*>(record->tableBuffer);
    return std::vector<int32_t>(words + 1, words + 3);  // the first star's place
  };
  const auto first = run(wide, 10);
  EXPECT_EQ(run(wide, 5), first);
  EXPECT_EQ(run(wide, 10), first);
  const auto more = run(wide, 11);
  EXPECT_NE(more, first);
  EXPECT_NE(run(high, 11), more);
  EngineFree(record);
}

TEST(GetColor, KeepsTheHueOfTheWindow) {
  FrameBuffer src(40, 40);
  src.Fill(0);
  const auto paint = [&src](int x0, int x1, int b, int g, int r) {
    for (int y = 0; y < 40; ++y) {
      for (int x = x0; x < x1; ++x) {
        src.SetPixel(x, y, static_cast<uint8_t>(b), static_cast<uint8_t>(g), static_cast<uint8_t>(r), 9);
      }
    }
  };
  paint(0, 10, 0, 0, 200);      // red, hue 0
  paint(10, 20, 0, 200, 0);     // green, hue 85
  paint(20, 30, 100, 0, 200);   // pink: 255 - 21 is 234 and so stands in the sixth band, not with red
  paint(30, 40, 100, 90, 110);  // no hue
  const auto at = [&src](double x, double radius) {
    const FrameBuffer dst = RunEffect(136, src, {x, 50, radius});
    return std::vector<uint32_t>{dst.Word(5, 5), dst.Word(15, 5), dst.Word(25, 5), dst.Word(35, 5)};
  };
  const uint32_t red = 0x09C80000, green = 0x0900C800, pink = 0x09C80064, none = 0x096E5A64;
  const uint32_t redGray = 0x093C3C3C, greenGray = 0x09757575, pinkGray = 0x09474747, noneGray = 0x09616161;
  const auto only = [](uint32_t a, uint32_t b, uint32_t c, uint32_t d) { return std::vector<uint32_t>{a, b, c, d}; };
  EXPECT_EQ(at(12.5, 0), only(red, greenGray, pinkGray, none));
  EXPECT_EQ(at(37.5, 30), only(redGray, green, pinkGray, none));
  EXPECT_EQ(at(62.5, 30), only(redGray, greenGray, pink, none));
  EXPECT_EQ(at(87.5, 30), only(redGray, greenGray, pinkGray, noneGray));
  EXPECT_EQ(at(100, 0), only(redGray, greenGray, pinkGray, noneGray)) << "an empty window";
  // Columns 9 to 11 and 8 to 10: both ends belong to the window.
  EXPECT_EQ(at(25, 15), only(redGray, green, pinkGray, none));
  EXPECT_EQ(at(22.5, 15), only(red, greenGray, pinkGray, none));
}

TEST(BadTv, RollsBendsAndClears) {
  const int32_t width = 300, height = 130;
  FrameBuffer src = Picture(width, height);
  const auto processor = MakeEffect(168, width, height);
  const int firstEdge[] = {80, 83, 85, 89, 92, 99, 105, 121, 126, 134, 141, 148};
  int firstBlocks = 0;
  for (int frame = 0; frame < 40; ++frame) {
    FrameBuffer dst(width, height);
    RunFrame(*processor, src, dst, Values(168), frame);
    Stream stream{static_cast<uint32_t>(frame)};
    const bool first = (stream() & 3) == 0;
    firstBlocks += first;
    for (int y = 0; y < height; ++y) {
      const int from = ((y - 5 * frame) % height + height) % height;
      const bool bar = from < 10 || from >= height - 10;
      int shift = 0;  // found by the first pixels of the row
      while (shift < width &&
             (bar || dst.Word(shift, y) != src.Word(0, from) || dst.Word(shift + 1, y) != src.Word(1, from))) {
        ++shift;
      }
      if (!bar) {
        ASSERT_TRUE(shift >= 80 && shift <= 155) << frame << " " << y;
        if (first && y % 100 < 12) {
          ASSERT_EQ(shift, firstEdge[y % 100]);
        }
      }
      for (int x = 0; x < width; ++x) ASSERT_EQ(dst.Word((x + shift) % width, y), bar ? 0 : src.Word(x, from));
    }
  }
  EXPECT_GT(firstBlocks, 0);
}

}  // namespace

// The engine's merge range: a frame and a second image.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "engine/engine.h"
#include "tests/support/frames.h"

namespace {

EngineImage ImageOf(FrameBuffer& frame) {
  return MakeEngineImage(frame.Data(), frame.Width(), frame.Height(), frame.Step());
}

class Merge {
 public:
  explicit Merge(uint32_t code) { EngineCreate(&record, code); }
  ~Merge() { EngineFree(record); }

  int32_t Run(FrameBuffer& frame, FrameBuffer& material) {
    const EngineImage image = ImageOf(frame), second = ImageOf(material);
    return EngineRun(record, &image, &second);
  }

  EngineRecord* record = nullptr;
};

// One pixel of every pair of frame and material bytes: what goes in, and where.
struct Pair {
  int f, m;  // bytes of channel `c`
  int c;
  const uint8_t* frame;  // the whole pixels
  const uint8_t* material;
};
using Formula = std::function<int(const Pair&)>;

int Luma4(const Pair& p) {
  return (p.frame[0] + 2 * p.frame[1] + p.frame[2]) >> 2;
}
int Luma255(const Pair& p) {
  return (29 * p.frame[0] + 150 * p.frame[1] + 76 * p.frame[2] + 255) >> 8;
}
int Limit(int v) {
  return std::clamp(v, 0, 255);
}

int HardMix(int f, int m, int percent) {
  const int i = ((m - 255) * percent + 25500) / 100;
  return i < 128 ? (i * f + 127) >> 7 : 255 - (((255 - i) * (255 - f) + 127) >> 7);
}
Formula Stencil(std::array<int, 3> color, bool burn) {
  return [=](const Pair& p) {
    const int t = 255 - (((255 - 4 * (p.f >> 2)) * (255 - color[static_cast<size_t>(p.c)]) + 255) >> 8);
    return burn ? Limit(t + p.m - 255) : (t * p.m + 255) >> 8;
  };
}

void CheckAllPairs(Merge& merge, const std::string& what, const Formula& formula) {
  FrameBuffer frame(256, 256, 8), material(256, 256, 40), before(256, 256);
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) {
      const auto byte = [](int v) { return static_cast<uint8_t>(v); };
      frame.SetPixel(x, y, byte(x), byte(255 - x), byte(x * 7), byte(x + y));
      before.SetPixel(x, y, byte(x), byte(255 - x), byte(x * 7), byte(x + y));
      material.SetPixel(x, y, byte(y), byte(y ^ 0x55), byte(255 - y), byte(y * 3));
    }
  }
  ASSERT_EQ(merge.Run(frame, material), kEngineDone) << what;
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) {
      const uint8_t* f = before.Pixel(x, y);
      const uint8_t* m = material.Pixel(x, y);
      for (int c = 0; c < 3; ++c) {
        ASSERT_EQ(frame.Pixel(x, y)[c], formula({f[c], m[c], c, f, m}))
            << what << " f " << int(f[c]) << " m " << int(m[c]);
      }
      ASSERT_EQ(frame.Pixel(x, y)[3], f[3]) << what;
    }
  }
  EXPECT_TRUE(frame.GuardsIntact());
}

TEST(BlendModes, EveryPairOfBytes) {
  const auto multiply = [](const Pair& p) { return (p.f * p.m + 255) >> 8; };
  const auto overlay = [](const Pair& p) {
    return p.f < 128 ? (p.f * p.m + 127) >> 7 : 255 - (((255 - p.f) * (255 - p.m) + 127) >> 7);
  };
  const auto add = [](const Pair& p) { return Limit(p.f + p.m); };
  const auto screen = [](const Pair& p) { return 255 - (((255 - p.m) * (255 - p.f) + 255) >> 8); };
  const auto darken = [](const Pair& p) { return std::min(p.f, p.m); };
  const auto softLight = [](const Pair& p) {
    if (p.m < 128) return ((p.m - 128) * p.f * (255 - p.f) + p.f * 32768) >> 15;
    const float root = std::sqrt(static_cast<float>(p.f));
    return ((p.m - 128) * static_cast<int>(16 * root - static_cast<float>(p.f)) + p.f * 128) >> 7;
  };
  const auto hardMix = [](int percent) { return [=](const Pair& p) { return HardMix(p.f, p.m, percent); }; };
  const auto linear = [](int percent) {
    return [=](const Pair& p) { return Limit(p.f + ((p.m - 255) * percent + 25500) / 100 - 255); };
  };
  const auto gate = [](int channel) {
    return [=](const Pair& p) {
      const bool bright = (p.frame[0] + p.frame[1] + p.frame[2] + 2) >> 7 >= 3;
      return bright || p.c == channel ? p.m : 0;
    };
  };
  const struct {
    std::vector<uint32_t> codes;
    Formula formula;
  } cases[] = {
      {{2049}, [](const Pair& p) { return (p.f * 128 + (p.c == 2 ? 0 : 255) * 128) >> 8; }},
      {{2050}, [](const Pair& p) { return (p.f * (256 - p.material[3]) + p.m * p.material[3] + 255) >> 8; }},
      {{2052, 2061}, multiply},
      {{2063}, [](const Pair& p) { return (Luma4(p) * p.m + 255) >> 8; }},
      {{2064}, Stencil({36, 55, 225}, false)},
      {{2065}, Stencil({70, 235, 50}, false)},
      {{2066}, Stencil({235, 70, 40}, false)},
      {{2067}, gate(3)},
      {{2068}, gate(2)},
      {{2070}, gate(0)},
      {{2072, 2078, 2202}, overlay},
      {{2081, 2089, 2093}, hardMix(100)},
      {{2090, 2092}, hardMix(60)},
      {{2096, 2104}, add},
      {{2107}, [](const Pair& p) { return p.m == 255 ? 255 : std::min(p.f * 255 / (255 - p.m), 255); }},
      {{2110, 2113}, darken},
      {{2116, 2166}, screen},
      {{2169, 2174}, softLight},
      {{2177, 2180, 2184}, linear(100)},
      {{2178}, linear(40)},
      {{2179}, linear(50)},
      {{2186},
       [](const Pair& p) {
         const int entry = p.m + Luma4(p) + 1;
         return entry < 256 ? 0 : std::min(((entry - 256) * 85196) >> 16, 255);
       }},
      {{2187}, Stencil({70, 40, 245}, true)},
      {{2188}, Stencil({36, 155, 205}, true)},
      {{2189}, Stencil({143, 81, 40}, true)},
      {{2191}, [](const Pair& p) { return Limit(p.f + 2 * p.m - 255); }},
      {{2199}, [](const Pair& p) { return Limit(p.m + Luma255(p)); }},
      {{2200}, [](const Pair& p) { return 255 - (((255 - std::min(p.f * 256 / 182, 255)) * (255 - p.m)) >> 8); }},
  };
  for (const auto& c : cases) {
    for (const uint32_t code : c.codes) {
      Merge merge(code);
      CheckAllPairs(merge, std::to_string(code), c.formula);
    }
  }
}

TEST(BlendModes, AFewPixelsByHand) {
  const struct {
    uint32_t code;
    int f, m, expected;
  } cases[] = {{2052, 255, 255, 255}, {2052, 1, 1, 1},       {2072, 128, 0, 1},     {2081, 0, 128, 1},
               {2107, 0, 255, 255},   {2107, 100, 155, 255}, {2107, 50, 155, 127},  {2116, 255, 0, 255},
               {2169, 64, 0, 16},     {2169, 64, 255, 127},  {2191, 200, 100, 145}, {2186, 200, 200, 188},
               {2186, 100, 155, 0},   {2200, 182, 0, 255},   {2200, 91, 0, 129}};
  for (const auto& c : cases) {
    Merge merge(c.code);
    FrameBuffer frame(1, 1), material(1, 1);
    frame.Fill(static_cast<uint8_t>(c.f));
    material.Fill(static_cast<uint8_t>(c.m));
    merge.Run(frame, material);
    EXPECT_EQ(frame.Pixel(0, 0)[1], c.expected) << c.code << " " << c.f << " " << c.m;
  }
}

TEST(BlendModes, PercentIsFollowedOrKept) {
  const auto hard = [](int percent) { return [=](const Pair& p) { return HardMix(p.f, p.m, percent); }; };
  const auto linear = [](int percent) {
    return [=](const Pair& p) { return Limit(p.f + ((p.m - 255) * percent + 25500) / 100 - 255); };
  };
  Merge follows(2081), keeps(2177);
  for (const int level : {37, 0, 250}) {
    follows.record->level = keeps.record->level = level;
    CheckAllPairs(follows, "follows", hard(std::min(level, 100)));
    CheckAllPairs(keeps, "keeps", linear(37));
  }
  Merge white(2081), same(2177);
  white.record->level = same.record->level = 0;
  CheckAllPairs(white, "white", [](const Pair&) { return 255; });
  CheckAllPairs(same, "same", [](const Pair& p) { return p.f; });
}

TEST(Merge, StatusesAndMissingMaterial) {
  FrameBuffer frame(5, 3), before(5, 3);
  frame.FillTestPicture();
  before.FillTestPicture();
  const EngineImage image = ImageOf(frame);
  EngineImage empty = image;
  empty.pixels = nullptr;
  for (const uint32_t code : {2050u, 2051u, 2177u, 2193u, 2201u, 2205u}) {
    Merge merge(code);
    EXPECT_EQ(EngineRun(merge.record, &image, nullptr), kEngineBadImage) << code;
    EXPECT_EQ(EngineRun(merge.record, &image, &empty), kEngineBadImage) << code;
  }
  for (const uint32_t code :
       {2051u, 2062u, 2071u, 2079u, 2095u, 2106u, 2109u, 2115u, 2168u, 2176u, 2185u, 2190u, 2192u}) {
    Merge merge(code);
    EXPECT_EQ(merge.Run(frame, before), kEngineFailed) << code;
  }
  EXPECT_EQ(frame.Packed(), before.Packed());
  Merge tint(2049);
  EXPECT_EQ(EngineRun(tint.record, &image, nullptr), kEngineDone);
  EXPECT_NE(frame.Packed(), before.Packed());
}

TEST(Merge, SmallMaterialsGoOnWithTheirEdge) {
  for (uint32_t code = 2049; code <= 2206; ++code) {
    Merge merge(code);
    FrameBuffer frame(7, 5, 4), material(3, 2, 12);
    frame.FillTestPicture();
    material.FillTestPicture(2);
    merge.Run(frame, material);
    merge.Run(frame, material);
    EXPECT_TRUE(frame.GuardsIntact() && material.GuardsIntact()) << code;
  }
  Merge add(2096);
  FrameBuffer frame(3, 1), material(1, 1);
  frame.Fill(10);
  material.Fill(20);
  add.Run(frame, material);
  EXPECT_EQ(frame.Word(2, 0), 0x0A1E1E1Eu);
}

TEST(MergeLooks, CurvesHitTheirPointsAndThenBlend) {
  constexpr int kInputs[] = {0, 32, 64, 96, 128, 160, 192, 224, 255};
  FrameBuffer frame(9, 1), none(1, 1), gray(9, 1);
  const auto run = [&](uint32_t code, FrameBuffer& material) {
    for (int x = 0; x < 9; ++x) {
      const auto v = static_cast<uint8_t>(kInputs[x]);
      frame.SetPixel(x, 0, v, v, v, 7);
    }
    Merge merge(code);
    EXPECT_EQ(merge.Run(frame, material), kEngineDone);
  };
  gray.Fill(200);
  run(2197, none);  // another size: curves only
  EXPECT_EQ(frame.Word(0, 0), 0x0712000Cu);
  EXPECT_EQ(frame.Word(3, 0), 0x078E6767u);
  EXPECT_EQ(frame.Word(8, 0), 0x07FEF8F5u);
  run(2194, none);
  EXPECT_EQ(frame.Word(4, 0), 0x07C1AB81u);
  run(2195, none);
  EXPECT_EQ(frame.Word(8, 0), 0x07E1F0D5u);
  run(2196, none);
  EXPECT_EQ(frame.Word(1, 0), 0x07463D27u);
  // Blue of 2193 at 128 is 146: times 200 gives 114 (28,500 + 700 + 255 over 256 is 115), 154/256 of the way from 146.
  run(2193, gray);
  EXPECT_EQ(frame.Pixel(4, 0)[0], 146 + ((115 - 146) * 154 >> 8));
  // 2196 takes the blend alone: blue 39 * 200 >> 7 = 60; 215 gives 255 - (55 * 40 >> 7) = 238.
  run(2196, gray);
  EXPECT_EQ(frame.Pixel(1, 0)[0], 60);
  EXPECT_EQ(frame.Pixel(6, 0)[0], 238);
  run(2194, gray);  // blue 4: 6 in full, 5 half-way
  EXPECT_EQ(frame.Pixel(1, 0)[0], 5);
  // 2198 multiplies first: 160 with 102 gives 64, whose blue is 53, green 18, red 41.
  gray.Fill(102);
  run(2198, gray);
  EXPECT_EQ(frame.Word(5, 0), 0x07291235u);
}

TEST(MergeLooks, FocusColorKeepsColorUnderTheSpot) {
  Merge merge(2201);
  merge.record->posX = 25;  // column 5 of 20
  FrameBuffer frame(20, 10), material(6, 8);
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 20; ++x) frame.SetPixel(x, y, 200, 0, 0, 9);
  }
  material.Fill(0);
  material.SetPixel(2, 0, 255, 0, 0, 0);  // column hw - 1 is the centre; row 0 falls hh = 3 rows below it
  material.SetPixel(4, 6, 128, 0, 0, 0);
  material.SetPixel(5, 3, 255, 0, 0, 0);  // beyond the box
  merge.Run(frame, material);
  const int gray = (117 * 200 + 512) >> 10;  // 23
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 20; ++x) {
      const int a = x == 5 && y == 8 ? 255 : x == 7 && y == 2 ? 128 : 0;
      EXPECT_EQ(frame.Pixel(x, y)[0], (200 * a + gray * (256 - a)) >> 8) << x << " " << y;
      EXPECT_EQ(frame.Pixel(x, y)[2], (gray * (256 - a)) >> 8) << x << " " << y;
      EXPECT_EQ(frame.Pixel(x, y)[3], 9);
    }
  }
}

TEST(MergeLooks, OldPhotoOfEvenFrames) {
  const struct {
    int gray, material, alpha, expected;
  } cases[] = {{255, 255, 255, 254},  // 255 * 255 >> 8
               {100, 0, 0, 91},       // (85 + 100) >> 1 = 92, times 255 >> 8
               {30, 0, 0, 14},        // (0 + 30) >> 1 = 15
               {100, 40, 51, 81}};    // (92 * 204 + 40 * 51) >> 8
  for (const auto& c : cases) {
    Merge merge(2203);
    FrameBuffer frame(4, 3), material(4, 3);
    frame.Fill(static_cast<uint8_t>(c.gray));
    for (int i = 0; i < 12; ++i) {
      const auto m = static_cast<uint8_t>(c.material);
      material.SetPixel(i % 4, i / 4, m, m, m, static_cast<uint8_t>(c.alpha));
    }
    merge.Run(frame, material);
    EXPECT_EQ(frame.Pixel(1, 1)[1], c.expected);
    EXPECT_EQ(frame.Pixel(3, 2)[3], 255);
  }
}

TEST(MergeLooks, CanvasMasksRadiallyOnceAndThenByItsBlue) {
  Merge merge(2204);
  FrameBuffer material(41, 31);
  material.Fill(60);
  const auto run = [&](int width) {
    FrameBuffer frame(width, 31, 4);
    for (int y = 0; y < 31; ++y) {
      for (int x = 0; x < width; ++x) frame.SetPixel(x, y, 100, 10, 20, 77);
    }
    merge.Run(frame, material);
    return frame;
  };
  // Luma 24, light 231: screen 255 - (195 * 231 >> 8) = 80, so mask k gives (20 * k >> 8) + 60.
  const FrameBuffer first = run(41);
  EXPECT_EQ(first.Word(20, 15), 0x4D4E4E4Eu);  // 240: 78
  EXPECT_EQ(first.Word(0, 0), 0x4D3C3C3Cu);    // corner at 25 of reach 25, beyond 17: 0
  EXPECT_EQ(first.Word(31, 15), 0x4D454545u);  // distance 11, half-way from 5 to 17: 120, so 69
  for (int repeat = 0; repeat < 2; ++repeat) {
    const FrameBuffer later = run(41);
    EXPECT_EQ(later.Word(20, 15), 0x4D434343u);  // 100: 67
    EXPECT_EQ(later.Word(0, 0), 0x4D434343u);
  }
  EXPECT_EQ(run(39).Word(0, 0), 0x4D3C3C3Cu) << "a new size is masked radially again";
}

TEST(MergeLooks, PencilDividesByTheLargestNeighbour) {
  FrameBuffer frame(33, 9, 4), before(33, 9), material(33, 9);
  frame.FillTestPicture();
  before.FillTestPicture();
  material.FillTestPicture(5);
  Merge merge(2205);
  merge.Run(frame, material);
  const auto gray = [&](int x, int y) {
    const uint8_t* p = before.Pixel(x, y);
    return (p[0] + 2 * p[1] + p[2]) >> 2;
  };
  for (int y = 0; y < 9; ++y) {
    for (int x = 0; x < 33; ++x) {
      int expected = 255;
      if (x > 0 && y > 0 && x < 32 && y < 8) {
        int largest = 0;
        for (int i = 0; i < 9; ++i) largest = std::max(largest, gray(x + i % 3 - 1, y + i / 3 - 1));
        const int g = gray(x, y), m = material.Pixel(x, y)[0];
        const int v = m < 128 ? ((m - 128) * (255 - g) + 32768) * g >> 15
                              : ((static_cast<int>(std::sqrt(g)) * 16 - g) * (m - 128) + g * 128) >> 7;
        expected = largest ? std::min(((v & 255) << 8) / largest, 255) : 255;
      }
      for (int c = 0; c < 3; ++c) ASSERT_EQ(frame.Pixel(x, y)[c], expected) << x << " " << y;
      ASSERT_EQ(frame.Pixel(x, y)[3], before.Pixel(x, y)[3]);
    }
  }
}

}  // namespace

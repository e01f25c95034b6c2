// The engine's merge range: a frame and a second image.
#include <gtest/gtest.h>

#include "engine/engine.h"
#include "tests/support/frames.h"
#include "tests/support/targets.h"

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
    return EngineRunFrom(record, image, image, &second);
  }

  EngineRecord* record = nullptr;
};

// Every pair of a frame's and a material's byte, in three channels, after the merge.
std::vector<uint8_t> AllPairs(Merge& merge) {
  FrameBuffer frame(256, 256, 8), material(256, 256, 40);
  const auto byte = [](int v) { return static_cast<uint8_t>(v); };
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 256; ++x) {
      frame.SetPixel(x, y, byte(x), byte(255 - x), byte(x * 7), byte(x + y));
      material.SetPixel(x, y, byte(y), byte(y ^ 0x55), byte(255 - y), byte(y * 3));
    }
  }
  merge.Run(frame, material);
  EXPECT_TRUE(frame.GuardsIntact());
  return frame.Packed();
}

// Codes that no effect uses are held here alone.
TEST(BlendModes, EveryPairOfBytesOnEveryTarget) {
  OnEveryTarget([] {
    uint64_t sum = 14695981039346656037u;
    for (uint32_t code = 2049; code <= 2206; ++code) {
      Merge merge(code);
      for (const uint8_t byte : AllPairs(merge)) sum = (sum ^ byte) * 1099511628211u;
    }
    EXPECT_EQ(sum, 15165280943361128338u) << "for changes that are meant to move bytes: take this number";
  });
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
  const auto at = [](Merge& merge, int level) {
    merge.record->level = level;
    return AllPairs(merge);
  };
  Merge follows(2081), freshHard(2081), keeps(2177), freshLinear(2177);
  const auto hard = at(follows, 37), linear = at(keeps, 37);
  EXPECT_NE(at(follows, 0), hard);
  EXPECT_EQ(at(follows, 250), at(freshHard, 100)) << "at most 100";
  EXPECT_EQ(at(keeps, 0), linear);
  EXPECT_NE(at(freshLinear, 0), linear);
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
    EXPECT_EQ(EngineRunFrom(merge.record, image, image, nullptr), kEngineBadImage) << code;
    EXPECT_EQ(EngineRunFrom(merge.record, image, image, &empty), kEngineBadImage) << code;
  }
  for (const uint32_t code :
       {2051u, 2062u, 2071u, 2079u, 2095u, 2106u, 2109u, 2115u, 2168u, 2176u, 2185u, 2190u, 2192u}) {
    Merge merge(code);
    EXPECT_EQ(merge.Run(frame, before), kEngineFailed) << code;
  }
  EXPECT_EQ(frame.Packed(), before.Packed());
  Merge tint(2049);
  EXPECT_EQ(EngineRunFrom(tint.record, image, image, nullptr), kEngineDone);
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

}  // namespace

// Film wear, noise and particles.
#include <gtest/gtest.h>

#include "engine/engine_internal.h"
#include "tests/support/draws.h"
#include "tests/support/frames.h"

namespace {

FrameBuffer Picture(int32_t width, int32_t height, uint32_t seed = 1) {
  FrameBuffer frame(width, height);
  frame.FillTestPicture(seed);
  return frame;
}

TEST(Noise, LowestLevelsShowThePicture) {
  FrameBuffer src = Picture(43, 20);
  EXPECT_EQ(RunEffect(75, src, {0}).Packed(), src.Packed());
  EXPECT_EQ(RunEffect(78, src, {1}).Packed(), src.Packed());
}

TEST(Noise, SplashIsTheSameInEveryFrameAndLeavesClearPixels) {
  FrameBuffer src = Picture(320, 40);
  SeedRandom(3);
  const FrameBuffer one = RunEffect(77, src, {100});
  SeedRandom(4);
  EXPECT_EQ(RunEffect(77, src, {100}).Packed(), one.Packed());
  EXPECT_NE(one.Packed(), src.Packed());
  for (int i = 3; i < 4 * 320 * 40; i += 4) src.Data()[i] = 0;
  EXPECT_EQ(RunEffect(77, src, {100}).Packed(), src.Packed());
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

TEST(Particles, StartAnewWithSizeOrNumberOnly) {
  EngineRecord* record = nullptr;
  ASSERT_EQ(EngineCreate(&record, 60), kEngineDone);
  record->frameRate = 25;
  FrameBuffer wide(200, 100), high(100, 200);
  const auto run = [record](FrameBuffer& frame, int level) {
    record->level = level;
    const EngineImage image = MakeEngineImage(frame.Data(), frame.Width(), frame.Height(), frame.Step());
    EXPECT_EQ(EngineRunFrom(record, image, image, nullptr), kEngineDone);
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

}  // namespace

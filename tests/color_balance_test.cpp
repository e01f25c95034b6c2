// Colour balance, hue and the other colour effects.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/frames.h"

namespace {

// One pixel through an effect, as 0xAARRGGBB.
uint32_t PixelOf(int32_t id, std::initializer_list<double> values, uint8_t b0, uint8_t b1, uint8_t b2,
                 uint8_t b3 = 0x7B) {
  FrameBuffer src(1, 1);
  src.SetPixel(0, 0, b0, b1, b2, b3);
  return RunEffect(id, src, values).Word(0, 0);
}

uint32_t Pixel(int b0, int b1, int b2, uint32_t b3 = 0x7B) {
  return static_cast<uint32_t>(b0) | static_cast<uint32_t>(b1) << 8 | static_cast<uint32_t>(b2) << 16 | b3 << 24;
}

TEST(Balance, CurvesAndTheirChannels) {
  const auto curve = [](double p, int i) {
    const double x = i / 255.0;
    return static_cast<int>(std::min(1.0, ((1 - p / 4) * x + 0.25) * x) * 255);
  };
  EXPECT_EQ(PixelOf(55, {255, 255, 255, 1, 0}, 127, 127, 127), Pixel(79, 79, 79)) << "not the identity";
  for (const int i : {1, 64, 127, 200, 254}) {
    const uint8_t v = static_cast<uint8_t>(i);
    EXPECT_EQ(PixelOf(55, {255, 51, 127.5, 1, 0}, v, v, v), Pixel(curve(0.2, i), curve(1, i), curve(0.5, i)))
        << "the first parameter serves byte 1, the second byte 0";
  }
  // A point at the origin leaves nothing to eliminate, and the curve falls.
  EXPECT_EQ(PixelOf(55, {0, 0, 0, 1, 0}, 0, 55, 255), Pixel(255, 200, 0));
}

TEST(Balance, HalvesByFlags) {
  FrameBuffer src(5, 2, 8);
  src.Fill(127);
  const struct {
    double isLeft, isSplit;
    const char* columns;  // f filtered, k kept; the middle of 5 is 2
  } cases[] = {{0, 1, "ffkkk"}, {0, 0, "ffkkk"}, {1, 1, "kkfff"}, {1, 0, "fffff"}};
  for (const auto& c : cases) {
    const FrameBuffer dst = RunEffect(55, src, {255, 255, 255, c.isLeft, c.isSplit});
    for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(dst.Pixel(x, 1)[0], c.columns[x] == 'f' ? 79 : 127) << c.columns << x;
    EXPECT_EQ(dst.Pixel(0, 1)[3], 127);
    EXPECT_EQ(dst.Data()[20], 0xCD) << "padding stays";
  }
}

TEST(HueShift, TurnsAsWorkedOut) {
  // From the same chain of matrices in 64-bit floats, apart from rounding edges.
  EXPECT_EQ(PixelOf(41, {0}, 200, 60, 90), Pixel(11, 151, 121));
  EXPECT_EQ(PixelOf(41, {0}, 40, 120, 230), Pixel(168, 88, 0));
  EXPECT_EQ(PixelOf(41, {17}, 200, 60, 90), Pixel(43, 150, 8));
  EXPECT_EQ(PixelOf(41, {34}, 40, 120, 230), Pixel(159, 57, 247));
  EXPECT_EQ(PixelOf(41, {51}, 200, 60, 90), Pixel(201, 58, 98));
  EXPECT_EQ(PixelOf(41, {67.9}, 40, 120, 230), Pixel(0, 170, 84)) << "only whole levels";
  EXPECT_EQ(PixelOf(41, {95}, 200, 60, 90), Pixel(22, 141, 157));
  for (const double none : {50.0, -3.0, 101.0}) {
    FrameBuffer src(40, 4, 12);
    src.FillTestPicture();
    const FrameBuffer dst = RunEffect(41, src, {none});
    for (int32_t y = 0; y < 4; ++y) {
      for (int32_t i = 0; i < 160; ++i) EXPECT_NEAR(dst.Pixel(0, y)[i], src.Pixel(0, y)[i], i % 4 == 3 ? 0 : 1);
    }
  }
}

TEST(PointColor, PrimariesAgainstAMeanThatLeansOnTheFactor) {
  for (const double factor : {31.0, 32.0, 1e9}) {
    EXPECT_EQ(PixelOf(42, {factor}, 127, 128, 255), Pixel(0, 255, 255)) << factor;
  }
  // Factor 10: n = 12, (sum + 12700) / 144. A gray of 89 has 90, one of 91 has 90.
  EXPECT_EQ(PixelOf(42, {10.9}, 89, 89, 89), Pixel(0, 0, 0));
  EXPECT_EQ(PixelOf(42, {10}, 91, 91, 91), Pixel(255, 255, 255));
  EXPECT_EQ(PixelOf(42, {10}, 90, 91, 89), Pixel(0, 255, 0)) << "equal is not below";
  // Factor 1: n = 3, (100 + 127) / 9 = 25.
  EXPECT_EQ(PixelOf(42, {1}, 25, 26, 49), Pixel(0, 255, 255));
}

TEST(PointColor, ExtractsSwapAndClearAlpha) {
  EXPECT_EQ(PixelOf(44, {0.9, 0, 0}, 1, 2, 3), Pixel(1, 2, 3)) << "none set: copied whole";
  EXPECT_EQ(PixelOf(44, {1, 1, 1}, 1, 2, 3), Pixel(3, 2, 1, 0));
  EXPECT_EQ(PixelOf(44, {1, 0, 0}, 1, 2, 3), Pixel(0, 0, 1, 0));
  EXPECT_EQ(PixelOf(44, {0, 0, 1}, 1, 2, 3), Pixel(3, 0, 0, 0));
}

TEST(PointColor, DistancesWrap) {
  EXPECT_EQ(PixelOf(47, {10, 20, 30}, 10, 20, 30), Pixel(0, 0, 0)) << "red is compared with byte 0";
  EXPECT_EQ(PixelOf(47, {0, 0, 0}, 255, 255, 255), Pixel(56, 56, 56));  // 441.673 * 0.70572 = 311.7
  EXPECT_EQ(PixelOf(47, {0, 0, 0}, 0, 5, 0), Pixel(4, 4, 4));           // 3.53 to the nearest
  EXPECT_EQ(PixelOf(47, {65536 + 7, 0, 0}, 7, 0, 0), Pixel(0, 0, 0)) << "16 bits of each";
}

TEST(Equalize, CountsThePictureInsideBlackBars) {
  FrameBuffer src(4, 4, 16);  // a picture of 2 by 2 in black bars
  src.SetPixel(1, 1, 10, 50, 0, 1);
  src.SetPixel(2, 1, 10, 50, 3, 2);
  src.SetPixel(1, 2, 20, 50, 3, 3);
  src.SetPixel(2, 2, 30, 50, 9, 4);
  const FrameBuffer dst = RunEffect(39, src);
  EXPECT_EQ(dst.Word(1, 1), Pixel(128, 255, 64, 1));
  EXPECT_EQ(dst.Word(2, 1), Pixel(128, 255, 192, 2));
  EXPECT_EQ(dst.Word(1, 2), Pixel(192, 255, 192, 3));
  EXPECT_EQ(dst.Word(2, 2), Pixel(255, 255, 255, 4));
  EXPECT_EQ(dst.Word(0, 0), Pixel(0, 0, 64, 0)) << "the tables serve the bars too";
  // (1, 0, 0) is not black, but its gray is 0.
  FrameBuffer dark(3, 2);
  dark.SetPixel(1, 1, 1, 0, 0, 255);
  EXPECT_EQ(RunEffect(39, dark).Packed(), dark.Packed());
}

TEST(ColorEffects, TakeOrRefuseAsTold) {
  FrameBuffer src(2, 2, 4), dst(2, 2, 4);
  src.Fill(99);
  for (const int32_t id : {49, 47, 55, 363}) {
    dst.Fill(0xCD);
    const auto processor = MakeEffect(id, 2, 2);
    ParamValueArray values = Values(id == 49 || id == 47 ? id + 1 : id);
    processor->Process(id == 49 || id == 47 ? src.Data() : nullptr, dst.Data(), 12, 12, &values);
    EXPECT_EQ(dst.Word(0, 0), 0xCDCDCDCDu) << id;
  }
  for (const int32_t id : {45, 43, 42, 44, 49}) {  // one run, whatever the steps
    const FrameBuffer run = RunEffect(id, src, {200, 200, 200, 200});
    EXPECT_NE(run.Data()[8], 0xCD) << id;
    EXPECT_EQ(run.Data()[16], 0xCD) << id;
  }
}

}  // namespace

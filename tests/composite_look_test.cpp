// The composite looks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <opencv2/imgproc.hpp>

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

TEST(PointLooks, GrayShares) {
  EXPECT_EQ(ColorOf(143, 10, 20, 30), 0x1A140Fu);  // grey 22: 26, 20, 15
  EXPECT_EQ(ColorOf(144, 0, 0, 0), 0x292300u);
  EXPECT_EQ(ColorOf(144, 128, 128, 128), 0xA9A380u);  // the middle of the sine stays
  EXPECT_EQ(ColorOf(144, 255, 255, 255), 0xFFFFFFu);
}

TEST(PointLooks, BeautifyTurnsLightToDark) {
  EXPECT_EQ(ColorOf(148, 0, 0, 0), 0xFEFEFEu);  // the lift leaves 1
  EXPECT_EQ(ColorOf(148, 255, 255, 255), 0u);
  // Grey 128 lifts to 192; hard(255 - (127 K >> 8), 63) with K 200, 194, 160.
  EXPECT_EQ(ColorOf(148, 128, 128, 128), 0x564E4Cu);
  // Red: lifted to 77, 77, 255; the distance 178 takes 11, 22 and 44, each times (255 - level) >> 8.
  EXPECT_EQ(ColorOf(148, 0, 0, 255), 0x00BEB3u);
}

TEST(LabTone, BlackensShadowsAndKeepsEnds) {
  EXPECT_EQ(ColorOf(159, 0, 0, 0), 0u);
  EXPECT_EQ(ColorOf(159, 20, 20, 20), 0u);
  EXPECT_EQ(ColorOf(159, 255, 255, 255), 0xFFFFFFu);
  EXPECT_GT(ColorOf(159, 150, 150, 150) & 255, 155u);
  // Rows are converted in pieces: each must come out as by itself.
  FrameBuffer src(500, 70);
  src.FillTestPicture();
  const FrameBuffer whole = RunEffect(159, src);
  for (const int32_t y : {0, 31, 32, 33, 69}) {
    FrameBuffer row(500, 1);
    std::copy_n(src.Pixel(0, y), 2000, row.Data());
    EXPECT_TRUE(std::equal(whole.Pixel(0, y), whole.Pixel(0, y) + 2000, RunEffect(159, row).Data())) << y;
  }
}

// All colours there are, 65536 at a time: the conversions are OpenCV's to the byte, the tone lies between them.
TEST(LabTone, EveryColorIsConvertedAsByOpenCv) {
  uint8_t lightness[256];
  for (int32_t i = 0; i < 256; ++i) {
    const double l = i * 0.392157 < 10 ? 0 : i * 0.392157;
    const double p = std::pow(1 - (l - 10) * 0.011111 + 1e-6, 1.36);
    lightness[i] = static_cast<uint8_t>(std::min(std::lround((1 - std::min(std::max(p, 0.0), 1.0)) * 255), 255L));
  }
  FrameBuffer src(256, 256);
  for (int32_t red = 0; red < 256; ++red) {
    for (int32_t y = 0; y < 256; ++y) {
      for (int32_t x = 0; x < 256; ++x)
        src.SetPixel(x, y, static_cast<uint8_t>(x), static_cast<uint8_t>(y), static_cast<uint8_t>(red), 255);
    }
    cv::Mat lab, expected;
    cv::cvtColor(cv::Mat(256, 256, CV_8UC4, src.Data()), lab, cv::COLOR_BGRA2BGR);
    cv::cvtColor(lab, lab, cv::COLOR_BGR2Lab);
    for (uint8_t* p = lab.data; p < lab.dataend; p += 3) *p = lightness[*p];
    cv::cvtColor(lab, lab, cv::COLOR_Lab2BGR);
    cv::cvtColor(lab, expected, cv::COLOR_BGR2BGRA);
    const FrameBuffer toned = RunEffect(159, src);
    ASSERT_EQ(std::memcmp(expected.data, toned.Data(), toned.Size()), 0) << red;
  }
}

}  // namespace

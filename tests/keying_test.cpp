// Keys into alpha.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/frames.h"

namespace {

uint32_t AlphaOf(int32_t id, uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) {
  FrameBuffer src(1, 1);
  src.SetPixel(0, 0, b0, b1, b2, b3);
  const uint32_t word = RunEffect(id, src).Word(0, 0);
  EXPECT_EQ(word & 0xFFFFFF, src.Word(0, 0) & 0xFFFFFF) << "the colour stays";
  return word >> 24;
}

TEST(BlueScreen, RampOfAlphaAboutGreen) {
  // Squared distances from (0, 240, 0): transparent up to 8064, then in 256ths of 8064, opaque from 16129.
  EXPECT_EQ(AlphaOf(40, 0, 240, 0, 200), 0u);
  EXPECT_EQ(AlphaOf(40, 8, 152, 16, 200), 0u);     // 8064
  EXPECT_EQ(AlphaOf(40, 0, 151, 12, 200), 0u);     // 8065
  EXPECT_EQ(AlphaOf(40, 4, 156, 32, 200), 1u);     // 8096
  EXPECT_EQ(AlphaOf(40, 16, 136, 32, 200), 128u);  // 12096
  EXPECT_EQ(AlphaOf(40, 1, 114, 15, 200), 255u);   // 16102
  EXPECT_EQ(AlphaOf(40, 0, 113, 0, 0), 255u);      // 16129
  EXPECT_EQ(AlphaOf(40, 255, 0, 255, 0), 255u);
}

TEST(Select, OpaqueAwayFromLightGray) {
  EXPECT_EQ(AlphaOf(67, 204, 204, 204, 17), 17u) << "at the colour the source's alpha stays";
  EXPECT_EQ(AlphaOf(67, 0, 0, 0, 17), 255u);
  EXPECT_EQ(AlphaOf(67, 204, 204, 204, 255), 255u);
  for (const int gray : {160, 170, 180, 190, 230, 255}) {
    const double e = (gray / 255.0 - 0.8) * 5;
    const double mask = std::min(1.0, std::pow(3 * e * e, 4));
    EXPECT_NEAR(AlphaOf(67, uint8_t(gray), uint8_t(gray), uint8_t(gray), 0), mask * 255, 1) << gray;
  }
}

TEST(Keys, OneRunOrSteps) {
  FrameBuffer src(2, 2, 4);
  src.Fill(0);
  EXPECT_EQ(RunEffect(40, src).Data()[8], 0x00) << "the screen ignores steps";
  const FrameBuffer selected = RunEffect(67, src);
  EXPECT_EQ(selected.Data()[8], 0xCD) << "the selection honours them";
  EXPECT_EQ(selected.Word(1, 1), 0xFF000000u);
}

}  // namespace

// The point tone effects.
#include <gtest/gtest.h>

#include "tests/support/frames.h"

namespace {

// Bytes 0, 1, 2 of the result for a frame that holds every byte value once.
std::vector<int> MapOf(int32_t id, double value) {
  FrameBuffer src(256, 1);
  for (int i = 0; i < 256; ++i)
    src.SetPixel(i, 0, static_cast<uint8_t>(i), static_cast<uint8_t>(i), static_cast<uint8_t>(i),
                 static_cast<uint8_t>(255 - i));
  const FrameBuffer dst = RunEffect(id, src, {value});
  std::vector<int> map;
  for (int i = 0; i < 256; ++i) {
    const uint8_t* pixel = dst.Pixel(i, 0);
    EXPECT_TRUE(pixel[0] == pixel[1] && pixel[1] == pixel[2] && pixel[3] == 255 - i) << id << " " << i;
    map.push_back(pixel[0]);
  }
  return map;
}

TEST(ToneTable, BrightnessAtItsRimsAndBetween) {
  const std::vector<int> identity = MapOf(25, 50);
  const std::vector<int> up = MapOf(25, 75);    // level 128
  const std::vector<int> down = MapOf(25, 25);  // level -128
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(identity[i], i);
    EXPECT_EQ(up[i], std::min(255, i + (256 - i) / 2)) << i;
    EXPECT_EQ(down[i], i / 2) << i;
  }
  EXPECT_EQ(MapOf(25, 0), std::vector<int>(256, 0));
  EXPECT_EQ(MapOf(25, 100), std::vector<int>(256, 255));
  EXPECT_EQ(MapOf(25, 50.4)[0], 2) << "50.4 is level 2";
}

TEST(ToneTable, ContrastTurnsAbout128) {
  const std::vector<int> full = MapOf(28, 100);
  EXPECT_EQ(full[64], 0);
  EXPECT_EQ(full[65], 2);
  EXPECT_EQ(full[127], 126);
  EXPECT_EQ(full[128], 128);
  EXPECT_EQ(full[191], 254);
  EXPECT_EQ(full[192], 255);
  EXPECT_EQ(MapOf(28, 0), std::vector<int>(256, 128));
  // Level -102: 100 - ((28 * -102) >> 8) = 100 - (-12), as the shift rounds down; 200 + ((72 * -102) >> 8) = 200 - 29.
  EXPECT_EQ(MapOf(28, 30)[100], 112);
  EXPECT_EQ(MapOf(28, 30)[200], 171);
}

TEST(ToneTable, GammaAndThresHold) {
  for (int i = 0; i < 256; ++i) EXPECT_NEAR(MapOf(27, 50)[i], i, 1);
  const std::vector<int> brighter = MapOf(27, 100);  // exponent 1/2
  EXPECT_EQ(brighter[0], 0);
  EXPECT_EQ(brighter[64], 127);  // sqrt(64 * 255) = 127.7
  EXPECT_EQ(MapOf(27, 0)[255], 0) << "no division by zero";
  EXPECT_EQ(MapOf(23, 255), std::vector<int>(256, 0));
  EXPECT_EQ(MapOf(23, 256), std::vector<int>(256, 255)) << "only the low byte counts";
  EXPECT_EQ(MapOf(23, 100)[99], 0);
  EXPECT_EQ(MapOf(23, 100)[100], 255);
}

TEST(PointTone, SaturationWeighsTheChannels) {
  FrameBuffer src(3, 1);
  src.SetPixel(0, 0, 200, 0, 0, 9);
  src.SetPixel(1, 0, 0, 200, 0, 9);
  src.SetPixel(2, 0, 10, 120, 250, 9);
  const FrameBuffer gray = RunEffect(26, src, {0});
  EXPECT_EQ(gray.Word(0, 0), 0x09161616u);  // 200 * 7471 >> 16 = 22
  EXPECT_EQ(gray.Word(1, 0), 0x09757575u);  // 200 * 38470 >> 16 = 117
  EXPECT_EQ(RunEffect(26, src, {12.5}).Packed(), src.Packed());
  // s = 4, weights -3 times those of the gray: sum = 250 * -58785 + 120 * -115410 + 10 * -22413, shifted -439.
  const FrameBuffer strong = RunEffect(26, src, {50});
  EXPECT_EQ(strong.Word(2, 0), 0x09FF2900u);  // 250 * 4 - 439 clamped, 120 * 4 - 439 = 41, 10 * 4 - 439 clamped
}

TEST(PointTone, EffectsThatTakeTheFrameAsOneRunIgnoreSteps) {
  for (const int32_t id : {25, 26, 27, 28, 71, 54, 23}) {
    FrameBuffer padded(5, 4, 20);
    padded.FillTestPicture();
    FrameBuffer run(5 * 4, 1);
    std::copy_n(padded.Data(), 80, run.Data());
    const FrameBuffer fromPadded = RunEffect(id, padded, {60});
    const FrameBuffer fromRun = RunEffect(id, run, {60});
    EXPECT_TRUE(std::equal(fromRun.Data(), fromRun.Data() + 80, fromPadded.Data())) << id;
    EXPECT_EQ(fromPadded.Data()[80], 0xCD) << id;
  }
}

TEST(PointTone, ScanLineKeepsClearsAndLeavesRows) {
  // For each height: k kept, 0 cleared, - left as the destination held it.
  for (const std::string rows : {"-", "--", "---", "k---", "k0000", "k0000-", "k0000--", "k000k---", "k000k0000"}) {
    // Heights 5 to 7 keep row 0 and clear up to row 4.
    FrameBuffer src(3, static_cast<int32_t>(rows.size()));
    src.FillTestPicture();
    const FrameBuffer dst = RunEffect(38, src);
    for (int32_t y = 0; y < src.Height(); ++y) {
      const char kind = rows[static_cast<size_t>(y)];
      const uint32_t expected = kind == 'k' ? src.Word(1, y) : kind == '0' ? 0 : 0xCDCDCDCD;
      EXPECT_EQ(dst.Word(1, y), expected) << rows << " " << y;
    }
  }
}

}  // namespace

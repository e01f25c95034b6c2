// Flips, mirrors, jigsaw panes and the kaleidoscope.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/frames.h"

namespace {

TEST(Flips, MoveWholePixels) {
  for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {5, 4}, {6, 7}, {19, 3}, {64, 9}}) {
    FrameBuffer src(width, height, 12);
    src.FillTestPicture();
    const int32_t lastX = width - 1, lastY = height - 1;
    for (const int32_t id : {93, 94, 95, 96}) {
      const FrameBuffer dst = RunEffect(id, src);
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          const uint32_t expected = id == 93   ? src.Word(lastX - x, y)
                                    : id == 94 ? src.Word(x, lastY - y)
                                    : id == 95 ? src.Word(lastX - x, lastY - y)
                                               : src.Word(std::min(x, lastX - x), y);
          EXPECT_EQ(dst.Word(x, y), expected) << id << ": " << x << " " << y << " of " << width << " by " << height;
        }
      }
    }
  }
}

TEST(Flips, MirrorTopBottomShowsTheLowerHalf) {
  for (const std::string from : {"0", "01", "012", "2123", "21234", "432345", "4323456"}) {
    FrameBuffer src(3, static_cast<int32_t>(from.size()));
    src.FillTestPicture();
    const FrameBuffer dst = RunEffect(97, src);
    for (int32_t y = 0; y < src.Height(); ++y) EXPECT_EQ(dst.Word(1, y), src.Word(1, from[y] - '0')) << from << y;
  }
}

TEST(Kaleidoscope, TurnsThePictureIntoItsTriangle) {
  // Base in row 9 from the bottom, 55.43 to either side of x = 100; apex in row 105.
  FrameBuffer src(200, 120);
  for (int32_t y = 0; y < 120; ++y) {
    for (int32_t x = 0; x < 200; ++x) src.SetPixel(x, y, static_cast<uint8_t>(x), static_cast<uint8_t>(119 - y), 7, 9);
  }
  const auto processor = MakeEffect(169, 200, 120);
  FrameBuffer dst(200, 120, 8);
  const struct {
    int x, up, fromX, fromUp;
  } cases[] = {
      {100, 40, 100, 40},                      // inside
      {120, 15, 120, 15},  {100, 5, 100, 13},  // below the base
      {100, 115, 100, 95},                     // above the apex, turned by 180 degrees
      {79, 105, 110, 86},                      // left of the apex, by 120: 21 (cos, sin)(300)
      {121, 105, 89, 86},                      // right of it, by -120: 21 (cos, sin)(240)
      {19, 9, 57, 31},                         // left of the left corner, by -120: 25.57 (cos, sin)(60)
      {43, 3, 50, 10},  // below that corner at (-1.57, -6), by 120: the angle is taken as 108.7 degrees below
      {40, 3, 49, 14},  // at (-4.57, -6), by 180: 128.9 degrees below
  };
  for (int step = 0; step < 2; ++step) {  // a kept map, then another picture
    RunFrame(*processor, src, dst, Values(169));
    for (const auto& c : cases) {
      EXPECT_EQ(dst.Word(c.x, 119 - c.up), src.Word(c.fromX, 119 - c.fromUp)) << c.x << " " << c.up;
    }
    src.Fill(33);
    src.FillTestPicture();
  }
}

}  // namespace

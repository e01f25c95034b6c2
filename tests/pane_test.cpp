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

constexpr int kColors[][3] = {{9, 62, 103}, {16, 5, 99},  {86, 2, 2},   {21, 59, 7},
                              {21, 59, 79}, {75, 46, 17}, {58, 15, 34}, {14, 24, 63}};

// '1' to '8' name the pane colours, '.' is black and 'w' white.
uint32_t Painted(uint32_t from, char paint) {
  if (paint == '.') return from & 0xFF000000;
  if (paint == 'w') return from | 0x00FFFFFF;
  uint32_t word = from & 0xFF000000;
  for (int i = 0; i < 3; ++i) {
    const int c = from >> 8 * i & 255, k = kColors[paint - '1'][i];
    word |= static_cast<uint32_t>(static_cast<int>(c + k - 2.0 * c * k / 255)) << 8 * i;
  }
  return word;
}

void ExpectLayout(int32_t id, int32_t width, int32_t height, const std::vector<std::string>& rows) {
  FrameBuffer src(width, height, 16);
  src.FillTestPicture();
  const FrameBuffer dst = RunEffect(id, src);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x)
      EXPECT_EQ(dst.Word(x, y), Painted(src.Word(x, y), rows[y][x])) << id << ": " << x << " " << y;
  }
}

TEST(Jigsaw, LayoutsWithBlackLines) {
  ExpectLayout(162, 14, 8,
               {"111..222222222", "111..222222222", "111..222222222", "..............", "..............",
                "3333333..44444", "3333333..44444", "3333333..44444"});
  // Lines between rows are trunc(14 / 5) = 2 to either side.
  ExpectLayout(163, 14, 5, {"..............", "..............", "..............", "..............", "777777..888888"});
  ExpectLayout(163, 9, 10,
               {"555..6666", "555..6666", "555..6666", "555..6666", "555..6666", "777..8888", "777..8888", "777..8888",
                "777..8888", "777..8888"});
  ExpectLayout(164, 18, 12,
               {"11111111111..22222", "11111111111..22222", ".............22222", ".............22222",
                "22..3333333..22222", "22................", "22................", "22..11111111111111",
                "22..11111111111111", "22..11111111111111", "22..11111111111111", "22..11111111111111"});
}

TEST(Jigsaw, LayoutsInSharesOfTheFrame) {
  for (const auto& [width, height] : {std::pair{640, 360}, {97, 61}, {1000, 30}, {5, 70}, {1, 1}, {2, 2}}) {
    FrameBuffer src(width, height);
    src.FillTestPicture();
    const FrameBuffer a = RunEffect(161, src), e = RunEffect(165, src), f = RunEffect(166, src);
    const double s = std::max(1.0f, static_cast<float>(width) / 640.0f);
    const double gx = 2 * s / width, gy = width * gx / height;
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        const double u = static_cast<double>(x) / width, v = static_cast<double>(height - y) / height;
        const auto in = [](double value, double low, double high) { return low <= value && value <= high; };
        const uint32_t from = src.Word(x, y);
        const auto gray = [from](double share) {
          return (from & 0xFF000000) | static_cast<uint32_t>((static_cast<int>(share * 255) & 255) * 0x010101);
        };
        const auto fall = [&](double edge) { return gray(0.1 - (u - edge - gx) * (0.6 / gx)); };
        const auto rise = [&](double edge) { return gray((u - edge + gx) * (0.6 / gx) + 0.1); };

        const double p = 0.2453125, q = 0.490625, r = 0.7359375;
        char paint = u < 0.2453135 || (in(u, p, q) && v < p) || (in(u, q, r) && v < r) ? '2' : '3';
        if ((in(u, p, p + gx) && v > p) || (in(u, q, q + gx) && in(v, p, r)) || (in(u, r, r + gx) && v < r) ||
            (in(v, p, p + gy) && in(u, p, q)) || (in(v, r, r + gy) && in(u, q, r + gx))) {
          paint = 'w';
        }
        EXPECT_EQ(a.Word(x, y), Painted(from, paint)) << "A " << x << " " << y;

        const double low = (1 - gy) / 2;
        uint32_t expected = Painted(from, v < low ? '3' : v > low + gy ? '2' : 'w');
        if (u < 0.557 && v < 0.557) expected = Painted(from, u < 0.557 - gx && v < 0.557 - gy ? '4' : 'w');
        if (v < 0.557 && in(u, 0.557, 0.557 + gx)) expected = fall(0.557);
        if (u > 0.73725 && v > 0.29101) expected = Painted(from, u > 0.73725 + gx && v > 0.29101 + gy ? '1' : 'w');
        if (v > 0.29101 && in(u, 0.73725 - gx, 0.73725)) expected = rise(0.73725);
        EXPECT_EQ(e.Word(x, y), expected) << "E " << x << " " << y;

        expected = Painted(from, '4');
        if (v > 0.605898 && u > 0.318318) expected = Painted(from, v > 0.605898 + gy && u > 0.318318 + gx ? '1' : 'w');
        if (v > 0.605898 && in(u, 0.318318 - gx, 0.318318)) expected = rise(0.318318);
        if (v < 0.654 && u > 0.4474) expected = Painted(from, v < 0.654 - gy && u > 0.4474 + gx ? '3' : 'w');
        if (v < 0.654 && in(u, 0.4474 - gx, 0.4474)) expected = rise(0.4474);
        if (v < 0.4210526 && u < 0.465035)
          expected = Painted(from, v < 0.4210526 - gy && u < 0.465035 - gx ? '2' : 'w');
        if (v < 0.4210526 && in(u, 0.465035, 0.465035 + gx)) expected = fall(0.465035);
        ASSERT_EQ(f.Word(x, y), expected) << "F " << x << " " << y << " of " << width << " by " << height;
      }
    }
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

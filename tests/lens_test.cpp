// Lens and perspective effects.
#include <gtest/gtest.h>

#include <cmath>

#include "Source/DefishFilter.h"
#include "Source/LensMap.h"
#include "tests/support/frames.h"

namespace {

constexpr uint32_t kBlack = 0xFF000000;
constexpr int32_t kLetterBox = 18, kDistort = 20, kFlippo = 31, kPerspective = 48, kOrner = 65, kDefish = 66,
                  kDoubleFisheye = 70;

FrameBuffer Picture(int32_t width, int32_t height, int32_t padding = 0) {
  FrameBuffer frame(width, height, padding);
  frame.FillTestPicture();
  return frame;
}

TEST(LetterBox, RowsOfTheBars) {
  struct Case {
    int32_t height;
    double percent;
    const char* rows;  // b black, p picture
  };
  for (const Case& c : {Case{8, 0, "pppppppp"}, Case{8, 40, "bppppppb"}, Case{8, 100, "bbbbbbbb"},
                        Case{7, 100, "bbbpbbb"}, Case{7, 300, "bbbbbbb"}, Case{6, -50, "pppppp"}, Case{1, 100, "p"}}) {
    FrameBuffer src = Picture(3, c.height);
    const FrameBuffer dst = RunEffect(kLetterBox, src, {c.percent});
    for (int32_t y = 0; y < c.height; ++y) {
      EXPECT_EQ(dst.Word(2, y), c.rows[y] == 'b' ? kBlack : src.Word(2, y)) << c.height << " " << c.percent << " " << y;
    }
  }
}

TEST(DoubleFisheye, MagnifiesTheMiddleOfBothLenses) {
  FrameBuffer src = Picture(80, 40);
  const FrameBuffer dst = RunEffect(kDoubleFisheye, src, {50});  // radius 10 around (20, 20) and (60, 20)
  for (const int32_t cx : {20, 60}) {
    EXPECT_EQ(dst.Word(cx, 20), src.Word(cx, 20));
    EXPECT_EQ(dst.Word(cx + 5, 20), src.Word(cx + 1, 20));      // 5 * 0.25
    EXPECT_EQ(dst.Word(cx - 7, 20 - 7), src.Word(cx - 6, 14));  // 7 * 0.98
    EXPECT_EQ(dst.Word(cx + 10, 20), src.Word(cx + 10, 20));    // the rim meets the picture
    EXPECT_EQ(dst.Word(cx - 8, 20 - 8), src.Word(cx - 8, 12));  // outside
  }
  EXPECT_EQ(RunEffect(kDoubleFisheye, src, {-3}).Packed(), src.Packed());
  EXPECT_EQ(RunEffect(kDoubleFisheye, src, {900}).Packed(), RunEffect(kDoubleFisheye, src, {100}).Packed());
}

TEST(Perspective, MovesPixelsForward) {
  FrameBuffer src = Picture(7, 5, 12);
  EXPECT_EQ(RunEffect(kPerspective, src, {0, 0, 100, 0, 0, 100, 100, 100}).Packed(), src.Packed());
  // Half the width: columns 0 to 6 land on 0, 0.5, 1, 1.5, 2, 2.5, 3, halves on the even neighbour, later ones on top.
  const FrameBuffer half = RunEffect(kPerspective, src, {0, 0, 50, 0, 0, 100, 50, 100});
  const int32_t columns[] = {1, 2, 5, 6, 4, 5, 6};
  for (int32_t x = 0; x < 7; ++x) EXPECT_EQ(half.Word(x, 3), src.Word(columns[x], 3)) << x;
  // A corner far away takes its pixels out of the frame; the picture stays below.
  const FrameBuffer away = RunEffect(kPerspective, src, {900, 900, 1e300, 900, 900, 900, 900, -1e300});
  EXPECT_EQ(away.Packed(), src.Packed());
  FrameBuffer untouched(7, 5);
  RunFrame(*MakeEffect(kPerspective, 7, 5), src, untouched, Values(47));
  EXPECT_EQ(untouched.Word(0, 0), 0u);
}

TEST(Distort, StillWithoutAmplitude) {
  for (const auto& [width, height] : {std::pair{2, 2}, {8, 8}, {9, 17}, {33, 12}, {40, 30}, {1, 9}, {9, 1}}) {
    FrameBuffer src = Picture(width, height);
    EXPECT_EQ(RunEffect(kDistort, src, {0, 130}).Packed(), src.Packed()) << width << " by " << height;
  }
}

TEST(Flippo, HalfATurnIsAnExactFlip) {
  for (const auto& [width, height] : {std::pair{10, 6}, {7, 9}}) {
    FrameBuffer src = Picture(width, height), dst(width, height);
    for (int axis = 0; axis < 3; ++axis) {
      const auto processor = MakeEffect(kFlippo, width, height);
      ParamValueArray values = Values(kFlippo, {50, 50, 50, 1, 50, 50, 0});
      values.value[axis] = 100;
      RunFrame(*processor, src, dst, values);
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
          const uint32_t expected = src.Word(axis == 0 ? x : width - 1 - x, axis == 1 ? y : height - 1 - y);
          ASSERT_EQ(dst.Word(x, y), expected) << axis << " " << x << " " << y;
        }
      }
      RunFrame(*processor, src, dst, values);
      EXPECT_EQ(dst.Packed(), src.Packed()) << "a whole turn";
    }
  }
}

TEST(Flippo, QuarterTurnBlanksAndKeepsItsMapAtRest) {
  FrameBuffer src = Picture(9, 5), dst(9, 5);
  const auto processor = MakeEffect(kFlippo, 9, 5);
  RunFrame(*processor, src, dst, Values(kFlippo, {50, 50, 75, 1, 50, 50, 0}));  // about z, right goes down
  for (int32_t y = 0; y < 5; ++y) {
    for (int32_t x = 0; x < 9; ++x) {
      const bool inside = x >= 2 && x <= 6;
      EXPECT_EQ(dst.Word(x, y), inside ? src.Word(4 + (y - 2), 2 - (x - 4)) : 0u) << x << " " << y;
    }
  }
  FrameBuffer rest(9, 5);
  RunFrame(*processor, src, rest, Values(kFlippo, {50, 50, 50, 1, 0, 0, 1}));  // neither centre nor sense counts now
  EXPECT_EQ(rest.Packed(), dst.Packed());
  RunFrame(*processor, src, rest, Values(kFlippo, {50, 50, 50, 0, 50, 50, 0}));
  EXPECT_EQ(rest.Word(0, 3), src.Word(0, 3)) << "not blank: the pixel that was there";
  RunFrame(*processor, src, rest, Values(kFlippo, {50, 50, 100, 1, 50, 50, 1}));  // 0.75 turns, backwards: 0.25
  EXPECT_EQ(rest.Packed(), dst.Packed());
}

TEST(Flippo, PerspectiveTurnsAndOddParameters) {
  // A sixth of a turn about y: right goes back, and D = 200. Its point 20 to the right of the centre stands 10 to the
  // right, 20 * sin(60) deep, and shows at 10 * 200 / (200 + 17.3) = 9.2; 20 to the left at -10 * 200 / 182.7 = -10.9.
  FrameBuffer src(101, 99), dst(101, 99);
  src.SetPixel(70, 49, 255, 0, 0, 255);
  src.SetPixel(30, 49, 0, 255, 0, 255);
  const auto processor = MakeEffect(kFlippo, 101, 99);
  RunFrame(*processor, src, dst, Values(kFlippo, {50, 50 - 100.0 / 6, 50, 1, 50, 50, 0}));
  EXPECT_EQ(dst.Word(59, 49), 0xFF0000FFu);
  EXPECT_EQ(dst.Word(39, 49), 0xFF00FF00u);
  RunFrame(*processor, src, dst, Values(30));
  EXPECT_EQ(dst.Word(59, 49), 0xFF0000FFu) << "another id";
  // A centre that is no number: static, pixels of the source.
  src.Fill(0x42);
  RunFrame(*processor, src, dst, Values(kFlippo, {51, 50, 50, 1, NAN, 50, 0}));
  EXPECT_EQ(dst.Packed(), src.Packed());
}

TEST(Orner, ShowsATriangle) {
  FrameBuffer src = Picture(90, 60), dst(90, 60);
  const auto processor = MakeEffect(kOrner, 90, 60);
  for (int frame = 0; frame < 2; ++frame) RunFrame(*processor, src, dst, Values(kOrner));
  // Both upper corners at -0.1, the lower ones at (-0.1, 0.8) and (0.8, 0.8) of the frame. Row 30 is 0.6 / 0.9 down, so
  // the picture's row 40 lies there, two thirds as wide, 0.9 * 90 times that: 54 pixels from column -9.
  EXPECT_EQ(dst.Word(18, 30), src.Word(45, 40));
  EXPECT_EQ(dst.Word(0, 30), src.Word(15, 40));
  EXPECT_EQ(dst.Word(44, 30), src.Word(88, 40));
  EXPECT_EQ(dst.Word(46, 30), kBlack);
  EXPECT_EQ(dst.Word(40, 50), kBlack);
}

TEST(LensMap, EverySamplingGivesPixelsAtWholePositions) {
  const int32_t w = 14, h = 11;
  FrameBuffer src = Picture(w, h), dst(w, h);
  const ConstFrameView in{src.Data(), w, h, src.Step()};
  const FrameView out{dst.Data(), w, h, dst.Step()};
  std::vector<SourcePosition> map(w * h);
  for (int32_t i = 0; i < w * h; ++i) map[i] = {static_cast<float>(w - 1 - i % w), static_cast<float>(i / w)};
  map[0] = {-0.51f, 0};
  map[1] = {0, h - 0.5f};
  map[2] = {NAN, 1};
  map[3] = {1, 1e30f};
  for (int32_t mode = 0; mode < 7; ++mode) {
    dst.Fill(0);
    RemapFrame(in, out, map.data(), static_cast<Sampling>(mode), 0x12345678);
    for (int32_t i = 0; i < w * h; ++i) {
      const uint32_t expected = i < 4 ? 0x12345678 : src.Word(w - 1 - i % w, i / w);
      ASSERT_EQ(dst.Word(i % w, i / w), expected) << mode << " " << i;
    }
  }
}

TEST(LensMap, BetweenPixels) {
  // A ramp of 10 a column, 4 a row. Everything but the nearest pixel and the two rougher kernels keeps it.
  const int32_t w = 20, h = 20;
  FrameBuffer src(w, h), dst(w, h);
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) {
      const auto value = static_cast<uint8_t>(8 * x + 4 * y);
      src.SetPixel(x, y, value, static_cast<uint8_t>(255 - value), 200, value);
    }
  }
  std::vector<SourcePosition> map(w * h, {9.25f, 8.75f});
  for (int32_t mode = 0; mode < 7; ++mode) {
    RemapFrame({src.Data(), w, h, src.Step()}, {dst.Data(), w, h, dst.Step()}, map.data(), static_cast<Sampling>(mode),
               0);
    const uint8_t* pixel = dst.Pixel(5, 5);
    const int tolerance = mode == 0 ? 0 : mode == 3 || mode == 6 ? 2 : 1;
    const int expected = mode == 0 ? 8 * 9 + 4 * 9 : 74 + 35;
    EXPECT_NEAR(pixel[0], expected, tolerance) << mode;
    EXPECT_NEAR(pixel[1], 255 - expected, tolerance) << mode;
    EXPECT_EQ(pixel[2], 200) << mode;
    EXPECT_NEAR(pixel[3], expected, tolerance) << mode;
  }
  // Nearest rounds as roundf, bit by bit around a half.
  for (const float x : {0.49999997f, 0.5f, 1.5f, 2.4999998f, 2.5f, -0.49999997f, 18.499998f, 18.5f, 7.5000005f}) {
    map.assign(map.size(), {x, 0});
    RemapFrame({src.Data(), w, h, src.Step()}, {dst.Data(), w, h, dst.Step()}, map.data(), Sampling::kNearest, 0);
    EXPECT_EQ(dst.Word(0, 0), src.Word(static_cast<int32_t>(std::round(x)), 0)) << x;
  }
}

TEST(Defish, IsTheGeometryOfTheLens) {
  const int32_t w = 61, h = 41;
  std::vector<SourcePosition> map(w * h);
  BuildDefishMap(map.data(), w, h, 20.0);
  EXPECT_EQ(map[20 * w + 30].x, 30);
  EXPECT_EQ(map[20 * w + 30].y, 20);
  const double scale = std::hypot(36, 24) / std::hypot(w, h);
  for (const auto& [x, y] : {std::pair{0, 0}, {60, 20}, {37, 5}, {30, 40}}) {
    const double r = std::hypot(x - 30, y - 20);
    const double fish = 2 * 20.0 * std::sin(std::atan(r * scale / 20.0) / 2) / scale;
    EXPECT_NEAR(map[y * w + x].x, 30 + (x - 30) * fish / r, 1e-4);
    EXPECT_NEAR(map[y * w + x].y, 20 + (y - 20) * fish / r, 1e-4);
  }
  FrameBuffer src(w, h);
  src.Fill(0x5A);
  EXPECT_EQ(RunEffect(kDefish, src).Packed(), src.Packed()) << "nothing comes from outside the frame";
}

}  // namespace

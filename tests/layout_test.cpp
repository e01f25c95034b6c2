// Layouts: strips, halves, cuts, flips and walls.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/support/frames.h"

namespace {

// Every pixel says where it stands.
FrameBuffer Coded(int32_t width, int32_t height, int32_t padding = 0) {
  FrameBuffer frame(width, height, padding);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) frame.SetPixel(x, y, static_cast<uint8_t>(x), static_cast<uint8_t>(y), 1, 200);
  }
  return frame;
}

constexpr int kLeft = -1;  // as the destination was

// The source columns (or rows) that a strip effect shows at `frame` of `total`.
std::vector<int> StripsAt(int32_t id, int32_t side, int32_t frame, int32_t total) {
  const bool rows = id == 368;
  FrameBuffer src = Coded(rows ? 3 : side, rows ? side : 3);
  FrameBuffer dst(src.Width(), src.Height());
  dst.Fill(0xCD);
  RunFrame(*MakeEffect(id, src.Width(), src.Height()), src, dst, Values(id), frame, total);
  std::vector<int> from;
  for (int32_t i = 0; i < side; ++i) {
    const uint8_t* pixel = rows ? dst.Pixel(1, i) : dst.Pixel(i, 1);
    from.push_back(pixel[2] == 0xCD ? kLeft : pixel[rows ? 1 : 0]);
    EXPECT_TRUE(pixel[2] == 0xCD || pixel[rows ? 0 : 1] == 1);
  }
  return from;
}

// The picture's own lines with strips of `size` from the middle placed at `places`.
std::vector<int> Expected(int32_t side, int32_t size, const std::vector<int>& places, bool copied) {
  std::vector<int> from;
  for (int32_t i = 0; i < side; ++i) from.push_back(copied ? i : kLeft);
  for (const int place : places) {
    for (int32_t i = 0; i < size; ++i) from[static_cast<size_t>(place + i)] = (side - size) / 2 + i;
  }
  return from;
}

TEST(SplitMove, GrowsStandsAndShrinks) {
  const std::vector<int> plain = Expected(26, 0, {}, true);
  for (const int32_t id : {366, 367, 368}) {
    for (const int32_t frame : {0, 11, 12, 48, 59, 100}) EXPECT_EQ(StripsAt(id, 26, frame, 60), plain) << id;
    for (const int32_t frame : {-5, 0, 20, 30, 46}) EXPECT_EQ(StripsAt(id, 26, frame, 47), plain) << id;
    EXPECT_EQ(StripsAt(id, 26, 24, 99), StripsAt(id, 26, 74, 99)) << "stands from 24 to the end less 25";
  }
  // Half way: 0.5 * 26 / 3 = 4.3 and 0.5 * 26 / 2 = 6.5, made even. Standing strips leave a rest as it was.
  EXPECT_EQ(StripsAt(366, 26, 18, 60), Expected(26, 4, {0, 4, 8}, true));
  EXPECT_EQ(StripsAt(366, 26, 30, 60), Expected(26, 8, {0, 8, 16}, false));
  EXPECT_EQ(StripsAt(366, 26, 42, 60), Expected(26, 4, {22, 18, 14}, true));
  EXPECT_EQ(StripsAt(367, 26, 18, 60), Expected(26, 6, {0, 6}, true));
  EXPECT_EQ(StripsAt(367, 26, 30, 60), Expected(26, 12, {0, 12}, false));
  EXPECT_EQ(StripsAt(367, 26, 42, 60), Expected(26, 6, {20, 14}, true));
  EXPECT_EQ(StripsAt(368, 26, 18, 60), Expected(26, 4, {22, 18, 14}, true));
  EXPECT_EQ(StripsAt(368, 26, 30, 60), Expected(26, 8, {18, 10, 2}, false));
  EXPECT_EQ(StripsAt(368, 26, 42, 60), Expected(26, 4, {0, 4, 8}, true));
  // 48 frames have no standing stage, and with 100 frames everything takes longer.
  EXPECT_EQ(StripsAt(366, 48, 23, 48), Expected(48, 14, {0, 14, 28}, true));  // 11 / 12 of 16
  EXPECT_EQ(StripsAt(366, 48, 24, 48), Expected(48, 16, {32, 16, 0}, true));
  EXPECT_EQ(StripsAt(366, 48, 25, 100), Expected(48, 0, {}, true));
  EXPECT_EQ(StripsAt(366, 48, 49, 100), Expected(48, 14, {0, 14, 28}, true));  // 24 / 25 of 16 is 15.36
  EXPECT_EQ(StripsAt(366, 48, 50, 100), Expected(48, 16, {0, 16, 32}, true));
}

TEST(SplitMove, StripsIgnoreStepsAndTheCopyHonoursThem) {
  FrameBuffer src = Coded(12, 2, 16);
  FrameBuffer dst(12, 2);
  RunFrame(*MakeEffect(366, 12, 2), src, dst, Values(366), 18, 60);  // strips of 2 pixels, from columns 5 and 6
  EXPECT_EQ(dst.Word(6, 1), src.Word(6, 1));
  EXPECT_EQ(dst.Word(0, 0), src.Word(5, 0));
  uint32_t packed;  // row 1 of the source taken as one run
  std::memcpy(&packed, src.Data() + 4 * (12 + 5), 4);
  EXPECT_EQ(dst.Word(0, 1), packed);
}

// The counters belong to the process: whichever object renders moves them on. A new object's line comes in with a frame
// that counts forward, and stays out of sight with one that rests or counts back.
TEST(Split, AllObjectsShareARhythm) {
  FrameBuffer src(230, 210), dst(230, 210);
  src.FillTestPicture();
  std::string forward;
  for (int frame = 0; frame < 130; ++frame) {
    RunFrame(*MakeEffect(73, 230, 210), src, dst, Values(73, {0, 0, 0, 3, 3, 1}));
    forward += dst.Packed() != src.Packed() ? '+' : '.';
  }
  const auto counted = [](char mark, size_t times) { return std::string(times, mark); };
  const std::string round =
      counted('+', 19) + counted('.', 6) + counted('+', 9) + counted('.', 9) + counted('+', 14) + counted('.', 8);
  EXPECT_EQ(forward, round + round);
  dst.Fill(0xCD);
  RunFrame(*MakeEffect(73, 230, 210), src, dst, Values(73, {0, 0, 0, 1, 1, 0}));
  EXPECT_EQ(dst.Word(100, 100), 0xCDCDCDCDu) << "no other mode writes";
}

TEST(Flip, FourWays) {
  const auto flipped = [](double x, double y) {
    FrameBuffer src = Coded(3, 2, 4);
    for (int i = 0; i < 6; ++i) src.Data()[4 * i] = static_cast<uint8_t>(i);  // one run: steps do not count
    FrameBuffer dst = RunEffect(13, src, {x, y});
    std::vector<int> from;
    for (int i = 0; i < 6; ++i) from.push_back(dst.Data()[4 * i]);
    EXPECT_EQ(dst.Data()[24], 0xCD);
    return from;
  };
  EXPECT_EQ(flipped(0, 0.9), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(flipped(1, 0), (std::vector<int>{2, 1, 0, 5, 4, 3}));
  EXPECT_EQ(flipped(1, 1), (std::vector<int>{5, 4, 3, 2, 1, 0}));
  EXPECT_EQ(flipped(0, 1), (std::vector<int>{2, 3, 4, 0, 0, 1})) << "one pixel early";
  FrameBuffer column = Coded(1, 3);
  const FrameBuffer dst = RunEffect(13, column, {0, 1});
  EXPECT_EQ(dst.Word(0, 0), column.Word(0, 1));
  EXPECT_EQ(dst.Word(0, 1), column.Word(0, 0));
}

TEST(XFade, LosesOneLevelAtAnyFade) {
  FrameBuffer src(1, 1);
  src.SetPixel(0, 0, 0, 1, 128, 255);
  for (const double fade : {0.0, 0.8, 1.0, 5.0}) EXPECT_EQ(RunEffect(56, src, {fade}).Word(0, 0), 0xFE7F0000u);
}

TEST(TVWall, WholeTilesOnly) {
  FrameBuffer src(11, 9, 12);
  for (int32_t i = 0; i < 99; ++i) src.SetPixel(i % 11, i / 11, 10, 20, 30, 40);
  const auto processor = MakeEffect(15, 11, 9);
  for (const int32_t split : {3, 2, 3, 7, 12, 0, -1}) {
    const int32_t w = split > 0 ? 11 / split : 0, h = split > 0 ? 9 / split : 0;
    FrameBuffer dst(11, 9, 12);
    dst.Fill(0xCD);
    RunFrame(*processor, src, dst, Values(15, {static_cast<double>(split)}));
    for (int32_t y = 0; y < 9; ++y) {
      for (int32_t x = 0; x < 11; ++x) {
        const bool tiled = w > 0 && h > 0 && x < 11 / w * w && y < 9 / h * h;
        const uint32_t expected = !tiled ? 0xCDCDCDCD : x % w == 0 || y % h == 0 ? 0xFF000000 : 0x281E140A;
        ASSERT_EQ(dst.Word(x, y), expected) << split << ": " << x << ", " << y;
      }
    }
  }
}

}  // namespace

// Edges, reliefs, mosaics and the other stylising effects.
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/clock.h"
#include "tests/support/draws.h"
#include "tests/support/frames.h"

namespace {

TEST(Relief, RowsAgainstTheirNeighbours) {
  FrameBuffer src(1, 3, 8);
  src.SetPixel(0, 0, 10, 100, 0, 1);
  src.SetPixel(0, 1, 30, 250, 200, 2);
  src.SetPixel(0, 2, 60, 0, 90, 3);
  // Lowest 10 is 25, high 50 is 127: emboss down, its last row up; carve up, its first row down.
  const FrameBuffer emboss = RunEffect(1, src, {10, 50});
  EXPECT_EQ(emboss.Word(0, 0), 0x0149'196Bu);  // 107; |-23| below 25; |-73|
  EXPECT_EQ(emboss.Word(0, 1), 0x02ED'FF61u);  // 97; 377 limited; 237
  EXPECT_EQ(emboss.Word(0, 2), 0x0319'7B9Du);  // 157; |-123|; 17 below 25
  const FrameBuffer carve = RunEffect(10, src, {10, 50});
  EXPECT_EQ(carve.Word(0, 0), 0x0149'196Bu);
  EXPECT_EQ(carve.Word(0, 1), 0x02FF'FF93u);  // 147; 277 and 327 limited
  EXPECT_EQ(carve.Word(0, 2), 0x0319'7B9Du);
  FrameBuffer row(2, 1);
  row.Fill(9);
  for (const int32_t id : {1, 10}) EXPECT_EQ(RunEffect(id, row, {0, 50}).Word(1, 0), 0x097F7F7Fu) << "one row: itself";
}

TEST(Canvas, OnePatternASecond) {
  FrameBuffer src(50, 20);
  src.FillTestPicture();
  PinCalendarSeconds(1234567);
  const FrameBuffer dst = RunEffect(11, src, {9.9});
  EXPECT_EQ(RunEffect(11, src, {9}).Packed(), dst.Packed());
  Draws draws(1234567);
  for (int32_t y = 0; y < 20; ++y) {
    for (int32_t x = 0; x < 50; ++x) {
      const int o = draws() % 9 - 4;
      ASSERT_EQ(dst.Word(x, y), src.Word(std::clamp(x + o, 0, 49), y));
    }
  }
  PinCalendarSeconds(1234568);
  EXPECT_NE(RunEffect(11, src, {9}).Packed(), dst.Packed());
  EXPECT_EQ(RunEffect(11, src, {0}).Packed(), src.Packed());
  PinCalendarSeconds(0);
}

// A row of grays, each so often, through an effect.
std::vector<uint32_t> LevelsOf(int32_t id, std::initializer_list<std::pair<int, int>> grays) {
  std::vector<uint8_t> bytes;
  for (const auto& [gray, times] : grays) bytes.insert(bytes.end(), static_cast<size_t>(times), uint8_t(gray));
  FrameBuffer src(static_cast<int32_t>(bytes.size()), 1);
  for (int32_t x = 0; x < src.Width(); ++x) std::fill_n(src.Pixel(x, 0), 3, bytes[static_cast<size_t>(x)]);
  const FrameBuffer dst = RunEffect(id, src);
  std::vector<uint32_t> levels;
  int32_t x = 0;
  for (const auto& [gray, times] : grays) {
    levels.push_back(dst.Word(x, 0));
    x += times;
  }
  return levels;
}

TEST(LumaLevels, ThresholdsFromTheHistogram) {
  constexpr uint32_t kBlack = 0xFF000000, kGray = 0xFF808080, kWhite = 0xFFFFFFFF;
  using Levels = std::vector<uint32_t>;
  // 127 parts 10, 60 | 200: means 35 and 200, then 117, which stays.
  EXPECT_EQ(LevelsOf(35, {{10, 1}, {60, 1}, {200, 1}}), (Levels{kBlack, kBlack, kWhite}));
  // 127 with means 35 and 136, 85 with 22 and 134, 78 with 20 and 133, 76.
  EXPECT_EQ(LevelsOf(35, {{20, 24}, {80, 1}, {100, 5}, {130, 30}, {140, 30}, {250, 1}}),
            (Levels{kBlack, kWhite, kWhite, kWhite, kWhite, kWhite}));
  // One side empty: 0 and 120 give 60, above which all lies.
  EXPECT_EQ(LevelsOf(35, {{120, 4}}), Levels{kWhite});
  EXPECT_EQ(LevelsOf(35, {{0, 4}}), Levels{kWhite});
  // Of 10 pixels fewer than 4 lie up to 79, fewer than 8 up to 149.
  EXPECT_EQ(LevelsOf(36, {{50, 3}, {80, 4}, {150, 3}}), (Levels{kBlack, kGray, kWhite}));
  EXPECT_EQ(LevelsOf(36, {{50, 4}, {80, 4}, {150, 2}}), (Levels{kGray, kWhite, kWhite})) << "49 and 79";
  EXPECT_EQ(LevelsOf(36, {{0, 5}}), Levels{kBlack});
  // Byte 2 counts twice: lumas 60 and 130.
  FrameBuffer src(2, 1);
  src.SetPixel(0, 0, 240, 0, 0, 0);
  src.SetPixel(1, 0, 10, 0, 255, 0);
  const FrameBuffer dst = RunEffect(35, src);
  EXPECT_EQ(dst.Word(0, 0), kBlack);
  EXPECT_EQ(dst.Word(1, 0), kWhite);
}

TEST(Stylise, OneRunOrSteps) {
  FrameBuffer src(3, 3, 8);
  src.FillTestPicture();
  for (const int32_t id : {37, 11, 33, 24}) {  // one run: its end leaves the last padded row alone
    const FrameBuffer dst = RunEffect(id, src, {1, 1});
    EXPECT_NE(dst.Data()[12 + 3], 0xCD) << id;
    EXPECT_EQ(dst.Data()[36], 0xCD) << id;
  }
  for (const int32_t id : {1, 10, 35, 36}) EXPECT_EQ(RunEffect(id, src, {1, 1}).Data()[12], 0xCD) << id;
}

}  // namespace

// Fire, clouds, plasma, rain and the other effects that paint something of their own.
#include <gtest/gtest.h>

#include "tests/support/draws.h"
#include "tests/support/frames.h"

namespace {

FrameBuffer Render(CBaseFilterProc& processor, FrameBuffer& src, const ParamValueArray& values) {
  FrameBuffer dst(src.Width(), src.Height(), src.Step() - 4 * src.Width());
  dst.Fill(0xCD);
  RunFrame(processor, src, dst, values);
  return dst;
}

TEST(Clouds, DrawAsManyNumbersAsTheirMapsNeed) {
  // Per map and level of n by n cells: three draws a cell, and one more along each of two rims.
  int perMap = 0;
  for (int n = 1; n <= 128; n *= 2) perMap += 3 * n * n + 2 * n;
  for (const auto& [density, maps] : {std::pair<double, int>{3, 3}, {5, 6}}) {
    Draws draws(4);
    SeedRandom(4);
    FrameBuffer src(9, 7);
    Render(*MakeEffect(58, 9, 7), src, Values(58, {density, 0, 3, 0}));
    for (int i = 0; i < maps * perMap; ++i) draws();
    EXPECT_EQ(Rand().Next(), draws()) << density;
  }
}

TEST(Generators, RestWithoutDensityOrTheirOwnValues) {
  FrameBuffer src(9, 7), dst(2, 2);
  src.FillTestPicture();
  EXPECT_EQ(RunEffect(58, src, {0, 1, 3, 0}).Packed(), src.Packed()) << "no density, no clouds";
  dst.Fill(9);
  RunFrame(*MakeEffect(57, 2, 2), src, dst, Values(58, {0, 100, 1, 60, 150}));
  EXPECT_EQ(dst.Pixel(0, 0)[0], 9) << "values for another effect";
}

TEST(Ising, OrdersItselfUntilAReset) {
  FrameBuffer src(40, 30), dst(40, 30);
  src.FillTestPicture();
  const auto processor = MakeEffect(52, 40, 30);
  // Neighbours that differ. Black is down; the rim stays up.
  const auto walls = [&](double reset) {
    RunFrame(*processor, src, dst, Values(52, {1, reset}));
    int count = 0;
    for (int i = 40; i < 40 * 30; ++i) {
      const bool down = dst.Word(i % 40, i / 40) == 0, downAbove = dst.Word(i % 40, i / 40 - 1) == 0;
      EXPECT_FALSE(down && (i % 40 == 0 || i / 40 == 29)) << i;
      EXPECT_TRUE(down || dst.Word(i % 40, i / 40) == src.Word(i % 40, i / 40)) << i;
      count += down != downAbove;
    }
    return count;
  };
  const int fresh = walls(0);
  int later = fresh;
  for (int frame = 0; frame < 60; ++frame) later = walls(0.5);
  EXPECT_LT(later, fresh / 2);
  EXPECT_GT(walls(1), 2 * later);
}

TEST(Plasma, WavesByHand) {
  const auto processor = MakeEffect(50, 3, 2);
  FrameBuffer src(3, 2, 8);
  const auto next = [&] { return Render(*processor, src, Values(50)); };
  const FrameBuffer first = next();
  EXPECT_EQ(first.Word(0, 0), 0x00E6E600u);                    // 62 + 37 + 0 + 0 = 99: entry 134
  EXPECT_EQ(first.Data()[13], 0xDA) << "row 1 follows row 0";  // 62 + 37 + 37 + 12 = 148: entry 137, alpha 0
  EXPECT_EQ(first.Data()[24], 0xCD);
  EXPECT_EQ(next().Word(0, 0), 0x00B2B200u);  // the waves have moved by 9 and 8: 175 + 37 + 0 + 100 = 312: entry 147
}

TEST(RainDrop, CountdownIsShared) {
  // After the last drop the count is 10 for all: with density 0 the eleventh frame, whoever's it is, brings the next.
  FrameBuffer src(90, 70);
  src.FillTestPicture();
  const auto one = MakeEffect(72, 90, 70), two = MakeEffect(72, 90, 70);
  Render(*one, src, Values(72, {100, 1000, 0}));
  for (int frame = 1; frame <= 22; ++frame) {
    const FrameBuffer shown = Render(frame % 2 ? *one : *two, src, Values(72, {100, 0, 1000}));
    if (frame < 11) {
      EXPECT_EQ(shown.Packed(), src.Packed()) << frame;
    }
    if (frame == 11 || frame == 22) {
      EXPECT_NE(shown.Packed(), src.Packed()) << frame;
    }
  }
}

TEST(Ribbon, MovesColumnsAndCutsTowardZero) {
  FrameBuffer src(2, 4, 4);
  src.FillTestPicture();
  // Column 1 stands at a quarter of the wave and moves down by 2 less a hair: rows 0 and 1 both come from row 0.
  const FrameBuffer dst = RunEffect(4, src, {1.8, 0.2});
  for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(dst.Word(0, y), src.Word(0, y));
  EXPECT_EQ(dst.Word(1, 0), 0xFF000000u);
  EXPECT_EQ(dst.Word(1, 1), src.Word(1, 0));
  EXPECT_EQ(dst.Word(1, 2), src.Word(1, 0));
  EXPECT_EQ(dst.Word(1, 3), src.Word(1, 1));
  EXPECT_EQ(RunEffect(4, src, {0, 41}).Packed(), src.Packed());
}

}  // namespace

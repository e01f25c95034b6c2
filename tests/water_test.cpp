// The water effects.
#include <gtest/gtest.h>

#include "Source/WaterSurface.h"
#include "framework/host_log.h"
#include "tests/support/fake_host.h"

namespace {

constexpr int32_t kRipple = 34, kSwirl = 62, kSuffer = 69;

TEST(Water, RootIsExactAtSquares) {
  for (const uint32_t root : {0u, 1u, 2u, 3u, 46340u, 46341u, 65535u}) {
    EXPECT_EQ(ISqrt(root * root), root);
    if (root > 0) {
      EXPECT_EQ(ISqrt(root * root - 1), root - 1);
    }
  }
  EXPECT_EQ(ISqrt(UINT32_MAX), 65535u);
}

TEST(WaterRipple, FirstDropWorkedOutByHand) {
  // The generator gives 12345, then 3554416254: row 12345 % 48 = 9, column 3554416254 % 64 = 62. Radius 3, height 8 a
  // cell: 24 at the centre, 16 within a distance below 2, then 8; the rim column 63 stays out.
  FrameBuffer src(64, 48, 12);
  src.FillTestPicture();
  const FrameBuffer dst = RunEffect(kRipple, src, {3, 256 + 31});
  EXPECT_EQ(dst.Word(61, 9), src.Word(60, 9));  // 16, right 24, below 16: one column back
  EXPECT_EQ(dst.Word(62, 9),
            src.Word(1, 11));  // 24, right 0, below 16: one row down, three columns on, into the next row
  EXPECT_EQ(dst.Word(59, 9), src.Word(58, 9));    // 0, right 8, below 0
  EXPECT_EQ(dst.Word(62, 6), src.Word(62, 5));    // 0, below 8: one row up
  EXPECT_EQ(dst.Word(63, 9), src.Word(63, 9));    // rim
  EXPECT_EQ(dst.Word(20, 30), src.Word(20, 30));  // calm
}

TEST(WaterRipple, OtherIdsLeaveTheDestination) {
  FrameBuffer src(8, 8), dst(8, 8);
  src.FillTestPicture();
  RunFrame(*MakeEffect(kRipple, 8, 8), src, dst, Values(33, {50, 300}));
  EXPECT_EQ(dst.Packed(), std::vector<uint8_t>(256));
}

// The drop goes round with its phase, and a reset leaves it alone on a flat surface.
TEST(WaterSwirl, ResetCalmsTheSurface) {
  constexpr int32_t kWidth = 161, kHeight = 147;
  const auto processor = MakeEffect(kSwirl, kWidth, kHeight);
  FrameBuffer src(kWidth, kHeight, 20), dst(kWidth, kHeight, 4);
  dst.Fill(0x11);
  const auto movedPixels = [&](double reset) {
    src.FillTestPicture();
    RunFrame(*processor, src, dst, Values(kSwirl, {43.9, 3, 50, 40, reset}));
    int moved = 0;
    for (int32_t i = 0; i < kWidth * (kHeight - 1); ++i) {
      moved += dst.Word(i % kWidth, i / kWidth) != src.Word(i % kWidth, i / kWidth);
    }
    return moved;
  };
  const int first = movedPixels(0.5);
  int later = 0;
  for (int frame = 0; frame < 10; ++frame) later = movedPixels(0.5);
  EXPECT_GT(later, 2 * first);
  EXPECT_NEAR(movedPixels(1), first, first / 10);
  EXPECT_EQ(dst.Word(kWidth - 1, kHeight - 1), 0x11111111u) << "the last row is never written";
}

// A frame so large that no memory is there for it. The sanitizer's allocator would end the test instead.
#if !defined(__SANITIZE_ADDRESS__)
TEST(Water, WithoutMemoryLogsAndLeavesTheDestination) {
  FakeUtil host;
  g_processHost = &host;
  const std::pair<int32_t, const char*> cases[] = {
      {kRipple, "WaterRippleFilter"}, {kSuffer, "WaterSufferFilter"}, {kSwirl, "WaterSwirlFilter"}};
  for (const auto& [id, name] : cases) {
    FrameBuffer pixel(1, 1);
    const auto processor = MakeEffect(id, 1 << 30, 1 << 28);
    RunFrame(*processor, pixel, pixel, Values(id, {1, 1, 1, 1}));
    ASSERT_EQ(host.log.size(), 1u);
    EXPECT_EQ(host.log[0].level, 4);
    const std::string start = std::string("alloc failed file[plugins/kvxFilterPureCPlugin/Source/") + name + "] line[";
    EXPECT_EQ(host.log[0].text.substr(0, start.size()), start);
    EXPECT_EQ(pixel.Word(0, 0), 0u);
    host.log.clear();
  }
  g_processHost = nullptr;
}
#endif

}  // namespace

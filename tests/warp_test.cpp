// The warps: effects 170 to 190 over the engine.
#include <gtest/gtest.h>

#include <functional>

#include "engine/engine_internal.h"
#include "tests/support/draws.h"
#include "tests/support/frames.h"

namespace {

// A picture, with ways to read it that keep to the frame.
struct Picture {
  Picture(int width, int height, int padding = 0) : frame(width, height, padding) { frame.FillTestPicture(3); }
  uint32_t Word(int x, int y) const {
    return frame.Word(std::clamp(x, 0, frame.Width() - 1), std::clamp(y, 0, frame.Height() - 1));
  }
  int Byte(int x, int y, int c) const { return static_cast<int>(Word(x, y) >> (8 * c) & 255); }
  FrameBuffer frame;
};

using ByteAt = std::function<int(int x, int y, int c)>;

// Colours as told, alpha as it was.
void ExpectColors(const Picture& before, const FrameBuffer& after, const std::string& what, const ByteAt& expected) {
  for (int y = 0; y < after.Height(); ++y) {
    for (int x = 0; x < after.Width(); ++x) {
      for (int c = 0; c < 3; ++c) {
        ASSERT_EQ(after.Pixel(x, y)[c], expected(x, y, c)) << what << " at " << x << " " << y << " " << c;
      }
      ASSERT_EQ(after.Pixel(x, y)[3], before.Byte(x, y, 3)) << what << " at " << x << " " << y;
    }
  }
}

TEST(WarpEdges, FramesWithoutInnerPixels) {
  for (const auto& [width, height] : {std::pair{2, 5}, {5, 2}, {1, 1}, {1, 4}}) {
    Picture p(width, height);
    EXPECT_EQ(RunEffect(171, p.frame).Packed(), p.frame.Packed());
    EXPECT_EQ(RunEffect(173, p.frame, {50}).Packed(), p.frame.Packed());
    ExpectColors(p, RunEffect(174, p.frame, {50}), "neon", [](int, int, int) { return 0; });
    ExpectColors(p, RunEffect(187, p.frame), "sketch b", [](int, int, int) { return 255; });
    ExpectColors(p, RunEffect(188, p.frame), "neon b", [](int, int, int) { return 0; });
  }
}

TEST(WarpBlur, BoxOfOpaqueAndOfPartlyTransparentFrames) {
  Picture p(660, 6);  // side 3
  p.frame.FillOpaquePicture();
  const FrameBuffer blurred = RunEffect(172, p.frame);
  int sum = 0;
  for (int i = 0; i < 9; ++i) sum += p.Byte(100 + i % 3 - 1, 3 + i / 3 - 1, 1);
  EXPECT_NEAR(blurred.Pixel(100, 3)[1], sum / 9.0, 0.51);
  // The rim mirrors without its own pixel.
  sum = 0;
  for (int i = 0; i < 9; ++i) sum += p.Byte(100 + i % 3 - 1, std::abs(i / 3 - 1), 1);
  EXPECT_NEAR(blurred.Pixel(100, 0)[1], sum / 9.0, 0.51);
  Picture narrow(300, 4);
  EXPECT_EQ(RunEffect(172, narrow.frame).Packed(), narrow.frame.Packed()) << "side 1";

  FrameBuffer patch(640, 8);
  patch.Fill(0);
  for (int y = 2; y < 5; ++y) {
    for (int x = 10; x < 14; ++x) patch.SetPixel(x, y, 90, 90, 90, 90);
  }
  patch.SetPixel(9, 3, 90, 90, 90, 0);  // colour without alpha lies outside the region, yet weighs in
  const FrameBuffer part = RunEffect(172, patch);
  EXPECT_EQ(part.Word(11, 3), 0x5A5A5A5Au);
  EXPECT_EQ(part.Word(9, 3), 0x005A5A5Au) << "outside the region nothing changes";
  EXPECT_EQ(part.Word(10, 3), 0x3C464646u) << "alpha is filtered too";
}

// What a frame shows after one with other values, and what it shows by itself.
struct Shown {
  FrameBuffer after, alone;
};
Shown ShowTwice(int32_t id, Picture& p, std::initializer_list<double> before, std::initializer_list<double> now) {
  const int32_t width = p.frame.Width(), height = p.frame.Height();
  Shown shown{FrameBuffer(width, height), FrameBuffer(width, height)};
  const auto processor = MakeEffect(id, width, height);
  RunFrame(*processor, p.frame, shown.after, Values(id, before));
  RunFrame(*processor, p.frame, shown.after, Values(id, now));
  RunFrame(*MakeEffect(id, width, height), p.frame, shown.alone, Values(id, now));
  return shown;
}

TEST(WarpMaps, FollowTheValuesOfEveryFrame) {
  Picture p(48, 30, 4);
  for (const int32_t id : {178, 179, 180}) {
    for (const auto& now : {std::initializer_list<double>{50, 50, 50}, {20, 90, 100}, {100, 0, 1}, {0, 30, 0}}) {
      const auto [after, alone] = ShowTwice(id, p, {10, 80, 70}, now);
      EXPECT_EQ(after.Packed(), alone.Packed()) << id;
    }
  }
}

TEST(WarpMaps, KeepWhatTheFirstFrameMade) {
  Picture p(90, 60, 4);
  // The tilt shift keeps its weights, but not its tone.
  const Shown tilt = ShowTwice(183, p, {35, 2}, {100, 2});
  EXPECT_NE(tilt.after.Packed(), tilt.alone.Packed());
  EXPECT_EQ(tilt.after.Word(40, 30), tilt.alone.Word(40, 30)) << "no blur inside the band";
  // The ripple keeps its wave, whatever the level is then.
  SeedRandom(7);
  const Shown first = ShowTwice(176, p, {30}, {80});
  SeedRandom(7);
  const Shown again = ShowTwice(176, p, {30}, {30});
  EXPECT_EQ(first.after.Packed(), again.after.Packed());
}

// Random bytes of our own for the length of a test.
class OwnRandomBytes {
 public:
  OwnRandomBytes() { std::copy_n(randomTable, 1024, kept_); }
  ~OwnRandomBytes() { std::copy_n(kept_, 1024, randomTable); }

 private:
  uint8_t kept_[1024];
};

TEST(WarpDrop, WithoutRadiusTheSurfaceIsStill) {
  Picture p(60, 50);
  FrameBuffer after(60, 50);
  const auto still = MakeEffect(181, 60, 50);
  const OwnRandomBytes own;
  std::fill_n(randomTable, 1024, uint8_t{0});
  RunFrame(*still, p.frame, after, Values(181, {0, 0, 20}));
  EXPECT_EQ(after.Packed(), p.frame.Packed());
}

TEST(WarpFlames, RiseFromTheirEdge) {
  Picture p(64, 60);
  const auto unused = MakeEffect(182, 64, 60);  // the table stands from the first effect on
  const OwnRandomBytes own;
  for (int i = 0; i < 1024; ++i) randomTable[i] = static_cast<uint8_t>(i * 151 + i / 7);
  const auto changedRows = [&](double level, double direction, int frames) {
    const auto processor = MakeEffect(182, 64, 60);
    FrameBuffer after(64, 60);
    for (int i = 0; i < frames; ++i) RunFrame(*processor, p.frame, after, Values(182, {level, direction}));
    std::string rows;
    for (int y = 0; y < 60; ++y) {
      bool changed = false;
      for (int x = 0; x < 64; ++x) {
        changed |= after.Word(x, y) != p.frame.Word(x, y);
        EXPECT_EQ(after.Pixel(x, y)[3], p.frame.Pixel(x, y)[3]);
      }
      rows += changed ? '#' : '.';
    }
    return rows;
  };
  EXPECT_EQ(changedRows(100, 1, 1).substr(0, 50), std::string(50, '.'));
  EXPECT_EQ(changedRows(100, 1, 1).substr(54), std::string(6, '#'));
  EXPECT_EQ(changedRows(100, 0, 1).substr(10), std::string(50, '.'));
  EXPECT_EQ(changedRows(100, 0, 1).substr(0, 6), std::string(6, '#'));
  EXPECT_EQ(changedRows(100, 1, 12).substr(35), std::string(25, '#')) << "three rows a frame";
  EXPECT_EQ(changedRows(0, 1, 12), std::string(60, '.')) << "without strength nothing shows";
}

}  // namespace

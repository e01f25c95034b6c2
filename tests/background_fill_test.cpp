// Background fills: the flow from box to composite, each pattern on small pictures, the effect object.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "Source/BGFPatterns.h"
#include "Source/StackBlur.h"
#include "tests/support/fake_host.h"

namespace {

constexpr double kWhite = 16777215;
constexpr int32_t kPureGaussian = 1374;

FrameView View(FrameBuffer& frame) {
  return {frame.Data(), frame.Width(), frame.Height(), frame.Step()};
}

FrameBuffer Picture(int32_t width, int32_t height, int32_t padding = 0, uint32_t seed = 1) {
  FrameBuffer frame(width, height, padding);
  frame.FillTestPicture(seed);
  return frame;
}

using Pattern = void (*)(FrameView, const FillInput&);

// The picture after a pattern; alpha must not move.
FrameBuffer Painted(Pattern pattern, const FrameBuffer& src, float level = 0, int32_t frame = 0) {
  FrameBuffer out(src.Width(), src.Height(), src.Step() - src.Width() * 4);
  std::copy_n(src.Data(), src.Size(), out.Data());
  pattern(View(out), {level, frame});
  for (int32_t y = 0; y < src.Height(); ++y) {
    for (int32_t x = 0; x < src.Width(); ++x) EXPECT_EQ(out.Pixel(x, y)[3], src.Pixel(x, y)[3]);
  }
  EXPECT_TRUE(out.GuardsIntact());
  return out;
}

TEST(BackgroundFill, CompositeByHand) {
  FrameBuffer src(10, 10);
  for (int32_t i = 0; i < 100; ++i) src.SetPixel(i % 10, i / 10, 100, 50, 255, 128);
  // Background (100 - 10) * 128 / 255 = 45, 20, 122, alpha 128; tinted 44, 10, 0; and over it the source by half.
  const FrameBuffer dst = RunEffect(kPureGaussian, src, {0.7, 0x0080FF, -10, 0});
  EXPECT_EQ(dst.Word(0, 0), 0xBF7F1D47u);
  FrameBuffer opaque(10, 10);
  for (int32_t i = 0; i < 100; ++i) opaque.SetPixel(i % 10, i / 10, 255, 128, 0, 255);
  EXPECT_EQ(RunEffect(kPureGaussian, opaque, {0.7, kWhite, -10, 1}).Word(5, 5), 0xFF007FFEu)
      << "255 / 256 of the source";
}

TEST(BackgroundFill, OpaqueHalfClearAndClearRunsLieSideBySide) {
  FrameBuffer src = Picture(400, 3);
  for (int32_t i = 0; i < 1200; ++i) {
    const int32_t x = i % 400;
    src.Pixel(x, i / 400)[3] = x < 140 || x > 390 ? 255 : x < 270 ? 0 : 100;
  }
  // Source_Width 0 makes the box the frame, so that each pixel lies over itself.
  const FrameBuffer dst = RunEffect(kPureGaussian, src, {0, kWhite, 0, 0});
  for (int32_t x = 0; x < 400; ++x) {
    const int32_t c = src.Pixel(x, 1)[2], a = src.Pixel(x, 1)[3];
    ASSERT_EQ(dst.Pixel(x, 1)[2], ((c * a / 255 * 255 >> 8) * (255 - a) + c * a) >> 8) << x;
    ASSERT_EQ(dst.Pixel(x, 1)[3], (a * (255 - a) >> 8) + a) << x;
  }
}

TEST(BackgroundFill, BoxStaysBetweenAFifthAndTheWholeFrame) {
  FrameBuffer src = Picture(100, 60, 8);
  const auto fill = [&](double width) { return RunEffect(kPureGaussian, src, {width, kWhite, 0, 0}).Packed(); };
  EXPECT_EQ(fill(0.95), fill(0.8));
  EXPECT_NE(fill(0.8), fill(0.7));
  EXPECT_EQ(fill(-1), fill(0));
}

TEST(BackgroundFill, BlurComesBeforeAPattern) {
  FrameBuffer src = Picture(88, 88);
  FrameBuffer box(88, 88);  // Source_Width 0 makes the box the frame
  std::copy_n(src.Data(), src.Size(), box.Data());
  StackBlur(View(box), 5);
  fill_pattern::Gray(View(box), {});
  const FrameBuffer fill = RunEffect(1390, src, {0, kWhite, 0, 0.5});  // 88 * 0.5 / 8.8
  for (int32_t i = 0; i < 88; ++i) {
    const int32_t a = src.Pixel(i, 7)[3];
    const int32_t back = (box.Pixel(i, 7)[0] * a / 255 * 255) >> 8;
    EXPECT_EQ(fill.Pixel(i, 7)[0], (back * (255 - a) + src.Pixel(i, 7)[0] * a) >> 8) << i;
  }
}

TEST(FillPattern, FrostFollowsTheFrameNumber) {
  const FrameBuffer src = Picture(130, 230);
  const FrameBuffer out = Painted(fill_pattern::Frosted, src, 1, 7);
  EXPECT_EQ(Painted(fill_pattern::Frosted, src, 1, 7).Packed(), out.Packed());
  EXPECT_NE(Painted(fill_pattern::Frosted, src, 1, 8).Packed(), out.Packed());
}

TEST(FillPattern, NoiseGoesOnFromFrameToFrame) {
  FrameBuffer src(110, 100);
  src.Fill(100);
  std::string drawn;
  for (int32_t frame = 0; frame < 2; ++frame) {
    const FrameBuffer out = Painted(fill_pattern::Noise, src, 0.5f);
    for (int32_t y = 0; y < 100; ++y) {
      for (int32_t x = 0; x < 100; ++x) drawn += static_cast<char>('0' + (out.Pixel(x, y)[1] - 75) / 25);
      EXPECT_EQ(out.Word(100, y), out.Word(0, y));
    }
  }
  // Wherever the process stands in its stream, these are the next draws of it.
  uint32_t x = 123456789, y = 362436069, z = 521288629;
  std::string stream;
  for (int32_t i = 0; i < 1000000; ++i) {
    x ^= x << 16;
    x ^= x >> 5;
    x ^= x << 1;
    const uint32_t t = x;
    x = y;
    y = z;
    z = t ^ x ^ y;
    stream += static_cast<char>('0' + z % 3);
  }
  EXPECT_EQ(stream.find(drawn) % 10000, 0u);
}

TEST(FillPattern, LevelsBeyondReasonAndSmallPicturesAreBorne) {
  constexpr Pattern kPatterns[] = {fill_pattern::Gray,    fill_pattern::Blacknet,    fill_pattern::Mosaic,
                                   fill_pattern::Brick,   fill_pattern::Oyster,      fill_pattern::DiamondBlur,
                                   fill_pattern::Hola,    fill_pattern::DiamondWave, fill_pattern::Wave,
                                   fill_pattern::Frosted, fill_pattern::Noise,       fill_pattern::RippleH,
                                   fill_pattern::RippleV, fill_pattern::ThreeD,      fill_pattern::Perspect};
  for (const Pattern pattern : kPatterns) {
    for (int32_t size = 1; size <= 9; ++size) {
      for (const float level : {0.0f, 1.0f, -3.0f, 1e9f, -1e9f, 1e38f, std::numeric_limits<float>::quiet_NaN()}) {
        Painted(pattern, Picture(size, 10 - size), level, INT32_MIN);
      }
    }
  }
}

// The family's purpose: a host's frame that is transparent around its picture comes back covered.
TEST(BackgroundFill, EffectObjectCoversATransparentFrame) {
  TemporaryDirectory root;
  root.Write("kvx_effect/material/PureCFilter.conf",
             "[{\"GUID\": \"" + GuidOf(1378) + "\", \"NAME\": \"BGFMosic\", \"DATAPATH\": \"/x/\"}]");
  LoadedPlugin plugin;
  plugin.Start(root.Path().string());
  KVXEffect* effect = nullptr;
  ASSERT_EQ(plugin.create(GuidOf(1378).c_str(), 0, &effect), 0);
  FrameBuffer src(64, 36), dst(64, 36);
  for (int32_t y = 0; y < 36; ++y) {
    for (int32_t x = 16; x < 48; ++x) src.SetPixel(x, y, 200, 100, 50, 255);
  }
  FakeImage input(src), output(dst);
  FakeContext context;
  context.input = &input;
  context.output = &output;
  EXPECT_EQ(effect->Prepare(&context), 0);
  EXPECT_EQ(effect->Render(&context), 0);
  EXPECT_EQ(dst.Word(0, 0), 0xFE2658BCu);
  EXPECT_EQ(dst.Word(30, 20), 0xFF3163C7u);
  context.numbers["alpha"] = 0;
  effect->Prepare(&context);
  effect->Render(&context);
  EXPECT_EQ(dst.Packed(), src.Packed());
  plugin.release(effect);
}

}  // namespace

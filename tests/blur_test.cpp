// Blur, glow, edge glow, sharpening and the blurred rectangle.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "Source/StackBlur.h"
#include "tests/support/frames.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

FrameView View(FrameBuffer& frame) {
  return {frame.Data(), frame.Width(), frame.Height(), frame.Step()};
}

FrameBuffer CopyOf(const FrameBuffer& frame) {
  FrameBuffer copy(frame.Width(), frame.Height(), frame.Step() - frame.Width() * 4);
  std::copy_n(frame.Data(), frame.Size(), copy.Data());
  return copy;
}

TEST(StackBlur, EqualBytesComeBackAtEveryRadius) {
  for (int32_t radius = 0; radius <= kMaxStackRadius; ++radius) {
    FrameBuffer frame(4, 3);
    for (int32_t y = 0; y < 3; ++y) {
      for (int32_t x = 0; x < 4; ++x) frame.SetPixel(x, y, 255, 1, 128, 255);
    }
    const std::vector<uint8_t> before = frame.Packed();
    StackBlur(View(frame), radius);
    ASSERT_EQ(frame.Packed(), before) << radius;
  }
}

TEST(SquareBlur, TurnsFromTriangleToBoxAtRadius254) {
  FrameBuffer src(1920, 2, 8);
  src.FillTestPicture();
  FrameBuffer stack = CopyOf(src);
  StackBlur(View(stack), 253);
  EXPECT_EQ(RunEffect(17, src, {26.4}).Packed(), stack.Packed());  // 253.44
  const FrameBuffer box = RunEffect(17, src, {26.5});              // 254.4
  for (const int32_t x : {0, 253, 254, 1000, 1665, 1666, 1919}) {
    const int32_t first = std::max(x - 254, 0), last = std::min(x + 254, 1919);
    for (int c = 0; c < 4; ++c) {
      uint32_t sum = 0;
      for (int32_t i = first; i <= last; ++i) sum += src.Pixel(i, 0)[c] + src.Pixel(i, 1)[c];
      EXPECT_EQ(box.Pixel(x, 1)[c], sum / (2u * static_cast<uint32_t>(last - first + 1))) << x << " " << c;
    }
  }
  EXPECT_EQ(box.Data()[1920 * 4], 0xCD) << "padding";
}

TEST(SquareBlur, AlphaLimitsColourAtEveryRadius) {
  FrameBuffer src(3, 1);
  src.SetPixel(0, 0, 200, 20, 90, 90);
  src.SetPixel(1, 0, 200, 200, 200, 0);
  src.SetPixel(2, 0, 1, 2, 3, 255);
  for (const double size : {0.0, -5.0, kNan}) {
    const FrameBuffer dst = RunEffect(17, src, {size});
    EXPECT_EQ(dst.Word(0, 0), 0x5A5A145Au);
    EXPECT_EQ(dst.Word(1, 0), 0u);
    EXPECT_EQ(dst.Word(2, 0), 0xFF030201u);
  }
}

TEST(Glow, WindowEndsAt253) {
  FrameBuffer src(1920, 1);
  src.Pixel(960, 0)[1] = 253;
  const FrameBuffer glow = RunEffect(63, src, {100});
  for (const int32_t x : {960 - 127, 960 + 127}) EXPECT_EQ(glow.Pixel(x, 0)[1], 1);
  for (const int32_t x : {960 - 126, 960 + 126}) EXPECT_EQ(glow.Pixel(x, 0)[1], 2);  // mean 1
}

// Interior of a flat frame of one colour.
uint32_t EdgeglowOfFlat(uint8_t b, uint8_t g, uint8_t r, std::initializer_list<double> values) {
  FrameBuffer src(3, 3);
  for (int32_t i = 0; i < 9; ++i) src.SetPixel(i % 3, i / 3, b, g, r, 7);
  return RunEffect(29, src, values).Word(1, 1);
}

TEST(Edgeglow, FlatPixelsByHand) {
  EXPECT_EQ(EdgeglowOfFlat(10, 20, 40, {0, 0, 0}), 0x0728140Au) << "no edge, nothing to do";
  // L = 12, S = 30 / (2 - 50), q = 18.875, p = 5.125. Hue 220, 140, 340.
  EXPECT_EQ(EdgeglowOfFlat(10, 20, 40, {0, 0, 0.5}), 0x07120505u);
  EXPECT_EQ(EdgeglowOfFlat(10, 40, 20, {0, 0, 0.5}), 0x07091205u);  // byte 2 on the ramp: 9.708
  EXPECT_EQ(EdgeglowOfFlat(40, 10, 20, {0, 0, 0.5}), 0x07050512u);
  EXPECT_EQ(EdgeglowOfFlat(77, 77, 77, {0, 0, 0.5}), 0x07262626u);
  EXPECT_EQ(EdgeglowOfFlat(0, 1, 2, {-1, 0, 0}), 0x07000000u) << "the saturation has no value, nor has the pixel";
  EXPECT_EQ(EdgeglowOfFlat(200, 100, 50, {0, 0, 2}), 0x07000000u) << "L is -125";
  EXPECT_EQ(EdgeglowOfFlat(200, 100, 50, {0, 0, kNan}), 0x07000000u);
}

TEST(Sharpen, WeighsARowAgainstTheNext) {
  FrameBuffer src(3, 2, 4);
  for (int32_t i = 0; i < 6; ++i)
    src.SetPixel(i, 0, static_cast<uint8_t>(10 + i), 100, static_cast<uint8_t>(40 * i), 5);
  const FrameBuffer dst = RunEffect(12, src, {128});
  // As one run: byte 0 has d = -6, byte 1 none, byte 2 -240.
  EXPECT_EQ(dst.Data()[0], 2);  // 10 - 7.68
  EXPECT_EQ(dst.Data()[1], 100);
  EXPECT_EQ(dst.Data()[2], 0);
  EXPECT_EQ(dst.Data()[3], 5);
  EXPECT_TRUE(std::equal(dst.Data() + 8, dst.Data() + 24, src.Data() + 8)) << "last column, last row";
  EXPECT_EQ(dst.Data()[24], 0xCD);
  EXPECT_EQ(RunEffect(12, src, {kNan}).Data()[1], 0);
}

TEST(Maskmate, BlursInsideInclusiveLimits) {
  FrameBuffer src(10, 10);
  src.FillOpaquePicture();
  FrameBuffer blurred = CopyOf(src);
  StackBlur(View(blurred), 4);
  const auto expectInside = [&](std::initializer_list<double> values, int32_t left, int32_t right, int32_t first,
                                int32_t last) {
    const FrameBuffer dst = RunEffect(30, src, values);
    for (int32_t i = 0; i < 100; ++i) {
      const int32_t x = i % 10, y = i / 10;
      const bool inside = x >= left && x <= right && y >= first && y <= last;
      EXPECT_EQ(dst.Word(x, y), (inside ? blurred : src).Word(x, y)) << x << " " << y;
    }
  };
  expectInside({30, 60, 80, 10, 80}, 3, 6, 1, 8);
  expectInside({50, 50, 1e12, 0, 80}, 5, 5, 10, 0);  // the limit does not fit 32 bits
  expectInside({50, 50, 100, 0, 80}, 5, 5, 0, 9);
  expectInside({60, 50, 100, 0, 80}, 1, 0, 0, 9);
}

TEST(BlurFamily, ChecksTheEffectIdWhereAsked) {
  for (const int32_t id : {29, 30}) {
    const auto processor = MakeEffect(id, 4, 4);
    FrameBuffer src(4, 4), dst(4, 4);
    src.FillTestPicture();
    RunFrame(*processor, src, dst, Values(id + 1, {1, 1, 1, 1, 1}));
    EXPECT_EQ(dst.Packed(), std::vector<uint8_t>(64, 0)) << id;
  }
}

}  // namespace

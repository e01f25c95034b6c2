// Effects that remember frames.
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/clock.h"
#include "tests/support/draws.h"
#include "tests/support/frames.h"

namespace {

// A picture of one value, which says from which frame a pixel comes; the first frame is 1, so that 0 is "from none".
FrameBuffer Flat(int32_t width, int32_t height, int32_t value, int32_t padding = 0) {
  FrameBuffer frame(width, height, padding);
  frame.Fill(static_cast<uint8_t>(value));
  return frame;
}

FrameBuffer Show(CBaseFilterProc& processor, FrameBuffer src, const ParamValueArray& values) {
  FrameBuffer dst(src.Width(), src.Height(), src.Step() - 4 * src.Width());
  dst.Fill(0xCD);
  RunFrame(processor, src, dst, values);
  return dst;
}

TEST(Delay, ShowsTheOldestFrameWithinTheDelay) {
  const auto processor = MakeEffect(60, 2, 2);
  const auto shownAt = [&](int32_t frame, double delay, double time) {
    return Show(*processor, Flat(2, 2, frame), Values(60, {delay, time})).Pixel(1, 1)[0];
  };
  EXPECT_EQ(shownAt(1, 80, 0), 1);
  EXPECT_EQ(shownAt(2, 80, 40), 1);
  EXPECT_EQ(shownAt(3, 80, 80), 1) << "a frame exactly as old as the delay is kept";
  EXPECT_EQ(shownAt(4, 80, 120), 2);
  EXPECT_EQ(shownAt(5, 80, 120), 2);
  EXPECT_EQ(shownAt(6, 0, 160), 6);
  EXPECT_EQ(shownAt(7, 50, 160), 6) << "of one time the first frame counts";
  EXPECT_EQ(shownAt(8, 50, 100), 8) << "time runs back: the smallest time wins";
  EXPECT_EQ(shownAt(9, 50, 155), 9) << "time 100 is beyond the delay, 155 is before 160";
  EXPECT_EQ(shownAt(10, 0, 155), 9);
  FilterParamDesc desc{};
  shownAt(11, 123, 155);
  processor->GetParamDesc(&desc, 0);
  EXPECT_EQ(desc.defaultValue, 123);
}

// What every pixel shows at frame `frames`, as an age in frames; -1 for "left alone".
std::vector<int> Ages(CBaseFilterProc& processor, int32_t width, int32_t height, const ParamValueArray& values) {
  constexpr int32_t kFrames = 8;
  for (int32_t n = 1; n < kFrames; ++n) Show(processor, Flat(width, height, n, 8), values);
  const FrameBuffer last = Show(processor, Flat(width, height, kFrames, 8), values);
  std::vector<int> ages;
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x)
      ages.push_back(last.Pixel(x, y)[2] == 0xCD ? -1 : kFrames - last.Pixel(x, y)[2]);
  }
  return ages;
}

TEST(DelayGrab, AgesByMode) {
  const auto fresh = [](int32_t width, int32_t height, std::initializer_list<double> values) {
    const auto processor = MakeEffect(61, width, height);
    return Ages(*processor, width, height, Values(61, values));
  };
  // Eight blocks are counted 8 to 1 from the left, and their middle is block 4.
  const std::vector<int> across = {2, 1, 1, 0, 0, 0, 1, 1};
  EXPECT_EQ(fresh(8, 1, {2, 1}), across);
  EXPECT_EQ(fresh(1, 8, {3, 1}), across);
  EXPECT_EQ(fresh(5, 3, {4, 1}), (std::vector<int>{1, 1, 1, 1, 1,  // sqrt(3^2 + 2^2) = 3.6, sqrt(8) = 2.8, 2.2, 2, 2.2
                                                   1, 1, 0, 0, 0,  // 3.2, 2.2, 1.4, 1, 1.4
                                                   1, 1, 0, 0, 0}));
  EXPECT_EQ(fresh(40, 1, {2, 1})[0], 7) << "ages end at 7";
  EXPECT_EQ(fresh(11, 1, {2, 1}).size(), 11u);
  // Blocks of 3 leave the last two columns and the last row alone.
  EXPECT_EQ(fresh(8, 4, {3, 3}), (std::vector<int>{0, 0, 0, 0, 0, 0, -1, -1, 0,  0,  0,  0,  0,  0,  -1, -1,  //
                                                   0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1}));
  EXPECT_EQ(fresh(3, 1, {1, 0}).size(), 3u) << "a block size of 0 does no harm";
}

TEST(DelayGrab, RandomAgesFollowTheClock) {
  PinCalendarSeconds(77);
  const auto processor = MakeEffect(61, 6, 5);
  const std::vector<int> ages = Ages(*processor, 6, 5, Values(61, {1, 1}));
  PinCalendarSeconds(0);
  Draws draws(77);
  for (size_t i = 0; i < ages.size(); ++i) {
    const double u = draws() / 32767.0;
    EXPECT_EQ(ages[i], std::min(static_cast<int>(u * u * 16), 7)) << i;
  }
}

TEST(DelayGrab, ForgetsOnChangeAndReset) {
  const auto processor = MakeEffect(61, 8, 1);
  Ages(*processor, 8, 1, Values(61, {2, 1}));
  EXPECT_EQ(Show(*processor, Flat(8, 1, 9), Values(61, {2, 1})).Pixel(0, 0)[0], 7);
  EXPECT_EQ(Show(*processor, Flat(8, 1, 10), Values(61, {3, 1})).Pixel(0, 0)[0], 10);
  EXPECT_EQ(Show(*processor, Flat(8, 1, 11), Values(61, {2, 1})).Pixel(0, 0)[0], 0) << "nothing is two frames old";
  Show(*processor, Flat(8, 1, 12), Values(61, {2, 1}));
  EXPECT_EQ(Show(*processor, Flat(8, 1, 13), Values(61, {2, 1})).Pixel(0, 0)[0], 11);
  EXPECT_EQ(Show(*processor, Flat(8, 1, 14), Values(61, {2, 1, 0.999})).Pixel(0, 0)[0], 12);
  EXPECT_EQ(Show(*processor, Flat(8, 1, 15), Values(61, {2, 1, 1})).Pixel(0, 0)[0], 0);
}

// The frame that the effect must show, from frame numbers and the generator alone.
class NervousModel {
 public:
  int Show(int frame, bool mode, bool reset) {
    if (reset) {
      write_ = count_ = timer_ = 0;
      read_ = 0;
    }
    ring_[write_] = frame;
    count_ = std::min(count_ + 1, 32);
    if (!mode) {
      read_ = static_cast<int>(Draw() % count_);
    } else if (timer_ == 0) {
      constexpr int kStrides[] = {-2, -1, 1, 2, 3};
      read_ = static_cast<int>(Draw() % count_);
      stride_ = kStrides[Draw() % 5];
      timer_ = static_cast<int>(Draw() % 6) + 2;
    } else {
      read_ = ((read_ + stride_) % count_ + 4 * count_) % count_;
      --timer_;
    }
    write_ = (write_ + 1) % 32;
    return ring_[read_];
  }

 private:
  uint32_t Draw() { return seed_ = seed_ * 1103515245u + 12345u; }
  int ring_[32] = {}, write_ = 0, count_ = 0, timer_ = 0, stride_ = 0, read_ = 0;
  uint32_t seed_ = 0;
};

TEST(Nervous, RunsAndJumps) {
  const auto processor = MakeEffect(64, 3, 1);
  NervousModel model;
  for (int frame = 1; frame <= 200; ++frame) {
    const bool mode = frame < 90 || frame >= 140;
    const bool reset = frame == 60 || frame == 100;
    const FrameBuffer shown = Show(*processor, Flat(3, 1, frame), Values(64, {mode ? 1.0 : 0.0, reset ? 1.0 : 0.5}));
    ASSERT_EQ(shown.Pixel(2, 0)[3], model.Show(frame, mode, reset)) << frame;
    if (frame == 1 || reset) {
      EXPECT_EQ(shown.Pixel(0, 0)[0], frame) << "one frame is no choice";
    }
  }
}

TEST(Baltan, FeedsItsSumBack) {
  const auto processor = MakeEffect(59, 2, 2);
  // 0x80 adds 0x20. A quarter of each sum stays: 08, 0A, 0C and 0F at positions 0, 1, 2 and 4.
  for (const int expected : {0x20, 0x28, 0x32, 0x1E, 0x3E, 0x2D, 0x2D, 0x2D, 0x45}) {
    const FrameBuffer shown = Show(*processor, Flat(2, 2, 0x80, 12), Values(59));
    ASSERT_EQ(shown.Word(1, 1), 0x80000000u | static_cast<uint32_t>(expected * 0x010101));
    ASSERT_EQ(shown.Data()[8], 0xCD) << "nothing between the rows";
  }
  FrameBuffer next(2, 2);
  next.SetPixel(0, 0, 0x83, 0xFF, 7, 9);  // low bits do not cross over into the byte below
  EXPECT_EQ(Show(*processor, std::move(next), Values(59, {1})).Word(0, 0), 0x09013F20u) << "after a reset";
}

TEST(Vertigo, MixesThreeToOne) {
  const auto processor = MakeEffect(16, 8, 4);
  FrameBuffer src(8, 4);
  for (int32_t i = 0; i < 32; ++i) src.SetPixel(i % 8, i / 8, 0x03, 0x07, 0xFF, 0x80);
  const FrameBuffer first = Show(*processor, std::move(src), Values(16, {1, 4}));
  EXPECT_EQ(first.Word(3, 2),
            0xA0FC0403u);  // bytes 1 and 2 lose two bits, byte 0 does not; alpha is (3 * 80 >> 2) | 80
  const FrameBuffer second = Show(*processor, Flat(8, 4, 0), Values(16, {1, 4}));
  EXPECT_EQ(second.Word(3, 2), 0x38BD0302u);  // three quarters, alpha by what is left of 3 * A0 in 8 bits
}

TEST(Vertigo, TurnsAboutTheDriftingCentre) {
  const auto processor = MakeEffect(16, 64, 32);
  const ParamValueArray still = Values(16, {0, 30});  // phase 0: the centre reads two columns to its right
  FrameBuffer mark(64, 32);
  for (int32_t y = 10; y < 22; ++y) mark.SetPixel(34, y, 0, 0, 0, 200);
  const FrameBuffer copy = Show(*processor, std::move(mark), Values(16, {5, 0.99}));
  EXPECT_EQ(copy.Word(34, 12), 0xC8000000u) << "a plain copy that starts nothing";
  FrameBuffer line(64, 32);
  for (int32_t y = 10; y < 22; ++y) line.SetPixel(34, y, 200, 200, 200, 255);
  Show(*processor, std::move(line), still);
  const FrameBuffer after = Show(*processor, Flat(64, 32, 0), still);
  EXPECT_GT(after.Pixel(32, 16)[0] + after.Pixel(33, 16)[0], 100);
  EXPECT_EQ(after.Pixel(36, 16)[0], 0);
  // The zoom shrinks what is read, so that the line is longer than it was.
  int32_t top = 31;
  for (int32_t y = 31; y >= 0; --y) {
    for (int32_t x = 24; x < 42; ++x) top = after.Pixel(x, y)[0] > 60 ? y : top;
  }
  EXPECT_LT(top, 10);
}

TEST(Nosync, TakesTheFirstLinesFromFurtherOn) {
  const auto lines = [](double percent, bool rows) {
    FrameBuffer src(rows ? 1 : 10, rows ? 10 : 1);
    for (int32_t i = 0; i < 10; ++i) src.SetPixel(rows ? 0 : i, rows ? i : 0, static_cast<uint8_t>(i), 1, 2, 3);
    const FrameBuffer dst = RunEffect(32, src, {percent, rows ? 1.0 : 0.0});
    std::vector<int> from;
    for (int32_t i = 0; i < 10; ++i) from.push_back(dst.Pixel(rows ? 0 : i, rows ? i : 0)[0]);
    return from;
  };
  const std::vector<int> same = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  for (const bool rows : {false, true}) {
    EXPECT_EQ(lines(0, rows), same);
    EXPECT_EQ(lines(30, rows), (std::vector<int>{3, 4, 5, 0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(lines(70, rows), (std::vector<int>{7, 8, 9, 0, 1, 2, 3, 0, 1, 2}));
    EXPECT_EQ(lines(100, rows), same);
    EXPECT_EQ(lines(-20, rows), (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9, 9, 9}));
  }
  FrameBuffer src = Flat(2, 2, 7);
  FrameBuffer dst = Flat(2, 2, 9);
  RunFrame(*MakeEffect(32, 2, 2), src, dst, Values(31, {50}));
  EXPECT_EQ(dst.Pixel(0, 0)[0], 9) << "values for another effect";
}

}  // namespace

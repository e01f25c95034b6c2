// Layouts: strips, halves, cuts, flips and walls.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

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

TEST(TwoSplitFadeIn, TintsFadesAndDrawsTheBar) {
  FrameBuffer src(257, 2, 8);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t x = 0; x < 257; ++x) src.SetPixel(x, y, 100, x == 3 || x == 256 ? 236 : 61, x == 3 ? 235 : 50, 7);
  }
  const auto at = [&](int32_t id, int32_t frame, int32_t total) {
    FrameBuffer dst(257, 2, 8);
    RunFrame(*MakeEffect(id, 257, 2), src, dst, Values(id), frame, total);
    return dst;
  };
  const FrameBuffer whole = at(369, 51, 200);  // beyond the fade
  EXPECT_EQ(whole.Word(0, 1), 0xFF463D64u);    // red 50 + 20
  EXPECT_EQ(whole.Word(3, 1), 0xFFFFEC64u);    // 235 + 20
  EXPECT_EQ(whole.Word(200, 1), 0xFF325164u);  // green 61 + 20
  EXPECT_EQ(whole.Word(256, 1), 0xFF32FF64u);
  EXPECT_EQ(at(370, 51, 200).Packed(), whole.Packed());

  EXPECT_EQ(at(369, 0, 200).Word(0, 0), 0xFF140000u);
  EXPECT_EQ(at(369, 15, 200).Word(0, 1), 0xFF23121Eu);  // 0.3 of it: 50 * 0.3 + 20 = 35, 18.3, 30
  EXPECT_EQ(at(369, 15, 200).Word(200, 1), whole.Word(200, 1));
  EXPECT_EQ(at(369, 15, 30).Word(3, 1), 0xFF897632u);  // 0.5 of it: 117.5 + 20
  const FrameBuffer right = at(370, 15, 200);
  EXPECT_EQ(right.Word(0, 1), whole.Word(0, 1));
  EXPECT_EQ(right.Word(200, 1), 0xFF0F261Eu);  // 15, 18.3 + 20, 30
  EXPECT_EQ(right.Word(255, 1), 0xFF0F261Eu);
  EXPECT_EQ(right.Word(256, 1), whole.Word(256, 1)) << "an odd last column does not fade";

  // 257 * 5 / 640 = 2 columns, from (257 - 2) / 2 on; in the second row they are found two pixels to the left, as the
  // bar takes the frame as one run.
  for (int32_t x = 120; x < 136; ++x) {
    EXPECT_EQ(whole.Word(x, 0) == 0xFF000000u, x == 127 || x == 128) << x;
    EXPECT_EQ(whole.Word(x, 1) == 0xFF000000u, x == 125 || x == 126) << x;
  }
}

// The cut, pixel by pixel.
class SplitModel {
 public:
  // Counters are shared by all lines, as by all instances.
  static int Direction(int mode) {
    static constexpr int kLengths[] = {20, 5, 10, 8, 15, 7};
    const size_t counter = mode > 0 ? static_cast<size_t>(mode - 1) : static_cast<size_t>(1 - mode);
    const int count = ++counts_[counter];
    if (count != boundary_) return count > boundary_ ? 0 : step_ % 2 == 0 ? 1 : -1;
    if (++step_ < 6) {
      boundary_ += kLengths[step_];
    } else {
      counts_[counter] = step_ = 0;
      boundary_ = 20;
    }
    return 0;
  }

  FrameBuffer Show(const FrameBuffer& src, int mode) {
    const int w = src.Width(), h = src.Height(), s = h / 25, t = h / 100, direction = Direction(mode);
    if (line == 0) line = mode == 1 ? 0 : mode == -1 ? -2 * h : mode == 2 ? h : 3 * h;
    if (direction > 0 && (mode == 1 ? line < h * 4 / 5 : mode != -1 || line < -h)) line += s;
    if (direction < 0 && (mode == 1 ? line > 0 : mode == 2 ? line > h / 6 : mode != -2 || line > h * 19 / 10))
      line -= s;
    const int v = mode > 0 ? 50 : -50, u = mode == 1 ? 10 : mode == -1 ? 50 : mode == 2 ? -40 : -50;
    FrameBuffer dst(w, h);
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const int key = mode == 1 || mode == -2 ? y + x : y - x;
        const bool near = mode == 1 || mode == -1;
        const bool beyond = near ? key < line - t : key > line + t;
        const bool plain = near ? key == line - t || key >= line : key <= line || key == line + t;
        const uint8_t* p = src.Pixel(x, y);
        if (beyond) p = src.Pixel(std::clamp(x + v, 0, w - 1), std::clamp(y + u, 0, h - 1));
        if (beyond || plain) dst.SetPixel(x, y, p[0], p[1], p[2], p[3]);
      }
    }
    return dst;
  }

  int line = 0;

 private:
  static inline std::array<int, 4> counts_{};
  static inline int step_ = 0, boundary_ = 20;
};

TEST(Split, LineGoesToAndFro) {
  FrameBuffer src(230, 210);
  src.FillTestPicture();
  const auto run = [&](CBaseFilterProc& processor, SplitModel& model, int mode) {
    FrameBuffer dst(230, 210);
    RunFrame(processor, src, dst, Values(73, {0, 0, 0, 3, 3, static_cast<double>(mode)}));
    ASSERT_EQ(dst.Packed(), model.Show(src, mode).Packed()) << "mode " << mode << " line " << model.line;
  };
  for (const int mode : {1, -1, 2, -2, 1}) {
    const auto processor = MakeEffect(73, 230, 210), other = MakeEffect(73, 230, 210);
    SplitModel model, otherModel;
    for (int frame = 0; frame < 65; ++frame) {
      run(*processor, model, mode);
      if (frame % 9 == 0) run(*other, otherModel, mode);  // a second instance shares the rhythm
    }
  }
  FrameBuffer dst(230, 210);
  dst.Fill(0xCD);
  RunFrame(*MakeEffect(73, 230, 210), src, dst, Values(73, {0, 0, 0, 1, 1, 0}));
  EXPECT_EQ(dst.Word(100, 100), 0xCDCDCDCDu) << "no other mode writes";
}

TEST(Split, BothSidesOfTheSeam) {
  // Modes 2 and -2 start with the line out of sight; a frame wider than high brings it in.
  FrameBuffer src(700, 100);
  src.FillTestPicture();
  for (const int mode : {-2, -1}) {
    const auto processor = MakeEffect(73, 700, 100);
    SplitModel model;
    FrameBuffer dst(700, 100);
    RunFrame(*processor, src, dst, Values(73, {0, 0, 0, 0, 0, static_cast<double>(mode)}));
    EXPECT_EQ(dst.Packed(), model.Show(src, mode).Packed()) << mode;
    EXPECT_NE(dst.Packed(), src.Packed());
  }
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

TEST(VideoWall, RingAroundThePicture) {
  FrameBuffer src = Coded(13, 9, 4);
  const FrameBuffer dst = RunEffect(14, src);  // tiles of 3 by 2, the centre 7 by 5
  const auto from = [&](int32_t x, int32_t y) -> std::optional<std::pair<int, int>> {
    if (dst.Word(x, y) == 0xFF000000) return std::nullopt;
    return std::pair<int, int>{dst.Pixel(x, y)[0], dst.Pixel(x, y)[1]};
  };
  // Four tiles above and below take every fourth column and row; the thirteenth column is nobody's.
  for (const int32_t y : {0, 7}) {
    for (int32_t x = 0; x < 12; ++x) {
      EXPECT_EQ(from(x, y), std::nullopt);
      EXPECT_EQ(from(x, y + 1), x % 3 == 0 ? std::nullopt : std::optional(std::pair<int, int>(x % 3 * 4, 4)));
    }
    EXPECT_EQ(dst.Word(12, y), 0xCDCDCDCDu);
  }
  for (const int32_t x : {1, 11}) {  // at the sides two rows of tiles, then nothing
    EXPECT_EQ(from(x, 3), std::optional(std::pair<int, int>(4, 4)));
    EXPECT_EQ(from(x, 5), std::optional(std::pair<int, int>(4, 4)));
    EXPECT_EQ(dst.Word(x, 6), 0xCDCDCDCDu);
  }
  for (int32_t y = 2; y < 7; ++y) {  // scales 13 / 7 and 9 / 5
    for (int32_t x = 3; x < 10; ++x) {
      const bool line = x == 3 || y == 2;
      EXPECT_EQ(from(x, y),
                line ? std::nullopt : std::optional(std::pair<int, int>((x - 3) * 13 / 7, (y - 2) * 9 / 5)));
    }
  }
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

// Every vector form of every pixel kernel against its scalar definition: all tails, unaligned starts, all targets of
// this machine.
#include "framework/pixel_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "Source/EdgeLight.h"
#include "framework/row_loops.h"
#include "tests/support/targets.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Noise, all 0, all 255; and every value of byte 0 beside its opposite.
std::vector<Bytes> Rows(size_t size) {
  Bytes noise(size), ramp(size);
  uint32_t s = 7;
  for (size_t i = 0; i < size; ++i) {
    s = s * 1664525u + 1013904223u;
    noise[i] = static_cast<uint8_t>(s >> 24);
    ramp[i] = static_cast<uint8_t>(i % 2 ? 255 - i : i);
  }
  return {noise, ramp, Bytes(size, 0), Bytes(size, 255)};
}

constexpr int32_t kLongest = 131;
constexpr size_t kOffsets = 4;

// `run` gets a source and a destination of `count` pixels; nothing behind them may change.
void Compare(const std::function<void(const uint8_t*, uint8_t*, int32_t)>& scalar,
             const std::function<void(const uint8_t*, uint8_t*, int32_t)>& vectors) {
  for (const Bytes& row : Rows(4 * kLongest + kOffsets)) {
    for (size_t offset = 0; offset < kOffsets; ++offset) {
      for (int32_t count = 0; count <= kLongest; ++count) {
        Bytes expected(row.size() + 8, 0xEE), actual = expected;
        scalar(row.data() + offset, expected.data() + offset, count);
        vectors(row.data() + offset, actual.data() + offset, count);
        ASSERT_EQ(actual, expected) << count << " pixels at " << offset;
      }
    }
  }
}

TEST(PixelKernels, Gray) {
  for (const GrayWeights& w : {GrayWeights{29, 150, 76, 255, 1, 8}, GrayWeights{1, 1, 1, 0, 43691, 17},
                               GrayWeights{30, 59, 11, 0, 5243, 19}, GrayWeights{1, 2, 1, 0, 1, 2}}) {
    OnEveryTarget([&] {
      Compare([&](auto* src, auto* dst, int32_t n) { GrayRowScalar(src, dst, n, w); },
              [&](auto* src, auto* dst, int32_t n) { GrayRow(src, dst, n, w); });
    });
  }
}

TEST(PixelKernels, GrayDividesExactly) {
  const GrayWeights third{1, 1, 1, 0, 43691, 17};
  for (uint32_t sum = 0; sum <= 765; ++sum) {
    const uint32_t a = std::min(sum, 255u), b = std::min(sum - a, 255u);
    ASSERT_EQ(third(a, b, sum - a - b), sum / 3);
  }
  const GrayWeights hundredth{30, 59, 11, 0, 5243, 19};
  for (uint32_t b = 0; b < 256; ++b) {
    for (uint32_t g = 0; g < 256; ++g) {
      for (uint32_t r = 0; r < 256; r += 5) ASSERT_EQ(hundredth(b, g, r), (30 * b + 59 * g + 11 * r) / 100);
    }
  }
}

TEST(PixelKernels, Colorize) {
  for (const ColorizeOffsets& o : {ColorizeOffsets{0, 0, 0}, {-66048, 39424, 51816}, {66048, -39424, -52224}}) {
    OnEveryTarget([&] {
      Compare([&](auto* src, auto* dst, int32_t n) { ColorizeRowScalar(src, dst, n, o); },
              [&](auto* src, auto* dst, int32_t n) { ColorizeRow(src, dst, n, o); });
    });
  }
}

TEST(PixelKernels, Saturate) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double s : {0.0, 0.3, 1.0, 4.0, 8.0, -2.7, 999999.0, 1e7, 1e300, nan}) {
    for (const bool clamp : {false, true}) {
      const SaturationWeights w{s, 1234567, -38470 * 7, 19595, clamp};
      OnEveryTarget([&] {
        Compare([&](auto* src, auto* dst, int32_t n) { SaturateRowScalar(src, dst, n, w); },
                [&](auto* src, auto* dst, int32_t n) { SaturateRow(src, dst, n, w); });
      });
    }
  }
}

TEST(PixelKernels, Blend) {
  const Bytes bottom = Rows(4 * kLongest).front();
  for (const int32_t alpha : {0, 1, 127, 200, 254, 255}) {
    OnEveryTarget([&] {
      Compare([&](auto* src, auto* dst, int32_t n) { BlendRowScalar(dst, src, bottom.data(), n, alpha); },
              [&](auto* src, auto* dst, int32_t n) { BlendRow(dst, src, bottom.data(), n, alpha); });
    });
  }
}

TEST(PixelKernels, Map) {
  const Bytes tables = Rows(3 * 256).front();
  const ByteTables three = {tables.data(), tables.data() + 256, tables.data() + 512};
  OnEveryTarget([&] {
    Compare([&](auto* src, auto* dst, int32_t n) { MapRowScalar(src, dst, n, three); },
            [&](auto* src, auto* dst, int32_t n) { MapRow(src, dst, n, three); });
  });
  // Sums that just fit into 16 bits, and sums that do not.
  for (const GrayWeights& w : {GrayWeights{1, 2, 1, 0, 1, 2}, GrayWeights{29, 150, 77, 255, 1, 8},
                               GrayWeights{117, 601, 306, 512, 1, 10}, GrayWeights{1, 1, 1, 0, 43691, 17}}) {
    OnEveryTarget([&] {
      Compare([&](auto* src, auto* dst, int32_t n) { MapGrayRowScalar(src, dst, n, w, three); },
              [&](auto* src, auto* dst, int32_t n) { MapGrayRow(src, dst, n, w, three); });
    });
  }
}

TEST(PixelKernels, Relight) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const Bytes& edges : Rows(4 * kLongest)) {
    for (const EdgeLight& light :
         {EdgeLight{0, 0, 0}, EdgeLight{100, 1.7, 0}, EdgeLight{30, -2, 0.6}, EdgeLight{255, 0.3, 0.999},
          EdgeLight{-1, 500, -3}, EdgeLight{60, 1e300, 0}, EdgeLight{20, infinity, -infinity},
          EdgeLight{std::numeric_limits<float>::quiet_NaN(), 1, 0.5}}) {
      OnEveryTarget([&] {
        Compare([&](auto* src, auto* dst, int32_t n) { RelightRowScalar(src, edges.data(), dst, n, light); },
                [&](auto* src, auto* dst, int32_t n) { RelightRow(src, edges.data(), dst, n, light); });
      });
    }
  }
  // Dark pixels, whose saturation divides by little or nothing.
  Bytes dark(4 * 27), expected(dark.size()), actual(dark.size());
  for (size_t i = 0; i < 27; ++i) dark[4 * i] = i % 3, dark[4 * i + 1] = i / 3 % 3, dark[4 * i + 2] = i / 9;
  for (const Bytes& edges : {Bytes(dark.size(), 0), Bytes(dark.size(), 1), Bytes(dark.size(), 9)}) {
    RelightRowScalar(dark.data(), edges.data(), expected.data(), 27, {-1, 0.5, 0});
    OnEveryTarget([&] {
      RelightRow(dark.data(), edges.data(), actual.data(), 27, {-1, 0.5, 0});
      EXPECT_EQ(actual, expected);
    });
  }
}

// The loops that the compiler makes into vectors: a row at once must be what its pixels are one at a time.
TEST(PixelKernels, RowLoops) {
  const Bytes rows = Rows(3 * 4 * (kLongest + 2)).front();
  const auto row = [&](int32_t y) { return rows.data() + 4 * (kLongest + 2) * y + 4; };
  using Loop = std::function<void(const uint8_t* src, uint8_t* dst, int32_t x, int32_t count)>;
  for (const Loop& loop :
       {Loop([&](auto*, auto*dst, int32_t x, int32_t n) {
          SobelRow(row(0) + 4 * x, row(1) + 4 * x, row(2) + 4 * x, dst, n);
        }),
        Loop([&](auto*src, auto*dst, int32_t x, int32_t n) { ReliefRow(src, row(1) + 4 * x, dst, n, 40, 127); }),
        Loop([&](auto*, auto*dst, int32_t x, int32_t n) { SharpenRow(row(0) + 4 * x, row(1) + 4 * x, dst, n, 1.28); }),
        Loop([&](auto*, auto*dst, int32_t x, int32_t n) { SharpenRow(row(0) + 4 * x, row(1) + 4 * x, dst, n, -1e6); }),
        Loop([&](auto*src, auto*dst, int32_t x, int32_t n) { UnderlayRow(src, row(2) + 4 * x, dst, n, 0xC0FF31); })}) {
    OnEveryTarget([&] {
      Compare(
          [&](auto* src, auto* dst, int32_t n) {
            for (int32_t x = 0; x < n; ++x) loop(src + 4 * x, dst + 4 * x, x, 1);
          },
          [&](auto* src, auto* dst, int32_t n) { loop(src, dst, 0, n); });
    });
  }
}

}  // namespace

// Background fills: the flow from box to composite, each pattern on small pictures, the effect object.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "Source/BGFPatterns.h"
#include "Source/StackBlur.h"
#include "framework/blend_tables.h"
#include "framework/my_resize.h"
#include "framework/random.h"
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

uint32_t Color(const FrameBuffer& frame, int32_t x, int32_t y) {
  return frame.Word(x, y) & 0xFFFFFF;
}

// What a fill without pattern gives, step by step.
FrameBuffer PlainFill(FrameBuffer& src, int32_t left, int32_t top, int32_t right, int32_t bottom, uint32_t color,
                      int32_t luminance) {
  FrameBuffer box(right - left + 1, bottom - top + 1), back(src.Width(), src.Height()), dst(src.Width(), src.Height());
  for (int32_t y = 0; y < box.Height(); ++y) {
    for (int32_t x = 0; x < box.Width(); ++x) {
      const uint8_t* in = src.Pixel(left + x, top + y);
      for (int c = 0; c < 3; ++c) {
        box.Pixel(x, y)[c] = static_cast<uint8_t>(std::clamp(in[c] + luminance, 0, 255) * in[3] * 0.003921569);
      }
      box.Pixel(x, y)[3] = in[3];
    }
  }
  MyResize(box.Data(), back.Data(), src.Width(), src.Height(), back.Step(), box.Width(), box.Height(), box.Step());
  for (int32_t y = 0; y < src.Height(); ++y) {
    for (int32_t x = 0; x < src.Width(); ++x) {
      const uint8_t *s = src.Pixel(x, y), *b = back.Pixel(x, y);
      const int32_t a = s[3];
      for (int c = 0; c < 3; ++c) {
        const int32_t tinted = (b[c] * static_cast<int32_t>(color >> (8 * c) & 255)) >> 8;
        dst.Pixel(x, y)[c] = static_cast<uint8_t>((tinted * (255 - a) + s[c] * a) >> 8);
      }
      dst.Pixel(x, y)[3] = static_cast<uint8_t>((b[3] * (255 - a) >> 8) + a);
    }
  }
  return dst;
}

TEST(BackgroundFill, ScalingFollowsTheMultiplyTable) {
  const auto& multiply = BlendTables::Get().multiply;
  for (const auto& [width, height] : {std::pair(41, 23), std::pair(7, 30), std::pair(150, 1)}) {
    FrameBuffer src = Picture(19, 11, 4), dst(width, height, 8);
    MyResize(src.Data(), dst.Data(), width, height, dst.Step(), 19, 11, src.Step());
    for (int32_t i = 0; i < width * height; ++i) {
      const float fx = static_cast<float>(i % width) * (19.0f / static_cast<float>(width));
      const float fy = static_cast<float>(i / width) * (11.0f / static_cast<float>(height));
      const int32_t x = static_cast<int32_t>(fx), y = static_cast<int32_t>(fy);
      const float wx = fx - static_cast<float>(x), wy = fy - static_cast<float>(y);
      for (int c = 0; c < 4; ++c) {
        int32_t sum = 0;
        for (const int32_t k : {0, 1, 2, 3}) {
          const float weight = (k % 2 ? wx : 1 - wx) * (k / 2 ? wy : 1 - wy) * 255;
          const uint8_t* p = src.Pixel(std::min(x + k % 2, 18), std::min(y + k / 2, 10));
          sum += multiply[static_cast<uint8_t>(weight)][p[c]];
        }
        ASSERT_EQ(dst.Pixel(i % width, i / width)[c], std::min(sum, 255)) << i << " " << c;
      }
    }
  }
}

TEST(BackgroundFill, FlowFromBoxToComposite) {
  FrameBuffer src = Picture(100, 60, 8);  // at most 10000 pixels
  // 0.75 leaves 25 by 15 pixels and one more each way; the level makes a radius below 1.
  EXPECT_EQ(RunEffect(kPureGaussian, src, {0.75, 0x3080FF, 20, 0.1}).Packed(),
            PlainFill(src, 37, 22, 62, 37, 0x3080FF, 20).Packed());
  EXPECT_EQ(RunEffect(kPureGaussian, src, {0.95, kWhite, -300, 0}).Packed(),
            PlainFill(src, 40, 24, 60, 36, 0xFFFFFF, -255).Packed())
      << "never below a fifth of the frame";
  EXPECT_EQ(RunEffect(kPureGaussian, src, {-1, kWhite, 0, 0}).Packed(),
            PlainFill(src, 0, 0, 99, 59, 0xFFFFFF, 0).Packed())
      << "never beyond the frame";
  FrameBuffer large = Picture(137, 91, 4);  // in bands
  EXPECT_EQ(RunEffect(kPureGaussian, large, {0.5, kWhite, 0, 0}).Packed(),
            PlainFill(large, 34, 23, 102, 68, 0xFFFFFF, 0).Packed());
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

TEST(BackgroundFill, ReportsItsDefaults) {
  const struct {
    int32_t id, index;
    const char16_t* name;
    int32_t type;
    double minimum, value, maximum;
  } cases[] = {{1374, 0, u"Source_Width", 2, 0.25, 0.7, 0.8}, {1382, 1, u"BG_Color", 4, 0, kWhite, 4294967295.0},
               {1374, 2, u"BG_Luminance", 0, -175, -10, 175}, {1386, 2, u"BG_Luminance", 0, -175, 80, 175},
               {1378, 3, u"Block_size", 2, 0, 0.04, 1},       {1383, 3, u"Scales_Level", 2, 0, 0.6, 1},
               {1389, 3, u"Warp_Level", 2, 0, 0.33, 1}};
  for (const auto& c : cases) {
    const auto processor = MakeEffect(c.id, 8, 8);
    FrameBuffer frame = Picture(8, 8), out(8, 8);
    RunFrame(*processor, frame, out, Values(c.id, {0.3, 5, 5, 0.9}));
    FilterParamDesc desc{};
    processor->GetParamDesc(&desc, c.index);
    EXPECT_EQ(std::u16string(desc.name), c.name);
    EXPECT_EQ(desc.type, c.type);
    EXPECT_EQ(desc.minimum, c.minimum);
    EXPECT_EQ(desc.defaultValue, c.value) << "a frame does not move it";
    EXPECT_EQ(desc.maximum, c.maximum);
  }
}

TEST(FillPattern, GrayAndBlacknet) {
  FrameBuffer src(9, 81);
  for (int32_t i = 0; i < 9 * 81; ++i) src.SetPixel(i % 9, i / 9, 10, 20, 33, 1);
  src.SetPixel(1, 1, 200, 200, 200, 1);
  const FrameBuffer gray = Painted(fill_pattern::Gray, src);
  EXPECT_EQ(Color(gray, 0, 0), 0x1F1F1Fu);
  EXPECT_EQ(Color(gray, 1, 1), 0xFFFFFFu);
  const FrameBuffer net = Painted(fill_pattern::Blacknet, src, 0.5f);  // pitch 5, 2 open
  for (int32_t i = 2; i < 81; ++i) {
    EXPECT_EQ(Color(net, 5, i), i % 5 < 2 ? 0x151515u : 0x0A0A0Au) << i;
    if (i < 9) {
      EXPECT_EQ(Color(net, i, 5), i % 5 < 2 ? 0x151515u : 0x0A0A0Au) << i;
    }
  }
}

TEST(FillPattern, MosaicRepeatsRows) {
  const FrameBuffer src = Picture(5, 40, 8);
  const FrameBuffer out = Painted(fill_pattern::Mosaic, src, 0.5f);  // bands of 3
  for (int32_t y = 0; y < 40; ++y) EXPECT_EQ(Color(out, 4, y), Color(src, 4, y - y % 3));
}

TEST(FillPattern, CellsOfOneColor) {
  const FrameBuffer src = Picture(26, 40);
  const FrameBuffer brick = Painted(fill_pattern::Brick, src, 0.75f);  // pitch 4: 2 * dx * dy below 4
  EXPECT_EQ(Color(brick, 4, 8), Color(src, 4, 8));
  EXPECT_EQ(Color(brick, 2, 8), Color(src, 4, 8)) << "a cell begins half a pitch ahead";
  EXPECT_EQ(Color(brick, 3, 7), Color(src, 4, 8));
  EXPECT_EQ(Color(brick, 3, 6), (Color(src, 3, 6) >> 1) & 0x7F7F7Fu);
  EXPECT_EQ(Color(brick, 24, 38), Color(src, 24, 39)) << "the anchor below lies in the last row";

  const FrameBuffer oyster = Painted(fill_pattern::Oyster, src, 0.5f);  // pitch 6: discs below 9
  EXPECT_EQ(Color(oyster, 10, 12), Color(src, 12, 12));
  EXPECT_EQ(Color(oyster, 14, 14), Color(src, 12, 12));
  EXPECT_EQ(Color(oyster, 9, 12), Color(src, 9, 12)) << "the rim of a disc is outside";
  EXPECT_EQ(Color(oyster, 25, 12), Color(src, 23, 12)) << "anchor at column 24, held at 23";

  const FrameBuffer hola = Painted(fill_pattern::Hola, src);  // pitch 6 as well
  EXPECT_EQ(Color(hola, 13, 35), Color(src, 12, 36));
  const FrameBuffer shorter = Picture(26, 38);
  EXPECT_EQ(Color(Painted(fill_pattern::Hola, shorter), 13, 36), Color(shorter, 12, 34)) << "held at row h - 4";

  const FrameBuffer diamonds = Painted(fill_pattern::DiamondBlur, src, 0.7f);  // pitch 6, anchor in the corner
  EXPECT_EQ(Color(diamonds, 9, 15), Color(src, 6, 12));
  EXPECT_EQ(Color(diamonds, 6, 15), Color(src, 6, 12)) << "left tip";
  EXPECT_EQ(Color(diamonds, 7, 13), Color(src, 7, 13)) << "corner";
}

TEST(FillPattern, Waves) {
  FrameBuffer src(40, 32);  // pitch 4, half 2
  for (int32_t i = 0; i < 40 * 32; ++i) src.SetPixel(i % 40, i / 40, 10, 240, 0, 1);
  const FrameBuffer diamond = Painted(fill_pattern::DiamondWave, src);
  const FrameBuffer round = Painted(fill_pattern::Wave, src);
  const int32_t rising[4] = {0, 32, 0, 32}, slow[4] = {0, 32, 0, 8};
  for (int32_t y = 0; y < 32; ++y) {
    for (int32_t x = 0; x < 40; ++x) {
      const int32_t dx = x - 20, dy = y - 16;
      EXPECT_EQ(diamond.Pixel(x, y)[0], 10 + rising[(std::abs(dx) + std::abs(dy)) % 4]);
      EXPECT_EQ(diamond.Pixel(x, y)[1], std::min(240 + rising[(std::abs(dx) + std::abs(dy)) % 4], 255));
      EXPECT_EQ(round.Pixel(x, y)[0], 10 + slow[static_cast<int>(std::sqrt(dx * dx + dy * dy)) % 4]) << dx << " " << dy;
    }
  }
}

TEST(FillPattern, FrostFollowsTheFrameNumber) {
  const FrameBuffer src = Picture(130, 230);
  const FrameBuffer out = Painted(fill_pattern::Frosted, src, 1, 7);  // cells of 1, reach 3 * 5
  Rand rand;
  rand.Seed(7);
  std::vector<int32_t> table;
  for (int32_t i = 0; i < 10000; ++i) table.push_back(rand.Next() + 1);
  for (int32_t y = 0; y < 230; ++y) {
    for (int32_t x = 0; x < 130; ++x) {
      const int32_t d = table[static_cast<size_t>(y % 100 * 100 + x % 100)] % 15;
      EXPECT_EQ(Color(out, x, y), Color(src, std::min(x + d, 129), std::min(y + d, 229)));
    }
  }
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

TEST(FillPattern, RipplesMirrorAtTheEdges) {
  const int32_t shift[] = {0, 2, 2, 0, -2, -2, 0};  // sin(i) * 3 cut, a sixtieth of the height being 1
  const FrameBuffer src = Picture(7, 60);
  const FrameBuffer rows = Painted(fill_pattern::RippleH, src, 0.1f);
  const FrameBuffer columns = Painted(fill_pattern::RippleV, src, 0.1f);
  const auto mirrored = [](int32_t i, int32_t n) { return i < 0 ? -i : i > n - 1 ? 2 * n - i - 2 : i; };
  for (int32_t i = 0; i < 7; ++i) {
    for (int32_t k = 0; k < 7; ++k) {
      EXPECT_EQ(Color(rows, k, i), Color(src, mirrored(k + shift[i], 7), i)) << k << " " << i;
      EXPECT_EQ(Color(columns, i, 53 + k), Color(src, i, mirrored(53 + k + shift[i], 60)));
    }
  }
}

TEST(FillPattern, ThreeDKeepsASharpLattice) {
  const FrameBuffer src = Picture(130, 140);
  FrameBuffer blurred(130, 140);
  std::copy_n(src.Data(), src.Size(), blurred.Data());
  StackBlur(View(blurred), 4);  // 130 * 0.3 / 8.8
  const FrameBuffer out = Painted(fill_pattern::ThreeD, src);
  for (int32_t y = 0; y < 140; ++y) {
    for (int32_t x = 0; x < 130; ++x) {
      EXPECT_EQ(Color(out, x, y), Color(x % 14 > 12 || y % 14 > 12 ? src : blurred, x, y));
    }
  }
}

TEST(FillPattern, PerspectAndGaussianBar) {
  const FrameBuffer src = Picture(5, 4, 8);
  const FrameBuffer out = Painted(fill_pattern::Perspect, src);
  const int32_t fromColumn[] = {0, 2, 4, 1, 3}, fromRow[] = {3, 1, 3, 1};
  for (int32_t i = 0; i < 20; ++i) EXPECT_EQ(Color(out, i % 5, i / 5), Color(src, fromColumn[i % 5], fromRow[i / 5]));

  FrameBuffer frame(5, 4);
  fill_pattern::GaussianBar(View(frame), {src.Data(), 5, 4, src.Step()}, {1, 1, 3, 2});
  for (int32_t i = 0; i < 20; ++i) {
    const bool inside = i % 5 >= 1 && i % 5 <= 3 && i / 5 >= 1 && i / 5 <= 2;
    EXPECT_EQ(frame.Word(i % 5, i / 5), inside ? Color(src, i % 5, i / 5) : 0u);
  }
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

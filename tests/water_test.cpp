// The water effects, against a plain model of the surface and values worked out by hand.
#include <gtest/gtest.h>

#include <cmath>

#include "Source/WaterSurface.h"
#include "framework/host_log.h"
#include "tests/support/fake_host.h"

namespace {

constexpr int32_t kRipple = 34, kSwirl = 62, kSuffer = 69;

// The surface, one cell at a time.
struct Model {
  int32_t width, height;
  std::vector<int32_t> fields[2] = {std::vector<int32_t>(static_cast<size_t>(width * height)),
                                    std::vector<int32_t>(static_cast<size_t>(width* height))};
  int current = 0;
  uint32_t state = 0;

  uint32_t Draw() { return state = state * 1103515245u + 12345u; }
  int32_t& At(int32_t x, int32_t y) { return fields[current][static_cast<size_t>(y * width + x)]; }

  template <typename HeightOf>
  void Drop(int32_t x, int32_t y, int32_t r, HeightOf heightOf) {
    for (int32_t v = 1; v < height - 1; ++v) {
      for (int32_t u = 1; u < width - 1; ++u) {
        const int32_t square = (u - x) * (u - x) + (v - y) * (v - y);
        // r itself is left out to the right and below, and inside the circle nothing of it is left.
        if (square < r * r) At(u, v) += heightOf(square);
      }
    }
  }

  // `picture` and `shown` are rows in the simulation's order.
  void Look(const std::vector<uint32_t>& picture, std::vector<uint32_t>& shown, int32_t factor, int32_t rim,
            int32_t last) {
    for (int32_t y = rim; y < height - 1; ++y) {
      for (int32_t x = rim; x < width - rim; ++x) {
        const int32_t i = y * width + x;
        const std::vector<int32_t>& n = fields[current];
        const int32_t h = n[i];
        const int32_t j = (((h - n[i + width]) * factor) >> 3) * width + i + (((h - n[i + 1]) * factor) >> 3);
        if (j >= 0 && j <= last) shown[i] = picture[std::min(j, width * height - 1)];
      }
    }
  }

  void Wave(int32_t damping) {
    std::vector<int32_t>& o = fields[1 - current];
    for (int32_t y = 1; y < height - 1; ++y) {
      for (int32_t x = 1; x < width - 1; ++x) {
        const int32_t sum = At(x - 1, y - 1) + At(x, y - 1) + At(x + 1, y - 1) + At(x - 1, y) + At(x + 1, y) +
                            At(x - 1, y + 1) + At(x, y + 1) + At(x + 1, y + 1);
        int32_t& cell = o[y * width + x];
        const int32_t n = (sum >> 2) - cell;
        cell = n - (n >> damping);
      }
    }
    current = 1 - current;
  }
};

int32_t Root(int32_t v) {
  int32_t root = 0;
  while ((root + 1) * (root + 1) <= v) ++root;
  return root;
}

int32_t Sine(int32_t step) {
  return static_cast<int32_t>(std::sin((step & 2047) * 0.0030679615757712823) * 65536.0);
}
int32_t Cosine(int32_t step) {
  return static_cast<int32_t>(std::cos((step & 2047) * 0.0030679615757712823) * 65536.0);
}

std::vector<uint32_t> Words(const FrameBuffer& frame, bool upsideDown = false) {
  std::vector<uint32_t> words;
  for (int32_t y = 0; y < frame.Height(); ++y) {
    for (int32_t x = 0; x < frame.Width(); ++x) words.push_back(frame.Word(x, upsideDown ? frame.Height() - 1 - y : y));
  }
  return words;
}

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

TEST(WaterRipple, FramesFollowTheModel) {
  struct Case {
    int32_t width, height, level;
    int32_t radius, factor;
  };
  // The drop's radius and the factor grow with width / 640, the radius from 1 on and the factor in whole steps from 2
  // on.
  for (const Case& c :
       {Case{37, 23, 9, 9, 1}, Case{960, 9, 5, 7, 1}, Case{1920, 11, 3, 9, 3}, Case{40, 20, 60, 60, 1}}) {
    const auto processor = MakeEffect(kRipple, c.width, c.height);
    Model model{c.width, c.height};
    FrameBuffer src(c.width, c.height, 8), dst(c.width, c.height, 16);
    for (uint32_t frame = 0; frame < 6; ++frame) {
      src.FillTestPicture(frame);
      RunFrame(*processor, src, dst, Values(kRipple, {static_cast<double>(c.level), 700.9}));
      const int32_t y = static_cast<int32_t>(model.Draw() % static_cast<uint32_t>(c.height));
      const int32_t x = static_cast<int32_t>(model.Draw() % static_cast<uint32_t>(c.width));
      model.Drop(x, y, c.radius, [&](int32_t square) { return (c.radius - Root(square)) * (700 >> 5); });
      std::vector<uint32_t> shown = Words(src);
      model.Look(Words(src), shown, c.factor, 1, c.width * c.height - 1);
      model.Wave(4);
      ASSERT_EQ(Words(dst), shown) << c.width << " frame " << frame;
    }
  }
}

TEST(WaterRipple, OtherIdsLeaveTheDestination) {
  FrameBuffer src(8, 8), dst(8, 8);
  src.FillTestPicture();
  RunFrame(*MakeEffect(kRipple, 8, 8), src, dst, Values(33, {50, 300}));
  EXPECT_EQ(Words(dst), std::vector<uint32_t>(64));
}

TEST(WaterSuffer, FramesFollowTheModelUpsideDown) {
  for (const int32_t width : {48, 1024, 1025}) {
    const int32_t height = 30;
    const auto processor = MakeEffect(kSuffer, width, height);
    Model model{width, height};
    int32_t phaseX = 57, phaseY = 1662, lastX = 80, lastY = 80;  // the first two values of the generator, modulo 2048
    FrameBuffer src(width, height, 8), dst(width, height);
    for (uint32_t frame = 0; frame < 12; ++frame) {
      src.FillTestPicture(frame);
      RunFrame(*processor, src, dst, Values(kSuffer));
      const auto along = [](int32_t phase, int32_t fast, int32_t slow, int32_t size) {
        return (((Sine(phase * fast >> 8) >> 8) * (Sine(phase * slow >> 8) >> 8) * ((size - 8) >> 1)) >> 16) + size / 2;
      };
      const int32_t x = along(phaseX, 349, 65, width), y = along(phaseY, 377, 84, height);
      phaseX += 13;
      phaseY += 12;
      const auto drop = [&](int32_t dropX, int32_t dropY, int32_t r, int32_t depth) {
        model.Drop(dropX, dropY, r, [&](int32_t square) {
          const int32_t angle = Root(static_cast<int32_t>(square * 1048576.0 / (r * r)));
          return ((Cosine(angle) + 65535) * depth) >> (width <= 1024 ? 19 : 17);
        });
      };
      drop((lastX + x) >> 1, (lastY + y) >> 1, 3, -1200);
      drop(x, y, 4, -2000);
      lastX = x;
      lastY = y;
      std::vector<uint32_t> shown = Words(src, true);
      model.Look(Words(src, true), shown, 1, 1, width * height);
      model.Wave(4);
      ASSERT_EQ(Words(dst, true), shown) << width << " frame " << frame;
    }
  }
}

TEST(WaterSwirl, FramesFollowTheModelAndAReset) {
  const int32_t width = 61, height = 47;
  const auto processor = MakeEffect(kSwirl, width, height);
  Model model{width, height};
  FrameBuffer src(width, height, 20), dst(width, height, 4);
  dst.Fill(0x11);
  std::vector<uint32_t> shown = Words(dst);  // nothing fills the destination beforehand
  for (int32_t frame = 0; frame < 10; ++frame) {
    const bool reset = frame == 6;
    src.FillTestPicture(static_cast<uint32_t>(frame));
    RunFrame(*processor, src, dst, Values(kSwirl, {43.9, 3, 50, 40, reset ? 1.0 : 0.5}));
    if (reset) {
      for (auto& field : model.fields) std::fill(field.begin(), field.end(), 0);  // the phase goes on
    }
    const int32_t x = ((Cosine(50 * frame) * 5) >> 14) + 30, y = ((Sine(50 * frame) * 20) >> 16) + 18;
    model.Drop(x, y, 10, [](int32_t) { return 300; });
    model.Look(Words(src), shown, 1, 0, width * height - 1);
    model.Wave(3);
    ASSERT_EQ(Words(dst), shown) << "frame " << frame;
  }
  EXPECT_EQ(shown.back(), 0x11111111u) << "the last row is never written";
}

TEST(Water, ReportsItsFields) {
  FilterParamDesc desc{};
  const auto ripple = MakeEffect(kRipple, 64, 48);
  ripple->GetParamDesc(&desc, 1);
  EXPECT_EQ(std::u16string(desc.name), u"Height");
  EXPECT_EQ(desc.defaultValue, 349);
  EXPECT_EQ(desc.maximum, 1000);
  const auto swirl = MakeEffect(kSwirl, 64, 48);
  const double fresh[] = {59, 4, 50, 40}, used[] = {20, 5, 16, 36};
  const char16_t* names[] = {u"Radius", u"Desity", u"X", u"Y"};
  FrameBuffer frame(64, 48);
  for (const auto& expected : {fresh, used}) {
    for (int32_t i = 0; i < 4; ++i) {
      desc = {};
      swirl->GetParamDesc(&desc, i);
      EXPECT_EQ(std::u16string(desc.name), names[i]);
      EXPECT_EQ(desc.defaultValue, expected[i]);
    }
    RunFrame(*swirl, frame, frame, Values(kSwirl, {20, 5, 25, 75}));  // percent become pixels
  }
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

// The engine's colour looks.
#include <gtest/gtest.h>

#include "engine/engine.h"
#include "tests/support/frames.h"

namespace {

struct Bgr {
  int b, g, r;
  bool operator==(const Bgr&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Bgr& c) {
  return out << c.b << " " << c.g << " " << c.r;
}

// One pixel through an effect. Its alpha must come through.
Bgr Through(int32_t id, Bgr in, std::initializer_list<double> values = {}) {
  FrameBuffer src(1, 1);
  src.SetPixel(0, 0, static_cast<uint8_t>(in.b), static_cast<uint8_t>(in.g), static_cast<uint8_t>(in.r), 91);
  const FrameBuffer dst = RunEffect(id, src, values);
  const uint8_t* p = dst.Pixel(0, 0);
  EXPECT_EQ(p[3], 91) << id;
  return {p[0], p[1], p[2]};
}

Bgr ThroughGray(int32_t id, int gray, std::initializer_list<double> values = {}) {
  return Through(id, {gray, gray, gray}, values);
}

TEST(ColorLook, ExposureIsALogarithmAndAnOffset) {
  EXPECT_EQ(Through(79, {0, 15, 255}, {50}), (Bgr{0, 128, 255}));  // ln 16 is half of ln 256
  EXPECT_EQ(Through(79, {0, 15, 255}, {0}), (Bgr{0, 78, 205}));
  EXPECT_EQ(Through(79, {0, 15, 255}, {1000}), (Bgr{50, 178, 255}));
}

TEST(ColorLook, ChannelsAndTheirAlpha) {
  EXPECT_EQ(Through(81, {10, 20, 30}), (Bgr{10, 0, 0}));
  EXPECT_EQ(Through(82, {10, 20, 30}), (Bgr{0, 20, 0}));
  EXPECT_EQ(Through(83, {10, 20, 30}), (Bgr{0, 0, 30}));
  EXPECT_EQ(Through(84, {10, 20, 30}), (Bgr{0, 0, 0}));
}

TEST(ColorLook, GraysDiffer) {
  EXPECT_EQ(Through(85, {255, 0, 0}), (Bgr{29, 29, 29}));     // (29 * 255 + 255) >> 8
  EXPECT_EQ(Through(85, {0, 0, 254}), (Bgr{76, 76, 76}));     // (76 * 254 + 255) >> 8
  EXPECT_EQ(Through(87, {255, 0, 0}), (Bgr{192, 192, 192}));  // 255 - (255 >> 2)
  EXPECT_EQ(Through(88, {1, 2, 3}), (Bgr{254, 253, 252}));
}

TEST(ColorLook, BinaryReachesBothEnds) {
  EXPECT_EQ(ThroughGray(86, 0, {0}), (Bgr{255, 255, 255}));
  EXPECT_EQ(ThroughGray(86, 255, {100}), (Bgr{0, 0, 0}));
  EXPECT_EQ(ThroughGray(86, 127, {50}), (Bgr{0, 0, 0}));
  EXPECT_EQ(ThroughGray(86, 128, {50}), (Bgr{255, 255, 255}));
}

TEST(ColorLook, BandsAndFolds) {
  EXPECT_EQ(ThroughGray(89, 127), (Bgr{127, 127, 0}));
  EXPECT_EQ(ThroughGray(89, 128), (Bgr{0, 127, 128}));
  const struct {
    Bgr in, first, second;
  } bands[] = {{{119, 100, 0}, {0, 0, 255}, {255, 0, 255}},  // B + 2 G + R is 319
               {{120, 100, 0}, {0, 255, 0}, {0, 255, 255}},
               {{239, 200, 0}, {0, 255, 0}, {0, 255, 255}},  // 639
               {{0, 200, 240}, {255, 0, 0}, {255, 255, 0}}};
  for (const auto& band : bands) {
    EXPECT_EQ(Through(90, band.in), band.first) << band.in;
    EXPECT_EQ(Through(91, band.in), band.second) << band.in;
  }
  EXPECT_EQ(Through(92, {0, 127, 128}), (Bgr{0, 127, 128}));
  EXPECT_EQ(Through(92, {129, 254, 255}), (Bgr{127, 2, 1}));
}

TEST(ColorLook, TemperaturesShiftAllThree) {
  const Bgr in{100, 100, 130};
  EXPECT_EQ(Through(99, in), (Bgr{220, 160, 10}));
  EXPECT_EQ(Through(100, in), (Bgr{160, 130, 70}));
  EXPECT_EQ(Through(101, in), (Bgr{55, 78, 175}));
  EXPECT_EQ(Through(102, in), (Bgr{10, 55, 220}));
}

TEST(ColorLook, ColorizeKeepsLuminance) {
  EXPECT_EQ(ThroughGray(103, 0, {0, 0, 0}), (Bgr{0, 0, 0}));
  EXPECT_EQ(ThroughGray(103, 100, {0, 0, 0}), (Bgr{101, 101, 101}));  // its weights sum up to more than one
  EXPECT_EQ(ThroughGray(103, 255, {0, 0, 0}), (Bgr{255, 255, 255}));
  // Red: U 90, V 239; Y of gray 100 is 25865.
  EXPECT_EQ(ThroughGray(113, 100), (Bgr{24, 25, 255}));
  EXPECT_EQ(ThroughGray(103, 100, {255, 0, 0}), (Bgr{24, 25, 255}));
  // Olive: U 147, V 72. It looks as teal should, and the other way round.
  EXPECT_EQ(ThroughGray(109, 100), (Bgr{139, 139, 11}));
  EXPECT_EQ(ThroughGray(110, 100), (Bgr{0, 115, 115}));
  const struct {
    int32_t id;
    double r, g, b;
  } named[] = {{104, 230, 190, 20}, {105, 92, 51, 23},  {106, 245, 222, 179}, {107, 250, 240, 230},
               {108, 128, 0, 128},  {110, 128, 128, 0}, {111, 0, 0, 255},     {112, 0, 255, 0},
               {114, 255, 255, 0},  {115, 255, 0, 255}, {116, 0, 255, 255}};
  for (const auto& c : named) {
    for (const Bgr in : {Bgr{255, 255, 255}, Bgr{10, 120, 60}}) {
      EXPECT_EQ(Through(c.id, in), Through(103, in, {c.r, c.g, c.b})) << c.id;
    }
  }
}

TEST(ColorLook, HoodWinkAndCyanBlueAndLnk) {
  EXPECT_EQ(ThroughGray(117, 255), (Bgr{28, 149, 76}));
  EXPECT_EQ(ThroughGray(124, 0), (Bgr{0, 0, 0}));
  EXPECT_EQ(ThroughGray(124, 128), (Bgr{127, 127, 39}));   // m 127, h 1
  EXPECT_EQ(ThroughGray(124, 200), (Bgr{188, 191, 189}));  // s 170, h 185
  EXPECT_EQ(ThroughGray(133, 127, {0}).b, 113);            // ((127 + 100) * 127 + 255) >> 8
  EXPECT_EQ(ThroughGray(133, 128, {0}).b, 142);
  EXPECT_EQ(ThroughGray(133, 100, {100}).b, 40);
}

TEST(ColorLook, CurvesHitTheirPointsAndRise) {
  const struct {
    int32_t id;
    Bgr at0, at64, at128, at192, at255;
  } looks[] = {{123, {105, 25, 25}, {151, 101, 90}, {218, 174, 178}, {254, 228, 224}, {255, 249, 235}},
               {125, {0, 0, 0}, {41, 59, 76}, {86, 121, 161}, {175, 191, 211}, {229, 250, 255}},
               {126, {60, 0, 0}, {97, 88, 51}, {148, 184, 194}, {186, 236, 254}, {209, 255, 255}},
               {127, {57, 21, 0}, {96, 78, 60}, {135, 131, 146}, {164, 189, 220}, {192, 243, 255}},
               {129, {114, 0, 0}, {114, 52, 52}, {128, 128, 128}, {204, 204, 186}, {253, 236, 187}},
               {140, {69, 36, 43}, {69, 67, 132}, {92, 137, 210}, {114, 180, 243}, {122, 192, 254}},
               {141, {62, 1, 104}, {62, 69, 151}, {134, 172, 208}, {192, 227, 236}, {217, 254, 254}},
               {142, {97, 37, 57}, {126, 97, 69}, {154, 170, 188}, {169, 209, 242}, {173, 222, 254}},
               {146, {104, 20, 35}, {149, 55, 90}, {192, 175, 178}, {219, 220, 216}, {232, 235, 235}},
               {152, {34, 5, 0}, {128, 88, 68}, {195, 171, 155}, {234, 224, 217}, {252, 253, 253}},
               {153, {0, 0, 0}, {81, 0, 39}, {176, 134, 140}, {232, 220, 222}, {255, 255, 255}}};
  for (const auto& look : looks) {
    EXPECT_EQ(ThroughGray(look.id, 0), look.at0) << look.id;
    EXPECT_EQ(ThroughGray(look.id, 64), look.at64) << look.id;
    EXPECT_EQ(ThroughGray(look.id, 128), look.at128) << look.id;
    EXPECT_EQ(ThroughGray(look.id, 192), look.at192) << look.id;
    EXPECT_EQ(ThroughGray(look.id, 255), look.at255) << look.id;
    Bgr last{};
    for (int i = 0; i < 254; ++i) {
      const Bgr now = ThroughGray(look.id, i);
      EXPECT_TRUE(now.b >= last.b && now.g >= last.g && now.r >= last.r) << look.id << " " << i;
      last = now;
    }
  }
  EXPECT_EQ(ThroughGray(127, 253).b, 195);  // measured: up and down at its end
  EXPECT_EQ(ThroughGray(127, 254).b, 199);
}

TEST(ColorLook, SineContrastDoesNotWrapAtItsTop) {
  EngineRecord* record = nullptr;
  ASSERT_EQ(EngineCreate(&record, 64), kEngineDone);
  record->level = 100;
  FrameBuffer frame(2, 1);
  frame.SetPixel(0, 0, 0, 42, 128, 7);
  frame.SetPixel(1, 0, 213, 214, 255, 8);
  const EngineImage image = MakeEngineImage(frame.Data(), 2, 1, frame.Step());
  EXPECT_EQ(EngineRun(record, &image, nullptr), kEngineDone);
  EXPECT_EQ(frame.Word(0, 0), 0x07800000u);
  EXPECT_EQ(frame.Word(1, 0), 0x08FFFFFFu);  // 85 * 1.5 pi / 256 is short of the limit, 86 beyond it
  EngineFree(record);
}

TEST(ColorLook, RowsAreStepsApartAndAlphaStays) {
  for (int32_t id = 79; id <= 153; ++id) {
    if (id == 80 || (id >= 93 && id <= 98) || (id >= 118 && id <= 122) || id == 128 || id == 130 || id == 131 ||
        id == 132 || (id >= 134 && id <= 139) || (id >= 143 && id <= 151 && id != 146)) {
      continue;
    }
    FrameBuffer padded(7, 5, 24), packed(7, 5);
    padded.FillTestPicture();
    packed.FillTestPicture();
    const FrameBuffer dst = RunEffect(id, padded, {30, 60, 90});
    EXPECT_EQ(dst.Packed(), RunEffect(id, packed, {30, 60, 90}).Packed()) << id;
    for (int32_t y = 0; y < 5; ++y) {
      for (int32_t x = 0; x < 7; ++x) EXPECT_EQ(dst.Word(x, y) >> 24, padded.Word(x, y) >> 24) << id;
    }
  }
}

}  // namespace

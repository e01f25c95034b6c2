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

TEST(ColorLook, BinaryReachesBothEnds) {
  EXPECT_EQ(ThroughGray(86, 0, {0}), (Bgr{255, 255, 255}));
  EXPECT_EQ(ThroughGray(86, 255, {100}), (Bgr{0, 0, 0}));
  EXPECT_EQ(ThroughGray(86, 127, {50}), (Bgr{0, 0, 0}));
  EXPECT_EQ(ThroughGray(86, 128, {50}), (Bgr{255, 255, 255}));
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
}

TEST(ColorLook, SineContrastDoesNotWrapAtItsTop) {
  EngineRecord* record = nullptr;
  ASSERT_EQ(EngineCreate(&record, 64), kEngineDone);
  record->level = 100;
  FrameBuffer frame(2, 1);
  frame.SetPixel(0, 0, 0, 42, 128, 7);
  frame.SetPixel(1, 0, 213, 214, 255, 8);
  const EngineImage image = MakeEngineImage(frame.Data(), 2, 1, frame.Step());
  EXPECT_EQ(EngineRunFrom(record, image, image, nullptr), kEngineDone);
  EXPECT_EQ(frame.Word(0, 0), 0x07800000u);
  EXPECT_EQ(frame.Word(1, 0), 0x08FFFFFFu);  // 85 * 1.5 pi / 256 is short of the limit, 86 beyond it
  EngineFree(record);
}

}  // namespace

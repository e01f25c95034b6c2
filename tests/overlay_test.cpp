// Overlays that are bound to a screen shape, and every effect with a material over materials of all kinds.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/files.h"
#include "tests/support/frames.h"
#include "tests/support/materials.h"

using namespace kvx;

namespace {

// 16 by 9 pixels is exactly 16:9.
TEST(AspectOverlay, PicksTheFileByExactShape) {
  const TemporaryMaterials materials;
  materials.Write("Concert16_9.png", PlainPicture(3, 3, 10, 20, 30, 255));
  materials.Write("Concert4_3.png", PlainPicture(3, 3, 40, 50, 60, 255));
  FrameBuffer wide(16, 9, 8), other(17, 9);
  // (m * 255 + 255) >> 8 = m over black
  EXPECT_EQ(RunEffect(354, wide).Word(15, 8), 0xFF1E140Au);
  EXPECT_EQ(RunEffect(354, other).Word(15, 8), 0xFF3C3228u);
}

TEST(AspectOverlay, BlendsByAlphaAndFactor) {
  const TemporaryMaterials materials;
  materials.Write("WindowShades4_3.png", PlainPicture(2, 2, 200, 0, 255, 100));
  materials.Write("Woven4_3.png", PlainPicture(2, 2, 200, 0, 255, 255));
  FrameBuffer src(3, 2, 12);
  src.SetPixel(2, 1, 51, 255, 0, 9);
  // (51 * 156 + 200 * 100 + 255) >> 8 = 110, (255 * 156 + 255) >> 8 = 156, (255 * 100 + 255) >> 8 = 100
  EXPECT_EQ(RunEffect(352, src).Word(2, 1), 0xFF649C6Eu);
  // a = 255 * 0.2 = 51: (51 * 205 + 200 * 51 + 255) >> 8 = 81, (255 * 205 + 255) >> 8 = 205, (255 * 51 + 255) >> 8 = 51
  EXPECT_EQ(RunEffect(353, src).Word(2, 1), 0xFF33CD51u);
}

TEST(AspectOverlay, RowsLieAsInTheFile) {
  const TemporaryMaterials materials;
  Picture picture = PlainPicture(4, 4, 0, 0, 0, 255);
  std::fill_n(picture.Row(0), 16, uint8_t{255});
  materials.Write("Concert4_3.png", picture);
  FrameBuffer src(4, 4);
  const FrameBuffer out = RunEffect(354, src);
  EXPECT_EQ(out.Word(0, 0), 0xFFFFFFFFu);
  EXPECT_EQ(out.Word(0, 3), 0xFF000000u);
}

TEST(AspectOverlay, MissingFileStopsOneFrame) {
  const TemporaryMaterials materials;
  for (const int32_t id : {351, 352, 353, 354, 355}) {
    const auto processor = MakeEffect(id, 4, 4);
    FrameBuffer src(4, 4), untouched(4, 4), dst(4, 4);
    src.FillTestPicture();
    untouched.FillTestPicture();
    dst.Fill(0xCD);
    RunFrame(*processor, src, dst, Values(id));
    EXPECT_EQ(dst.Word(1, 1), 0xCDCDCDCDu) << id;
    EXPECT_EQ(src.Packed(), untouched.Packed()) << id;
    const char* narrow = FindEffectRow(id)->materials[1];
    materials.Write(narrow, PlainPicture(4, 4, 1, 2, 3, 255));
    RunFrame(*processor, src, dst, Values(id));
    EXPECT_EQ(dst.Word(1, 1), 0xFF000000u | src.Word(1, 1)) << id << " draws from an empty picture, not from the file";
    materials.Write(narrow, "broken");
    RunFrame(*MakeEffect(id, 4, 4), src, dst, Values(id));
    EXPECT_EQ(dst.Word(1, 1), 0xFF000000u | src.Word(1, 1)) << id << " a broken file does not stop the frame";
  }
}

TEST(Sight, TurnsTheCallersSourceGrey) {
  const TemporaryMaterials materials;
  materials.Write("Sight4_3.png", PlainPicture(2, 2, 200, 100, 0, 128));
  materials.Write("NightGlassView4_3.png", PlainPicture(2, 2, 200, 100, 0, 128));
  FrameBuffer src(2, 1, 8), dst(2, 1);
  src.SetPixel(1, 0, 10, 100, 210, 77);  // 320 / 3 = 106
  const auto sight = MakeEffect(351, 2, 1);
  sight->Process(src.Data(), nullptr, src.Step(), dst.Step(), nullptr);
  EXPECT_EQ(src.Word(1, 0), 0x4DD2640Au);
  RunFrame(*sight, src, dst, Values(351));
  EXPECT_EQ(src.Word(1, 0), 0x4D6A6A6Au);
  // (200 * 128 + 106 * 128 + 255) >> 8 = 153, 103, 53
  EXPECT_EQ(dst.Word(1, 0), 0xFF356799u);
  src.SetPixel(1, 0, 10, 100, 210, 77);
  RunFrame(*MakeEffect(355, 2, 1), src, dst, Values(355));
  EXPECT_EQ(src.Word(1, 0), 0x4D236A23u);  // 106 / 3 = 35
  EXPECT_EQ(dst.Word(1, 0), 0xFF126776u);  // (200 * 128 + 35 * 128 + 255) >> 8 = 118, 103, 18
}

// The counter belongs to the process: the test finds the phase first.
TEST(Camcorder, BlinksEveryTwelveFramesForAllTogether) {
  const TemporaryMaterials materials;
  materials.Write("CamcorderOn4_3.png", PlainPicture(1, 1, 255, 255, 255, 255));
  FrameBuffer src(1, 1), dst(1, 1);
  const auto halfThere = MakeEffect(356, 1, 1);
  RunFrame(*halfThere, src, dst, Values(356));
  EXPECT_EQ(dst.Word(0, 0), 0u) << "the picture of the other phase is missing";
  materials.Write("CamcorderOff4_3.png", PlainPicture(1, 1, 0, 0, 0, 255));
  const auto one = MakeEffect(356, 1, 1), other = MakeEffect(356, 1, 1);
  std::string phases;
  for (int i = 0; i < 48; ++i) {
    RunFrame(i % 2 ? *one : *other, src, dst, Values(356));
    phases += dst.Word(0, 0) == 0xFFFFFFFF ? '#' : '.';
  }
  const std::string half(12, '#'), rest(12, '.');
  EXPECT_NE((half + rest + half + rest + half + rest + half).find(phases), std::string::npos) << phases;
}

TEST(GrungeRay, ShowsThePosterAtHalfStrength) {
  const TemporaryMaterials materials;
  FrameBuffer src(3, 2, 8);
  src.FillTestPicture();
  EXPECT_EQ(RunEffect(362, src).Word(2, 1), 0xCDCDCDCDu) << "no poster: unwritten";
  materials.Write("GrungeRays.png", PlainPicture(2, 2, 255, 101, 3, 0));
  const FrameBuffer out = RunEffect(362, src);
  EXPECT_EQ(out.Word(2, 1), 0xFF01327Fu);
  EXPECT_EQ(out.Pixel(0, 0)[12], 0xCD) << "row padding";
}

// All ids with a material, with good and with mixed materials of another size, over sizes, steps and parameters.
TEST(Materials, EffectsStayWithinTheirBuffers) {
  const SmallMaterials materials;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const EffectRow& row : EffectRows()) {
    if (!row.materials[0]) continue;
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 5}, {3, 3}, {16, 9}, {33, 20}}) {
      const auto processor = MakeEffect(row.id, width, height);
      FrameBuffer src(width, height, 12), dst(width, height, 4);
      for (const double value : {0.0, 50.0, 100.0, 255.0, -7.0, 1e10, -1e300, kInfinity, std::nan("")}) {
        src.FillTestPicture();
        RunFrame(*processor, src, dst, Values(row.id, {value, value, value}));
        ASSERT_TRUE(src.GuardsIntact() && dst.GuardsIntact()) << row.id << ", " << width << " by " << height;
      }
    }
  }
}

// The build painted every picture, of the kind that its name says, and large enough to hold more than a flat tone.
TEST(Materials, ArePainted) {
  for (const EffectRow& row : EffectRows()) {
    for (const char* material : row.materials) {
      const std::string name = material ? material : "";
      if (name.empty()) continue;
      const auto bytes = ReadFile(KVX_TEST_RESOURCES "/kvx_effect/material/Merge/" + name);
      ASSERT_TRUE(bytes) << name;
      EXPECT_GT(bytes->size(), 40000u) << name;
      const bool isPng = name.ends_with(".png");
      EXPECT_EQ(DetectFormat(*bytes), isPng ? PictureFormat::kPng : PictureFormat::kJpeg) << name;
      // Width and height: 1440 or 1920 by 1080.
      const std::string size = name.find("4_3") == std::string::npos ? std::string("\0\0\x07\x80\0\0\x04\x38", 8)
                                                                     : std::string("\0\0\x05\xA0\0\0\x04\x38", 8);
      EXPECT_TRUE(!isPng || bytes->substr(16, 8) == size) << name;
    }
  }
}

}  // namespace

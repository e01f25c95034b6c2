// Merge processors: how the material reaches the engine, what frames show without one, parameters, light effects.
#include <gtest/gtest.h>

#include "Source/Overlays.h"
#include "tests/support/frames.h"
#include "tests/support/materials.h"

using namespace kvx;

namespace {

std::vector<double> Defaults(CBaseFilterProc& processor) {
  std::vector<double> values;
  for (int32_t i = 0; i < 12; ++i) {
    FilterParamDesc desc{};
    processor.GetParamDesc(&desc, i);
    if (desc.name[0]) values.push_back(desc.defaultValue);
  }
  return values;
}

TEST(MergeFilter, HandsTheMaterialOverLastRowFirst) {
  Picture material = PlainPicture(2, 3, 0, 0, 0, 255);
  std::fill_n(material.Row(0), 8, uint8_t{255});
  const TemporaryMaterials materials;
  materials.Write("MergeImage.png", material);
  FrameBuffer src(2, 3, 12);
  const FrameBuffer dst = RunEffect(194, src);
  EXPECT_EQ(dst.Word(1, 0), 0u);
  EXPECT_EQ(dst.Word(1, 2), 0x00FFFFFFu);
  EXPECT_EQ(dst.Pixel(0, 0)[8], 0xCD) << "row padding";
}

TEST(MergeFilter, ShowsTheSourceWithoutMaterial) {
  const std::string png = EncodePng(PlainPicture(40, 4, 30, 220, 10, 40));
  FrameBuffer src(5, 3, 8);
  src.FillTestPicture();
  const auto showsSource = [&](int32_t id) { return RunEffect(id, src, {50, 50, 50}).Packed() == src.Packed(); };
  for (const EffectRow& row : EffectRows()) {
    if (row.make != MakeMergeFilter || !row.materials[0]) continue;
    const TemporaryMaterials materials;
    EXPECT_TRUE(showsSource(row.id)) << row.id << " missing";
    materials.Write(row.materials[0], std::string());
    EXPECT_TRUE(showsSource(row.id)) << row.id << " empty";
    materials.Write(row.materials[0], png.substr(0, png.size() / 2));
    EXPECT_TRUE(showsSource(row.id)) << row.id << " broken";
  }
  const TemporaryMaterials materials;
  materials.Write("MergeImage.png/file", png);
  EXPECT_TRUE(showsSource(194)) << "a directory";
  SetMergeImagePath(nullptr);
  EXPECT_TRUE(showsSource(194)) << "no directory set";
}

TEST(MergeFilter, MaterialIsThatOfSetUp) {
  FrameBuffer src(4, 4), dst(4, 4);
  src.FillTestPicture();
  const TemporaryMaterials materials;
  const auto early = MakeEffect(194, 4, 4);
  materials.Write("MergeImage.png", PlainPicture(4, 4, 1, 2, 3, 255));
  RunFrame(*early, src, dst, Values(194));
  EXPECT_EQ(dst.Packed(), src.Packed()) << "the file came after the set-up";
  const auto processor = MakeEffect(194, 4, 4);
  FrameBuffer first(4, 4), second(4, 4);
  materials.Write("MergeImage.png", PlainPicture(4, 4, 200, 200, 200, 255));
  SetMergeImagePath(u"/nowhere");
  RunFrame(*processor, src, first, Values(194));
  RunFrame(*processor, src, second, Values(194));
  EXPECT_EQ(first.Packed(), second.Packed());
  // (f * 1 + m * 255 + 255) >> 8 of an opaque material
  EXPECT_EQ(first.Pixel(2, 1)[0], (src.Pixel(2, 1)[0] + 1 * 255 + 255) >> 8);
  EXPECT_EQ(first.Pixel(2, 1)[2], (src.Pixel(2, 1)[2] + 3 * 255 + 255) >> 8);
}

TEST(LightFilter, LiftsOneChannel) {
  FrameBuffer src(2, 1, 4);
  src.SetPixel(0, 0, 10, 128, 255, 7);
  src.SetPixel(1, 0, 128, 255, 128, 0);
  // y(10) = 19.6, y(128) = 191.7, y(255) = 255
  const FrameBuffer blue = RunEffect(357, src), green = RunEffect(358, src), red = RunEffect(359, src);
  EXPECT_EQ(blue.Word(0, 0), 0xFFFF8013u);
  EXPECT_EQ(green.Word(0, 0), 0xFFFFBF0Au);
  EXPECT_EQ(red.Word(0, 0), 0xFFFF800Au);
  EXPECT_EQ(red.Word(1, 0), 0xFFBFFF80u);
}

// The tables are the process's own, so the order of the steps matters, and all of it stands in one test.
TEST(LightFilter, LevelsAndContrastAreShared) {
  FrameBuffer src(3, 1), dst(3, 1);
  src.SetPixel(0, 0, 0, 100, 255, 1);
  src.SetPixel(1, 0, 128, 127, 1, 1);
  src.SetPixel(2, 0, 200, 50, 254, 1);
  const auto first = MakeEffect(360, 3, 1), second = MakeEffect(360, 3, 1);
  const auto run = [&](CBaseFilterProc& processor, std::initializer_list<double> values) {
    RunFrame(processor, src, dst, Values(360, values));
    return std::vector<uint32_t>{dst.Word(0, 0), dst.Word(1, 0), dst.Word(2, 0)};
  };
  EXPECT_EQ(run(*first, {35, 230, 30}), (std::vector<uint32_t>(3, 0xFF000000))) << "30 finds a table that nobody built";
  // 35 + i * 195 / 255, cut: 0 35, 1 35, 50 73, 100 111, 127 132, 128 132, 200 187, 254 229, 255 230. Contrast 64 is a
  // quarter of the distance from 128, rounded down: 35 - 23, 73 - 13, 111 - 4, 132 + 1, 187 + 14, 229 + 25, 230 + 25.
  EXPECT_EQ(run(*first, {35, 230, 64}), (std::vector<uint32_t>{0xFFFF6B0C, 0xFF0C8585, 0xFFFE3CC9}));
  EXPECT_EQ(run(*second, {0, 255, 0}), (std::vector<uint32_t>{0xFFFF6400, 0xFF017F80, 0xFFFE32C8}));
  EXPECT_EQ(run(*first, {35, 230, 30}), (std::vector<uint32_t>{0xFFFF6400, 0xFF017F80, 0xFFFE32C8}))
      << "nothing to rebuild: the other's levels and contrast";
  // Levels run backwards and contrast is taken away. The shift rounds down: from 255 to
  // 255 - 64, from 155 to 155 - 14, from 0 to 0 + 64.
  EXPECT_EQ(run(*second, {255, 0, -127}), (std::vector<uint32_t>{0xFF408DBF, 0xFFBF8080, 0xFF41A65C}));
  EXPECT_EQ(Defaults(*first), (std::vector<double>{35, 230, 50}));
  EXPECT_TRUE(Defaults(*MakeEffect(359, 1, 1)).empty());
}

}  // namespace

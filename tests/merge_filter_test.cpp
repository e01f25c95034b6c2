// Merge processors: how the material reaches the engine, what frames show without one, parameters, light effects.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine/engine.h"
#include "tests/support/frames.h"
#include "tests/support/materials.h"

using namespace kvx;

namespace {

struct MergeEffect {
  int32_t id;
  const char* fileName;
  uint32_t code;
};
// Ids up to 335 stand 1856 below their code, those from 338 on 1855.
constexpr MergeEffect kMergeEffects[] = {
    {194, "MergeImage.png", 2050},
    {196, "AncientCanvas.jpg", 2052},
    {197, "Filter1.jpg", 2053},
    {198, "OldPaper.jpg", 2054},
    {199, "Vignette1.jpg", 2055},
    {204, "Vignette6.jpg", 2060},
    {205, "WaterDrop3.jpg", 2061},
    {207, "OldTV.jpg", 2063},
    {208, "StencilPosterRed.jpg", 2064},
    {209, "StencilPosterGreen.jpg", 2065},
    {210, "StencilPosterBlue.jpg", 2066},
    {216, "HardLight.jpg", 2072},
    {217, "color_explosion.png", 2073},
    {221, "pf_bubble4.png", 2077},
    {225, "Overlay.jpg", 2081},
    {241, "LinearDodge.jpg", 2097},
    {242, "pf_shine2.png", 2098},
    {243, "pf_raindrop.png", 2099},
    {251, "MergeLight.jpg", 2107},
    {254, "Dark.jpg", 2110},
    {280, "VignetteWhite.jpg", 2136},
    {294, "Screen.jpg", 2150},
    {313, "SoftLight.jpg", 2169},
    {321, "MergeLinear.jpg", 2177},
    {330, "burntpaper.png", 2186},
    {332, "LinearBurn.jpg", 2188},
    {335, "LinearLight.jpg", 2191},
    {338, "ColorTuneCircle00.png", 2193},
    {339, "ColorTuneCircle00.png", 2194},
    {340, "ColorTuneCircle01.png", 2195},
    {343, "dark.png", 2198},
    {344, "sketch_black.png", 2199},
    {345, "sketch_black.png", 2200},
    {346, "pc_focusColor.png", 2201},
    {347, "radial3.png", 2202},
    {348, "oldtime.png", 2203},
    {349, "sketch.png", 2204},
    {350, "sketch.png", 2205},
};

// Each row unlike the next, so that order and size show.
Picture Stripes(int32_t width, int32_t height) {
  Picture picture(width, height);
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      uint8_t* p = picture.Row(y) + 4 * x;
      p[0] = static_cast<uint8_t>(30 + 60 * y);
      p[1] = static_cast<uint8_t>(220 - 50 * y);
      p[2] = static_cast<uint8_t>(20 * x + 10);
      p[3] = static_cast<uint8_t>(40 + 50 * y);
    }
  }
  return picture;
}

std::vector<double> Defaults(CBaseFilterProc& processor) {
  std::vector<double> values;
  for (int32_t i = 0; i < 12; ++i) {
    FilterParamDesc desc{};
    processor.GetParamDesc(&desc, i);
    if (desc.name[0]) values.push_back(desc.defaultValue);
  }
  return values;
}

// The frame and this material, first row first, straight through the engine.
void RunEngine(uint32_t code, FrameBuffer& frame, Picture& material, const std::vector<double>& values) {
  EngineRecord* record = nullptr;
  ASSERT_EQ(EngineCreate(&record, code), kEngineDone);
  if (values.size() == 1) record->level = static_cast<int32_t>(values[0]);
  if (values.size() == 3) {
    record->colorRed = static_cast<uint8_t>(values[0]);
    record->colorGreen = static_cast<uint8_t>(values[1]);
    record->colorBlue = static_cast<uint8_t>(values[2]);
  }
  const EngineImage image = MakeEngineImage(frame.Data(), frame.Width(), frame.Height(), frame.Step());
  const EngineImage second = MakeEngineImage(material.pixels.data(), material.width, material.height, material.Step());
  EngineRun(record, &image, &second);
  EngineFree(record);
}

TEST(MergeFilter, HandsTheMaterialOverLastRowFirst) {
  Picture material = Stripes(6, 4), turned(6, 4);
  for (int32_t y = 0; y < 4; ++y) std::copy_n(material.Row(3 - y), 24, turned.Row(y));
  for (const MergeEffect& effect : kMergeEffects) {
    SCOPED_TRACE(effect.id);
    const TemporaryMaterials materials;
    materials.Write(effect.fileName, EncodePng(material));  // content decides, not the name
    const auto processor = MakeEffect(effect.id, 6, 4);
    FrameBuffer src(6, 4, 12), dst(6, 4, 20), expected(6, 4, 20);
    src.FillTestPicture();
    dst.Fill(0xCD);
    expected.Fill(0xCD);
    for (int32_t y = 0; y < 4; ++y) std::copy_n(src.Pixel(0, y), 24, expected.Pixel(0, y));
    ParamValueArray values = Values(effect.id);
    const std::vector<double> defaults = Defaults(*processor);
    std::copy(defaults.begin(), defaults.end(), values.value);
    RunFrame(*processor, src, dst, values);
    RunEngine(effect.code, expected, turned, defaults);
    EXPECT_EQ(dst.Packed(), expected.Packed());
    EXPECT_EQ(dst.Pixel(0, 0)[24], 0xCD) << "row padding";
  }
}

TEST(MergeFilter, ShowsTheSourceWithoutMaterial) {
  const std::string png = EncodePng(Stripes(40, 4));
  const TemporaryMaterials empty;
  FrameBuffer src(5, 3, 8);
  src.FillTestPicture();
  const auto showsSource = [&](int32_t id) { return RunEffect(id, src, {50, 50, 50}).Packed() == src.Packed(); };
  for (const MergeEffect& effect : kMergeEffects) {
    const TemporaryMaterials materials;
    EXPECT_TRUE(showsSource(effect.id)) << effect.id << " missing";
    materials.Write(effect.fileName, std::string());
    EXPECT_TRUE(showsSource(effect.id)) << effect.id << " empty";
    materials.Write(effect.fileName, png.substr(0, png.size() / 2));
    EXPECT_TRUE(showsSource(effect.id)) << effect.id << " broken";
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
  Picture plain = PlainPicture(4, 4, 1, 2, 3, 255);
  FrameBuffer expected(4, 4);
  expected.FillTestPicture();
  RunEngine(2050, expected, plain, {});
  EXPECT_EQ(first.Packed(), expected.Packed());
}

TEST(MergeFilter, DescribesWhatItReads) {
  const auto names = [](int32_t id) {
    const auto processor = MakeEffect(id, 2, 2);
    std::u16string all;
    for (int32_t i = 0; i < 12; ++i) {
      FilterParamDesc desc{};
      processor->GetParamDesc(&desc, i);
      if (!desc.name[0]) continue;
      EXPECT_EQ(desc.index, i);
      EXPECT_EQ(desc.type, 0);
      all += std::u16string(desc.name) + u" 0-" +
             (desc.maximum == 255   ? u"255 "
              : desc.maximum == 100 ? u"100 "
                                    : u"? ");
    }
    return all;
  };
  for (const int32_t id : {193, 208, 209, 210, 332}) EXPECT_EQ(names(id), u"Red 0-255 Green 0-255 Blue 0-255 ");
  for (const int32_t id : {225, 321}) EXPECT_EQ(names(id), u"Percent 0-100 ");
  EXPECT_EQ(names(346), u"Position_X 0-100 Position_Y 0-100 ");
  for (const int32_t id : {194, 207, 216, 221, 254, 330, 335, 345, 350}) EXPECT_EQ(names(id), u"");
  const auto focus = MakeEffect(346, 2, 2);
  EXPECT_EQ(Defaults(*focus), (std::vector<double>{50, 50}));
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

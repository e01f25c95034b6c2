// Descriptions, binding, render path, opacity, resize.
#include <gtest/gtest.h>

#include <cstring>

#include "catalogue/description/filter_info.h"
#include "framework/blend_tables.h"
#include "framework/my_resize.h"
#include "framework/params.h"
#include "runtime/alpha_blend.h"
#include "runtime/pure_c_filter.h"
#include "tests/support/frames.h"

namespace {

using namespace vizcore;

std::shared_ptr<NLEFilterParams> MakeParam(const char* name, ParamKind kind, NLEParamValue value) {
  auto params = std::make_shared<NLEFilterParams>();
  params->SetName(name);
  params->SetAlias(name);
  params->SetKind(kind);
  params->SetDefault(value);
  params->SetValue(value);
  return params;
}

std::string NameAt(const NLEFilterInfo& info, int32_t index) {
  std::shared_ptr<NLEFilterParams> params;
  info.GetParam(params, index);
  if (!params) return "(none)";
  char name[64];
  params->GetName(name, sizeof name);
  return name;
}

void Add(NLEFilterInfo& info, std::shared_ptr<NLEFilterParams> params) {
  const int32_t index = info.GetParamCount();
  info.AddParam(index, std::move(params));
  info.SetParamCount(index + 1);
}

const EffectPluginInfo* RecordOf(int32_t id) {
  for (uint32_t i = 0; GetEffectPluginsInfo(i); ++i) {
    if (GetEffectPluginsInfo(i)->effectId == id) return GetEffectPluginsInfo(i);
  }
  return nullptr;
}

TEST(ParamValue, TextLosesItsFirstScheme) {
  NLEFilterParams params;
  params.SetKind(ParamKind::kText);
  NLEParamValue out;
  const struct {
    const char *in, *out;
  } cases[] = {{"file:/a/b.png", "a/b.png"}, {"x file:/y file:/z", "x y file:/z"}, {"/a", "/a"}, {"file:", "file:"}};
  for (const auto& c : cases) {
    params.SetValue(NLEParamValue::OfText(c.in));
    params.GetValue(out);
    EXPECT_EQ(out.text, c.out);
  }
  NLEFilterParams number;
  number.SetKind(ParamKind::kInt32);
  number.SetValue(NLEParamValue::OfText("file:/kept"));
  number.GetValue(out);
  EXPECT_EQ(out.text, "file:/kept");
}

TEST(ParamValue, KindGivenIsTheParametersOwn) {
  NLEFilterParams params;
  params.SetKind(ParamKind::kFloat);
  params.SetValue(NLEParamValue::Of(int32_t{3}));
  NLEParamValue out = NLEParamValue::Of(int32_t{0});
  params.GetValue(out);
  EXPECT_EQ(out.kind, ParamKind::kFloat);
}

TEST(ParamValue, NamesAreCutToTheBuffer) {
  const auto params = MakeParam("0123456789012345678901234567890123456789", ParamKind::kInt32, {});
  char name[38];
  params->GetName(name, sizeof name);
  EXPECT_EQ(std::string(name).size(), 37u);
}

TEST(ParamValue, UiWordsAreExact) {
  EXPECT_EQ(UiTypeOfWord("Mult100"), 25);
  EXPECT_EQ(UiTypeOfWord("Mult100 "), 0);
  EXPECT_EQ(UiTypeOfWord("color"), 0);
  EXPECT_EQ(UiTypeOfWord("9Palaces"), 3);
  EXPECT_EQ(UiTypeOfWord("GradientColor"), 14);
  EXPECT_EQ(UiTypeOfWord("TextEdit"), 26);
}

TEST(Binding, CatalogueWinsProcessorFollowsAlphaIsLast) {
  auto info = std::make_shared<NLEFilterInfo>();
  Add(*info, MakeParam("Other", ParamKind::kFloat, NLEParamValue::Of(1.5f)));
  NLEPureCFilter filter(info);
  ASSERT_EQ(filter.Init(FindEffectByID, RecordOf(25)), 0);
  ASSERT_EQ(info->GetParamCount(), 3);
  EXPECT_EQ(NameAt(*info, 0), "Other");
  EXPECT_EQ(NameAt(*info, 1), "Bringhtness");
  EXPECT_EQ(NameAt(*info, 2), "alpha");
  NLEParamValue value;
  ASSERT_TRUE(filter.GetParamValue("Bringhtness", value));
  EXPECT_EQ(value.kind, ParamKind::kInt32);
  EXPECT_EQ(value.AsInt32(), 60) << "60.546875 cut";
  ASSERT_TRUE(filter.GetParamValue("alpha", value));
  EXPECT_EQ(value.AsInt32(), 100);

  NLEPureCFilter second(info);
  ASSERT_EQ(second.Init(FindEffectByID, RecordOf(25)), 0);
  EXPECT_EQ(info->GetParamCount(), 3) << "the second does not grow the description";
  EXPECT_EQ(filter.SetParamValue("Unknown", ParamKind::kInt32, value), 2);
  EXPECT_FALSE(filter.GetParamValue("Unknown", value));
}

TEST(Binding, EffectWithoutParametersGetsOnlyAlpha) {
  auto info = std::make_shared<NLEFilterInfo>();
  NLEPureCFilter filter(info);
  ASSERT_EQ(filter.Init(FindEffectByID, RecordOf(71)), 0);
  ASSERT_EQ(info->GetParamCount(), 1);
  EXPECT_EQ(NameAt(*info, 0), "alpha");
  EXPECT_EQ(filter.Init(nullptr, RecordOf(71)), 1);
  EXPECT_EQ(filter.Init(FindEffectByID, nullptr), 1);
}

// A processor that reports one parameter of every type and records what its frames get.
struct Probe : CBaseFilterProc {
  Probe(int32_t w, int32_t h) : CBaseFilterProc(w, h) { ++made; }
  ~Probe() override { ++deleted; }
  void GetParamDesc(FilterParamDesc* desc, int32_t index) override {
    static constexpr ParamRow kRows[] = {{u"ranged", 0, -3.9, 9.9}, {u"switch", 1, 0, 1},
                                         {u"real", 2, -0.5, 0.5},   {u"duration", 3, 0, 36000000},
                                         {u"wide", 4, 0, 5e9},      {u"\u00e9\u20ac\xD800", 0, 0, 1}};
    DescribeParam(desc, index, kRows, {7.9, 1.0, 0.25, 5.0, 4294967298.0, 1.0});
  }
  void Process(uint8_t* src, uint8_t* dst, int32_t srcStep, int32_t, const ParamValueArray* params) override {
    last = *params;
    lastSource.assign(src, src + int64_t{srcStep} * height);
    lastFrame = currentFrame;
    lastTotal = totalFrames;
    lastRate = frameRate;
    for (int32_t i = 0; i < width * height; ++i) dst[4 * i + 3] = 255;
  }
  static int32_t Make(int32_t id, uint32_t w, uint32_t h, CBaseFilterProc** out) {
    if (id == 0) return 0;
    *out = new Probe(static_cast<int32_t>(w), static_cast<int32_t>(h));
    return 1;
  }
  inline static int made, deleted;
  inline static ParamValueArray last;
  inline static std::vector<uint8_t> lastSource;  // as many rows as the frame has
  inline static int32_t lastFrame, lastTotal;
  inline static double lastRate;
};

EffectPluginInfo ProbeRecord(int32_t id) {
  EffectPluginInfo record{};
  record.effectId = id;
  record.paramCount = 6;
  return record;
}

TEST(Binding, ReportedTypesBecomeKinds) {
  auto info = std::make_shared<NLEFilterInfo>();
  NLEPureCFilter filter(info);
  const EffectPluginInfo record = ProbeRecord(25);
  ASSERT_EQ(filter.Init(Probe::Make, &record), 0);
  NLEParamValue value;
  filter.GetParamValue("ranged", value);
  EXPECT_EQ(value.kind, ParamKind::kInt32);
  EXPECT_EQ(value.AsInt32(), 7);
  std::shared_ptr<NLEFilterParams> ranged;
  info->GetParam(ranged, 0);
  NLEParamValue minimum, maximum;
  ranged->GetRange(minimum, maximum);
  EXPECT_EQ(minimum.AsInt32(), -3);
  EXPECT_EQ(maximum.AsInt32(), 9);
  filter.GetParamValue("switch", value);
  EXPECT_EQ(value.kind, ParamKind::kInt32);
  filter.GetParamValue("real", value);
  EXPECT_EQ(value.kind, ParamKind::kDouble);
  EXPECT_EQ(value.AsDouble(), 0.25);
  filter.GetParamValue("duration", value);
  EXPECT_EQ(value.kind, ParamKind::kNone);
  filter.GetParamValue("wide", value);
  EXPECT_EQ(value.AsInt32(), 2) << "the low 32 bits of 2^32 + 2";
  EXPECT_TRUE(filter.GetParamValue("\xC3\xA9\xE2\x82\xAC\xEF\xBF\xBD", value)) << "a lone surrogate becomes U+FFFD";
}

TEST(RenderPath, MakesOneProcessorPerSize) {
  auto info = std::make_shared<NLEFilterInfo>();
  const EffectPluginInfo record = ProbeRecord(25);
  {
    NLEPureCFilter filter(info);
    filter.Init(Probe::Make, &record);
    Probe::made = Probe::deleted = 0;
    FrameBuffer small(4, 3), large(6, 3), out(4, 3), outLarge(6, 3), outHigh(6, 5);
    const auto render = [&](FrameBuffer& src, FrameBuffer& dst) {
      return filter.Render(src.Data(), src.Width(), src.Height(), src.Step(), 0, 0, 0, 0, dst.Data(), dst.Width(),
                           dst.Height(), dst.Step());
    };
    EXPECT_EQ(render(small, out), 0);
    EXPECT_EQ(render(small, out), 0);
    EXPECT_EQ(Probe::made, 1);
    EXPECT_EQ(render(large, outLarge), 0);
    EXPECT_EQ(Probe::made, 2);
    EXPECT_EQ(Probe::deleted, 1);
    EXPECT_EQ(render(small, outLarge), 0) << "the source's size takes no part";
    EXPECT_EQ(Probe::made, 2);
    EXPECT_EQ(render(large, outHigh), 0) << "another height alone";
    EXPECT_EQ(Probe::made, 3);
    EXPECT_EQ(filter.Render(nullptr, 4, 3, 16, 0, 0, 0, 0, out.Data(), 4, 3, 16), 1);
    EXPECT_EQ(filter.Render(small.Data(), 4, 3, 16, 0, 0, 0, 0, nullptr, 4, 3, 16), 1);
    EXPECT_EQ(Probe::deleted, 2) << "a null frame changes nothing";
  }
  EXPECT_EQ(Probe::deleted, 3);
}

TEST(RenderPath, ValuesArriveInCatalogueOrderWithoutAlpha) {
  auto info = std::make_shared<NLEFilterInfo>();
  Add(*info, MakeParam("text", ParamKind::kText, NLEParamValue::OfText("t")));
  Add(*info, MakeParam("float", ParamKind::kFloat, NLEParamValue::Of(1.5f)));
  Add(*info, MakeParam("int", ParamKind::kInt32, NLEParamValue::Of(int32_t{-8})));
  Add(*info, MakeParam("double", ParamKind::kDouble, NLEParamValue::Of(0.1)));
  Add(*info, MakeParam("flag", ParamKind::kBool, NLEParamValue::Of(uint8_t{1})));
  Add(*info,
      MakeParam("a name that is much longer than 37 characters", ParamKind::kInt32, NLEParamValue::Of(int32_t{9})));
  for (int32_t i = 6; i < 13; ++i) {  // there is room for twelve
    Add(*info, MakeParam(std::to_string(i).c_str(), ParamKind::kInt32, NLEParamValue::Of(i * 10)));
  }
  NLEPureCFilter filter(info);
  EffectPluginInfo record = ProbeRecord(25);
  record.paramCount = 0;
  filter.Init(Probe::Make, &record);
  filter.SetCurrentFrame(12);
  filter.SetTotalFrames(34);
  FrameBuffer src(2, 2), dst(2, 2);
  ASSERT_EQ(filter.Render(src.Data(), 2, 2, 8, 0, 0, 0, 0, dst.Data(), 2, 2, 8), 0);
  EXPECT_EQ(Probe::last.effectId, 25);
  EXPECT_EQ(Probe::last.reserved, 0);
  const double expected[12] = {0, 1.5, -8, 0.1, 0, 0, 60, 70, 80, 90, 100, 110};
  for (int i = 0; i < 12; ++i) EXPECT_EQ(Probe::last.value[i], expected[i]) << i;
  EXPECT_EQ(Probe::lastFrame, 12);
  EXPECT_EQ(Probe::lastTotal, 34);
  EXPECT_EQ(Probe::lastRate, 25.0);
}

TEST(RenderPath, OpacityIsAPercentAndFillsSkipTheBlendAtFull) {
  FrameBuffer src(5, 2), dst(5, 2);
  src.FillTestPicture();
  for (const auto& [id, percent, expected] : {std::tuple{25, 100, 255},
                                              {25, 50, 127},
                                              {25, 0, 0},
                                              {25, 900, 255},
                                              {25, -5, 0},
                                              {1374, 100, -1},
                                              {1374, 99, 252},
                                              {1390, 100, -1}}) {
    auto info = std::make_shared<NLEFilterInfo>();
    NLEPureCFilter filter(info);
    const EffectPluginInfo record = ProbeRecord(id);
    filter.Init(Probe::Make, &record);
    filter.SetParamValue("alpha", ParamKind::kInt32, NLEParamValue::Of(int32_t{percent}));
    dst.Fill(100);
    ASSERT_EQ(filter.Render(src.Data(), 5, 2, 20, 0, 0, 0, 0, dst.Data(), 5, 2, 20), 0);
    FrameBuffer blended(5, 2);
    blended.Fill(100);
    for (int32_t i = 0; i < 10; ++i) blended.Data()[4 * i + 3] = 255;
    if (expected >= 0) {
      AlphaBlendFrame(blended.Data(), 20, blended.Data(), 20, src.Data(), 20, expected, 5, 2);
    }
    EXPECT_EQ(dst.Packed(), blended.Packed()) << id << " " << percent;
  }
}

TEST(RenderPath, SourceOfAnotherSizeIsNeverReadBeyondItsEnd) {
  for (const int32_t id : {46, 15, 39, 63}) {
    for (const auto& [sw, sh] : {std::pair{3, 2}, {9, 9}, {20, 1}, {1, 20}}) {
      FrameBuffer src(sw, sh), dst(8, 6);
      src.FillTestPicture();
      auto info = std::make_shared<NLEFilterInfo>();
      NLEPureCFilter filter(info);
      filter.Init(FindEffectByID, RecordOf(id));
      EXPECT_EQ(filter.Render(src.Data(), sw, sh, src.Step(), 0, 0, 0, 0, dst.Data(), 8, 6, 32), 0);
      EXPECT_TRUE(dst.GuardsIntact());
    }
  }
}

TEST(RenderPath, SmallerSourceGoesOnWithItsLastRow) {
  NLEPureCFilter filter(std::make_shared<NLEFilterInfo>());
  const EffectPluginInfo record = ProbeRecord(25);
  filter.Init(Probe::Make, &record);
  FrameBuffer low(4, 2, 12), dst(4, 5);
  low.FillTestPicture();
  ASSERT_EQ(filter.Render(low.Data(), 4, 2, low.Step(), 0, 0, 0, 0, dst.Data(), 4, 5, 16), 0);
  ASSERT_EQ(Probe::lastSource.size(), 5u * 28);
  for (int32_t y = 0; y < 5; ++y) {
    EXPECT_EQ(std::memcmp(&Probe::lastSource[28 * static_cast<size_t>(y)], low.Pixel(0, std::min(y, 1)), 28), 0) << y;
  }
}

// Effects that lean on OpenCV, which knows no such rows.
TEST(RenderPath, RowsOfANarrowerSourceOverlap) {
  for (const int32_t id : {15, 39, 63}) {
    FrameBuffer narrow(5, 9), apart(8, 6), fromNarrow(8, 6), fromApart(8, 6);
    narrow.FillOpaquePicture();
    for (int y = 0; y < 6; ++y) std::memcpy(apart.Pixel(0, y), narrow.Pixel(0, y), 32);
    const ParamValueArray values = Values(id, {2});
    MakeEffect(id, 8, 6)->Process(narrow.Data(), fromNarrow.Data(), narrow.Step(), 32, &values);
    MakeEffect(id, 8, 6)->Process(apart.Data(), fromApart.Data(), 32, 32, &values);
    EXPECT_EQ(fromNarrow.Packed(), fromApart.Packed()) << id;
  }
}

TEST(RenderPath, FailingFactoryGivesOne) {
  NLEPureCFilter filter(std::make_shared<NLEFilterInfo>());
  const EffectPluginInfo record = ProbeRecord(0);
  EXPECT_EQ(filter.Init(Probe::Make, &record), 1);
  FrameBuffer src(2, 2), dst(2, 2);
  EXPECT_EQ(filter.Render(src.Data(), 2, 2, 8, 0, 0, 0, 0, dst.Data(), 2, 2, 8), 1);
}

// The two forms of the blend for one pixel, straight from their formulas.
uint32_t ScalarPixel(const uint8_t* t, const uint8_t* u, int a) {
  const int b = 255 - a;
  const int alpha = (u[3] * b + t[3] * a) / 255;
  if (alpha == 0) return 0;
  uint32_t word = static_cast<uint32_t>(alpha) << 24;
  for (int c = 0; c < 3; ++c) {
    word |= static_cast<uint32_t>((int64_t{t[c]} * t[3] * a + int64_t{u[c]} * b * 255) / 65025 & 255) << (8 * c);
  }
  return word;
}
uint32_t BlockPixel(const uint8_t* t, const uint8_t* u, int a) {
  const auto d = [](int x) { return (x + (x >> 8) + 128) >> 8; };
  const int b = 255 - a;
  const int weight = d(t[3] * a);
  uint32_t word = static_cast<uint32_t>((d(u[3] * b) + d(255 * weight)) & 255) << 24;
  for (int c = 0; c < 3; ++c) word |= static_cast<uint32_t>((d(u[c] * b) + d(t[c] * weight)) & 255) << (8 * c);
  return word;
}

TEST(AlphaBlend, FormsAlternateByTheAddressOfTheRow) {
  for (const int alpha : {1, 77, 127, 128, 200, 254, 255, 999}) {
    for (const int32_t width : {1, 2, 3, 4, 5, 7, 8, 13, 33}) {
      for (const int32_t padding : {0, 4, 8, 12}) {
        FrameBuffer top(width, 3, padding), bottom(width, 3), out(width, 3, padding);
        top.FillTestPicture(static_cast<uint32_t>(alpha));
        bottom.FillTestPicture(99);
        top.Pixel(0, 1)[3] = bottom.Pixel(0, 1)[3] = 0;
        AlphaBlendFrame(out.Data(), out.Step(), top.Data(), top.Step(), bottom.Data(), bottom.Step(), alpha, width, 3);
        for (int32_t y = 0; y < 3; ++y) {
          const auto address = reinterpret_cast<uintptr_t>(out.Pixel(0, y));
          const auto head = std::min<int32_t>(width, static_cast<int32_t>((16 - address % 16) % 16 / 4));
          const int32_t blocks = (width - head) / 4 * 4;
          for (int32_t x = 0; x < width; ++x) {
            const bool block = x >= head && x < head + blocks;
            const int a = std::min(alpha, 255);
            ASSERT_EQ(out.Word(x, y), block ? BlockPixel(top.Pixel(x, y), bottom.Pixel(x, y), a)
                                            : ScalarPixel(top.Pixel(x, y), bottom.Pixel(x, y), a))
                << alpha << " " << width << " " << padding << " " << x << " " << y;
          }
        }
      }
    }
  }
}

TEST(AlphaBlend, ZeroOpacityCopiesTheSource) {
  FrameBuffer bottom(3, 2, 4), top(3, 2), same(3, 2, 4), other(3, 2, 8);
  bottom.FillTestPicture();
  bottom.Data()[12] = 77;  // padding
  AlphaBlendFrame(same.Data(), same.Step(), top.Data(), top.Step(), bottom.Data(), bottom.Step(), 0, 3, 2);
  EXPECT_EQ(same.Packed(), bottom.Packed());
  EXPECT_EQ(same.Data()[12], 77) << "equal steps copy everything";
  AlphaBlendFrame(other.Data(), other.Step(), top.Data(), top.Step(), bottom.Data(), bottom.Step(), 0, 3, 2);
  EXPECT_EQ(other.Packed(), bottom.Packed());
  EXPECT_EQ(other.Data()[12], 0);
}

TEST(BlendTables, RoundAndScreen) {
  const BlendTables& tables = BlendTables::Get();
  EXPECT_EQ(tables.multiply[255][255], 255);
  EXPECT_EQ(tables.multiply[100][200], 78);  // 78.43
  EXPECT_EQ(tables.multiply[50][130], 25);   // 25.49
  EXPECT_EQ(tables.multiply[51][130], 26);   // exactly 26
  EXPECT_EQ(tables.screen[0][0], 1);         // 255 - (65025 >> 8)
  EXPECT_EQ(tables.screen[255][0], 255);
}

TEST(MyResize, EqualSizesCopyAndOthersInterpolate) {
  FrameBuffer src(2, 2), same(2, 2, 8), twice(4, 4);
  src.SetPixel(0, 0, 0, 0, 0, 255);
  src.SetPixel(1, 0, 100, 100, 100, 255);
  src.SetPixel(0, 1, 200, 200, 200, 255);
  src.SetPixel(1, 1, 40, 40, 40, 255);
  MyResize(src.Data(), same.Data(), 2, 2, same.Step(), 2, 2, src.Step());
  EXPECT_EQ(same.Packed(), src.Packed());
  MyResize(src.Data(), twice.Data(), 4, 4, twice.Step(), 2, 2, src.Step());
  EXPECT_EQ(twice.Pixel(0, 0)[0], 0);
  // Weights 127 and 127 of 255: round(100 * 127 / 255) = 50.
  EXPECT_EQ(twice.Pixel(1, 0)[0], 50);
  // Column 3 lies between source column 1 and itself: twice round(100 * 127 / 255).
  EXPECT_EQ(twice.Pixel(3, 0)[0], 100);
  EXPECT_EQ(twice.Pixel(3, 0)[3], 254);
  MyResize(nullptr, twice.Data(), 4, 4, 16, 2, 2, 8);
  MyResize(src.Data(), twice.Data(), 0, 4, 16, 2, 2, 8);
  EXPECT_EQ(twice.Pixel(1, 0)[0], 50);
}

}  // namespace

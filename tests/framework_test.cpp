// Effect table, factory, frame helpers, numbers and the random stream.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <thread>

#include "framework/factory/effect_table.h"
#include "framework/material_path.h"
#include "framework/numeric.h"
#include "framework/random.h"
#include "tests/support/frames.h"

namespace {

std::string Narrow(const char16_t* text) {
  std::string out;
  for (; *text; ++text) out += static_cast<char>(*text);
  return out;
}

TEST(EffectTable, HasTheGivenRecordsAtTheirPlaces) {
  ASSERT_GE(GetEffectsCounts(), 242);  // hosts know so many, and more may come behind them
  const struct {
    uint32_t index;
    int32_t id;
    const char* name;
    int32_t params;
    const char* guid;
  } given[] = {{0, 25, "Brightness", 1, "10319440-50F9-4400-B74F-A975F7C5AB96"},
               {1, 22, "Cluster", 2, "DC8F984A-4178-497c-8AAE-4F4C896FC79F"},
               {241, 1390, "BGFGray", 4, "4CA18BF7-63DD-4984-84EE-E945D72C4BEF"}};
  for (const auto& expected : given) {
    const EffectPluginInfo* record = GetEffectPluginsInfo(expected.index);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->reserved, 0);
    EXPECT_EQ(record->effectId, expected.id);
    EXPECT_EQ(Narrow(record->name), expected.name);
    EXPECT_EQ(record->paramCount, expected.params);
    EXPECT_EQ(Narrow(record->guid), expected.guid);
  }
  EXPECT_EQ(GetEffectPluginsInfo(static_cast<uint32_t>(GetEffectsCounts())), nullptr);
  EXPECT_EQ(GetEffectPluginsInfo(UINT32_MAX), nullptr);
  EXPECT_EQ(GetEffectPixFormat(), 0);
}

TEST(EffectTable, IdsAndGuidsAreUniqueAndWellFormed) {
  std::set<int32_t> ids;
  std::set<std::u16string> guids;
  for (const EffectRow& row : EffectRows()) {
    EXPECT_TRUE(ids.insert(row.id).second) << row.id;
    if (!row.name) continue;
    EXPECT_EQ(std::u16string(row.guid).size(), 36u) << row.id;
    EXPECT_TRUE(guids.insert(row.guid).second) << row.id;
  }
  EXPECT_EQ(guids.size(), RecordRows().size());
}

TEST(Factory, RefusesGapsAndNullAndLeavesTheOutAlone) {
  int marker;
  auto* untouched = reinterpret_cast<CBaseFilterProc*>(&marker);
  CBaseFilterProc* out = untouched;
  for (const int32_t id : {0, -1, 2, 5, 8, 68, 137, 185, 192, 255, 279, 281, 331, 364, 371, 1373, 1391, 2372}) {
    EXPECT_EQ(FindEffectByID(id, 8, 8, &out), 0) << id;
    EXPECT_EQ(out, untouched);
  }
  EXPECT_EQ(FindEffectByID(25, 8, 8, nullptr), 0);
}

TEST(Factory, EveryProcessorReportsItsRecordsParametersAndNoMore) {
  for (const EffectRow& row : EffectRows()) {
    const auto processor = MakeEffect(row.id, 640, 640);
    if (!processor) continue;
    EXPECT_EQ(processor->width, 640) << row.id;
    EXPECT_EQ(processor->height, 640) << row.id;
    EXPECT_EQ(processor->frameRate, 25.0) << row.id;
    FilterParamDesc beyond{};
    processor->GetParamDesc(&beyond, 12);
    EXPECT_EQ(beyond.name[0], u'\0') << row.id;
    processor->GetParamDesc(&beyond, -1);
    EXPECT_EQ(beyond.name[0], u'\0') << row.id;
  }
}

TEST(CopyRows, CopiesByStepAndRefusesEmptySizes) {
  FrameBuffer src(640, 2, 4096 - 2560);
  FrameBuffer dst(640, 2);
  src.FillTestPicture();
  EXPECT_TRUE(CopyRows(src.Data(), dst.Data(), 640, 2, 4096, 2560));
  EXPECT_EQ(src.Packed(), dst.Packed());

  FrameBuffer same(4, 3, 8);
  FrameBuffer copy(4, 3, 8);
  same.Fill(7);
  EXPECT_TRUE(CopyRows(same.Data(), copy.Data(), 4, 3, 24, 24));
  EXPECT_EQ(copy.Data()[20], 7) << "equal steps copy the padding too";

  copy.Fill(1);
  EXPECT_FALSE(CopyRows(same.Data(), copy.Data(), 0, 3, 24, 24));
  EXPECT_FALSE(CopyRows(same.Data(), copy.Data(), 4, 0, 24, 24));
  EXPECT_FALSE(CopyRows(same.Data(), copy.Data(), 4, 3, 0, 24));
  EXPECT_FALSE(CopyRows(same.Data(), copy.Data(), 4, 3, 24, -24));
  EXPECT_FALSE(CopyRows(nullptr, copy.Data(), 4, 3, 24, 24));
  EXPECT_EQ(copy.Data()[0], 1);
}

TEST(Numbers, TruncationAndClampsAtTheirRims) {
  EXPECT_EQ(Trunc32(2147483647.9), INT32_MAX);
  EXPECT_EQ(Trunc32(2147483648.0), INT32_MIN);
  EXPECT_EQ(Trunc32(-2147483648.9), INT32_MIN);
  EXPECT_EQ(Trunc32(-1.9), -1);
  EXPECT_EQ(Trunc32(std::numeric_limits<double>::quiet_NaN()), INT32_MIN);
  EXPECT_EQ(Trunc32(std::numeric_limits<double>::infinity()), INT32_MIN);
  const struct {
    int32_t in, out;
  } clamps[] = {{INT32_MIN, 0}, {-1, 0}, {0, 0}, {1, 1}, {254, 254}, {255, 255}, {256, 255}, {INT32_MAX, 255}};
  for (const auto& c : clamps) EXPECT_EQ(CLAMP0255(c.in), c.out) << c.in;
  // With low above high the order of the tests decides.
  EXPECT_EQ(ClampInt(5, 7, 3), 7);
  EXPECT_EQ(ClampInt(9, 7, 3), 3);
  EXPECT_EQ(ClampFloat(5, 7, 3), 7);
  EXPECT_EQ(ClampFloat(9, 7, 3), 3);
}

TEST(RandomStream, ContinuesFromOperationToOperation) {
  {
    Rand rand;
    rand.Seed(1);
    // 1 * 214013 + 2531011 = 2745024, of which the upper half is 41.
    EXPECT_EQ(rand.Next(), 41);
    EXPECT_EQ(rand.Next(), 18467);
  }
  Rand rand;
  EXPECT_EQ(rand.Next(), 6334);
}

TEST(RandomStream, IsFreeOfRaces) {
  const auto draw = [] {
    for (int i = 0; i < 200; ++i) {
      Rand rand;
      for (int k = 0; k < 50; ++k) ASSERT_LE(rand.Next(), 32767);
    }
  };
  std::thread other(draw);
  draw();
  other.join();
}

TEST(MaterialPath, EndsAsItsReadersExpect) {
  EXPECT_EQ(SetMergeImagePath(u"x"), 1);
  EXPECT_EQ(MergeImageDir(), u"x\\Merge\\");
  EXPECT_EQ(ShaderDir(), u"x\\Shader");
  EXPECT_EQ(SetMergeImagePath(nullptr), 0);
  EXPECT_EQ(MergeImageDir(), u"");
  EXPECT_EQ(ShaderDir(), u"x\\Shader");
  const std::u16string longPath(1016, u'p');
  EXPECT_EQ(SetMergeImagePath(longPath.c_str()), 1);
  EXPECT_EQ(MergeImageDir(), longPath + u"\\Merge\\");
  EXPECT_EQ(SetMergeImagePath(std::u16string(5000, u'p').c_str()), 1);
  EXPECT_EQ(MergeImageDir().size(), 1023u);
  SetMergeImagePath(nullptr);
}

}  // namespace

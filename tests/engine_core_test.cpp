// The engine's core and its shells.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <tuple>

#include "engine/engine_internal.h"
#include "engine/shells/engine_shell.h"
#include "engine/shells/shells.h"
#include "framework/factory/effect_table.h"
#include "platform/clock.h"
#include "tests/support/frames.h"

namespace {

constexpr uint32_t kStart = 1234567;

// The first record of the process draws the noise table.
class FirstRecord : public testing::Environment {
 public:
  void SetUp() override {
    PinCalendarSeconds(kStart);
    EngineRecord* record = nullptr;
    EngineCreate(&record, 5);
    EngineFree(record);
    PinCalendarSeconds(0);
  }
};
const auto* const kFirstRecord = testing::AddGlobalTestEnvironment(new FirstRecord);

struct Freed {
  void operator()(EngineRecord* record) const { EngineFree(record); }
};
using Record = std::unique_ptr<EngineRecord, Freed>;

Record Create(uint32_t code) {
  EngineRecord* record = nullptr;
  EXPECT_EQ(EngineCreate(&record, code), kEngineDone) << code;
  return Record(record);
}

EngineImage ImageOf(FrameBuffer& frame) {
  return MakeEngineImage(frame.Data(), frame.Width(), frame.Height(), frame.Step());
}

TEST(EngineTables, ClampAndNoise) {
  EXPECT_TRUE(clampTable[-256] == 0 && clampTable[-1] == 0 && clampTable[200] == 200 && clampTable[256] == 255 &&
              clampTable[511] == 255);
  uint32_t s = kStart;
  for (const uint8_t byte : randomTable) {
    s = s * 214013u + 2531011u;
    ASSERT_EQ(byte, s >> 16 & 0xFF);
  }
}

TEST(EngineCreate, RangesAndDefaults) {
  EngineRecord* record = nullptr;
  for (const uint32_t code : {0u, 98u, 1024u, 1044u, 2048u, 2207u, 0xFFFFFFFFu}) {
    EXPECT_EQ(EngineCreate(&record, code), kEngineBadCode) << code;
    EXPECT_EQ(EngineCreate(nullptr, code), kEngineBadCode) << code;
  }
  EXPECT_FALSE(record);
  EXPECT_EQ(EngineCreate(nullptr, 5), kEngineFailed);
  EXPECT_EQ(EngineFree(nullptr), kEngineFailed);

  const struct {
    uint32_t code, mask;
    int32_t radius, top, bottom, quad;
    float point;
  } cases[] = {{1, 1, 50, 0, 100, 100, 50},   {24, 7, 50, 0, 100, 100, 50},  {29, 16, 50, 0, 100, 100, 50},
               {62, 35, 50, 0, 100, 100, 50}, {63, 67, 30, 0, 100, 100, 50}, {64, 0, 50, 0, 100, 100, 50},
               {70, 0, 50, 0, 100, 100, 50},  {1032, 6, 50, 0, 100, 0, 0},   {1034, 4, 50, 0, 100, 0, 0},
               {1036, 1, 50, 0, 100, 0, 0},   {1037, 33, 50, 0, 100, 0, 0},  {1041, 8, 50, 40, 60, 0, 0},
               {2049, 16, 50, 0, 100, 0, 0},  {2206, 0, 50, 0, 100, 0, 0}};
  for (const auto& c : cases) {
    const Record made = Create(c.code);
    EXPECT_EQ(made->code, c.code);
    EXPECT_EQ(made->paramMask, c.mask) << c.code;
    EXPECT_EQ(made->radius, c.radius);
    EXPECT_EQ(made->rectTop, c.top);
    EXPECT_EQ(made->rectBottom, c.bottom);
    EXPECT_TRUE(made->quadX[0] == 0 && made->quadX[1] == 0 && made->quadX[2] == c.quad && made->quadX[3] == c.quad);
    EXPECT_TRUE(made->quadY[0] == 0 && made->quadY[1] == c.quad && made->quadY[2] == c.quad && made->quadY[3] == 0);
    EXPECT_EQ(made->pointX, c.point);
    EXPECT_TRUE(made->level == 50 && made->posX == 50 && made->posY == 50 && made->rectRight == 100);
    EXPECT_TRUE(made->width == 0 && made->direction == 0 && made->frameRate == 0 && made->dirtyFlags == kDirtyAll);
  }
}

TEST(EngineRun, RefusesAndTouchesNothing) {
  FrameBuffer frame(4, 3);
  frame.FillTestPicture();
  const std::vector<uint8_t> before = frame.Packed();
  const EngineImage good = ImageOf(frame);
  const Record record = Create(14);
  std::array<EngineImage, 8> bad;
  bad.fill(good);
  bad[0].structSize -= 1;
  bad[1].pixels = nullptr;
  bad[2].totalBytes = 0;
  bad[3].width = 0;
  bad[4].height = -1;
  bad[5].stepBytes = 0;
  bad[6].bitsPerPixel = 24;
  bad[7].width = -4;
  for (const EngineImage& image : bad) EXPECT_EQ(EngineRun(record.get(), &image, nullptr), kEngineBadImage);
  EXPECT_EQ(EngineRun(record.get(), nullptr, nullptr), kEngineBadImage);
  EXPECT_EQ(record->width, 0);
  EXPECT_EQ(EngineRun(nullptr, &good, nullptr), kEngineBadRecord);
  record->structSize += 1;
  EXPECT_EQ(EngineRun(record.get(), &good, nullptr), kEngineBadRecord);
  EXPECT_EQ(EngineFree(record.get()), kEngineBadRecord);
  record->structSize -= 1;
  EXPECT_EQ(EngineRun(Create(70).get(), &good, nullptr), kEngineFailed);
  EXPECT_EQ(frame.Packed(), before);
  EXPECT_EQ(EngineRun(record.get(), &good, nullptr), kEngineDone);
  EXPECT_NE(frame.Packed(), before);
}

TEST(EngineRun, SizeChangeMarksParticlesOnly) {
  FrameBuffer wide(4, 3), high(3, 4);
  const EngineImage first = ImageOf(wide), second = ImageOf(high);
  const Record record = Create(50);  // keeps tables
  EngineRun(record.get(), &first, nullptr);
  EXPECT_EQ(record->dirtyFlags, kDirtyAll & ~kDirtyTables);
  record->dirtyFlags = 0;
  record->tableBuffer[0] = 77;
  EngineRun(record.get(), &first, nullptr);
  EXPECT_EQ(record->dirtyFlags, 0u);
  EngineRun(record.get(), &second, nullptr);
  EXPECT_EQ(record->dirtyFlags, kDirtyParticles);
  EXPECT_TRUE(record->width == 3 && record->height == 4);
  EXPECT_EQ(record->tableBuffer[0], 77) << "tables are not built again";
}

TEST(EngineScratch, GrowsAndTellsOfIt) {
  const Record record = Create(5);
  record->dirtyFlags = 0;
  uint8_t* large = EnsureTable(*record, 64, 32);
  EXPECT_EQ(record->dirtyFlags, 32u);
  record->dirtyFlags = 0;
  EXPECT_EQ(EnsureTable(*record, 16, 32), large);
  EXPECT_TRUE(record->dirtyFlags == 0 && record->tableCapacity == 64);
  EXPECT_TRUE(EnsureTable(*record, 65, 5) && record->dirtyFlags == 5);
  EXPECT_TRUE(EnsureWorkCopy(*record, 8) && EnsureSourceCopy(*record, 9));
  EXPECT_TRUE(record->workCapacity == 8 && record->sourceCapacity == 9);
}

std::unique_ptr<CBaseFilterProc> Shell(int32_t id, int32_t width = 320, int32_t height = 8) {
  return std::unique_ptr<CBaseFilterProc>(MakeEngineShell(*FindEffectRow(id), width, height));
}

FilterParamDesc Describe(CBaseFilterProc& shell, int32_t index) {
  FilterParamDesc desc{};
  desc.type = -1;
  shell.GetParamDesc(&desc, index);
  return desc;
}

TEST(Shells, DescribeTheirParameters) {
  struct Row {
    const char16_t* name;
    double minimum, value, maximum;
  };
  const std::vector<Row> percent = {{u"Percent", 0, 50, 100}};
  const std::vector<Row> position = {{u"xPos", 0, 50, 100}, {u"yPos", 0, 50, 100}, {u"Percent", 0, 50, 100}};
  const std::vector<Row> band = {
      {u"LeftPos", 0, 0, 320}, {u"RightPos", 0, 100, 320}, {u"TopPos", 0, 40, 8}, {u"BottomPos", 0, 60, 8}};
  const struct {
    std::vector<int32_t> ids;
    std::vector<Row> rows;
  } cases[] = {
      {{84, 75, 77, 81, 86, 80, 79, 78, 82, 133, 76, 83, 134, 174, 170, 181, 176, 175, 173}, percent},
      {{135}, {{u"Percent", 0, 30, 100}, {u"Direction", 0, 1, 3}, {u"Radius", 4, 20, 100}}},
      {{74}, {{u"Percent", 0, 20, 100}, {u"Direction", 0, 1, 3}, {u"Radius", 1, 80, 100}}},
      {{136}, {{u"DecolorPosX", 0, 50, 100}, {u"DecolorPosY", 0, 50, 100}, {u"Radius", 0, 30, 100}}},
      {{103}, {{u"Red", 0, 0, 255}, {u"Green", 0, 0, 255}, {u"Blue", 0, 0, 255}}},
      {{98},
       {{u"Percent", 0, 50, 100}, {u"PositionX", 0, 50, 100}, {u"PositionY", 0, 50, 100}, {u"Radius", 1, 50, 100}}},
      {{167}, {{u"Radius", 0, 85, 100}}},
      {{178, 179, 180}, position},
      {{182}, {{u"Percent", 0, 50, 100}, {u"Direction", 0, 0, 3}}},
      {{183, 184}, band},
      {{177}, {{u"Position_X", 0, 50, 100}, {u"Position_Y", 0, 50, 100}, {u"Radius", 2, 30, 100}}},
      {{85, 118, 131, 168, 169, 171, 187, 188, 190}, {}},
  };
  for (const auto& c : cases) {
    for (const int32_t id : c.ids) {
      const auto shell = Shell(id);
      ASSERT_TRUE(shell) << id;
      for (size_t i = 0; i < c.rows.size(); ++i) {
        const FilterParamDesc desc = Describe(*shell, static_cast<int32_t>(i));
        EXPECT_EQ(std::u16string(desc.name), c.rows[i].name) << id;
        EXPECT_TRUE(desc.index == static_cast<int32_t>(i) && desc.type == 0) << id;
        EXPECT_EQ(std::tie(desc.minimum, desc.defaultValue, desc.maximum),
                  std::tie(c.rows[i].minimum, c.rows[i].value, c.rows[i].maximum))
            << id << " " << i;
      }
      for (const int32_t beyond : {static_cast<int32_t>(c.rows.size()), -1}) {
        EXPECT_EQ(Describe(*shell, beyond).type, -1) << id << ": left alone";
      }
    }
  }
}

// What a shell takes is not always what it describes. The descriptions' defaults are the record's present values.
TEST(Shells, TakeTheirParameters) {
  const struct {
    int32_t id;
    std::initializer_list<double> taken;
    std::vector<double> record;
  } cases[] = {
      {79, {70.9}, {70}},
      {77, {33.5}, {16}},  // 320 * 33.5 / 640
      {134, {9}, {9}},
      {135, {40, 2, 12}, {40, 2, 12}},
      {136, {12.25, 7.5, 3.9}, {12.25, 7.5, 3}},
      {103, {300, 20, -1}, {44, 20, 255}},  // bytes
      {98, {1, 2, 3, 4}, {4, 1, 2, 3}},     // described percentage first, taken last
      {167, {12}, {85}},                    // described as constants
      {177, {1, 2, 3}, {50, 50, 30}},
      {180, {1, 2, 3}, {1, 2, 3}},
      {182, {8, 3}, {8, 3}},
      {183, {8, 3, 5, 6}, {0, 100, 40, 60}},  // the described rectangle is never taken
      {181, {1, 2, 3}, {3}},                  // three taken, the last described
      {80, {std::nan("")}, {INT32_MIN}},
  };
  for (const auto& c : cases) {
    const auto shell = Shell(c.id);
    FrameBuffer frame(320, 8);
    frame.FillTestPicture();
    RunFrame(*shell, frame, frame, Values(c.id, c.taken));
    for (size_t i = 0; i < c.record.size(); ++i) {
      EXPECT_EQ(Describe(*shell, static_cast<int32_t>(i)).defaultValue, c.record[i]) << c.id << " " << i;
    }
  }
}

TEST(Shells, CopyAcrossStepsThenRunInPlace) {
  FrameBuffer src(5, 4, 12), dst(5, 4, 40);
  src.FillTestPicture();
  const std::vector<uint8_t> before = src.Packed();
  const auto negative = MakeEffect(88, 5, 4);
  RunFrame(*negative, src, dst, Values(88));
  for (int32_t y = 0; y < 4; ++y) {
    for (int32_t x = 0; x < 5; ++x) EXPECT_EQ(dst.Word(x, y), src.Word(x, y) ^ 0x00FFFFFF);
  }
  EXPECT_EQ(src.Packed(), before);
  EXPECT_TRUE(src.GuardsIntact() && dst.GuardsIntact());
}

}  // namespace

// The engine's core and its shells.
#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "engine/engine_internal.h"
#include "platform/clock.h"
#include "tests/support/draws.h"
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
  Draws draws(kStart);
  for (const uint8_t byte : randomTable) ASSERT_EQ(byte, draws() & 0xFF);
}

TEST(EngineCreate, RefusesOtherCodes) {
  EngineRecord* record = nullptr;
  for (const uint32_t code : {0u, 98u, 1024u, 1044u, 2048u, 2207u, 0xFFFFFFFFu}) {
    EXPECT_EQ(EngineCreate(&record, code), kEngineBadCode) << code;
    EXPECT_EQ(EngineCreate(nullptr, code), kEngineBadCode) << code;
  }
  EXPECT_FALSE(record);
  EXPECT_EQ(EngineCreate(nullptr, 5), kEngineFailed);
  EXPECT_EQ(EngineFree(nullptr), kEngineFailed);
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
  for (const EngineImage& image : bad) EXPECT_EQ(EngineRunFrom(record.get(), image, image, nullptr), kEngineBadImage);
  EXPECT_EQ(record->width, 0);
  EXPECT_EQ(EngineRunFrom(nullptr, good, good, nullptr), kEngineBadRecord);
  record->structSize += 1;
  EXPECT_EQ(EngineRunFrom(record.get(), good, good, nullptr), kEngineBadRecord);
  EXPECT_EQ(EngineFree(record.get()), kEngineBadRecord);
  record->structSize -= 1;
  EXPECT_EQ(EngineRunFrom(Create(70).get(), good, good, nullptr), kEngineFailed);
  EXPECT_EQ(frame.Packed(), before);
  EXPECT_EQ(EngineRunFrom(record.get(), good, good, nullptr), kEngineDone);
  EXPECT_NE(frame.Packed(), before);
}

TEST(EngineRun, SizeChangeMarksParticlesOnly) {
  FrameBuffer wide(4, 3), high(3, 4);
  const EngineImage first = ImageOf(wide), second = ImageOf(high);
  const Record record = Create(50);  // keeps tables
  EngineRunFrom(record.get(), first, first, nullptr);
  EXPECT_EQ(record->dirtyFlags, kDirtyAll & ~kDirtyTables);
  record->dirtyFlags = 0;
  record->tableBuffer[0] = 77;
  EngineRunFrom(record.get(), first, first, nullptr);
  EXPECT_EQ(record->dirtyFlags, 0u);
  EngineRunFrom(record.get(), second, second, nullptr);
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

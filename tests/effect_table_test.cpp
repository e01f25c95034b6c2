// What the rows of the effect table say of effects is what effects do. Whoever adds an effect and forgets a word in its
// row is told here which.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <map>
#include <random>

#include "Source/BGFCommon.h"
#include "framework/factory/effect_table.h"
#include "framework/random.h"
#include "platform/clock.h"
#include "tests/support/frames.h"
#include "tests/support/materials.h"

namespace {

void SeedRandom(uint32_t seed) {
  Rand rand;
  rand.Seed(seed);
}

// Values from the ranges that the processor reports, `share` of the way up; beyond 1 at random.
ParamValueArray ValuesAt(CBaseFilterProc& processor, int32_t id, double share, uint32_t seed) {
  std::mt19937 random(seed);
  ParamValueArray values = Values(id);
  for (int32_t i = 0; i < 12; ++i) {
    FilterParamDesc desc{};
    processor.GetParamDesc(&desc, i);
    const double at = share <= 1 ? share : static_cast<double>(random() % 1001) / 1000;
    values.value[i] = std::floor(desc.minimum + at * (desc.maximum - desc.minimum));
  }
  return values;
}

constexpr double kShares[] = {0, 0.3, 0.6, 1, 2, 2};

// Frames of an effect at some values. What stands in the destination before is `fill`.
struct Clip {
  std::vector<std::vector<uint8_t>> frames;
  bool sourceKept = true;
};
Clip Render(int32_t id, double share, uint32_t seed, uint8_t fill, std::vector<int32_t> numbers, int32_t width = 64,
            int32_t height = 36) {
  Clip clip;
  const auto processor = MakeEffect(id, width, height);
  const ParamValueArray values = ValuesAt(*processor, id, share, seed);
  FrameBuffer src(width, height), dst(width, height);
  for (const int32_t number : numbers) {
    src.FillTestPicture(static_cast<uint32_t>(number + 1));
    const std::vector<uint8_t> before = src.Packed();
    dst.Fill(fill);
    RunFrame(*processor, src, dst, values, number, 60);
    clip.sourceKept = clip.sourceKept && src.Packed() == before;
    clip.frames.push_back(dst.Packed());
  }
  return clip;
}

// The engine draws its noise table once by process, from the calendar, for the first effect that is made: the test that
// wants tables of its own comes first, and all others see one and the same. (181 shows what it is from most seconds,
// not from all.)
const bool g_pinned = [] {
  PinCalendarSeconds(1'700'000'000);
  return true;
}();

// All sums of a process whose clock stands at `second`.
std::map<int32_t, uint64_t> SumsAtSecond(uint32_t second) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    PinCalendarSeconds(second);
    for (const EffectRow& row : EffectRows()) {
      MakeEffect(row.id, 8, 8);  // the first one draws the table
      SeedRandom(second);
      uint64_t sum = 0;
      for (const double share : kShares) {
        for (const auto& frame : Render(row.id, share, 5, 0x40, {0, 1, 7}).frames) {
          for (const uint8_t byte : frame) sum = sum * 1099511628211u + byte;
        }
      }
      const uint64_t line[2] = {static_cast<uint64_t>(row.id), sum};
      if (write(ends[1], line, sizeof line) != sizeof line) _exit(1);
    }
    _exit(0);
  }
  close(ends[1]);
  std::map<int32_t, uint64_t> sums;
  uint64_t line[2];
  while (read(ends[0], line, sizeof line) == sizeof line) sums[static_cast<int32_t>(line[0])] = line[1];
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  return sums;
}

TEST(EffectRows, RandomMeansThatClockOrStreamShow) {
  const SmallMaterials materials;
  const auto one = SumsAtSecond(1'700'000'000), other = SumsAtSecond(1'712'345'678);
  ASSERT_EQ(one.size(), EffectRows().size());
  for (const EffectRow& row : EffectRows()) {
    EXPECT_EQ((row.traits & kRandom) != 0, one.at(row.id) != other.at(row.id))
        << "effect " << row.id << ": kRandom in its row of the effect table must say whether two runs differ";
  }
}

TEST(EffectRows, RangesOfIdsMeanTheirClasses) {
  for (const EffectRow& row : EffectRows()) {
    const auto processor = MakeEffect(row.id, 8, 8);
    EXPECT_EQ(IsTimeDrivenId(row.id), dynamic_cast<CTimeRelateFilter*>(processor.get()) != nullptr)
        << "effect " << row.id << ": ids that IsTimeDrivenId names are rendered by the frame count. Take an id outside "
        << "them, or derive from CTimeRelateFilter; a CTimeRelateFilter needs an id inside";
    EXPECT_EQ(IsBackgroundFillId(row.id), dynamic_cast<BGFCommon*>(processor.get()) != nullptr)
        << "effect " << row.id << ": ids that IsBackgroundFillId names lose the blend. Take an id outside them; a "
        << "BGFCommon needs an id inside";
  }
}

// Frames 0, 1, ... of one object, each with values of its own if `varied`; then each of them by itself.
bool DependsOnFramesBefore(int32_t id, double share, uint32_t seed, bool varied) {
  constexpr int32_t kNumbers[] = {0, 1, 2, 3, 14, 15};
  FrameBuffer src(64, 36), dst(64, 36);
  const auto render = [&](CBaseFilterProc& processor, const ParamValueArray& values, int32_t number) {
    src.FillTestPicture(static_cast<uint32_t>(number + 1));
    dst.Fill(0x40);
    RunFrame(processor, src, dst, values, number, 60);
    return dst.Packed();
  };
  SeedRandom(seed);
  const auto running = MakeEffect(id, 64, 36);
  const ParamValueArray constant = ValuesAt(*running, id, share, seed);
  for (const int32_t number : kNumbers) {
    const auto fresh = MakeEffect(id, 64, 36);
    const ParamValueArray values = varied ? ValuesAt(*fresh, id, 2, seed + static_cast<uint32_t>(number)) : constant;
    const std::vector<uint8_t> inOrder = render(*running, values, number);
    SeedRandom(seed);
    const auto alone = MakeEffect(id, 64, 36);
    if (number > 0 && render(*alone, values, number) != inOrder) return true;
  }
  return false;
}

TEST(EffectRows, OrderedMeansThatAFrameNeedsThoseBeforeIt) {
  const SmallMaterials materials;
  for (const EffectRow& row : EffectRows()) {
    // Those of 11 depend on the stream alone; 321, 360 and 1386 keep what other objects and values left.
    bool apart = row.id == 11 || row.id == 321 || row.id == 360 || row.id == 1386;
    for (const double share : kShares) {
      for (uint32_t seed = 1; seed <= 2 && !apart; ++seed) {
        apart = DependsOnFramesBefore(row.id, share, seed, false) || DependsOnFramesBefore(row.id, share, seed, true);
      }
    }
    EXPECT_EQ((row.traits & kOrdered) != 0, apart)
        << "effect " << row.id
        << ": kOrdered in its row of the effect table must say whether frames depend on those before";
  }
}

TEST(EffectRows, WhoeverMovesTheRandomStreamSaysSo) {
  const SmallMaterials materials;
  SeedRandom(3);
  const int32_t untouched = Rand().Next();
  for (const EffectRow& row : EffectRows()) {
    if (row.traits & kRandom) continue;
    bool moves = false;
    for (const double share : kShares) {
      SeedRandom(3);
      Render(row.id, share, 9, 0x40, {0, 20, 30, 59});
      moves = moves || Rand().Next() != untouched;
    }
    EXPECT_TRUE((row.traits & kMovesStream) || !moves) << "effect " << row.id << ": kMovesStream is not in its row";
  }
}

TEST(EffectRows, WritesSourceAndLeavesPixelsAreTold) {
  for (const EffectRow& row : EffectRows()) {
    bool writes = false, leaves = false;
    for (const bool withMaterials : {true, false}) {
      const auto materials = withMaterials ? std::make_unique<SmallMaterials>() : nullptr;
      for (const double share : kShares) {
        for (const auto& [width, height] : {std::pair{64, 36}, {33, 61}, {7, 3}}) {
          SeedRandom(3);
          const Clip one = Render(row.id, share, 9, 0x40, {0, 20, 30, 59}, width, height);
          SeedRandom(3);
          const Clip other = Render(row.id, share, 9, 0xA7, {0, 20, 30, 59}, width, height);
          writes = writes || !one.sourceKept;
          leaves = leaves || one.frames != other.frames;
        }
      }
    }
    EXPECT_EQ((row.traits & kWritesSource) != 0, writes) << "effect " << row.id << ": kWritesSource in its row";
    EXPECT_EQ((row.traits & kLeavesPixels) != 0, leaves) << "effect " << row.id << ": kLeavesPixels in its row";
  }
}

}  // namespace

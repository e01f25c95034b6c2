// The bytes of every effect, held as checksums: a later change that moves one is seen. The same under every vector
// target of the machine. `scripts/renew_checksums.sh` writes the file anew.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "framework/factory/effect_table.h"
#include "framework/random.h"
#include "platform/clock.h"
#include "tests/support/frames.h"

namespace {

constexpr int32_t kFrames = 4;

uint64_t Fnv(const std::vector<uint8_t>& bytes, uint64_t hash) {
  for (const uint8_t byte : bytes) hash = (hash ^ byte) * 1099511628211u;
  return hash;
}

void SeedRandom(uint32_t seed) {
  Rand rand;
  rand.Seed(seed);
}

// Some frames of a clip in two sizes, with the processor's own defaults.
uint64_t ChecksumOf(int32_t id) {
  uint64_t hash = 14695981039346656037u;
  for (const auto& [width, height, padding] : {std::tuple{97, 53, 12}, {160, 90, 0}}) {
    SeedRandom(static_cast<uint32_t>(id));
    const auto processor = MakeEffect(id, width, height);
    ParamValueArray values = Values(id);
    for (int32_t i = 0; i < 12; ++i) {
      FilterParamDesc desc{};
      processor->GetParamDesc(&desc, i);
      values.value[i] = desc.defaultValue;
    }
    FrameBuffer src(width, height, padding), dst(width, height, padding);
    dst.Fill(0x40);
    for (int32_t frame = 0; frame < kFrames; ++frame) {
      src.FillTestPicture(static_cast<uint32_t>(frame + 1));
      RunFrame(*processor, src, dst, values, frame * 15, 60);
      hash = Fnv(dst.Packed(), hash);
    }
  }
  return hash;
}

// Effects whose process-wide state goes on from whatever ran before: a second round in one process differs.
bool GoesOn(int32_t id) {
  return id == 52 || id == 72 || id == 73 || id == 356 || id == 360 || id == 1386;
}

std::map<int32_t, uint64_t> AllChecksums() {
  std::map<int32_t, uint64_t> sums;
  for (const EffectRow& row : EffectRows()) {
    if (row.make) sums[row.id] = ChecksumOf(row.id);
  }
  return sums;
}

TEST(Checksums, EveryEffectGivesTheBytesThatItGave) {
  PinCalendarSeconds(1'700'000'000);
  const std::map<int32_t, uint64_t> sums = AllChecksums();
  if (std::getenv("KVX_RENEW_CHECKSUMS")) {
    std::ofstream out(KVX_CHECKSUMS);
    for (const auto& [id, sum] : sums) {
      char line[64];
      std::snprintf(line, sizeof line, "%d %016" PRIx64 "\n", id, sum);
      out << line;
    }
    ASSERT_TRUE(out.flush());
    return;
  }
  std::ifstream file(KVX_CHECKSUMS);
  std::map<int32_t, uint64_t> expected;
  int32_t id;
  std::string sum;
  while (file >> id >> sum) expected[id] = std::strtoull(sum.c_str(), nullptr, 16);
  EXPECT_EQ(sums.size(), expected.size());
  for (const auto& [effect, value] : sums) {
    EXPECT_TRUE(expected.count(effect)) << effect;
    EXPECT_EQ(value, expected[effect]) << "effect " << effect;
  }
}

TEST(Checksums, EveryVectorTargetGivesTheSameBytes) {
  PinCalendarSeconds(1'700'000'000);
  const std::map<int32_t, uint64_t> reference = AllChecksums();
  for (int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1) {
    const int64_t target = rest & -rest;
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
    for (const auto& [id, sum] : AllChecksums()) {
      if (GoesOn(id)) continue;
      EXPECT_EQ(sum, reference.at(id)) << "effect " << id << " on " << hwy::TargetName(target);
    }
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace

// The bytes of every effect, held as checksums: a later change that moves one is seen. The same under every vector
// target of the machine. `scripts/renew_checksums.sh` writes the file anew.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "framework/factory/effect_table.h"
#include "framework/random.h"
#include "platform/clock.h"
#include "tests/support/frames.h"
#include "tests/support/materials.h"
#include "tests/support/targets.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSlow = true;
#else
constexpr bool kSlow = false;
#endif

// Of an effect's frames, and of the parameters that it reports before and after them.
struct Sums {
  uint64_t frames = 14695981039346656037u;
  uint64_t parameters = 14695981039346656037u;
  bool operator==(const Sums&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Sums& sums) {
  char text[40];
  std::snprintf(text, sizeof text, "%016" PRIx64 " %016" PRIx64, sums.frames, sums.parameters);
  return out << text;
}
using SumsById = std::map<int32_t, Sums>;

// Word by word; everything that is summed up is a whole number of words.
void Add(uint64_t& sum, const void* bytes, size_t size) {
  for (size_t i = 0; i < size; i += 4) {
    uint32_t word;
    std::memcpy(&word, static_cast<const uint8_t*>(bytes) + i, 4);
    sum = (sum ^ word) * 1099511628211u;
  }
}

// The painted materials, every eighth pixel of every eighth row: a run of all effects reads them hundreds of times.
class ReducedMaterials {
 public:
  ReducedMaterials() {
    for (const auto& file : std::filesystem::directory_iterator(KVX_TEST_RESOURCES "/kvx_effect/material/Merge")) {
      std::ifstream in(file.path(), std::ios::binary);
      const std::string bytes(std::istreambuf_iterator<char>(in), {});
      kvx::Picture whole;
      std::string error;
      EXPECT_TRUE(kvx::DecodePicture(bytes, whole, error)) << file.path() << error;
      kvx::Picture reduced(whole.width / 8, whole.height / 8);
      for (int32_t y = 0; y < reduced.height; ++y) {
        for (int32_t x = 0; x < reduced.width; ++x) std::copy_n(whole.Row(8 * y) + 32 * x, 4, reduced.Row(y) + 4 * x);
      }
      materials_.Write(file.path().filename(), kvx::EncodePng(reduced));
    }
  }

 private:
  const TemporaryMaterials materials_;
};

using Descriptions = std::array<FilterParamDesc, 12>;
Descriptions DescriptionsOf(CBaseFilterProc& processor) {
  Descriptions all{};
  for (int32_t i = 0; i < 12; ++i) processor.GetParamDesc(&all[static_cast<size_t>(i)], i);
  return all;
}

// Values along their ranges, then every value of the parameters that choose among a few.
std::vector<ParamValueArray> ValueSets(int32_t id, const Descriptions& descriptions) {
  constexpr double kShares[] = {0.3, 0.6, 0.85, 0, 1};
  constexpr int kFew = 16, kReal = 2;
  std::vector<ParamValueArray> sets;
  for (const double share : kShares) {
    ParamValueArray& values = sets.emplace_back(Values(id));
    for (size_t i = 0; i < 12; ++i) {
      const FilterParamDesc& desc = descriptions[i];
      const double value = desc.minimum + share * (desc.maximum - desc.minimum);
      values.value[i] = desc.type == kReal ? value : std::floor(value);
    }
  }
  for (size_t i = 0; i < 12; ++i) {
    const FilterParamDesc& desc = descriptions[i];
    const double range = desc.maximum - desc.minimum;
    if (desc.type == kReal || range < 1 || range > kFew) continue;
    for (double value = desc.minimum; value <= desc.maximum; ++value) {
      ParamValueArray values = sets[1];
      values.value[i] = value;
      sets.push_back(values);
    }
  }
  return sets;
}

// Some frames of clips in several sizes: there are limits at 720, 2048 and 6400 columns. A picture as large as the last
// is run with one set of values only.
Sums SumsOf(int32_t id) {
  constexpr struct {
    int32_t width, height, padding, frames;
    size_t sets;
  } kClips[] = {{97, 53, 12, 3, 99}, {160, 90, 0, 3, 99}, {728, 30, 0, 1, 3},
                {2048, 12, 0, 1, 3}, {6784, 5, 0, 1, 3},  {1030, 511, 0, 1, 1}};
  Sums sums;
  for (const auto& clip : kClips) {
    const Descriptions fresh = DescriptionsOf(*MakeEffect(id, clip.width, clip.height));
    Add(sums.parameters, fresh.data(), sizeof fresh);
    uint32_t seed = 0;
    for (const ParamValueArray& values : ValueSets(id, fresh)) {
      if (seed / 10 == clip.sets) break;
      Rand().Seed(seed);
      const auto processor = MakeEffect(id, clip.width, clip.height);
      FrameBuffer src(clip.width, clip.height, clip.padding), dst(clip.width, clip.height, clip.padding);
      dst.Fill(0x40);
      for (int32_t frame = 0; frame < clip.frames; ++frame) {
        src.FillTestPicture(seed + static_cast<uint32_t>(frame));
        RunFrame(*processor, src, dst, values, 10 + frame * 15, 60);
        Add(sums.frames, dst.Data(), dst.Size());
      }
      const Descriptions after = DescriptionsOf(*processor);
      Add(sums.parameters, after.data(), sizeof after);
      seed += 10;
    }
  }
  return sums;
}

// A process of its own that sums every effect up, so that nothing goes on from what ran before, and several can work
// side by side. `target` is the vector target to use, 0 for the best.
class Summing {
 public:
  explicit Summing(int64_t target) {
    EXPECT_EQ(pipe(ends_), 0);
    child_ = fork();
    EXPECT_GE(child_, 0);
    if (child_ == 0) SumUp(target);
  }

  SumsById Take() {
    close(ends_[1]);
    SumsById sums;
    std::pair<int32_t, Sums> line;
    while (read(ends_[0], &line, sizeof line) == sizeof line) sums.insert(line);
    close(ends_[0]);
    int status = 0;
    waitpid(child_, &status, 0);
    EXPECT_EQ(status, 0) << "after " << sums.size() << " effects";
    return sums;
  }

 private:
  [[noreturn]] void SumUp(int64_t target) const noexcept {
    PinCalendarSeconds(1'700'000'000);
    if (target) UseVectorTarget(target);
    std::set<int32_t> ids;
    for (const EffectRow& row : EffectRows()) ids.insert(row.id);
    for (const int32_t id : ids) {
      const std::pair<int32_t, Sums> line(id, SumsOf(id));
      if (write(ends_[1], &line, sizeof line) != sizeof line) _exit(1);
    }
    _exit(0);
  }

  int ends_[2];
  pid_t child_;
};

SumsById Expected() {
  SumsById expected;
  std::ifstream file(KVX_CHECKSUMS);
  int32_t id;
  Sums sums;
  while (file >> std::dec >> id >> std::hex >> sums.frames >> sums.parameters) expected[id] = sums;
  return expected;
}

TEST(Checksums, EveryEffectGivesTheBytesThatItGave) {
  const ReducedMaterials materials;
  const SumsById sums = Summing(0).Take();
  if (std::getenv("KVX_RENEW_CHECKSUMS")) {
    std::ofstream out(KVX_CHECKSUMS);
    for (const auto& [id, value] : sums) out << id << ' ' << value << '\n';
    ASSERT_TRUE(out.flush());
    return;
  }
  SumsById expected = Expected();
  EXPECT_EQ(sums.size(), expected.size());
  for (const auto& [id, value] : sums) EXPECT_EQ(value, expected[id]) << "effect " << id;
}

// The test above takes the best one.
TEST(Checksums, EveryOtherVectorTargetGivesTheSameBytes) {
  if (kSlow) GTEST_SKIP() << "one target is enough under a sanitizer";
  const ReducedMaterials materials;
  std::vector<std::pair<const char*, Summing>> runs;
  for (const int64_t target : VectorTargets()) {
    if (target != VectorTargets().front()) runs.emplace_back(hwy::TargetName(target), target);
  }
  SumsById expected = Expected();
  for (auto& [target, run] : runs) {
    const SumsById sums = run.Take();
    EXPECT_EQ(sums.size(), expected.size()) << target;
    for (const auto& [id, value] : sums) EXPECT_EQ(value, expected[id]) << "effect " << id << " on " << target;
  }
}

// An effect that took another's place would otherwise pass.
TEST(Checksums, NoTwoEffectsAreAlikeButThoseMeantToBe) {
  // Shake is the sketch and RadialBlur the tilt shift, each with a record of its own.
  const std::set<std::vector<int32_t>> meant = {{173, 175}, {183, 184}};
  std::map<uint64_t, std::vector<int32_t>> idsBySum;
  for (const auto& [id, sums] : Expected()) idsBySum[sums.frames].push_back(id);
  std::set<std::vector<int32_t>> alike;
  for (const auto& [sum, ids] : idsBySum) {
    if (ids.size() > 1) alike.insert(ids);
  }
  EXPECT_EQ(alike, meant);
}

}  // namespace

// Effect objects of every id, eight at a time on threads of their own. Under the thread sanitizer this shows every
// unguarded word that they share.
#include <gtest/gtest.h>

#include <barrier>
#include <thread>
#include <vector>

#include "framework/factory/effect_table.h"
#include "tests/support/frames.h"

namespace {

TEST(Parallel, EightObjectsOfEveryEffectAtOnce) {
  constexpr uint32_t kObjects = 8;
  for (const EffectRow& row : EffectRows()) {
    if (!row.make) continue;
    std::barrier start(kObjects);
    const auto work = [&](uint32_t seed) {
      const auto processor = MakeEffect(row.id, 61, 33);
      FrameBuffer src(61, 33), dst(61, 33);
      src.FillTestPicture(seed);
      start.arrive_and_wait();
      for (int32_t frame = 0; frame < 4; ++frame)
        RunFrame(*processor, src, dst, Values(row.id, {40, 30, 20, 10}), frame, 60);
    };
    std::vector<std::jthread> threads;
    for (uint32_t seed = 1; seed <= kObjects; ++seed) threads.emplace_back(work, seed);
  }
}

// Each effect beside its neighbour in the table: the streams and tables that different effects share.
TEST(Parallel, NeighboursInTheTableAtOnce) {
  const auto rows = EffectRows();
  for (size_t i = 1; i < rows.size(); ++i) {
    if (!rows[i].make || !rows[i - 1].make) continue;
    const auto work = [](int32_t id) {
      const auto processor = MakeEffect(id, 48, 27);
      FrameBuffer src(48, 27), dst(48, 27);
      src.FillTestPicture(3);
      for (int32_t frame = 0; frame < 3; ++frame) RunFrame(*processor, src, dst, Values(id, {60, 1, 50, 5}), frame, 60);
    };
    std::thread other(work, rows[i - 1].id);
    work(rows[i].id);
    other.join();
  }
}

}  // namespace

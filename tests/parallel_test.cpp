// Effect objects of every id, eight at a time on threads of their own. Under the thread sanitizer this shows every
// unguarded word that they share.
#include <gtest/gtest.h>

#include <barrier>
#include <opencv2/core/utility.hpp>
#include <thread>
#include <vector>

#include "framework/factory/effect_table.h"
#include "tests/support/draws.h"
#include "tests/support/frames.h"
#include "tests/support/materials.h"

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

// One effect for each way in which a large frame is divided: pixels, rows with neighbours, columns, cells, maps, water,
// a kept field, a library's blur, panes, fills, counts, rows that come in pairs, blocks, blends with a material, the
// copy of a frame. Some work in place, so a row done twice would show.
TEST(Parallel, ALargeFrameIsTheSameOnAnyNumberOfThreads) {
  const SmallMaterials materials;
  constexpr int32_t kWidth = 1637, kHeight = 1283, kThreads = 2;
  const int before = cv::getNumThreads();
  const auto render = [](int32_t id, int threads) {
    cv::setNumThreads(threads);
    SeedRandom(1);
    const auto processor = MakeEffect(id, kWidth, kHeight);
    FrameBuffer src(kWidth, kHeight), dst(kWidth, kHeight);
    src.FillTestPicture(5);
    for (int32_t frame = 0; frame < 2; ++frame) RunFrame(*processor, src, dst, Values(id, {40, 30, 20, 10}), frame, 60);
    return dst.Packed();
  };
  for (const int32_t id :
       {4,   9,   12,  16,  17,  19,  20,  22,  24,  26,  29,  31,  33,  34,  35,  36,  39,   45,
        57,  58,  59,  63,  64,  66,  70,  72,  139, 145, 149, 154, 155, 156, 157, 159, 165,  167,
        168, 172, 174, 176, 180, 181, 182, 183, 188, 190, 251, 313, 348, 350, 369, 370, 1376, 1385}) {
    EXPECT_EQ(render(id, 1), render(id, kThreads)) << "effect " << id;
  }
  cv::setNumThreads(before);
}

}  // namespace

// Many objects of the host library at once: made, used and dropped by eight threads, also after the plug-in that made
// them has gone out of scope. For the sanitizers above all.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "hostkit/plugin.h"
#include "kvx/exports.h"

namespace {

using namespace kvx;

Picture Gray(int32_t width, int32_t height) {
  Picture picture(width, height);
  for (size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels[i] = i % 4 == 3 ? 255 : 128;
  return picture;
}

TEST(HostkitObjects, LiveOnManyThreads) {
  std::vector<std::unique_ptr<Effect>> kept;
  {
    Plugin plugin({KVX_TEST_PLUGIN, KVX_TEST_RESOURCES, {}});
    const std::vector<EffectInfo>& all = plugin.Effects().All();
    ASSERT_EQ(all.size(), static_cast<size_t>(GetEffectsCounts()));
    std::atomic<size_t> next{0};
    const auto work = [&](int32_t side) {
      for (size_t i; (i = next++) < 3 * all.size();) {
        const EffectInfo& info = all[i % all.size()];
        const auto first = plugin.Create(info), second = plugin.Create(info);
        Picture output;
        for (int64_t frame = 0; frame < 2; ++frame) {
          first->Render(Gray(side, 24), output, {frame, 50}, {{{"alpha", 50}}, {}});
          second->Render(Gray(24, side), output, {frame, 50}, {});
        }
      }
    };
    {
      std::vector<std::jthread> threads;
      for (int32_t side = 17; side < 25; ++side) threads.emplace_back(work, side);
    }
    for (size_t i = 0; i < all.size(); i += 40) kept.push_back(plugin.Create(all[i]));
  }
  for (const auto& effect : kept) {
    Picture output;
    effect->Render(Gray(16, 9), output, {}, {});
    EXPECT_EQ(output.width, 16);
  }
}

}  // namespace

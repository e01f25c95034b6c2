// Renders that can be repeated: with a seed the command gives the same bytes in every process and for every -j.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "tests/support/fake_host.h"

namespace {

// Each of the effects that draw by chance does so in one of these ways: from the table that is made at start-up, at a
// parameter's change, at every frame, with state between frames.
// Between them stand effects that any thread may render, and such that move the stream on without being random.
const char* const kChains[] = {"-e FilmGrain",
                               "-e Snow -e Fire -e 11",
                               "-e DelayGrab -e Noise -e Flames",
                               "-e Warm -e Cluster -e OldMovie",
                               "-e Warm -e Snow -e BGFFrost -e Invert -e Fire -e Flip",
                               "-e Fire -e Emboss -e 72 -e Delay -e Snow"};

class Seed : public testing::Test {
 protected:
  // 30 frames, which see two seconds, as raw pixels.
  std::string Render(const std::string& words, const char* name) {
    const std::string file = (directory_.Path() / name).string();
    const std::string line = std::string(KVX_TEST_COMMAND) +
                             " render demo - --frames 30 --fps 25 --size 64x36 --raw 64x36 -q " + words + " > " + file;
    EXPECT_EQ(std::system(line.c_str()), 0) << line;
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  TemporaryDirectory directory_;
};

TEST_F(Seed, DecidesEveryByte) {
  for (const std::string chain : kChains) {
    const std::string first = Render(chain + " --seed 7 -j 1", "first");
    ASSERT_EQ(first.size(), size_t{30 * 64 * 36 * 4}) << chain;
    // The clock goes on.
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    EXPECT_TRUE(first == Render(chain + " --seed 7 -j 4", "again")) << chain;
    EXPECT_FALSE(first == Render(chain + " --seed 8", "other")) << chain;
    EXPECT_FALSE(first == Render(chain, "none")) << chain;
  }
}

TEST_F(Seed, StandsInRecipes) {
  const std::string recipe = (directory_.Path() / "recipe.json").string();
  const std::string write = std::string(KVX_TEST_COMMAND) + " recipe write --seed 7 -e FilmGrain " + recipe;
  ASSERT_EQ(std::system(write.c_str()), 0);
  const std::string seven = Render("-e FilmGrain --seed 7", "seven");
  EXPECT_TRUE(seven == Render("--recipe " + recipe, "recipe"));
  EXPECT_FALSE(seven == Render("--seed 8 --recipe " + recipe, "stronger")) << "the command line's seed goes first";
  for (const char* seed : {"-1", "1e999", "4294967296", "\"7\""}) {
    std::ofstream(recipe) << R"({"effects": [{"effect": 78}], "seed": )" << seed << "}";
    const std::string check = std::string(KVX_TEST_COMMAND) + " recipe check " + recipe + " 2> " + recipe + ".err";
    EXPECT_EQ(WEXITSTATUS(std::system(check.c_str())), 2) << seed;
  }
}

}  // namespace

// libkvx through its header, as a program sees it.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "kvx/kvx.h"

namespace {

constexpr int32_t kWidth = 37, kHeight = 11;

class CLibrary : public testing::Test {
 protected:
  CLibrary() {
    const kvx_options options{sizeof options, KVX_TEST_PLUGIN, KVX_TEST_RESOURCES};
    EXPECT_EQ(kvx_open(&options, &library), KVX_OK) << kvx_last_error();
  }
  ~CLibrary() override { kvx_close(library); }

  kvx_effect* Create(const char* name) {
    kvx_effect* effect = nullptr;
    EXPECT_EQ(kvx_create(library, name, &effect), KVX_OK) << kvx_last_error();
    return effect;
  }

  kvx_library* library = nullptr;
};

// An image between guard bytes, its rows with gaps.
struct Image {
  Image(int32_t layout, int32_t gap, bool bottomUp = false) : size(layout <= KVX_RGBA ? 4 : 3) {
    const int32_t stride = kWidth * size + gap;
    bytes.assign(static_cast<size_t>(stride * kHeight + 2 * kGuard), 0xA7);
    uint8_t* first = bytes.data() + kGuard;
    view = {
        sizeof view, bottomUp ? first + (kHeight - 1) * stride : first, kWidth, kHeight, bottomUp ? -stride : stride,
        layout};
  }
  // Byte `channel`, counted as blue, green, red, alpha.
  uint8_t& At(int32_t x, int32_t y, int32_t channel) {
    const bool swapped = (view.layout == KVX_RGBA || view.layout == KVX_RGB) && channel != 3;
    return view.data[ptrdiff_t{y} * view.stride + x * size + (swapped ? 2 - channel : channel)];
  }
  void Fill() {
    for (int32_t y = 0; y < kHeight; ++y) {
      for (int32_t x = 0; x < kWidth; ++x) {
        for (int32_t c = 0; c < size; ++c) At(x, y, c) = static_cast<uint8_t>(c == 3 ? 255 : x * 7 + y * 31 + c * 90);
      }
    }
  }
  // How many bytes outside the pixels have changed.
  size_t Outside() {
    std::vector<uint8_t> rest = bytes;
    for (int32_t y = 0; y < kHeight; ++y) {
      std::memset(rest.data() + (view.data + ptrdiff_t{y} * view.stride - bytes.data()), 0xA7,
                  static_cast<size_t>(kWidth * size));
    }
    return rest.size() - static_cast<size_t>(std::count(rest.begin(), rest.end(), 0xA7));
  }

  static constexpr int32_t kGuard = 64;
  int32_t size;
  std::vector<uint8_t> bytes;
  kvx_image view;
};

TEST_F(CLibrary, EveryLayoutAndStrideGivesOnePicture) {
  // NightGlassView writes into its source, Emboss looks at neighbours.
  for (const char* name : {"Emboss", "NightGlassView", "Vignette1"}) {
    kvx_effect* effect = Create(name);
    Image source(KVX_BGRA, 0), expected(KVX_BGRA, 0);
    source.Fill();
    const std::vector<uint8_t> before = source.bytes;
    ASSERT_EQ(kvx_render(effect, &source.view, &expected.view, nullptr), KVX_OK) << kvx_last_error();
    EXPECT_EQ(source.bytes, before) << name;
    for (int32_t layout = KVX_BGRA; layout <= KVX_RGB; ++layout) {
      for (const auto& [gap, bottomUp] : {std::pair{0, false}, {5, false}, {8, true}}) {
        Image in(layout, gap, bottomUp), out(KVX_RGB - layout, gap, !bottomUp);
        in.Fill();
        ASSERT_EQ(kvx_render(effect, &in.view, &out.view, nullptr), KVX_OK) << kvx_last_error();
        ASSERT_EQ(kvx_render(effect, &in.view, &in.view, nullptr), KVX_OK) << kvx_last_error();
        size_t wrong = 0;
        for (int32_t y = 0; y < kHeight; ++y) {
          for (int32_t x = 0; x < kWidth; ++x) {
            for (int32_t c = 0; c < 3; ++c) {
              wrong += in.At(x, y, c) != expected.At(x, y, c) || out.At(x, y, c) != expected.At(x, y, c);
            }
          }
        }
        EXPECT_EQ(wrong + in.Outside() + out.Outside(), 0u) << name << ", layout " << layout << ", gap " << gap;
      }
    }
    kvx_destroy(effect);
  }
}

TEST_F(CLibrary, WrongArgumentsAreToldAndHarmNothing) {
  Image image(KVX_BGRA, 0), other(KVX_BGRA, 0);
  image.Fill();
  kvx_effect* effect = Create("saturation");
  EXPECT_EQ(kvx_set_number(effect, "saturation", 101), KVX_BAD_VALUE);
  EXPECT_NE(std::string(kvx_last_error()).find("0 to 100"), std::string::npos) << kvx_last_error();
  EXPECT_EQ(kvx_set_text(effect, "Saturation", "0:20,50:"), KVX_BAD_VALUE);
  EXPECT_EQ(kvx_set_number(effect, "bright", 1), KVX_UNKNOWN_NAME);
  EXPECT_EQ(kvx_find(library, "Saturatoin"), KVX_UNKNOWN_NAME);
  EXPECT_NE(std::string(kvx_last_error()).find("Saturation"), std::string::npos) << kvx_last_error();
  EXPECT_EQ(kvx_find(library, nullptr), KVX_BAD_ARGUMENT);
  kvx_destroy(effect);
  EXPECT_EQ(kvx_create(library, "Canvas", &effect), KVX_UNKNOWN_NAME);
  EXPECT_EQ(effect, nullptr);
  effect = Create("Invert");
  const auto rejects = [&](auto change) {
    kvx_image wrong = image.view;
    change(wrong);
    return kvx_render(effect, &image.view, &wrong, nullptr) == KVX_BAD_ARGUMENT &&
           kvx_render(effect, &wrong, &other.view, nullptr) == KVX_BAD_ARGUMENT;
  };
  EXPECT_TRUE(rejects([](kvx_image& wrong) { wrong.size = 0; }));
  EXPECT_TRUE(rejects([](kvx_image& wrong) { wrong.size = 8; }));
  EXPECT_TRUE(rejects([](kvx_image& wrong) { wrong.data = nullptr; }));
  EXPECT_TRUE(rejects([](kvx_image& wrong) { wrong.width = 0; }));
  EXPECT_TRUE(rejects([](kvx_image& wrong) { --wrong.height; }));
  EXPECT_TRUE(rejects([](kvx_image& wrong) { --wrong.stride; }));
  EXPECT_TRUE(rejects([](kvx_image& wrong) { wrong.stride = INT32_MIN, wrong.width = INT32_MAX; }));
  EXPECT_TRUE(rejects([](kvx_image& wrong) { wrong.layout = 4; }));
  EXPECT_EQ(kvx_render(nullptr, &image.view, &other.view, nullptr), KVX_BAD_ARGUMENT);
  EXPECT_EQ(kvx_render(effect, nullptr, &other.view, nullptr), KVX_BAD_ARGUMENT);
  EXPECT_EQ(std::count(other.bytes.begin(), other.bytes.end(), 0xA7), static_cast<ptrdiff_t>(other.bytes.size()));
  kvx_destroy(effect);
  kvx_destroy(nullptr);
  kvx_close(nullptr);
}

TEST_F(CLibrary, StructuresOfOtherSizesAreFilledAsFarAsTheyGo) {
  const int32_t index = kvx_find(library, "26");
  struct {
    kvx_effect_info info;
    uint64_t later;
  } newer{{}, 7};
  newer.info.size = sizeof newer;
  ASSERT_EQ(kvx_describe_effect(library, index, &newer.info), KVX_OK);
  EXPECT_STREQ(newer.info.name, "Saturation");
  EXPECT_EQ(newer.later, 0u);
  EXPECT_EQ(newer.info.size, sizeof newer);
  kvx_effect_info older{};
  older.size = offsetof(kvx_effect_info, name);
  ASSERT_EQ(kvx_describe_effect(library, index, &older), KVX_OK);
  EXPECT_EQ(older.id, 26);
  EXPECT_EQ(older.name, nullptr);
  EXPECT_EQ(kvx_describe_param(library, index, 1, nullptr), KVX_BAD_ARGUMENT);
}

TEST_F(CLibrary, OneLibraryIsSharedAndOutlivedByItsEffects) {
  kvx_library* second = nullptr;
  const kvx_options elsewhere{sizeof elsewhere, "/nowhere.so", nullptr};
  EXPECT_EQ(kvx_open(&elsewhere, &second), KVX_BAD_ARGUMENT);
  kvx_effect* effect = Create("Invert");
  kvx_close(library);
  library = nullptr;
  Image image(KVX_BGRA, 0);
  image.Fill();
  const uint8_t blue = image.At(3, 3, 0);
  EXPECT_EQ(kvx_render(effect, &image.view, &image.view, nullptr), KVX_OK);
  EXPECT_EQ(image.At(3, 3, 0), 255 - blue);
  kvx_destroy(effect);
  EXPECT_EQ(kvx_open(&elsewhere, &second), KVX_FAILED) << "the last one out unloads";
}

TEST_F(CLibrary, ASecondThreadInOneEffectIsTold) {
  kvx_effect* effect = Create("Emboss");
  std::vector<std::thread> threads;
  std::atomic<int> done = 0, told = 0, other = 0;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      Image image(KVX_RGB, 0);
      for (int k = 0; k < 300; ++k) {
        const int32_t status = kvx_render(effect, &image.view, &image.view, nullptr);
        const bool inUse = std::strstr(kvx_last_error(), "another thread") != nullptr;
        ++(status == KVX_OK ? done : status == KVX_BAD_ARGUMENT && inUse ? told : other);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(done, 0);
  EXPECT_EQ(done + told, 900);
  EXPECT_EQ(other, 0);
  kvx_destroy(effect);
}

}  // namespace

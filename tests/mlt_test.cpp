// The MLT module inside MLT's library, against the effects themselves.
#include <dlfcn.h>
#include <framework/mlt.h>
#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include "hostkit/locate.h"
#include "hostkit/pixels.h"
#include "hostkit/plugin.h"
#include "hosts/mlt/frame_order.h"
#include "hosts/mlt/names.h"

namespace fs = std::filesystem;

namespace kvx {
namespace {

constexpr int kWidth = 61;
constexpr int kHeight = 37;
constexpr int kFps = 25;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kFrames = 2;
#else
constexpr int kFrames = 5;
#endif

// Clips of 100 frames; something moves, and alpha takes every value.
Picture Source(int frame) {
  Picture picture(kWidth, kHeight);
  uint32_t noise = 1 + static_cast<uint32_t>(frame) * 7919;
  for (size_t i = 0; i < picture.pixels.size(); ++i) {
    noise = noise * 1664525 + 1013904223;
    const size_t smooth = i * 3 / (4 + i % 4) + static_cast<size_t>(frame) * 5;
    picture.pixels[i] = static_cast<uint8_t>(i % 16 < 9 ? smooth : noise >> 24);
  }
  return picture;
}

int GetSource(mlt_frame frame, uint8_t** image, mlt_image_format* format, int* width, int* height, int) {
  const Picture picture = Source(mlt_frame_original_position(frame));
  const int size = static_cast<int>(picture.pixels.size());
  *image = static_cast<uint8_t*>(mlt_pool_alloc(size));
  SwapRedBlue(picture.pixels.data(), *image, picture.pixels.size() / 4);
  *format = mlt_image_rgba;
  *width = kWidth;
  *height = kHeight;
  return mlt_frame_set_image(frame, *image, size, mlt_pool_release);
}

int GetFrame(mlt_producer producer, mlt_frame_ptr frame, int) {
  *frame = mlt_frame_init(MLT_PRODUCER_SERVICE(producer));
  mlt_frame_set_position(*frame, mlt_producer_position(producer));
  mlt_properties_set_position(MLT_FRAME_PROPERTIES(*frame), "original_position", mlt_producer_frame(producer));
  mlt_frame_push_get_image(*frame, GetSource);
  mlt_producer_prepare_next(producer);
  return 0;
}

void FreeProducer(mlt_producer producer) {
  producer->close = nullptr;
  mlt_producer_close(producer);
  std::free(producer);
}

std::vector<std::string> logged;

void KeepLog(void*, int level, const char* format, va_list args) {
  if (level > MLT_LOG_WARNING) return;
  char line[1024];
  std::vsnprintf(line, sizeof line, format, args);
  logged.push_back(line);
}

class MltTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler mltForgetsAList;
#endif
    ASSERT_TRUE(mlt_factory_init(KVX_TEST_MLT_MODULES));
    mlt_log_set_callback(KeepLog);
    // A second copy of the library, with a random stream and counters of its own.
    copy_ = fs::temp_directory_path() / ("mlt_test-" + std::to_string(getpid()) + ".so");
    fs::copy_file(KVX_TEST_PLUGIN, copy_, fs::copy_options::overwrite_existing);
    reference_ = new Plugin({copy_.string(), KVX_TEST_RESOURCES, {}});
    fs::remove(copy_);
  }
  static void TearDownTestSuite() {
    delete reference_;
    mlt_factory_close();
  }
  void SetUp() override {
    profile_ = mlt_profile_init(nullptr);
    profile_->frame_rate_num = kFps;
    profile_->frame_rate_den = 1;
    clip_ = mlt_producer_new(profile_);
    clip_->get_frame = GetFrame;
    clip_->close = reinterpret_cast<mlt_destructor>(FreeProducer);
    mlt_properties_set_position(MLT_PRODUCER_PROPERTIES(clip_), "length", 100);
    mlt_producer_set_in_and_out(clip_, 0, 99);
    logged.clear();
  }
  void TearDown() override {
    mlt_producer_close(clip_);
    mlt_profile_close(profile_);
  }

  using Settings = std::map<std::string, std::string>;
  mlt_filter Attach(mlt_producer producer, const std::string& slug, const Settings& settings = {}) {
    mlt_filter filter = mlt_factory_filter(profile_, ("kvx." + slug).c_str(), nullptr);
    for (const auto& [name, value] : settings) {
      mlt_properties_set(MLT_FILTER_PROPERTIES(filter), name.c_str(), value.c_str());
    }
    mlt_producer_attach(producer, filter);
    mlt_filter_close(filter);  // the producer keeps it
    return filter;
  }
  static mlt_frame Ask(mlt_producer producer, int position) {
    mlt_frame frame = nullptr;
    mlt_producer_seek(producer, position);
    mlt_service_get_frame(MLT_PRODUCER_SERVICE(producer), &frame, 0);
    return frame;
  }
  static Picture ImageOf(mlt_frame frame) {
    uint8_t* image = nullptr;
    mlt_image_format format = mlt_image_rgba;
    int width = kWidth, height = kHeight;
    EXPECT_EQ(mlt_frame_get_image(frame, &image, &format, &width, &height, 0), 0);
    Picture picture(width, height);
    SwapRedBlue(image, picture.pixels.data(), picture.pixels.size() / 4);
    return picture;
  }
  static Picture Render(mlt_producer producer, int position) {
    mlt_frame frame = Ask(producer, position);
    Picture picture = ImageOf(frame);
    mlt_frame_close(frame);
    return picture;
  }

  static const EffectInfo& Info(const std::string& slug) {
    return reference_->Effects().Find(slug);
  }
  // What the effect itself makes of the source.
  static Picture Expected(Effect& effect, FramePlace place, const Picture& source, FrameValues values = {}) {
    values.numbers.emplace("Time", static_cast<double>(place.frame) / kFps * 1000);
    Picture out;
    effect.Render(source, out, place, values);
    return out;
  }
  static Picture Expected(const std::string& slug, FramePlace place, const Picture& source, FrameValues values = {}) {
    return Expected(*reference_->Create(Info(slug)), place, source, std::move(values));
  }
  static std::vector<Picture> ExpectedRun(const std::string& slug, int count) {
    const auto effect = reference_->Create(Info(slug));
    std::vector<Picture> pictures;
    for (int i = 0; i < count; ++i) pictures.push_back(Expected(*effect, {i, 100}, Source(i)));
    return pictures;
  }

  static inline fs::path copy_;
  static inline Plugin* reference_ = nullptr;
  mlt_profile profile_ = nullptr;
  mlt_producer clip_ = nullptr;
};

TEST_F(MltTest, EveryEffectGivesItsBytes) {
  int compared = 0;
  for (const EffectInfo& effect : reference_->Effects().All()) {
    if (effect.random) continue;
    mlt_filter filter = Attach(clip_, effect.slug);
    const std::vector<Picture> expected = ExpectedRun(effect.slug, kFrames);
    for (int i = 0; i < kFrames; ++i) EXPECT_EQ(Render(clip_, i).pixels, expected[i].pixels) << effect.slug << " " << i;
    mlt_producer_detach(clip_, filter);
    ++compared;
  }
  EXPECT_GE(compared, 220);
  EXPECT_TRUE(logged.empty()) << logged.front();
}

TEST_F(MltTest, KeyframesMoveNumbersColorsAndOpacity) {
  const auto expect = [&](const std::string& slug, const Settings& settings, int position, FrameValues values) {
    mlt_filter filter = Attach(clip_, slug, settings);
    EXPECT_EQ(Render(clip_, position).pixels, Expected(slug, {position, 100}, Source(position), values).pixels) << slug;
    mlt_producer_detach(clip_, filter);
  };
  const Settings brightness = {{"bringhtness", "0=0;50=100"}, {"opacity", "0=0;99=99"}};
  expect("brightness", brightness, 29, {{{"Bringhtness", 58}, {kOpacityName, 29}}, {}});
  expect("brightness", brightness, 99, {{{"Bringhtness", 100}, {kOpacityName, 99}}, {}});
  const Settings wave = {{"bg-color", "10=#ff8000;20=#0000ff"}, {"source-width", "0.3"}};
  expect("bgfwave", wave, 10, {{{"BG_Color", 0xff8000}, {"Source_Width", 0.3}}, {}});
  expect("bgfwave", wave, 99, {{{"BG_Color", 0x0000ff}, {"Source_Width", 0.3}}, {}});
  expect("delay", {{"time", "40"}}, 3, {{{"Time", 40}}, {}});
}

TEST_F(MltTest, FramesCountFromWhatTheFilterIsPutOn) {
  const auto expect = [&](mlt_producer producer, int position, FramePlace place, int source) {
    EXPECT_EQ(Render(producer, position).pixels, Expected("splitmove", place, Source(source)).pixels) << position;
  };
  // A cut of frames 20 to 59, with a filter over all of it, then with one of its own range.
  mlt_producer cut = mlt_producer_cut(clip_, 20, 59);
  mlt_filter filter = Attach(cut, "splitmove");
  expect(cut, 10, {10, 40}, 30);
  mlt_filter_set_in_and_out(filter, 25, 44);
  expect(cut, 10, {5, 20}, 30);
  EXPECT_EQ(Render(cut, 30).pixels, Source(50).pixels);
  mlt_producer_close(cut);
  // A clip with an in-point, and a filter planted behind it.
  mlt_producer_set_in_and_out(clip_, 40, 69);
  filter = Attach(clip_, "splitmove");
  expect(clip_, 7, {7, 30}, 47);
  mlt_producer_detach(clip_, filter);
  filter = mlt_factory_filter(profile_, "kvx.splitmove", nullptr);
  mlt_filter_connect(filter, MLT_PRODUCER_SERVICE(clip_), 0);
  mlt_producer_seek(clip_, 7);
  mlt_frame frame = nullptr;
  mlt_service_get_frame(MLT_FILTER_SERVICE(filter), &frame, 0);
  EXPECT_EQ(ImageOf(frame).pixels, Expected("splitmove", {7, 30}, Source(47)).pixels);
  mlt_frame_close(frame);
  mlt_filter_close(filter);
}

TEST_F(MltTest, ThreadsGiveTheFramesOfOneThread) {
  for (const std::string slug : {"delay", "waterripple", "3dflippo", "warm"}) {
    constexpr int kCount = 24;
    const std::vector<Picture> expected = ExpectedRun(slug, kCount);
    mlt_filter filter = Attach(clip_, slug);
    mlt_frame_close(Ask(clip_, 5));                  // never rendered
    std::vector<mlt_frame> asked = {Ask(clip_, 0)};  // the first comes twice
    for (int i = 0; i < kCount; ++i) asked.push_back(Ask(clip_, i));
    std::atomic<size_t> next = 0;
    std::vector<Picture> rendered(asked.size());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&, t] {
        for (size_t i; (i = next++) < asked.size();) {
          std::this_thread::sleep_for(std::chrono::milliseconds(i % 4 == 0 ? 6 : t));
          rendered[i] = ImageOf(asked[i]);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (mlt_frame frame : asked) mlt_frame_close(frame);  // programs hold frames that are rendered for a while
    EXPECT_EQ(rendered[0].pixels, expected[0].pixels) << slug;
    for (int i = 0; i < kCount; ++i) EXPECT_EQ(rendered[i + 1].pixels, expected[i].pixels) << slug << " " << i;
    mlt_producer_detach(clip_, filter);
  }
}

TEST_F(MltTest, OrderedEffectsMakeUpShortGapsAndStartAnewBehindOthers) {
  const std::string slug = "waterripple";
  Attach(clip_, slug);
  const auto effect = reference_->Create(Info(slug));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Render(clip_, i).pixels, Expected(*effect, {i, 100}, Source(i)).pixels);
  for (int i = 3; i < 11; ++i) Expected(*effect, {i, 100}, Source(11));
  const Picture eleventh = Expected(*effect, {11, 100}, Source(11));
  EXPECT_EQ(Render(clip_, 11).pixels, eleventh.pixels);
  EXPECT_EQ(Render(clip_, 11).pixels, eleventh.pixels);
  EXPECT_EQ(Render(clip_, 21).pixels, Expected(slug, {21, 100}, Source(21)).pixels);
  EXPECT_EQ(Render(clip_, 20).pixels, Expected(slug, {20, 100}, Source(20)).pixels);
}

TEST(FrameOrder, GivesUpFramesThatAreHeldAndNeverRendered) {
  const auto order = std::make_shared<FrameOrder>(std::chrono::milliseconds(20));
  const auto held = order->Ask();
  const auto next = order->Ask();
  std::thread([&] { next->Wait(); }).join();
}

TEST_F(MltTest, BadValuesLeaveFramesAloneAndSaySoOnce) {
  for (const Settings& settings : {Settings{{"bringhtness", "loud"}}, Settings{{"bringhtness", "101"}},
                                   Settings{{"bringhtness", "0=5;9=-1"}}, Settings{{"opacity", "0=5;9"}}}) {
    mlt_filter filter = Attach(clip_, "brightness", settings);
    logged.clear();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Render(clip_, i).pixels, Source(i).pixels);
    ASSERT_EQ(logged.size(), 1U);
    EXPECT_NE(logged[0].find("kvx.brightness: " + settings.begin()->first), std::string::npos) << logged[0];
    mlt_producer_detach(clip_, filter);
  }
}

TEST_F(MltTest, KdenliveFilesAgreeWithTheMetadata) {
  const std::set<std::string> kinds = {"animated", "bool", "color"};
  std::set<std::string> names;
  for (const EffectInfo& effect : reference_->Effects().All()) {
    tinyxml2::XMLDocument document;
    ASSERT_EQ(document.LoadFile((KVX_TEST_KDENLIVE "/effects/kvx_" + effect.slug + ".xml").c_str()), 0) << effect.slug;
    const tinyxml2::XMLElement* root = document.RootElement();
    mlt_properties metadata =
        mlt_repository_metadata(mlt_factory_repository(), mlt_service_filter_type, root->Attribute("tag"));
    ASSERT_TRUE(metadata) << effect.slug;
    EXPECT_STREQ(mlt_properties_get(metadata, "title"), root->FirstChildElement("name")->GetText());
    names.insert(root->FirstChildElement("name")->GetText());
    const auto parameters = static_cast<mlt_properties>(mlt_properties_get_data(metadata, "parameters", nullptr));
    std::map<std::string, std::string> defaults;
    for (int i = 0; i < mlt_properties_count(parameters); ++i) {
      const auto entry = static_cast<mlt_properties>(mlt_properties_get_data_at(parameters, i, nullptr));
      defaults[mlt_properties_get(entry, "identifier")] = mlt_properties_get(entry, "default");
    }
    EXPECT_EQ(defaults.size(), effect.params.size() + 1) << effect.slug;
    for (auto* at = root->FirstChildElement("parameter"); at; at = at->NextSiblingElement("parameter")) {
      EXPECT_TRUE(kinds.contains(at->Attribute("type"))) << effect.slug;
      EXPECT_EQ(at->Attribute("default"), defaults[at->Attribute("name")]) << effect.slug;
      EXPECT_LE(at->DoubleAttribute("default"), at->DoubleAttribute("max", 1e9)) << effect.slug;
    }
  }
  EXPECT_EQ(names.size(), ReadDescription(DefaultResourceRoot()).All().size());
}

}  // namespace
}  // namespace kvx

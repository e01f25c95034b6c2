// The GStreamer elements as pipelines drive them; what `kvx` renders is the judge of their bytes.
#include <gst/check/gstharness.h>
#include <gst/controller/gstdirectcontrolbinding.h>
#include <gst/controller/gstinterpolationcontrolsource.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <thread>

#include "hostkit/effects.h"
#include "tests/support/fake_host.h"

using namespace kvx;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KVX_SANITIZER_OPTIONS extern "C" __attribute__((visibility("default"))) const char*
// GLib gives up a table of names while it is loaded; only a whole stack tells that leak from one of ours.
KVX_SANITIZER_OPTIONS __asan_default_options() {
  return "fast_unwind_on_malloc=0";
}
KVX_SANITIZER_OPTIONS __lsan_default_suppressions() {
  return "leak:ld-linux";
}
// GLib's own locks are not seen.
KVX_SANITIZER_OPTIONS __tsan_default_options() {
  return "ignore_noninstrumented_modules=1";
}
constexpr int kStep = 8;  // `kvx` takes long to start
#else
constexpr int kStep = 1;
#endif

namespace {

using Bytes = std::vector<uint8_t>;

class GStreamer : public testing::Environment {
 public:
  void SetUp() override {
    setenv("GST_PLUGIN_PATH", KVX_TEST_GSTREAMER, 1);
    setenv("GST_REGISTRY", (directory_.Path() / "registry").c_str(), 1);
    setenv("GST_REGISTRY_FORK", "no", 1);
    setenv("XDG_DATA_HOME", directory_.Path().c_str(), 1);
    gst_init(nullptr, nullptr);
  }

 private:
  TemporaryDirectory directory_;
};
const auto* const environment = testing::AddGlobalTestEnvironment(new GStreamer);

Bytes TestPicture(int width, int height, uint32_t seed = 1) {
  FrameBuffer frame(width, height);
  frame.FillTestPicture(seed);
  return frame.Packed();
}

std::string Caps(int width, int height, const char* format = "BGRA", const char* rate = "25/1") {
  return "video/x-raw,format=" + std::string(format) + ",width=" + std::to_string(width) +
         ",height=" + std::to_string(height) + ",framerate=" + rate;
}

GstBuffer* BufferOf(const Bytes& bytes, int frame = 0) {
  GstBuffer* buffer = gst_buffer_new_memdup(bytes.data(), bytes.size());
  GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(frame) * 40 * GST_MSECOND;
  GST_BUFFER_DURATION(buffer) = 40 * GST_MSECOND;
  return buffer;
}

Bytes BytesOf(GstBuffer* buffer) {
  Bytes bytes(gst_buffer_get_size(buffer));
  gst_buffer_extract(buffer, 0, bytes.data(), bytes.size());
  return bytes;
}

struct Unref {
  void operator()(GstElement* element) const { gst_object_unref(element); }
};
using ElementPtr = std::unique_ptr<GstElement, Unref>;

// One element between pads of ours, 25 frames a second.
class Bench {
 public:
  Bench(const std::string& line, int width, int height, const char* format = "BGRA")
      : harness_(gst_harness_new_parse(line.c_str())) {
    gst_harness_set_src_caps_str(harness_, Caps(width, height, format).c_str());
  }
  ~Bench() { gst_harness_teardown(harness_); }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  GstHarness* Harness() { return harness_; }
  ElementPtr Element(const char* name) { return ElementPtr(gst_harness_find_element(harness_, name)); }
  // Empty if the element refuses.
  Bytes Push(GstBuffer* buffer) {
    if (gst_harness_push(harness_, buffer) != GST_FLOW_OK) return {};
    GstBuffer* out = gst_harness_pull(harness_);
    const Bytes bytes = BytesOf(out);
    gst_buffer_unref(out);
    return bytes;
  }
  Bytes Push(const Bytes& bytes, int frame = 0) { return Push(BufferOf(bytes, frame)); }

 private:
  GstHarness* harness_;
};

Bytes KvxRender(const std::string& words, int width, int height, const Bytes& frames) {
  const TemporaryDirectory directory;
  const std::string in = directory.Path() / "in", out = directory.Path() / "out";
  std::ofstream(in, std::ios::binary).write(reinterpret_cast<const char*>(frames.data()), std::ssize(frames));
  const std::string command = KVX_TEST_COMMAND " render " + words + " --quiet --raw " + std::to_string(width) + "x" +
                              std::to_string(height) + " - - <" + in + " >" + out;
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  std::ifstream file(out, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Values far from the defaults, in the words of an element and of the command.
std::pair<std::string, std::string> UnusualValues(const EffectInfo& effect) {
  std::pair<std::string, std::string> words{" opacity=63", " --opacity 63"};
  for (const ParamInfo& param : effect.params) {
    if (param.hidden) continue;
    const bool isLow = param.defaultValue - param.minimum < (param.maximum - param.minimum) / 2;
    double value = param.minimum + (param.maximum - param.minimum) * (isLow ? 0.75 : 0.25);
    if (param.type == ParamType::kCheckBox) value = isLow ? 1 : 0;
    const std::string text =
        param.TakesFractions() ? std::to_string(value) : std::to_string(static_cast<int64_t>(value));
    words.first += " " + Slug(param.name) + "=" + text;
    words.second += " -p " + param.name + "=" + text;
  }
  return words;
}

const EffectList& Described() {
  static const EffectList effects = ReadDescription(KVX_TEST_RESOURCES);
  return effects;
}

TEST(GStreamerElements, SayWhatTheyAreAndTake) {
  GList* features = gst_registry_get_feature_list_by_plugin(gst_registry_get(), "kvx");
  EXPECT_EQ(g_list_length(features), Described().All().size());
  gst_plugin_feature_list_free(features);
  std::set<std::string> names;
  for (const EffectInfo& effect : Described().All()) {
    SCOPED_TRACE(effect.slug);
    GstElement* element = gst_element_factory_make(("kvx-" + effect.slug).c_str(), nullptr);
    ASSERT_TRUE(element);
    names.insert(gst_element_get_metadata(element, GST_ELEMENT_METADATA_LONGNAME));
    EXPECT_STREQ(gst_element_get_metadata(element, GST_ELEMENT_METADATA_KLASS), "Filter/Effect/Video");
    const std::string description = gst_element_get_metadata(element, GST_ELEMENT_METADATA_DESCRIPTION);
    EXPECT_NE(description.find(effect.family), std::string::npos);
    EXPECT_EQ(description.find("moves") != std::string::npos, effect.moving);
    EXPECT_EQ(description.find("in order") != std::string::npos, effect.ordered);
    for (const ParamInfo& param : effect.params) {
      GParamSpec* spec = g_object_class_find_property(G_OBJECT_GET_CLASS(element), Slug(param.name).c_str());
      ASSERT_EQ(spec != nullptr, !param.hidden) << param.name;
      if (!spec) continue;
      EXPECT_TRUE(spec->flags & GST_PARAM_CONTROLLABLE);
      GValue value = G_VALUE_INIT;
      g_object_get_property(G_OBJECT(element), spec->name, &value);
      EXPECT_TRUE(g_param_value_defaults(spec, &value)) << param.name;
      g_value_unset(&value);
      if (const auto* real = G_IS_PARAM_SPEC_DOUBLE(spec) ? G_PARAM_SPEC_DOUBLE(spec) : nullptr) {
        EXPECT_EQ(real->minimum, param.minimum);
        EXPECT_EQ(real->maximum, param.maximum);
        EXPECT_EQ(real->default_value, param.defaultValue);
      } else if (const auto* whole = G_IS_PARAM_SPEC_INT(spec) ? G_PARAM_SPEC_INT(spec) : nullptr) {
        EXPECT_EQ(whole->minimum, param.minimum);
        EXPECT_EQ(whole->maximum, param.maximum);
        EXPECT_EQ(whole->default_value, param.defaultValue);
      }
    }
    gst_object_unref(element);
  }
  EXPECT_EQ(names.size(), Described().All().size());
}

// Frames of an odd width, with alpha, and values far from the defaults, as an ordered sequence.
TEST(GStreamerElements, RenderTheBytesOfThePlugin) {
  constexpr int kWidth = 61, kHeight = 34, kFrames = 3;
  Bytes in;
  for (int i = 0; i < kFrames; ++i) {
    const Bytes frame = TestPicture(kWidth, kHeight, static_cast<uint32_t>(i + 1));
    in.insert(in.end(), frame.begin(), frame.end());
  }
  const auto size = std::ssize(in) / kFrames;
  for (const EffectInfo& effect : Described().All()) {
    if (effect.random || effect.moving || effect.id % kStep != 0) continue;
    SCOPED_TRACE(effect.slug);
    const auto [properties, options] = UnusualValues(effect);
    Bench bench("kvx-" + effect.slug + properties, kWidth, kHeight);
    Bytes out;
    for (int i = 0; i < kFrames; ++i) {
      const Bytes frame = bench.Push(Bytes(in.begin() + i * size, in.begin() + (i + 1) * size), i);
      out.insert(out.end(), frame.begin(), frame.end());
    }
    ASSERT_EQ(out, KvxRender(effect.slug + options, kWidth, kHeight, in));
  }
}

// Where a frame lies in memory makes no difference to what comes of it. Sight writes into its source.
TEST(GStreamerElements, TakeFramesHoweverTheyLie) {
  constexpr int kWidth = 33, kHeight = 18, kStride = 150, kLeft = 3, kTop = 2;
  const Bytes picture = TestPicture(kWidth, kHeight);
  for (const std::string slug : {"emboss", "sight", "bgfwave", "warm"}) {
    SCOPED_TRACE(slug);
    Bench bench("kvx-" + slug + " opacity=80", kWidth, kHeight);
    const Bytes expected = KvxRender(slug + " --opacity 80", kWidth, kHeight, picture);

    // Rows with an odd padding that begin at an odd address, within a frame that is larger by the crop.
    Bytes padded(1 + (kTop + kHeight) * kStride, 77);
    for (int y = 0; y < kHeight; ++y) {
      std::copy_n(picture.begin() + y * kWidth * 4, kWidth * 4, padded.begin() + 1 + (y + kTop) * kStride + kLeft * 4);
    }
    GstBuffer* cropped = BufferOf(padded);
    gsize offsets[GST_VIDEO_MAX_PLANES] = {1};
    gint strides[GST_VIDEO_MAX_PLANES] = {kStride};
    gst_buffer_add_video_meta_full(cropped, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_BGRA, kWidth + kLeft,
                                   kHeight + kTop, 1, offsets, strides);
    GstVideoCropMeta* crop = gst_buffer_add_video_crop_meta(cropped);
    *crop = {crop->meta, kLeft, kTop, kWidth, kHeight};
    ASSERT_EQ(gst_harness_push(bench.Harness(), cropped), GST_FLOW_OK);
    GstBuffer* out = gst_harness_pull(bench.Harness());
    EXPECT_EQ(BytesOf(out), expected);
    EXPECT_FALSE(gst_buffer_get_video_crop_meta(out));
    gst_buffer_unref(out);

    // Memory of downstream's that does not begin where four pixels are blended at a time.
    GstAllocationParams params;
    gst_allocation_params_init(&params);
    params.prefix = 8;
    Bench shifted("kvx-" + slug + " opacity=80", kWidth, kHeight);
    gst_harness_set_propose_allocator(shifted.Harness(), nullptr, &params);
    gst_harness_set_src_caps_str(shifted.Harness(), Caps(kWidth, kHeight, "BGRA", "50/1").c_str());
    EXPECT_EQ(shifted.Push(picture), expected);

    // Memory that others see too, and that nobody may write.
    GstBuffer* shared = gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, const_cast<uint8_t*>(picture.data()),
                                                    picture.size(), 0, picture.size(), nullptr, nullptr);
    EXPECT_EQ(bench.Push(gst_buffer_ref(shared)), expected);
    EXPECT_EQ(BytesOf(shared), TestPicture(kWidth, kHeight));
    gst_buffer_unref(shared);

    // The fourth byte of BGRx is nobody's alpha.
    Bytes opaque = picture, careless = picture;
    for (size_t i = 3; i < opaque.size(); i += 4) opaque[i] = 255;
    Bench withoutAlpha("kvx-" + slug + " opacity=80", kWidth, kHeight, "BGRx");
    const Bytes expectedOpaque = KvxRender(slug + " --opacity 80", kWidth, kHeight, opaque);
    for (const Bytes& frame : {opaque, careless, opaque}) EXPECT_EQ(withoutAlpha.Push(frame), expectedOpaque);
  }
}

TEST(GStreamerElements, RefuseBuffersThatAreNoFrames) {
  const Bytes picture = TestPicture(16, 16);
  gsize offsets[GST_VIDEO_MAX_PLANES] = {0};
  gint strides[GST_VIDEO_MAX_PLANES] = {64};
  for (const bool claims : {false, true}) {
    Bench bench("kvx-invert", 16, 16);
    GstBus* bus = gst_bus_new();
    gst_element_set_bus(bench.Harness()->element, bus);
    GstBuffer* buffer = BufferOf(Bytes(picture.begin(), picture.end() - 4));
    if (claims) {
      gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_BGRA, 16, 16, 1, offsets,
                                     strides);
    }
    EXPECT_EQ(gst_harness_push(bench.Harness(), buffer), GST_FLOW_ERROR);
    GstMessage* message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
    EXPECT_TRUE(message);
    if (message) gst_message_unref(message);
    gst_element_set_bus(bench.Harness()->element, nullptr);
    gst_object_unref(bus);
  }
}

// A line from 0 to 100 over four frames: nothing of the effect in the first, which is the very buffer that came.
TEST(GStreamerElements, FollowKeyframesAndPassOnWhatTheyDoNotChange) {
  const Bytes picture = TestPicture(32, 16);
  Bench bench("kvx-brightness", 32, 16);
  const ElementPtr element = bench.Element("kvx-brightness");
  for (const char* property : {"opacity", "bringhtness"}) {
    GstControlSource* line = gst_interpolation_control_source_new();
    g_object_set(line, "mode", GST_INTERPOLATION_MODE_LINEAR, nullptr);
    gst_timed_value_control_source_set(GST_TIMED_VALUE_CONTROL_SOURCE(line), 0, 0);
    gst_timed_value_control_source_set(GST_TIMED_VALUE_CONTROL_SOURCE(line), 4 * 40 * GST_MSECOND, 100);
    gst_object_add_control_binding(GST_OBJECT(element.get()),
                                   gst_direct_control_binding_new_absolute(GST_OBJECT(element.get()), property, line));
    gst_object_unref(line);
  }
  for (const int frame : {0, 1, 3, 4, 5}) {
    GstBuffer* in = BufferOf(picture, frame);
    ASSERT_EQ(gst_harness_push(bench.Harness(), gst_buffer_ref(in)), GST_FLOW_OK);
    GstBuffer* out = gst_harness_pull(bench.Harness());
    EXPECT_EQ(out == in, frame == 0);
    const std::string value = std::to_string(std::min(frame, 4) * 25);
    EXPECT_EQ(BytesOf(out),
              frame == 0 ? picture
                         : KvxRender("brightness --opacity " + value + " -p bringhtness=" + value, 32, 16, picture));
    gst_buffer_unref(in);
    gst_buffer_unref(out);
  }
}

// Nervous shows frames that went before. After each of these events it must know of none.
TEST(GStreamerElements, StartAnewWhereTheStreamDoes) {
  std::vector<Bytes> frames;
  for (uint32_t i = 0; i < 6; ++i) frames.push_back(TestPicture(24, 16, i + 1));
  const std::string line = "kvx-nervous mode=false";
  Bench fresh(line, 24, 16);
  const Bytes unlike = fresh.Push(frames[5], 5);
  const auto last = [&](const char* what, const auto& event, int at) {
    Bench bench(line, 24, 16);
    for (int i = 0; i < 5; ++i) bench.Push(frames[static_cast<size_t>(i)], i + 20);
    event(bench.Harness());
    EXPECT_EQ(bench.Push(frames[5], at) == unlike, *what != '-') << what;
  };
  const auto segment = [](GstClockTime start, GstClockTime stop) {
    GstSegment stretch;
    gst_segment_init(&stretch, GST_FORMAT_TIME);
    stretch.start = stretch.time = stretch.position = start;
    stretch.stop = stop;
    return gst_event_new_segment(&stretch);
  };
  last(
      "-nothing", [](GstHarness*) {}, 25);
  last(
      "-a length", [&](GstHarness* h) { gst_harness_push_event(h, segment(0, GST_SECOND)); }, 25);
  last(
      "a flush",
      [&](GstHarness* h) {
        gst_harness_push_event(h, gst_event_new_flush_start());
        gst_harness_push_event(h, gst_event_new_flush_stop(FALSE));
        gst_harness_push_event(h, segment(0, GST_CLOCK_TIME_NONE));
      },
      25);
  last(
      "a seek", [&](GstHarness* h) { gst_harness_push_event(h, segment(800 * GST_MSECOND, GST_CLOCK_TIME_NONE)); }, 25);
  last(
      "a step back", [](GstHarness*) {}, 3);
  last(
      "a second step back",
      [&](GstHarness* h) {
        gst_harness_push(h, BufferOf(frames[0], 4));
        gst_buffer_unref(gst_harness_pull(h));
      },
      3);
  last(
      "new caps", [](GstHarness* h) { gst_harness_set_src_caps_str(h, Caps(24, 16, "BGRA", "50/1").c_str()); }, 25);
  last(
      "another run",
      [&](GstHarness* h) {
        gst_element_set_state(h->element, GST_STATE_READY);
        gst_harness_play(h);
        gst_harness_set_src_caps_str(h, Caps(24, 16).c_str());
      },
      25);
}

// The length comes from upstream, the number of the frame from the running time.
TEST(GStreamerElements, TellEffectsPlaceAndLength) {
  const Bytes picture = TestPicture(48, 32);
  Bytes clip;
  for (int i = 0; i < 8; ++i) clip.insert(clip.end(), picture.begin(), picture.end());
  const std::string slug = "twosplitleftfadein";
  const Bytes expected = KvxRender(slug + " --frames 8", 48, 32, clip);
  Bench bench("kvx-" + slug, 48, 32);
  gst_pad_set_query_function(bench.Harness()->srcpad, [](GstPad* pad, GstObject* parent, GstQuery* query) -> gboolean {
    if (GST_QUERY_TYPE(query) != GST_QUERY_DURATION) return gst_pad_query_default(pad, parent, query);
    gst_query_set_duration(query, GST_FORMAT_TIME, 8 * 40 * GST_MSECOND);
    return TRUE;
  });
  for (const int frame : {2, 3, 6}) {
    const auto from = expected.begin() + frame * std::ssize(picture);
    EXPECT_EQ(bench.Push(picture, frame), Bytes(from, from + std::ssize(picture))) << frame;
  }
  EXPECT_NE(Bench("kvx-" + slug, 48, 32).Push(picture, 3), bench.Push(picture, 3));
}

TEST(GStreamerElements, KeepPresetsOfWhatTheyAreSetTo) {
  const ElementPtr from(gst_element_factory_make("kvx-bgfwave", "from"));
  const ElementPtr to(gst_element_factory_make("kvx-bgfwave", "to"));
  g_object_set(from.get(), "bg-color", 0x80123456u, "source-width", 0.5, "opacity", 40.0, nullptr);
  ASSERT_TRUE(gst_preset_save_preset(GST_PRESET(from.get()), "half"));
  ASSERT_TRUE(gst_preset_load_preset(GST_PRESET(to.get()), "half"));
  guint color = 0;
  double width = 0, opacity = 0;
  g_object_get(to.get(), "bg-color", &color, "source-width", &width, "opacity", &opacity, nullptr);
  EXPECT_EQ(color & 0xFFFFFF, 0x123456u);
  EXPECT_EQ(width, 0.5);
  EXPECT_EQ(opacity, 40);
  EXPECT_STREQ(GST_OBJECT_NAME(to.get()), "to");
}

// Pipelines in four threads, thirty times up and down each, their settings changed from a fifth.
TEST(GStreamerElements, ManyPipelinesOfOneProcess) {
  std::atomic<bool> done = false;
  std::array<ElementPtr, 4> effects;
  std::vector<ElementPtr> pipelines;
  for (ElementPtr& effect : effects) {
    pipelines.emplace_back(
        gst_parse_launch("videotestsrc ! video/x-raw,format=BGRA,width=40,height=30 ! "
                         "kvx-brightness name=x ! kvx-snow ! kvx-delay ! fakesink sync=false",
                         nullptr));
    effect.reset(gst_bin_get_by_name(GST_BIN(pipelines.back().get()), "x"));
  }
  std::vector<std::thread> threads;
  for (const ElementPtr& pipeline : pipelines) {
    threads.emplace_back([&pipeline] {
      for (int i = 0; i < 30; ++i) {
        gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
        EXPECT_EQ(gst_element_get_state(pipeline.get(), nullptr, nullptr, 20 * GST_SECOND), GST_STATE_CHANGE_SUCCESS);
        gst_element_set_state(pipeline.get(), i % 2 ? GST_STATE_READY : GST_STATE_NULL);
      }
      gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    });
  }
  std::thread changes([&] {
    for (int i = 0; !done; ++i) {
      for (const ElementPtr& effect : effects) {
        g_object_set(effect.get(), "bringhtness", i % 101 * 1.0, "opacity", i % 3 * 50.0, nullptr);
      }
    }
  });
  for (std::thread& thread : threads) thread.join();
  done = true;
  changes.join();
}

}  // namespace

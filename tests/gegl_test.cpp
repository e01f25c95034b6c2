// The operations, through GEGL's C library.
#include <gegl-plugin.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <random>
#include <set>
#include <thread>

#include "hostkit/param_track.h"
#include "hostkit/pixels.h"
#include "hosts/gegl/properties.h"
#include "tests/support/fake_host.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

using namespace kvx;

namespace {

const Babl* Rgba() {
  return babl_format("R'G'B'A u8");
}

// A third of the pixels transparent, a third opaque.
Picture Noise(int32_t width, int32_t height, bool opaque, int seed) {
  Picture picture(width, height);
  std::minstd_rand random(static_cast<uint32_t>(seed));
  for (uint8_t& byte : picture.pixels) byte = static_cast<uint8_t>(random() >> 8);
  for (size_t i = 3; i < picture.pixels.size(); i += 4) {
    if (opaque || i / 4 % 3 == 0) picture.pixels[i] = 255;
    if (!opaque && i / 4 % 3 == 1) picture.pixels[i] = 0;
  }
  return picture;
}

Picture Swapped(Picture picture) {
  SwapRedBlue(picture.pixels.data(), picture.pixels.data(), picture.pixels.size() / 4);
  return picture;
}

// A buffer of `format` with a picture whose corner is at (-5, 9), and an operation on it. `format` also says how the
// picture and the results are written, unless it is none of four bytes.
class Graph {
 public:
  Graph(const std::string& operation, const Picture& picture, const Babl* format = Rgba(), bool converted = false)
      : box_{-5, 9, picture.width, picture.height}, bytes_(converted ? Rgba() : format), root_(gegl_node_new()) {
    GeglBuffer* buffer = gegl_buffer_new(&box_, format);
    gegl_buffer_set(buffer, &box_, 0, bytes_, Swapped(picture).pixels.data(), picture.Step());
    GeglNode* source = gegl_node_new_child(root_, "operation", "gegl:buffer-source", "buffer", buffer, nullptr);
    g_object_unref(buffer);
    node = gegl_node_new_child(root_, "operation", operation.c_str(), nullptr);
    gegl_node_link(source, node);
  }
  ~Graph() { g_object_unref(root_); }
  Graph(const Graph&) = delete;

  Picture Render() const { return Part(0, box_.width); }
  // All rows of some columns.
  Picture Part(int x, int width) const {
    Picture result(width, box_.height);
    const GeglRectangle part{box_.x + x, box_.y, width, box_.height};
    gegl_node_blit(node, 1.0, &part, bytes_, result.pixels.data(), result.Step(), GEGL_BLIT_DEFAULT);
    return Swapped(std::move(result));
  }

  GeglNode* node;

 private:
  GeglRectangle box_;
  const Babl* bytes_;
  GeglNode* root_;
};

// A value of the parameter's range, set on the node. The setting that stands for it.
std::string SetAtRandom(GeglNode* node, const Property& property, std::minstd_rand& random) {
  const ParamInfo& param = property.param;
  const double share = static_cast<double>(random() % 1000) / 999;
  // As many digits as the setting has.
  const std::string text = std::to_string(param.minimum + (param.maximum - param.minimum) * share);
  if (param.TakesFractions()) {
    gegl_node_set(node, property.name.c_str(), std::stod(text), nullptr);
    return param.name + "=" + text;
  }
  const int number = std::stoi(text);
  if (param.IsColor()) {
    char hex[8];
    std::snprintf(hex, sizeof hex, "#%06x", static_cast<unsigned>(number) & 0xFFFFFF);
    GeglColor* color = gegl_color_new(hex);
    gegl_node_set(node, property.name.c_str(), color, nullptr);
    g_object_unref(color);
  } else {
    gegl_node_set(node, property.name.c_str(), number, nullptr);
  }
  return param.name + "=" + std::to_string(number);
}

// GEGL's own modules lose some memory when they start; what is allocated later must come back.
void StartGegl() {
#ifdef __SANITIZE_ADDRESS__
  const __lsan::ScopedDisabler notNow;
#endif
  gegl_init(nullptr, nullptr);
  gegl_has_operation("kvx:warm");
}

// The operations load the plug-in themselves: what they are compared with is a second copy of it.
class GeglTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    setenv("GEGL_PATH", KVX_TEST_GEGL_PATH, 1);
    StartGegl();
    dir_ = new TemporaryDirectory;
    const std::string copy = (dir_->Path() / "copy.so").string();
    std::filesystem::copy_file(KVX_TEST_PLUGIN, copy);
    plugin_ = new Plugin({copy, KVX_TEST_RESOURCES, nullptr});
  }
  static void TearDownTestSuite() {
    delete plugin_;
    delete dir_;
    gegl_exit();
  }

  static Picture Expected(const EffectInfo& effect, const std::vector<std::string>& settings, const Picture& input,
                          int frame = 0) {
    const auto object = plugin_->Create(effect);
    Picture output;
    const ParamTracks tracks(effect, settings, 100);
    for (int i = 0; i <= frame; ++i) object->Render(input, output, {i, 250}, tracks.At(i, 0));
    return output;
  }

  static TemporaryDirectory* dir_;
  static Plugin* plugin_;
};
TemporaryDirectory* GeglTest::dir_;
Plugin* GeglTest::plugin_;

TEST_F(GeglTest, EveryStillEffectGivesThePluginsBytes) {
  std::minstd_rand random(7);
  int compared = 0;
  for (const EffectInfo& effect : plugin_->Effects().All()) {
    if (effect.random || effect.moving) continue;
    for (const Picture& picture :
         {Noise(1, 1, true, 1), Noise(2, 3, false, 2), Noise(61, 37, true, 3), Noise(131, 67, false, 4)}) {
      if (!effect.materials.empty() && picture.width < 60) continue;  // decoding materials takes the time
      const Graph graph("kvx:" + effect.slug, picture);
      ASSERT_EQ(graph.Render().pixels, Expected(effect, {}, picture).pixels) << effect.slug << " " << picture.width;
      ++compared;
      if (effect.params.empty()) continue;
      // The same node once more, with other values.
      std::vector<std::string> settings;
      for (const Property& property : PropertiesOf(effect)) {
        if (property.name != "opacity") settings.push_back(SetAtRandom(graph.node, property, random));
      }
      ASSERT_EQ(graph.Render().pixels, Expected(effect, settings, picture).pixels) << effect.slug << " " << settings[0];
      ++compared;
    }
  }
  EXPECT_GT(compared, 500);
}

TEST_F(GeglTest, AMovingEffectShowsTheChosenFrameEveryTimeAlike) {
  const Picture picture = Noise(64, 48, true, 1);
  for (const char* name : {"WaterRipple", "Giddiness", "3DFlippo"}) {
    const EffectInfo& effect = plugin_->Effects().Find(name);
    const Graph graph("kvx:" + effect.slug, picture);
    for (const int frame : {0, 6, 2, 6}) {
      gegl_node_set(graph.node, "frame", frame, nullptr);
      EXPECT_EQ(graph.Render().pixels, Expected(effect, {}, picture, frame).pixels) << name << " " << frame;
    }
  }
}

TEST_F(GeglTest, ColorsStayThePicturesOwnAndDepthsAreConverted) {
  const Picture noise = Noise(40, 30, false, 6);
  EXPECT_EQ(Graph("kvx:warm", noise, babl_format_with_space("R'G'B'A u8", babl_space("Adobish"))).Render().pixels,
            Expected(plugin_->Effects().Find("Warm"), {}, noise).pixels);
  Picture grey(1, 1);
  grey.pixels = {10, 10, 10, 255};
  for (const char* format : {"Y' u8", "Y'A float", "R'G'B' u16", "RGBA float", "RaGaBaA half"}) {
    const Picture inverted = Graph("kvx:invert", grey, babl_format(format), true).Render();
    EXPECT_EQ(inverted.pixels, (std::vector<uint8_t>{245, 245, 245, 255})) << format;
  }
}

TEST_F(GeglTest, PartsOfThePictureAreCutFromOneRendering) {
  const Graph graph("kvx:snow", Noise(300, 200, true, 4));
  const Picture left = graph.Part(0, 150), right = graph.Part(150, 150), whole = graph.Render();
  for (int32_t y = 0; y < 200; ++y) {
    ASSERT_EQ(std::memcmp(whole.Row(y), left.Row(y), 600), 0) << y;
    ASSERT_EQ(std::memcmp(whole.Row(y) + 600, right.Row(y), 600), 0) << y;
  }
}

TEST_F(GeglTest, InputsWithoutEndOrWithoutPixelsPass) {
  const Graph graph("kvx:invert", Picture(3, 2));
  GeglNode* root = gegl_node_get_parent(graph.node);
  GeglColor* red = gegl_color_new("#ff0000");
  GeglNode* color = gegl_node_new_child(root, "operation", "gegl:color", "value", red, nullptr);
  GeglNode* crop =
      gegl_node_new_child(root, "operation", "gegl:crop", "x", -5.0, "y", 9.0, "width", 3.0, "height", 2.0, nullptr);
  g_object_unref(red);
  gegl_node_link(color, graph.node);
  EXPECT_EQ(graph.Render().pixels[2], 255);
  gegl_node_link_many(color, crop, graph.node, nullptr);
  EXPECT_EQ(graph.Render().pixels[2], 0);
  gegl_node_set(crop, "width", 0.0, nullptr);
  EXPECT_EQ(graph.Render().pixels, Picture(3, 2).pixels);
  gegl_node_disconnect(graph.node, "input");
  EXPECT_EQ(graph.Render().pixels, Picture(3, 2).pixels);
}

TEST_F(GeglTest, ManyGraphsAtOnceSomeOfThemStopped) {
  const std::vector<std::string> names = {"Warm", "Emboss", "WaterRipple", "Invert"};
  const Picture picture = Noise(150, 90, false, 5);
  std::vector<Picture> results(names.size());
  std::vector<std::thread> threads;
  for (size_t i = 0; i < names.size(); ++i) {
    threads.emplace_back([&, i] {
      for (int k = 0; k < 10; ++k) {
        const Graph graph("kvx:" + Slug(names[i]), picture);
        const GeglRectangle part{0, 10, 40, 40};
        GeglProcessor* processor = gegl_node_new_processor(graph.node, &part);
        gegl_processor_work(processor, nullptr);
        g_object_unref(processor);
        if (k % 3 == 0) results[i] = graph.Render();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(results[i].pixels, Expected(plugin_->Effects().Find(names[i]), {}, picture).pixels) << names[i];
  }
}

TEST_F(GeglTest, OperationsAreDescribed) {
  std::set<std::string> titles;
  for (const EffectInfo& effect : plugin_->Effects().All()) {
    const std::string name = "kvx:" + effect.slug;
    const std::string about = gegl_operation_get_key(name.c_str(), "description");
    EXPECT_TRUE(titles.insert(gegl_operation_get_key(name.c_str(), "title")).second) << name;
    EXPECT_NE(about.find(effect.family), std::string::npos) << name;
    EXPECT_EQ(about.find("Random") != std::string::npos, effect.random) << name;
    EXPECT_EQ(gegl_operation_find_property(name.c_str(), "frame") != nullptr, effect.moving) << name;
  }
  EXPECT_EQ(titles.count("kvx: Warm") + titles.count("kvx: Cartoon (33)"), 2u);
  EXPECT_STREQ(gegl_operation_get_key("kvx:flip", "categories"), "map:time-and-layouts");
}

// Lists, texts and clashing or broken declarations are in no catalogue of ours, but may be in another.
TEST_F(GeglTest, PropertiesOfEveryKind) {
  EffectInfo effect;
  effect.params = {{"Name", ParamType::kInteger, 5, 1, 9},
                   {"3D Size", ParamType::kDouble, 0, 1, 0.25},
                   {"3d-size", ParamType::kSpecialFloat, 0, 1},
                   {"Place", ParamType::kNinePositions, 0, 8, 4},
                   {"From", ParamType::kFirstColor, 0, 16777215, 0x102030},
                   {"Mask", ParamType::kMaskList},
                   {"Secret", ParamType::kFloat, 0, 9, 3, true}};
  effect.moving = true;
  std::string names;
  std::vector<GParamSpec*> specs;
  const std::vector<Property> properties = PropertiesOf(effect);
  for (const Property& property : properties) {
    names += property.name + " ";
    specs.push_back(g_param_spec_ref_sink(MakeParamSpec(property)));
  }
  EXPECT_EQ(names, "kvx-name kvx-3d-size kvx-3d-size-2 place from mask secret opacity frame ");
  EXPECT_EQ(G_PARAM_SPEC_INT(specs[0])->minimum, 1);
  EXPECT_EQ(G_PARAM_SPEC_INT(specs[0])->default_value, 5);
  EXPECT_EQ(G_PARAM_SPEC_DOUBLE(specs[1])->default_value, 0.25);
  EXPECT_EQ(G_PARAM_SPEC_ENUM(specs[3])->enum_class->n_values, 9u);
  EXPECT_EQ(G_PARAM_SPEC_VALUE_TYPE(specs[5]), G_TYPE_STRING);
  EXPECT_STREQ(gegl_param_spec_get_property_key(specs[6], "visible"), "0");
  GValue color = G_VALUE_INIT;
  g_value_init(&color, GEGL_TYPE_COLOR);
  g_param_value_set_default(specs[4], &color);
  EXPECT_EQ(NumberOf(properties[4], color, nullptr), 0x102030);
  g_value_unset(&color);
  for (GParamSpec* spec : specs) g_param_spec_unref(spec);
}

}  // namespace

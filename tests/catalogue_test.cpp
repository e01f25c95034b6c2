// Catalogue files: the whole file, the directory walk, filter.xml, and everything that can be wrong with them.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "catalogue/filter_parser.h"
#include "framework/factory/effect_table.h"
#include "tests/support/fake_host.h"

using namespace vizcore;

namespace {

using nlohmann::json;

const char* const kConf = "kvx_effect/material/PureCFilter.conf";

std::string Entry(int32_t id) {
  return "{\"GUID\": \"" + GuidOf(id) + "\", \"DATAPATH\": \"/\"}";
}
std::string Config(int32_t id) {
  return "{\"GUID\": \"" + GuidOf(id) + "\"}";
}

struct Loaded {
  uint32_t count;
  std::vector<LogLine> log;
  std::vector<std::string> guids;
};

Loaded Load(const std::string& root) {
  LoadedPlugin plugin;
  Loaded loaded{plugin.Start(root).filterCount, plugin.provider.util.log, {}};
  for (int32_t i = 0;; ++i) {
    FakeRegistrar registrar;
    if (plugin.registerEffect(i, &registrar) != 0) return loaded;
    loaded.guids.push_back(registrar.calls.at(0).substr(8, 36));
  }
}
Loaded Load(const TemporaryDirectory& root) {
  return Load(root.Path().string());
}

TEST(CatalogueFile, LogsWhatHappenedAndFallsBackToTheWalk) {
  const TemporaryDirectory root;
  const std::string path = root.Path().string() + "/" + kConf;
  root.Write("kvx_effect/nle_default/a/x.conf", Config(71));

  Loaded loaded = Load(root);
  EXPECT_EQ(loaded.log, (std::vector<LogLine>{{4, "[LoadJsonFromPath]Open PureCFilterConf Failed: " + path}}));
  EXPECT_EQ(loaded.count, 1u);
  for (const char* broken : {"", "not json", "[{\"GUID\": \"x\"", "[1,]", "\xFF\xFE"}) {
    root.Write(kConf, broken);
    loaded = Load(root);
    EXPECT_EQ(loaded.log, (std::vector<LogLine>{{4, "[LoadJsonFromPath]Read PureCFilterConf Failed: " + path}}));
    EXPECT_EQ(loaded.count, 1u) << broken;
  }
  root.Write(kConf, "[]");
  loaded = Load(root);
  EXPECT_EQ(loaded.log, (std::vector<LogLine>{{2, "[LoadJsonFromPath]Load PureCFilterConf Success: " + path}}));
  EXPECT_EQ(loaded.count, 0u) << "an empty catalogue is a catalogue: no walk";
}

TEST(CatalogueFile, SkipsWhatIsNoFilter) {
  const TemporaryDirectory root;
  root.Write(kConf, "[1, null, \"x\", [], {}, {\"GUID\": \"" + GuidOf(25) +
                        "\"}, {\"DATAPATH\": \"/\"}, {\"DATAPATH\": "
                        "\"/\", \"GUID\": \"\"}, {\"DATAPATH\": \"/\", \"GUID\": \"unknown\"}, " +
                        Entry(71) + "]");
  EXPECT_EQ(Load(root).guids, std::vector<std::string>{GuidOf(71)});
  root.Write(kConf, "{\"a\": " + Entry(25) + ", \"b\": " + Entry(71) + ", \"c\": 5}");
  EXPECT_EQ(Load(root).count, 2u) << "the values of an object count as elements";
  root.Write(kConf, "17");
  EXPECT_EQ(Load(root).count, 0u);
}

TEST(CatalogueFile, FilterNamedLikeALoadedGuidIsLeftOut) {
  const TemporaryDirectory root;
  root.Write(kConf, "[" + Entry(25) + ", {\"GUID\": \"" + GuidOf(71) + "\", \"NAME\": \"" + GuidOf(25) +
                        "\", \"DATAPATH\": \"/\"}]");
  EXPECT_EQ(Load(root).guids, std::vector<std::string>{GuidOf(25)});
}

std::string MessageOf(const std::string& catalogue) {
  const TemporaryDirectory root;
  root.Write(kConf, catalogue);
  LoadedPlugin plugin;  // the exception is the library's, so the library must outlive it
  try {
    plugin.Start(root.Path().string());
  } catch (const std::exception& error) {
    return error.what();
  }
  return "no exception";
}

TEST(CatalogueFile, WrongTypesLeaveStartupAsExceptions) {
  const std::string guid = "\"GUID\": \"" + GuidOf(25) + "\", \"DATAPATH\": \"/\"";
  EXPECT_EQ(MessageOf("[{\"DATAPATH\": 5}]"), "[json.exception.type_error.302] type must be string, but is number");
  EXPECT_EQ(MessageOf("[{\"DATAPATH\": \"/\", \"GUID\": null}]"),
            "[json.exception.type_error.302] type must be string, but is null");
  EXPECT_EQ(MessageOf("[{" + guid + ", \"PARAMS\": [{\"NAME\": [], \"TYPE\": \"int\"}]}]"),
            "[json.exception.type_error.302] type must be string, but is array");
  EXPECT_EQ(MessageOf("[{" + guid + ", \"DYNAMIC\": 1}]"),
            "[json.exception.type_error.302] type must be string, but is number");
  EXPECT_EQ(MessageOf("[{" + guid + ", \"DYNAMIC\": \"x1\"}]"), "invalid stoi argument");
  EXPECT_EQ(MessageOf("[{" + guid + ", \"DYNAMIC\": \"99999999999\"}]"), "stoi argument out of range");
  EXPECT_EQ(MessageOf("[{" + guid + ", \"DYNAMIC\": \" 2x\"}]"), "no exception");
}

TEST(CatalogueFile, BearsSizeAndDepth) {
  const TemporaryDirectory root;
  std::string many = "[" + Entry(71);
  for (int i = 0; i < 10000; ++i) many += ", {\"GUID\": \"none" + std::to_string(i) + "\", \"DATAPATH\": \"/\"}";
  root.Write(kConf, many + "]");
  EXPECT_EQ(Load(root).count, 1u);
  constexpr size_t kDepth = 200000;
  const std::string deep = std::string(kDepth, '[') + std::string(kDepth, ']');
  root.Write(kConf, "[{\"GUID\": \"" + GuidOf(71) + "\", \"DATAPATH\": \"/\", \"X\": " + deep + "}]");
  EXPECT_EQ(Load(root).count, 1u);
  root.Write(kConf, "broken");
  root.Write("kvx_effect/nle_default/x.conf", "{\"GUID\": \"" + GuidOf(71) + "\", \"X\": " + deep + "}");
  EXPECT_EQ(Load(root).count, 1u);
}

TEST(CatalogueFile, RootsWithSpacesAndOtherLettersWork) {
  const TemporaryDirectory root;
  const std::string name = "a b \xC3\xA9\xE2\x82\xAC";
  root.Write(name + "/" + kConf, "[" + Entry(71) + "]");
  EXPECT_EQ(Load(root.Path().string() + "/" + name).count, 1u);
  EXPECT_EQ(Load(root.Path().string() + "/missing").count, 0u);
  EXPECT_EQ(Load("\xFF\xFF").count, 0u);
  EXPECT_EQ(Load("").count, 0u);
}

TEST(CatalogueFile, PathOfTheHostThatFillsItsBufferIsCutToAnEnd) {
  LoadedPlugin plugin;
  plugin.provider.util.endsPath = false;
  plugin.Start("");
  EXPECT_EQ(plugin.provider.util.log.at(0).text, "[LoadJsonFromPath]Open PureCFilterConf Failed: " +
                                                     std::string(511, 'p') + "/kvx_effect/material/PureCFilter.conf");
}

TEST(DirectoryWalk, GoesDepthFirstInOrderOfNames) {
  const TemporaryDirectory root;
  root.Write("kvx_effect/nle_default/z.conf", Config(25));
  root.Write("kvx_effect/nle_default/b/a.conf.bak", Config(28));
  root.Write("kvx_effect/nle_default/a/deep/x.conf", Config(71));
  root.Write("kvx_effect/nle_default/a/none.txt", Config(54));
  EXPECT_EQ(Load(root).guids, (std::vector<std::string>{GuidOf(71), GuidOf(28), GuidOf(25)}));
}

TEST(DirectoryWalk, LastConfigurationWinsAndXmlNamesAnother) {
  const TemporaryDirectory root;
  const std::string top = "kvx_effect/nle_default/";
  const auto xml = [](const std::string& name) {
    return "<?xml version=\"1.0\"?><Filter><Other/><GPUFilter><ConfigFile>" + name +
           "</ConfigFile></GPUFilter></Filter>";
  };
  root.Write(top + "a/1.conf", Config(25));
  root.Write(top + "a/2.conf", Config(28));
  root.Write(top + "b/marker.conf", Config(25));
  root.Write(top + "b/real.json", Config(71));
  root.Write(top + "b/filter.xml", xml("real.json"));
  root.Write(top + "c/filter.xml", xml("real.json"));  // no .conf
  root.Write(top + "c/real.json", Config(54));
  root.Write(top + "d/m.conf", Config(54));
  root.Write(top + "d/filter.xml", "<Filter><GPUFilter/></Filter>");  // no such path
  root.Write(top + "e/m.conf", Config(54));
  root.Write(top + "e/filter.xml", "<Filter><broken");
  root.Write(top + "f/m.conf", Config(54));
  root.Write(top + "f/filter.xml", xml(std::string(128, 'n')));  // one more than fits
  root.Write(top + "f/" + std::string(128, 'n'), Config(54));
  root.Write(top + "h/m.conf", Config(54));
  root.Write(top + "h/filter.xml", xml(std::string(127, 'n')));
  root.Write(top + "h/" + std::string(127, 'n'), Config(39));
  root.Write(top + "g/m.conf", "not json");
  EXPECT_EQ(Load(root).guids, (std::vector<std::string>{GuidOf(28), GuidOf(71), GuidOf(39)}));
}

TEST(DirectoryWalk, ConfigurationThatIsNoObjectIsLoggedAndSkipped) {
  const TemporaryDirectory root;
  root.Write("kvx_effect/nle_default/x/a.conf", "[1, 2]");
  root.Write("kvx_effect/nle_default/y/a.conf", Config(71));
  const Loaded loaded = Load(root);
  EXPECT_EQ(loaded.count, 1u);
  ASSERT_EQ(loaded.log.size(), 2u);
  EXPECT_EQ(loaded.log[1], (LogLine{4, "[GetFilterInfoFromJson]PureCFilterConf emplace back failed: " +
                                           root.Path().string() + "/kvx_effect/nle_default/x/"}));
}

TEST(DirectoryWalk, DoesNotFollowLinksInCircles) {
  const TemporaryDirectory root;
  root.Write("kvx_effect/nle_default/a/x.conf", Config(71));
  const auto top = root.Path() / "kvx_effect/nle_default";
  std::filesystem::create_directory_symlink(top, top / "a/loop");
  std::filesystem::create_directory_symlink(top, top / "b");
  EXPECT_EQ(Load(root).guids, std::vector<std::string>{GuidOf(71)});
}

// Directories that all link to each other have as many ways through them as orders to visit them in.
TEST(DirectoryWalk, VisitsEachDirectoryOnce) {
  const TemporaryDirectory root;
  const auto top = root.Path() / "kvx_effect/nle_default";
  constexpr int kDirectories = 12;
  for (int i = 0; i < kDirectories; ++i) {
    root.Write("kvx_effect/nle_default/" + std::to_string(i) + "/x.conf", Config(71));
    for (int k = 0; k < kDirectories; ++k) {
      std::filesystem::create_directory_symlink(top / std::to_string(k), top / std::to_string(i) / std::to_string(k));
    }
  }
  EXPECT_EQ(Load(root).guids, std::vector<std::string>(kDirectories, GuidOf(71)));
}

TEST(FilterParser, TexturesAndParameters) {
  const auto info = vizcore::ParseFilterInfo(json::parse(R"({"GUID": "g", "TEXTURES": [
      {"TYPE": "image", "FILE": "a.png"}, null, {}, {"TYPE": "mask", "FILE": "b.png"}],
    "PARAMS": [
      {"NAME": "f", "TYPE": "float", "MIN": 0.5, "MAX": 2, "DEFAULT": 1.25},
      {"NAME": "dropped", "TYPE": "bool", "MIN": 7, "MAX": 7, "DEFAULT": 7},
      {"TYPE": "point", "MIN": -3.9, "MAX": 1e300, "DEFAULT": 0.5},
      {"NAME": "g", "TYPE": "float", "DEFAULT": 2},
      {"NAME": "i", "TYPE": "int"},
      {"NAME": "s", "TYPE": "string", "MIN": "not read", "UIType": "FilePath"}, 5]})"),
                                             "d/");
  ASSERT_TRUE(info);
  EXPECT_EQ(info->GetTextureCount(), 2);
  EXPECT_EQ(info->GetTexture(0), "d/a.png");
  EXPECT_EQ(info->GetTexture(1), "mask|d/b.png");
  ASSERT_EQ(info->GetParamCount(), 5);
  const auto check = [&](int32_t index, const char* name, ParamKind kind, auto minimum, auto maximum, auto value) {
    std::shared_ptr<NLEFilterParams> params;
    info->GetParam(params, index);
    ASSERT_TRUE(params) << index;
    char text[38];
    params->GetName(text, sizeof text);
    EXPECT_STREQ(text, name);
    EXPECT_EQ(params->GetKind(), kind);
    NLEParamValue low, high, now;
    params->GetRange(low, high);
    params->GetValue(now);
    if constexpr (std::is_same_v<decltype(value), float>) {
      EXPECT_EQ(low.AsFloat(), minimum);
      EXPECT_EQ(high.AsFloat(), maximum);
      EXPECT_EQ(now.AsFloat(), value);
    } else {
      EXPECT_EQ(low.AsInt32(), minimum);
      EXPECT_EQ(high.AsInt32(), maximum);
      EXPECT_EQ(now.AsInt32(), value);
    }
  };
  check(0, "f", ParamKind::kFloat, 0.5f, 2.0f, 1.25f);
  check(1, "", ParamKind::kInt32, -3, INT32_MIN, 0);
  check(2, "g", ParamKind::kFloat, 0.5f, 2.0f, 2.0f);  // what the element before left in place
  check(3, "i", ParamKind::kInt32, 0, 0, 0);           // "int" has no element before it; "point" is another type
  check(4, "s", ParamKind::kText, 0, 0, 0);
  std::shared_ptr<NLEFilterParams> none;
  info->GetParam(none, 5);
  EXPECT_FALSE(none);
  EXPECT_THROW(vizcore::ParseFilterInfo(json::parse(R"({"GUID": "g", "PARAMS": [{"TYPE": "int", "MIN": "1"}]})"), ""),
               json::type_error);
}

// The catalogue that ships, held against the table and the processors.
TEST(ShippedCatalogue, NamesEveryEffectThatExistsWithItsParameters) {
  std::ifstream file(std::string(KVX_TEST_RESOURCES) + "/" + kConf);
  const json catalogue = json::parse(file);
  std::map<std::string, json> entries;
  std::vector<std::string> order;
  for (const json& entry : catalogue) {
    entries[entry.at("GUID")] = entry;
    order.push_back(entry.at("GUID"));
  }
  EXPECT_EQ(entries.size(), order.size()) << "a GUID stands twice";
  std::vector<std::string> expected;
  for (const EffectRow& row : EffectRows()) {
    if (!row.name || !row.make) continue;
    const std::string guid = GuidOf(row.id);
    expected.push_back(guid);
    ASSERT_TRUE(entries.count(guid)) << "no entry for " << row.id;
    const json& entry = entries[guid];
    EXPECT_FALSE(entry.at("NAME").get<std::string>().empty()) << row.id;
    std::set<std::string> names;
    if (!entry.contains("PARAMS")) continue;
    for (const json& param : entry.at("PARAMS")) {
      EXPECT_TRUE(names.insert(param.at("NAME")).second) << row.id;
      const double minimum = param.at("MIN"), maximum = param.at("MAX"), value = param.at("DEFAULT");
      EXPECT_LT(minimum, maximum) << row.id << " " << param.at("NAME");
      EXPECT_TRUE(minimum <= value && value <= maximum) << row.id << " " << param.at("NAME");
    }
    const auto processor = MakeEffect(row.id, 640, 640);
    for (int32_t i = 0; i < row.paramCount; ++i) {
      FilterParamDesc desc{};
      processor->GetParamDesc(&desc, i);
      std::string name;
      for (const char16_t* c = desc.name; *c; ++c) name += static_cast<char>(*c);
      if (!name.empty()) {
        EXPECT_TRUE(names.count(name)) << row.id << " reports " << name << ", which the catalogue leaves out";
      }
    }
  }
  EXPECT_EQ(order, expected) << "not in the order of the table";
  EXPECT_EQ(Load(KVX_TEST_RESOURCES).count, expected.size());
}

}  // namespace

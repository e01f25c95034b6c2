// Start-up, registration, creation, frames and shut-down, through the exports of the loaded library.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <thread>

#include "tests/support/fake_host.h"

namespace {

const char* const kConf = "kvx_effect/material/PureCFilter.conf";

std::string Entry(int32_t id, const std::string& rest = "") {
  return "{\"GUID\": \"" + GuidOf(id) + "\", \"NAME\": \"effect" + std::to_string(id) + "\", \"DATAPATH\": \"/x/\"" +
         (rest.empty() ? "" : ", " + rest) + "}";
}

class Boundary : public testing::Test {
 protected:
  PluginStartupInfo StartWith(const std::string& catalogue) {
    root_.Write(kConf, catalogue);
    return plugin_.Start(root_.Path().string());
  }
  std::vector<LogLine>& Log() { return plugin_.provider.util.log; }

  TemporaryDirectory root_;
  LoadedPlugin plugin_;
};

TEST_F(Boundary, StartupAsksForSuitesAndFillsTheRecord) {
  const PluginStartupInfo info = StartWith("[" + Entry(25) + "," + Entry(71) + "]");
  EXPECT_EQ(plugin_.provider.asked,
            (std::vector<std::string>{"Memory Allocator Suite 1", "Image Buffer ALlocator Suite 1", "Host Util Suite 1",
                                      "GPU Device Suite 1"}));
  EXPECT_EQ(plugin_.provider.util.asked, "1 resources 512");
  EXPECT_EQ(info.reserved0, 1);
  EXPECT_EQ(info.reserved1, 1);
  EXPECT_STREQ(info.name, "PureCPluginFilter");
  EXPECT_STREQ(info.description, "PureCPluginFilter Desc");
  EXPECT_STREQ(info.reserved2, "");
  EXPECT_EQ(info.reserved3, 0);
  EXPECT_EQ(info.filterCount, 2u);
}

TEST_F(Boundary, WithoutHostUtilNothingIsLoadedOrLogged) {
  plugin_.provider.offersUtil = false;
  EXPECT_EQ(StartWith("[" + Entry(25) + "]").filterCount, 0u);
  KVXEffect* effect = nullptr;
  EXPECT_EQ(plugin_.create(GuidOf(25).c_str(), 0, &effect), 2);
  EXPECT_TRUE(Log().empty());
}

TEST_F(Boundary, TableNeedsNoStartup) {
  const uint32_t count = static_cast<uint32_t>(plugin_.counts());
  EXPECT_EQ(plugin_.info(241)->effectId, 1390) << "a host's row numbers stay what they are";
  EXPECT_NE(plugin_.info(count - 1), nullptr);
  EXPECT_EQ(plugin_.info(count), nullptr);
  EXPECT_EQ(plugin_.pixFormat(), 0);
  CBaseFilterProc* processor = nullptr;
  ASSERT_EQ(plugin_.find(71, 2, 1, &processor), 1);
  FrameBuffer src(2, 1), dst(2, 1);
  processor->Process(src.Data(), dst.Data(), 8, 8, nullptr);
  EXPECT_EQ(dst.Word(1, 0), 0x00FFFFFFu);
  delete processor;
}

TEST_F(Boundary, RepeatedGuidIsListedTwiceAndCountedOnce) {
  const PluginStartupInfo info = StartWith("[" + Entry(25) + "," + Entry(25, "\"DYNAMIC\": \"1\"") + "]");
  EXPECT_EQ(info.filterCount, 1u);
  FakeRegistrar registrar;
  EXPECT_EQ(plugin_.registerEffect(0, &registrar), 0);
  EXPECT_EQ(registrar.calls.at(1), "slot 1: " + std::to_string(0x801032)) << "the later description stands in the map";
  EXPECT_EQ(plugin_.registerEffect(1, &registrar), 0);
  EXPECT_EQ(plugin_.registerEffect(2, &registrar), 2);
}

TEST_F(Boundary, RegisterRefusesBadArguments) {
  StartWith("[" + Entry(25) + "]");
  FakeRegistrar registrar;
  EXPECT_EQ(plugin_.registerEffect(-1, &registrar), 2);
  EXPECT_EQ(plugin_.registerEffect(0, nullptr), 2);
  EXPECT_EQ(plugin_.registerEffect(INT32_MAX, &registrar), 2);
  EXPECT_TRUE(registrar.calls.empty());
}

TEST_F(Boundary, DeclaresEveryKindToItsSlot) {
  const auto param = [](const char* name, const char* type, const char* ui) {
    return std::string("{\"NAME\":\"") + name + "\",\"TYPE\":\"" + type + "\",\"UIType\":\"" + ui +
           "\",\"MIN\":1,\"MAX\":9,\"DEFAULT\":5}";
  };
  std::string params;
  for (const auto& [name, type, ui] : {std::tuple{"a", "float", ""},
                                       {"b", "float", "Mult100"},
                                       {"c", "float", "NoShow"},
                                       {"d", "int", ""},
                                       {"e", "int", "Color"},
                                       {"f", "int", "CheckBox"},
                                       {"g", "int", "9Palaces"},
                                       {"h", "int", "NoShow"},
                                       {"i", "int", "GradientColor"},
                                       {"j", "int", "ListMosaic"},
                                       {"k", "point", "ColorStart"},
                                       {"l", "int", "ColorEnd"},
                                       {"m", "string", "ListMask"},
                                       {"n", "string", "FilePath"}}) {
    params += (params.empty() ? "" : ",") + param(name, type, ui);
  }
  StartWith("[" + Entry(71, "\"PARAMS\": [" + params + "]") + "]");
  FakeRegistrar registrar;
  Log().clear();
  ASSERT_EQ(plugin_.registerEffect(0, &registrar), 0);
  EXPECT_EQ(
      registrar.calls,
      (std::vector<std::string>{"slot 0: " + GuidOf(71) + " effect71", "slot 1: " + std::to_string(0x1032), "slot 2: 0",
                                "slot 5: -1 0 a a 1 9 5 2", "slot 24: -1 1 b b 1 9 5 2", "slot 5: -1 2 c c 1 9 5 1",
                                "slot 6: -1 3 d d 1 9 5 1 2", "slot 7: -1 4 e e 5 1 9 2", "slot 9: -1 5 f f 1 9 5 2",
                                "slot 19: -1 6 g g 1 9 5 0", "slot 6: -1 7 h h 1 9 5 1 1", "slot 21: -1 9 j j 1 9 5 0",
                                "slot 22: -1 10 k k 1 9 5 2", "slot 23: -1 11 l l 1 9 5 2", "slot 20: -1 12 m m null 0",
                                "slot 14: -1 13 n n null 0"}));
  EXPECT_EQ(Log(), (std::vector<LogLine>{{2, "Register PureC Effect Success: " + GuidOf(71) + " effect71"}}));
}

TEST_F(Boundary, ParametersThatCreationAddsAreDeclaredAfterIt) {
  StartWith("[" + Entry(25) + "]");
  FakeRegistrar before;
  plugin_.registerEffect(0, &before);
  EXPECT_EQ(before.calls.size(), 3u);
  KVXEffect* effect = nullptr;
  ASSERT_EQ(plugin_.create(GuidOf(25).c_str(), 0, &effect), 0);
  plugin_.release(effect);
  FakeRegistrar after;
  plugin_.registerEffect(0, &after);
  ASSERT_EQ(after.calls.size(), 5u);
  EXPECT_EQ(after.calls[3], "slot 6: -1 0 Bringhtness Bringhtness 0 100 60 1 2");
  EXPECT_EQ(after.calls[4], "slot 6: -1 1 alpha alpha 0 100 100 1 2");
}

TEST_F(Boundary, CreateAndReleaseStatusesAndLogs) {
  StartWith("[" + Entry(25) + "]");
  const std::string guid = GuidOf(25);
  Log().clear();
  int marker;
  auto* untouched = reinterpret_cast<KVXEffect*>(&marker);
  KVXEffect* effect = untouched;
  EXPECT_EQ(plugin_.create(guid.c_str(), 1, &effect), 2);
  EXPECT_TRUE(Log().empty());
  EXPECT_EQ(plugin_.create("nobody", 0, &effect), 2);
  EXPECT_EQ(effect, untouched);
  EXPECT_EQ(Log(), (std::vector<LogLine>{{4, "Create PureC Effect Failed: nobody"}}));
  Log().clear();
  EXPECT_EQ(plugin_.create(guid.c_str(), 0, &effect), 0);
  EXPECT_EQ(Log(), (std::vector<LogLine>{{2, "Create PureC Effect Success: " + guid}}));
  EXPECT_EQ(effect->Reserved1() + effect->Reserved2() + effect->Reserved5() + effect->Reserved6() +
                effect->Reserved8() + effect->Reserved9(),
            0);
  plugin_.release(effect);
  plugin_.release(nullptr);
  struct Foreign : KVXEffect {
    int32_t Prepare(HostRenderContext*) override { return 0; }
    int32_t Render(HostRenderContext*) override { return 0; }
  } foreign;
  plugin_.release(&foreign);
}

TEST_F(Boundary, FramesTakeValuesByNameAtTheCurrentFrame) {
  StartWith("[" +
            Entry(25,
                  "\"PARAMS\":[{\"NAME\":\"Bringhtness\",\"TYPE\":\"float\",\"MIN\":0,\"MAX\":100,"
                  "\"DEFAULT\":50},{\"NAME\":\"path\",\"TYPE\":\"string\"}]") +
            "]");
  KVXEffect* effect = nullptr;
  ASSERT_EQ(plugin_.create(GuidOf(25).c_str(), 0, &effect), 0);
  FrameBuffer src(8, 2), dst(8, 2);
  src.FillOpaquePicture();
  FakeImage input(src), output(dst);
  FakeContext context;
  context.input = &input;
  context.output = &output;
  context.frame = 0x500000007;

  EXPECT_EQ(effect->Render(&context), 0) << "without Prepare the defaults hold";
  EXPECT_EQ(dst.Packed(), src.Packed());
  context.numbers["Bringhtness"] = 100;
  EXPECT_EQ(effect->Prepare(&context), 0);
  EXPECT_EQ(context.asked,
            (std::vector<std::string>{"Bringhtness 5 21474836487", "path 8 21474836487", "alpha 3 21474836487"}));
  EXPECT_EQ(effect->Render(&context), 0);
  EXPECT_EQ(dst.Word(3, 1), 0xFFFFFFFFu);
  context.numbers.clear();
  effect->Prepare(&context);
  effect->Render(&context);
  EXPECT_EQ(dst.Word(3, 1), 0xFFFFFFFFu) << "a value that the host does not give stays";
  context.numbers["alpha"] = 0;
  effect->Prepare(&context);
  effect->Render(&context);
  EXPECT_EQ(dst.Packed(), src.Packed());
  plugin_.release(effect);
}

TEST_F(Boundary, RenderChecksImagesAndMemory) {
  StartWith("[" + Entry(71) + "]");
  KVXEffect* effect = nullptr;
  ASSERT_EQ(plugin_.create(GuidOf(71).c_str(), 0, &effect), 0);
  FrameBuffer src(4, 4), dst(4, 4);
  FakeImage input(src), output(dst);
  FakeContext context;
  const auto render = [&](HostImage* in, HostImage* out) {
    context.input = in;
    context.output = out;
    return effect->Render(&context);
  };
  EXPECT_EQ(render(nullptr, &output), 2);
  EXPECT_EQ(render(&input, nullptr), 2);
  EXPECT_EQ(render(&input, &output), 0);

  FakeImage broken = input;
  broken.data = nullptr;
  EXPECT_EQ(render(&broken, &output), 4);
  broken.height = 0;
  EXPECT_EQ(render(&broken, &output), 4) << "no bytes pass the check, and the filter fails";
  FakeImage noOutput = output;
  noOutput.data = nullptr;
  EXPECT_EQ(render(&input, &noOutput), 4);
  FakeImage beyond = input;
  beyond.height = 1 << 30;
  EXPECT_EQ(render(&beyond, &output), 4);

  void* page = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  FakeImage readOnly = output;
  readOnly.data = static_cast<uint8_t*>(page);
  EXPECT_EQ(render(&readOnly, &output), 0);
  EXPECT_EQ(render(&input, &readOnly), 4);
  munmap(page, 4096);
  EXPECT_EQ(render(&readOnly, &output), 4);
  plugin_.release(effect);
}

TEST_F(Boundary, OneBufferMayBeSourceAndDestination) {
  constexpr int32_t kIds[] = {13, 71, 366, 367, 1374};
  std::string catalogue;
  for (const int32_t id : kIds) catalogue += (catalogue.empty() ? "[" : ",") + Entry(id);
  StartWith(catalogue + "]");
  for (const int32_t id : kIds) {
    KVXEffect* effect = nullptr;
    ASSERT_EQ(plugin_.create(GuidOf(id).c_str(), 0, &effect), 0);
    FrameBuffer src(64, 48), dst(64, 48);
    src.FillOpaquePicture();
    dst.FillOpaquePicture();  // some pixels stay as they are
    FakeImage input(src), output(dst);
    FakeContext context;
    context.numbers = {{"X", 0}, {"Y", 1}};
    context.frame = 60;
    context.total = 200;
    context.input = &input;
    context.output = &output;
    effect->Prepare(&context);
    ASSERT_EQ(effect->Render(&context), 0);
    EXPECT_FALSE(dst.Packed() == src.Packed()) << id;
    context.output = &input;
    ASSERT_EQ(effect->Render(&context), 0);
    EXPECT_TRUE(src.Packed() == dst.Packed()) << id;
    plugin_.release(effect);
  }
}

TEST_F(Boundary, ObjectsOutliveShutdownAndNothingFollowsIt) {
  StartWith("[" + Entry(71) + "]");
  KVXEffect* effect = nullptr;
  ASSERT_EQ(plugin_.create(GuidOf(71).c_str(), 0, &effect), 0);
  EXPECT_EQ(plugin_.shutdown(), 0);
  EXPECT_EQ(plugin_.shutdown(), 0);
  FrameBuffer src(2, 2), dst(2, 2);
  src.FillOpaquePicture();
  FakeImage input(src), output(dst);
  FakeContext context;
  context.input = &input;
  context.output = &output;
  EXPECT_EQ(effect->Prepare(&context), 0);
  EXPECT_EQ(effect->Render(&context), 0);
  EXPECT_EQ(dst.Word(1, 1), src.Word(1, 1) ^ 0xFFFFFF);
  plugin_.release(effect);
  FakeRegistrar registrar;
  EXPECT_EQ(plugin_.registerEffect(0, &registrar), 2);
  EXPECT_EQ(plugin_.create(GuidOf(71).c_str(), 0, &effect), 2);
}

TEST_F(Boundary, RegisterFromPathDeclaresOnlyWhatIsLoaded) {
  StartWith("[" + Entry(25) + "]");
  root_.Write("known/a.conf", "{\"GUID\": \"" + GuidOf(25) + "\", \"NAME\": \"other\"}");
  root_.Write("unknown/a.conf", "{\"GUID\": \"" + GuidOf(71) + "\", \"NAME\": \"x\"}");
  root_.Write("empty/readme.txt", "");
  const std::string base = root_.Path().string();
  FakeRegistrar registrar;
  EXPECT_EQ(plugin_.registerFromPath((base + "/known").c_str(), &registrar), 0);
  EXPECT_EQ(registrar.calls.at(0), "slot 0: " + GuidOf(25) + " effect25") << "the registry's description is declared";
  Log().clear();
  EXPECT_EQ(plugin_.registerFromPath((base + "/unknown").c_str(), &registrar), 2);
  EXPECT_EQ(plugin_.registerFromPath((base + "/empty").c_str(), &registrar), 2);
  EXPECT_EQ(plugin_.registerFromPath((base + "/missing").c_str(), &registrar), 2);
  EXPECT_EQ(Log(), (std::vector<LogLine>{{4, "PureCFilter::GetNLEFilterInfoByName Failed: " + GuidOf(71)},
                                         {4, "Register PureCFilter Failed: " + base + "/empty"},
                                         {4, "Register PureCFilter Failed: " + base + "/missing"}}));
}

TEST_F(Boundary, ObjectsOfOneEffectRenderInParallel) {
  StartWith("[" + Entry(25) + "," + Entry(71) + "]");
  const auto work = [&](int32_t id) {
    KVXEffect* effect = nullptr;
    ASSERT_EQ(plugin_.create(GuidOf(id).c_str(), 0, &effect), 0);
    FrameBuffer src(64, 16), dst(64, 16);
    src.FillOpaquePicture();
    FakeImage input(src), output(dst);
    FakeContext context;
    context.input = &input;
    context.output = &output;
    for (int i = 0; i < 50; ++i) {
      effect->Prepare(&context);
      ASSERT_EQ(effect->Render(&context), 0);
    }
    plugin_.release(effect);
  };
  std::thread a(work, 25), b(work, 71);
  a.join();
  b.join();
}

TEST(Unloading, LeavesNothingBehindSoThatAHostCanStartAgain) {
  for (int round = 0; round < 2; ++round) {
    const TemporaryDirectory root;
    root.Write(kConf, "[" + Entry(25) + "]");
    LoadedPlugin plugin;
    EXPECT_EQ(plugin.Start(root.Path().string()).filterCount, 1u) << round;
  }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_EQ(dlopen(KVX_TEST_PLUGIN, RTLD_NOW | RTLD_NOLOAD), nullptr);
#endif
}

}  // namespace

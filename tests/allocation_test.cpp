// Memory that runs out: every allocation of start-up and of a frame fails in turn. Nothing crashes, nothing is written
// outside, nothing leaks, the next frame renders; and effects that promise something for this case keep it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <opencv2/core.hpp>

#include "Source/Overlays.h"
#include "engine/shells/shells.h"
#include "framework/factory/effect_table.h"
#include "framework/host_log.h"
#include "framework/random.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/materials.h"
#include "tests/support/quiet_host.h"

#if defined(__SANITIZE_ADDRESS__)
constexpr int64_t kStride = 7;  // opening the library is slow here
// What OpenCV and TurboJPEG lose, and what the loader keeps.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libopencv_\nleak:libturbojpeg\nleak:ld-linux\nleak:elf/dl-\n";
}
#else
constexpr int64_t kStride = 1;
#endif

using namespace kvx;

namespace {

constexpr int32_t kWidth = 24;
constexpr int32_t kHeight = 16;
constexpr int32_t kPadding = 12;
constexpr int64_t kPlenty = INT64_MAX - 1;

// What is made once for the process, at the first exception, too, is no leak.
bool g_warmingUp = false;

// From here to its end as many blocks must be freed as are taken, but for `lost`, which is what libraries lose.
class NoLeak {
 public:
  explicit NoLeak(int64_t lost = 0) : lost_(lost) {}
  ~NoLeak() {
    const int64_t leaked = LiveBlocks() - before_;
    EXPECT_TRUE(g_warmingUp || (leaked >= 0 && leaked <= lost_)) << leaked << " blocks leaked";
  }

 private:
  const int64_t lost_;
  const int64_t before_ = LiveBlocks();
};

// Calls `run` with every allocation failing in turn, once and then for good, until it says that none failed. Behind the
// first fifty only one in `stride` fails.
void FailInTurn(const std::function<bool(int64_t nth, Shortage)>& run, int64_t stride = 1) {
  g_warmingUp = true;
  run(kPlenty, Shortage::kOnce);
  run(1, Shortage::kOnce);
  g_warmingUp = false;
  for (const Shortage shortage : {Shortage::kOnce, Shortage::kForGood}) {
    bool hit = true;
    for (int64_t nth = 1; hit && !testing::Test::HasFailure(); nth += nth < 50 ? 1 : stride) {
      hit = run(nth, shortage);
      if (testing::Test::HasFailure()) {
        ADD_FAILURE() << (shortage == Shortage::kOnce ? "with allocation " : "with all from allocation ") << nth;
      }
    }
  }
}

// The two kinds of exception that mean it.
template <typename Operation>
bool RunsOutOfMemory(Operation operation) {
  try {
    operation();
    return false;
  } catch (const std::bad_alloc&) {
    return true;
  } catch (const cv::Exception& error) {
    EXPECT_EQ(error.code, cv::Error::StsNoMem);
    return true;
  }
}

class Allocation : public testing::Test {
 protected:
  Allocation() {
    cv::setNumThreads(1);  // loop bodies, too, run on the thread whose allocations fail
    cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return 0; });
    src_.FillTestPicture();
  }

  FrameBuffer src_{kWidth, kHeight, kPadding};
  FrameBuffer dst_{kWidth, kHeight, kPadding};
};

class FrameAllocation : public Allocation, public testing::WithParamInterface<int32_t> {
 protected:
  static void SetUpTestSuite() { materials_ = std::make_unique<SmallMaterials>(); }
  static void TearDownTestSuite() { materials_.reset(); }

 private:
  inline static std::unique_ptr<SmallMaterials> materials_;
};

// OpenCV loses the kernel of the Gaussian blur in this one if there is no memory for the kernel's header.
constexpr int32_t kOldPhoto = 348;

// Frames with values that must be set up anew, each twice, since the second can stumble over what the first left half
// done; and, with memory again, two more.
TEST_P(FrameAllocation, LeavesAnEffectThatRendersOn) {
  const int32_t id = GetParam();
  ParamValueArray defaults = Values(id), highest = Values(id), lowest = Values(id);
  for (int32_t i = 0; i < 12; ++i) {
    FilterParamDesc desc{};
    MakeEffect(id, kWidth, kHeight)->GetParamDesc(&desc, i);
    defaults.value[i] = desc.defaultValue;
    highest.value[i] = desc.maximum;
    lowest.value[i] = desc.minimum;
  }
  FailInTurn([&](int64_t nth, Shortage shortage) {
    const NoLeak noLeak(id == kOldPhoto ? 1 : 0);
    std::unique_ptr<CBaseFilterProc> processor;
    bool hit;
    {
      const FailAllocation failing(nth, shortage);
      processor = MakeEffect(id, kWidth, kHeight);
      EXPECT_TRUE(processor || failing.Hit());
      if (processor) {
        int32_t frame = 0;
        for (const ParamValueArray* values : {&highest, &highest, &lowest, &lowest, &defaults, &defaults}) {
          RunsOutOfMemory([&] { RunFrame(*processor, src_, dst_, *values, frame++); });
        }
      }
      hit = failing.Hit();
    }
    if (processor) {
      RunFrame(*processor, src_, dst_, defaults, 6);
      RunFrame(*processor, src_, dst_, highest, 7);
    }
    EXPECT_TRUE(src_.GuardsIntact() && dst_.GuardsIntact());
    return hit;
  });
}

std::vector<int32_t> Ids(bool ofEngineOnly) {
  std::vector<int32_t> ids;
  for (const EffectRow& row : EffectRows()) {
    if (!ofEngineOnly || row.make == MakeEngineShell || row.make == MakeMergeFilter) ids.push_back(row.id);
  }
  return ids;
}

// A frame never fails because of the engine: what it cannot do stays the source, or what was painted by then.
class EngineAllocation : public FrameAllocation {};
TEST_P(EngineAllocation, FailsNoFrame) {
  const int32_t id = GetParam();
  // The merges, and the shells from 171 on, which warp, fail as a whole.
  const bool wholly = id >= 171 && id != kOldPhoto;
  const std::vector<uint8_t> source = src_.Packed();
  std::vector<uint8_t> normal;
  normal.reserve(source.size());
  FailInTurn([&](int64_t nth, Shortage shortage) {
    const NoLeak noLeak(id == kOldPhoto ? 1 : 0);
    const auto processor = MakeEffect(id, kWidth, kHeight);
    bool hit, threw;
    {
      Rand().Seed(1);
      const FailAllocation failing(nth, shortage);
      threw = RunsOutOfMemory([&] { RunFrame(*processor, src_, dst_, Values(id, {50, 50, 50, 50}), 0); });
      hit = failing.Hit();
    }
    EXPECT_FALSE(threw);
    if (!hit) normal = dst_.Packed();
    EXPECT_TRUE(!wholly || dst_.Packed() == source || dst_.Packed() == normal);
    return hit;
  });
}

INSTANTIATE_TEST_SUITE_P(EveryId, FrameAllocation, testing::ValuesIn(Ids(false)), testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(EveryId, EngineAllocation, testing::ValuesIn(Ids(true)), testing::PrintToStringParamName());

// What single effects promise for a frame without memory.
enum class Promise { kSource, kUntouched };
struct PromiseRow {
  int32_t id;
  int32_t width;
  double value;  // of every parameter
  Promise picture;
  bool logs;
  int64_t last;  // the frame's allocations up to this one are meant
};
constexpr int64_t kAll = kPlenty;
constexpr PromiseRow kPromises[] = {
    {15, kWidth, 2, Promise::kUntouched, false, 1},      // TV wall: the tile
    {16, kWidth, 50, Promise::kUntouched, false, kAll},  // vertigo: both frames
    {17, 520, 100, Promise::kSource, false, kAll},       // square blur: the sums of the box
    {20, kWidth, 50, Promise::kUntouched, true, kAll},   // distort: the grid
    {31, kWidth, 40, Promise::kUntouched, true, kAll},   // 3D flippo: the map
    {34, kWidth, 50, Promise::kUntouched, true, kAll},   // water: fields and copy
    {62, kWidth, 50, Promise::kUntouched, true, kAll},  {69, kWidth, 50, Promise::kUntouched, true, kAll},
    {48, kWidth, 50, Promise::kSource, true, kAll},      // perspective: its lines
    {59, kWidth, 0, Promise::kSource, false, kAll},      // Baltan: the planes
    {60, kWidth, 0, Promise::kSource, false, kAll},      // delay: the remembered frame
    {63, kWidth, 50, Promise::kSource, false, 1},        // glow: the scratch frame
    {65, kWidth, 0, Promise::kUntouched, true, kAll},    // corner: the map
    {66, kWidth, 0, Promise::kUntouched, true, kAll},    // defish: the map
    {72, kWidth, 50, Promise::kUntouched, true, kAll},   // rain drop: both pages and the picture
    {362, kWidth, 0, Promise::kUntouched, false, kAll},  // grunge ray: as without its file
};

class PromiseAllocation : public Allocation, public testing::WithParamInterface<PromiseRow> {
 protected:
  PromiseAllocation() { g_processHost = &log_; }
  ~PromiseAllocation() override { g_processHost = nullptr; }
  QuietUtil log_;
  SmallMaterials materials_;
};

TEST_P(PromiseAllocation, IsKept) {
  const PromiseRow& row = GetParam();
  ParamValueArray values = Values(row.id);
  std::fill(std::begin(values.value), std::end(values.value), row.value);
  FrameBuffer src(row.width, kHeight), dst(row.width, kHeight), expected(row.width, kHeight);
  src.FillTestPicture();
  row.picture == Promise::kSource ? expected.FillTestPicture() : expected.Fill(0xCD);
  bool everHit = false;
  for (const Shortage shortage : {Shortage::kOnce, Shortage::kForGood}) {
    bool hit = true;
    for (int64_t nth = 1; hit && nth <= row.last; ++nth) {
      const auto processor = MakeEffect(row.id, row.width, kHeight);
      dst.Fill(0xCD);
      log_.failures = 0;
      {
        const FailAllocation failing(nth, shortage);
        EXPECT_FALSE(RunsOutOfMemory([&] { RunFrame(*processor, src, dst, values); }));
        hit = failing.Hit();
      }
      if (!hit) continue;
      everHit = true;
      EXPECT_EQ(dst.Packed(), expected.Packed()) << nth;
      EXPECT_EQ(log_.failures, row.logs ? 1 : 0) << nth;
      RunFrame(*processor, src, dst, values);  // it tries again
      EXPECT_EQ(log_.failures, row.logs ? 1 : 0) << nth;
    }
  }
  EXPECT_TRUE(everHit);
}

INSTANTIATE_TEST_SUITE_P(Named, PromiseAllocation, testing::ValuesIn(kPromises),
                         [](const auto& test) { return std::to_string(test.param.id); });

// A shell's second allocation is the engine's record, a merge's third, after its material's name. Without it the source
// comes through.
TEST_F(Allocation, LeavesTheSourceWithoutAnEngineRecord) {
  for (const int32_t id : {112, 171, 194}) {
    std::unique_ptr<CBaseFilterProc> processor;
    {
      const FailAllocation failing(id == 194 ? 3 : 2, Shortage::kOnce);
      processor = MakeEffect(id, kWidth, kHeight);
    }
    ASSERT_TRUE(processor);
    FilterParamDesc desc{};
    processor->GetParamDesc(&desc, 0);
    RunFrame(*processor, src_, dst_, Values(id));
    EXPECT_EQ(dst_.Packed(), src_.Packed()) << id;
  }
}

TEST_F(Allocation, MakesNoProcessorAndLeavesTheOutAlone) {
  CBaseFilterProc* out = nullptr;
  const FailAllocation failing(1, Shortage::kOnce);
  EXPECT_EQ(FindEffectByID(17, kWidth, kHeight, &out), 0);
  EXPECT_EQ(out, nullptr);
}

// A JPEG is as good as undecodable. TurboJPEG loses a block itself if it cannot make its handle.
TEST_F(Allocation, MakesAJpegUndecodable) {
  const std::string jpeg = EncodeJpeg(PlainPicture(20, 12, 1, 2, 3, 255));
  FailInTurn([&](int64_t nth, Shortage shortage) {
    const NoLeak noLeak(1);
    Picture picture;
    std::string error;
    const FailAllocation failing(nth, shortage);
    RunsOutOfMemory([&] { EXPECT_TRUE(DecodePicture(jpeg, picture, error) || failing.Hit()); });
    return failing.Hit();
  });
}

class QuietContext : public FakeContext {
 public:
  int32_t ParameterValue(const char*, int64_t, HostParamValue* value) override {
    if (value->type == HostParamValue::kText) value->value.text = "a text that does not fit into a string object";
    return value->type == HostParamValue::kText ? 0 : 1;
  }
};

// Where memory runs out in the life of the library.
enum class Step { kStartup, kRegister, kRegisterFromPath, kCreate, kPrepare, kRender };

// With names and a text that need memory.
std::string Description(int32_t id) {
  return "{\"GUID\": \"" + GuidOf(id) + "\", \"NAME\": \"a name that does not fit into a string object\"," +
         "\"TEXTURES\": [{\"TYPE\": \"image\", \"FILE\": \"a.png\"}], \"PARAMS\": [" +
         "{\"NAME\": \"a parameter of a long name\", \"TYPE\": \"string\"}, {\"NAME\": \"Level\", \"TYPE\": \"int\"}]}";
}

class LibraryAllocation : public Allocation, public testing::WithParamInterface<std::tuple<Step, bool>> {
 protected:
  // With one file for all, or a tree to walk.
  void WriteRoot(bool oneFile) {
    std::string all;
    for (const int32_t id : kIds) {
      all += (all.empty() ? "[" : ",") + Description(id);
      all.insert(all.size() - 1, ", \"DATAPATH\": \"/kvx_effect/nle_default/x/\"");
      const std::string directory = "kvx_effect/nle_default/effect" + std::to_string(id) + "/";
      root_.Write(directory + "a.conf", Description(id));
      root_.Write(directory + "filter.xml", "<Filter><GPUFilter><ConfigFile>a.conf</ConfigFile></GPUFilter></Filter>");
    }
    if (oneFile) root_.Write("kvx_effect/material/PureCFilter.conf", all + "]");
    // So short a root that the library's copy of it takes no block.
    std::filesystem::current_path(root_.Path());
    provider_.util.root = ".";
  }
  ~LibraryAllocation() override { std::filesystem::current_path("/"); }

  // Two effects of their own, a shell and a merge, early in the table, so that they are soon found.
  static constexpr int32_t kIds[] = {17, 72, 74, 193};
  TemporaryDirectory root_;
  QuietProvider provider_;
};

struct ShutdownAtEnd {
  LoadedPlugin& plugin;
  ~ShutdownAtEnd() { plugin.shutdown(); }
};

TEST_P(LibraryAllocation, ReportsAndGoesOn) {
  const auto [step, oneFile] = GetParam();
  WriteRoot(oneFile);
  const std::string directory = "./kvx_effect/nle_default/effect17";
  std::vector<std::string> guids;
  for (const int32_t id : kIds) guids.push_back(GuidOf(id));
  FakeImage input(src_), output(dst_);
  QuietContext context;
  context.input = &input;
  context.output = &output;
  QuietRegistrar registrar;
  constexpr uint32_t kFull = std::size(kIds);

  FailInTurn(
      [&, step = step](int64_t nth, Shortage shortage) {
        LoadedPlugin plugin;
        const NoLeak noLeak;
        const ShutdownAtEnd shutdown{plugin};
        bool hit = false, hitNow = false;
        // Runs `operation` without memory if it is the step in question; whether an exception came out.
        const auto at = [&](Step which, auto operation) {
          if (which != step) {
            operation();
            return false;
          }
          const FailAllocation failing(nth, shortage);
          const bool threw = RunsOutOfMemory(operation);
          hitNow = failing.Hit();
          hit = hit || hitNow;
          return threw;
        };
        HostStartupRecord host{nullptr, &provider_};
        PluginStartupInfo info{};
        if (at(Step::kStartup, [&] { EXPECT_EQ(plugin.startup(&host, &info), 0); })) {
          EXPECT_EQ(plugin.startup(&host, &info), 0);  // from the beginning
          EXPECT_EQ(info.filterCount, kFull);
        }
        EXPECT_TRUE(info.filterCount == kFull || (hit && info.filterCount < kFull));
        hitNow = false;

        for (int32_t i = 0; i < static_cast<int32_t>(info.filterCount); ++i) {
          int32_t status = -1;
          EXPECT_FALSE(at(Step::kRegister, [&] { status = plugin.registerEffect(i, &registrar); }));
          EXPECT_EQ(status, hitNow ? 4 : 0);
        }
        if (info.filterCount < kFull) return hit;

        int32_t status = -1;
        EXPECT_FALSE(
            at(Step::kRegisterFromPath, [&] { status = plugin.registerFromPath(directory.c_str(), &registrar); }));
        // A file or directory that cannot be opened for want of memory is none.
        EXPECT_TRUE(status == 0 || (hit && (status == 4 || status == 2))) << status;

        for (const std::string& guid : guids) {
          KVXEffect* effect = nullptr;
          EXPECT_FALSE(at(Step::kCreate, [&] { status = plugin.create(guid.c_str(), 0, &effect); }));
          EXPECT_TRUE(status == 0 || (hit && status == 4 && !effect)) << status;
          if (!effect) continue;
          EXPECT_FALSE(at(Step::kPrepare, [&] { EXPECT_EQ(effect->Prepare(&context), 0); }));
          // Parameters' names and the map of values may throw; the picture is then untouched.
          dst_.Fill(0xCD);
          status = -1;
          if (at(Step::kRender, [&] { status = effect->Render(&context); })) {
            EXPECT_TRUE(std::ranges::all_of(dst_.Packed(), [](uint8_t byte) { return byte == 0xCD; }));
          } else {
            EXPECT_TRUE(status == 0 || (hit && status == 4)) << status;
          }
          EXPECT_EQ(effect->Prepare(&context), 0);
          status = effect->Render(&context);
          // Without memory for the probe there is an object without a filter.
          EXPECT_TRUE(status == 0 || (hit && step == Step::kCreate && status == 4)) << status;
          plugin.release(effect);
        }
        EXPECT_TRUE(src_.GuardsIntact() && dst_.GuardsIntact());
        return hit;
      },
      kStride);
}

// The whole catalogue, with a few of its many allocations.
TEST_F(Allocation, LeavesTheWholeCatalogueStartable) {
  std::filesystem::current_path(KVX_TEST_RESOURCES);
  QuietProvider provider;
  HostStartupRecord host{nullptr, &provider};
  FailInTurn(
      [&](int64_t nth, Shortage shortage) {
        LoadedPlugin plugin;
        const NoLeak noLeak;
        const ShutdownAtEnd shutdown{plugin};
        PluginStartupInfo info{};
        bool hit, threw;
        {
          const FailAllocation failing(nth, shortage);
          threw = RunsOutOfMemory([&] { plugin.startup(&host, &info); });
          hit = failing.Hit();
        }
        if (threw) plugin.startup(&host, &info);
        EXPECT_TRUE(info.filterCount == Records().size() || (hit && !threw)) << info.filterCount;
        return hit;
      },
      kStride * 2003);
  std::filesystem::current_path("/");
}

INSTANTIATE_TEST_SUITE_P(Steps, LibraryAllocation,
                         testing::Combine(testing::Values(Step::kStartup, Step::kRegister, Step::kRegisterFromPath,
                                                          Step::kCreate, Step::kPrepare, Step::kRender),
                                          testing::Bool()));

}  // namespace

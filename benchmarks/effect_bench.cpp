// Every effect on one thread, beside a memcpy of the frame and OpenCV's operations in the same run. The first argument
// may be a size such as 3840x2160; the default is 1920x1080. The next may be --vectors=NAME, such as AVX2 or SSE4: what
// machines have that have no more.
#include <benchmark/benchmark.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <string>
#include <vector>

#include "benchmarks/bench_frame.h"
#include "benchmarks/bench_host.h"
#include "benchmarks/opencv_operations.h"
#include "framework/factory/effect_table.h"
#include "kvx/exports.h"
#include "platform/memory_probe.h"
#include "runtime/alpha_blend.h"

using namespace vizcore;

namespace {

int32_t g_width = 1920;
int32_t g_height = 1080;

int32_t Step() {
  return g_width * 4;
}
size_t Bytes() {
  return static_cast<size_t>(Step()) * static_cast<size_t>(g_height);
}

// Afresh for every row: effects may write into their source.
uint8_t* Source() {
  static FrameMemory memory(g_width, g_height, kSourceOffset);
  FillFrame(memory.Data(), g_width, g_height);
  return memory.Data();
}
uint8_t* Destination() {
  static FrameMemory memory(g_width, g_height, kDestinationOffset);
  return memory.Data();
}

void Memcpy(benchmark::State& state) {
  const uint8_t* src = Source();
  uint8_t* dst = Destination();
  for (auto _ : state) {
    std::memcpy(dst, src, Bytes());
    benchmark::ClobberMemory();
  }
}

void Blend(benchmark::State& state) {
  const uint8_t* src = Source();
  uint8_t* dst = Destination();
  FillFrame(dst, g_width, g_height);
  for (auto _ : state) {
    AlphaBlendFrame(dst, Step(), dst, Step(), src, Step(), 255, g_width, g_height);
    benchmark::ClobberMemory();
  }
}

void Probe(benchmark::State& state) {
  const uint8_t* src = Source();
  uint8_t* dst = Destination();
  for (auto _ : state) {
    benchmark::DoNotOptimize(IsBadReadPtr(src, Bytes()));
    benchmark::DoNotOptimize(IsBadWritePtr(dst, Bytes()));
  }
}

void OpenCv(benchmark::State& state, const OpenCvOperation& operation) {
  const cv::Mat src(g_height, g_width, CV_8UC4, Source());
  cv::Mat dst(g_height, g_width, CV_8UC4, Destination());
  for (auto _ : state) operation.run(src, dst);
}

// Frames in steady state, with the processor's own defaults.
void Effect(benchmark::State& state, int32_t id) {
  CBaseFilterProc* made = nullptr;
  if (!FindEffectByID(id, g_width, g_height, &made)) {
    state.SkipWithError("not served");
    return;
  }
  const std::unique_ptr<CBaseFilterProc> processor(made);
  auto* timed = dynamic_cast<CTimeRelateFilter*>(made);
  ParamValueArray values{};
  values.effectId = id;
  for (int32_t i = 0; i < 12; ++i) {
    FilterParamDesc desc{};
    processor->GetParamDesc(&desc, i);
    values.value[i] = desc.defaultValue;
  }
  uint8_t* src = Source();
  uint8_t* dst = Destination();
  int32_t frame = 0;
  const auto render = [&] {
    processor->currentFrame = frame;
    processor->totalFrames = 100;
    if (timed) {
      timed->ProcessTimed(src, dst, &values, frame % 100, 100, 25.0, Step(), Step());
    } else {
      processor->Process(src, dst, Step(), Step(), &values);
    }
    ++frame;
  };
  for (int i = 0; i < 3; ++i) render();
  for (auto _ : state) render();
}

// Point effects that are also timed as a host drives them.
constexpr int32_t kRoadIds[] = {25, 26, 71, 85, 99};

std::string NameOf(const EffectRow& row) {
  std::string name = std::to_string(row.id) + " ";
  for (const char16_t* c = row.name ? row.name : u"(no record)"; *c; ++c) name += static_cast<char>(*c);
  return name;
}

// The same effect as a host drives it: values, memory checks, the effect, the blend.
void WholeRoad(benchmark::State& state, int32_t id, int32_t width, int32_t height) {
  const EffectPluginInfo* row = nullptr;
  for (uint32_t i = 0; (row = GetEffectPluginsInfo(i)) && row->effectId != id;) ++i;
  KVXEffect* effect = nullptr;
  if (!row || CreateKVXEffect(std::string(row->guid, row->guid + 36).c_str(), 0, &effect) != 0) {
    state.SkipWithError("not in the catalogue");
    return;
  }
  BenchImage input(width, height, Source());
  BenchImage output(width, height, Destination());
  BenchContext context(&input, &output);
  for (int i = 0; i < 3; ++i) effect->Render(&context);
  for (auto _ : state) {
    effect->Prepare(&context);
    effect->Render(&context);
  }
  ReleaseKVXEffect(effect);
}

const std::string kOpenCvPrefix = "OpenCV ";
const std::string kRoadPrefix = "whole road ";
const std::string kShortRoad = "whole road of a frame of 16 by 16";

// A table sorted by time instead of the library's list, and what it comes to.
class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration) continue;
      const auto [best, first] = times_.try_emplace(run.run_name.function_name, run.GetAdjustedRealTime());
      best->second = std::min(best->second, run.GetAdjustedRealTime());
    }
  }
  void Finalize() override {
    const double copy = TimeOf("memcpy");
    std::vector<std::pair<double, std::string>> rows;
    for (const auto& [name, time] : times_) rows.emplace_back(time, name);
    std::sort(rows.rbegin(), rows.rend());
    std::printf("%10s %10s  %d by %d, one thread\n", "ms", "x memcpy", g_width, g_height);
    for (const auto& [time, name] : rows) std::printf("%10.3f %10.2f  %s\n", time, time / copy, name.c_str());
    std::erase_if(rows, [](const auto& row) { return !IsEffect(row.second); });
    if (rows.empty()) return;
    PrintBesideOpenCv();
    PrintRoads();
    double logs = 0;
    for (const auto& [time, name] : rows) logs += std::log(time / copy);
    const auto count = static_cast<double>(rows.size());
    std::printf("\ngeometric mean of %.0f effects: %.2f x memcpy\nslowest:", count, std::exp(logs / count));
    for (size_t i = 0; i < rows.size() && i < 10; ++i) {
      std::printf("%s %s %.1f ms", i ? "," : "", rows[i].second.c_str(), rows[i].first);
    }
    std::printf("\n");
  }

 private:
  static bool IsEffect(const std::string& name) { return name.find_first_not_of("0123456789") != 0; }

  // No number if it did not run.
  double TimeOf(const std::string& name) const {
    const auto found = times_.find(name);
    return found == times_.end() ? NAN : found->second;
  }

  void PrintBesideOpenCv() const {
    std::vector<std::pair<double, std::string>> rows;
    for (const OpenCvOperation& operation : OpenCvOperations()) {
      const double theirs = TimeOf(kOpenCvPrefix + operation.name);
      for (const int32_t id : operation.ids) {
        const double ours = TimeOf(NameOf(*FindEffectRow(id)));
        const std::string name = NameOf(*FindEffectRow(id)) + ": " + operation.name;
        if (!std::isnan(ours / theirs)) rows.emplace_back(ours / theirs, name);
      }
    }
    if (rows.empty()) return;
    std::sort(rows.rbegin(), rows.rend());
    std::printf("\ntime of the effect by that of OpenCV's operation\n");
    for (const auto& [ratio, name] : rows) std::printf("%10.2f  %s\n", ratio, name.c_str());
  }

  void PrintRoads() const {
    const double blend = TimeOf("AlphaBlendFrame");
    const double always = TimeOf(kShortRoad);
    if (std::isnan(blend + always)) return;
    std::printf("\nwhat Prepare and Render add to the effect and the blend; %.3f ms of it whatever the frame\n",
                always);
    for (const int32_t id : kRoadIds) {
      const std::string name = NameOf(*FindEffectRow(id));
      const double effect = TimeOf(name);
      const double road = TimeOf(kRoadPrefix + name);
      if (!std::isnan(effect + road))
        std::printf("%9.1f%%  %s\n", (road - effect - blend) / effect * 100, name.c_str());
    }
  }

  std::map<std::string, double> times_;
};

// False, and said why, if this machine has no such vectors or nothing is compiled for them.
bool UseVectors(const std::string& name) {
  std::string offered;
  for (int64_t rest = hwy::SupportedTargets() & HWY_TARGETS; rest != 0; rest &= rest - 1) {
    const int64_t target = rest & -rest;
    if (name == hwy::TargetName(target)) {
      hwy::SetSupportedTargetsForTest(target);
      hwy::GetChosenTarget().Update(target);
      return true;
    }
    offered += std::string(" ") + hwy::TargetName(target);
  }
  std::fprintf(stderr, "effect_bench: no vectors '%s'; here are%s\n", name.c_str(), offered.c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  cv::setNumThreads(1);
  if (argc > 1 && std::sscanf(argv[1], "%dx%d", &g_width, &g_height) == 2) {
    if (g_width < 16 || g_height < 16 || g_width > 16384 || g_height > 16384) {
      std::fprintf(stderr, "effect_bench: sides from 16 to 16384 are possible\n");
      return 2;
    }
    argv[1] = argv[0];
    ++argv;
    --argc;
  }
  const std::string vectors = "--vectors=";
  if (argc > 1 && std::string(argv[1]).starts_with(vectors)) {
    if (!UseVectors(argv[1] + vectors.size())) return 2;
    argv[1] = argv[0];
    ++argv;
    --argc;
  }
  BenchProvider provider;
  provider.util.root = KVX_BENCH_RESOURCES;
  HostStartupRecord host{nullptr, &provider};
  PluginStartupInfo info{};
  StartupKVX(&host, &info);

  const auto time = [](const std::string& name, auto&&... function) {
    benchmark::RegisterBenchmark(name.c_str(), function...)->Unit(benchmark::kMillisecond);
  };
  time("memcpy", Memcpy);
  time("AlphaBlendFrame", Blend);
  time("memory probe, both images", Probe);
  for (const OpenCvOperation& operation : OpenCvOperations()) time(kOpenCvPrefix + operation.name, OpenCv, operation);
  for (const EffectRow& row : EffectRows()) time(NameOf(row), Effect, row.id);
  for (const int32_t id : kRoadIds) time(kRoadPrefix + NameOf(*FindEffectRow(id)), WholeRoad, id, g_width, g_height);
  time(kShortRoad, WholeRoad, kRoadIds[0], 16, 16);
  // Unless the command line says otherwise. The quickest repetition counts; those of all rows are shuffled, so that a
  // busy moment of the machine meets none of them alone.
  char seconds[] = "--benchmark_min_time=0.05";
  char repetitions[] = "--benchmark_repetitions=5";
  char shuffled[] = "--benchmark_enable_random_interleaving=true";
  std::vector<char*> options = {argv[0], seconds, repetitions, shuffled};
  options.insert(options.end(), argv + 1, argv + argc);
  int count = static_cast<int>(options.size());
  benchmark::Initialize(&count, options.data());
  if (benchmark::ReportUnrecognizedArguments(count, options.data())) return 1;
  TableReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  ShutdownKVX();
  return 0;
}

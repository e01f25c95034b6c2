// Every effect at 1920 by 1080 on one thread, beside a memcpy of the frame in the same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <string>
#include <vector>

#include "alpha_blend.h"
#include "effect_table.h"
#include "kvx/exports.h"
#include "memory_probe.h"

namespace {

constexpr int32_t kWidth = 1920;
constexpr int32_t kHeight = 1080;
constexpr int32_t kStep = kWidth * 4;
constexpr size_t kBytes = static_cast<size_t>(kStep) * kHeight;

// Smooth areas, edges and grain, opaque: what effects meet.
const std::vector<uint8_t>& Source() {
  static const std::vector<uint8_t> source = [] {
    std::vector<uint8_t> bytes(kBytes);
    uint32_t s = 1;
    for (int32_t y = 0; y < kHeight; ++y) {
      for (int32_t x = 0; x < kWidth; ++x) {
        s = s * 1664525u + 1013904223u;
        uint8_t* p = &bytes[static_cast<size_t>(y) * kStep + static_cast<size_t>(x) * 4];
        const uint32_t grain = s >> 28;
        const uint32_t block = (x / 120 + y / 90) % 2 ? 60 : 0;
        p[0] = static_cast<uint8_t>(x * 160 / kWidth + block + grain);
        p[1] = static_cast<uint8_t>(y * 200 / kHeight + grain);
        p[2] = static_cast<uint8_t>((x + y) * 180 / (kWidth + kHeight) + block / 2 + grain);
        p[3] = 255;
      }
    }
    return bytes;
  }();
  return source;
}

void Memcpy(benchmark::State& state) {
  const std::vector<uint8_t>& src = Source();
  std::vector<uint8_t> dst(kBytes);
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), kBytes);
    benchmark::ClobberMemory();
  }
}

void Blend(benchmark::State& state) {
  std::vector<uint8_t> dst = Source();
  for (auto _ : state) {
    AlphaBlendFrame(dst.data(), kStep, dst.data(), kStep, Source().data(), kStep, 255, kWidth, kHeight);
    benchmark::ClobberMemory();
  }
}

void Probe(benchmark::State& state) {
  std::vector<uint8_t> dst = Source();
  for (auto _ : state) {
    benchmark::DoNotOptimize(IsBadReadPtr(Source().data(), kBytes));
    benchmark::DoNotOptimize(IsBadWritePtr(dst.data(), kBytes));
  }
}

// Frames in steady state, with the processor's own defaults.
void Effect(benchmark::State& state, int32_t id) {
  CBaseFilterProc* made = nullptr;
  if (!FindEffectByID(id, kWidth, kHeight, &made)) {
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
  std::vector<uint8_t> src = Source();
  std::vector<uint8_t> dst(kBytes);
  int32_t frame = 0;
  const auto render = [&] {
    processor->currentFrame = frame;
    processor->totalFrames = 100;
    if (timed) {
      timed->ProcessTimed(src.data(), dst.data(), &values, frame % 100, 100, 25.0, kStep, kStep);
    } else {
      processor->Process(src.data(), dst.data(), kStep, kStep, &values);
    }
    ++frame;
  };
  for (int i = 0; i < 3; ++i) render();
  for (auto _ : state) render();
}

// A table sorted by time instead of the library's list.
class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (!run.error_occurred) rows_.emplace_back(run.GetAdjustedRealTime(), run.benchmark_name());
    }
  }
  void Finalize() override {
    double copy = 0;
    for (const auto& [time, name] : rows_) {
      if (name.starts_with("memcpy")) copy = time;
    }
    std::sort(rows_.rbegin(), rows_.rend());
    std::printf("%10s %10s  %s\n", "ms", "x memcpy", "1920 by 1080, one thread");
    for (const auto& [time, name] : rows_) {
      std::printf("%10.3f %10.2f  %s\n", time, copy > 0 ? time / copy : 0.0, name.c_str());
    }
  }

 private:
  std::vector<std::pair<double, std::string>> rows_;
};

}  // namespace

int main(int argc, char** argv) {
  cv::setNumThreads(1);
  benchmark::RegisterBenchmark("memcpy", Memcpy)->Unit(benchmark::kMillisecond)->MinTime(0.5);
  benchmark::RegisterBenchmark("AlphaBlendFrame", Blend)->Unit(benchmark::kMillisecond)->MinTime(0.5);
  benchmark::RegisterBenchmark("memory probe, both images", Probe)->Unit(benchmark::kMillisecond)->MinTime(0.2);
  for (const EffectRow& row : EffectRows()) {
    if (!row.make) continue;
    std::string name = std::to_string(row.id) + " ";
    for (const char16_t* c = row.name ? row.name : u"(no record)"; *c; ++c) name += static_cast<char>(*c);
    benchmark::RegisterBenchmark(name.c_str(), Effect, row.id)->Unit(benchmark::kMillisecond)->MinTime(0.1);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  TableReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return 0;
}

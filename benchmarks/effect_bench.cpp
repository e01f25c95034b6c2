// Every effect on one thread, beside a memcpy of the frame and OpenCV's operations in the same run. The first argument
// may be a size such as 3840x2160; the default is 1920x1080.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "alpha_blend.h"
#include "effect_table.h"
#include "kvx/exports.h"
#include "memory_probe.h"

namespace {

int32_t g_width = 1920;
int32_t g_height = 1080;

int32_t Step() {
  return g_width * 4;
}
size_t Bytes() {
  return static_cast<size_t>(Step()) * static_cast<size_t>(g_height);
}

// Smooth areas, edges and grain, opaque: what effects meet.
const std::vector<uint8_t>& Source() {
  static const std::vector<uint8_t> source = [] {
    std::vector<uint8_t> bytes(Bytes());
    uint32_t s = 1;
    for (int32_t y = 0; y < g_height; ++y) {
      for (int32_t x = 0; x < g_width; ++x) {
        s = s * 1664525u + 1013904223u;
        uint8_t* p = &bytes[static_cast<size_t>(y) * Step() + static_cast<size_t>(x) * 4];
        const uint32_t grain = s >> 28;
        const uint32_t block = (x / 120 + y / 90) % 2 ? 60 : 0;
        p[0] = static_cast<uint8_t>(x * 160 / g_width + block + grain);
        p[1] = static_cast<uint8_t>(y * 200 / g_height + grain);
        p[2] = static_cast<uint8_t>((x + y) * 180 / (g_width + g_height) + block / 2 + grain);
        p[3] = 255;
      }
    }
    return bytes;
  }();
  return source;
}

void Memcpy(benchmark::State& state) {
  const std::vector<uint8_t>& src = Source();
  std::vector<uint8_t> dst(Bytes());
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), Bytes());
    benchmark::ClobberMemory();
  }
}

void Blend(benchmark::State& state) {
  std::vector<uint8_t> dst = Source();
  for (auto _ : state) {
    AlphaBlendFrame(dst.data(), Step(), dst.data(), Step(), Source().data(), Step(), 255, g_width, g_height);
    benchmark::ClobberMemory();
  }
}

void Probe(benchmark::State& state) {
  std::vector<uint8_t> dst = Source();
  for (auto _ : state) {
    benchmark::DoNotOptimize(IsBadReadPtr(Source().data(), Bytes()));
    benchmark::DoNotOptimize(IsBadWritePtr(dst.data(), Bytes()));
  }
}

struct CvRow {
  const char* name;
  void (*run)(const cv::Mat& src, cv::Mat& dst);
};

const CvRow kCvRows[] = {
    {"xor (71)", [](const cv::Mat& src, cv::Mat& dst) { cv::bitwise_xor(src, cv::Scalar(255, 255, 255, 0), dst); }},
    {"look-up table (25, 27, 28)",
     [](const cv::Mat& src, cv::Mat& dst) {
       cv::Mat table(1, 256, CV_8U);
       for (int i = 0; i < 256; ++i) table.at<uint8_t>(i) = static_cast<uint8_t>(255 - i);
       cv::LUT(src, table, dst);
     }},
    {"colour matrix (26, 41)",
     [](const cv::Mat& src, cv::Mat& dst) {
       const cv::Matx44f matrix(.8f, .1f, .1f, 0, .1f, .8f, .1f, 0, .1f, .1f, .8f, 0, 0, 0, 0, 1);
       cv::transform(src, dst, matrix);
     }},
    {"box blur of 21 (17)",
     [](const cv::Mat& src, cv::Mat& dst) {
       cv::blur(src, dst, {21, 21});
     }},
    {"Gaussian blur of 5",
     [](const cv::Mat& src, cv::Mat& dst) {
       cv::GaussianBlur(src, dst, {5, 5}, 0);
     }},
    {"3 by 3 filter (12, 171)",
     [](const cv::Mat& src, cv::Mat& dst) {
       const cv::Matx33f kernel(0, -1, 0, -1, 5, -1, 0, -1, 0);
       cv::filter2D(src, dst, -1, kernel);
     }},
    {"Sobel (37)", [](const cv::Mat& src, cv::Mat& dst) { cv::Sobel(src, dst, -1, 1, 0); }},
    {"flip (94)", [](const cv::Mat& src, cv::Mat& dst) { cv::flip(src, dst, 0); }},
    {"multiply (193 to 205)", [](const cv::Mat& src, cv::Mat& dst) { cv::multiply(src, src, dst, 1.0 / 255); }},
    {"weighted sum", [](const cv::Mat& src, cv::Mat& dst) { cv::addWeighted(src, 0.3, src, 0.7, 0, dst); }},
    {"resize to half",
     [](const cv::Mat& src, cv::Mat& dst) {
       cv::resize(src, dst, {src.cols / 2, src.rows / 2});
     }},
};

void OpenCv(benchmark::State& state, const CvRow& row) {
  const cv::Mat src(g_height, g_width, CV_8UC4, const_cast<uint8_t*>(Source().data()));
  cv::Mat dst;
  for (auto _ : state) row.run(src, dst);
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
  std::vector<uint8_t> src = Source();
  std::vector<uint8_t> dst(Bytes());
  int32_t frame = 0;
  const auto render = [&] {
    processor->currentFrame = frame;
    processor->totalFrames = 100;
    if (timed) {
      timed->ProcessTimed(src.data(), dst.data(), &values, frame % 100, 100, 25.0, Step(), Step());
    } else {
      processor->Process(src.data(), dst.data(), Step(), Step(), &values);
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
    std::printf("%10s %10s  %d by %d, one thread\n", "ms", "x memcpy", g_width, g_height);
    for (const auto& [time, name] : rows_) {
      std::printf("%10.3f %10.2f  %s\n", time, copy > 0 ? time / copy : 0.0, name.c_str());
    }
    double logs = 0;
    int effects = 0;
    for (const auto& [time, name] : rows_) {
      if (name.find_first_not_of("0123456789") == 0 || copy <= 0) continue;  // effects begin with their id
      logs += std::log(time / copy);
      ++effects;
    }
    if (effects > 0) std::printf("geometric mean of %d effects: %.2f x memcpy\n", effects, std::exp(logs / effects));
  }

 private:
  std::vector<std::pair<double, std::string>> rows_;
};

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
  SetMergeImagePath(KVX_BENCH_MATERIALS);
  benchmark::RegisterBenchmark("memcpy", Memcpy)->Unit(benchmark::kMillisecond)->MinTime(0.5);
  benchmark::RegisterBenchmark("AlphaBlendFrame", Blend)->Unit(benchmark::kMillisecond)->MinTime(0.5);
  benchmark::RegisterBenchmark("memory probe, both images", Probe)->Unit(benchmark::kMillisecond)->MinTime(0.2);
  for (const CvRow& row : kCvRows) {
    benchmark::RegisterBenchmark((std::string("OpenCV ") + row.name).c_str(), OpenCv, row)
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.2);
  }
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

// The smallest host that drives an effect object of this process through the exports.
#ifndef KVX_BENCHMARKS_BENCH_HOST_H_
#define KVX_BENCHMARKS_BENCH_HOST_H_

#include <cstdint>
#include <cstdio>
#include <string>

#include "kvx/exports.h"

struct BenchUtil : HostUtilSuite {
  std::string root;
  void GetHostPath(int32_t, char* buffer, int32_t size) override {
    std::snprintf(buffer, static_cast<size_t>(size), "%s", root.c_str());
  }
  void HostLog(int32_t, const char*, ...) override {}
};

struct BenchProvider : HostSuiteProvider {
  BenchUtil util;
  int32_t GetSuite(const char* name, int32_t, void** suite) override {
    if (std::string(name) != "Host Util Suite") return 1;
    *suite = static_cast<HostUtilSuite*>(&util);
    return 0;
  }
};

struct BenchImage : HostImage {
  int32_t width, height;
  uint8_t* data;
  BenchImage(int32_t w, int32_t h, uint8_t* pixels) : width(w), height(h), data(pixels) {}
  int32_t Width() override { return width; }
  int32_t Height() override { return height; }
  int32_t Step() override { return width * 4; }
  uint8_t* Data() override { return data; }
};

// Gives no values: parameters keep their defaults.
struct BenchContext : HostRenderContext {
  HostImage* input;
  HostImage* output;
  BenchContext(HostImage* in, HostImage* out) : input(in), output(out) {}
  int64_t CurrentFrame() override { return 0; }
  int64_t TotalFrames() override { return 100; }
  HostImage* InputImage(int32_t index) override { return index == 0 ? input : nullptr; }
  HostImage* OutputImage() override { return output; }
  int32_t ParameterValue(const char*, int64_t, HostParamValue*) override { return 1; }
};

#endif  // KVX_BENCHMARKS_BENCH_HOST_H_

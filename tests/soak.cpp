// A long run: all effects driven through the exports as a host does, with changing parameters and
// sizes and now and then a new start of the library, while memory is watched. Usage: soak [FRAMES [FRAMES_PER_SAMPLE]].
// Prints a table; fails if memory in use grows.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/fake_host.h"
#include "tests/support/quiet_host.h"

#if defined(__SANITIZE_ADDRESS__)
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

// As many as there are in the table.
const int kEffects = GetEffectsCounts();

constexpr struct {
  int32_t width, height;
} kSizes[] = {{64, 36}, {320, 180}, {160, 90}, {97, 130}, {640, 360}, {256, 144}, {320, 180}};
constexpr int kFramesPerSize = 4;
constexpr int kFramesPerValue = 3;
constexpr int kSamplesPerStart = 4;
// What the allocator's own rounding may hold in a run of 20000 frames. The smallest block lost on each of one effect's
// frames is more; the sanitizer counts exactly.
#if defined(__SANITIZE_ADDRESS__)
constexpr int64_t kSlack = 256;
#else
constexpr int64_t kSlack = 8 * 1024;
#endif

int32_t IdOf(int effect) {
  return GetEffectPluginsInfo(static_cast<uint32_t>(effect))->effectId;
}

struct NumberParam {
  std::string name;
  double minimum, maximum;
};

// The numbers that each GUID declares.
class NumberRegistrar : public QuietRegistrar {
 public:
  void Identity(const char* guid, const char*) override { current_ = &numbers[guid]; }
  void Number(const char* name, double minimum, double maximum) override {
    current_->push_back({name, minimum, maximum});
  }
  std::map<std::string, std::vector<NumberParam>> numbers;

 private:
  std::vector<NumberParam>* current_ = nullptr;
};

// Every parameter at one of five places in its range.
class SoakContext : public HostRenderContext {
 public:
  int64_t CurrentFrame() override { return frame; }
  int64_t TotalFrames() override { return 100; }
  HostImage* InputImage(int32_t index) override { return index == 0 ? input : nullptr; }
  HostImage* OutputImage() override { return output; }
  int32_t ParameterValue(const char* name, int64_t, HostParamValue* value) override {
    const auto number = std::ranges::find(*numbers, name, &NumberParam::name);
    if (number == numbers->end()) return 1;
    const double at = number->minimum + (number->maximum - number->minimum) * (place % 5) / 4;
    if (value->type == HostParamValue::kInt32) value->value.int32 = static_cast<int32_t>(at);
    if (value->type == HostParamValue::kFloat) value->value.float32 = static_cast<float>(at);
    if (value->type == HostParamValue::kDouble) value->value.float64 = at;
    return 0;
  }

  int64_t frame = 0;
  int place = 0;
  HostImage* input = nullptr;
  HostImage* output = nullptr;
  const std::vector<NumberParam>* numbers = nullptr;
};

int64_t BytesInUse() {
#if defined(__SANITIZE_ADDRESS__)
  return static_cast<int64_t>(__sanitizer_get_current_allocated_bytes());
#else
  const struct mallinfo2 info = mallinfo2();
  return static_cast<int64_t>(info.uordblks + info.hblkhd);
#endif
}

int64_t ResidentBytes() {
  long total = 0, resident = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%ld %ld", &total, &resident) != 2) resident = 0;
    std::fclose(file);
  }
  return int64_t{resident} * sysconf(_SC_PAGESIZE);
}

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "soak: %s\n", what.c_str());
  std::exit(1);
}

// The library from its start to its end, with one object of each effect.
class Lifetime {
 public:
  Lifetime() {
    provider_.util.root = KVX_TEST_RESOURCES;
    HostStartupRecord host{nullptr, &provider_};
    PluginStartupInfo info{};
    plugin_.startup(&host, &info);
    for (int i = 0; i < kEffects; ++i) {
      const std::string guid = GuidOf(IdOf(i));
      if (plugin_.create(guid.c_str(), 0, &effects_[i]) != 0) Fail("no effect " + std::to_string(IdOf(i)));
    }
    // After the creation, because it adds what only the processors know.
    for (uint32_t index = 0; index < info.filterCount; ++index) {
      plugin_.registerEffect(static_cast<int32_t>(index), &registrar_);
    }
  }
  ~Lifetime() {
    for (KVXEffect* effect : effects_) plugin_.release(effect);
  }
  Lifetime(const Lifetime&) = delete;

  // `turn` decides size and values.
  void Render(int effect, int turn) {
    const size_t size = static_cast<size_t>(turn / kFramesPerSize + effect) % pictures_.size();
    FakeImage input(pictures_[size]), output(results_[size]);
    SoakContext context;
    context.frame = turn;
    context.place = turn / kFramesPerValue + effect;
    context.input = &input;
    context.output = &output;
    context.numbers = &registrar_.numbers[GuidOf(IdOf(effect))];
    if (effects_[effect]->Prepare(&context) != 0 || effects_[effect]->Render(&context) != 0) {
      Fail("effect " + std::to_string(IdOf(effect)) + " fails");
    }
  }

 private:
  static std::vector<FrameBuffer> Frames(bool filled) {
    std::vector<FrameBuffer> frames;
    for (const auto& size : kSizes) {
      frames.emplace_back(size.width, size.height);
      if (filled) frames.back().FillTestPicture();
    }
    return frames;
  }

  LoadedPlugin plugin_;
  QuietProvider provider_;
  NumberRegistrar registrar_;
  std::vector<KVXEffect*> effects_ = std::vector<KVXEffect*>(static_cast<size_t>(kEffects));
  std::vector<FrameBuffer> pictures_ = Frames(true), results_ = Frames(false);
};

}  // namespace

int main(int argc, char** argv) {
  const int frames = argc > 1 ? std::atoi(argv[1]) : 20000;
  const int perSample = argc > 2 ? std::atoi(argv[2]) : 1000;
  const int turns = perSample / kEffects;
  const int samples = frames / std::max(perSample, 1);
  if (turns < 1 || samples <= 2 * kSamplesPerStart) Fail("too few frames");
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  std::printf("%8s %14s %14s\n", "frames", "in use KiB", "resident KiB");
  std::vector<int64_t> inUse;
  inUse.reserve(static_cast<size_t>(samples));
  std::optional<Lifetime> lifetime;
  for (int sample = 0; sample < samples; ++sample) {
    if (sample % kSamplesPerStart == 0) {
      lifetime.reset();
      lifetime.emplace();
    }
    for (int turn = 0; turn < turns; ++turn) {
      for (int effect = 0; effect < kEffects; ++effect) lifetime->Render(effect, turn);
    }
    inUse.push_back(BytesInUse());
    std::printf("%8d %14.1f %14.1f%s\n", (sample + 1) * turns * kEffects, static_cast<double>(inUse.back()) / 1024,
                static_cast<double>(ResidentBytes()) / 1024, sample % kSamplesPerStart == 0 ? "  started" : "");
  }
  const int64_t slack = kSlack * std::max(frames / 20000, 1);
  // Every sample is held against the one at the same place after the second start. The first start pays for what is
  // made once for the process.
  for (size_t i = 2 * kSamplesPerStart; i < inUse.size(); ++i) {
    const int64_t growth = inUse[i] - inUse[kSamplesPerStart + i % kSamplesPerStart];
    if (growth > slack) Fail("memory in use grows by " + std::to_string(growth) + " bytes");
  }
  // Within a life of the library it grows no more once every object has seen all sizes and values.
  for (size_t i = kSamplesPerStart; i < inUse.size(); ++i) {
    const int64_t growth = inUse[i] - inUse[i - i % kSamplesPerStart];
    if (growth > slack) Fail("objects grow by " + std::to_string(growth) + " bytes");
  }
  std::puts("no growth");
  return 0;
}

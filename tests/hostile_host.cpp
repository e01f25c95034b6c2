// A host that gives the plug-in nothing good: no threads, little memory, nonsense for sizes, steps, pointers and
// values. Every run goes over all effects in a process of its own and ends with 0 if only promised statuses came back.
// Usage: hostile_host threads|processes|memory|nonsense|huge [SEED]
#include <dlfcn.h>
#include <grp.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <random>
#include <vector>

#include "framework/factory/effect_table.h"
#include "tests/support/fake_host.h"
#include "tests/support/quiet_host.h"

namespace {

std::atomic<bool> g_noThreads{false};
std::atomic<int> g_refused{0};

// What is under way, for the case that it ends the process.
int32_t g_effect = 0;
const FakeImage* g_images = nullptr;

[[maybe_unused]] void OnCrash(int signal) {
  char text[256];
  int length = std::snprintf(text, sizeof text, "hostile host: signal %d in effect %d\n", signal, g_effect);
  for (int i = 0; g_images && i < 2; ++i) {
    const FakeImage& image = g_images[i];
    length += std::snprintf(text + length, sizeof text - static_cast<size_t>(length), "  %d by %d, step %d at %p\n",
                            image.width, image.height, image.step, static_cast<void*>(image.data));
  }
  if (write(STDERR_FILENO, text, static_cast<size_t>(length)) < 0) std::_Exit(2);
  std::_Exit(1);
}

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "hostile host: %s\n", what.c_str());
  std::_Exit(1);
}

// Takes no memory of its own. `values` are tried in turn; without any the defaults hold.
class Context : public HostRenderContext {
 public:
  int64_t CurrentFrame() override { return frame; }
  int64_t TotalFrames() override { return total; }
  HostImage* InputImage(int32_t) override { return input; }
  HostImage* OutputImage() override { return output; }
  int32_t ParameterValue(const char*, int64_t, HostParamValue* value) override {
    if (values.empty()) return 1;
    const double at = values[next++ % values.size()];
    switch (value->type) {
      case HostParamValue::kInt32:
        value->value.int32 = !(std::abs(at) < INT_MAX) ? INT_MIN : static_cast<int32_t>(at);
        return 0;
      case HostParamValue::kFloat:
        value->value.float32 = static_cast<float>(at);
        return 0;
      case HostParamValue::kDouble:
        value->value.float64 = at;
        return 0;
      default:
        value->value.int64 = 0;
        return 0;
    }
  }

  HostImage* input = nullptr;
  HostImage* output = nullptr;
  int64_t frame = 0;
  int64_t total = 100;
  std::vector<double> values;
  size_t next = 0;
};

struct Effects {
  Effects() {
    provider.util.root = KVX_TEST_RESOURCES;
    HostStartupRecord host{nullptr, &provider};
    PluginStartupInfo info{};
    plugin.startup(&host, &info);
    if (info.filterCount != Records().size()) Fail("the catalogue is not whole");
  }
  // Calls `use(id, guid)` for every effect.
  template <typename Use>
  void ForEach(Use use) {
    for (uint32_t i = 0; const EffectPluginInfo* row = plugin.info(i); ++i) {
      char guid[37] = "";
      std::copy_n(row->guid, 36, guid);
      use(row->effectId, guid);
    }
  }
  LoadedPlugin plugin;
  QuietProvider provider;
};

// The status of a frame, or a failure of this program if anything is thrown.
int32_t Frame(KVXEffect& effect, HostRenderContext* context, int32_t id) {
  g_effect = id;
  try {
    if (effect.Prepare(context) != 0) Fail("Prepare of " + std::to_string(id) + " is not 0");
    return effect.Render(context);
  } catch (const std::exception& error) {
    Fail("effect " + std::to_string(id) + " throws " + error.what());
  }
}

constexpr int32_t kWidth = 640, kHeight = 360;

// Two frames of one effect; `dst` holds the second.
void RenderTwoFrames(Effects& effects, int32_t id, const char* guid, bool mayFail, FrameBuffer& dst) {
  KVXEffect* effect = nullptr;
  const int32_t made = effects.plugin.create(guid, 0, &effect);
  if (made == 4 && mayFail) return;
  if (made != 0) Fail("effect " + std::to_string(id) + " cannot be made");
  FrameBuffer src(kWidth, kHeight);
  FakeImage input(src), output(dst);
  Context context;
  context.input = &input;
  context.output = &output;
  for (context.frame = 0; context.frame < 2; ++context.frame) {
    src.FillOpaquePicture(static_cast<uint32_t>(context.frame));
    dst.Fill(0);
    const int32_t status = Frame(*effect, &context, id);
    if (status != 0 && !(mayFail && status == 4)) {
      Fail("effect " + std::to_string(id) + " gives status " + std::to_string(status));
    }
  }
  effects.plugin.release(effect);
}

void RenderAll(Effects& effects, bool mayFail) {
  FrameBuffer dst(kWidth, kHeight);
  effects.ForEach([&](int32_t id, const char* guid) { RenderTwoFrames(effects, id, guid, mayFail, dst); });
}

bool IsRandom(int32_t id) {
  return FindEffectRow(id)->traits & kRandom;
}

// Every attempt to start a thread fails. The frames are those of one thread. Each effect has a process of its own:
// below OpenCV a thread that did not start is not tried again.
void Threads() {
  Effects effects;
  int refusedIn = 0;
  effects.ForEach([&](int32_t id, const char* guid) {
    const pid_t child = fork();
    if (child == 0) {
      cv::setNumThreads(1);
      FrameBuffer alone(kWidth, kHeight), denied(kWidth, kHeight);
      RenderTwoFrames(effects, id, guid, false, alone);
      cv::setNumThreads(2);
      g_noThreads = true;
      RenderTwoFrames(effects, id, guid, false, denied);
      if (!IsRandom(id) && alone.Packed() != denied.Packed()) {
        Fail("effect " + std::to_string(id) + " is another without threads");
      }
      std::_Exit(g_refused > 0 ? 10 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || (WEXITSTATUS(status) != 0 && WEXITSTATUS(status) != 10)) {
      Fail("effect " + std::to_string(id) + " ends its process with " + std::to_string(status));
    }
    refusedIn += WEXITSTATUS(status) == 10;
  });
  std::printf("%d effects asked for threads\n", refusedIn);
  if (refusedIn < 15) Fail("too few effects asked for threads");
}

// The system's own limit of one process. It does not bind root, who becomes nobody; where that cannot be, the test is
// skipped.
void Processes() {
  Effects effects;
  if (getuid() == 0 && (setgroups(0, nullptr) != 0 || setgid(65534) != 0 || setuid(65534) != 0)) std::_Exit(77);
  const rlimit one{1, 1};
  setrlimit(RLIMIT_NPROC, &one);
  RenderAll(effects, false);
}

// 16 MB more address space than there is in use.
void Memory() {
  Effects effects;
  long pages = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%ld", &pages) != 1) Fail("statm");
    std::fclose(file);
  }
  const rlim_t limit = static_cast<rlim_t>(pages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (16u << 20);
  const rlimit little{limit, limit};
  setrlimit(RLIMIT_AS, &little);
  RenderAll(effects, true);
}

// Whatever a host could say, and null for everything that can be null.
void Nonsense(uint32_t seed) {
  Effects effects;
  const LoadedPlugin& plugin = effects.plugin;
  KVXEffect* none = nullptr;
  if (plugin.startup(nullptr, nullptr) != 0 || plugin.registerFromPath(nullptr, nullptr) != 2 ||
      plugin.create(nullptr, 0, &none) != 2 || plugin.create(nullptr, 0, nullptr) != 2 ||
      plugin.find(71, 4, 4, nullptr) != 0 || plugin.setMergePath(nullptr) != 0) {
    Fail("null gives another status");
  }
  effects.provider.util.root = KVX_TEST_RESOURCES;
  plugin.setMergePath(u"/");

  std::minstd_rand random(seed);
  const auto pick = [&random](const auto& from) { return from[random() % std::size(from)]; };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double values[] = {0, -1, 1, 50, 100, 255, 1e9, -1e9, 1e300, kInfinity, -kInfinity, std::nan(""), 0.5, 65536};
  constexpr int32_t kSides[] = {0, 1, 2, 3, 7, 64, 255, -1, -64, INT_MAX, INT_MIN, 65535, 100000};
  constexpr int64_t kFrames[] = {0, 1, 5, 99, -1, INT_MAX, INT_MIN, INT64_MAX, 1 << 20};
  std::vector<uint8_t> memory(2 * 65535 * 4 + 64 * 1024), spare(memory.size());
  // One page that can be read, and nothing on either side of it.
  auto* page = static_cast<uint8_t*>(mmap(nullptr, 3 * 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) + 4096;
  mprotect(page, 4096, PROT_READ);
  uint8_t* const places[] = {memory.data(),
                             memory.data(),
                             memory.data() + 4,
                             spare.data(),
                             nullptr,
                             reinterpret_cast<uint8_t*>(8),
                             page,
                             reinterpret_cast<uint8_t*>(INTPTR_MIN)};
  int64_t rendered = 0, refused = 0;
  effects.ForEach([&](int32_t id, const char* guid) {
    KVXEffect* effect = nullptr;
    if (plugin.create(guid, 0, nullptr) != 2 || plugin.create(guid, 0, &effect) != 0) Fail("create");
    if (Frame(*effect, nullptr, id) != 2) Fail("no context gives another status");
    for (int i = 0; i < 20; ++i) {
      FakeImage images[2];
      for (FakeImage& image : images) {
        image.data = i % 2 == 0 ? places[&image - images] : pick(places);
        image.width = pick(kSides);
        image.height = pick(kSides);
        image.step =
            random() % 4 == 0 ? pick(kSides) : static_cast<int32_t>(uint32_t(image.width) * 4 + random() % 3 * 4);
      }
      if (i % 3 == 0) {
        images[1].width = images[0].width;
        images[1].height = images[0].height;
      }
      // What the memory holds is the host's own business: only what claims more than there is must be refused.
      for (const FakeImage& image : images) {
        const int64_t bytes = int64_t{image.step} * image.height;
        const bool inside = std::ranges::find(places, image.data) - places < 4;
        if (inside && bytes > 2 * 65535 * 4) images[&image - images].height = 1;
      }
      Context context;
      context.input = &images[0];
      context.output = &images[1];
      context.frame = pick(kFrames);
      context.total = pick(kFrames);
      for (int k = 0; k < 8; ++k) context.values.push_back(pick(values));
      g_images = images;
      const int32_t status = Frame(*effect, &context, id);
      g_images = nullptr;
      if (status != 0 && status != 4) Fail("effect " + std::to_string(id) + " gives " + std::to_string(status));
      ++(status == 0 ? rendered : refused);
    }
    plugin.release(effect);
  });
  std::printf("%lld frames rendered, %lld refused\n", static_cast<long long>(rendered),
              static_cast<long long>(refused));
  if (rendered < 300 || refused < 300) Fail("too few of one kind");
}

// 65535 by 65535 pixels, 17 GB that are the same few pages again and again.
void Huge() {
  constexpr int32_t kSide = 65535;
  constexpr size_t kPiece = size_t{64} << 20;
  const size_t bytes = (size_t{kSide} * kSide * 4 / kPiece + 1) * kPiece;
  auto* base =
      static_cast<uint8_t*>(mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
  const int file = memfd_create("pixels", 0);
  if (base == MAP_FAILED || file < 0 || ftruncate(file, kPiece) != 0) Fail("no address space");
  for (size_t at = 0; at < bytes; at += kPiece) {
    if (mmap(base + at, kPiece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, 0) == MAP_FAILED) Fail("mmap");
  }
  Effects effects;
  effects.ForEach([&](int32_t id, const char* guid) {
    KVXEffect* effect = nullptr;
    if (effects.plugin.create(guid, 0, &effect) != 0) Fail("create");
    FakeImage image;
    image.data = base;
    image.width = image.height = kSide;
    image.step = kSide * 4;
    Context context;
    context.input = context.output = &image;
    if (Frame(*effect, &context, id) != 4) Fail("effect " + std::to_string(id) + " takes what it cannot hold");
    effects.plugin.release(effect);
  });
}

}  // namespace

// Found before the C library's, by OpenCV and what lies below it too.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* attributes,
                                                                     void* (*start)(void*), void* argument) {
  if (g_noThreads) {
    ++g_refused;
    return EAGAIN;
  }
  static const auto real = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return real(thread, attributes, start, argument);
}

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT}) std::signal(signal, OnCrash);
#endif
  const auto begin = std::chrono::steady_clock::now();
  if (mode == "threads") {
    Threads();
  } else if (mode == "processes") {
    Processes();
  } else if (mode == "memory") {
    Memory();
  } else if (mode == "nonsense") {
    Nonsense(argc > 2 ? static_cast<uint32_t>(std::atoi(argv[2])) : 1);
  } else if (mode == "huge") {
    Huge();
  } else {
    Fail("no such mode");
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  std::printf("%s: all effects, %.1f s\n", mode.c_str(), took.count());
  return 0;
}

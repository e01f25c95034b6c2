// Two builds of the plug-in in one process, each effect on one thread, timed in turn on the same frames: what has
// become faster or slower, whatever else the machine does meanwhile.
//
// plugin_compare OLD.so NEW.so [SIZE] [ID...]
#include <dlfcn.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <opencv2/core/utility.hpp>
#include <string>
#include <vector>

#include "benchmarks/bench_frame.h"
#include "kvx/exports.h"

namespace {

constexpr int32_t kMostIds = 4096;
constexpr int kLeastRounds = 5;
constexpr int kMostRounds = 40;
constexpr double kSecondsPerEffect = 0.6;

// Stays loaded until the process ends.
struct PlugIn {
  decltype(&FindEffectByID) find;
  decltype(&SetMergeImagePath) setMaterials;
  decltype(&GetEffectPluginsInfo) record;
};

template <typename Function>
bool Take(void* library, const char* name, Function* function) {
  *function = reinterpret_cast<Function>(dlsym(library, name));
  return *function != nullptr;
}

// False, and said why, if `path` is no plug-in.
bool Load(const char* path, PlugIn* plugIn) {
  void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library && Take(library, "FindEffectByID", &plugIn->find) &&
      Take(library, "SetMergeImagePath", &plugIn->setMaterials) &&
      Take(library, "GetEffectPluginsInfo", &plugIn->record)) {
    return true;
  }
  std::fprintf(stderr, "plugin_compare: %s cannot be loaded: %s\n", path, dlerror());
  return false;
}

std::string NameOf(const PlugIn& plugIn, int32_t id) {
  const EffectPluginInfo* record = nullptr;
  for (uint32_t i = 0; (record = plugIn.record(i)) && record->effectId != id;) ++i;
  std::string name = std::to_string(id) + " ";
  if (!record) return name + "(no record)";
  for (const char16_t* c = record->name; *c; ++c) name += static_cast<char>(*c);
  return name;
}

// Of this process, which has one thread: what others take of the processor does not count.
double ProcessorSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// An effect of one plug-in with its default values, frame after frame.
class Run {
 public:
  Run(const PlugIn& plugIn, int32_t id, int32_t width, int32_t height) : step_(width * 4) {
    CBaseFilterProc* made = nullptr;
    if (!plugIn.find(id, static_cast<uint32_t>(width), static_cast<uint32_t>(height), &made)) return;
    processor_.reset(made);
    timed_ = dynamic_cast<CTimeRelateFilter*>(made);
    values_.effectId = id;
    for (int32_t i = 0; i < 12; ++i) {
      FilterParamDesc desc{};
      made->GetParamDesc(&desc, i);
      values_.value[i] = desc.defaultValue;
    }
  }
  bool Served() const { return processor_ != nullptr; }

  // The seconds of one frame.
  double Frame(uint8_t* src, uint8_t* dst) {
    processor_->currentFrame = frame_;
    processor_->totalFrames = 100;
    const double start = ProcessorSeconds();
    if (timed_) {
      timed_->ProcessTimed(src, dst, &values_, frame_ % 100, 100, 25.0, step_, step_);
    } else {
      processor_->Process(src, dst, step_, step_, &values_);
    }
    const double seconds = ProcessorSeconds() - start;
    ++frame_;
    return seconds;
  }

 private:
  int32_t step_;
  int32_t frame_ = 0;
  std::unique_ptr<CBaseFilterProc> processor_;
  CTimeRelateFilter* timed_ = nullptr;
  ParamValueArray values_{};
};

struct Row {
  int32_t id;
  double before, after;  // the quickest frame of each, in seconds
  double Ratio() const { return after / before; }
};

// A frame of one, a frame of the other; who begins changes from round to round.
Row Time(int32_t id, Run& before, Run& after, uint8_t* src, uint8_t* dst) {
  for (int i = 0; i < 3; ++i) {
    before.Frame(src, dst);
    after.Frame(src, dst);
  }
  Row row{id, INFINITY, INFINITY};
  double spent = 0;
  for (int round = 0; round < kLeastRounds || (round < kMostRounds && spent < kSecondsPerEffect); ++round) {
    for (int turn = 0; turn < 2; ++turn) {
      const bool first = (round + turn) % 2 == 0;
      const double seconds = (first ? before : after).Frame(src, dst);
      double& least = first ? row.before : row.after;
      least = std::min(least, seconds);
      spent += seconds;
    }
  }
  return row;
}

void Print(std::vector<Row>& rows, const PlugIn& names, int32_t width, int32_t height) {
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { return a.after > b.after; });
  std::printf("%10s %10s %8s  %d by %d, one thread\n", "old, ms", "new, ms", "new/old", width, height);
  double logs = 0;
  for (const Row& row : rows) {
    std::printf("%10.3f %10.3f %8.3f  %s\n", row.before * 1e3, row.after * 1e3, row.Ratio(),
                NameOf(names, row.id).c_str());
    logs += std::log(row.Ratio());
  }
  const auto count = static_cast<double>(rows.size());
  std::printf("\ngeometric mean of new/old over %.0f effects: %.3f\n", count, std::exp(logs / count));
}

bool ParseId(const char* text, int32_t* id) {
  const char* end = text + std::strlen(text);
  const auto [rest, error] = std::from_chars(text, end, *id);
  return error == std::errc{} && rest == end && *id >= 0 && *id < kMostIds;
}

bool ParseSize(const char* text, int32_t* width, int32_t* height) {
  int used = 0;
  const bool both = std::sscanf(text, "%5dx%5d%n", width, height, &used) == 2 && text[used] == 0;
  return both && std::min(*width, *height) >= 16 && std::max(*width, *height) <= 16384;
}

int Usage() {
  std::fprintf(stderr, "usage: plugin_compare OLD.so NEW.so [WIDTHxHEIGHT, sides from 16 to 16384] [ID...]\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return Usage();
  int32_t width = 1920, height = 1080;
  std::vector<int32_t> ids;
  for (int i = 3; i < argc; ++i) {
    int32_t id = 0;
    if (i == 3 && std::strchr(argv[i], 'x')) {
      if (!ParseSize(argv[i], &width, &height)) return Usage();
      continue;
    }
    if (!ParseId(argv[i], &id)) return Usage();
    ids.push_back(id);
  }
  cv::setNumThreads(1);
  PlugIn before{}, after{};
  if (!Load(argv[1], &before) || !Load(argv[2], &after)) return 1;
  const std::string materials = KVX_BENCH_RESOURCES "/kvx_effect/material";
  const std::u16string wide(materials.begin(), materials.end());
  before.setMaterials(wide.c_str());
  after.setMaterials(wide.c_str());

  const bool named = !ids.empty();
  for (int32_t id = 0; !named && id < kMostIds; ++id) ids.push_back(id);
  FrameMemory source(width, height, kSourceOffset), destination(width, height, kDestinationOffset);
  std::vector<Row> rows;
  bool whole = true;
  for (const int32_t id : ids) {
    Run old(before, id, width, height), now(after, id, width, height);
    if (old.Served() && now.Served()) {
      FillFrame(source.Data(), width, height);
      rows.push_back(Time(id, old, now, source.Data(), destination.Data()));
    } else if (named || old.Served() || now.Served()) {
      std::fprintf(stderr, "plugin_compare: effect %d is not in %s\n", id, old.Served() ? argv[2] : argv[1]);
      whole = false;
    }
  }
  if (!rows.empty()) Print(rows, after, width, height);
  return whole ? 0 : 1;
}

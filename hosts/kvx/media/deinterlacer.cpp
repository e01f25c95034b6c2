#include "hosts/kvx/media/deinterlacer.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include "hostkit/error.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace kvx {

namespace {

constexpr char kWhat[] = "--deinterlace";

// The library of filters, loaded when it is wanted: with all that it brings along it costs every start of the command
// more than the command itself.
struct Filters {
  void* library = Load();
#define KVX_FILTER_FUNCTION(name) decltype(&::name) name = Take<decltype(&::name)>(#name)
  KVX_FILTER_FUNCTION(avfilter_graph_alloc);
  KVX_FILTER_FUNCTION(avfilter_graph_free);
  KVX_FILTER_FUNCTION(avfilter_graph_create_filter);
  KVX_FILTER_FUNCTION(avfilter_graph_config);
  KVX_FILTER_FUNCTION(avfilter_get_by_name);
  KVX_FILTER_FUNCTION(avfilter_link);
  KVX_FILTER_FUNCTION(av_buffersrc_add_frame);
  KVX_FILTER_FUNCTION(av_buffersink_get_frame);
  KVX_FILTER_FUNCTION(av_buffersink_get_time_base);
#undef KVX_FILTER_FUNCTION

 private:
  static void* Load() {
    const std::string name = fmt::format("libavfilter.so.{}", LIBAVFILTER_VERSION_MAJOR);
    void* loaded = dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (!loaded) throw Error(fmt::format("{} needs the library {}: {}", kWhat, name, dlerror()));
    return loaded;
  }
  template <typename Function>
  Function Take(const char* name) const {
    auto function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function) throw Error(fmt::format("{}: {}", kWhat, dlerror()));
    return function;
  }
};

const Filters& Library() {
  static const Filters filters;
  return filters;
}

}  // namespace

void Deinterlacer::GraphDeleter::operator()(AVFilterGraph* graph) const {
  Library().avfilter_graph_free(&graph);
}
Deinterlacer::Deinterlacer() = default;
Deinterlacer::~Deinterlacer() = default;

void Deinterlacer::SetUp(const AVFrame& frame, AVRational timeBase) {
  const Filters& lib = Library();
  graph_.reset(CheckAlloc(lib.avfilter_graph_alloc()));
  timeBase_ = timeBase;
  const std::string input = fmt::format("width={}:height={}:pix_fmt={}:time_base={}/{}", frame.width, frame.height,
                                        frame.format, timeBase.num, timeBase.den);
  AVFilterContext* filter = nullptr;
  const auto add = [&](AVFilterContext** context, const char* name, const char* arguments) {
    CheckAv(lib.avfilter_graph_create_filter(context, lib.avfilter_get_by_name(name), name, arguments, nullptr,
                                             graph_.get()),
            kWhat);
  };
  add(&source_, "buffer", input.c_str());
  add(&filter, "bwdif", "mode=send_frame:deint=interlaced");
  add(&sink_, "buffersink", nullptr);
  CheckAv(lib.avfilter_link(source_, 0, filter, 0), kWhat);
  CheckAv(lib.avfilter_link(filter, 0, sink_, 0), kWhat);
  CheckAv(lib.avfilter_graph_config(graph_.get(), nullptr), kWhat);
}

void Deinterlacer::Put(AVFrame* frame, AVRational timeBase) {
  if (!graph_) {
    if (!frame) {
      ended_ = true;
      return;
    }
    SetUp(*frame, timeBase);
  }
  CheckAv(Library().av_buffersrc_add_frame(source_, frame), kWhat);
}

bool Deinterlacer::Take(AVFrame& frame) {
  if (!graph_ || ended_) return false;
  const int got = Library().av_buffersink_get_frame(sink_, &frame);
  if (got == AVERROR(EAGAIN)) return false;
  if (got == AVERROR_EOF) {
    ended_ = true;
    return false;
  }
  CheckAv(got, kWhat);
  // The filter counts in halves, one for each field.
  frame.pts = av_rescale_q(frame.pts, Library().av_buffersink_get_time_base(sink_), timeBase_);
  frame.best_effort_timestamp = frame.pts;
  return true;
}

}  // namespace kvx

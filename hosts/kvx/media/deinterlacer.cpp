#include "hosts/kvx/media/deinterlacer.h"

#include <fmt/format.h>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace kvx {

namespace {

constexpr char kWhat[] = "--deinterlace";

}  // namespace

void Deinterlacer::GraphDeleter::operator()(AVFilterGraph* graph) const {
  avfilter_graph_free(&graph);
}
Deinterlacer::Deinterlacer() = default;
Deinterlacer::~Deinterlacer() = default;

void Deinterlacer::SetUp(const AVFrame& frame, AVRational timeBase) {
  graph_.reset(CheckAlloc(avfilter_graph_alloc()));
  timeBase_ = timeBase;
  const std::string input = fmt::format("width={}:height={}:pix_fmt={}:time_base={}/{}", frame.width, frame.height,
                                        frame.format, timeBase.num, timeBase.den);
  AVFilterContext* filter = nullptr;
  const auto add = [&](AVFilterContext** context, const char* name, const char* arguments) {
    CheckAv(avfilter_graph_create_filter(context, avfilter_get_by_name(name), name, arguments, nullptr, graph_.get()),
            kWhat);
  };
  add(&source_, "buffer", input.c_str());
  add(&filter, "bwdif", "mode=send_frame:deint=interlaced");
  add(&sink_, "buffersink", nullptr);
  CheckAv(avfilter_link(source_, 0, filter, 0), kWhat);
  CheckAv(avfilter_link(filter, 0, sink_, 0), kWhat);
  CheckAv(avfilter_graph_config(graph_.get(), nullptr), kWhat);
}

void Deinterlacer::Put(AVFrame* frame, AVRational timeBase) {
  if (!graph_) {
    if (!frame) {
      ended_ = true;
      return;
    }
    SetUp(*frame, timeBase);
  }
  CheckAv(av_buffersrc_add_frame(source_, frame), kWhat);
}

bool Deinterlacer::Take(AVFrame& frame) {
  if (!graph_ || ended_) return false;
  const int got = av_buffersink_get_frame(sink_, &frame);
  if (got == AVERROR(EAGAIN)) return false;
  if (got == AVERROR_EOF) {
    ended_ = true;
    return false;
  }
  CheckAv(got, kWhat);
  // The filter counts in halves, one for each field.
  frame.pts = av_rescale_q(frame.pts, av_buffersink_get_time_base(sink_), timeBase_);
  frame.best_effort_timestamp = frame.pts;
  return true;
}

}  // namespace kvx

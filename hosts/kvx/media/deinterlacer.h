// Whole frames from interlaced ones, one for one.
#ifndef KVX_HOSTS_KVX_MEDIA_DEINTERLACER_H_
#define KVX_HOSTS_KVX_MEDIA_DEINTERLACER_H_

#include "hosts/kvx/media/libav.h"

struct AVFilterGraph;
struct AVFilterContext;

namespace kvx {

// Frames that are not marked as interlaced pass unchanged. Stamps stay.
class Deinterlacer {
 public:
  Deinterlacer();
  ~Deinterlacer();

  // Takes what is in `frame`, or null at the end. Throws Error.
  void Put(AVFrame* frame, AVRational timeBase);
  // False if more has to be put first, or at the end.
  bool Take(AVFrame& frame);
  bool Ended() const { return ended_; }

 private:
  void SetUp(const AVFrame& frame, AVRational timeBase);

  struct GraphDeleter {
    void operator()(AVFilterGraph* graph) const;
  };
  std::unique_ptr<AVFilterGraph, GraphDeleter> graph_;
  AVFilterContext* source_ = nullptr;
  AVFilterContext* sink_ = nullptr;
  AVRational timeBase_{1, 1};
  bool ended_ = false;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_DEINTERLACER_H_

// The streams beside the video: what becomes of each, and their packets' way into the result.
#ifndef KVX_HOSTS_KVX_MEDIA_SIDE_STREAMS_H_
#define KVX_HOSTS_KVX_MEDIA_SIDE_STREAMS_H_

#include <memory>
#include <vector>

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/side_stream.h"

namespace kvx {

class SideStreams {
 public:
  // Adds a stream to `to` for each one of `media` that it can hold, as it is or in the container's usual codec. What
  // cannot be kept is noted; sound or subtitles that cannot are an Error, before anything is written.
  SideStreams(const SourceMedia& media, const OutputOptions& options, AVFormatContext* to);

  // After the header: covers, which are packets without a time.
  void WriteCovers();
  // Whatever the reader has put into the queue by now.
  void WriteQueued();
  // Nothing comes any more.
  void Finish();

 private:
  struct Route {
    AVStream* to = nullptr;
    std::unique_ptr<SideStream> stream;
  };
  void Plan(const SourceStream& from);
  void PlanSound(const SourceStream& from);
  void PlanSubtitles(const SourceStream& from);
  void PlanCover(const SourceStream& from);
  void PlanAttachment(const SourceStream& from);
  void PlanOther(const SourceStream& from);
  bool Takes(const SourceStream& from, std::string& reason) const;
  AVStream* Add(const SourceStream& from, std::unique_ptr<SideStream> stream);
  PacketSink SinkTo(AVStream* to);

  const SourceMedia& media_;
  const OutputOptions& options_;
  AVFormatContext* to_;
  std::vector<Route> routes_;  // by the index of the source stream
  std::vector<std::pair<const SourceStream*, AVStream*>> covers_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_SIDE_STREAMS_H_

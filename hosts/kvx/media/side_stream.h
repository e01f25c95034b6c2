// A stream beside the video on its way into the result.
#ifndef KVX_HOSTS_KVX_MEDIA_SIDE_STREAM_H_
#define KVX_HOSTS_KVX_MEDIA_SIDE_STREAM_H_

#include <functional>
#include <memory>

#include "hosts/kvx/media/source_media.h"

namespace kvx {

// Takes a packet with stamps in this time base into the container.
using PacketSink = std::function<void(AVPacket& packet, AVRational timeBase)>;

class SideStream {
 public:
  virtual ~SideStream() = default;
  // Describes what comes out.
  virtual void Describe(AVStream& to) const = 0;
  // A packet of the source stream, stamps in its time base.
  virtual void Put(AVPacket& packet, const PacketSink& sink) = 0;
  virtual void Finish(const PacketSink&) {}
};

// As it is. `from` must live as long.
std::unique_ptr<SideStream> CopyStream(const SourceStream& from);

// Through decoder and encoder, for a container of this kind. Throw Error if one of them does not start.
std::unique_ptr<SideStream> TranscodeAudio(const SourceStream& from, const AVCodec& encoder,
                                           const AVOutputFormat& container);
std::unique_ptr<SideStream> TranscodeSubtitles(const SourceStream& from, const AVCodec& encoder,
                                               const AVOutputFormat& container);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_SIDE_STREAM_H_

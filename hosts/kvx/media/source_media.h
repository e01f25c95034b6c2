// What is known of a video file beside its frames: what a writer takes over from it.
#ifndef KVX_HOSTS_KVX_MEDIA_SOURCE_MEDIA_H_
#define KVX_HOSTS_KVX_MEDIA_SOURCE_MEDIA_H_

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/kvx/media/libav.h"
#include "hosts/kvx/media/packet_queue.h"

namespace kvx {

struct SourceStream {
  int index = 0;
  ParametersPtr parameters;
  AVRational timeBase{1, 1000};
  AVRational frameRate{0, 1};
  Dictionary metadata;
  int disposition = 0;
  PacketPtr attachedPicture;   // of a cover
  bool holdsChapters = false;  // the names of chapters, which are in `chapters` too

  AVMediaType Type() const { return parameters->codec_type; }
  std::string CodecName() const { return avcodec_get_name(parameters->codec_id); }
  // "audio stream 1 (aac)"
  std::string Name() const;
};

// A decoder for the stream's packets. Throws Error.
CodecPtr OpenDecoder(const SourceStream& stream);

struct SourceChapter {
  int64_t id;
  double start, end;  // seconds of the file
  Dictionary metadata;
};

struct SourceMedia {
  std::string name;
  std::vector<SourceStream> streams;
  size_t video = 0;  // the one that is rendered
  Dictionary metadata;
  std::vector<SourceChapter> chapters;

  AVRational timeBase{1, 25};
  AVRational rate{25, 1};
  AVRational sampleAspect{0, 1};
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  AVPixelFormat pixelFormat = AV_PIX_FMT_NONE;
  AVFieldOrder fieldOrder = AV_FIELD_PROGRESSIVE;  // of what comes out of the reader

  // The part of the file, in seconds of the file, that the result is made of, for chapters.
  double partStart = 0;
  std::optional<double> partEnd;

  std::shared_ptr<PacketQueue> packets = std::make_shared<PacketQueue>();
};

// The rate of the frames: the media's own, or `fps` where there is none.
AVRational RateOf(const SourceMedia* media, double fps);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_SOURCE_MEDIA_H_

// Pictures to packets of a codec.
#ifndef KVX_HOSTS_KVX_MEDIA_VIDEO_ENCODER_H_
#define KVX_HOSTS_KVX_MEDIA_VIDEO_ENCODER_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/frame_clock.h"
#include "hosts/kvx/media/pixels.h"
#include "hosts/kvx/media/source_media.h"

namespace kvx {

// The encoder that a run asks for, or the usual one of this kind of file. Throws Error.
const AVCodec& ChooseEncoder(const OutputOptions& options, const AVOutputFormat& container);

class VideoEncoder {
 public:
  // `media` may be null. `rate` is that of the frames. Takes any frame from now on, but knows its size and pixels from
  // the first one: Open. Throws Error.
  VideoEncoder(const OutputOptions& options, const AVOutputFormat& container, const SourceMedia* media,
               AVRational rate);
  ~VideoEncoder();

  void Open(const Picture& first);
  const AVCodecContext& Context() const { return *codec_; }
  bool IsOpen() const { return codec_ != nullptr; }
  // Of the packets, once it is open.
  ParametersPtr Parameters() const;
  // As it stands before the first frame.
  const FrameClock& Clock() const { return clock_; }

  using Sink = std::function<void(AVPacket&)>;  // stamps in the codec's time base
  void Encode(const Frame& frame, const Sink& sink);
  void Finish(const Sink& sink);

  // Within a clip, of which other encoders make the parts before and behind: before the first frame, when the clip's
  // first one came and the stamp of this one's first; after the last, the stamp at which the next part begins.
  void Resume(int64_t firstSourceStamp, int64_t stamp) { clock_.Resume(firstSourceStamp, stamp); }
  void FillUntil(int64_t stamp, const Sink& sink);

 private:
  bool TryOpen(AVPixelFormat format, int width, int height, std::string& reason);
  void SetQuality();
  void NoteWhatIsLost(const Picture& first);
  void FreeFrame();
  void Send(const AVFrame* frame, const Sink& sink);
  void SendPicture(int64_t stamp, int64_t duration, const Sink& sink);

  OutputOptions options_;
  const AVOutputFormat& container_;
  const SourceMedia* media_;
  const AVCodec& encoder_;
  AVRational rate_;
  FrameClock clock_;
  CodecPtr codec_;
  AvFramePtr frame_;
  std::vector<AvFramePtr> held_;  // by the encoder, or used before
  PacketPtr packet_ = NewPacket();
  PixelConverter converter_;
  bool ended_ = false;
  std::map<int64_t, int64_t> durations_;  // by stamp, of frames in the encoder
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_VIDEO_ENCODER_H_

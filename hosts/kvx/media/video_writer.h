// A video file.
#ifndef KVX_HOSTS_KVX_MEDIA_VIDEO_WRITER_H_
#define KVX_HOSTS_KVX_MEDIA_VIDEO_WRITER_H_

#include <string>

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/video_encoder.h"
#include "hosts/kvx/media/video_file.h"

namespace kvx {

class VideoWriter : public FrameWriter {
 public:
  // `media`, which may be null, gives streams, metadata and time. Throws Error before the first frame if something that
  // must be kept cannot be.
  VideoWriter(const OutputOptions& options, const SourceMedia* media, double fps);

  void Write(const Frame& frame) override;
  void Finish() override;
  std::string FinishPartial() override;

 private:
  void Start(const Picture& first);
  VideoEncoder::Sink VideoSink();
  void CloseContainer();

  OutputOptions options_;
  VideoFile file_;
  VideoEncoder encoder_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_VIDEO_WRITER_H_

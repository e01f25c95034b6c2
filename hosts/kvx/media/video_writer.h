// A video file.
#ifndef KVX_HOSTS_KVX_MEDIA_VIDEO_WRITER_H_
#define KVX_HOSTS_KVX_MEDIA_VIDEO_WRITER_H_

#include <memory>
#include <optional>
#include <string>

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/side_streams.h"
#include "hosts/kvx/media/video_encoder.h"
#include "hosts/kvx/output_file.h"

namespace kvx {

class VideoWriter : public FrameWriter {
 public:
  // `media`, which may be null, gives streams, metadata and time. Throws Error before the first frame if something that
  // must be kept cannot be.
  VideoWriter(const OutputOptions& options, const SourceMedia* media, double fps);
  ~VideoWriter() override;

  void Write(const Frame& frame) override;
  void Finish() override;
  std::string FinishPartial() override;

 private:
  struct OutputDeleter {
    void operator()(AVFormatContext* c) const;
  };
  using Output = std::unique_ptr<AVFormatContext, OutputDeleter>;
  static Output Create(const OutputOptions& options);

  void Start(const Picture& first);
  void TakeMetadata();
  void TakeChapters();
  VideoEncoder::Sink VideoSink();
  void CloseContainer();

  OutputOptions options_;
  const SourceMedia* media_;
  OutputFile file_;
  Output container_;
  VideoEncoder encoder_;
  AVStream* stream_;
  std::optional<SideStreams> side_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_VIDEO_WRITER_H_

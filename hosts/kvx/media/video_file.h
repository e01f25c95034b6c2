// A video file that comes into being: its container, the video's stream and what goes beside it.
#ifndef KVX_HOSTS_KVX_MEDIA_VIDEO_FILE_H_
#define KVX_HOSTS_KVX_MEDIA_VIDEO_FILE_H_

#include <memory>
#include <optional>
#include <string>

#include "hosts/kvx/frame_io.h"
#include "hosts/kvx/media/side_streams.h"
#include "hosts/kvx/output_file.h"

namespace kvx {

// Takes the video's packets, whoever made them. `options` and `media` must live as long.
class VideoFile {
 public:
  // `media` may be null. Throws Error.
  VideoFile(const OutputOptions& options, const SourceMedia* media);
  ~VideoFile();

  const AVOutputFormat& Format() const { return *container_->oformat; }
  // Adds the streams beside the video. Throws Error if something that must be kept cannot be.
  void PlanSideStreams();
  // Writes the header. `maker` is what errors call who made the packets.
  void Start(const AVCodecParameters& video, AVRational timeBase, AVRational rate, const std::string& maker);
  // Stamps in `timeBase`; the packet is taken.
  void WriteVideo(AVPacket& packet, AVRational timeBase);
  // Whatever came to be known by now of the streams beside the video.
  void WriteQueued();
  // Nothing comes any more.
  void Close();
  // After Close: as OutputFile does it. Says which of the source's tags are not kept.
  void Commit();
  std::string CommitBeside(const std::string& mark) { return file_.CommitBeside(mark); }

 private:
  struct OutputDeleter {
    void operator()(AVFormatContext* c) const;
  };
  using Output = std::unique_ptr<AVFormatContext, OutputDeleter>;
  static Output Create(const OutputOptions& options);

  void TakeMetadata();
  void TakeChapters();

  const OutputOptions& options_;
  const SourceMedia* media_;
  OutputFile file_;
  Output container_;
  AVStream* stream_;
  std::optional<SideStreams> side_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_VIDEO_FILE_H_

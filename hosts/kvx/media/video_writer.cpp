#include "hosts/kvx/media/video_writer.h"

#include <fmt/format.h>

#include "hostkit/error.h"
#include "hosts/kvx/notes.h"

namespace kvx {

VideoWriter::VideoWriter(const OutputOptions& options, const SourceMedia* media, double fps)
    : options_(options), file_(options_, media), encoder_(options, file_.Format(), media, RateOf(media, fps)) {
  file_.PlanSideStreams();
}

void VideoWriter::Start(const Picture& first) {
  encoder_.Open(first);
  const AVCodecContext& codec = encoder_.Context();
  file_.Start(*encoder_.Parameters(), codec.time_base, codec.framerate, codec.codec->name);
}

VideoEncoder::Sink VideoWriter::VideoSink() {
  return [this](AVPacket& packet) { file_.WriteVideo(packet, encoder_.Context().time_base); };
}

void VideoWriter::Write(const Frame& frame) {
  if (!encoder_.IsOpen()) Start(frame.picture);
  if (frame.metadata && !frame.metadata->Empty()) {
    Note("what picture files say beside their pixels (EXIF, profiles, texts) is not kept in a video");
  }
  encoder_.Encode(frame, VideoSink());
  file_.WriteQueued();
}

void VideoWriter::CloseContainer() {
  encoder_.Finish(VideoSink());
  file_.Close();
}

void VideoWriter::Finish() {
  if (!encoder_.IsOpen()) throw Error("there are no frames to write");
  CloseContainer();
  file_.Commit();
}

std::string VideoWriter::FinishPartial() {
  if (!encoder_.IsOpen()) return "nothing was written";
  CloseContainer();
  return fmt::format("what was done is {}", file_.CommitBeside("partial"));
}

}  // namespace kvx

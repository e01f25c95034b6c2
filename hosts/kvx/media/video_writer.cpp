#include "hosts/kvx/media/video_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "hostkit/error.h"
#include "hosts/kvx/media/container_fit.h"
#include "hosts/kvx/media/kept_tags.h"
#include "hosts/kvx/notes.h"

namespace kvx {

void VideoWriter::OutputDeleter::operator()(AVFormatContext* c) const {
  if (c->pb) avio_closep(&c->pb);
  avformat_free_context(c);
}

VideoWriter::Output VideoWriter::Create(const OutputOptions& options) {
  AVFormatContext* made = nullptr;
  CheckAv(avformat_alloc_output_context2(&made, nullptr, nullptr, options.path.c_str()), options.path);
  return Output(made);
}

VideoWriter::VideoWriter(const OutputOptions& options, const SourceMedia* media, double fps)
    : options_(options),
      media_(media),
      file_(options.path, options.overwrite),
      container_(Create(options)),
      encoder_(options, *container_->oformat, media, RateOf(media, fps)),
      stream_(CheckAlloc(avformat_new_stream(container_.get(), nullptr))) {
  if (media_) side_.emplace(*media_, options_, container_.get());
}

VideoWriter::~VideoWriter() = default;

void VideoWriter::TakeMetadata() {
  media_->metadata.CopyTo(&container_->metadata);
  const SourceStream& from = media_->streams[media_->video];
  from.metadata.CopyTo(&stream_->metadata);
  stream_->disposition = from.disposition;
  // These describe the packets that were.
  for (const char* stale : {"encoder", "alpha_mode", "rotate", "major_brand", "minor_version", "compatible_brands"}) {
    av_dict_set(&stream_->metadata, stale, nullptr, 0);
    av_dict_set(&container_->metadata, stale, nullptr, 0);
  }
  for (unsigned i = 0; i < container_->nb_streams; ++i) {
    AVDictionary** tags = &container_->streams[i]->metadata;
    const AVDictionaryEntry* entry = nullptr;
    // Statistics of the file before, such as BPS and NUMBER_OF_FRAMES-eng.
    for (const char* stale : {"DURATION", "BPS", "NUMBER_OF_FRAMES", "NUMBER_OF_BYTES", "_STATISTICS"}) {
      while ((entry = av_dict_get(*tags, stale, nullptr, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        av_dict_set(tags, std::string(entry->key).c_str(), nullptr, 0);
      }
    }
  }
  const std::string timecode = from.metadata.Get("timecode");
  const ContainerKeeps keeps = KeepsOf(*container_->oformat);
  for (const char* tag : {"title", "creation_time"}) {
    const std::string value = media_->metadata.Get(tag);
    if (!value.empty() && !keeps.tags)
      Note(fmt::format("the file's {} ({}) is not kept by this kind of file", tag, value));
  }
  if (!timecode.empty() && !keeps.timecode) {
    Note(fmt::format("the timecode {} is not kept: this kind of file has no place for it", timecode));
  }
}

void VideoWriter::TakeChapters() {
  if (media_->chapters.empty()) return;
  if (!KeepsOf(*container_->oformat).chapters) {
    Note(fmt::format("{} chapters are not kept: this kind of file has no place for them", media_->chapters.size()));
    return;
  }
  const auto place = static_cast<AVChapter**>(av_calloc(media_->chapters.size(), sizeof(AVChapter*)));
  container_->chapters = CheckAlloc(place);
  for (const SourceChapter& from : media_->chapters) {
    const double start = std::max(from.start - media_->partStart, 0.0);
    const double end = std::min(from.end, media_->partEnd.value_or(from.end)) - media_->partStart;
    if (end <= start) continue;
    auto* chapter = static_cast<AVChapter*>(CheckAlloc(av_mallocz(sizeof(AVChapter))));
    chapter->id = from.id;
    chapter->time_base = {1, 1000};
    chapter->start = std::llround(start * 1000);
    chapter->end = std::llround(end * 1000);
    from.metadata.CopyTo(&chapter->metadata);
    container_->chapters[container_->nb_chapters++] = chapter;
  }
}

void VideoWriter::Start(const Picture& first) {
  encoder_.Open(first);
  const AVCodecContext& codec = encoder_.Context();
  CheckAv(avcodec_parameters_from_context(stream_->codecpar, &codec), options_.path);
  stream_->time_base = codec.time_base;
  stream_->avg_frame_rate = codec.framerate;
  stream_->sample_aspect_ratio = codec.sample_aspect_ratio;
  if (media_) {
    TakeMetadata();
    TakeChapters();
  }
  const bool besideVp = codec.codec_id == AV_CODEC_ID_VP8 || codec.codec_id == AV_CODEC_ID_VP9;
  if (besideVp && HasAlpha(codec.pix_fmt)) av_dict_set(&stream_->metadata, "alpha_mode", "1", 0);
  CheckAv(avio_open(&container_->pb, ("file:" + file_.TemporaryPath()).c_str(), AVIO_FLAG_WRITE), options_.path);
  ForgetComplaint();
  Dictionary muxing;
  // All tags, not only those that a player of the maker's knows.
  if (std::string(container_->oformat->name) == "mov") {
    muxing.Set("movflags", "use_metadata_tags");
  }
  const int status = avformat_write_header(container_.get(), muxing.Raw());
  if (status < 0) {
    const std::string complaint = LastComplaint();
    throw Error(fmt::format("{}: cannot be begun with {}{}", options_.path, codec.codec->name,
                            complaint.empty() ? ": " + AvErrorText(status) : complaint));
  }
  if (side_) side_->WriteCovers();
}

VideoEncoder::Sink VideoWriter::VideoSink() {
  return [this](AVPacket& packet) {
    av_packet_rescale_ts(&packet, encoder_.Context().time_base, stream_->time_base);
    packet.stream_index = stream_->index;
    CheckAv(av_interleaved_write_frame(container_.get(), &packet), options_.path);
  };
}

void VideoWriter::Write(const Frame& frame) {
  if (!encoder_.IsOpen()) Start(frame.picture);
  if (frame.metadata && !frame.metadata->Empty()) {
    Note("what picture files say beside their pixels (EXIF, profiles, texts) is not kept in a video");
  }
  encoder_.Encode(frame, VideoSink());
  if (side_) side_->WriteQueued();
}

void VideoWriter::CloseContainer() {
  encoder_.Finish(VideoSink());
  if (side_) side_->Finish();
  CheckAv(av_write_trailer(container_.get()), options_.path);
  avio_flush(container_->pb);
  CheckAv(container_->pb->error, options_.path);
  CheckAv(avio_closep(&container_->pb), options_.path);
}

void VideoWriter::Finish() {
  if (!encoder_.IsOpen()) throw Error("there are no frames to write");
  CloseContainer();
  if (media_) NoteLostTags(*container_, KeepsOf(*container_->oformat), file_.TemporaryPath());
  file_.Commit();
}

std::string VideoWriter::FinishPartial() {
  if (!encoder_.IsOpen()) return "nothing was written";
  CloseContainer();
  return fmt::format("what was done is {}", file_.CommitBeside("partial"));
}

}  // namespace kvx

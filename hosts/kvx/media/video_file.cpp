#include "hosts/kvx/media/video_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "hostkit/error.h"
#include "hosts/kvx/media/container_fit.h"
#include "hosts/kvx/media/kept_tags.h"
#include "hosts/kvx/media/pixels.h"
#include "hosts/kvx/notes.h"

namespace kvx {

void VideoFile::OutputDeleter::operator()(AVFormatContext* c) const {
  if (c->pb) avio_closep(&c->pb);
  avformat_free_context(c);
}

VideoFile::Output VideoFile::Create(const OutputOptions& options) {
  AVFormatContext* made = nullptr;
  CheckAv(avformat_alloc_output_context2(&made, nullptr, nullptr, options.path.c_str()), options.path);
  return Output(made);
}

VideoFile::VideoFile(const OutputOptions& options, const SourceMedia* media)
    : options_(options),
      media_(media),
      file_(options.path, options.overwrite),
      container_(Create(options)),
      stream_(CheckAlloc(avformat_new_stream(container_.get(), nullptr))) {}

VideoFile::~VideoFile() = default;

void VideoFile::PlanSideStreams() {
  if (media_) side_.emplace(*media_, options_, container_.get());
}

void VideoFile::TakeMetadata() {
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

void VideoFile::TakeChapters() {
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

void VideoFile::Start(const AVCodecParameters& video, AVRational timeBase, AVRational rate, const std::string& maker) {
  CheckAv(avcodec_parameters_copy(stream_->codecpar, &video), options_.path);
  stream_->time_base = timeBase;
  stream_->avg_frame_rate = rate;
  stream_->sample_aspect_ratio = video.sample_aspect_ratio;
  if (media_) {
    TakeMetadata();
    TakeChapters();
  }
  const bool besideVp = video.codec_id == AV_CODEC_ID_VP8 || video.codec_id == AV_CODEC_ID_VP9;
  if (besideVp && HasAlpha(static_cast<AVPixelFormat>(video.format))) {
    av_dict_set(&stream_->metadata, "alpha_mode", "1", 0);
  }
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
    throw Error(fmt::format("{}: cannot be begun with {}{}", options_.path, maker,
                            complaint.empty() ? ": " + AvErrorText(status) : complaint));
  }
  if (side_) side_->WriteCovers();
}

void VideoFile::WriteVideo(AVPacket& packet, AVRational timeBase) {
  av_packet_rescale_ts(&packet, timeBase, stream_->time_base);
  packet.stream_index = stream_->index;
  CheckAv(av_interleaved_write_frame(container_.get(), &packet), options_.path);
}

void VideoFile::WriteQueued() {
  if (side_) side_->WriteQueued();
}

void VideoFile::Close() {
  if (side_) side_->Finish();
  CheckAv(av_write_trailer(container_.get()), options_.path);
  avio_flush(container_->pb);
  CheckAv(container_->pb->error, options_.path);
  CheckAv(avio_closep(&container_->pb), options_.path);
}

void VideoFile::Commit() {
  if (media_) NoteLostTags(*container_, KeepsOf(*container_->oformat), file_.TemporaryPath());
  file_.Commit();
}

}  // namespace kvx

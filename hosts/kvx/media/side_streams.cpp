#include "hosts/kvx/media/side_streams.h"

#include <fmt/format.h>

#include <cstring>

#include "hostkit/error.h"
#include "hosts/kvx/media/container_fit.h"
#include "hosts/kvx/notes.h"

namespace kvx {

namespace {

bool IsMatroska(const AVOutputFormat& container) {
  return std::strcmp(container.name, "matroska") == 0;
}

bool LosesNothing(AVCodecID id) {
  const AVCodecDescriptor* desc = avcodec_descriptor_get(id);
  return desc && (desc->props & AV_CODEC_PROP_LOSSLESS);
}

void NoteWhatIsLost(const SourceStream& from, const ContainerKeeps& keeps) {
  const auto note = [&](bool kept, const std::string& what) {
    if (!kept && !what.empty()) Note(fmt::format("{}: its {} is not kept by this kind of file", from.Name(), what));
  };
  const std::string language = from.metadata.Get("language");
  const std::string title = from.metadata.Get("title");
  if (!language.empty() && language != "und") note(keeps.languages, fmt::format("language ({})", language));
  if (!title.empty()) note(keeps.titles, fmt::format("title ({})", title));
  if (from.disposition & AV_DISPOSITION_FORCED) note(keeps.dispositions, "mark \"forced\"");
}

}  // namespace

SideStreams::SideStreams(const SourceMedia& media, const OutputOptions& options, AVFormatContext* to)
    : media_(media), options_(options), to_(to), routes_(media.streams.size()) {
  for (const SourceStream& from : media.streams) {
    if (static_cast<size_t>(from.index) != media.video && !from.holdsChapters) Plan(from);
  }
}

void SideStreams::Plan(const SourceStream& from) {
  switch (from.Type()) {
    case AVMEDIA_TYPE_AUDIO:
      return PlanSound(from);
    case AVMEDIA_TYPE_SUBTITLE:
      return PlanSubtitles(from);
    case AVMEDIA_TYPE_ATTACHMENT:
      return PlanAttachment(from);
    case AVMEDIA_TYPE_VIDEO:
      if (from.attachedPicture) return PlanCover(from);
      return PlanOther(from);
    default:
      return PlanOther(from);
  }
}

bool SideStreams::Takes(const SourceStream& from, std::string& reason) const {
  return ContainerTakes(*to_->oformat, *from.parameters, from.timeBase, reason);
}

void SideStreams::PlanSound(const SourceStream& from) {
  if (!options_.audio) return;
  std::string reason;
  if (Takes(from, reason)) {
    Add(from, CopyStream(from));
    return;
  }
  const AVCodec* encoder = UsualAudioEncoder(*to_->oformat);
  if (!encoder) {
    throw Error(fmt::format("{}: {} cannot go into this kind of file{}; --no-audio leaves sound out", options_.path,
                            from.Name(), reason));
  }
  std::unique_ptr<SideStream> stream;
  try {
    stream = TranscodeAudio(from, *encoder, *to_->oformat);
  } catch (const Error& error) {
    throw Error(fmt::format("{}: {}; --no-audio leaves sound out", options_.path, error.what()));
  }
  Note(fmt::format("{} becomes {}, as this kind of file wants{}", from.Name(), avcodec_get_name(encoder->id),
                   LosesNothing(from.parameters->codec_id) && !LosesNothing(encoder->id) ? ", with some loss" : ""));
  Add(from, std::move(stream));
}

void SideStreams::PlanSubtitles(const SourceStream& from) {
  if (!options_.subtitles) return;
  std::string reason;
  if (Takes(from, reason)) {
    Add(from, CopyStream(from));
    return;
  }
  const AVCodec* encoder = UsualSubtitleEncoder(*to_->oformat);
  const bool text = IsTextSubtitle(from.parameters->codec_id);
  if (!encoder || !text) {
    if (encoder) reason = ": they are pictures, and it wants text";
    throw Error(fmt::format("{}: {} cannot go into this kind of file{}; --no-subtitles leaves subtitles out",
                            options_.path, from.Name(), reason));
  }
  std::unique_ptr<SideStream> stream;
  try {
    stream = TranscodeSubtitles(from, *encoder, *to_->oformat);
  } catch (const Error& error) {
    throw Error(fmt::format("{}: {}; --no-subtitles leaves subtitles out", options_.path, error.what()));
  }
  Note(fmt::format("{} becomes {}, as this kind of file wants", from.Name(), avcodec_get_name(encoder->id)));
  Add(from, std::move(stream));
}

// Matroska keeps a cover as an attachment.
void SideStreams::PlanCover(const SourceStream& from) {
  const AVPacket& picture = *from.attachedPicture;
  const bool png = from.parameters->codec_id == AV_CODEC_ID_PNG;
  if (IsMatroska(*to_->oformat)) {
    AVStream* to = Add(from, nullptr);
    to->codecpar->codec_type = AVMEDIA_TYPE_ATTACHMENT;
    to->codecpar->codec_id = from.parameters->codec_id;
    to->codecpar->extradata =
        static_cast<uint8_t*>(CheckAlloc(av_mallocz(static_cast<size_t>(picture.size) + AV_INPUT_BUFFER_PADDING_SIZE)));
    std::memcpy(to->codecpar->extradata, picture.data, static_cast<size_t>(picture.size));
    to->codecpar->extradata_size = picture.size;
    to->disposition = 0;
    if (!av_dict_get(to->metadata, "filename", nullptr, 0)) {
      av_dict_set(&to->metadata, "filename", png ? "cover.png" : "cover.jpg", 0);
    }
    if (!av_dict_get(to->metadata, "mimetype", nullptr, 0)) {
      av_dict_set(&to->metadata, "mimetype", png ? "image/png" : "image/jpeg", 0);
    }
  } else if (IsMovFamily(*to_->oformat)) {
    covers_.emplace_back(&from, Add(from, CopyStream(from)));
  } else {
    Note(fmt::format("the cover ({}) is not kept: this kind of file has no place for it", from.CodecName()));
  }
}

void SideStreams::PlanAttachment(const SourceStream& from) {
  if (IsMatroska(*to_->oformat)) {
    Add(from, CopyStream(from));
    return;
  }
  const std::string name = from.metadata.Get("filename");
  Note(fmt::format("the attachment {} is not kept: this kind of file has no place for it",
                   name.empty() ? from.Name() : name));
}

void SideStreams::PlanOther(const SourceStream& from) {
  // A timecode track is made anew from the time that the video's metadata names; without such a place that is noted
  // there.
  const bool isTimecode = from.parameters->codec_tag == MKTAG('t', 'm', 'c', 'd');
  if (isTimecode && !media_.streams[media_.video].metadata.Get("timecode").empty()) return;
  std::string reason;
  if (Takes(from, reason)) {
    if (from.Type() == AVMEDIA_TYPE_VIDEO) Note(fmt::format("{} goes over as it is, without the effect", from.Name()));
    Add(from, CopyStream(from));
    return;
  }
  Note(fmt::format("{} is not kept: this kind of file has no place for it", from.Name()));
}

AVStream* SideStreams::Add(const SourceStream& from, std::unique_ptr<SideStream> stream) {
  AVStream* to = CheckAlloc(avformat_new_stream(to_, nullptr));
  if (stream) stream->Describe(*to);
  from.metadata.CopyTo(&to->metadata);
  to->disposition = from.disposition;
  NoteWhatIsLost(from, KeepsOf(*to_->oformat));
  // Where these files keep a track's title.
  const std::string title = from.metadata.Get("title");
  if (!title.empty() && IsMovFamily(*to_->oformat)) av_dict_set(&to->metadata, "handler_name", title.c_str(), 0);
  routes_[static_cast<size_t>(from.index)] = {to, std::move(stream)};
  return to;
}

PacketSink SideStreams::SinkTo(AVStream* to) {
  return [this, to](AVPacket& packet, AVRational timeBase) {
    av_packet_rescale_ts(&packet, timeBase, to->time_base);
    packet.stream_index = to->index;
    packet.pos = -1;
    CheckAv(av_interleaved_write_frame(to_, &packet), options_.path);
  };
}

void SideStreams::WriteCovers() {
  for (const auto& [from, to] : covers_) {
    const PacketPtr packet(CheckAlloc(av_packet_clone(from->attachedPicture.get())));
    packet->pts = packet->dts = 0;
    SinkTo(to)(*packet, from->timeBase);
  }
}

void SideStreams::WriteQueued() {
  for (PacketPtr& packet : media_.packets->TakeAll()) {
    const auto index = static_cast<size_t>(packet->stream_index);
    if (index >= routes_.size() || !routes_[index].stream) continue;
    if (media_.streams[index].attachedPicture) continue;
    // What a decoder runs up with is not heard. A file that counts frames instead of time would move the video for it.
    const bool runUp = packet->pts != AV_NOPTS_VALUE && packet->pts + packet->duration <= 0;
    if (runUp && std::strcmp(to_->oformat->name, "avi") == 0) continue;
    routes_[index].stream->Put(*packet, SinkTo(routes_[index].to));
  }
}

void SideStreams::Finish() {
  WriteQueued();
  for (Route& route : routes_) {
    if (route.stream) route.stream->Finish(SinkTo(route.to));
  }
}

}  // namespace kvx

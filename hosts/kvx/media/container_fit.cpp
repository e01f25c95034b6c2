#include "hosts/kvx/media/container_fit.h"

#include <cstring>
#include <map>
#include <set>
#include <vector>

namespace kvx {

namespace {

bool Is(const AVOutputFormat& container, const char* name) {
  return std::strcmp(container.name, name) == 0;
}

// Its writer takes anything, as private data that nobody plays.
bool TransportStreamTakes(AVCodecID id) {
  static const std::set<AVCodecID> codecs = {
      AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO,   AV_CODEC_ID_MPEG4,        AV_CODEC_ID_H264,
      AV_CODEC_ID_HEVC,       AV_CODEC_ID_MP1,          AV_CODEC_ID_MP2,          AV_CODEC_ID_MP3,
      AV_CODEC_ID_AAC,        AV_CODEC_ID_AAC_LATM,     AV_CODEC_ID_AC3,          AV_CODEC_ID_EAC3,
      AV_CODEC_ID_DTS,        AV_CODEC_ID_TRUEHD,       AV_CODEC_ID_OPUS,         AV_CODEC_ID_S302M,
      AV_CODEC_ID_SMPTE_KLV,  AV_CODEC_ID_DVB_TELETEXT, AV_CODEC_ID_DVB_SUBTITLE, AV_CODEC_ID_HDMV_PGS_SUBTITLE};
  return codecs.count(id) > 0;
}

struct OutputDeleter {
  void operator()(AVFormatContext* c) const {
    if (c->pb) {
      uint8_t* bytes = nullptr;
      avio_close_dyn_buf(c->pb, &bytes);
      av_free(bytes);
      c->pb = nullptr;
    }
    avformat_free_context(c);
  }
};

bool CodecFits(const AVOutputFormat& container, const AVCodec& encoder) {
  ParametersPtr par(CheckAlloc(avcodec_parameters_alloc()));
  par->codec_type = encoder.type;
  par->codec_id = encoder.id;
  if (Is(container, "mpegts")) return TransportStreamTakes(encoder.id);
  return avformat_query_codec(&container, encoder.id, FF_COMPLIANCE_NORMAL) == 1;
}

const AVCodec* FirstFitting(const AVOutputFormat& container, const std::vector<AVCodecID>& candidates) {
  for (const AVCodecID id : candidates) {
    const AVCodec* encoder = id == AV_CODEC_ID_NONE ? nullptr : avcodec_find_encoder(id);
    if (encoder && CodecFits(container, *encoder)) return encoder;
  }
  return nullptr;
}

}  // namespace

bool ContainerTakes(const AVOutputFormat& container, const AVCodecParameters& stream, AVRational timeBase,
                    std::string& reason) {
  if (stream.codec_id == AV_CODEC_ID_NONE && stream.codec_type != AVMEDIA_TYPE_DATA) return false;
  if (Is(container, "mpegts") && !TransportStreamTakes(stream.codec_id)) return false;
  if (Is(container, "mxf")) {
    // Its header wants a picture first, so it cannot be tried.
    const bool pcm = stream.codec_id == AV_CODEC_ID_PCM_S16LE || stream.codec_id == AV_CODEC_ID_PCM_S24LE;
    return pcm && stream.sample_rate == OnlySampleRate(container);
  }
  if (avformat_query_codec(&container, stream.codec_id, FF_COMPLIANCE_NORMAL) == 0) return false;
  AVFormatContext* made = nullptr;
  if (avformat_alloc_output_context2(&made, &container, nullptr, nullptr) < 0) return false;
  const std::unique_ptr<AVFormatContext, OutputDeleter> trial(made);
  AVStream* to = CheckAlloc(avformat_new_stream(made, nullptr));
  CheckAv(avcodec_parameters_copy(to->codecpar, &stream), "a stream");
  if (stream.codec_type != AVMEDIA_TYPE_DATA) to->codecpar->codec_tag = 0;
  to->time_base = timeBase;
  CheckAv(avio_open_dyn_buf(&made->pb), "memory");
  ForgetComplaint();
  if (avformat_write_header(made, nullptr) >= 0) return true;
  reason = LastComplaint();
  return false;
}

ContainerKeeps KeepsOf(const AVOutputFormat& container) {
  static const std::map<std::string, ContainerKeeps> known = {
      // tags, languages, titles, dispositions, chapters, timecode
      {"matroska", {true, true, true, true, true, true}},    {"webm", {true, true, true, true, true, false}},
      {"mp4", {true, true, true, true, true, true}},         {"ipod", {true, true, true, true, true, true}},
      {"mov", {true, true, true, false, true, true}},        {"3gp", {true, true, true, false, false, false}},
      {"3g2", {true, true, true, false, false, false}},      {"ogg", {true, true, true, false, true, false}},
      {"ogv", {true, true, true, false, true, false}},       {"asf", {true, true, false, false, true, false}},
      {"avi", {true, false, true, false, false, false}},     {"flv", {true, false, false, false, false, false}},
      {"mpegts", {false, true, false, false, false, false}}, {"mxf", {true, false, false, false, false, true}},
      {"nut", {true, true, true, true, true, true}}};
  const auto found = known.find(container.name);
  return found == known.end() ? ContainerKeeps() : found->second;
}

bool IsMovFamily(const AVOutputFormat& container) {
  return Is(container, "mov") || Is(container, "mp4") || Is(container, "ipod") || Is(container, "3gp") ||
         Is(container, "3g2");
}

const AVCodec* UsualAudioEncoder(const AVOutputFormat& container) {
  const bool webm = Is(container, "webm");
  return FirstFitting(
      container,
      {Is(container, "mxf") ? AV_CODEC_ID_PCM_S16LE : AV_CODEC_ID_NONE, webm ? AV_CODEC_ID_OPUS : AV_CODEC_ID_NONE,
       Is(container, "mpegts") || Is(container, "3gp") || Is(container, "3g2") ? AV_CODEC_ID_AAC : AV_CODEC_ID_NONE,
       container.audio_codec, AV_CODEC_ID_AAC, AV_CODEC_ID_OPUS, AV_CODEC_ID_VORBIS, AV_CODEC_ID_MP3, AV_CODEC_ID_AC3,
       AV_CODEC_ID_MP2, AV_CODEC_ID_FLAC, AV_CODEC_ID_PCM_S16LE});
}

const AVCodec* UsualSubtitleEncoder(const AVOutputFormat& container) {
  if (Is(container, "mpegts") || Is(container, "mxf")) return nullptr;
  return FirstFitting(container,
                      {IsTextSubtitle(container.subtitle_codec) ? container.subtitle_codec : AV_CODEC_ID_NONE,
                       AV_CODEC_ID_MOV_TEXT, AV_CODEC_ID_WEBVTT, AV_CODEC_ID_SUBRIP, AV_CODEC_ID_ASS});
}

int OnlySampleRate(const AVOutputFormat& container) {
  return Is(container, "mxf") ? 48000 : 0;
}

bool IsTextSubtitle(AVCodecID id) {
  const AVCodecDescriptor* desc = avcodec_descriptor_get(id);
  return desc && (desc->props & AV_CODEC_PROP_TEXT_SUB);
}

}  // namespace kvx

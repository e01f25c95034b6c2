#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "hostkit/error.h"
#include "hosts/kvx/media/side_stream.h"

namespace kvx {

namespace {

constexpr size_t kLargestSubtitle = size_t{1} << 20;

class SubtitleTranscoder : public SideStream {
 public:
  SubtitleTranscoder(const SourceStream& from, const AVCodec& encoder, const AVOutputFormat& container)
      : name_(from.Name()), timeBase_(from.timeBase) {
    decoder_ = OpenDecoder(from);
    encoder_.reset(CheckAlloc(avcodec_alloc_context3(&encoder)));
    encoder_->time_base = AV_TIME_BASE_Q;
    if (container.flags & AVFMT_GLOBALHEADER) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (decoder_->subtitle_header) {
      const auto size = static_cast<size_t>(decoder_->subtitle_header_size);
      encoder_->subtitle_header = static_cast<uint8_t*>(CheckAlloc(av_mallocz(size + 1)));
      std::memcpy(encoder_->subtitle_header, decoder_->subtitle_header, size);
      encoder_->subtitle_header_size = decoder_->subtitle_header_size;
    }
    CheckAv(avcodec_open2(encoder_.get(), &encoder, nullptr), fmt::format("{}: {}", name_, encoder.name));
  }

  void Describe(AVStream& to) const override {
    CheckAv(avcodec_parameters_from_context(to.codecpar, encoder_.get()), name_);
    to.time_base = {1, 1000};
  }

  void Put(AVPacket& packet, const PacketSink& sink) override {
    AVSubtitle subtitle = {};
    int got = 0;
    if (avcodec_decode_subtitle2(decoder_.get(), &subtitle, &got, &packet) < 0 || !got) return;
    subtitle.pts = 0;
    if (subtitle.num_rects > 0 && subtitle.end_display_time > subtitle.start_display_time) {
      subtitle.end_display_time -= subtitle.start_display_time;
      packet.duration = av_rescale_q(subtitle.end_display_time, {1, 1000}, timeBase_);
      packet.pts += av_rescale_q(subtitle.start_display_time, {1, 1000}, timeBase_);
      subtitle.start_display_time = 0;
    }
    std::vector<uint8_t> bytes(kLargestSubtitle);
    const int size = subtitle.num_rects > 0 ? avcodec_encode_subtitle(encoder_.get(), bytes.data(),
                                                                      static_cast<int>(bytes.size()), &subtitle)
                                            : 0;
    avsubtitle_free(&subtitle);
    if (size <= 0) return;
    PacketPtr out = NewPacket();
    CheckAv(av_new_packet(out.get(), size), name_);
    std::copy_n(bytes.data(), size, out->data);
    out->pts = out->dts = packet.pts;
    out->duration = packet.duration;
    out->flags |= AV_PKT_FLAG_KEY;
    sink(*out, timeBase_);
  }

 private:
  std::string name_;
  AVRational timeBase_;
  CodecPtr decoder_;
  CodecPtr encoder_;
};

class CopiedStream : public SideStream {
 public:
  explicit CopiedStream(const SourceStream& from) : from_(from) {}

  void Describe(AVStream& to) const override {
    CheckAv(avcodec_parameters_copy(to.codecpar, from_.parameters.get()), from_.Name());
    if (from_.Type() != AVMEDIA_TYPE_DATA) to.codecpar->codec_tag = 0;
    to.time_base = from_.timeBase;
    to.avg_frame_rate = from_.frameRate;
  }
  void Put(AVPacket& packet, const PacketSink& sink) override { sink(packet, from_.timeBase); }

 private:
  const SourceStream& from_;
};

}  // namespace

std::unique_ptr<SideStream> TranscodeSubtitles(const SourceStream& from, const AVCodec& encoder,
                                               const AVOutputFormat& container) {
  return std::make_unique<SubtitleTranscoder>(from, encoder, container);
}

std::unique_ptr<SideStream> CopyStream(const SourceStream& from) {
  return std::make_unique<CopiedStream>(from);
}

}  // namespace kvx

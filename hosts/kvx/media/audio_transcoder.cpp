#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

#include "hostkit/error.h"
#include "hosts/kvx/media/container_fit.h"
#include "hosts/kvx/media/side_stream.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace kvx {

namespace {

constexpr int64_t kBitsPerChannel = 96000;  // per second, of codecs that lose something
constexpr double kLargestJitter = 0.05;     // seconds; longer gaps in the source are filled with silence
constexpr int kUsualFrame = 1024;           // samples, for codecs that take any number

struct ResamplerDeleter {
  void operator()(SwrContext* c) const { swr_free(&c); }
};
struct FifoDeleter {
  void operator()(AVAudioFifo* f) const { av_audio_fifo_free(f); }
};

int NearestRate(const AVCodec& encoder, int rate) {
  int best = 0;
  for (const int* r = encoder.supported_samplerates; r && *r; ++r) {
    if (!best || std::abs(*r - rate) < std::abs(best - rate)) best = *r;
  }
  return best ? best : rate;
}

void ChooseLayout(const AVCodec& encoder, const AVChannelLayout& from, AVChannelLayout& to) {
  const AVChannelLayout* best = nullptr;
  for (const AVChannelLayout* l = encoder.ch_layouts; l && l->nb_channels; ++l) {
    if (av_channel_layout_compare(l, &from) == 0) best = l;
    if (best) break;
  }
  for (const AVChannelLayout* l = encoder.ch_layouts; !best && l && l->nb_channels; ++l) {
    if (l->nb_channels == std::min(from.nb_channels, 2)) best = l;
  }
  av_channel_layout_copy(&to, best ? best : &from);
}

class AudioTranscoder : public SideStream {
 public:
  AudioTranscoder(const SourceStream& from, const AVCodec& encoder, const AVOutputFormat& container)
      : name_(from.Name()) {
    decoder_ = OpenDecoder(from);
    if (decoder_->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
      const int channels = std::max(1, decoder_->ch_layout.nb_channels);
      av_channel_layout_default(&decoder_->ch_layout, channels);
    }
    encoder_.reset(CheckAlloc(avcodec_alloc_context3(&encoder)));
    const int wanted = OnlySampleRate(container);
    encoder_->sample_rate = NearestRate(encoder, wanted ? wanted : std::max(1, decoder_->sample_rate));
    ChooseLayout(encoder, decoder_->ch_layout, encoder_->ch_layout);
    encoder_->sample_fmt = encoder.sample_fmts ? encoder.sample_fmts[0] : AV_SAMPLE_FMT_S16;
    encoder_->time_base = {1, encoder_->sample_rate};
    encoder_->bit_rate = kBitsPerChannel * encoder_->ch_layout.nb_channels;
    if (container.flags & AVFMT_GLOBALHEADER) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    ForgetComplaint();
    const int status = avcodec_open2(encoder_.get(), &encoder, nullptr);
    if (status < 0) {
      const std::string complaint = LastComplaint();
      throw Error(fmt::format("{}: the encoder {} does not start{}", name_, encoder.name,
                              complaint.empty() ? ": " + AvErrorText(status) : complaint));
    }
    fifo_.reset(CheckAlloc(av_audio_fifo_alloc(encoder_->sample_fmt, encoder_->ch_layout.nb_channels, kUsualFrame)));
  }

  void Describe(AVStream& to) const override {
    CheckAv(avcodec_parameters_from_context(to.codecpar, encoder_.get()), name_);
    to.time_base = encoder_->time_base;
  }

  void Put(AVPacket& packet, const PacketSink& sink) override { Decode(&packet, sink); }

  void Finish(const PacketSink& sink) override {
    Decode(nullptr, sink);
    if (resampler_) Resample(nullptr);
    EncodeFrames(sink, true);
    Encode(nullptr, sink);
  }

 private:
  void Decode(const AVPacket* packet, const PacketSink& sink) {
    // A damaged packet loses its sound, not the run.
    if (avcodec_send_packet(decoder_.get(), packet) < 0 && packet) return;
    while (avcodec_receive_frame(decoder_.get(), decoded_.get()) >= 0) {
      KeepInTime();
      Resample(decoded_.get());
      av_frame_unref(decoded_.get());
      EncodeFrames(sink, false);
    }
  }

  // The first frame sets the time; a gap before a later one is filled with silence.
  void KeepInTime() {
    if (decoded_->best_effort_timestamp == AV_NOPTS_VALUE) return;
    const int64_t stamp = av_rescale_q(decoded_->best_effort_timestamp, decoder_->pkt_timebase, encoder_->time_base);
    if (!started_) {
      next_ = received_ = stamp;
      started_ = true;
    }
    const int64_t gap = stamp - received_;
    if (gap > static_cast<int64_t>(kLargestJitter * encoder_->sample_rate)) AddSilence(gap);
  }

  void AddSilence(int64_t samples) {
    AvFramePtr silence = NewSamples(kUsualFrame);
    while (samples > 0) {
      const int count = static_cast<int>(std::min<int64_t>(samples, kUsualFrame));
      av_samples_set_silence(silence->extended_data, 0, count, encoder_->ch_layout.nb_channels, encoder_->sample_fmt);
      Store(silence->extended_data, count);
      samples -= count;
    }
  }

  void Store(uint8_t** data, int count) {
    if (av_audio_fifo_write(fifo_.get(), reinterpret_cast<void**>(data), count) < count) throw std::bad_alloc();
    received_ += count;
  }

  AvFramePtr NewSamples(int count) const {
    AvFramePtr frame = NewAvFrame();
    frame->nb_samples = count;
    frame->format = encoder_->sample_fmt;
    frame->sample_rate = encoder_->sample_rate;
    av_channel_layout_copy(&frame->ch_layout, &encoder_->ch_layout);
    CheckAv(av_frame_get_buffer(frame.get(), 0), name_);
    return frame;
  }

  // Null: what the resampler still holds.
  void Resample(const AVFrame* frame) {
    if (!resampler_) {
      AVChannelLayout layout = {};
      av_channel_layout_copy(&layout, &frame->ch_layout);
      if (layout.order == AV_CHANNEL_ORDER_UNSPEC) av_channel_layout_default(&layout, frame->ch_layout.nb_channels);
      SwrContext* made = nullptr;
      swr_alloc_set_opts2(&made, &encoder_->ch_layout, encoder_->sample_fmt, encoder_->sample_rate, &layout,
                          static_cast<AVSampleFormat>(frame->format), frame->sample_rate, 0, nullptr);
      av_channel_layout_uninit(&layout);
      resampler_.reset(CheckAlloc(made));
      CheckAv(swr_init(made), name_);
    }
    const int room = swr_get_out_samples(resampler_.get(), frame ? frame->nb_samples : 0);
    if (room <= 0) return;
    const AvFramePtr out = NewSamples(room);
    const auto** in = frame ? const_cast<const uint8_t**>(frame->extended_data) : nullptr;
    const int count =
        CheckAv(swr_convert(resampler_.get(), out->extended_data, room, in, frame ? frame->nb_samples : 0), name_);
    Store(out->extended_data, count);
  }

  void EncodeFrames(const PacketSink& sink, bool all) {
    const int size = encoder_->frame_size > 0 ? encoder_->frame_size : kUsualFrame;
    while (av_audio_fifo_size(fifo_.get()) >= (all ? 1 : size)) {
      const int count = std::min(size, av_audio_fifo_size(fifo_.get()));
      const AvFramePtr frame = NewSamples(count);
      av_audio_fifo_read(fifo_.get(), reinterpret_cast<void**>(frame->extended_data), count);
      frame->pts = next_;
      next_ += count;
      Encode(frame.get(), sink);
    }
  }

  void Encode(const AVFrame* frame, const PacketSink& sink) {
    CheckAv(avcodec_send_frame(encoder_.get(), frame), name_);
    while (true) {
      const int got = avcodec_receive_packet(encoder_.get(), packet_.get());
      if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return;
      CheckAv(got, name_);
      sink(*packet_, encoder_->time_base);
      av_packet_unref(packet_.get());
    }
  }

  std::string name_;
  CodecPtr decoder_;
  CodecPtr encoder_;
  std::unique_ptr<SwrContext, ResamplerDeleter> resampler_;
  std::unique_ptr<AVAudioFifo, FifoDeleter> fifo_;
  AvFramePtr decoded_ = NewAvFrame();
  PacketPtr packet_ = NewPacket();
  bool started_ = false;
  int64_t received_ = 0;  // stamp behind what went into the fifo, in samples
  int64_t next_ = 0;      // stamp of what comes out of it next
};

}  // namespace

std::unique_ptr<SideStream> TranscodeAudio(const SourceStream& from, const AVCodec& encoder,
                                           const AVOutputFormat& container) {
  return std::make_unique<AudioTranscoder>(from, encoder, container);
}

}  // namespace kvx

#include "hosts/kvx/video.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <mutex>
#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "hostkit/plugin.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace kvx {

namespace fs = std::filesystem;

namespace {

std::string ErrorText(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = "";
  av_strerror(code, text, sizeof text);
  return text;
}

int Check(int code, const std::string& what) {
  if (code < 0) throw Error(fmt::format("{}: {}", what, ErrorText(code)));
  return code;
}

struct PacketDeleter {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct FrameDeleter {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct CodecDeleter {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct InputDeleter {
  void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};
struct ScalerDeleter {
  void operator()(SwsContext* c) const { sws_freeContext(c); }
};
using Packet = std::unique_ptr<AVPacket, PacketDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using Codec = std::unique_ptr<AVCodecContext, CodecDeleter>;
using Input = std::unique_ptr<AVFormatContext, InputDeleter>;
using Scaler = std::unique_ptr<SwsContext, ScalerDeleter>;

// Colour samples are doubled on the way in and averaged on the way out: what passes an effect unchanged then comes out
// as it came in.
constexpr int kDecodeFlags = SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
constexpr int kEncodeFlags = SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;

// Untagged video is taken as players take it: by its size.
AVColorSpace MatrixOf(AVColorSpace tagged, int height) {
  if (tagged != AVCOL_SPC_UNSPECIFIED && tagged != AVCOL_SPC_RGB) return tagged;
  return height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

const int* Coefficients(AVColorSpace matrix) {
  switch (matrix) {
    case AVCOL_SPC_BT709:
      return sws_getCoefficients(SWS_CS_ITU709);
    case AVCOL_SPC_FCC:
      return sws_getCoefficients(SWS_CS_FCC);
    case AVCOL_SPC_SMPTE240M:
      return sws_getCoefficients(SWS_CS_SMPTE240M);
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
      return sws_getCoefficients(SWS_CS_BT2020);
    default:
      return sws_getCoefficients(SWS_CS_ITU601);
  }
}

bool IsFullRange(AVColorRange range, AVPixelFormat format) {
  if (range != AVCOL_RANGE_UNSPECIFIED) return range == AVCOL_RANGE_JPEG;
  return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P;
}

struct ColorTags {
  AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
};

// What a writer takes over from the file that its frames come from.
struct Origin {
  AVFormatContext* container = nullptr;
  int videoStream = -1;
  AVRational timeBase{1, 25};
  AVRational rate{25, 1};
  AVRational sampleAspect{0, 1};
  ColorTags color;
  double start = 0;  // seconds of the first frame, by the file's clock
};

class VideoReader : public FrameReader {
 public:
  explicit VideoReader(const InputOptions& options) : options_(options) {
    const std::string name = options.path == "-" ? "standard input" : options.path;
    AVFormatContext* opened = nullptr;
    const std::string url = options.path == "-" ? "pipe:0" : "file:" + options.path;
    if (std::error_code error; options.path != "-" && fs::file_size(options.path, error) == 0 && !error) {
      throw Error(fmt::format("{}: the file is empty", name));
    }
    Check(avformat_open_input(&opened, url.c_str(), nullptr, nullptr), name);
    container_.reset(opened);
    Check(avformat_find_stream_info(opened, nullptr), name);
    const AVCodec* decoder = nullptr;
    const int index = av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (index < 0 || !decoder) throw Error(fmt::format("{}: no video in it that can be decoded", name));
    stream_ = opened->streams[index];
    codec_.reset(avcodec_alloc_context3(decoder));
    Check(avcodec_parameters_to_context(codec_.get(), stream_->codecpar), name);
    codec_->thread_count = 0;
    codec_->pkt_timebase = stream_->time_base;
    Check(avcodec_open2(codec_.get(), decoder, nullptr), name);
    name_ = name;
    packet_.reset(av_packet_alloc());
    decoded_.reset(av_frame_alloc());
    ReadRotation();
    origin_.container = opened;
    origin_.videoStream = index;
    origin_.timeBase = stream_->time_base;
    origin_.rate = av_guess_frame_rate(opened, stream_, nullptr);
    if (origin_.rate.num <= 0 || origin_.rate.den <= 0) origin_.rate = {25, 1};
    origin_.sampleAspect = stream_->sample_aspect_ratio;
    const AVCodecParameters& par = *stream_->codecpar;
    origin_.color = {par.color_space, par.color_primaries, par.color_trc, par.color_range};
    if (options.start && options.path != "-") {
      const double base = stream_->start_time == AV_NOPTS_VALUE ? 0 : stream_->start_time * av_q2d(stream_->time_base);
      av_seek_frame(opened, -1, static_cast<int64_t>((*options.start + base) * AV_TIME_BASE), AVSEEK_FLAG_BACKWARD);
    }
  }

  std::optional<int64_t> Count() const override {
    double seconds = container_->duration > 0 ? static_cast<double>(container_->duration) / AV_TIME_BASE : 0;
    std::optional<int64_t> count;
    if (stream_->nb_frames > 0 && !options_.start && !options_.end) count = stream_->nb_frames;
    if (!count && seconds > 0) {
      seconds = std::min(seconds, options_.end.value_or(seconds)) - options_.start.value_or(0);
      count = std::max<int64_t>(1, std::llround(seconds * av_q2d(origin_.rate)));
    }
    if (options_.frames) count = count ? std::min(*count, *options_.frames) : *options_.frames;
    return count;
  }

  bool Read(Frame& frame) override {
    if (options_.frames && next_ >= *options_.frames) return false;
    for (;;) {
      if (!Decode()) return false;
      const int64_t stamp =
          decoded_->best_effort_timestamp != AV_NOPTS_VALUE ? decoded_->best_effort_timestamp : fallback_;
      fallback_ = stamp + std::max<int64_t>(1, av_rescale_q(1, av_inv_q(origin_.rate), stream_->time_base));
      const int64_t base = stream_->start_time == AV_NOPTS_VALUE ? 0 : stream_->start_time;
      const double seconds = static_cast<double>(stamp - base) * av_q2d(stream_->time_base);
      if (options_.start && seconds < *options_.start - 1e-6) continue;
      if (options_.end && seconds >= *options_.end - 1e-6) return false;
      if (next_ == 0) {
        firstStamp_ = stamp;
        const std::lock_guard lock(mutex_);
        origin_.start = static_cast<double>(stamp) * av_q2d(stream_->time_base);
        started_ = true;
      }
      frame.timestamp = stamp - firstStamp_;
      frame.seconds = static_cast<double>(frame.timestamp) * av_q2d(stream_->time_base);
      frame.number = next_++;
      Convert(frame.picture);
      return true;
    }
  }

  const Origin& GetOrigin() const { return origin_; }

  // Packets of the other streams read so far, in their order.
  void TakePackets(std::vector<Packet>& out) const {
    const std::lock_guard lock(mutex_);
    if (!started_) return;
    for (Packet& packet : passed_) out.push_back(std::move(packet));
    passed_.clear();
  }
  void KeepPackets(bool keep) const { keepPackets_ = keep; }

 private:
  void ReadRotation() {
    const uint8_t* matrix = av_stream_get_side_data(stream_, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!matrix) return;
    const double degrees = av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
    if (!std::isnan(degrees)) quarterTurns_ = static_cast<int>(std::lround(-degrees / 90) % 4 + 4) % 4;
  }

  // The next frame into decoded_; false at the end.
  bool Decode() {
    for (;;) {
      const int got = avcodec_receive_frame(codec_.get(), decoded_.get());
      if (got == 0) return true;
      if (got == AVERROR_EOF) return false;
      if (got != AVERROR(EAGAIN)) Check(got, name_);
      const int read = av_read_frame(container_.get(), packet_.get());
      if (read < 0) {
        if (read != AVERROR_EOF && next_ == 0) Check(read, name_);
        avcodec_send_packet(codec_.get(), nullptr);
        continue;
      }
      if (packet_->stream_index == stream_->index) {
        const int sent = avcodec_send_packet(codec_.get(), packet_.get());
        if (sent < 0 && sent != AVERROR_INVALIDDATA) Check(sent, name_);
      } else if (keepPackets_) {
        const std::lock_guard lock(mutex_);
        passed_.emplace_back(av_packet_clone(packet_.get()));
      }
      av_packet_unref(packet_.get());
    }
  }

  void Convert(Picture& picture) {
    const int width = decoded_->width;
    const int height = decoded_->height;
    if (width <= 0 || height <= 0 || width > 16384 || height > 16384) throw Error(name_ + ": unusable frame size");
    const auto format = static_cast<AVPixelFormat>(decoded_->format);
    if (next_ == 1) first_ = {width, height};
    if (!scaler_ || width != scaledFrom_.width || height != scaledFrom_.height || format != scaledFormat_) {
      scaler_.reset(sws_getContext(width, height, format, first_.width, first_.height, AV_PIX_FMT_BGRA, kDecodeFlags,
                                   nullptr, nullptr, nullptr));
      if (!scaler_) throw Error(name_ + ": its pixels cannot be converted");
      const int* matrix = Coefficients(MatrixOf(decoded_->colorspace, height));
      sws_setColorspaceDetails(scaler_.get(), matrix, IsFullRange(decoded_->color_range, format), matrix, 1, 0, 1 << 16,
                               1 << 16);
      scaledFrom_ = {width, height};
      scaledFormat_ = format;
    }
    Picture upright(first_.width, first_.height);
    uint8_t* planes[] = {upright.pixels.data()};
    const int steps[] = {upright.Step()};
    sws_scale(scaler_.get(), decoded_->data, decoded_->linesize, 0, height, planes, steps);
    const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
    if (!desc || !(desc->flags & AV_PIX_FMT_FLAG_ALPHA)) {
      for (size_t i = 3; i < upright.pixels.size(); i += 4) upright.pixels[i] = 255;
    }
    if (quarterTurns_ == 0) {
      picture = std::move(upright);
      return;
    }
    const bool swapped = quarterTurns_ % 2 == 1;
    picture = Picture(swapped ? upright.height : upright.width, swapped ? upright.width : upright.height);
    const cv::Mat from(upright.height, upright.width, CV_8UC4, upright.pixels.data());
    cv::Mat to(picture.height, picture.width, CV_8UC4, picture.pixels.data());
    static constexpr int kTurns[] = {0, cv::ROTATE_90_CLOCKWISE, cv::ROTATE_180, cv::ROTATE_90_COUNTERCLOCKWISE};
    cv::rotate(from, to, kTurns[quarterTurns_]);
  }

  InputOptions options_;
  std::string name_;
  Input container_;
  AVStream* stream_ = nullptr;
  Codec codec_;
  Packet packet_;
  FramePtr decoded_;
  Scaler scaler_;
  FrameSize scaledFrom_{0, 0};
  FrameSize first_{0, 0};
  AVPixelFormat scaledFormat_ = AV_PIX_FMT_NONE;
  int quarterTurns_ = 0;  // clockwise
  int64_t next_ = 0;
  int64_t firstStamp_ = 0;
  int64_t fallback_ = 0;
  Origin origin_;
  mutable std::mutex mutex_;
  mutable std::deque<Packet> passed_;
  mutable bool keepPackets_ = false;
  bool started_ = false;
};

class VideoWriter : public FrameWriter {
 public:
  VideoWriter(const OutputOptions& options, const VideoReader* reader, double fps)
      : options_(options), reader_(reader), fps_(fps), part_(options.path + ".part") {
    std::error_code error;
    if (!options.overwrite && fs::exists(options.path, error)) {
      throw UsageError(fmt::format("{} exists; --overwrite replaces it", options.path));
    }
    Check(avformat_alloc_output_context2(&container_, nullptr, nullptr, options.path.c_str()), options.path);
    if (reader_) reader_->KeepPackets(true);
  }
  ~VideoWriter() override {
    if (container_) {
      if (container_->pb) avio_closep(&container_->pb);
      avformat_free_context(container_);
    }
    std::error_code error;
    if (!finished_) fs::remove(part_, error);
  }

  void Write(const Frame& frame) override {
    if (!codec_) Start(frame.picture.width, frame.picture.height);
    if (frame.picture.width != codec_->width || frame.picture.height != codec_->height) {
      throw Error("frames of a video must have one size");
    }
    Check(av_frame_make_writable(frame_.get()), options_.path);
    const uint8_t* planes[] = {frame.picture.pixels.data()};
    const int steps[] = {frame.picture.Step()};
    sws_scale(scaler_.get(), planes, steps, 0, frame.picture.height, frame_->data, frame_->linesize);
    frame_->pts = frame.timestamp;
    frame_->pict_type = AV_PICTURE_TYPE_NONE;
    Encode(frame_.get());
    PassPackets(false);
  }

  void Finish() override {
    if (!codec_) throw Error("there are no frames to write");
    Encode(nullptr);
    PassPackets(true);
    Check(av_write_trailer(container_), options_.path);
    Check(avio_closep(&container_->pb), options_.path);
    std::error_code error;
    fs::rename(part_, options_.path, error);
    if (error) throw Error(fmt::format("{}: {}", options_.path, error.message()));
    finished_ = true;
  }

 private:
  const Origin* GetOrigin() const { return reader_ ? &reader_->GetOrigin() : nullptr; }

  void Start(int width, int height) {
    const AVCodec* encoder = nullptr;
    if (!options_.codec.empty()) {
      encoder = avcodec_find_encoder_by_name(options_.codec.c_str());
      if (!encoder || encoder->type != AVMEDIA_TYPE_VIDEO) {
        throw UsageError(fmt::format("no video encoder \"{}\"", options_.codec));
      }
    } else {
      const AVCodecID id =
          av_guess_codec(container_->oformat, nullptr, options_.path.c_str(), nullptr, AVMEDIA_TYPE_VIDEO);
      encoder = avcodec_find_encoder(id);
      if (!encoder) throw Error(fmt::format("{}: no encoder for this kind of file", options_.path));
    }
    codec_.reset(avcodec_alloc_context3(encoder));
    codec_->width = width;
    codec_->height = height;
    codec_->pix_fmt = ChoosePixelFormat(*encoder, width, height);
    const Origin* origin = GetOrigin();
    if (origin) {
      codec_->time_base = origin->timeBase;
      codec_->framerate = origin->rate;
      codec_->sample_aspect_ratio = origin->sampleAspect;
      codec_->colorspace = origin->color.space == AVCOL_SPC_RGB ? AVCOL_SPC_UNSPECIFIED : origin->color.space;
      codec_->color_primaries = origin->color.primaries;
      codec_->color_trc = origin->color.transfer;
      codec_->color_range = origin->color.range;
      av_dict_copy(&container_->metadata, origin->container->metadata, 0);
    } else {
      codec_->framerate = av_d2q(fps_, 100000);
      codec_->time_base = av_inv_q(codec_->framerate);
    }
    if (options_.crf) {
      if (av_opt_set_int(codec_->priv_data, "crf", *options_.crf, 0) < 0) {
        throw UsageError(fmt::format("the encoder {} takes no --crf", encoder->name));
      }
      if (encoder->id == AV_CODEC_ID_VP9 || encoder->id == AV_CODEC_ID_VP8) codec_->bit_rate = 0;
    } else {
      av_opt_set_int(codec_->priv_data, "crf", 18, 0);
    }
    if (container_->oformat->flags & AVFMT_GLOBALHEADER) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    Check(avcodec_open2(codec_.get(), encoder, nullptr), options_.path);
    stream_ = avformat_new_stream(container_, nullptr);
    Check(avcodec_parameters_from_context(stream_->codecpar, codec_.get()), options_.path);
    stream_->time_base = codec_->time_base;
    stream_->avg_frame_rate = codec_->framerate;
    stream_->sample_aspect_ratio = codec_->sample_aspect_ratio;
    if (origin) AddPassedStreams(*origin);
    Check(avio_open(&container_->pb, ("file:" + part_).c_str(), AVIO_FLAG_WRITE), options_.path);
    Check(avformat_write_header(container_, nullptr), options_.path);

    frame_.reset(av_frame_alloc());
    frame_->format = codec_->pix_fmt;
    frame_->width = width;
    frame_->height = height;
    Check(av_frame_get_buffer(frame_.get(), 0), options_.path);
    scaler_.reset(sws_getContext(width, height, AV_PIX_FMT_BGRA, width, height, codec_->pix_fmt, kEncodeFlags, nullptr,
                                 nullptr, nullptr));
    if (!scaler_) throw Error(options_.path + ": its pixels cannot be converted");
    const int* matrix = Coefficients(MatrixOf(codec_->colorspace, height));
    sws_setColorspaceDetails(scaler_.get(), matrix, 1, matrix, IsFullRange(codec_->color_range, codec_->pix_fmt), 0,
                             1 << 16, 1 << 16);
    packet_.reset(av_packet_alloc());
  }

  // 4:2:0 where it can be, since everything plays it; odd sizes need more.
  static AVPixelFormat ChoosePixelFormat(const AVCodec& encoder, int width, int height) {
    const bool even = width % 2 == 0 && height % 2 == 0;
    const AVPixelFormat wanted = even ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV444P;
    if (!encoder.pix_fmts) return wanted;
    for (const AVPixelFormat* f = encoder.pix_fmts; *f != AV_PIX_FMT_NONE; ++f) {
      if (*f == wanted) return wanted;
    }
    return avcodec_find_best_pix_fmt_of_list(encoder.pix_fmts, AV_PIX_FMT_BGRA, 0, nullptr);
  }

  // Audio and subtitles go over as they are, where the container can hold them.
  void AddPassedStreams(const Origin& origin) {
    passed_.assign(origin.container->nb_streams, nullptr);
    for (unsigned i = 0; i < origin.container->nb_streams; ++i) {
      const AVStream& from = *origin.container->streams[i];
      const AVMediaType type = from.codecpar->codec_type;
      if (type != AVMEDIA_TYPE_AUDIO && type != AVMEDIA_TYPE_SUBTITLE) continue;
      if (avformat_query_codec(container_->oformat, from.codecpar->codec_id, FF_COMPLIANCE_NORMAL) != 1) continue;
      AVStream* to = avformat_new_stream(container_, nullptr);
      if (!to || avcodec_parameters_copy(to->codecpar, from.codecpar) < 0) continue;
      to->codecpar->codec_tag = 0;
      to->time_base = from.time_base;
      av_dict_copy(&to->metadata, from.metadata, 0);
      passed_[i] = to;
    }
  }

  void PassPackets(bool last) {
    if (!reader_) return;
    std::vector<Packet> packets;
    reader_->TakePackets(packets);
    const Origin& origin = *GetOrigin();
    for (Packet& packet : packets) {
      const auto index = static_cast<size_t>(packet->stream_index);
      if (index >= passed_.size() || !passed_[index]) continue;
      const AVRational from = origin.container->streams[index]->time_base;
      const auto offset = static_cast<int64_t>(std::llround(origin.start / av_q2d(from)));
      if (packet->pts != AV_NOPTS_VALUE) packet->pts -= offset;
      if (packet->dts != AV_NOPTS_VALUE) packet->dts -= offset;
      // Audio from before the first frame belongs to what was cut off, apart from a codec's lead-in.
      if (packet->pts != AV_NOPTS_VALUE && packet->pts * av_q2d(from) < -0.1) continue;
      av_packet_rescale_ts(packet.get(), from, passed_[index]->time_base);
      packet->stream_index = passed_[index]->index;
      packet->pos = -1;
      Check(av_interleaved_write_frame(container_, packet.get()), options_.path);
    }
    (void)last;
  }

  void Encode(const AVFrame* frame) {
    Check(avcodec_send_frame(codec_.get(), frame), options_.path);
    for (;;) {
      const int got = avcodec_receive_packet(codec_.get(), packet_.get());
      if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return;
      Check(got, options_.path);
      av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
      packet_->stream_index = stream_->index;
      Check(av_interleaved_write_frame(container_, packet_.get()), options_.path);
    }
  }

  OutputOptions options_;
  const VideoReader* reader_;
  double fps_;
  std::string part_;
  AVFormatContext* container_ = nullptr;
  AVStream* stream_ = nullptr;
  std::vector<AVStream*> passed_;
  Codec codec_;
  FramePtr frame_;
  Packet packet_;
  Scaler scaler_;
  bool finished_ = false;
};

class Y4mWriter : public FrameWriter {
 public:
  Y4mWriter(const VideoReader* reader, double fps) : reader_(reader), fps_(fps) {}
  void Write(const Frame& frame) override {
    const Picture& picture = frame.picture;
    if (!scaler_) Start(picture.width, picture.height);
    if (picture.width != yuv_->width || picture.height != yuv_->height)
      throw Error("frames of a stream must have one size");
    const uint8_t* planes[] = {picture.pixels.data()};
    const int steps[] = {picture.Step()};
    sws_scale(scaler_.get(), planes, steps, 0, picture.height, yuv_->data, yuv_->linesize);
    Put("FRAME\n", 6);
    for (int plane = 0; plane < 3; ++plane) {
      for (int y = 0; y < picture.height; ++y) {
        Put(yuv_->data[plane] + static_cast<ptrdiff_t>(y) * yuv_->linesize[plane], static_cast<size_t>(picture.width));
      }
    }
  }
  void Finish() override {
    if (std::fflush(stdout) != 0) throw Error("standard output cannot be written");
  }

 private:
  static void Put(const void* bytes, size_t size) {
    if (std::fwrite(bytes, 1, size, stdout) != size) throw Error("standard output cannot be written");
  }
  void Start(int width, int height) {
    const Origin* origin = reader_ ? &reader_->GetOrigin() : nullptr;
    const AVRational rate = origin ? origin->rate : av_d2q(fps_, 100000);
    const bool full = origin && origin->color.range == AVCOL_RANGE_JPEG;
    const std::string header = fmt::format("YUV4MPEG2 W{} H{} F{}:{} Ip A1:1 C444 XCOLORRANGE={}\n", width, height,
                                           rate.num, rate.den, full ? "FULL" : "LIMITED");
    Put(header.data(), header.size());
    yuv_.reset(av_frame_alloc());
    yuv_->format = AV_PIX_FMT_YUV444P;
    yuv_->width = width;
    yuv_->height = height;
    Check(av_frame_get_buffer(yuv_.get(), 0), "standard output");
    scaler_.reset(sws_getContext(width, height, AV_PIX_FMT_BGRA, width, height, AV_PIX_FMT_YUV444P, kEncodeFlags,
                                 nullptr, nullptr, nullptr));
    if (!scaler_) throw Error("standard output: its pixels cannot be converted");
    const AVColorSpace tagged = origin ? origin->color.space : AVCOL_SPC_UNSPECIFIED;
    const int* matrix = Coefficients(MatrixOf(tagged, height));
    sws_setColorspaceDetails(scaler_.get(), matrix, 1, matrix, full, 0, 1 << 16, 1 << 16);
  }

  const VideoReader* reader_;
  double fps_;
  FramePtr yuv_;
  Scaler scaler_;
};

}  // namespace

std::unique_ptr<FrameReader> OpenVideo(const InputOptions& options) {
  av_log_set_level(AV_LOG_FATAL);
  return std::make_unique<VideoReader>(options);
}

std::unique_ptr<FrameWriter> CreateVideo(const OutputOptions& options, const FrameReader& reader, double fps) {
  av_log_set_level(AV_LOG_FATAL);
  return std::make_unique<VideoWriter>(options, dynamic_cast<const VideoReader*>(&reader), fps);
}

std::unique_ptr<FrameWriter> CreateY4mWriter(const FrameReader& reader, double fps) {
  return std::make_unique<Y4mWriter>(dynamic_cast<const VideoReader*>(&reader), fps);
}

bool IsVideoContainer(const std::string& path) {
  const AVOutputFormat* format = av_guess_format(nullptr, path.c_str(), nullptr);
  return format && format->video_codec != AV_CODEC_ID_NONE && !(format->flags & AVFMT_NOFILE);
}

}  // namespace kvx

#include "hosts/kvx/media/video_encoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>

#include "hostkit/error.h"
#include "hosts/kvx/notes.h"

namespace kvx {

namespace {

constexpr int kUsualCrf = 18;
constexpr int kUsualScale = 2;         // of the older codecs: 1 is the best, 31 the worst
constexpr int kUsualTheoraScale = 10;  // of Theora: 10 is the best, 0 the worst

// Codecs whose frames follow each other at one rate, whatever the container allows.
bool NeedsConstantRhythm(AVCodecID id) {
  static const std::set<AVCodecID> codecs = {
      AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MPEG4,     AV_CODEC_ID_THEORA,    AV_CODEC_ID_H261,
      AV_CODEC_ID_H263,       AV_CODEC_ID_H263P,      AV_CODEC_ID_MSMPEG4V2, AV_CODEC_ID_MSMPEG4V3, AV_CODEC_ID_WMV1,
      AV_CODEC_ID_WMV2,       AV_CODEC_ID_FLV1,       AV_CODEC_ID_DVVIDEO,   AV_CODEC_ID_DNXHD};
  return codecs.count(id) > 0;
}

bool HasQuantiserScale(AVCodecID id) {
  static const std::set<AVCodecID> codecs = {
      AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MPEG4, AV_CODEC_ID_H263, AV_CODEC_ID_H263P,
      AV_CODEC_ID_MSMPEG4V2,  AV_CODEC_ID_MSMPEG4V3,  AV_CODEC_ID_WMV1,  AV_CODEC_ID_WMV2, AV_CODEC_ID_FLV1,
      AV_CODEC_ID_MJPEG,      AV_CODEC_ID_H261,       AV_CODEC_ID_RV10,  AV_CODEC_ID_RV20, AV_CODEC_ID_AMV};
  return codecs.count(id) > 0;
}

bool CanInterlace(AVCodecID id) {
  return id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_MPEG2VIDEO || id == AV_CODEC_ID_MPEG4 ||
         id == AV_CODEC_ID_PRORES || id == AV_CODEC_ID_DNXHD;
}

// These hold alpha beside the picture, which only one family of containers carries.
bool LosesAlphaOutsideMatroska(AVCodecID id) {
  return id == AV_CODEC_ID_VP8 || id == AV_CODEC_ID_VP9;
}

bool IsMatroska(const AVOutputFormat& container) {
  const std::string name = container.name;
  return name == "matroska" || name == "webm";
}

bool IsHdr(AVColorTransferCharacteristic transfer) {
  return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
}

bool IsYuvJ(AVPixelFormat format) {
  return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P ||
         format == AV_PIX_FMT_YUVJ440P || format == AV_PIX_FMT_YUVJ411P;
}

Rhythm RhythmOf(const AVCodec& encoder, const AVOutputFormat& container) {
  // These store every frame's stamp although the library does not say so.
  static const std::set<std::string> free = {"mov", "mp4", "ipod", "3gp", "3g2", "asf"};
  const bool variable = container.flags & AVFMT_VARIABLE_FPS || free.count(container.name);
  return variable && !NeedsConstantRhythm(encoder.id) ? Rhythm::kFree : Rhythm::kConstant;
}

// The nearest rate that the encoder knows.
AVRational EncoderRate(const AVCodec& encoder, Rhythm rhythm, AVRational rate) {
  if (rhythm == Rhythm::kConstant) av_reduce(&rate.num, &rate.den, rate.num, rate.den, 60000);
  if (!encoder.supported_framerates) return rate;
  // The list goes on with rates that stand in no standard, which the encoder then refuses.
  const bool mpeg = encoder.id == AV_CODEC_ID_MPEG1VIDEO || encoder.id == AV_CODEC_ID_MPEG2VIDEO;
  AVRational nearest = encoder.supported_framerates[0];
  for (const AVRational* r = encoder.supported_framerates; r->num != 0; ++r) {
    if (mpeg && av_q2d(*r) < 23) continue;
    if (av_nearer_q(rate, *r, nearest) > 0) nearest = *r;
  }
  if (av_cmp_q(nearest, rate) != 0) {
    Note(fmt::format("{:.6g} frames per second become {:.6g}, which {} knows", av_q2d(rate), av_q2d(nearest),
                     encoder.name));
  }
  return nearest;
}

std::string SamplingName(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  if (!desc || desc->nb_components < 3) return "";
  if (desc->log2_chroma_w == 0 && desc->log2_chroma_h == 0) return "4:4:4";
  if (desc->log2_chroma_w == 1 && desc->log2_chroma_h == 0) return "4:2:2";
  if (desc->log2_chroma_w == 1 && desc->log2_chroma_h == 1) return "4:2:0";
  return desc->name;
}

AVPixelFormat ParsePixelFormat(const AVCodec& encoder, const std::string& name) {
  const AVPixelFormat format = av_get_pix_fmt(name.c_str());
  std::string known;
  for (const AVPixelFormat* f = encoder.pix_fmts; f && *f != AV_PIX_FMT_NONE; ++f) {
    if (*f == format) return format;
    known += fmt::format(" {}", av_get_pix_fmt_name(*f));
  }
  if (format != AV_PIX_FMT_NONE && !encoder.pix_fmts) return format;
  throw UsageError(fmt::format("{} has no pixel format \"{}\"; it has{}", encoder.name, name, known));
}

}  // namespace

const AVCodec& ChooseEncoder(const OutputOptions& options, const AVOutputFormat& container) {
  if (!options.codec.empty()) {
    const AVCodec* encoder = avcodec_find_encoder_by_name(options.codec.c_str());
    if (!encoder || encoder->type != AVMEDIA_TYPE_VIDEO) {
      throw UsageError(fmt::format("no video encoder \"{}\"", options.codec));
    }
    if (avformat_query_codec(&container, encoder->id, FF_COMPLIANCE_EXPERIMENTAL) == 0) {
      throw UsageError(fmt::format("{}: files of this kind cannot hold {} ({})", options.path, encoder->name,
                                   avcodec_get_name(encoder->id)));
    }
    return *encoder;
  }
  AVCodecID id = av_guess_codec(&container, nullptr, options.path.c_str(), nullptr, AVMEDIA_TYPE_VIDEO);
  // What these default to takes few sizes or few rates; everything that plays them plays this.
  static const std::set<std::string> modern = {"3gp", "3g2", "mpegts"};
  if (modern.count(container.name) && avcodec_find_encoder(AV_CODEC_ID_H264)) id = AV_CODEC_ID_H264;
  const AVCodec* encoder = avcodec_find_encoder(id);
  if (!encoder) throw Error(fmt::format("{}: no encoder for this kind of file", options.path));
  return *encoder;
}

VideoEncoder::VideoEncoder(const OutputOptions& options, const AVOutputFormat& container, const SourceMedia* media,
                           AVRational rate)
    : options_(options),
      container_(container),
      media_(media),
      encoder_(ChooseEncoder(options, container)),
      rate_(EncoderRate(encoder_, RhythmOf(encoder_, container), rate)),
      clock_(RhythmOf(encoder_, container), media ? media->timeBase : av_inv_q(rate), rate_) {}

// This one waits for ever in its end unless it got a frame and was told that it was the last.
VideoEncoder::~VideoEncoder() {
  if (!codec_ || ended_ || !frame_ || std::string(encoder_.name) != "libsvtav1") return;
  if (frame_->pts == AV_NOPTS_VALUE) {
    frame_->pts = 0;
    avcodec_send_frame(codec_.get(), frame_.get());
  }
  avcodec_send_frame(codec_.get(), nullptr);
  while (avcodec_receive_packet(codec_.get(), packet_.get()) >= 0) av_packet_unref(packet_.get());
}

void VideoEncoder::SetQuality() {
  void* own = codec_->priv_data;
  const auto set = [&](const char* option, const std::string& value, const char* flag) {
    if (av_opt_set(own, option, value.c_str(), 0) < 0) {
      throw UsageError(fmt::format("the encoder {} takes no {} {}", encoder_.name, flag, value));
    }
  };
  const bool hasCrf = own && av_opt_find(own, "crf", nullptr, 0, 0);
  if (!options_.preset.empty()) set("preset", options_.preset, "--preset");
  if (options_.crf && !hasCrf) throw UsageError(fmt::format("the encoder {} takes no --crf", encoder_.name));
  if (options_.bitrate) {
    codec_->bit_rate = *options_.bitrate;
  } else if (hasCrf) {
    set("crf", std::to_string(options_.crf.value_or(kUsualCrf)), "--crf");
    codec_->bit_rate = 0;
  } else if (HasQuantiserScale(encoder_.id) || encoder_.id == AV_CODEC_ID_THEORA) {
    const int scale = encoder_.id == AV_CODEC_ID_THEORA ? kUsualTheoraScale : kUsualScale;
    codec_->flags |= AV_CODEC_FLAG_QSCALE;
    codec_->global_quality = FF_QP2LAMBDA * scale;
    codec_->qmin = std::min(codec_->qmin, scale);
  }
  if (LibrariesAreVerbose()) return;
  // These write to stderr past every log.
  if (std::string(encoder_.name) == "libx265") av_opt_set(own, "x265-params", "log-level=none", 0);
  setenv("SVT_LOG", "0", 0);
}

// False, with the reason, if the encoder does not start this way.
bool VideoEncoder::TryOpen(AVPixelFormat format, int width, int height, std::string& reason) {
  codec_.reset(CheckAlloc(avcodec_alloc_context3(&encoder_)));
  codec_->width = width;
  codec_->height = height;
  codec_->pix_fmt = format;
  codec_->framerate = rate_;
  codec_->time_base = clock_.TimeBase();
  codec_->thread_count = options_.encoderThreads;
  if (media_) {
    codec_->sample_aspect_ratio = media_->sampleAspect;
    codec_->colorspace = media_->matrix == AVCOL_SPC_RGB ? AVCOL_SPC_UNSPECIFIED : media_->matrix;
    codec_->color_primaries = media_->primaries;
    codec_->color_trc = IsHdr(media_->transfer) ? AVCOL_TRC_UNSPECIFIED : media_->transfer;
    codec_->color_range = IsRgb(media_->pixelFormat) ? AVCOL_RANGE_UNSPECIFIED : media_->range;
    if (media_->fieldOrder != AV_FIELD_PROGRESSIVE) {
      codec_->field_order = media_->fieldOrder;
      if (CanInterlace(encoder_.id)) codec_->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
    }
  }
  if (IsRgb(format)) {
    codec_->colorspace = AVCOL_SPC_RGB;
    codec_->color_range = AVCOL_RANGE_UNSPECIFIED;
  } else if (IsYuvJ(format)) {
    codec_->color_range = AVCOL_RANGE_JPEG;
  }
  SetQuality();
  if (container_.flags & AVFMT_GLOBALHEADER) codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  ForgetComplaint();
  const int status = avcodec_open2(codec_.get(), &encoder_, nullptr);
  if (status >= 0) return true;
  const std::string complaint = LastComplaint();
  reason = complaint.empty() ? ": " + AvErrorText(status) : complaint;
  codec_.reset();
  return false;
}

void VideoEncoder::Open(const Picture& first) {
  const AVPixelFormat source = media_ ? media_->pixelFormat : AV_PIX_FMT_NONE;
  const bool alpha = HasAlpha(source) || !IsOpaque(first);
  std::vector<AVPixelFormat> formats = ChoosePixelFormats(encoder_, source, alpha);
  if (!options_.pixelFormat.empty()) formats = {ParsePixelFormat(encoder_, options_.pixelFormat)};
  // Some take no odd size with halved colour; then finer sampling serves.
  std::set<std::pair<int, int>> failed;
  std::string firstReason;
  for (const AVPixelFormat format : formats) {
    const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
    const std::pair sampling(desc->log2_chroma_w, desc->log2_chroma_h);
    if (failed.count(sampling)) continue;
    std::string reason;
    if (TryOpen(format, first.width, first.height, reason)) break;
    if (firstReason.empty()) firstReason = reason;
    failed.insert(sampling);
    if (first.width % 2 == 0 && first.height % 2 == 0) break;
  }
  if (!codec_) {
    throw Error(fmt::format("{}: the encoder {} does not start{}", options_.path, encoder_.name, firstReason));
  }
  NoteWhatIsLost(first);
  FreeFrame();
}

// Makes frame_ one that the encoder does not hold on to.
void VideoEncoder::FreeFrame() {
  if (frame_ && av_frame_is_writable(frame_.get())) return;
  if (frame_) held_.push_back(std::move(frame_));
  const auto released = std::find_if(held_.begin(), held_.end(),
                                     [](const AvFramePtr& frame) { return av_frame_is_writable(frame.get()); });
  if (released != held_.end()) {
    frame_ = std::move(*released);
    held_.erase(released);
    return;
  }
  frame_ = NewAvFrame();
  frame_->format = codec_->pix_fmt;
  frame_->width = codec_->width;
  frame_->height = codec_->height;
  CheckAv(av_frame_get_buffer(frame_.get(), 0), options_.path);
}

void VideoEncoder::NoteWhatIsLost(const Picture& first) {
  if (media_) {
    const std::string before = SamplingName(media_->pixelFormat);
    const std::string after = SamplingName(codec_->pix_fmt);
    const AVPixFmtDescriptor* from = av_pix_fmt_desc_get(media_->pixelFormat);
    const AVPixFmtDescriptor* to = av_pix_fmt_desc_get(codec_->pix_fmt);
    const bool coarser =
        from && to && (to->log2_chroma_w > from->log2_chroma_w || to->log2_chroma_h > from->log2_chroma_h);
    if (coarser && !before.empty()) {
      Note(fmt::format("colour sampling {} becomes {}, which {} takes", before, after, encoder_.name));
    }
    if (media_->fieldOrder != AV_FIELD_PROGRESSIVE && !CanInterlace(encoder_.id)) {
      Note(fmt::format("{} knows no interlaced frames: the file says so, the codec does not", encoder_.name));
    }
  }
  if (first.width % 2 == 0 && first.height % 2 == 0) return;
  Note(fmt::format("the size {} by {} is odd; not everything plays that", first.width, first.height));
}

ParametersPtr VideoEncoder::Parameters() const {
  ParametersPtr parameters(CheckAlloc(avcodec_parameters_alloc()));
  CheckAv(avcodec_parameters_from_context(parameters.get(), codec_.get()), options_.path);
  return parameters;
}

void VideoEncoder::Encode(const Frame& frame, const Sink& sink) {
  const Picture& picture = frame.picture;
  if (picture.width != codec_->width || picture.height != codec_->height) {
    throw Error(fmt::format("frames of a video must have one size: {} by {} follows {} by {}", picture.width,
                            picture.height, codec_->width, codec_->height));
  }
  const FrameClock::Slot slot = clock_.Next(frame.timestamp, frame.duration > 0 ? frame.duration : 1);
  if (!slot.shown) return;
  const bool isFirst = frame_->pts == AV_NOPTS_VALUE;
  if (!isFirst) {
    for (int64_t i = 0; i < slot.repeats; ++i) SendPicture(slot.stamp - slot.repeats + i, 1, sink);
  }
  FreeFrame();
  const bool opaque = converter_.ToFrame(picture, {codec_->colorspace, codec_->color_range}, *frame_);
  const bool keepsAlpha =
      HasAlpha(codec_->pix_fmt) && (!LosesAlphaOutsideMatroska(encoder_.id) || IsMatroska(container_));
  if (!keepsAlpha && !opaque) {
    Note(fmt::format("the transparency is lost: {} in this kind of file has none", encoder_.name));
  }
  if (isFirst) {
    for (int64_t i = 0; i < slot.repeats; ++i) SendPicture(i, 1, sink);
  }
  SendPicture(slot.stamp, slot.duration, sink);
}

void VideoEncoder::SendPicture(int64_t stamp, int64_t duration, const Sink& sink) {
  frame_->pts = stamp;
  frame_->pict_type = AV_PICTURE_TYPE_NONE;
  frame_->sample_aspect_ratio = codec_->sample_aspect_ratio;
  frame_->quality = codec_->global_quality;
  if (codec_->flags & AV_CODEC_FLAG_INTERLACED_DCT) {
    frame_->interlaced_frame = 1;
    frame_->top_field_first = codec_->field_order == AV_FIELD_TT || codec_->field_order == AV_FIELD_TB;
  }
  durations_[stamp] = duration;
  Send(frame_.get(), sink);
}

void VideoEncoder::FillUntil(int64_t stamp, const Sink& sink) {
  const int64_t begin = clock_.NextStamp();
  const int64_t repeats = clock_.RepeatsUntil(stamp);
  for (int64_t i = 0; i < repeats; ++i) SendPicture(begin + i, 1, sink);
}

void VideoEncoder::Finish(const Sink& sink) {
  const int64_t repeats = clock_.RepeatsAtEnd();
  for (int64_t i = 0; i < repeats; ++i) SendPicture(clock_.NextStamp() + i, 1, sink);
  ended_ = true;
  Send(nullptr, sink);
  const int64_t repeated = clock_.Repeated() + repeats;
  if (repeated > 0 || clock_.LeftOut() > 0) {
    Note(fmt::format("{} wants a constant rate: frames repeated {}, left out {}", encoder_.name, repeated,
                     clock_.LeftOut()));
  }
}

void VideoEncoder::Send(const AVFrame* frame, const Sink& sink) {
  const std::string what = fmt::format("{}: {}", options_.path, encoder_.name);
  CheckAv(avcodec_send_frame(codec_.get(), frame), what);
  for (;;) {
    const int got = avcodec_receive_packet(codec_.get(), packet_.get());
    if (got == AVERROR(EAGAIN) || got == AVERROR_EOF) return;
    CheckAv(got, what);
    const auto known = durations_.find(packet_->pts);
    if (known != durations_.end()) {
      packet_->duration = known->second;
      durations_.erase(known);
    }
    sink(*packet_);
    av_packet_unref(packet_.get());
  }
}

}  // namespace kvx

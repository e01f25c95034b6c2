#include "hosts/kvx/media/video_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <opencv2/core.hpp>

#include "hostkit/error.h"
#include "hosts/kvx/media/deinterlacer.h"
#include "hosts/kvx/notes.h"
#include "hosts/kvx/signals.h"

extern "C" {
#include <libavutil/display.h>
}

namespace kvx {

namespace {

// A stamp may be off by the rounding of its time base.
constexpr double kStampSlack = 1e-6;
// So much longer than the video other streams are looked for, where a part of the file ends.
constexpr double kSideReach = 10;

// Clockwise.
int QuarterTurns(const AVStream& stream) {
  const uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (!matrix) return 0;
  const double degrees = av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
  return std::isnan(degrees) ? 0 : static_cast<int>(std::lround(-degrees / 90) % 4 + 4) % 4;
}

// The rate that the stream keeps, as far as it keeps one.
AVRational RateOf(AVFormatContext* container, AVStream* stream) {
  AVRational rate = av_guess_frame_rate(container, stream, nullptr);
  const AVRational average = stream->avg_frame_rate;
  const bool hasAverage = average.num > 0 && average.den > 0;
  if (rate.num <= 0 || rate.den <= 0) rate = hasAverage ? average : AVRational{25, 1};
  // Where frames come as they like, the guess is the finest step between two.
  if (hasAverage && av_q2d(rate) > 130 && av_q2d(average) < av_q2d(rate) / 2) rate = average;
  return rate;
}

const AVCodec* DecoderOf(const AVStream& stream) {
  const AVCodecID id = stream.codecpar->codec_id;
  // Alpha of these lies beside the picture; only the one library puts both together.
  const AVDictionaryEntry* alpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
  if (alpha && std::string(alpha->value) == "1" && (id == AV_CODEC_ID_VP8 || id == AV_CODEC_ID_VP9)) {
    const AVCodec* decoder = avcodec_find_decoder_by_name(id == AV_CODEC_ID_VP8 ? "libvpx" : "libvpx-vp9");
    if (decoder) return decoder;
  }
  return avcodec_find_decoder(id);
}

double ParseDuration(const std::string& text) {
  int hours = 0, minutes = 0;
  double seconds = 0;
  if (std::sscanf(text.c_str(), "%d:%d:%lf", &hours, &minutes, &seconds) != 3) return 0;
  return hours * 3600.0 + minutes * 60.0 + seconds;
}

}  // namespace

PartSide SideOfPart(const InputOptions& options, double clipSeconds) {
  if (options.start && clipSeconds < *options.start - kStampSlack) return PartSide::kBefore;
  if (options.end && clipSeconds >= *options.end - kStampSlack) return PartSide::kBehind;
  return PartSide::kWithin;
}

VideoReader::VideoReader(std::unique_ptr<InputFile> file, const InputOptions& options)
    : options_(options), input_(std::move(file)), name_(input_.File().Name()) {
  const int index = av_find_best_stream(input_.Get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (index < 0) throw Error(fmt::format("{}: no video in it", name_));
  stream_ = input_.Get()->streams[index];
  OpenDecoder();
  Describe();
  SeekToStart();
}

VideoReader::~VideoReader() = default;

void VideoReader::OpenDecoder() {
  const AVCodec* decoder = DecoderOf(*stream_);
  if (!decoder) {
    throw Error(
        fmt::format("{}: its video ({}) cannot be decoded", name_, avcodec_get_name(stream_->codecpar->codec_id)));
  }
  codec_.reset(CheckAlloc(avcodec_alloc_context3(decoder)));
  CheckAv(avcodec_parameters_to_context(codec_.get(), stream_->codecpar), name_);
  codec_->thread_count = 0;
  codec_->pkt_timebase = stream_->time_base;
  CheckAv(avcodec_open2(codec_.get(), decoder, nullptr), name_);
}

void VideoReader::Describe() {
  const AVFormatContext& container = *input_.Get();
  media_.name = name_;
  media_.video = static_cast<size_t>(stream_->index);
  media_.metadata = Dictionary(container.metadata);
  for (unsigned i = 0; i < container.nb_streams; ++i) {
    const AVStream& from = *container.streams[i];
    SourceStream stream;
    stream.index = from.index;
    stream.parameters.reset(CheckAlloc(avcodec_parameters_alloc()));
    CheckAv(avcodec_parameters_copy(stream.parameters.get(), from.codecpar), name_);
    stream.timeBase = from.time_base;
    stream.frameRate = from.avg_frame_rate;
    stream.metadata = Dictionary(from.metadata);
    stream.disposition = from.disposition;
    if (from.disposition & AV_DISPOSITION_ATTACHED_PIC && from.attached_pic.size > 0) {
      stream.attachedPicture.reset(CheckAlloc(av_packet_clone(&from.attached_pic)));
    }
    stream.holdsChapters = from.discard >= AVDISCARD_ALL && from.codecpar->codec_id == AV_CODEC_ID_BIN_DATA;
    media_.streams.push_back(std::move(stream));
  }
  for (unsigned i = 0; i < container.nb_chapters; ++i) {
    const AVChapter& from = *container.chapters[i];
    media_.chapters.push_back(
        {from.id, Seconds(from.start, from.time_base), Seconds(from.end, from.time_base), Dictionary(from.metadata)});
  }
  const AVCodecParameters& par = *stream_->codecpar;
  media_.timeBase = stream_->time_base;
  media_.rate = RateOf(input_.Get(), stream_);
  media_.sampleAspect = av_guess_sample_aspect_ratio(input_.Get(), stream_, nullptr);
  media_.matrix = par.color_space;
  media_.primaries = par.color_primaries;
  media_.transfer = par.color_trc;
  media_.range = par.color_range;
  media_.pixelFormat = static_cast<AVPixelFormat>(par.format);
  quarterTurns_ = QuarterTurns(*stream_);
  if (quarterTurns_ % 2 == 1) media_.sampleAspect = av_inv_q(media_.sampleAspect);
  fileStart_ = container.start_time == AV_NOPTS_VALUE ? 0 : Seconds(container.start_time, AV_TIME_BASE_Q);
  resultZero_ = fileStart_;
  const bool interlaced = par.field_order > AV_FIELD_PROGRESSIVE;
  if (options_.deinterlace) deinterlacer_ = std::make_unique<Deinterlacer>();
  if (interlaced && !options_.deinterlace) media_.fieldOrder = par.field_order;
  NoteWhatIsLost();
}

void VideoReader::NoteWhatIsLost() {
  const int depth = BitDepth(media_.pixelFormat);
  if (depth > 8) Note(fmt::format("{} bits per channel become 8: the effects work on 8 bits", depth));
  if (media_.transfer == AVCOL_TRC_SMPTE2084 || media_.transfer == AVCOL_TRC_ARIB_STD_B67) {
    Note(fmt::format("the HDR transfer ({}) is not kept: 8 bits are too few for it, so the result looks flat",
                     av_color_transfer_name(media_.transfer)));
  }
  if (media_.fieldOrder != AV_FIELD_PROGRESSIVE) {
    Note("the video is interlaced: effects see both fields as one frame; --deinterlace makes frames of it");
  }
  if (stream_->codecpar->field_order <= AV_FIELD_PROGRESSIVE && options_.deinterlace) {
    Note("the video does not say that it is interlaced; --deinterlace changes only frames that do");
  }
}

std::vector<std::string> VideoReader::Files() const {
  return {input_.File().Path()};
}

void VideoReader::SeekToStart() {
  if (options_.range) return SeekToRange();
  if (!options_.start || !input_.File().Size()) return;
  const double base = FileSeconds(FirstOfStream());
  av_seek_frame(input_.Get(), -1, static_cast<int64_t>((*options_.start + base) * AV_TIME_BASE), AVSEEK_FLAG_BACKWARD);
}

std::optional<int64_t> VideoReader::Count() const {
  const AVFormatContext& container = *input_.Get();
  double seconds = container.duration > 0 ? static_cast<double>(container.duration) / AV_TIME_BASE : 0;
  if (stream_->duration > 0) seconds = FileSeconds(stream_->duration);
  std::optional<int64_t> count;
  if (stream_->nb_frames > 0 && !options_.start && !options_.end) count = stream_->nb_frames;
  if (!count && seconds > 0) {
    seconds = std::min(seconds, options_.end.value_or(seconds)) - options_.start.value_or(0);
    count = std::max<int64_t>(1, std::llround(seconds * Rate()));
  }
  if (options_.frames) count = count ? std::min(*count, *options_.frames) : *options_.frames;
  if (options_.range) count = options_.range->count;
  return count;
}

int64_t VideoReader::FirstPlace() const {
  return options_.start ? static_cast<int64_t>(std::ceil(*options_.start * Rate() - 1e-3)) : 0;
}

bool VideoReader::ReadPacket() {
  av_packet_unref(packet_.get());
  for (int failures = 0;;) {
    const int status = av_read_frame(input_.Get(), packet_.get());
    if (status >= 0) break;
    ThrowIfStopAsked();
    // A damaged place may be followed by sound ones.
    if (status == AVERROR_EOF || ++failures > 100) {
      if (status != AVERROR_EOF) readError_ = AvErrorText(status);
      fileEnded_ = true;
      return false;
    }
    ++packetsBroken_;
  }
  const AVStream& from = *input_.Get()->streams[packet_->stream_index];
  const int64_t stamp = packet_->pts != AV_NOPTS_VALUE ? packet_->pts : packet_->dts;
  if (stamp != AV_NOPTS_VALUE) {
    reached_ = std::max(reached_, Seconds(stamp + std::max<int64_t>(packet_->duration, 0), from.time_base));
  }
  if (packet_->stream_index == stream_->index) {
    ++packetsRead_;
    if (packet_->dts != AV_NOPTS_VALUE) lastVideoStamp_ = std::max(lastVideoStamp_, packet_->dts);
  }
  return true;
}

bool VideoReader::NextDecoded() {
  for (;;) {
    const int got = avcodec_receive_frame(codec_.get(), decoded_.get());
    if (got == 0) {
      if (decoded_->decode_error_flags || decoded_->flags & AV_FRAME_FLAG_CORRUPT) ++framesBroken_;
      return true;
    }
    if (got == AVERROR_EOF) return false;
    if (got != AVERROR(EAGAIN)) {
      // The decoder gave up on one frame; the next may do.
      if (got == AVERROR(ENOMEM)) CheckAv(got, name_);
      ++framesBroken_;
      continue;
    }
    if (!ReadPacket()) {
      if (awaitsKey_ && Rewind(Approach::kSkip)) continue;
      avcodec_send_packet(codec_.get(), nullptr);
      continue;
    }
    if (packet_->stream_index != stream_->index) {
      KeepSidePacket();
      continue;
    }
    if (awaitsKey_ && IsBeforeKey()) continue;
    if (packet_->flags & AV_PKT_FLAG_CORRUPT) ++packetsBroken_;
    const int sent = avcodec_send_packet(codec_.get(), packet_.get());
    if (sent == AVERROR(ENOMEM)) CheckAv(sent, name_);
    if (sent < 0 && sent != AVERROR_EOF) ++framesBroken_;
  }
}

bool VideoReader::NextShown() {
  if (!deinterlacer_) return NextDecoded();
  for (;;) {
    if (deinterlacer_->Take(*decoded_)) return true;
    if (deinterlacer_->Ended()) return false;
    if (NextDecoded()) {
      decoded_->pts = decoded_->best_effort_timestamp;
      deinterlacer_->Put(decoded_.get(), stream_->time_base);
    } else {
      deinterlacer_->Put(nullptr, stream_->time_base);
    }
  }
}

bool VideoReader::Read(Frame& frame) {
  if (ended_) return false;
  ForgetComplaint();
  ThrowIfStopAsked();
  const double frameSeconds = 1 / Rate();
  const int64_t most = options_.range ? options_.range->count : options_.frames.value_or(INT64_MAX);
  while (next_ < most && NextShown()) {
    const int64_t best = decoded_->best_effort_timestamp;
    const int64_t stamp = best != AV_NOPTS_VALUE ? best : fallback_;
    fallback_ = stamp + Step();
    const double clipSeconds = FileSeconds(stamp - FirstOfStream());
    if (options_.range && (stamp < options_.range->stamp || !BeginsAsPlanned(stamp))) continue;
    const PartSide side = SideOfPart(options_, clipSeconds);
    if (side == PartSide::kBefore) continue;
    if (side == PartSide::kBehind) break;
    if (next_ == 0) {
      const int64_t first = options_.range ? options_.range->clipStamp : stamp;
      BeginResult(first, FileSeconds(first - FirstOfStream()));
    }
    frame.number = next_++;
    frame.seconds = FileSeconds(stamp - firstStamp_);
    const int64_t chosen = frame.number + (options_.range ? options_.range->first : 0);
    frame.place = firstPlace_ + chosen;
    frame.clipSeconds = clipSeconds;
    frame.fileNumber = chosen;
    frame.timestamp = stamp - std::llround(resultZero_ / av_q2d(stream_->time_base));
    frame.duration = decoded_->pkt_duration > 0 ? decoded_->pkt_duration : Step();
    frame.metadata = nullptr;
    Convert(frame.picture);
    ReleaseSidePackets(FileSeconds(stamp) + frameSeconds);
    return true;
  }
  ended_ = true;
  if (options_.range) {
    if (next_ == most) return false;
    throw Error(fmt::format("{}: gave {} of the {} frames that its part has{}", name_, next_, most, LastComplaint()));
  }
  if (next_ == 0 && options_.start) throw Error(fmt::format("{}: it has no frame in the part asked for", name_));
  if (next_ == 0 && fileEnded_) {
    throw Error(fmt::format("{}: no frame of it could be decoded{}", name_, LastComplaint()));
  }
  EndSideStreams();
  return false;
}

void VideoReader::BeginResult(int64_t stamp, double clipSeconds) {
  firstStamp_ = stamp;
  firstPlace_ = options_.start ? std::llround(clipSeconds * Rate()) : 0;
  if (options_.start) resultZero_ = FileSeconds(stamp);
  media_.partStart = resultZero_;
  complaintsBefore_ = VideoDecoderComplaints();
  // What the decoder runs up with belongs to another part.
  if (options_.range) packetsBroken_ = framesBroken_ = 0;
  if (options_.end) media_.partEnd = FileSeconds(FirstOfStream()) + *options_.end;
  if (options_.frames) media_.partEnd = FileSeconds(stamp) + static_cast<double>(*options_.frames) / Rate();
}

void VideoReader::EndSideStreams() {
  const bool cut = (options_.frames && next_ >= *options_.frames) || (options_.end && !fileEnded_);
  if (cut) {
    ReadSideStreamsToEnd();
  } else {
    while (ReadPacket()) KeepSidePacket();
    ReleaseSidePackets(std::numeric_limits<double>::infinity());
  }
}

// What comes before the result is cut off; a subtitle that reaches into it stays.
void VideoReader::KeepSidePacket() {
  if (packet_->stream_index == stream_->index || options_.range) return;
  pending_.emplace_back(CheckAlloc(av_packet_clone(packet_.get())));
}

void VideoReader::ReleaseSidePackets(double until) {
  if (next_ == 0) return;  // where the result begins is not known yet
  std::deque<PacketPtr> later;
  for (PacketPtr& packet : pending_) {
    const AVStream& from = *input_.Get()->streams[packet->stream_index];
    const int64_t stamp = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
    const int64_t zero = std::llround(resultZero_ / av_q2d(from.time_base));
    if (stamp != AV_NOPTS_VALUE && Seconds(stamp, from.time_base) >= until) {
      later.push_back(std::move(packet));
      continue;
    }
    if (packet->pts != AV_NOPTS_VALUE) packet->pts -= zero;
    if (packet->dts != AV_NOPTS_VALUE) packet->dts -= zero;
    if (options_.start && stamp != AV_NOPTS_VALUE && stamp < zero) {
      const bool reaches = from.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE && stamp + packet->duration > zero;
      if (!reaches) continue;
      packet->duration += packet->pts;
      packet->pts = packet->dts = 0;
    }
    media_.packets->Put(std::move(packet));
  }
  pending_ = std::move(later);
}

// The video's part ended before the file: the other streams go to the same time.
void VideoReader::ReadSideStreamsToEnd() {
  const double start = FileSeconds(FirstOfStream());
  double end = next_ > 0 ? FileSeconds(fallback_) : 0;
  if (options_.end) end = std::min(end + kSideReach, *options_.end + start);
  if (options_.frames && next_ >= *options_.frames) end = FileSeconds(fallback_);
  std::vector<bool> done(input_.Get()->nb_streams, false);
  size_t open = 0;
  for (size_t i = 0; i < done.size(); ++i) {
    const AVStream& from = *input_.Get()->streams[i];
    done[i] = from.codecpar->codec_type != AVMEDIA_TYPE_AUDIO || from.discard >= AVDISCARD_ALL;
    if (!done[i]) ++open;
  }
  while (open > 0 && ReadPacket()) {
    KeepSidePacket();
    const auto index = static_cast<size_t>(packet_->stream_index);
    const int64_t stamp = packet_->dts != AV_NOPTS_VALUE ? packet_->dts : packet_->pts;
    if (stamp == AV_NOPTS_VALUE || index >= done.size()) continue;
    const double at = Seconds(stamp, input_.Get()->streams[index]->time_base);
    if (at > end + kSideReach) break;
    if (at >= end && !done[index]) {
      done[index] = true;
      --open;
    }
  }
  ReleaseSidePackets(end);
}

std::vector<std::string> VideoReader::Damage() const {
  std::vector<std::string> lines;
  const int64_t complaints = next_ > 0 ? VideoDecoderComplaints() - complaintsBefore_ : 0;
  const int64_t damaged = std::max(packetsBroken_ + framesBroken_, complaints);
  if (damaged > 0) {
    lines.push_back(fmt::format("{}: damaged: {} place{} could not be read or decoded whole", name_, damaged,
                                damaged == 1 ? "" : "s"));
  }
  if (!readError_.empty()) lines.push_back(fmt::format("{}: cannot be read to its end: {}", name_, readError_));
  if (!fileEnded_ || options_.start || options_.range)
    return lines;  // nobody asked for the rest, or the beginning was jumped over
  const int64_t promised = PromisedFrames();
  if (promised > next_) lines.push_back(fmt::format("{}: ended after {} of {} frames", name_, next_, promised));
  const std::optional<int64_t> size = input_.File().Size();
  const bool transport = std::string(input_.Get()->iformat->name) == "mpegts";
  if (transport && size && *size % 188 != 0 && *size % 192 != 0 && *size % 204 != 0) {
    lines.push_back(fmt::format("{}: ended within a packet, after {} frames", name_, next_));
  }
  return lines;
}

// The frames that there should be, if the file ended before it says; else 0.
int64_t VideoReader::PromisedFrames() const {
  const AVFormatContext& container = *input_.Get();
  const std::string kind = container.iformat->name;
  if (kind.find("mov") != std::string::npos) {
    // An index names the packets that there should be; edits may leave some out of it.
    const int64_t packets = avformat_index_get_entries_count(stream_);
    return packetsRead_ < packets ? packets : 0;
  }
  if (kind == "avi") return lastVideoStamp_ + 1 < stream_->nb_frames ? stream_->nb_frames : 0;
  if (kind.find("matroska") == std::string::npos || container.duration <= 0) return 0;
  const AVDictionaryEntry* own = av_dict_get(stream_->metadata, "DURATION", nullptr, AV_DICT_IGNORE_SUFFIX);
  // Writers that give every stream its own end count all of them from zero, others from the first frame.
  const double file = Seconds(container.duration, AV_TIME_BASE_Q) + (own ? 0 : fileStart_);
  const double end = own ? ParseDuration(own->value) : file;
  if (reached_ + std::max(0.5, 2 / Rate()) >= std::max(end, file)) return 0;
  const double start = FileSeconds(FirstOfStream());
  return std::max<int64_t>(std::llround((end - start) * Rate()), next_ + 1);
}

void VideoReader::Convert(Picture& picture) {
  const int width = decoded_->width;
  const int height = decoded_->height;
  if (width <= 0 || height <= 0 || width > kMaxFrameSide || height > kMaxFrameSide) {
    throw Error(fmt::format("{}: unusable frame size {} by {}", name_, width, height));
  }
  if (next_ == 1) {
    size_ = {width, height};
    if (options_.range) size_ = options_.range->size;
    if (options_.range && quarterTurns_ % 2 == 1) std::swap(size_.width, size_.height);
  }
  if (width != size_.width || height != size_.height) {
    Note(fmt::format("{}: changes its size on the way; all frames are scaled to the first's, {} by {}", name_,
                     size_.width, size_.height));
  }
  Picture& stored = quarterTurns_ == 0 ? picture : stored_;
  stored.Reshape(size_.width, size_.height);
  try {
    converter_.ToPicture(*decoded_, {decoded_->colorspace, decoded_->color_range}, stored);
  } catch (const Error& error) {
    throw Error(fmt::format("{}: {}", name_, error.what()));
  }
  if (quarterTurns_ == 0) return;
  const bool swapped = quarterTurns_ % 2 == 1;
  picture.Reshape(swapped ? stored.height : stored.width, swapped ? stored.width : stored.height);
  const cv::Mat from(stored.height, stored.width, CV_8UC4, stored.pixels.data());
  cv::Mat to(picture.height, picture.width, CV_8UC4, picture.pixels.data());
  static constexpr int kTurns[] = {0, cv::ROTATE_90_CLOCKWISE, cv::ROTATE_180, cv::ROTATE_90_COUNTERCLOCKWISE};
  cv::rotate(from, to, kTurns[quarterTurns_]);
}

}  // namespace kvx

// The reader of a video where not all of it is read: a range of its frames, or the streams beside them alone.
#include <fmt/format.h>

#include <cmath>
#include <cstring>

#include "hostkit/error.h"
#include "hosts/kvx/media/deinterlacer.h"
#include "hosts/kvx/media/video_reader.h"
#include "hosts/kvx/signals.h"

namespace kvx {

void VideoReader::SeekToRange() {
  const FrameRange& range = *options_.range;
  AVFormatContext& container = *input_.Get();
  for (unsigned i = 0; i < container.nb_streams; ++i) {
    if (container.streams[i] != stream_) container.streams[i]->discard = AVDISCARD_ALL;
  }
  awaitsKey_ = true;
  if (range.first == 0 && !options_.start) {
    approach_ = Approach::kSkip;
    return;
  }
  // An index counts by the one or the other.
  const std::string kind = container.iformat->name;
  const bool byDecoding = kind.find("mov") != std::string::npos || kind == "avi";
  av_seek_frame(&container, stream_->index, byDecoding ? range.keyDecoded : range.keyStamp, AVSEEK_FLAG_BACKWARD);
}

bool VideoReader::IsBeforeKey() {
  const FrameRange& range = *options_.range;
  const int64_t stamp = packet_->pts != AV_NOPTS_VALUE ? packet_->pts : packet_->dts;
  if (packet_->flags & AV_PKT_FLAG_KEY && stamp == range.keyStamp) {
    awaitsKey_ = false;
    return false;
  }
  if (packet_->dts != AV_NOPTS_VALUE && packet_->dts > range.keyDecoded) Rewind(Approach::kSkip);
  return true;
}

// False if this way was tried, or a slower one.
bool VideoReader::Rewind(Approach approach) {
  ThrowIfStopAsked();
  if (approach <= approach_) return false;
  approach_ = approach;
  awaitsKey_ = approach == Approach::kSkip;
  AVFormatContext& container = *input_.Get();
  // These know no place but by searching for it.
  const bool byBytes = container.iformat->flags & AVFMT_TS_DISCONT;
  const int64_t first = std::min<int64_t>(FirstOfStream(), 0) - av_rescale_q(60, {1, 1}, stream_->time_base);
  av_seek_frame(&container, stream_->index, byBytes ? 0 : first, byBytes ? AVSEEK_FLAG_BYTE : AVSEEK_FLAG_BACKWARD);
  avcodec_flush_buffers(codec_.get());
  if (deinterlacer_) deinterlacer_ = std::make_unique<Deinterlacer>();
  fileEnded_ = false;
  return true;
}

// Some key frames only begin a slow return to whole pictures.
bool VideoReader::BeginsAsPlanned(int64_t stamp) {
  if (next_ > 0 || stamp == options_.range->stamp) return true;
  if (!Rewind(Approach::kDecode)) {
    throw Error(fmt::format("{}: frame {} is not where it was planned", name_, options_.range->first));
  }
  return false;
}

void VideoReader::BeginBeside(int64_t firstStamp) {
  stream_->discard = AVDISCARD_DEFAULT;
  BeginResult(firstStamp, FileSeconds(firstStamp - FirstOfStream()));
  fallback_ = lastShown_ = firstStamp;
}

void VideoReader::PassBeside(double seconds) {
  ThrowIfStopAsked();
  const int64_t stamp = std::llround((resultZero_ + seconds) / av_q2d(stream_->time_base));
  const double until = FileSeconds(stamp) + 1 / Rate();
  next_ = std::max<int64_t>(next_, 1);
  fallback_ = std::max(fallback_, stamp + Step());
  // As far as a decoder would have asked for it.
  while (lastVideoStamp_ <= stamp + Step() && ReadBeside()) {
  }
  ReleaseSidePackets(until);
}

bool VideoReader::ReadBeside() {
  if (fileEnded_ || !ReadPacket()) return false;
  if (packet_->stream_index == stream_->index) {
    if (packet_->pts != AV_NOPTS_VALUE) lastShown_ = std::max(lastShown_, packet_->pts);
  } else {
    KeepSidePacket();
  }
  return true;
}

void VideoReader::EndBeside(int64_t frames) {
  next_ = frames;
  // Whether the video goes on behind the part that was chosen.
  while (options_.end && FileSeconds(lastShown_ - FirstOfStream()) < *options_.end && ReadBeside()) {
  }
  EndSideStreams();
}

}  // namespace kvx

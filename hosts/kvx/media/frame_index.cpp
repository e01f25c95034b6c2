#include "hosts/kvx/media/frame_index.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "hostkit/error.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace {

// More frames are never out of order.
constexpr size_t kMostOutOfOrder = 4096;

// Some packets of this codec only prepare later frames.
bool IsHidden(const AVPacket& packet, AVCodecID codec) {
  return codec == AV_CODEC_ID_VP8 && packet.size > 0 && !(packet.data[0] & 0x10);
}

}  // namespace

FrameIndex::FrameIndex(const std::string& path) : input_(std::make_unique<InputFile>(path)) {
  AVFormatContext& container = *input_.Get();
  const int best = av_find_best_stream(&container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (best < 0) throw Error(fmt::format("{}: no video in it", path));
  stream_ = container.streams[best];
  for (unsigned i = 0; i < container.nb_streams; ++i) {
    if (container.streams[i] != stream_) container.streams[i]->discard = AVDISCARD_ALL;
  }
}

void FrameIndex::ReadPacket() {
  for (;;) {
    av_packet_unref(packet_.get());
    const int status = av_read_frame(input_.Get(), packet_.get());
    ThrowIfStopAsked();
    if (status < 0) {
      if (status != AVERROR_EOF) trouble_ = AvErrorText(status);
      ended_ = true;
      return;
    }
    if (packet_->stream_index == stream_->index) return TakePacket();
  }
}

void FrameIndex::TakePacket() {
  const bool mayReorder = stream_->codecpar->video_delay > 0;
  int64_t stamp = packet_->pts;
  if (stamp == AV_NOPTS_VALUE && !mayReorder) stamp = packet_->dts;
  if (stamp == AV_NOPTS_VALUE) {
    trouble_ = "not all of its packets say when they are shown";
    ended_ = true;
    return;
  }
  // A file that does not say when its first packets are decoded says it of later ones.
  const bool told = packet_->dts != AV_NOPTS_VALUE;
  if (told && packet_->dts < decoded_) {
    trouble_ = "its packets are not in order";
    ended_ = true;
    return;
  }
  const int64_t decoded = told ? packet_->dts : stamp;
  if (told) decoded_ = packet_->dts;
  if (packet_->flags & AV_PKT_FLAG_CORRUPT) trouble_ = "it is damaged";
  if (packet_->flags & AV_PKT_FLAG_KEY) keys_.push_back({stamp, decoded, latest_});
  if (packet_->flags & AV_PKT_FLAG_DISCARD || IsHidden(*packet_, stream_->codecpar->codec_id)) return;
  waiting_.push(stamp);
  latest_ = std::max(latest_, stamp);
}

bool FrameIndex::Next(Entry& entry) {
  // Frames that are decoded later are not shown before they are.
  while (!ended_ && (waiting_.empty() || (waiting_.top() >= decoded_ && waiting_.size() < kMostOutOfOrder)))
    ReadPacket();
  if (!trouble_.empty() || waiting_.empty()) return false;
  entry.stamp = waiting_.top();
  waiting_.pop();
  const auto serves = [&](const Key& key) { return key.stamp <= entry.stamp && key.latestBefore < entry.stamp; };
  const auto last = std::find_if(keys_.rbegin(), keys_.rend(), serves);
  entry.afterKey = last != keys_.rend();
  if (!entry.afterKey) return true;
  entry.keyStamp = last->stamp;
  entry.keyDecoded = last->decoded;
  keys_.erase(keys_.begin(), last.base() - 1);
  return true;
}

}  // namespace kvx

// When a clip's frames are shown and where decoding may begin, from its packets alone: nothing is decoded.
#ifndef KVX_HOSTS_KVX_MEDIA_FRAME_INDEX_H_
#define KVX_HOSTS_KVX_MEDIA_FRAME_INDEX_H_

#include <cstdint>
#include <deque>
#include <optional>
#include <queue>
#include <string>
#include <vector>

#include "hosts/kvx/media/media_input.h"

namespace kvx {

// Goes once through the file and holds what lies between two key frames, no more.
class FrameIndex {
 public:
  explicit FrameIndex(const std::string& path);

  // Stamps in the time base of the stream that is rendered.
  struct Entry {
    int64_t stamp = 0;
    // The last key frame from which this frame and all later ones can be decoded.
    int64_t keyStamp = 0;
    int64_t keyDecoded = 0;
    bool afterKey = false;  // false: there is no such key frame
  };
  // The next frame in the order of showing. False at the end, or where the packets do not tell.
  bool Next(Entry& entry);

  // Why the packets do not tell the frames; empty if they do.
  const std::string& Trouble() const { return trouble_; }
  AVRational TimeBase() const { return stream_->time_base; }
  // Of the stream's first frame, as far as the file says it.
  int64_t FirstOfStream() const { return stream_->start_time == AV_NOPTS_VALUE ? 0 : stream_->start_time; }

 private:
  struct Key {
    int64_t stamp;
    int64_t decoded;
    int64_t latestBefore;  // shown, of the frames that are decoded before
  };
  void ReadPacket();
  void TakePacket();

  MediaInput input_;
  AVStream* stream_;
  PacketPtr packet_ = NewPacket();
  std::priority_queue<int64_t, std::vector<int64_t>, std::greater<>> waiting_;  // stamps that are read
  std::deque<Key> keys_;
  int64_t decoded_ = INT64_MIN;  // of the last packet
  int64_t latest_ = INT64_MIN;   // shown
  bool ended_ = false;
  std::string trouble_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_FRAME_INDEX_H_

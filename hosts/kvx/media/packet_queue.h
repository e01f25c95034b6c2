// Packets of the streams beside the video, on their way from the thread that reads to the thread that writes.
#ifndef KVX_HOSTS_KVX_MEDIA_PACKET_QUEUE_H_
#define KVX_HOSTS_KVX_MEDIA_PACKET_QUEUE_H_

#include <deque>
#include <mutex>
#include <utility>

#include "hosts/kvx/media/libav.h"

namespace kvx {

// In the order of reading. Stamps are in the source stream's time base and count from the beginning of the result.
class PacketQueue {
 public:
  void Put(PacketPtr packet) {
    const std::lock_guard lock(mutex_);
    packets_.push_back(std::move(packet));
  }
  std::deque<PacketPtr> TakeAll() {
    const std::lock_guard lock(mutex_);
    return std::exchange(packets_, {});
  }

 private:
  std::mutex mutex_;
  std::deque<PacketPtr> packets_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_PACKET_QUEUE_H_

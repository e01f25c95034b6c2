// The order in which MLT asked for the frames of one filter, held where several threads render them.
#ifndef KVX_HOSTS_MLT_FRAME_ORDER_H_
#define KVX_HOSTS_MLT_FRAME_ORDER_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

namespace kvx {

// Any thread.
class FrameOrder : public std::enable_shared_from_this<FrameOrder> {
 public:
  explicit FrameOrder(std::chrono::milliseconds patience = std::chrono::seconds(5)) : patience_(patience) {}

  // A frame's place in the order, until the frame is rendered or thrown away.
  class Turn {
   public:
    ~Turn() { End(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    // Waits until no frame that was asked for before is still to come. Returns at once in the thread that asked: where
    // one thread asks and renders there is nobody to wait for. Gives up after a time, for frames that are held and
    // never rendered; after three such waits in a row the order of this filter waits no more.
    void Wait();
    void End();

   private:
    friend class FrameOrder;
    Turn(std::shared_ptr<FrameOrder> order, uint64_t number) : order_(std::move(order)), number_(number) {}

    std::shared_ptr<FrameOrder> order_;
    const uint64_t number_;
    const std::thread::id asker_ = std::this_thread::get_id();
  };

  // For the frame that MLT asks for now.
  std::unique_ptr<Turn> Ask();

 private:
  static constexpr int kMostVainWaits = 3;

  const std::chrono::milliseconds patience_;
  std::mutex mutex_;
  std::condition_variable ended_;
  std::set<uint64_t> open_;
  uint64_t next_ = 0;
  int vainWaits_ = 0;
};

}  // namespace kvx

#endif  // KVX_HOSTS_MLT_FRAME_ORDER_H_

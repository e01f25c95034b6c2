#include "hosts/mlt/frame_order.h"

namespace kvx {

std::unique_ptr<FrameOrder::Turn> FrameOrder::Ask() {
  const std::lock_guard lock(mutex_);
  open_.insert(next_);
  return std::unique_ptr<Turn>(new Turn(shared_from_this(), next_++));
}

void FrameOrder::Turn::Wait() {
  if (std::this_thread::get_id() == asker_) return;
  FrameOrder& order = *order_;
  std::unique_lock lock(order.mutex_);
  if (order.vainWaits_ >= kMostVainWaits) return;
  const auto isFirst = [&] { return order.open_.empty() || *order.open_.begin() >= number_; };
  if (order.ended_.wait_for(lock, order.patience_, isFirst)) {
    order.vainWaits_ = 0;
  } else {
    ++order.vainWaits_;
    order.open_.erase(order.open_.begin(), order.open_.lower_bound(number_));
  }
}

void FrameOrder::Turn::End() {
  const std::lock_guard lock(order_->mutex_);
  if (order_->open_.erase(number_) > 0) order_->ended_.notify_all();
}

}  // namespace kvx

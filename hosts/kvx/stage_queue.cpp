#include "hosts/kvx/stage_queue.h"

#include <utility>

namespace kvx {

StageQueue::StageQueue(const std::vector<Chain::Stage>& stages, size_t capacity) : capacity_(capacity) {
  for (const Chain::Stage& stage : stages) lanes_.push_back({stage.ordered, {}, 0, false});
}

bool StageQueue::Put(Frame& frame) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return failure_ || inside_ < capacity_; });
  if (failure_) return false;
  ++inside_;
  const int64_t number = frame.number;
  lanes_.front().waiting.emplace(number, std::move(frame));
  frame = Frame();
  if (!used_.empty()) {
    frame = std::move(used_.back());
    used_.pop_back();
  }
  changed_.notify_all();
  return true;
}

void StageQueue::EndInput() {
  const std::lock_guard lock(mutex_);
  inputEnded_ = true;
  changed_.notify_all();
}

bool StageQueue::FindTask(Task& task) {
  for (size_t stage = lanes_.size(); stage-- > 0;) {
    Lane& lane = lanes_[stage];
    const auto first = lane.waiting.begin();
    if (first == lane.waiting.end() || (lane.ordered && (lane.busy || first->first != lane.next))) continue;
    lane.busy = lane.ordered;
    task.frame = std::move(first->second);
    task.stage = stage;
    lane.waiting.erase(first);
    return true;
  }
  return false;
}

bool StageQueue::TakeTask(Task& task) {
  std::unique_lock lock(mutex_);
  bool found = false;
  changed_.wait(lock, [&] {
    if (IsOver()) return true;
    found = FindTask(task);
    return found;
  });
  return found;
}

void StageQueue::FinishTask(Task& task) {
  const std::lock_guard lock(mutex_);
  Lane& lane = lanes_[task.stage];
  const int64_t number = task.frame.number;
  if (lane.ordered) {
    lane.busy = false;
    lane.next = number + 1;
  }
  const bool last = task.stage + 1 == lanes_.size();
  (last ? finished_ : lanes_[task.stage + 1].waiting).emplace(number, std::move(task.frame));
  changed_.notify_all();
}

bool StageQueue::TakeFinished(Frame& frame) {
  std::unique_lock lock(mutex_);
  if (!frame.picture.pixels.empty()) {
    used_.push_back(std::move(frame));
    used_.back().metadata.reset();
  }
  changed_.wait(lock, [&] { return IsOver() || finished_.count(nextOut_); });
  const auto found = finished_.find(nextOut_);
  if (failure_ || found == finished_.end()) return false;
  frame = std::move(found->second);
  finished_.erase(found);
  ++nextOut_;
  --inside_;
  changed_.notify_all();
  return true;
}

void StageQueue::Fail(std::exception_ptr failure) {
  const std::lock_guard lock(mutex_);
  if (!failure_) failure_ = std::move(failure);
  changed_.notify_all();
}

std::exception_ptr StageQueue::Failure() {
  const std::lock_guard lock(mutex_);
  return failure_;
}

}  // namespace kvx

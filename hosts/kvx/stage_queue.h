// Frames on their way through the stages of a chain: who may work on which, and the first failure of anybody.
#ifndef KVX_HOSTS_KVX_STAGE_QUEUE_H_
#define KVX_HOSTS_KVX_STAGE_QUEUE_H_

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <vector>

#include "hostkit/chain.h"
#include "hosts/kvx/frame_io.h"

namespace kvx {

// One thread puts frames in by their numbers, from 0; any number of threads work on them; one takes them out in the
// same order. At most `capacity` frames are inside. Used frames come back for their memory.
class StageQueue {
 public:
  // `stages` is not empty.
  StageQueue(const std::vector<Chain::Stage>& stages, size_t capacity);

  // Takes `frame` and leaves a used one, or an empty one, in its place. False if the run has failed.
  bool Put(Frame& frame);
  void EndInput();

  struct Task {
    Frame frame;
    size_t stage = 0;
  };
  // The frame that is furthest on its way of those that may be worked on. False when there will be none any more.
  bool TakeTask(Task& task);
  void FinishTask(Task& task);

  // The next frame that is through all stages; `frame` as in Put. False at the end.
  bool TakeFinished(Frame& frame);

  // Ends everything; the first reason counts.
  void Fail(std::exception_ptr failure);
  std::exception_ptr Failure();

 private:
  struct Lane {
    bool ordered;
    std::map<int64_t, Frame> waiting;
    int64_t next = 0;   // what an ordered one takes next
    bool busy = false;  // somebody works in an ordered one
  };
  bool FindTask(Task& task);  // under the lock
  bool IsOver() const { return failure_ || (inputEnded_ && inside_ == 0); }

  const size_t capacity_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Lane> lanes_;
  std::map<int64_t, Frame> finished_;
  std::vector<Frame> used_;
  int64_t nextOut_ = 0;
  size_t inside_ = 0;
  bool inputEnded_ = false;
  std::exception_ptr failure_;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_STAGE_QUEUE_H_

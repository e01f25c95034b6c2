#include "hosts/kvx/pipeline.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "hosts/kvx/seeded_clock.h"
#include "hosts/kvx/signals.h"

namespace kvx {

namespace {

// Frames between the three stages, and the first failure of any of them.
class Exchange {
 public:
  explicit Exchange(size_t capacity) : capacity_(capacity) {}

  // False if the run has failed. At most `capacity` frames are under way.
  bool PutRead(Frame frame) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return failure_ || underWay_ < capacity_; });
    if (failure_) return false;
    ++underWay_;
    read_.push_back(std::move(frame));
    changed_.notify_all();
    return true;
  }
  void EndReading() {
    const std::lock_guard lock(mutex_);
    readingEnded_ = true;
    changed_.notify_all();
  }
  bool TakeRead(Frame& frame) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return failure_ || !read_.empty() || readingEnded_; });
    if (failure_ || read_.empty()) return false;
    frame = std::move(read_.front());
    read_.pop_front();
    ++rendering_;
    return true;
  }
  void PutRendered(Frame frame) {
    const std::lock_guard lock(mutex_);
    --rendering_;
    const int64_t number = frame.number;
    rendered_.emplace(number, std::move(frame));
    changed_.notify_all();
  }
  // The frame with this number; false at the end.
  bool TakeRendered(int64_t number, Frame& frame) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] {
      return failure_ || rendered_.count(number) || (readingEnded_ && read_.empty() && rendering_ == 0);
    });
    const auto found = rendered_.find(number);
    if (failure_ || found == rendered_.end()) return false;
    frame = std::move(found->second);
    rendered_.erase(found);
    --underWay_;
    changed_.notify_all();
    return true;
  }
  void Fail(std::exception_ptr failure) {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = failure;
    changed_.notify_all();
  }
  std::exception_ptr Failure() {
    const std::lock_guard lock(mutex_);
    return failure_;
  }

 private:
  const size_t capacity_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Frame> read_;
  std::map<int64_t, Frame> rendered_;
  size_t underWay_ = 0;
  size_t rendering_ = 0;
  bool readingEnded_ = false;
  std::exception_ptr failure_;
};

}  // namespace

PipelineResult RunPipeline(Plugin& plugin, const Chain& chain, FrameReader& reader, FrameWriter& writer,
                           int64_t totalFrames, const PipelineOptions& options) {
  const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  const int jobs = chain.IsStateless() ? (options.jobs > 0 ? options.jobs : cores) : 1;
  Exchange exchange(static_cast<size_t>(jobs) + 3);
  // Objects are made one after another: two of one effect at once would both extend its description.
  std::vector<std::unique_ptr<ChainRunner>> runners;
  for (int i = 0; i < jobs; ++i) runners.push_back(std::make_unique<ChainRunner>(plugin, chain));

  const auto guarded = [&](auto work) {
    return [&exchange, &reader, work] {
      try {
        work();
      } catch (...) {
        exchange.Fail(std::current_exception());
        reader.Abandon();
      }
    };
  };
  const auto isStopped = [&options] { return options.stopped && options.stopped(); };
  std::vector<std::thread> threads;
  threads.emplace_back(guarded([&] {
    Frame frame;
    try {
      while (!isStopped() && reader.Read(frame)) {
        if (!exchange.PutRead(std::move(frame))) return;
        frame = Frame();
      }
    } catch (const Interrupted&) {
      // What was read until now is finished.
    }
    exchange.EndReading();
  }));
  for (const auto& runner : runners) {
    threads.emplace_back(guarded([&, &objects = *runner] {
      Frame frame;
      while (exchange.TakeRead(frame)) {
        if (options.pad) frame.picture = PadPicture(frame.picture, *options.pad);
        SetClipTime(frame.clipSeconds);
        objects.Render(frame.picture, frame.place, totalFrames, frame.clipSeconds);
        exchange.PutRendered(std::move(frame));
        frame = Frame();
      }
    }));
  }
  int64_t done = 0;
  guarded([&] {
    Frame frame;
    while (exchange.TakeRendered(done, frame)) {
      writer.Write(frame);
      ++done;
      if (options.onFrame) options.onFrame(done);
    }
  })();
  for (std::thread& thread : threads) thread.join();
  if (const std::exception_ptr failure = exchange.Failure()) std::rethrow_exception(failure);
  if (isStopped()) return {done, false};
  writer.Finish();
  return {done, true};
}

}  // namespace kvx

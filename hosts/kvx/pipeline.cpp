#include "hosts/kvx/pipeline.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "hosts/kvx/seeded_clock.h"
#include "hosts/kvx/signals.h"
#include "hosts/kvx/stage_queue.h"

namespace kvx {

namespace {

// Frames that wait before or behind the rendering, beside those that are rendered and one for each stage.
constexpr size_t kSpareFrames = 2;

// The sets of objects of one stage. Each is lent to one thread at a time.
class Crew {
 public:
  // Objects are made one after another: two of one effect at once would both extend its description.
  Crew(Plugin& plugin, const Chain& chain, const Chain::Stage& stage, int size) {
    for (int i = 0; i < size; ++i) idle_.push_back(std::make_unique<ChainRunner>(plugin, chain, stage));
  }
  std::unique_ptr<ChainRunner> Borrow() {
    const std::lock_guard lock(mutex_);
    std::unique_ptr<ChainRunner> runner = std::move(idle_.back());
    idle_.pop_back();
    return runner;
  }
  void Return(std::unique_ptr<ChainRunner> runner) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(runner));
  }

 private:
  std::mutex mutex_;
  std::vector<std::unique_ptr<ChainRunner>> idle_;
};

// As many threads as are of use.
int ThreadsFor(const std::vector<Chain::Stage>& stages, int wanted) {
  const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  const int jobs = wanted > 0 ? wanted : cores;
  const bool anyNumber = std::any_of(stages.begin(), stages.end(), [](const auto& stage) { return !stage.ordered; });
  return anyNumber ? jobs : std::min(jobs, static_cast<int>(stages.size()));
}

}  // namespace

PipelineResult RunPipeline(Plugin& plugin, const Chain& chain, FrameReader& reader, FrameWriter& writer,
                           int64_t totalFrames, const PipelineOptions& options) {
  std::vector<Chain::Stage> stages = chain.Stages();
  if (stages.empty()) stages.push_back({0, 0, false});
  const int jobs = ThreadsFor(stages, options.jobs);
  StageQueue queue(stages, static_cast<size_t>(jobs) + stages.size() + kSpareFrames);
  std::vector<std::unique_ptr<Crew>> crews;
  for (const Chain::Stage& stage : stages) {
    crews.push_back(std::make_unique<Crew>(plugin, chain, stage, stage.ordered ? 1 : jobs));
  }

  const auto guarded = [&](auto work) {
    return [&queue, &reader, work] {
      try {
        work();
      } catch (...) {
        queue.Fail(std::current_exception());
        reader.Abandon();
      }
    };
  };
  const auto isStopped = [&options] { return options.stopped && options.stopped(); };
  const auto read = guarded([&] {
    Frame frame;
    try {
      while (!isStopped() && reader.Read(frame)) {
        if (!queue.Put(frame)) return;
      }
    } catch (const Interrupted&) {
      // What was read until now is finished.
    }
    queue.EndInput();
  });
  const auto render = guarded([&] {
    StageQueue::Task task;
    while (queue.TakeTask(task)) {
      Frame& frame = task.frame;
      if (options.pad && task.stage == 0) frame.picture = PadPicture(frame.picture, *options.pad);
      SetClipTime(frame.clipSeconds);
      std::unique_ptr<ChainRunner> objects = crews[task.stage]->Borrow();
      objects->Render(frame.picture, frame.place, totalFrames, frame.clipSeconds);
      crews[task.stage]->Return(std::move(objects));
      queue.FinishTask(task);
    }
  });
  int64_t done = 0;
  std::vector<std::thread> threads;
  guarded([&] {
    threads.emplace_back(render);
    threads.emplace_back(read);
    try {
      while (threads.size() <= static_cast<size_t>(jobs)) threads.emplace_back(render);
    } catch (const std::system_error&) {
      // Those that run do the work.
    }
    Frame frame;
    while (queue.TakeFinished(frame)) {
      writer.Write(frame);
      ++done;
      if (options.onFrame) options.onFrame(done);
    }
  })();
  for (std::thread& thread : threads) thread.join();
  if (const std::exception_ptr failure = queue.Failure()) std::rethrow_exception(failure);
  if (isStopped()) return {done, false};
  writer.Finish();
  return {done, true};
}

}  // namespace kvx

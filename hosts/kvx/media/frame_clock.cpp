#include "hosts/kvx/media/frame_clock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvx {

namespace {

// A finer time base is taken over as it is.
constexpr int kFineTicks = 10000;  // per second

// Ticks on the beat of the rate, and fine ones between.
AVRational OnTheBeat(AVRational rate) {
  int64_t ticks = rate.num;
  while (ticks < kFineTicks) ticks *= 2;
  return {1, static_cast<int>(ticks)};
}

}  // namespace

FrameClock::FrameClock(Rhythm rhythm, AVRational sourceTimeBase, AVRational rate)
    : rhythm_(rhythm), sourceTimeBase_(sourceTimeBase), rate_(rate) {
  if (rhythm == Rhythm::kConstant) {
    timeBase_ = av_inv_q(rate);
  } else {
    timeBase_ = av_q2d(sourceTimeBase) * kFineTicks <= 1 ? sourceTimeBase : OnTheBeat(rate);
  }
}

FrameClock::Slot FrameClock::Next(int64_t sourceStamp, int64_t sourceDuration) {
  const double tick = av_q2d(sourceTimeBase_);
  const double perTick = tick * av_q2d(rate_);
  // With a constant rhythm the first frame sets the beat: frames between two beats must not fall to either side by
  // turns. One that begins within the first beat has that beat: nothing was to be seen before it.
  const double firstBeat = static_cast<double>(sourceStamp) * perTick;
  if (first_ && rhythm_ == Rhythm::kConstant) phase_ = firstBeat - (firstBeat < 1 ? 0 : std::round(firstBeat));
  const double beat = firstBeat - phase_;
  const bool first = std::exchange(first_, false);
  const auto nearest = static_cast<int64_t>(std::llround(beat));
  Slot slot;
  slot.duration = std::max<int64_t>(1, av_rescale_q(sourceDuration, sourceTimeBase_, timeBase_));
  if (rhythm_ == Rhythm::kFree) {
    const bool onBeat = std::abs(beat - static_cast<double>(nearest)) <= 0.51 * perTick;
    const bool coarse = av_cmp_q(timeBase_, sourceTimeBase_) != 0;
    slot.stamp = coarse && onBeat ? av_rescale_q(nearest, av_inv_q(rate_), timeBase_)
                                  : av_rescale_q(sourceStamp, sourceTimeBase_, timeBase_);
    // Stamps that do not rise cannot be stored.
    if (!first) slot.stamp = std::max(slot.stamp, next_);
    next_ = slot.stamp + 1;
    return slot;
  }
  slot.duration = 1;
  end_ = std::max<int64_t>(end_, std::llround(beat + static_cast<double>(sourceDuration) * perTick));
  const int64_t stamp = std::max<int64_t>(nearest, 0);
  if (stamp < next_) {
    ++leftOut_;
    slot.shown = false;
    return slot;
  }
  slot.repeats = stamp - next_;
  slot.stamp = stamp;
  repeated_ += slot.repeats;
  next_ = stamp + 1;
  return slot;
}

void FrameClock::Resume(int64_t firstSourceStamp, int64_t stamp) {
  Next(firstSourceStamp, 1);
  next_ = end_ = stamp;
  repeated_ = 0;
}

int64_t FrameClock::RepeatsUntil(int64_t stamp) {
  if (rhythm_ == Rhythm::kFree) return 0;
  const int64_t repeats = std::max<int64_t>(0, stamp - next_);
  repeated_ += repeats;
  next_ = end_ = next_ + repeats;
  return repeats;
}

int64_t FrameClock::RepeatsAtEnd() const {
  return rhythm_ == Rhythm::kConstant ? std::max<int64_t>(0, end_ - next_) : 0;
}

}  // namespace kvx

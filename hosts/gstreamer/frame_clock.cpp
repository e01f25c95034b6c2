#include "hosts/gstreamer/frame_clock.h"

namespace kvx {

int64_t FrameRate::FrameAt(GstClockTime time) const {
  return static_cast<int64_t>(gst_util_uint64_scale_round(time, static_cast<guint64>(numerator),
                                                          static_cast<guint64>(denominator) * GST_SECOND));
}

FrameClock::Moment FrameClock::Next(GstClockTime runningTime, const FrameRate& rate) {
  const bool isTimed = GST_CLOCK_TIME_IS_VALID(runningTime);
  Moment moment;
  moment.steppedBack = isTimed && GST_CLOCK_TIME_IS_VALID(lastTime_) && runningTime < lastTime_;
  if (moment.steppedBack) Restart();
  moment.frame = isTimed && rate.IsKnown() ? rate.FrameAt(runningTime) : next_;
  if (isTimed) {
    moment.milliseconds = static_cast<double>(runningTime) / GST_MSECOND;
    lastTime_ = runningTime;
  } else {
    const double perFrame = rate.IsKnown() ? 1000.0 * rate.denominator / rate.numerator : 40;
    moment.milliseconds = static_cast<double>(moment.frame) * perFrame;
  }
  next_ = moment.frame + 1;
  return moment;
}

}  // namespace kvx

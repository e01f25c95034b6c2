// What an effect is told of the time: numbers of frames, made of a pipeline's running times.
#ifndef KVX_HOSTS_GSTREAMER_FRAME_CLOCK_H_
#define KVX_HOSTS_GSTREAMER_FRAME_CLOCK_H_

#include <gst/gst.h>

#include <cstdint>

namespace kvx {

// Frames per second as a fraction; 0/1 where it varies or is not known.
struct FrameRate {
  int numerator = 0;
  int denominator = 1;

  bool IsKnown() const { return numerator > 0 && denominator > 0; }
  // The frame that is nearest to `time`. The rate must be known.
  int64_t FrameAt(GstClockTime time) const;
};

class FrameClock {
 public:
  struct Moment {
    int64_t frame = 0;
    double milliseconds = 0;
    bool steppedBack = false;  // behind the frame before
  };

  void Restart() { *this = FrameClock(); }

  // The next frame, at this running time, which may be GST_CLOCK_TIME_NONE. Where time or rate is not known frames are
  // counted, and take a 25th of a second each where neither is.
  Moment Next(GstClockTime runningTime, const FrameRate& rate);

 private:
  GstClockTime lastTime_ = GST_CLOCK_TIME_NONE;
  int64_t next_ = 0;
};

}  // namespace kvx

#endif  // KVX_HOSTS_GSTREAMER_FRAME_CLOCK_H_

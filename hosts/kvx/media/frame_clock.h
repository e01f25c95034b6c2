// When frames are shown, as an encoder and its container can say it.
#ifndef KVX_HOSTS_KVX_MEDIA_FRAME_CLOCK_H_
#define KVX_HOSTS_KVX_MEDIA_FRAME_CLOCK_H_

#include <cstdint>
#include <string>

#include "hosts/kvx/media/libav.h"

namespace kvx {

// Whether every frame lasts as long as the next in what comes out.
enum class Rhythm { kFree, kConstant };

// With a free rhythm stamps stay as they are, apart from such that only a coarse time base kept off the beat. With a
// constant one frames are repeated and left out so that every moment shows what it showed before.
class FrameClock {
 public:
  FrameClock(Rhythm rhythm, AVRational sourceTimeBase, AVRational rate);

  AVRational TimeBase() const { return timeBase_; }

  struct Slot {
    int64_t repeats = 0;  // of the frame before, at the stamps before this one's
    bool shown = true;    // false: there is no place for this frame
    int64_t stamp = 0;
    int64_t duration = 0;
  };
  Slot Next(int64_t sourceStamp, int64_t sourceDuration);
  // How often the last frame comes once more so that it lasts as long as it did.
  int64_t RepeatsAtEnd() const;
  int64_t NextStamp() const { return next_; }

  // For a clock that begins within a clip: when the clip's first frame came, and the stamp of the next one.
  void Resume(int64_t firstSourceStamp, int64_t stamp);
  // For one that ends within: how often the last frame comes once more until the frame at `stamp`.
  int64_t RepeatsUntil(int64_t stamp);

  int64_t Repeated() const { return repeated_; }
  int64_t LeftOut() const { return leftOut_; }

 private:
  Rhythm rhythm_;
  AVRational sourceTimeBase_;
  AVRational rate_;
  AVRational timeBase_;
  int64_t next_ = 0;  // the first stamp that is free
  int64_t end_ = 0;   // of the last frame, with a constant rhythm
  bool first_ = true;
  double phase_ = 0;  // of the first frame, in beats
  int64_t repeated_ = 0;
  int64_t leftOut_ = 0;
};

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_MEDIA_FRAME_CLOCK_H_

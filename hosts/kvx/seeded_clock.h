// The calendar as the effects see it while a run has a seed.
//
// Effects that draw by chance take their first number from the calendar, so that two runs differ. A run with a seed has
// a calendar of its own, which begins at a second that the seed decides and goes on by the time of the clip: the same
// frames see the same seconds, in every process and on every thread.
#ifndef KVX_HOSTS_KVX_SEEDED_CLOCK_H_
#define KVX_HOSTS_KVX_SEEDED_CLOCK_H_

#include <cstdint>

namespace kvx {

// From now on the process's `time` goes by the seed. To be called before the plug-in starts: it draws there already.
void SeedClock(uint32_t seed);

// The place in the clip, in seconds, of what this thread renders next. Counts only with a seed.
void SetClipTime(double seconds);

}  // namespace kvx

#endif  // KVX_HOSTS_KVX_SEEDED_CLOCK_H_

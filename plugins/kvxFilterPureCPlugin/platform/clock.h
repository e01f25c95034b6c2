// Calendar time. Everything that depends on it asks here, so that a test can pin it.
#ifndef KVX_PLATFORM_CLOCK_H_
#define KVX_PLATFORM_CLOCK_H_

#include <cstdint>

// Seconds since the epoch.
uint32_t CalendarSeconds();

// Makes `CalendarSeconds` give this value until it is called with 0 again.
void PinCalendarSeconds(uint32_t seconds);

#endif  // KVX_PLATFORM_CLOCK_H_

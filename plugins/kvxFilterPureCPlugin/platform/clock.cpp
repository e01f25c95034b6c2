#include "platform/clock.h"

#include <atomic>
#include <ctime>

namespace {
std::atomic<uint32_t> g_pinned{0};
}

uint32_t CalendarSeconds() {
  const uint32_t pinned = g_pinned.load(std::memory_order_relaxed);
  return pinned != 0 ? pinned : static_cast<uint32_t>(std::time(nullptr));
}

void PinCalendarSeconds(uint32_t seconds) {
  g_pinned.store(seconds, std::memory_order_relaxed);
}

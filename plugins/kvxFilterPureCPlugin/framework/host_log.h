// The log channel of the whole plug-in: the host's own.
#ifndef KVX_FRAMEWORK_HOST_LOG_H_
#define KVX_FRAMEWORK_HOST_LOG_H_

#include <atomic>

#include "kvx/host.h"

// Writes nothing without a Host Util Suite.
template <typename... Args>
void Log(HostUtilSuite* host, int32_t level, const char* format, Args... args) {
  if (host) host->HostLog(level, format, args...);
}

// The suite of the host that started the plug-in, for those who are not handed one; null before that.
inline std::atomic<HostUtilSuite*> g_processHost{nullptr};

// An effect could not get the memory that it needs. `source` is the effect's file below this repository.
inline void LogAllocationFailure(const char* source, const char* line) {
  Log(g_processHost.load(std::memory_order_relaxed), kHostLogError, "alloc failed file[%s] line[%s]", source, line);
}

#define KVX_TEXT_OF_LINE(line) #line
#define KVX_TEXT_OF(line) KVX_TEXT_OF_LINE(line)
// `name` is the effect's file name without its ending.
#define KVX_LOG_ALLOCATION_FAILURE(name) \
  LogAllocationFailure("plugins/kvxFilterPureCPlugin/Source/" name, KVX_TEXT_OF(__LINE__))

#endif  // KVX_FRAMEWORK_HOST_LOG_H_

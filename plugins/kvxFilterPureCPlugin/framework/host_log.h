// The log channel of the whole plug-in: the host's own.
#ifndef KVX_FRAMEWORK_HOST_LOG_H_
#define KVX_FRAMEWORK_HOST_LOG_H_

#include "kvx/host.h"

// Writes nothing without a Host Util Suite.
template <typename... Args>
void Log(HostUtilSuite* host, int32_t level, const char* format, Args... args) {
  if (host) host->HostLog(level, format, args...);
}

#endif  // KVX_FRAMEWORK_HOST_LOG_H_

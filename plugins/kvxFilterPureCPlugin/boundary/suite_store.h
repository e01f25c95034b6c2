// The host's suites, taken once at start-up.
#ifndef KVX_BOUNDARY_SUITE_STORE_H_
#define KVX_BOUNDARY_SUITE_STORE_H_

#include "kvx/host.h"

namespace vizcore {

// Only the Host Util Suite is ever called; the others are kept for those who will.
struct SuiteStore {
  HostUtilSuite* hostUtil = nullptr;
  void* imageBufferAllocator = nullptr;
  void* memoryAllocator = nullptr;
  void* gpuDevice = nullptr;

  static SuiteStore& Get();
  void Acquire(HostSuiteProvider& provider);
};

}  // namespace vizcore

#endif  // KVX_BOUNDARY_SUITE_STORE_H_

#include "boundary/suite_store.h"

#include "framework/host_log.h"

namespace vizcore {

SuiteStore& SuiteStore::Get() {
  static SuiteStore store;
  return store;
}

void SuiteStore::Acquire(HostSuiteProvider& provider) {
  void* util = hostUtil;
  provider.GetSuite("Memory Allocator Suite", 1, &memoryAllocator);
  provider.GetSuite("Image Buffer ALlocator Suite", 1, &imageBufferAllocator);
  provider.GetSuite("Host Util Suite", 1, &util);
  provider.GetSuite("GPU Device Suite", 1, &gpuDevice);
  hostUtil = static_cast<HostUtilSuite*>(util);
  g_processHost = hostUtil;
}

}  // namespace vizcore

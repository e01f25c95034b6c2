// Tells whether memory that a host hands over can be used, without touching it.
#ifndef KVX_PLATFORM_MEMORY_PROBE_H_
#define KVX_PLATFORM_MEMORY_PROBE_H_

#include <cstddef>

// True if not every byte of [address, address + size) can be read. A null address is bad for any size but 0.
bool IsBadReadPtr(const void* address, size_t size);

// The same for writing. Nothing is written.
bool IsBadWritePtr(const void* address, size_t size);

#endif  // KVX_PLATFORM_MEMORY_PROBE_H_

#include "tests/support/failing_allocator.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

// The allocator that stands behind the replaced one.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KVX_BEHIND(name) __interceptor_##name
#else
#define KVX_BEHIND(name) __libc_##name
#endif

extern "C" {
void* KVX_BEHIND(malloc)(size_t size);
void* KVX_BEHIND(calloc)(size_t count, size_t size);
void* KVX_BEHIND(realloc)(void* block, size_t size);
void* KVX_BEHIND(memalign)(size_t alignment, size_t size);
void KVX_BEHIND(free)(void* block);
}

namespace {

constexpr int64_t kNever = std::numeric_limits<int64_t>::max();

thread_local int64_t untilFailure = kNever;  // allocations up to the one that fails
thread_local bool forGood = false;
thread_local bool hit = false;
thread_local int64_t liveBlocks = 0;

bool Fails() {
  if (untilFailure == kNever || --untilFailure > 0) return false;
  untilFailure = forGood ? 1 : kNever;
  hit = true;
  errno = ENOMEM;
  return true;
}

void* Counted(void* block) {
  if (block) ++liveBlocks;
  return block;
}

}  // namespace

FailAllocation::FailAllocation(int64_t nth, Shortage shortage) {
  hit = false;
  forGood = shortage == Shortage::kForGood;
  untilFailure = nth;
}

FailAllocation::~FailAllocation() {
  untilFailure = kNever;
}

bool FailAllocation::Hit() const {
  return hit;
}

int64_t LiveBlocks() {
  return liveBlocks;
}

#pragma GCC visibility push(default)

extern "C" {

void* malloc(size_t size) {
  return Fails() ? nullptr : Counted(KVX_BEHIND(malloc)(size));
}

void* calloc(size_t count, size_t size) {
  return Fails() ? nullptr : Counted(KVX_BEHIND(calloc)(count, size));
}

void* realloc(void* block, size_t size) {
  if (Fails()) return nullptr;
  void* moved = KVX_BEHIND(realloc)(block, size);
  if (!block) return Counted(moved);
  if (!moved && size == 0) --liveBlocks;
  return moved;
}

void* memalign(size_t alignment, size_t size) {
  return Fails() ? nullptr : Counted(KVX_BEHIND(memalign)(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) {
  return memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size) {
  void* block = memalign(alignment, size);
  if (!block) return ENOMEM;
  *out = block;
  return 0;
}

void free(void* block) {
  if (block) --liveBlocks;
  KVX_BEHIND(free)(block);
}

}  // extern "C"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers' own operators do not go through malloc.
namespace {
void* OrThrow(void* block) {
  if (!block) throw std::bad_alloc();
  return block;
}
}  // namespace

void* operator new(size_t size) {
  return OrThrow(malloc(size));
}
void* operator new[](size_t size) {
  return OrThrow(malloc(size));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return malloc(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return malloc(size);
}
void operator delete(void* block) noexcept {
  free(block);
}
void operator delete[](void* block) noexcept {
  free(block);
}
void operator delete(void* block, size_t) noexcept {
  free(block);
}
void operator delete[](void* block, size_t) noexcept {
  free(block);
}
#endif

#pragma GCC visibility pop

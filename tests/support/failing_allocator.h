// Memory that runs out when a test wants it to: malloc and its kin, and with them operator new and what the libraries
// take. Only the test that links this file's source has it.
#ifndef KVX_TESTS_SUPPORT_FAILING_ALLOCATOR_H_
#define KVX_TESTS_SUPPORT_FAILING_ALLOCATOR_H_

#include <cstdint>

enum class Shortage { kOnce, kForGood };

// While it stands the `nth` allocation of this thread from now on fails, counted from 1; with `kForGood` so do all
// behind it. One at a time on each thread.
class FailAllocation {
 public:
  FailAllocation(int64_t nth, Shortage shortage);
  ~FailAllocation();
  FailAllocation(const FailAllocation&) = delete;

  // Whether an allocation has failed.
  bool Hit() const;
};

// Blocks that this thread has allocated, less those that it has freed.
int64_t LiveBlocks();

#endif  // KVX_TESTS_SUPPORT_FAILING_ALLOCATOR_H_

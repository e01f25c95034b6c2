// The process's random stream, for tests.
#ifndef KVX_TESTS_SUPPORT_DRAWS_H_
#define KVX_TESTS_SUPPORT_DRAWS_H_

#include <cstdint>

#include "framework/random.h"

inline void SeedRandom(uint32_t seed) {
  Rand().Seed(seed);
}

// What effects draw after `seed`: 0 to 32767.
class Draws {
 public:
  explicit Draws(uint32_t seed) : state_(seed) {}
  int operator()() {
    state_ = state_ * 214013u + 2531011u;
    return static_cast<int>(state_ >> 16 & 0x7FFF);
  }

 private:
  uint32_t state_;
};

#endif  // KVX_TESTS_SUPPORT_DRAWS_H_

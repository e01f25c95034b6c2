// Vector targets, for tests.
#ifndef KVX_TESTS_SUPPORT_TARGETS_H_
#define KVX_TESTS_SUPPORT_TARGETS_H_

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <functional>
#include <vector>

// Those that are compiled and that the machine has, the best one first.
inline std::vector<int64_t> VectorTargets() {
  std::vector<int64_t> targets;
  for (int64_t rest = hwy::SupportedTargets() & HWY_TARGETS; rest != 0; rest &= rest - 1) {
    targets.push_back(rest & -rest);
  }
  return targets;
}

// Every call from here on takes this target; 0 stands for all that the machine has.
inline void UseVectorTarget(int64_t target) {
  hwy::SetSupportedTargetsForTest(target);
  hwy::GetChosenTarget().Update(target ? target : hwy::SupportedTargets());
}

inline void OnEveryTarget(const std::function<void()>& check) {
  for (const int64_t target : VectorTargets()) {
    UseVectorTarget(target);
    SCOPED_TRACE(hwy::TargetName(target));
    check();
  }
  UseVectorTarget(0);
}

#endif  // KVX_TESTS_SUPPORT_TARGETS_H_

// SPDX-License-Identifier: MIT
// Failing allocations: the k-th one, alone or with all that follow, for k = 0, 1, 2, ... until an action asks for no
// k-th allocation any more.
#pragma once

#include "core/alloc.h"
#include "koru.h"
#include "support/kit/solver_test.h"

namespace koru::test {

enum class Failing { kOnce, kForEver };

class FailingAllocator {
 public:
  FailingAllocator(int k, Failing how) {
    countdown = k;
    mode = how;
    requests = 0;
    failed = 0;
    allocationHook = decide;
  }
  FailingAllocator(const FailingAllocator &) = delete;
  FailingAllocator &operator=(const FailingAllocator &) = delete;
  ~FailingAllocator() { allocationHook = nullptr; }

  // Of the last one made: how many allocations were asked for, and how many of them it refused.
  static int asked() { return requests; }
  static int failures() { return failed; }

 private:
  static bool decide(std::size_t) {
    ++requests;
    if (countdown-- > 0) return true;
    if (mode == Failing::kOnce && failed > 0) return true;
    ++failed;
    return false;
  }

  static inline int countdown = 0;
  static inline int requests = 0;
  static inline int failed = 0;
  static inline Failing mode = Failing::kOnce;
};

// A small problem with one answer, on whatever solver is running: a + b = 12, a < b, b != 8, all below 10.
inline void expectSolverUsable() {
  cs_initErr();
  CSint *ab[2] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  ASSERT_NE(ab[0], nullptr);
  ASSERT_NE(ab[1], nullptr);
  const int label = cs_saveContext();
  EXPECT_TRUE(cs_EQ(cs_Add(ab[0], ab[1]), 12));
  EXPECT_TRUE(cs_Lt(ab[0], ab[1]));
  EXPECT_TRUE(cs_NEQ(ab[1], 8));
  EXPECT_TRUE(cs_NEQ(ab[0], 5));
  ASSERT_TRUE(cs_search(ab, 2, cs_findFreeVar));
  EXPECT_EQ(cs_getValue(ab[0]), 3);
  EXPECT_EQ(cs_getValue(ab[1]), 9);
  cs_restoreContextUntil(label);
  EXPECT_EQ(cs_getMin(ab[0]), 0);
  EXPECT_EQ(cs_getNbElements(ab[1]), 10);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

}  // namespace koru::test

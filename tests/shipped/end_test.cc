// SPDX-License-Identifier: MIT
// The end of a solver as users have it: what lies in the pool goes with it, without a look at the variables, and
// everything else is given back as well. The library that other tests use looks at each variable.
#include <gtest/gtest.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <cstddef>
#include <vector>

#include "koru.h"

namespace {

// Of the C library's heap; leak checkers look for themselves.
std::size_t bytesInUse() {
#if defined(__GLIBC__)
  const auto use = mallinfo2();
  return use.uordblks + use.hblkhd;
#else
  return 0;
#endif
}

enum Having : unsigned { kHoles = 1, kWideHoles = 2, kNames = 4, kRelations = 8, kOwners = 16, kAll = 32 };

void makeHoles(const std::vector<CSint *> &x, int value) {
  for (CSint *v : x) ASSERT_TRUE(cs_NEQ(v, value));
}

void give(std::vector<CSint *> &x, unsigned having) {
  if ((having & kHoles) != 0) makeHoles(x, 5);
  if ((having & kWideHoles) != 0) {
    CSint *wide = cs_createCSint(0, 100000);
    ASSERT_TRUE(cs_NEQ(wide, 7));
  }
  if ((having & kNames) != 0) {
    cs_setName(x[3], "short");
    cs_setName(x[3], "longer than before, so that it is another copy");
    cs_setName(x[5], "gone");
    cs_setName(x[5], nullptr);
  }
  if ((having & kRelations) != 0) {
    for (std::size_t i = 1; i < x.size(); ++i) ASSERT_TRUE(cs_Le(x[i - 1], x[i]));
  }
  if ((having & kOwners) != 0) {
    const int table[] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const int finals[] = {0};
    ASSERT_TRUE(cs_Regular(x.data(), 20, table, 1, 10, 0, finals, 1));
  }
}

// Twice, as the heap keeps some of what is freed for the first time.
TEST(EndTest, GivesBackWhateverTheVariablesHave) {
  std::vector<CSint *> x(3000);
  for (unsigned round = 0; round < 2 * kAll; ++round) {
    const std::size_t before = bytesInUse();
    cs_init();
    for (CSint *&v : x) v = cs_createCSint(0, 9);
    ASSERT_NO_FATAL_FAILURE(give(x, round % kAll));
    cs_end();
    EXPECT_TRUE(round < kAll || bytesInUse() == before) << round;
  }
}

TEST(EndTest, TheNextSolverHasNothingOfTheLast) {
  cs_init();
  CSint *v = cs_createCSint(0, 9);
  cs_setName(v, "first");
  ASSERT_TRUE(cs_NEQ(v, 5));
  cs_end();
  cs_init();
  v = cs_createCSint(0, 9);
  EXPECT_EQ(cs_getName(v), nullptr);
  EXPECT_EQ(cs_getNbElements(v), 10);
  EXPECT_TRUE(cs_isIn(v, 5));
  cs_end();
}

}  // namespace

// SPDX-License-Identifier: MIT
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

using CountOfTest = SolverTest;

TEST_F(CountOfTest, CountFollowsValueAndArray) {
  CSint *x[] = {CSINT(1), cs_createCSint(0, 2), cs_createCSint(2, 3)};
  CSint *value = cs_createCSint(0, 3);
  CSint *count = cs_createCSint(-5, 9);
  ASSERT_TRUE(cs_CountOf(x, 3, value, count));
  EXPECT_EQ(values(count), (Values{0, 1, 2}));
  ASSERT_TRUE(cs_EQ(value, 1));
  EXPECT_EQ(values(count), (Values{1, 2}));
  ASSERT_TRUE(cs_EQ(count, 2));
  EXPECT_EQ(cs_getValue(x[1]), 1);
}

TEST_F(CountOfTest, ValueIsNarrowedByCount) {
  CSint *x[] = {CSINT(1), CSINT(1), CSINT(2)};
  CSint *value = cs_createCSint(0, 3);
  CSint *count = cs_createCSint(1, 2);
  ASSERT_TRUE(cs_CountOf(x, 3, value, count));
  EXPECT_EQ(values(value), (Values{1, 2}));
  ASSERT_TRUE(cs_EQ(count, 2));
  EXPECT_EQ(cs_getValue(value), 1);
}

TEST_F(CountOfTest, AllThatCanMust) {
  CSint *x[] = {cs_createCSint(0, 3), cs_createCSint(0, 3), cs_createCSint(2, 5)};
  CSint *value = cs_createCSint(2, 3);
  CSint *count = CSINT(3);
  ASSERT_TRUE(cs_CountOf(x, 3, value, count));
  for (CSint *v : x) EXPECT_EQ(values(v), (Values{2, 3}));
}

TEST_F(CountOfTest, AWideValueLeavesTheCountWithinTheArray) {
  CSint *x[] = {cs_createCSint(0, 3), cs_createCSint(0, 3)};
  CSint *value = cs_createCSint(0, 1 << 20);
  CSint *count = cs_createCSint(-5, 9);
  ASSERT_TRUE(cs_CountOf(x, 2, value, count));
  EXPECT_EQ(values(count), (Values{0, 1, 2}));
  for (CSint *unfit : {cs_createCSint(3, 9), cs_createCSint(-9, -1)}) {
    cs_saveContext();
    EXPECT_FALSE(cs_CountOf(x, 2, value, unfit));
    cs_restoreContext();
  }
  ASSERT_TRUE(cs_EQ(value, 2));
  ASSERT_TRUE(cs_EQ(count, 2));
  EXPECT_EQ(cs_getValue(x[0]), 2);
}

TEST_F(CountOfTest, CountsOutOfReachFail) {
  CSint *x[] = {cs_createCSint(0, 3), cs_createCSint(0, 3)};
  EXPECT_FALSE(cs_CountOf(x, 2, CSINT(7), CSINT(1)));
  EXPECT_FALSE(cs_CountOf(x, 2, CSINT(1), CSINT(-1)));
  EXPECT_FALSE(cs_CountOf(x, 2, CSINT(1), CSINT(3)));
}

TEST_F(CountOfTest, RefusesWhatMakesNoSense) {
  CSint *x[] = {cs_createCSint(0, 3), nullptr};
  CSint *v = cs_createCSint(0, 3);
  EXPECT_FALSE(cs_CountOf(x, 2, v, v));
  EXPECT_FALSE(cs_CountOf(nullptr, 1, v, v));
  EXPECT_FALSE(cs_CountOf(x, 1, nullptr, v));
  EXPECT_FALSE(cs_CountOf(x, 1, v, nullptr));
  EXPECT_FALSE(cs_CountOf(x, -1, v, v));
  EXPECT_FALSE(cs_CountOf(x, INT_MAX, v, v));
  EXPECT_TRUE(cs_CountOf(nullptr, 0, cs_createCSint(0, 3), cs_createCSint(0, 3)));
}

}  // namespace
}  // namespace koru::test

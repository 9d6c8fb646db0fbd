// SPDX-License-Identifier: MIT
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

using IncreasingTest = SolverTest;

TEST_F(IncreasingTest, BoundsPassAlongTheArray) {
  CSint *x[] = {fromValues({2, 5}), cs_createCSint(0, 9), cs_createCSint(1, 4)};
  ASSERT_TRUE(cs_Increasing(x, 3));
  EXPECT_EQ(values(x[0]), (Values{2}));
  EXPECT_EQ(values(x[1]), (Values{2, 3, 4}));
  EXPECT_EQ(values(x[2]), (Values{2, 3, 4}));
  ASSERT_TRUE(cs_LT(x[2], 4));
  EXPECT_EQ(cs_getMax(x[1]), 3);
}

TEST_F(IncreasingTest, StrictlyEachIsAboveTheOneBefore) {
  CSint **x = cs_createCSintArray(3, 0, 3);
  ASSERT_TRUE(cs_StrictlyIncreasing(x, 3));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(values(x[i]), (Values{i, i + 1}));
  ASSERT_TRUE(cs_EQ(x[1], 2));
  EXPECT_EQ(cs_getValue(x[2]), 3);
  EXPECT_FALSE(cs_EQ(x[0], 2));
}

TEST_F(IncreasingTest, AVariableMayStandTwiceOnlyWithoutStrictness) {
  CSint *x = cs_createCSint(0, 3);
  CSint *y = cs_createCSint(0, 3);
  CSint *array[] = {x, y, x};
  EXPECT_FALSE(cs_StrictlyIncreasing(array, 3));
  ASSERT_TRUE(cs_Increasing(array, 3));
  ASSERT_TRUE(cs_EQ(x, 2));
  EXPECT_EQ(cs_getValue(y), 2);
}

TEST_F(IncreasingTest, TheArrayIsCopied) {
  CSint *x = cs_createCSint(0, 3);
  CSint *y = cs_createCSint(0, 3);
  {
    CSint *array[] = {x, y};
    ASSERT_TRUE(cs_Increasing(array, 2));
    array[0] = nullptr;
  }
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(cs_getValue(y), 3);
}

TEST_F(IncreasingTest, RefusesWhatMakesNoSense) {
  CSint *x[] = {cs_createCSint(0, 3), nullptr};
  EXPECT_FALSE(cs_Increasing(x, 2));
  EXPECT_FALSE(cs_Increasing(nullptr, 1));
  EXPECT_FALSE(cs_Increasing(x, -1));
  EXPECT_TRUE(cs_Increasing(nullptr, 0));
  EXPECT_TRUE(cs_StrictlyIncreasing(x, 1));
  EXPECT_FALSE(cs_StrictlyIncreasing(x, INT_MIN));
}

}  // namespace
}  // namespace koru::test

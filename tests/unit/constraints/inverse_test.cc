// SPDX-License-Identifier: MIT
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

using InverseTest = SolverTest;

TEST_F(InverseTest, ValuesGoOnBothSides) {
  CSint **x = cs_createCSintArray(3, -5, 7);
  CSint **y = cs_createCSintArray(3, 0, 2);
  ASSERT_TRUE(cs_Inverse(x, y, 3));
  EXPECT_EQ(values(x[0]), (Values{0, 1, 2}));
  ASSERT_TRUE(cs_NEQ(x[0], 1));
  EXPECT_EQ(values(y[1]), (Values{1, 2}));
  ASSERT_TRUE(cs_EQ(y[2], 0));
  EXPECT_EQ(cs_getValue(x[0]), 2);
  EXPECT_EQ(values(x[1]), (Values{0, 1}));
  EXPECT_EQ(values(y[0]), (Values{1, 2}));
}

TEST_F(InverseTest, OfTheSameArrayItIsItsOwn) {
  CSint **x = cs_createCSintArray(3, 0, 2);
  ASSERT_TRUE(cs_Inverse(x, x, 3));
  ASSERT_TRUE(cs_EQ(x[0], 2));
  EXPECT_EQ(cs_getValue(x[2]), 0);
  EXPECT_EQ(cs_getValue(x[1]), 1);
}

TEST_F(InverseTest, HolesAtPostingPass) {
  CSint *x[] = {fromValues({0, 2}), cs_createCSint(0, 2), cs_createCSint(1, 1)};
  CSint **y = cs_createCSintArray(3, 0, 2);
  ASSERT_TRUE(cs_Inverse(x, y, 3));
  EXPECT_EQ(cs_getValue(y[1]), 2);
  EXPECT_EQ(values(x[1]), (Values{0, 2}));
}

TEST_F(InverseTest, FailsWhenTwoWantOne) {
  CSint *x[] = {CSINT(0), CSINT(0)};
  CSint **y = cs_createCSintArray(2, 0, 1);
  EXPECT_FALSE(cs_Inverse(x, y, 2));
  CSint *far[] = {CSINT(5)};
  EXPECT_FALSE(cs_Inverse(far, y, 1));
}

TEST_F(InverseTest, RefusesWhatMakesNoSense) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  CSint *holes[] = {x[0], nullptr};
  EXPECT_FALSE(cs_Inverse(nullptr, x, 2));
  EXPECT_FALSE(cs_Inverse(x, nullptr, 2));
  EXPECT_FALSE(cs_Inverse(holes, x, 2));
  EXPECT_FALSE(cs_Inverse(x, holes, 2));
  EXPECT_FALSE(cs_Inverse(x, x, -1));
  EXPECT_FALSE(cs_Inverse(x, x, INT_MAX));
  EXPECT_TRUE(cs_Inverse(nullptr, nullptr, 0));
}

}  // namespace
}  // namespace koru::test

// SPDX-License-Identifier: MIT
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

using ElementOfTest = SolverTest;

TEST_F(ElementOfTest, IndexAndResultNarrowEachOther) {
  const int table[] = {5, 3, 9, 3};
  CSint *index = cs_createCSint(-2, 9);
  CSint *result = cs_createCSint(0, 8);
  ASSERT_TRUE(cs_ElementOf(index, table, 4, result));
  EXPECT_EQ(values(index), (Values{0, 1, 3}));
  EXPECT_EQ(values(result), (Values{3, 5}));
  ASSERT_TRUE(cs_NEQ(result, 5));
  EXPECT_EQ(values(index), (Values{1, 3}));
  EXPECT_EQ(cs_getValue(result), 3);
}

TEST_F(ElementOfTest, TheTableIsCopied) {
  CSint *index = cs_createCSint(0, 1);
  CSint *result = cs_createCSint(0, 9);
  {
    int table[] = {4, 6};
    ASSERT_TRUE(cs_ElementOf(index, table, 2, result));
    table[0] = table[1] = 0;
  }
  ASSERT_TRUE(cs_EQ(index, 0));
  EXPECT_EQ(cs_getValue(result), 4);
}

TEST_F(ElementOfTest, AWideResultKeepsInnerValues) {
  const int table[] = {INT_MIN, 0, INT_MAX};
  CSint *index = cs_createCSint(0, 2);
  CSint *result = cs_createCSint(INT_MIN, INT_MAX);
  ASSERT_TRUE(cs_ElementOf(index, table, 3, result));
  EXPECT_TRUE(cs_isIn(result, 17));
  ASSERT_TRUE(cs_NEQ(index, 2));
  EXPECT_EQ(cs_getMax(result), 0);
  ASSERT_TRUE(cs_GT(result, INT_MIN));
  EXPECT_EQ(cs_getValue(index), 1);
}

TEST_F(ElementOfTest, IndexAndResultMayBeOne) {
  const int table[] = {1, 1, 2, 0};
  CSint *x = cs_createCSint(0, 3);
  ASSERT_TRUE(cs_ElementOf(x, table, 4, x));
  EXPECT_EQ(values(x), (Values{1, 2}));
}

TEST_F(ElementOfTest, RefusesWhatMakesNoSense) {
  const int table[] = {1, 2};
  CSint *x = cs_createCSint(0, 3);
  EXPECT_FALSE(cs_ElementOf(nullptr, table, 2, x));
  EXPECT_FALSE(cs_ElementOf(x, nullptr, 2, x));
  EXPECT_FALSE(cs_ElementOf(x, table, 2, nullptr));
  EXPECT_FALSE(cs_ElementOf(x, table, 0, x));
  EXPECT_FALSE(cs_ElementOf(x, table, -1, x));
  EXPECT_FALSE(cs_ElementOf(cs_createCSint(5, 9), table, 2, x));
}

}  // namespace
}  // namespace koru::test

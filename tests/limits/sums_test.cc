// SPDX-License-Identifier: MIT
// Sums and differences at the ends of the int range: what saturates, and what deliberately does not.
#include <climits>

#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

using SumLimitsTest = SolverTest;
using Bounds = std::pair<int, int>;

Bounds boundsOf(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

TEST_F(SumLimitsTest, ASumSaturatesAtBothEnds) {
  CSint *high = cs_Add(cs_createCSint(0, 2000000000), cs_createCSint(0, 2000000000));
  EXPECT_EQ(boundsOf(high), Bounds(0, INT_MAX));
  CSint *low = cs_Add(cs_createCSint(-2000000000, 0), cs_createCSint(-2000000000, 0));
  EXPECT_EQ(boundsOf(low), Bounds(INT_MIN, 0));
  EXPECT_EQ(cs_getValue(cs_Add(CSINT(INT_MAX), CSINT(INT_MAX))), INT_MAX);
  EXPECT_EQ(cs_getValue(cs_Add(CSINT(INT_MIN), CSINT(INT_MIN))), INT_MIN);
  EXPECT_EQ(cs_getValue(cs_Add(CSINT(INT_MIN), CSINT(INT_MAX))), -1);
}

TEST_F(SumLimitsTest, ADifferenceSaturatesAtBothEnds) {
  CSint *z = cs_Sub(cs_createCSint(-2000000000, 2000000000), cs_createCSint(-2000000000, 2000000000));
  EXPECT_EQ(boundsOf(z), Bounds(INT_MIN, INT_MAX));
  EXPECT_EQ(cs_getValue(cs_Sub(CSINT(INT_MAX), CSINT(-1))), INT_MAX);
  EXPECT_EQ(cs_getValue(cs_Sub(CSINT(INT_MIN), CSINT(1))), INT_MIN);
  EXPECT_EQ(cs_getValue(cs_Sub(CSINT(-1), CSINT(INT_MAX))), INT_MIN);
}

// Deliberate: the smallest int is its own negation.
TEST_F(SumLimitsTest, SubtractingTheSmallestIntAddsIt) {
  EXPECT_EQ(cs_getValue(cs_Sub(CSINT(0), CSINT(INT_MIN))), INT_MIN);
  EXPECT_EQ(cs_getValue(cs_Sub(CSINT(5), CSINT(INT_MIN))), INT_MIN + 5);
  EXPECT_EQ(cs_getValue(cs_Sub(CSINT(-1), CSINT(INT_MIN))), INT_MIN);
  EXPECT_EQ(cs_Sub(cs_createCSint(0, 10), cs_createCSint(INT_MIN, 0)), nullptr);  // 0 would be above INT_MIN + 10
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

// max s - min a is INT_MAX + 1, which wraps to INT_MIN, below everything b can be.
TEST_F(SumLimitsTest, TheBoundOfAnOperandWrapsWhenTheOthersMinimumIsRaised) {
  CSint *a = cs_createCSint(-5, 5);
  CSint *b = cs_createCSint(0, INT_MAX);
  CSint *s = cs_Add(a, b);
  ASSERT_EQ(boundsOf(s), Bounds(-5, INT_MAX));
  EXPECT_FALSE(cs_GE(a, -1));
}

TEST_F(SumLimitsTest, TheSameBoundIsRightAsLongAsItDoesNotWrap) {
  CSint *a = cs_createCSint(-5, 5);
  CSint *b = cs_createCSint(0, INT_MAX);
  CSint *s = cs_Add(a, b);
  ASSERT_TRUE(cs_GE(a, 2));
  EXPECT_EQ(boundsOf(s), Bounds(2, INT_MAX));
  EXPECT_EQ(boundsOf(b), Bounds(0, INT_MAX - 2));
}

TEST_F(SumLimitsTest, TheOtherRulesSaturate) {
  CSint *a = cs_createCSint(-5, 5);
  CSint *b = cs_createCSint(0, INT_MAX);
  CSint *s = cs_Add(a, b);
  ASSERT_TRUE(cs_LE(s, INT_MAX - 1));  // INT_MAX - 1 + 5 saturates, so b is left alone
  EXPECT_EQ(boundsOf(b), Bounds(0, INT_MAX));
  ASSERT_TRUE(cs_LE(a, 0));  // INT_MAX + 0 is no lower
  EXPECT_EQ(boundsOf(s), Bounds(-5, INT_MAX - 1));
}

TEST_F(SumLimitsTest, AHoleShiftedOutOfTheIntRangeIsSkipped) {
  CSint *y = fromValues({INT_MAX - 4, INT_MAX - 2, INT_MAX});
  CSint *z = cs_Add(CSINT(2), y);
  EXPECT_EQ(values(z), (std::vector{INT_MAX - 2, INT_MAX}));
  z = cs_Add(CSINT(3), y);  // the hole lands on the maximum, which stays
  EXPECT_EQ(values(z), (std::vector{INT_MAX - 1, INT_MAX}));
  EXPECT_EQ(cs_getNbElements(z), 2);
}

TEST_F(SumLimitsTest, SumsOfManyAreClampedAndPropagateByTheirTrueTotals) {
  CSint *a = cs_createCSint(INT_MIN, INT_MAX);
  CSint *b = cs_createCSint(INT_MIN, INT_MAX);
  CSint *c = cs_createCSint(INT_MIN, INT_MAX);
  CSint *s = cs_VAdd(3, a, b, c);
  EXPECT_EQ(boundsOf(s), Bounds(INT_MIN, INT_MAX));
  ASSERT_TRUE(cs_EQ(a, INT_MAX) && cs_EQ(b, INT_MAX));
  EXPECT_EQ(boundsOf(c), Bounds(INT_MIN, -INT_MAX));  // 2 * INT_MAX + c <= INT_MAX
  EXPECT_EQ(boundsOf(s), Bounds(INT_MAX - 1, INT_MAX));
  ASSERT_TRUE(cs_EQ(c, INT_MIN));
  EXPECT_EQ(cs_getValue(s), INT_MAX - 1);
}

// The clamped sum leaves addends with values that no total allows. A change narrows the others, not the addend itself.
TEST_F(SumLimitsTest, AnAddendIsNotNarrowedByItsOwnChange) {
  CSint *a = cs_createCSint(0, INT_MAX);
  CSint *s = cs_VAdd(2, a, cs_createCSint(5, 10));
  ASSERT_EQ(boundsOf(s), Bounds(5, INT_MAX));
  ASSERT_TRUE(cs_GE(a, 1));
  EXPECT_EQ(boundsOf(a), Bounds(1, INT_MAX));
  EXPECT_EQ(boundsOf(s), Bounds(6, INT_MAX));
  CSint *b = cs_createCSint(INT_MIN, 0);
  CSint *t = cs_VAdd(2, b, cs_createCSint(-10, -5));
  ASSERT_EQ(boundsOf(t), Bounds(INT_MIN, -5));
  ASSERT_TRUE(cs_LE(b, -1));
  EXPECT_EQ(boundsOf(b), Bounds(INT_MIN, -1));
  EXPECT_EQ(boundsOf(t), Bounds(INT_MIN, -6));
}

// The clamped sum of constants lies below the total: any change of an addend would fail, but none can change.
TEST_F(SumLimitsTest, ASumOfConstantsBeyondTheRangeIsTheEndOfTheRange) {
  EXPECT_EQ(cs_getValue(cs_VAdd(2, CSINT(INT_MAX), CSINT(INT_MAX))), INT_MAX);
  EXPECT_EQ(cs_getValue(cs_VAdd(3, CSINT(INT_MIN), CSINT(INT_MIN), CSINT(0))), INT_MIN);
  EXPECT_EQ(cs_getValue(cs_VSub(3, CSINT(INT_MIN), CSINT(INT_MAX), CSINT(1))), INT_MIN);
}

}  // namespace

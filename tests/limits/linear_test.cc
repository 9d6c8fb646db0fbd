// SPDX-License-Identifier: MIT
// Linear sums whose totals leave the int range, and those whose totals reach the ends of 64 bits. Meant to run under a
// sanitizer.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using Bounds = std::pair<int, int>;
Bounds bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

class LinearLimits : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    cs_setErrHandler(CS_ERR_OVERFLOW, noteOverflow, &overflows);
  }
  static void noteOverflow(CSint *vint, void *extra) {
    EXPECT_EQ(vint, nullptr);
    EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
    ++*static_cast<int *>(extra);
  }

  struct Term {
    int coefficient;
    int min;
    int max;
  };
  CSint *post(const std::vector<Term> &terms) {
    x.clear();
    c.clear();
    for (const Term &term : terms) {
      x.push_back(cs_createCSint(term.min, term.max));
      c.push_back(term.coefficient);
    }
    return cs_ScalProd(x.data(), c.data(), static_cast<int>(x.size()));
  }
  void expectPosted(const std::vector<Term> &terms, Bounds sum) {
    CSint *s = post(terms);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(bounds(s), sum);
    EXPECT_EQ(overflows, 0);
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  }
  void expectRefused(const std::vector<Term> &terms) {
    overflows = 0;
    cs_initErr();
    const int mark = solver::trail.count();
    EXPECT_EQ(post(terms), nullptr);
    EXPECT_EQ(overflows, 1);
    EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
    EXPECT_EQ(memoryReports, 0);
    EXPECT_EQ(solver::trail.count(), mark);
    for (CSint *v : x) EXPECT_EQ(cs_getNbConstraints(v), 0);
  }

  static constexpr Term kTwoTo62{INT_MIN, INT_MIN, INT_MIN};       // 2^62
  static constexpr Term kMinusTwoTo62{INT_MIN, INT_MAX, INT_MAX};  // -2^62 + 2^31
  static constexpr Term kMinusTwoTo32{-65536, 65536, 65536};       // -2^32

  int overflows = 0;
  std::vector<CSint *> x;
  std::vector<int> c;
};

TEST_F(LinearLimits, ASumIsClampedAtBothEndsOfTheIntRange) {
  expectPosted({{1, INT_MIN, INT_MAX}, {1, INT_MIN, INT_MAX}}, {INT_MIN, INT_MAX});
  expectPosted({{2, INT_MAX, INT_MAX}}, {INT_MAX, INT_MAX});
  expectPosted({{2, INT_MIN, INT_MIN}}, {INT_MIN, INT_MIN});
  expectPosted({{-1, INT_MIN, INT_MIN}}, {INT_MAX, INT_MAX});
  expectPosted({{INT_MIN, 1, 1}}, {INT_MIN, INT_MIN});
  expectPosted({{INT_MIN, -1, 1}}, {INT_MIN, INT_MAX});
  expectPosted({{INT_MAX, INT_MIN, INT_MAX}}, {INT_MIN, INT_MAX});
  expectPosted({{INT_MIN, INT_MIN, INT_MAX}}, {INT_MIN, INT_MAX});
}

TEST_F(LinearLimits, SigmaIsClampedAtBothEndsOfTheIntRange) {
  CSint *large[] = {CSINT(INT_MAX), CSINT(INT_MAX), CSINT(INT_MAX)};
  EXPECT_EQ(bounds(cs_Sigma(large, 3)), Bounds(INT_MAX, INT_MAX));
  CSint *small[] = {CSINT(INT_MIN), CSINT(INT_MIN), CSINT(INT_MIN)};
  EXPECT_EQ(bounds(cs_Sigma(small, 3)), Bounds(INT_MIN, INT_MIN));
  CSint *all[] = {cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(INT_MIN, INT_MAX)};
  EXPECT_EQ(bounds(cs_Sigma(all, 2)), Bounds(INT_MIN, INT_MAX));
}

// The rules go by the true totals: a sum that can only lie beyond the int range fails with the first change.
TEST_F(LinearLimits, ASumBeyondTheIntRangeFailsWithTheFirstChange) {
  CSint *a[] = {cs_createCSint(INT_MAX - 1, INT_MAX), cs_createCSint(1000, 1009)};
  ASSERT_EQ(bounds(cs_Sigma(a, 2)), Bounds(INT_MAX, INT_MAX));
  EXPECT_FALSE(cs_GE(a[1], 1001));
  ASSERT_NE(post({{2, INT_MAX - 9, INT_MAX}, {1, 0, 9}}), nullptr);
  EXPECT_FALSE(cs_LE(x[1], 8));
}

TEST_F(LinearLimits, TheRulesGoByTheTrueTotalsOfAClampedSum) {
  CSint *s = post({{3, 0, INT_MAX}, {-3, 0, INT_MAX}});
  EXPECT_EQ(bounds(s), Bounds(INT_MIN, INT_MAX));
  ASSERT_TRUE(cs_EQ(x[1], 0));
  EXPECT_EQ(bounds(x[0]), Bounds(0, INT_MAX / 3));
  EXPECT_EQ(bounds(s), Bounds(0, INT_MAX / 3 * 3));
}

TEST_F(LinearLimits, CoefficientsAndTermsAtTheLimitsOverflowNothing) {
  CSint *s = post({{INT_MIN, INT_MIN, INT_MAX}, {INT_MAX, INT_MIN, INT_MAX}});
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(bounds(s), Bounds(INT_MIN, INT_MAX));
  // 2^62 - (2^31 - 1) * 2^31 is 2^31, the least total with x = INT_MIN: one more than an int.
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(x[0], INT_MIN));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x[0], INT_MIN + 1));
  EXPECT_EQ(bounds(x[1]), Bounds(INT_MIN, INT_MIN + 1));
  EXPECT_EQ(bounds(s), Bounds(0, INT_MAX));
}

TEST_F(LinearLimits, ATotalOfTheLargest64BitNumberIsAccepted) {
  expectPosted({kTwoTo62, {-1, 1, 1}, kTwoTo62}, {INT_MAX, INT_MAX});
}
TEST_F(LinearLimits, ATotalAboveTheLargest64BitNumberIsRefused) {
  expectRefused({kTwoTo62, kTwoTo62});
  expectRefused({kTwoTo62, {-1, 1, 1}, kTwoTo62, {1, 0, 1}});
}
TEST_F(LinearLimits, ATotalOfTheSmallest64BitNumberIsAccepted) {
  expectPosted({kMinusTwoTo62, kMinusTwoTo62, kMinusTwoTo32}, {INT_MIN, INT_MIN});
}
TEST_F(LinearLimits, ATotalBelowTheSmallest64BitNumberIsRefused) {
  expectRefused({kMinusTwoTo62, kMinusTwoTo62, kMinusTwoTo32, {1, -1, 0}});
  expectRefused({kMinusTwoTo62, kMinusTwoTo62, kMinusTwoTo62});
}

// The totals are formed in the order of the array, and every partial one must fit.
TEST_F(LinearLimits, APartialTotalBeyond64BitsIsRefusedEvenWhenTheWholeWouldFit) {
  expectRefused({kTwoTo62, kTwoTo62, {-1, 1, 1}});
  expectRefused({kMinusTwoTo62, kMinusTwoTo62, kMinusTwoTo62, kTwoTo62});
}

TEST_F(LinearLimits, OneTotalBeyond64BitsIsEnough) {
  expectRefused({{INT_MIN, INT_MIN, 0}, {INT_MIN, INT_MIN, 0}});
  expectRefused({{INT_MIN, 0, INT_MAX}, {INT_MIN, 0, INT_MAX}, {INT_MIN, 0, INT_MAX}});
}

TEST_F(LinearLimits, TermsWithTheCoefficientZeroAddNothingToTheTotals) {
  expectPosted({{0, INT_MIN, INT_MIN}, {0, INT_MIN, INT_MAX}, {0, INT_MAX, INT_MAX}}, {0, 0});
}

TEST_F(LinearLimits, TheVariadicFormRefusesTheSameTotals) {
  CSint *v = CSINT(INT_MIN);
  EXPECT_EQ(cs_VScalProd(2, v, v, INT_MIN, INT_MIN), nullptr);
  EXPECT_EQ(overflows, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
  EXPECT_EQ(cs_getNbConstraints(v), 0);
}

// The low total is -2^63 here, so that its excess over a maximum of 0 has no opposite in 64 bits. No bound moves.
TEST_F(LinearLimits, AnExcessOfTheSmallest64BitNumberNarrowsNothing) {
  CSint *s = post({{INT_MIN, 0, INT_MAX}, {INT_MIN, 0, INT_MAX}, {-65536, 0, 65536}, {-1, -5, 0}});
  ASSERT_NE(s, nullptr);
  ASSERT_EQ(bounds(s), Bounds(INT_MIN, 5));
  ASSERT_TRUE(cs_LE(s, 0));
  EXPECT_EQ(bounds(s), Bounds(INT_MIN, 0));
  EXPECT_EQ(bounds(x[0]), Bounds(0, INT_MAX));
  EXPECT_EQ(bounds(x[1]), Bounds(0, INT_MAX));
  EXPECT_EQ(bounds(x[2]), Bounds(0, 65536));
  EXPECT_EQ(bounds(x[3]), Bounds(-5, 0));
}

TEST_F(LinearLimits, AnExcessOfTheSmallest64BitNumberLeavesInertTermsAlone) {
  CSint *s = post({{INT_MIN, 0, INT_MAX}, {INT_MIN, 0, INT_MAX}, {-65536, 0, 65536}, {-5, -1, 0}, {0, 0, 9}});
  ASSERT_NE(s, nullptr);
  ASSERT_TRUE(cs_LE(s, 0));
  EXPECT_EQ(bounds(x[4]), Bounds(0, 9));
}

// s >= INT_MIN then leaves one solution.
TEST_F(LinearLimits, AChangedTermAtAnExcessOfTheSmallest64BitNumberIsPassedOn) {
  CSint *s = post({{INT_MIN, 0, INT_MAX}, {INT_MIN, 0, INT_MAX}, {-65536, 0, 65536}, {-1, 0, 0}, {0, 0, 9}});
  ASSERT_NE(s, nullptr);
  ASSERT_EQ(bounds(s), Bounds(INT_MIN, 0));
  ASSERT_TRUE(cs_GE(x[0], 1));
  EXPECT_EQ(bounds(s), Bounds(INT_MIN, INT_MIN));
  EXPECT_EQ(values(x[0]), std::vector{1});
  EXPECT_EQ(values(x[1]), std::vector{0});
  EXPECT_EQ(values(x[2]), std::vector{0});
  EXPECT_EQ(bounds(x[4]), Bounds(0, 9));
}

}  // namespace

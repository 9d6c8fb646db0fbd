// SPDX-License-Identifier: MIT
// Products, quotients and absolute values at the ends of the int range. Meant to run under a sanitizer.
#include "support/twins/arithmetic.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using Bounds = std::pair<int, int>;
Bounds bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

constexpr int kEnds[] = {INT_MIN, INT_MIN + 1, -46341, -2, -1, 0, 1, 2, 46341, INT_MAX - 1, INT_MAX};

template <class Body>
void forAllIntervals(Body body) {
  for (const int low : kEnds)
    for (const int high : kEnds)
      if (low <= high) body(low, high);
}

class ArithmeticLimits : public SolverTest {
 protected:
  // What the solver holds grows with each posting; the loops below start anew for each operand.
  void restart() {
    cs_end();
    SetUp();
  }
};

TEST_F(ArithmeticLimits, ProductsOfAllExtremeIntervalsAreClampedCorners) {
  forAllIntervals([&](int xLow, int xHigh) {
    restart();
    forAllIntervals([&](int yLow, int yHigh) {
      CSint *z = cs_Mul(cs_createCSint(xLow, xHigh), cs_createCSint(yLow, yHigh));
      ASSERT_NE(z, nullptr);
      const auto wanted = twin::productOf(xLow, xHigh, yLow, yHigh);
      EXPECT_EQ(bounds(z), Bounds(static_cast<int>(wanted.low), static_cast<int>(wanted.high)))
          << xLow << ".." << xHigh << " * " << yLow << ".." << yHigh;
    });
  });
}

TEST_F(ArithmeticLimits, QuotientsOfAllExtremeIntervalsAreClampedCornersOrNull) {
  int missing = 0;
  forAllIntervals([&](int xLow, int xHigh) {
    restart();
    forAllIntervals([&](int yLow, int yHigh) {
      CSint *y = cs_createCSint(yLow, yHigh);
      CSint *z = cs_Div(cs_createCSint(xLow, xHigh), y);
      twin::Interval wanted{INT_MIN, INT_MAX};
      if (yLow > 0 || yHigh < 0) wanted = twin::quotientOf(xLow, xHigh, yLow, yHigh);
      const bool exists = wanted.low <= wanted.high && wanted.low <= INT_MAX;
      ASSERT_EQ(z != nullptr, exists) << xLow << ".." << xHigh << " / " << yLow << ".." << yHigh;
      if (!exists) {
        ++missing;
        EXPECT_EQ(cs_getNbConstraints(y), 0);
        return;
      }
      EXPECT_EQ(bounds(z), Bounds(static_cast<int>(wanted.low), static_cast<int>(twin::clamped(wanted.high))));
    });
  });
  EXPECT_GT(missing, 50);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(ArithmeticLimits, TheSmallestIntByMinusOneHasNoQuotient) {
  CSint *x = CSINT(INT_MIN);
  EXPECT_EQ(cs_Div(x, CSINT(-1)), nullptr);
  EXPECT_EQ(cs_VDiv(2, x, CSINT(-1)), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(memoryReports, 0);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

TEST_F(ArithmeticLimits, AQuotientBeyondTheLargestIntIsCutOff) {
  CSint *x = cs_createCSint(INT_MIN, INT_MIN + 1);
  CSint *z = cs_Div(x, CSINT(-1));
  ASSERT_NE(z, nullptr);
  EXPECT_EQ(values(z), std::vector{INT_MAX});
  EXPECT_TRUE(cs_EQ(x, INT_MIN + 1));
}

TEST_F(ArithmeticLimits, AFactorThatWouldHaveToBeBeyondTheLargestIntFails) {
  CSint *x = cs_createCSint(-1, 1);
  CSint *y = cs_createCSint(INT_MIN, INT_MAX);
  CSint *z = cs_Mul(x, y);
  EXPECT_EQ(bounds(z), Bounds(INT_MIN, INT_MAX));
  ASSERT_TRUE(cs_EQ(z, INT_MIN));
  EXPECT_FALSE(cs_EQ(x, -1));
}

TEST_F(ArithmeticLimits, AProductHeldAtTheEndOfTheIntRangeStandsForAllBeyond) {
  CSint *x = cs_createCSint(65536, 65540);
  CSint *y = cs_createCSint(65536, 65540);
  CSint *z = cs_Mul(x, y);
  EXPECT_EQ(values(z), std::vector{INT_MAX});
  EXPECT_EQ(cs_getNbConstraints(z), 1);
  CSint *w = cs_Mul(x, CSINT(-40000));
  EXPECT_EQ(values(w), std::vector{INT_MIN});
}

// Deliberate: the quotient rule reads the clamped product as the exact one.
TEST_F(ArithmeticLimits, AFactorOfAClampedProductIsReadFromTheClampedBound) {
  CSint *x = cs_createCSint(0, 65536);
  CSint *y = cs_createCSint(0, 65536);
  CSint *z = cs_Mul(x, y);
  EXPECT_EQ(bounds(z), Bounds(0, INT_MAX));
  ASSERT_TRUE(cs_EQ(x, 65536));
  EXPECT_EQ(bounds(y), Bounds(0, 32767));
  EXPECT_EQ(bounds(z), Bounds(0, 32767 * 65536));
}

TEST_F(ArithmeticLimits, ChainsOfLimitsStayWithinTheIntRange) {
  CSint *all = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_EQ(bounds(cs_VMul(3, all, all, all)), Bounds(INT_MIN, INT_MAX));
  EXPECT_EQ(bounds(cs_VMul(3, CSINT(INT_MIN), CSINT(INT_MIN), CSINT(INT_MIN))), Bounds(INT_MIN, INT_MIN));
  EXPECT_EQ(bounds(cs_VDiv(3, CSINT(INT_MIN), CSINT(2), CSINT(-1))), Bounds(1 << 30, 1 << 30));
  EXPECT_EQ(bounds(cs_VDiv(3, all, CSINT(INT_MIN), all)), Bounds(INT_MIN, INT_MAX));
}

TEST_F(ArithmeticLimits, TheSmallestIntHasNoAbsoluteValue) {
  CSint *x = CSINT(INT_MIN);
  EXPECT_EQ(cs_Abs(x), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

TEST_F(ArithmeticLimits, TheSmallestIntLeavesAnIntervalAtPosting) {
  CSint *all = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_EQ(bounds(cs_Abs(all)), Bounds(0, INT_MAX));
  EXPECT_EQ(bounds(all), Bounds(-INT_MAX, INT_MAX));
  CSint *low = cs_createCSint(INT_MIN, INT_MIN + 1);
  EXPECT_EQ(values(cs_Abs(low)), std::vector{INT_MAX});
  EXPECT_EQ(values(low), std::vector{-INT_MAX});
  CSint *negative = cs_createCSint(INT_MIN, -7);
  EXPECT_EQ(bounds(cs_Abs(negative)), Bounds(7, INT_MAX));
  EXPECT_EQ(bounds(negative), Bounds(-INT_MAX, -7));
}

TEST_F(ArithmeticLimits, TheSmallestIntLeavesADomainWithHolesAtPosting) {
  CSint *two = fromValues({INT_MIN, INT_MIN + 2});
  CSint *one = cs_Abs(two);
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(values(one), std::vector{INT_MAX - 1});
  EXPECT_TRUE(cs_isInstantiated(one));
  EXPECT_EQ(values(two), std::vector{INT_MIN + 2});
  CSint *z = cs_Abs(fromValues({INT_MIN, INT_MIN + 1, INT_MIN + 4}));
  EXPECT_EQ(values(z), (std::vector{INT_MAX - 3, INT_MAX}));
  EXPECT_EQ(cs_getNbElements(z), 2);
}

TEST_F(ArithmeticLimits, AbsoluteValuesAreNarrowedUpToTheLargestInt) {
  CSint *x = cs_createCSint(-3, INT_MAX);
  CSint *z = cs_Abs(x);
  ASSERT_TRUE(cs_GE(z, INT_MAX));
  EXPECT_EQ(values(x), std::vector{INT_MAX});
  CSint *y = cs_createCSint(INT_MIN, 3);
  CSint *w = cs_Abs(y);
  ASSERT_TRUE(cs_GE(w, INT_MAX));
  EXPECT_EQ(values(y), std::vector{-INT_MAX});
  CSint *all = cs_createCSint(INT_MIN, INT_MAX);
  CSint *u = cs_Abs(all);
  ASSERT_TRUE(cs_NEQ(all, -INT_MAX));
  EXPECT_EQ(bounds(u), Bounds(0, INT_MAX));
  ASSERT_TRUE(cs_NEQ(all, INT_MAX));
  EXPECT_EQ(bounds(u), Bounds(0, INT_MAX - 1));
  ASSERT_TRUE(cs_LE(u, 5));
  EXPECT_EQ(bounds(all), Bounds(-5, 5));
}

}  // namespace

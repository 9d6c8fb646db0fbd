// SPDX-License-Identifier: MIT
// Bounds of products and exact quotients, against enumeration and at the ends of the int range.
#include "constraints/arith/corner_bounds.h"

#include <numeric>

#include "support/kit/solver_test.h"
#include "support/twins/arithmetic.h"

namespace {

using namespace koru;
using namespace koru::test;

class CornerBoundsTest : public SolverTest {
 protected:
  using Interval = std::pair<std::int64_t, std::int64_t>;

  static Interval product(int aLow, int aHigh, int bLow, int bHigh) {
    const Bounds b = productBounds(cs_createCSint(aLow, aHigh), cs_createCSint(bLow, bHigh));
    return {b.low, b.high};
  }
  static Interval quotient(int nLow, int nHigh, int dLow, int dHigh) {
    const Bounds b = quotientBounds(cs_createCSint(nLow, nHigh), cs_createCSint(dLow, dHigh));
    return {b.low, b.high};
  }

  template <class Body>
  static void forIntervals(int low, int high, Body body) {
    for (int a = low; a <= high; ++a)
      for (int b = a; b <= high; ++b) body(a, b);
  }
};

TEST_F(CornerBoundsTest, AProductsBoundsAreItsSmallestAndGreatestValue) {
  forIntervals(-4, 4, [](int a1, int a2) {
    forIntervals(-4, 4, [&](int b1, int b2) {
      int low = 100;
      int high = -100;
      for (int a = a1; a <= a2; ++a)
        for (int b = b1; b <= b2; ++b) {
          low = std::min(low, a * b);
          high = std::max(high, a * b);
        }
      EXPECT_EQ(product(a1, a2, b1, b2), Interval(low, high)) << a1 << ".." << a2 << " * " << b1 << ".." << b2;
    });
  });
}

TEST_F(CornerBoundsTest, EachCornerIsClampedIntoTheIntRange) {
  EXPECT_EQ(product(INT_MIN, INT_MIN, INT_MIN, INT_MIN), Interval(INT_MAX, INT_MAX));
  EXPECT_EQ(product(INT_MIN, INT_MIN, -1, -1), Interval(INT_MAX, INT_MAX));
  EXPECT_EQ(product(INT_MIN, INT_MIN, 1, 1), Interval(INT_MIN, INT_MIN));
  EXPECT_EQ(product(INT_MIN, INT_MIN, 2, 2), Interval(INT_MIN, INT_MIN));
  EXPECT_EQ(product(INT_MIN, INT_MAX, INT_MIN, INT_MAX), Interval(INT_MIN, INT_MAX));
  EXPECT_EQ(product(46340, 46341, 46340, 46341), Interval(46340 * 46340, INT_MAX));
}

TEST_F(CornerBoundsTest, AnIntervalExcludesZeroByItsBounds) {
  EXPECT_TRUE(excludesZero(cs_createCSint(1, 5)));
  EXPECT_TRUE(excludesZero(cs_createCSint(-5, -1)));
  EXPECT_FALSE(excludesZero(cs_createCSint(0, 5)));
  EXPECT_FALSE(excludesZero(cs_createCSint(-5, 0)));
  EXPECT_FALSE(excludesZero(cs_createCSint(-5, 5)));
  EXPECT_FALSE(excludesZero(fromValues({-1, 1})));
}

TEST_F(CornerBoundsTest, AQuotientsBoundsAreTheCornersRoundedInwards) {
  EXPECT_EQ(quotient(1, 10, 3, 3), Interval(1, 3));
  EXPECT_EQ(quotient(8, 8, 2, 2), Interval(4, 4));
  EXPECT_EQ(quotient(-7, 7, 2, 2), Interval(-3, 3));
  EXPECT_EQ(quotient(-7, 7, -2, -2), Interval(-3, 3));
  EXPECT_EQ(quotient(5, 7, 2, 3), Interval(2, 3));
  EXPECT_EQ(quotient(-7, -5, 2, 3), Interval(-3, -2));
  EXPECT_EQ(quotient(0, 0, -3, -1), Interval(0, 0));
}

TEST_F(CornerBoundsTest, AQuotientWithoutValueHasItsBoundsTheWrongWayRound) {
  EXPECT_EQ(quotient(7, 7, 2, 2), Interval(4, 3));
  EXPECT_EQ(quotient(-7, -7, 2, 2), Interval(-3, -4));
  EXPECT_EQ(quotient(1, 1, -3, -2), Interval(0, -1));
  EXPECT_EQ(quotient(1, 2, 3, 3), Interval(1, 0));
}

TEST_F(CornerBoundsTest, NoExactQuotientLiesOutsideTheBounds) {
  const auto check = [](int n1, int n2, int d1, int d2) {
    const Interval b = quotient(n1, n2, d1, d2);
    const auto wanted = twin::quotientOf(n1, n2, d1, d2);
    EXPECT_TRUE(b.first == wanted.low && b.second == wanted.high) << n1 << ".." << n2 << " / " << d1 << ".." << d2;
    for (int n = n1; n <= n2; ++n)
      for (int d = d1; d <= d2; ++d)
        if (n % d == 0) {
          EXPECT_TRUE(b.first <= n / d && n / d <= b.second) << n << " / " << d;
        }
  };
  forIntervals(-6, 6, [&](int n1, int n2) {
    forIntervals(1, 4, [&](int d1, int d2) { check(n1, n2, d1, d2); });
    forIntervals(-4, -1, [&](int d1, int d2) { check(n1, n2, d1, d2); });
  });
}

TEST_F(CornerBoundsTest, TheSmallestIntByMinusOneIsComputedIn64Bits) {
  constexpr std::int64_t kBeyond = std::int64_t{INT_MAX} + 1;
  EXPECT_EQ(quotient(INT_MIN, INT_MIN, -1, -1), Interval(kBeyond, kBeyond));
  EXPECT_EQ(quotient(INT_MIN, INT_MIN + 1, -1, -1), Interval(INT_MAX, kBeyond));
  EXPECT_EQ(quotient(INT_MIN, INT_MAX, INT_MIN, -1), Interval(-INT_MAX, kBeyond));
  EXPECT_EQ(quotient(INT_MIN, INT_MAX, 1, INT_MAX), Interval(INT_MIN, INT_MAX));
  EXPECT_EQ(quotient(INT_MAX, INT_MAX, INT_MIN, INT_MIN), Interval(0, -1));
}

TEST_F(CornerBoundsTest, RoundedDivisionsRoundTowardsTheirName) {
  for (std::int64_t n = -9; n <= 9; ++n)
    for (const std::int64_t d : {-4, -3, -2, -1, 1, 2, 3, 4}) {
      const std::int64_t floor = floorDiv(n, d);
      const std::int64_t ceiling = ceilDiv(n, d);
      const std::int64_t sign = d > 0 ? 1 : -1;
      EXPECT_TRUE(floor * d * sign <= n * sign && n * sign < (floor + 1) * d * sign) << n << " / " << d;
      EXPECT_TRUE((ceiling - 1) * d * sign < n * sign && n * sign <= ceiling * d * sign) << n << " / " << d;
    }
}

}  // namespace

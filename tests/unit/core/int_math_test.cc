// SPDX-License-Identifier: MIT
#include "core/int_math.h"

#include <gtest/gtest.h>

namespace {

using namespace koru;

constexpr std::int64_t kWide = std::int64_t{1} << 40;
constexpr int kPoints[] = {kIntMin, kIntMin + 1, -1000, -1, 0, 1, 1000, kIntMax - 1, kIntMax};

TEST(IntMathTest, WrapKeepsTheLow32Bits) {
  EXPECT_EQ(wrap(0), 0);
  EXPECT_EQ(wrap(std::int64_t{kIntMax} + 1), kIntMin);
  EXPECT_EQ(wrap(std::int64_t{kIntMin} - 1), kIntMax);
  EXPECT_EQ(wrap(kWide + 5), 5);
  EXPECT_EQ(wrap(-kWide - 5), -5);
}

TEST(IntMathTest, WrappingArithmeticGoesRoundAtTheLimits) {
  EXPECT_EQ(wrapAdd(kIntMax, 1), kIntMin);
  EXPECT_EQ(wrapAdd(kIntMin, -1), kIntMax);
  EXPECT_EQ(wrapAdd(2, 3), 5);
  EXPECT_EQ(wrapSub(kIntMin, 1), kIntMax);
  EXPECT_EQ(wrapSub(kIntMax, -1), kIntMin);
  EXPECT_EQ(wrapSub(2, 3), -1);
  EXPECT_EQ(wrapNeg(kIntMin), kIntMin);
  EXPECT_EQ(wrapNeg(kIntMax), kIntMin + 1);
  EXPECT_EQ(wrapNeg(7), -7);
}

TEST(IntMathTest, WrappingArithmeticOf64BitsGoesRoundAtTheLimits) {
  constexpr auto low = std::numeric_limits<std::int64_t>::min();
  constexpr auto high = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(wrapAdd64(high, 1), low);
  EXPECT_EQ(wrapAdd64(low, -1), high);
  EXPECT_EQ(wrapSub64(low, 1), high);
  EXPECT_EQ(wrapSub64(0, low), low);
  EXPECT_EQ(wrapMul64(high, 2), -2);
  EXPECT_EQ(wrapMul64(low, -1), low);
  for (const int p : kPoints) {
    for (const int q : kPoints) {
      EXPECT_EQ(wrapAdd64(p, q), std::int64_t{p} + q);
      EXPECT_EQ(wrapSub64(p, q), std::int64_t{p} - q);
      EXPECT_EQ(wrapMul64(p, q), std::int64_t{p} * q);
    }
  }
}

TEST(IntMathTest, ClampStopsAtTheLimits) {
  EXPECT_EQ(clampToInt(kWide), kIntMax);
  EXPECT_EQ(clampToInt(-kWide), kIntMin);
  EXPECT_EQ(clampToInt(std::int64_t{kIntMax} + 1), kIntMax);
  EXPECT_EQ(clampToInt(kIntMax), kIntMax);
  EXPECT_EQ(clampToInt(kIntMin), kIntMin);
  EXPECT_EQ(clampToInt(-12), -12);
}

TEST(IntMathTest, SaturatingSumsStopAtTheLimits) {
  for (const int p : kPoints)
    for (const int q : kPoints) EXPECT_EQ(satAdd(p, q), clampToInt(std::int64_t{p} + q)) << p << " + " << q;
  EXPECT_EQ(satAdd(kIntMax, kIntMax), kIntMax);
  EXPECT_EQ(satAdd(kIntMin, -1), kIntMin);
}

TEST(IntMathTest, SaturatingDifferencesStopAtTheLimits) {
  EXPECT_EQ(satSub(kIntMax, -1), kIntMax);
  EXPECT_EQ(satSub(kIntMin, 1), kIntMin);
  EXPECT_EQ(satSub(3, 5), -2);
  for (const int p : kPoints)
    for (const int q : kPoints)
      if (q != kIntMin) {
        EXPECT_EQ(satSub(p, q), clampToInt(std::int64_t{p} - q)) << p << " - " << q;
      }
}

TEST(IntMathTest, ADifferenceFromTheSmallestIntAddsItBecauseItsNegationWraps) {
  EXPECT_EQ(satSub(5, kIntMin), kIntMin + 5);
  EXPECT_EQ(satSub(-5, kIntMin), kIntMin);
  EXPECT_EQ(satSub(kIntMax, kIntMin), -1);
}

TEST(IntMathTest, DistancesOfAnyTwoIntsFit) {
  EXPECT_EQ(distance(3, 3), 0U);
  EXPECT_EQ(distance(-2, 3), 5U);
  EXPECT_EQ(distance(kIntMin, kIntMax), 0xffffffffU);
  EXPECT_EQ(distance(kIntMin, 0), 0x80000000U);
}

TEST(IntMathTest, RangeSizesWrapWhenTheyDoNotFit) {
  EXPECT_EQ(rangeSize(4, 4), 1);
  EXPECT_EQ(rangeSize(-3, 3), 7);
  EXPECT_EQ(rangeSize(1, kIntMax), kIntMax);
  EXPECT_EQ(rangeSize(0, kIntMax), kIntMin);
  EXPECT_EQ(rangeSize(kIntMin, kIntMax), 0);
  EXPECT_EQ(rangeSize(5, 4), 0);
}

TEST(IntMathTest, SaturatingDifferencesOf64BitsCanBeNegated) {
  constexpr auto kLow = std::numeric_limits<std::int64_t>::min();
  constexpr auto kHigh = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(satSub64(5, 7), -2);
  EXPECT_EQ(satSub64(kHigh, 0), kHigh);
  EXPECT_EQ(satSub64(kHigh, -1), kHigh);
  EXPECT_EQ(satSub64(kHigh - 1, -1), kHigh);
  EXPECT_EQ(satSub64(kLow, 0), -kHigh);
  EXPECT_EQ(satSub64(kLow, 1), -kHigh);
  EXPECT_EQ(satSub64(kLow, -1), -kHigh);
  EXPECT_EQ(satSub64(kLow + 2, 1), -kHigh);
}

TEST(IntMathTest, A64BitSumIsAddedToOnlyWhereItFits) {
  constexpr auto kLow = std::numeric_limits<std::int64_t>::min();
  constexpr auto kHigh = std::numeric_limits<std::int64_t>::max();
  std::int64_t sum = kHigh - 1;
  EXPECT_TRUE(addWithin64(sum, 1));
  EXPECT_EQ(sum, kHigh);
  EXPECT_FALSE(addWithin64(sum, 1));
  EXPECT_EQ(sum, kHigh);
  EXPECT_TRUE(addWithin64(sum, kLow));
  EXPECT_EQ(sum, -1);
  EXPECT_TRUE(addWithin64(sum, -kHigh));
  EXPECT_FALSE(addWithin64(sum, -1));
  EXPECT_EQ(sum, kLow);
}

}  // namespace

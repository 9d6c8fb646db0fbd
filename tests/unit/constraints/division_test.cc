// SPDX-License-Identifier: MIT
// cs_DivTrunc, cs_Mod and cs_Pow where the operands have more pairs of values than are looked at.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <random>
#include <vector>

#include "koru_extras.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;
using Post = bool (*)(CSint *, CSint *, CSint *);
using Compute = bool (*)(long long x, long long y, long long &z);

bool quotient(long long x, long long y, long long &z) {
  if (y == 0) return false;
  z = x / y;
  return true;
}

bool rest(long long x, long long y, long long &z) {
  if (y == 0) return false;
  z = x - x / y * y;
  return true;
}

// Unlike the library's, by steps that end where the result is no int.
bool power(long long x, long long y, long long &z) {
  if (y < 0) {
    z = x == 1 ? 1 : x == -1 ? (y % 2 == 0 ? 1 : -1) : 0;
    return x != 0;
  }
  z = 1;
  if (std::llabs(x) <= 1) y = y % 2 == 0 ? (y == 0 ? 0 : 2) : 1;
  for (; y > 0 && std::llabs(z) <= (1LL << 32); --y) z *= x;
  return z >= INT_MIN && z <= INT_MAX;
}

using DivisionTest = SolverTest;

struct Range {
  int low;
  int high;

  bool holds(long long value) const { return low <= value && value <= high; }
};

Range someRange(std::mt19937 &random, int least, int most, int width) {
  const int low = std::uniform_int_distribution(least, most)(random);
  return {low, low + std::uniform_int_distribution(0, width)(random)};
}

// The solutions within three ranges, as the ranges that they span; false when there is none.
bool span(Compute f, const Range (&r)[3], Range (&out)[3]) {
  bool any = false;
  for (int x = r[0].low; x <= r[0].high; ++x) {
    for (int y = r[1].low; y <= r[1].high; ++y) {
      long long z;
      if (!f(x, y, z) || !r[2].holds(z)) continue;
      const int at[] = {x, y, static_cast<int>(z)};
      for (int i = 0; i < 3; ++i)
        out[i] = any ? Range{std::min(out[i].low, at[i]), std::max(out[i].high, at[i])} : Range{at[i], at[i]};
      any = true;
    }
  }
  return any;
}

struct Operation {
  const char *name;
  Post post;
  Compute compute;
  int mostExponent;  // or divisor
  int width;         // of results
  int tight;         // of 6000 bounds, as found
};

const Operation kOperations[] = {{"DivTrunc", cs_DivTrunc, quotient, 90, 40, 6000},
                                 {"Mod", cs_Mod, rest, 90, 40, 5900},
                                 {"Pow", cs_Pow, power, 36, 100000, 6000}};

// How many of the bounds are as tight as can be; none is tighter.
int tightBounds(const Operation &op, std::mt19937 &random) {
  const Range r[] = {someRange(random, -150, 120, 150), someRange(random, -30, op.mostExponent, 60),
                     someRange(random, -op.width, op.width, op.width)};
  Range exact[3];
  const bool any = span(op.compute, r, exact);
  CSint *v[3];
  for (int i = 0; i < 3; ++i) v[i] = cs_createCSint(r[i].low, r[i].high);
  const bool posted = op.post(v[0], v[1], v[2]);
  EXPECT_TRUE(posted || !any) << op.name << ": a solution was refused";
  if (!posted) return 6;
  int tight = 0;
  for (int i = 0; any && i < 3; ++i) {
    EXPECT_LE(cs_getMin(v[i]), exact[i].low) << op.name << " of " << r[0].low << ".." << r[0].high;
    EXPECT_GE(cs_getMax(v[i]), exact[i].high) << op.name << " of " << r[0].low << ".." << r[0].high;
    tight += (cs_getMin(v[i]) == exact[i].low) + (cs_getMax(v[i]) == exact[i].high);
  }
  return tight;
}

TEST_F(DivisionTest, BoundsKeepAllSolutionsAndLoseNearlyAllTheRest) {
  std::mt19937 random{1};
  for (const Operation &op : kOperations) {
    int tight = 0;
    for (int i = 0; i < 1000; ++i) {
      tight += tightBounds(op, random);
      cs_end();
      cs_init();
    }
    EXPECT_GE(tight, op.tight) << op.name;
  }
}

// Around 0 and at both ends of the ints, with holes: what has a partner is left, and nothing else.
TEST_F(DivisionTest, ByAConstantWhatHasAPartnerIsLeft) {
  std::mt19937 random{1};
  const auto subset = [&](long long from, long long to) {
    std::vector<int> some;
    for (long long value = from; value <= to; ++value)
      if (random() % 3 != 0) some.push_back(static_cast<int>(value));
    return some;
  };
  for (int i = 0; i < 3000 && !HasFailure(); ++i) {
    const int y = 1 + static_cast<int>(random() % 9);
    const int from = i % 3 == 0 ? INT_MIN : i % 3 == 1 ? INT_MAX - 30 : -15;
    const std::vector<int> xs = subset(from, from + 30LL);
    const std::vector<int> zs =
        subset(std::max<long long>(INT_MIN, from / y - 3LL), std::min<long long>(INT_MAX, from / y + 33LL / y));
    std::vector<int> leftOfX, leftOfZ;
    for (const int x : xs)
      if (std::ranges::count(zs, x / y) > 0) leftOfX.push_back(x);
    for (const int z : zs)
      if (std::ranges::any_of(xs, [&](int x) { return x / y == z; })) leftOfZ.push_back(z);
    CSint *x = fromValues(xs), *z = fromValues(zs);
    ASSERT_EQ(cs_DivTrunc(x, CSINT(y), z), !leftOfX.empty());
    if (leftOfX.empty()) continue;
    EXPECT_EQ(values(x), leftOfX);
    EXPECT_EQ(values(z), leftOfZ);
  }
}

TEST_F(DivisionTest, ByAConstantNothingIsLeftWhereNoNumeratorHasAQuotient) {
  CSint *two = CSINT(2);
  EXPECT_FALSE(cs_DivTrunc(cs_createCSint(0, 9), two, cs_createCSint(5, 9)));
  EXPECT_FALSE(cs_DivTrunc(cs_createCSint(0, 9), two, cs_createCSint(-9, -1)));
  const int ends[] = {0, 1, 8, 9};
  CSint *x = cs_createCSintFromDomain(ends, 4);
  CSint *z = cs_createCSint(0, 4);
  for (const int inside : {1, 2, 3}) ASSERT_TRUE(cs_NEQ(z, inside));
  ASSERT_TRUE(cs_NEQ(x, 0) && cs_NEQ(x, 1));
  EXPECT_TRUE(cs_DivTrunc(x, two, z));
  EXPECT_EQ(values(z), (Values{4}));
  EXPECT_FALSE(cs_DivTrunc(cs_createCSintFromDomain(ends, 4), two, cs_createCSint(1, 3)));
}

TEST_F(DivisionTest, ByAConstantItFailsWithoutMemoryForHoles) {
  const int few[] = {0, 9, 19};
  for (int k = 0; k == 0 || FailingAllocator::failures() > 0; ++k) {
    cs_saveContext();
    CSint *x = cs_createCSint(0, 199);
    CSint *y = CSINT(10);
    CSint *z = cs_createCSintFromDomain(few, 3);
    bool posted = false;
    {
      const FailingAllocator failing(k, Failing::kOnce);
      posted = cs_DivTrunc(x, y, z);
    }
    EXPECT_EQ(posted, FailingAllocator::failures() == 0) << k;
    if (posted) {
      EXPECT_EQ(cs_getNbElements(x), 30);
    }
    cs_restoreContext();
  }
  expectSolverUsable();
}

TEST_F(DivisionTest, WideOperandsAndResultsAtTheEndsOfTheInts) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  CSint *y = cs_createCSint(INT_MIN, INT_MAX);
  CSint *z = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_TRUE(cs_DivTrunc(x, y, z));
  EXPECT_TRUE(cs_EQ(x, INT_MIN) && cs_LE(y, -1) && cs_GE(z, 1 << 30));
  EXPECT_EQ(cs_getValue(y), -2) << "2^31 is no int";
  EXPECT_EQ(cs_getValue(z), 1 << 30);
}

TEST_F(DivisionTest, APowerBeyondTheIntsIsNone) {
  CSint *x = cs_createCSint(-100000, 100000);
  CSint *y = cs_createCSint(2, 100);
  CSint *z = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_TRUE(cs_Pow(x, y, z));
  EXPECT_EQ(cs_getMax(x), 46340);
  EXPECT_EQ(cs_getMax(z), 46340 * 46340);
  EXPECT_EQ(cs_getMin(z), INT_MIN);
  cs_saveContext();
  EXPECT_TRUE(cs_LT(z, -1));
  EXPECT_EQ(cs_getMax(y), 31) << "of -2";
  cs_restoreContext();
  EXPECT_TRUE(cs_GT(z, 1));
  EXPECT_EQ(cs_getMax(y), 30);
  EXPECT_TRUE(cs_EQ(z, 1024) && cs_GE(y, 10));
  EXPECT_EQ(values(x), (Values{-2, 2}));
  EXPECT_EQ(cs_getValue(y), 10);
}

TEST_F(DivisionTest, PowersOfOneAndMinusOneHaveAnyExponent) {
  CSint *x = cs_createCSint(-1, 1);
  CSint *y = cs_createCSint(INT_MIN, INT_MAX);
  CSint *z = cs_createCSint(-5, 5);
  EXPECT_TRUE(cs_Pow(x, y, z));
  EXPECT_EQ(values(z), (Values{-1, 0, 1}));
  EXPECT_TRUE(cs_EQ(y, INT_MIN));
  EXPECT_EQ(values(x), (Values{-1, 1}));
  EXPECT_EQ(cs_getValue(z), 1);
  CSint *base = cs_createCSint(-3000, 3000);
  CSint *exponent = cs_createCSint(INT_MIN, INT_MIN);
  CSint *result = cs_createCSint(0, 0);
  EXPECT_TRUE(cs_Pow(base, exponent, result));
  EXPECT_TRUE(cs_GE(base, -1) && cs_LE(base, 3000));
  EXPECT_EQ(cs_getMin(base), 2);
  EXPECT_FALSE(cs_LE(base, 1));
}

TEST_F(DivisionTest, ANegativeExponentLeavesOneZeroOrNothing) {
  CSint *x = cs_createCSint(0, 3000);
  CSint *y = cs_createCSint(-9, -1);
  CSint *z = cs_createCSint(-7, 7);
  EXPECT_TRUE(cs_Pow(x, y, z));
  EXPECT_EQ(cs_getMin(x), 1);
  EXPECT_EQ(cs_getMin(z), 0);
  EXPECT_EQ(cs_getMax(z), 1);
  EXPECT_TRUE(cs_EQ(z, 1));
  EXPECT_EQ(cs_getValue(x), 1);
}

TEST_F(DivisionTest, TheSameVariableInSeveralPlaces) {
  CSint *x = cs_createCSint(-3, 4);
  CSint *one = cs_createCSint(-9, 9);
  EXPECT_TRUE(cs_DivTrunc(x, x, one));
  EXPECT_EQ(cs_getValue(one), 1);
  EXPECT_FALSE(cs_isIn(x, 0));
  CSint *y = cs_createCSint(-3, 4);
  CSint *any = cs_createCSint(-3, 4);
  EXPECT_FALSE(cs_Mod(y, any, any)) << "a rest is less than its divisor";
  CSint *z = cs_createCSint(0, 5);
  EXPECT_TRUE(cs_Pow(z, z, any));
  EXPECT_EQ(values(z), (Values{0, 1, 2}));
  EXPECT_EQ(values(any), (Values{1, 4}));
}

TEST_F(DivisionTest, NullsAreRefused) {
  CSint *x = cs_createCSint(1, 2);
  for (const Post post : {cs_DivTrunc, cs_Mod, cs_Pow}) {
    EXPECT_FALSE(post(nullptr, x, x));
    EXPECT_FALSE(post(x, nullptr, x));
    EXPECT_FALSE(post(x, x, nullptr));
  }
}

}  // namespace
}  // namespace koru::test

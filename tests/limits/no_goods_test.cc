// SPDX-License-Identifier: MIT
// No-goods at the ends of the int range, many of them, and long ones.
#include <climits>

#include "support/no_goods/restart_test.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

class NoGoodLimitsTest : public SolverTest {
 protected:
  void make(int min, int max) {
    for (CSint *&v : x) v = cs_createCSint(min, max);
    set = cs_createNoGoodSet(x, 2, nullptr, 0, nullptr, nullptr);
    ASSERT_NE(set, nullptr);
  }
  // What x[1] keeps when x[0] is bound to 0 and {x[0] = 0, last} is a no-good.
  std::pair<int, int> leftBy(const Literal &last) {
    add(set, {eq(0, 0), last});
    const int label = cs_saveContext();
    EXPECT_TRUE(cs_EQ(x[0], 0)) << last;
    const std::pair<int, int> result{cs_getMin(x[1]), cs_getMax(x[1])};
    cs_restoreContextUntil(label);
    cs_filterNoGood(set, [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return false; });
    return result;
  }

  using Bounds = std::pair<int, int>;
  CSint *x[2] = {};
  CSnoGoodSet *set = nullptr;
};

TEST_F(NoGoodLimitsTest, NegationsAtTheEndsOfTheIntRangeDoNotWrap) {
  make(INT_MIN, INT_MAX);
  EXPECT_EQ(leftBy(le(1, INT_MAX - 1)), Bounds(INT_MAX, INT_MAX));
  EXPECT_EQ(leftBy(lt(1, INT_MAX)), Bounds(INT_MAX, INT_MAX));
  EXPECT_EQ(leftBy(ge(1, INT_MIN + 1)), Bounds(INT_MIN, INT_MIN));
  EXPECT_EQ(leftBy(gt(1, INT_MIN)), Bounds(INT_MIN, INT_MIN));
  EXPECT_EQ(leftBy(le(1, INT_MIN)), Bounds(INT_MIN + 1, INT_MAX));
  EXPECT_EQ(leftBy(ge(1, INT_MAX)), Bounds(INT_MIN, INT_MAX - 1));
}

TEST_F(NoGoodLimitsTest, DecisionsThatNoIntSatisfiesForbidNothing) {
  make(INT_MIN, INT_MAX);
  EXPECT_EQ(leftBy(lt(1, INT_MIN)), Bounds(INT_MIN, INT_MAX));
  EXPECT_EQ(leftBy(gt(1, INT_MAX)), Bounds(INT_MIN, INT_MAX));
}

TEST_F(NoGoodLimitsTest, DecisionsThatEveryIntSatisfiesFail) {
  make(INT_MIN, INT_MAX);
  for (const Literal &always : {le(1, INT_MAX), ge(1, INT_MIN)}) {
    add(set, {eq(0, 0), always});
    cs_saveContext();
    EXPECT_FALSE(cs_EQ(x[0], 0));
    cs_restoreContext();
    cs_filterNoGood(set, [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return false; });
  }
}

TEST_F(NoGoodLimitsTest, EqualitiesWithTheEndsAreTakenAway) {
  make(INT_MAX - 1, INT_MAX);
  add(set, {eq(0, INT_MAX), eq(1, INT_MAX)});
  add(set, {eq(0, INT_MAX - 1), neq(1, INT_MAX)});
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], INT_MAX));
  EXPECT_EQ(cs_getMax(x[1]), INT_MAX - 1);
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x[0], INT_MAX - 1));
  EXPECT_EQ(cs_getMin(x[1]), INT_MAX);
}

class ManyNoGoodsTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    solver::checked.period = solver::checked.untilNext = 20000;
  }
  void TearDown() override {
    SolverTest::TearDown();
    solver::checked.period = solver::checked.untilNext = 1;
  }
};

TEST_F(ManyNoGoodsTest, ALongNoGoodActsOnItsLastElement) {
  constexpr int kMany = 4000;
  CSint **x = cs_createCSintArray(kMany, 0, 1);
  CSnoGoodSet *set = cs_createNoGoodSet(x, kMany, nullptr, 0, nullptr, nullptr);
  Literals all;
  for (int i = 0; i < kMany; ++i) all.push_back(eq(i, 1));
  add(set, all);
  for (int i = 0; i < kMany - 1; ++i) ASSERT_TRUE(cs_EQ(x[i], 1));
  EXPECT_EQ(values(x[kMany - 1]), std::vector{0});
}

TEST_F(ManyNoGoodsTest, OneChangeMayMoveTheWatchesOfManyNoGoods) {
  constexpr int kMany = 2000;
  CSint **x = cs_createCSintArray(3, 0, kMany);
  CSnoGoodSet *set = cs_createNoGoodSet(x, 3, nullptr, 0, nullptr, nullptr);
  for (int value = 1; value <= kMany; ++value) add(set, {eq(0, 1), eq(1, 0), eq(2, value)});
  ASSERT_TRUE(cs_EQ(x[0], 1));
  expectSound(set);
  ASSERT_TRUE(cs_EQ(x[1], 0));
  EXPECT_EQ(values(x[2]), std::vector{0});
  EXPECT_EQ(cs_getNbNoGoods(set), kMany);
}

class DeepRestartTest : public RestartTest {};

// The total is reached, so nothing is shortened.
TEST_F(DeepRestartTest, APathOfThousandsOfLevelsIsRecorded) {
  constexpr int kDeep = 1500;
  solver::checked.period = solver::checked.untilNext = 20000;
  make(std::vector<int>(kDeep, 2));
  refuse(kDeep - 1, [](int) { return false; });
  EXPECT_FALSE(search({1}, 1));
  cs_restoreAll();
  solver::checked.period = solver::checked.untilNext = 1;
  const std::vector<Literals> learnt = contents(set);
  ASSERT_EQ(learnt.size(), 1U);
  EXPECT_EQ(std::ssize(learnt[0]), kDeep);
}

}  // namespace

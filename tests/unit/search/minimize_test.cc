// SPDX-License-Identifier: MIT
// cs_minimize on trees small enough to count by hand: what found sees, what is counted, what is left behind.
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class MinimizeTest : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    costs.clear();
    onCost = nullptr;
  }

  // cost = start - x - y
  void makeCost(int xSize, int ySize, int start) {
    makeXy(xSize, ySize);
    cost = cs_VScalProd(3, CSINT(start), xy[0], xy[1], 1, -1, -1);
    ASSERT_NE(cost, nullptr);
  }

  static void found(CSint **, int, CSint *found) {
    costs.push_back(cs_getValue(found));
    if (onCost) onCost();
  }

  static inline std::vector<int> costs;
  static inline std::function<void()> onCost;
  CSint *cost = nullptr;
};

TEST_F(MinimizeTest, EveryImprovingSolutionIsFoundInTheOrderTheSearchMeetsThem) {
  CSint *x = cs_createCSint(0, 2);
  cost = cs_VScalProd(2, x, CSINT(7), -2, 1);
  EXPECT_TRUE(cs_minimize(&x, 1, select, cost, found));
  EXPECT_EQ(costs, (std::vector{7, 5, 3}));
}

// By x: 5, 8, 5, 2, 3.
TEST_F(MinimizeTest, SolutionsThatAreNoBetterAreNotFound) {
  CSint *array[] = {cs_createCSint(0, 4), cs_createCSint(0, 9)};
  const int costOf[] = {5, 8, 5, 2, 3};
  for (int x = 0; x < 5; ++x)
    for (int c = 0; c < 10; ++c) ASSERT_TRUE(c == costOf[x] || cs_IfNeq(array[0], array[1], x, c));
  EXPECT_TRUE(cs_minimize(array, 1, select, array[1], found));
  EXPECT_EQ(costs, (std::vector{5, 2}));
}

TEST_F(MinimizeTest, WithoutASolutionItIsFalseAndItsContextStaysOpen) {
  makeCost(2, 3, 9);
  refuseY(never);
  EXPECT_FALSE(cs_minimize(xy, 2, select, cost, found));
  EXPECT_TRUE(costs.empty());
  expectCounters(8, 6);
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1, 2}));
  EXPECT_EQ(values(cost), (std::vector{6, 7, 8, 9}));
}

// x = 0: y = 0 refused, y = 1 costs 3. Below 3 y is not 0: x = 0 makes y 2, which costs 2. Below 2 only x = 1, y = 2
// are left, so the third solution needs no choice.
TEST_F(MinimizeTest, TheCountersAreThoseOfAllPasses) {
  makeCost(2, 3, 4);
  refuseY([](int value) { return value != 0; });
  EXPECT_TRUE(cs_minimize(xy, 2, select, cost, found));
  EXPECT_EQ(costs, (std::vector{3, 2, 1}));
  expectCounters(2 + 1 + 1, 1);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(MinimizeTest, EverySearchStartsItsCountersAnew) {
  makeCost(2, 3, 4);
  EXPECT_TRUE(cs_search(xy, 2, select));
  cs_restoreAll();
  cs_cancelSearch();
  EXPECT_TRUE(cs_minimize(xy, 0, select, cost, nullptr));
  expectCounters(0, 0);
}

TEST_F(MinimizeTest, FoundIsCalledWithTheSolutionInPlace) {
  makeCost(2, 2, 5);
  static CSint **array;
  static CSint *expected;
  static int calls;
  array = xy;
  expected = cost;
  calls = 0;
  EXPECT_TRUE(cs_minimize(xy, 2, select, cost, [](CSint **a, int size, CSint *c) {
    EXPECT_EQ(a, array);
    EXPECT_EQ(size, 2);
    EXPECT_EQ(c, expected);
    EXPECT_EQ(cs_getValue(c), 5 - cs_getValue(a[0]) - cs_getValue(a[1]));
    ++calls;
  }));
  EXPECT_EQ(calls, 3);
}

TEST_F(MinimizeTest, FoundMayBeNull) {
  makeCost(2, 2, 5);
  EXPECT_TRUE(cs_minimize(xy, 2, select, cost, nullptr));
  EXPECT_EQ(cs_getMax(cost), 3);
}

// y = 0 costs 3 and 2. Below 2 y would have to be 1, which is refused as soon as the bound is imposed.
TEST_F(MinimizeTest, TheBoundsOnTheCostStayAndTheChoicesDoNot) {
  makeCost(2, 2, 3);
  refuseY([](int value) { return value == 0; });
  CSint *yx[] = {xy[1], xy[0]};
  cs_saveContext();
  EXPECT_TRUE(cs_minimize(yx, 2, select, cost, found));
  EXPECT_EQ(costs, (std::vector{3, 2}));
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(cs_getMax(cost), 1);
}

TEST_F(MinimizeTest, TheCostIsItsMinimumWhereASolutionLeavesItFree) {
  makeXy(2, 2);
  static std::vector<int> minima;
  minima.clear();
  cost = cs_createCSint(3, 9);
  EXPECT_TRUE(cs_minimize(xy, 2, select, cost, [](CSint **, int, CSint *c) { minima.push_back(cs_getMin(c)); }));
  EXPECT_EQ(minima, std::vector{3});
}

TEST_F(MinimizeTest, ContextsThatWereOpenBeforeAreUntouched) {
  makeCost(2, 2, 5);
  EXPECT_EQ(cs_saveContext(), 1);
  ASSERT_TRUE(cs_LE(xy[0], 0));
  EXPECT_EQ(cs_saveContext(), 2);
  EXPECT_TRUE(cs_minimize(xy, 2, select, cost, found));
  EXPECT_EQ(costs, (std::vector{5, 4}));
  EXPECT_EQ(openContexts(), 2);
  cs_restoreContext();
  EXPECT_EQ(values(cost), (std::vector{4, 5}));
  cs_restoreContext();
  EXPECT_EQ(values(cost), (std::vector{3, 4, 5}));
}

TEST_F(MinimizeTest, CancellingInTheFirstPassFindsNothingAndLeavesItsContexts) {
  makeCost(2, 2, 5);
  onSelection = [](int) { cs_cancelSearch(); };
  EXPECT_FALSE(cs_minimize(xy, 2, select, cost, found));
  EXPECT_TRUE(costs.empty());
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 2);
}

// The next pass counts the value that it then does not try.
TEST_F(MinimizeTest, CancellingInFoundStopsTheNextPassAtItsFirstValue) {
  makeCost(2, 2, 5);
  onCost = cs_cancelSearch;
  EXPECT_TRUE(cs_minimize(xy, 2, select, cost, found));
  EXPECT_EQ(costs, std::vector{5});
  expectCounters(2 + 1, 0);
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(cs_getMax(cost), 4);
}

TEST_F(MinimizeTest, ASearchInFoundStartsTheCountersAnew) {
  CSint *x = cs_createCSint(0, 1);
  CSint *u = cs_createCSint(0, 2);
  cost = cs_Sub(CSINT(1), x);
  onCost = [&u] {
    EXPECT_TRUE(cs_search(&u, 1, cs_findFreeVar));
    cs_restoreContext();
  };
  EXPECT_TRUE(cs_minimize(&x, 1, select, cost, found));
  EXPECT_EQ(costs, (std::vector{1, 0}));
  expectCounters(1, 0);
}

TEST_F(MinimizeTest, TheCostMayBeOneOfTheVariables) {
  makeXy(3, 3);
  ASSERT_TRUE(cs_Gt(xy[1], xy[0]));
  EXPECT_TRUE(cs_minimize(xy, 2, select, xy[1], found));
  EXPECT_EQ(costs, std::vector{1});
}

TEST_F(MinimizeTest, NothingIsLookedForBelowTheSmallestInt) {
  CSint *x = cs_createCSint(INT_MIN, INT_MIN + 2);
  EXPECT_TRUE(cs_minimize(&x, 1, select, x, found));
  EXPECT_EQ(costs, std::vector{INT_MIN});
  expectCounters(1, 0);
}

TEST_F(MinimizeTest, NullArgumentsFindNothing) {
  makeCost(2, 2, 5);
  EXPECT_FALSE(cs_minimize(xy, 2, nullptr, cost, found));
  EXPECT_FALSE(cs_minimize(xy, 2, select, nullptr, found));
  EXPECT_TRUE(costs.empty());
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(MinimizeTest, AContextThatCannotBeOpenedFindsNothingAndClosesNoneOfTheCallers) {
  makeCost(2, 2, 5);
  expectFailureWithoutAContext([this] { return cs_minimize(xy, 2, select, cost, found); });
}

}  // namespace

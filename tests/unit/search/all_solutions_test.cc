// SPDX-License-Identifier: MIT
// cs_findAll on trees small enough to count by hand, and searches inside searches.
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class AllSolutionsTest : public SearchTest {
 protected:
  void SetUp() override {
    SearchTest::SetUp();
    onFound = [this](const std::vector<int> &solution) { solutions.push_back(solution); };
  }

  std::vector<std::vector<int>> solutions;
};

TEST_F(AllSolutionsTest, EverySolutionIsVisitedOnceInAscendingOrder) {
  makeXy(2, 3);
  EXPECT_TRUE(cs_findAll(xy, 2, select, found));
  EXPECT_EQ(solutions, (std::vector<std::vector<int>>{{0, 0}, {0, 1}, {0, 2}, {1, 0}, {1, 1}, {1, 2}}));
  expectCounters(2 + 2 * 3, 0);
}

TEST_F(AllSolutionsTest, EverythingIsAsBeforeAfterwards) {
  makeXy(2, 3);
  ASSERT_TRUE(cs_Neq(xy[0], xy[1]));
  cs_saveContext();
  const int trail = solver::trail.count();
  EXPECT_TRUE(cs_findAll(xy, 2, select, found));
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(solver::trail.count(), trail);
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1, 2}));
}

TEST_F(AllSolutionsTest, RefusedValuesAreFails) {
  makeXy(2, 3);
  refuseY([](int value) { return value == 1; });
  EXPECT_TRUE(cs_findAll(xy, 2, select, found));
  EXPECT_EQ(solutions, (std::vector<std::vector<int>>{{0, 1}, {1, 1}}));
  expectCounters(8, 4);
}

TEST_F(AllSolutionsTest, WithoutASolutionItIsFalseAndFoundIsNeverCalled) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(cs_findAll(xy, 2, select, found));
  EXPECT_TRUE(solutions.empty());
  expectCounters(8, 6);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(AllSolutionsTest, NoFreeVariableIsOneSolutionWithoutChoicePoint) {
  EXPECT_TRUE(cs_findAll(xy, 0, select, found));
  EXPECT_EQ(solutions.size(), 1U);
  expectCounters(0, 0);
}

TEST_F(AllSolutionsTest, FoundMayBeNull) {
  makeXy(2, 2);
  EXPECT_TRUE(cs_findAll(xy, 2, select, nullptr));
  expectCounters(6, 0);
}

TEST_F(AllSolutionsTest, ANullSelectionFindsNothing) {
  makeXy(2, 2);
  EXPECT_FALSE(cs_findAll(xy, 2, nullptr, found));
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(AllSolutionsTest, TheResultOfAnEarlierRunIsForgotten) {
  makeXy(2, 2);
  EXPECT_TRUE(cs_findAll(xy, 2, select, found));
  refuseY(never);
  EXPECT_FALSE(cs_findAll(xy, 2, select, found));
}

// Holes within a word, across one, over whole words, and behind the last value.
TEST_F(AllSolutionsTest, ValuesFarApartAreTriedInAscendingOrder) {
  const std::vector<int> all{-70, -7, -6, 0, 1, 63, 64, 200, 1000};
  CSint *v = fromValues(all);
  std::vector<std::vector<int>> wanted;
  for (const int value : all) wanted.push_back({value});
  EXPECT_TRUE(cs_findAll(&v, 1, select, found));
  EXPECT_EQ(solutions, wanted);
  solutions.clear();
  ASSERT_TRUE(cs_LE(v, 900));
  wanted.pop_back();
  EXPECT_TRUE(cs_findAll(&v, 1, select, found));
  EXPECT_EQ(solutions, wanted);
  expectCounters(8, 0);
}

// The first value stays for good; the others are tried, and refused, in contexts of their own.
TEST_F(AllSolutionsTest, FoundMayCloseAllContexts) {
  CSint *v = cs_createCSint(0, 2);
  onFound = [this](const std::vector<int> &solution) {
    solutions.push_back(solution);
    cs_acceptAll();
  };
  EXPECT_TRUE(cs_findAll(&v, 1, select, found));
  EXPECT_EQ(solutions, std::vector<std::vector<int>>{{0}});
  EXPECT_EQ(values(v), std::vector{0});
  expectCounters(3, 2);
  EXPECT_EQ(openContexts(), 0);
}

// The level of y notices it at y = 1, the level of x at x = 1.
TEST_F(AllSolutionsTest, CancellingInFoundKeepsTheResultAndLeavesContextsOpen) {
  makeXy(2, 2);
  onFound = [this](const std::vector<int> &solution) {
    solutions.push_back(solution);
    cs_cancelSearch();
  };
  EXPECT_TRUE(cs_findAll(xy, 2, select, found));
  EXPECT_EQ(solutions.size(), 1U);
  expectCounters(4, 0);
  EXPECT_EQ(openContexts(), 2);
  cs_restoreAll();
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1}));
}

TEST_F(AllSolutionsTest, AContextThatCannotBeOpenedFindsNothingAndClosesNoneOfTheCallers) {
  makeXy(2, 2);
  expectFailureWithoutAContext([this] { return cs_findAll(xy, 2, select, found); });
}

TEST_F(AllSolutionsTest, ALevelWithoutAContextIsLeftOut) {
  makeXy(2, 2);
  expectTheBranchWithoutAContextToFail([this] { return cs_findAll(xy, 2, select, found); });
  EXPECT_EQ(solutions, (std::vector<std::vector<int>>{{1, 0}, {1, 1}}));
  EXPECT_EQ(openContexts(), 1023);
}

TEST_F(AllSolutionsTest, CancellingInTheFirstSelectionFindsNothing) {
  makeXy(2, 2);
  onSelection = [](int) { cs_cancelSearch(); };
  EXPECT_FALSE(cs_findAll(xy, 2, select, found));
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 1);
}

TEST_F(AllSolutionsTest, CancellingInAPropagationStopsBeforeTheNextValue) {
  makeXy(2, 2);
  refuseY([](int) {
    cs_cancelSearch();
    return true;
  });
  EXPECT_TRUE(cs_findAll(xy, 2, select, found));
  EXPECT_EQ(solutions.size(), 1U);
  expectCounters(4, 0);
}

// A search in a callback starts the counters of both anew: x = 0, then 1 each time a solution is visited.
TEST_F(AllSolutionsTest, ASearchInFoundStartsTheCountersAnew) {
  CSint *x = cs_createCSint(0, 1);
  CSint *u = cs_createCSint(0, 2);
  int visits = 0;
  onFound = [&](const std::vector<int> &) {
    ++visits;
    EXPECT_TRUE(cs_search(&u, 1, cs_findFreeVar));
    cs_restoreContext();
  };
  EXPECT_TRUE(cs_findAll(&x, 1, cs_findFreeVar, found));
  EXPECT_EQ(visits, 2);
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 0);
}

TEST_F(AllSolutionsTest, ASearchInACallbackTakesACancelBack) {
  CSint *x = cs_createCSint(0, 1);
  CSint *u = CSINT(0);
  onFound = [&](const std::vector<int> &solution) {
    solutions.push_back(solution);
    cs_cancelSearch();
    EXPECT_TRUE(cs_search(&u, 1, cs_findFreeVar));
  };
  EXPECT_TRUE(cs_findAll(&x, 1, cs_findFreeVar, found));
  EXPECT_EQ(solutions.size(), 2U);
}

// x = 0 is a solution; x = 1 is refused by a callback that searches. Only cs_findAll clears the mark of a solution.
TEST_F(AllSolutionsTest, ASearchInACallbackDoesNotForgetTheSolutionsOfTheOuterOne) {
  CSint *x = cs_createCSint(0, 1);
  CSint *u = cs_createCSint(0, 2);
  accepts = [&](int value) {
    if (value == 0) return true;
    EXPECT_TRUE(cs_search(&u, 1, cs_findFreeVar));
    cs_restoreContext();
    return false;
  };
  ASSERT_TRUE(postRefuser(x, accepts));
  EXPECT_TRUE(cs_findAll(&x, 1, cs_findFreeVar, found));
  EXPECT_EQ(solutions.size(), 1U);
}

}  // namespace

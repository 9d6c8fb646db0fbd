// SPDX-License-Identifier: MIT
// cs_search, cs_searchFail and cs_Vsearch on trees small enough to count by hand.
#include "unit/search/search_test.h"

namespace {

using namespace koru;
using namespace koru::test;

class DepthFirstTest : public SearchTest {};

TEST_F(DepthFirstTest, VariablesAllInstantiatedAreASolutionWithoutChoicePointOrContext) {
  xy[0] = CSINT(1);
  xy[1] = CSINT(2);
  EXPECT_TRUE(cs_search(xy, 2, select));
  expectCounters(0, 0);
  EXPECT_EQ(openContexts(), 0);
  EXPECT_EQ(selections, 1);
}

TEST_F(DepthFirstTest, AnEmptyArrayIsASolution) {
  EXPECT_TRUE(cs_search(nullptr, 0, cs_findFreeVar));
  EXPECT_TRUE(cs_search(xy, -1, cs_findFreeVarNbElements));
  expectCounters(0, 0);
}

TEST_F(DepthFirstTest, TheFirstSolutionTakesTheSmallestValuesAndAContextPerLevel) {
  makeXy(2, 3);
  EXPECT_TRUE(cs_search(xy, 2, select));
  EXPECT_EQ(cs_getValue(xy[0]), 0);
  EXPECT_EQ(cs_getValue(xy[1]), 0);
  expectCounters(2, 0);
  EXPECT_EQ(openContexts(), 2);
  EXPECT_EQ(selections, 3);
  cs_restoreAll();
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1, 2}));
}

// x = 0: y = 0, 1, 2 refused; x = 1 the same. A subtree that failed adds no fail of its own.
TEST_F(DepthFirstTest, AnExhaustedTreeCountsEveryValueTriedAndEveryValueRefused) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(cs_search(xy, 2, select));
  expectCounters(2 + 2 * 3, 2 * 3);
  EXPECT_EQ(selections, 3);
  EXPECT_EQ(openContexts(), 0);
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1, 2}));
}

TEST_F(DepthFirstTest, TheValueThatSucceedsIsAChoicePointToo) {
  makeXy(2, 3);
  refuseY([](int value) { return value == 2; });
  EXPECT_TRUE(cs_search(xy, 2, select));
  expectCounters(1 + 3, 2);
  EXPECT_EQ(openContexts(), 2);
}

TEST_F(DepthFirstTest, OnlyPresentValuesAreTriedInAscendingOrder) {
  CSint *x = fromValues({5, 9, 1});
  std::vector<int> asked;
  accepts = [&](int value) {
    asked.push_back(value);
    return false;
  };
  ASSERT_TRUE(postRefuser(x, accepts));
  EXPECT_FALSE(cs_search(&x, 1, cs_findFreeVar));
  EXPECT_EQ(asked, (std::vector{1, 5, 9}));
  expectCounters(3, 3);
}

TEST_F(DepthFirstTest, ValuesRemovedBeforeTheLevelAreNotTried) {
  CSint *x = cs_createCSint(0, 6);
  ASSERT_TRUE(cs_NEQ(x, 3) && cs_NEQ(x, 4) && cs_LE(x, 5) && cs_GE(x, 1));
  std::vector<int> asked;
  accepts = [&](int value) {
    asked.push_back(value);
    return false;
  };
  ASSERT_TRUE(postRefuser(x, accepts));
  EXPECT_FALSE(cs_search(&x, 1, cs_findFreeVar));
  EXPECT_EQ(asked, (std::vector{1, 2, 5}));
}

TEST_F(DepthFirstTest, ASelectedVariableThatIsBoundIsALevelWithOneValue) {
  xy[0] = CSINT(4);
  EXPECT_TRUE(cs_search(xy, 1, [](CSint **array, int) { return openContexts() == 0 ? array[0] : nullptr; }));
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 1);
}

TEST_F(DepthFirstTest, DomainsAtTheEndsOfTheIntRangeAreTriedInFull) {
  for (const int low : {INT_MIN, INT_MAX - 2}) {
    CSint *x = cs_createCSint(low, low + 2);
    std::vector<int> asked;
    accepts = [&](int value) {
      asked.push_back(value);
      return false;
    };
    ASSERT_TRUE(postRefuser(x, accepts));
    EXPECT_FALSE(cs_search(&x, 1, cs_findFreeVar));
    EXPECT_EQ(asked, (std::vector{low, low + 1, low + 2}));
    expectCounters(3, 3);
  }
}

TEST_F(DepthFirstTest, EverySearchStartsItsCountersAnew) {
  makeXy(2, 3);
  refuseY(never);
  cs_search(xy, 2, select);
  CSint *constant = CSINT(0);
  EXPECT_TRUE(cs_search(&constant, 1, cs_findFreeVar));
  expectCounters(0, 0);
}

TEST_F(DepthFirstTest, ContextsThatWereOpenBeforeAreUntouched) {
  makeXy(2, 2);
  EXPECT_EQ(cs_saveContext(), 1);
  ASSERT_TRUE(cs_GE(xy[0], 1));
  EXPECT_TRUE(cs_search(xy, 2, select));
  EXPECT_EQ(openContexts(), 2);  // x is bound, so there is one level
  cs_restoreContextUntil(2);
  EXPECT_EQ(values(xy[0]), std::vector{1});
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1}));
}

TEST_F(DepthFirstTest, ANullSelectionFindsNothing) {
  makeXy(2, 2);
  EXPECT_FALSE(cs_search(xy, 2, nullptr));
  EXPECT_FALSE(cs_searchFail(xy, 2, nullptr, 3));
  EXPECT_FALSE(cs_Vsearch(2, xy[0], xy[1], static_cast<CSfindFreeVar>(nullptr)));
  EXPECT_EQ(openContexts(), 0);
}

struct LimitRow {
  int limit;
  int choicePoints;
  int fails;
  int contexts;
};

void PrintTo(const LimitRow &row, std::ostream *out) { *out << "limit " << row.limit; }

class FailLimitTest : public SearchTest, public ::testing::WithParamInterface<LimitRow> {};

// The tree of x in {0, 1} and y in {0, 1, 2} with every y refused: six fails, a choice point for each and for each x.
TEST_P(FailLimitTest, StopsAtTheFailThatReachesIt) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(cs_searchFail(xy, 2, select, GetParam().limit));
  expectCounters(GetParam().choicePoints, GetParam().fails);
  EXPECT_EQ(openContexts(), GetParam().contexts);
  cs_restoreAll();
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
  EXPECT_EQ(values(xy[1]), (std::vector{0, 1, 2}));
}

INSTANTIATE_TEST_SUITE_P(, FailLimitTest,
                         ::testing::Values(LimitRow{1, 2, 1, 2}, LimitRow{2, 3, 2, 2}, LimitRow{3, 4, 3, 2},
                                           LimitRow{4, 6, 4, 2}, LimitRow{6, 8, 6, 2}, LimitRow{7, 8, 6, 0},
                                           LimitRow{0, 8, 6, 0}, LimitRow{-5, 8, 6, 0}, LimitRow{INT_MIN, 8, 6, 0}));

TEST_F(DepthFirstTest, TheFailLimitLeavesTheStateOfTheFailingBranch) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(cs_searchFail(xy, 2, select, 4));
  EXPECT_EQ(values(xy[0]), std::vector{1});
  EXPECT_EQ(values(xy[1]), std::vector{0});
}

TEST_F(DepthFirstTest, ASolutionBeforeTheFailLimitIsKept) {
  makeXy(2, 3);
  refuseY([](int value) { return value == 2; });
  EXPECT_TRUE(cs_searchFail(xy, 2, select, 3));
  expectCounters(4, 2);
}

TEST_F(DepthFirstTest, CancellingInTheFirstSelectionStopsBeforeTheFirstValue) {
  makeXy(2, 2);
  onSelection = [](int) { cs_cancelSearch(); };
  EXPECT_FALSE(cs_search(xy, 2, select));
  expectCounters(1, 0);
  EXPECT_EQ(openContexts(), 1);
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
}

// x = 0; y's level stops at y = 0; x's level goes on to x = 1 and notices there. Its restore closed y's context and
// its save opened another.
TEST_F(DepthFirstTest, TheLevelAboveACancelledOneStopsAtItsOwnNextValue) {
  makeXy(2, 2);
  onSelection = [](int call) {
    if (call == 2) cs_cancelSearch();
  };
  EXPECT_FALSE(cs_search(xy, 2, select));
  expectCounters(3, 0);
  EXPECT_EQ(openContexts(), 2);
}

// The same below the last value of x: no next value notices it, and x's level ends as after any failure.
TEST_F(DepthFirstTest, ALevelWithoutANextValueDoesNotNoticeTheCancel) {
  makeXy(2, 2);
  refuseY(never);
  onSelection = [](int call) {
    if (call == 3) cs_cancelSearch();
  };
  EXPECT_FALSE(cs_search(xy, 2, select));
  expectCounters(5, 2);
  EXPECT_EQ(openContexts(), 1);
}

TEST_F(DepthFirstTest, CancellingInARefusingPropagationStopsBeforeTheNextValue) {
  makeXy(2, 2);
  refuseY([](int) {
    cs_cancelSearch();
    return false;
  });
  EXPECT_FALSE(cs_search(xy, 2, select));
  expectCounters(4, 1);
  EXPECT_EQ(openContexts(), 2);
  cs_restoreAll();
  EXPECT_EQ(values(xy[0]), (std::vector{0, 1}));
}

TEST_F(DepthFirstTest, CancellingInTheLastPropagationDoesNotTakeTheSolutionAway) {
  makeXy(2, 2);
  refuseY([](int) {
    cs_cancelSearch();
    return true;
  });
  EXPECT_TRUE(cs_search(xy, 2, select));
  expectCounters(2, 0);
}

TEST_F(DepthFirstTest, CancellingBeforeASearchHasNoEffectOnIt) {
  makeXy(2, 2);
  cs_cancelSearch();
  EXPECT_TRUE(cs_search(xy, 2, select));
}

TEST_F(DepthFirstTest, VsearchLabelsTheVariablesItIsGiven) {
  makeXy(2, 3);
  CSint *z = cs_createCSint(4, 5);
  EXPECT_TRUE(cs_Vsearch(3, xy[0], xy[1], z, select));
  EXPECT_EQ(cs_getValue(xy[0]), 0);
  EXPECT_EQ(cs_getValue(xy[1]), 0);
  EXPECT_EQ(cs_getValue(z), 4);
  expectCounters(3, 0);
  EXPECT_EQ(openContexts(), 3);
}

TEST_F(DepthFirstTest, VsearchOfOneVariable) {
  makeXy(2, 3);
  refuseY(never);
  EXPECT_FALSE(cs_Vsearch(1, xy[1], select));
  expectCounters(3, 3);
  EXPECT_TRUE(cs_Vsearch(1, xy[0], select));
  expectCounters(1, 0);
}

TEST_F(DepthFirstTest, VsearchOfNoVariableIsASolution) {
  EXPECT_TRUE(cs_Vsearch(0, nullptr, cs_findFreeVar));
  expectCounters(0, 0);
}

TEST_F(DepthFirstTest, VsearchReportsAnArrayThatCannotBeHadOnce) {
  makeXy(2, 3);
  allocationHook = [](std::size_t) { return false; };
  EXPECT_FALSE(cs_Vsearch(2, xy[0], xy[1], select));
  allocationHook = nullptr;
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(selections, 0);
  EXPECT_TRUE(cs_Vsearch(2, xy[0], xy[1], select));
}

TEST_F(DepthFirstTest, AContextThatCannotBeOpenedFindsNothingAndClosesNoneOfTheCallers) {
  makeXy(2, 2);
  expectFailureWithoutAContext([this] { return cs_search(xy, 2, select); });
}

TEST_F(DepthFirstTest, ALevelWithoutAContextFails) {
  makeXy(2, 2);
  expectTheBranchWithoutAContextToFail([this] { return cs_search(xy, 2, select); });
  EXPECT_EQ(values(xy[0]), std::vector{1});
  EXPECT_EQ(values(xy[1]), std::vector{0});
  expectCounters(3, 0);
  EXPECT_EQ(openContexts(), 1023 + 2);
}

TEST_F(DepthFirstTest, TheEnginesAllocateNothing) {
  makeXy(2, 3);
  refuseY(never);
  allocationHook = [](std::size_t) { return false; };
  EXPECT_FALSE(cs_search(xy, 2, select));
  EXPECT_FALSE(cs_findAll(xy, 2, select, found));
  allocationHook = nullptr;
  EXPECT_EQ(memoryReports, 0);
}

}  // namespace

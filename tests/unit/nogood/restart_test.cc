// SPDX-License-Identifier: MIT
// cs_searchValueSelectorRestartNG on trees small enough to count by hand.
#include <climits>
#include <set>

#include "support/no_goods/restart_test.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

using Sets = std::vector<Literals>;
using Ends = std::vector<RunEnd>;

class RestartSearchTest : public RestartTest {
 protected:
  static bool never(int) { return false; }
  // x in {0, 1}, y in {0, 1, 2}, every y refused: six fails without learning.
  void makeHopeless() {
    make({2, 3});
    refuse(1, never);
  }
  void expectAsBefore() {
    EXPECT_EQ(values(x[0]), range(0, 1));
    EXPECT_EQ(values(x[1]), range(0, 2));
  }
  static void expectCounters(int choicePoints, int fails) {
    EXPECT_EQ(cs_getNbChoicePoints(), choicePoints);
    EXPECT_EQ(cs_getNbFails(), fails);
  }
};

// ----- one run

TEST_F(RestartSearchTest, ASolutionWithinTheLimitIsFoundInOneRun) {
  make({2, 3});
  refuse(1, [](int y) { return y == 2; });
  EXPECT_TRUE(search({3}));
  EXPECT_EQ(cs_getValue(x[0]), 0);
  EXPECT_EQ(cs_getValue(x[1]), 2);
  expectCounters(4, 2);
  EXPECT_EQ(ends, (Ends{{true, 2, 3}}));
  EXPECT_EQ(starts, std::vector{3});
  EXPECT_EQ(solver::contexts.count(), 3);  // one of the search and one per level
  cs_restoreContextUntil(1);
  expectAsBefore();
}

TEST_F(RestartSearchTest, ARunThatEndsBelowItsLimitHasExhaustedTheSpace) {
  makeHopeless();
  EXPECT_FALSE(search({7}));
  expectCounters(8, 6);
  EXPECT_EQ(ends, (Ends{{false, 6, 7}}));
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(solver::contexts.count(), 0);
  EXPECT_EQ(contents(set), Sets{});
  expectAsBefore();
}

TEST_F(RestartSearchTest, ALimitBelowOneIsNoneAndTheRunTheLast) {
  for (const int limit : {0, -1, INT_MIN}) {
    cs_end();
    cs_init();
    x.clear();
    ends.clear();
    makeHopeless();
    EXPECT_FALSE(search({limit}));
    EXPECT_EQ(ends, (Ends{{false, 6, limit}}));
    EXPECT_EQ(solver::contexts.count(), 0);
  }
}

TEST_F(RestartSearchTest, VariablesThatAreBoundAreASolutionAtOnce) {
  x = {CSINT(1)};
  EXPECT_TRUE(search({1}));
  expectCounters(0, 0);
  EXPECT_EQ(solver::contexts.count(), 1);
}

TEST_F(RestartSearchTest, NullCallbacksFindNothingAndRunNothing) {
  make({2, 3});
  const auto limit = [](void *) { return 5; };
  EXPECT_FALSE(cs_searchValueSelectorRestartNG(x.data(), selectors.data(), 2, nullptr, limit, nullptr, 0, set, notify));
  EXPECT_FALSE(
      cs_searchValueSelectorRestartNG(x.data(), selectors.data(), 2, firstFree, nullptr, nullptr, 0, set, notify));
  EXPECT_EQ(starts, std::vector<int>{});
  EXPECT_EQ(solver::contexts.count(), 0);
}

TEST_F(RestartSearchTest, NullSelectorsFindNothing) {
  make({2, 3});
  const auto limit = [](void *) { return 5; };
  EXPECT_FALSE(cs_searchValueSelectorRestartNG(x.data(), nullptr, 2, firstFree, limit, nullptr, 0, set, nullptr));
  selectors[0] = nullptr;
  EXPECT_FALSE(search({5}));
  expectAsBefore();
}

TEST_F(RestartSearchTest, SetAndHooksMayBeNull) {
  make({2, 3});
  refuse(1, [](int y) { return y == 2; });
  const auto limit = [](void *arg) { return ++*static_cast<int *>(arg); };
  int last = 0;
  EXPECT_TRUE(
      cs_searchValueSelectorRestartNG(x.data(), selectors.data(), 2, firstFree, limit, &last, 0, nullptr, nullptr));
  EXPECT_EQ(last, 3);
  expectCounters(2 + 3 + 4, 1 + 2 + 2);
}

TEST_F(RestartSearchTest, BeforeAnySolverIsInitialisedItFindsNothing) {
  make({2, 3});
  cs_end();
  EXPECT_FALSE(searchWith(nullptr, {5}));
}

// ----- several runs

// Run 1 refutes x = 0 with y = 0 and y = 1. In run 2 these leave y = 2, so x = 0 is refused; then y = 0 is. From then
// on x = 0 is refused by the no-good x != 1, and y = 0, y = 1 by theirs.
TEST_F(RestartSearchTest, EachRunAvoidsWhatThoseBeforeItHaveRefuted) {
  makeHopeless();
  std::vector<Sets> after;
  onLimit = [&](int) { after.push_back(contents(set)); };
  EXPECT_FALSE(search({2, 2, 3, 4, 5}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 2, 2}, {false, 3, 3}, {false, 4, 4}, {false, 4, 5}}));
  const Sets first{{eq(0, 0), eq(1, 1)}, {eq(0, 0), eq(1, 0)}};
  const Sets second{{eq(0, 0), eq(1, 1)}, {eq(0, 0), eq(1, 0)}, {eq(1, 0)}, {neq(0, 1)}};
  ASSERT_EQ(after.size(), 5U);
  EXPECT_EQ(after[0], Sets{});
  EXPECT_EQ(after[1], first);
  EXPECT_EQ(after[2], second);
  EXPECT_EQ(after[3].size(), 5U);
  EXPECT_EQ(after[4].size(), 5U);
  expectCounters(3 + 3 + 4 + 5 + 5, 2 + 2 + 3 + 4 + 4);
  EXPECT_EQ(solver::contexts.count(), 0);
  expectAsBefore();
}

TEST_F(RestartSearchTest, ASolutionOfALaterRunLeavesOneContextLess) {
  make({2, 3});
  refuse(1, [](int y) { return y == 2; });
  EXPECT_TRUE(searchWith(nullptr, {1, 3}));
  EXPECT_EQ(ends, (Ends{{false, 1, 1}, {true, 2, 3}}));
  EXPECT_EQ(solver::contexts.count(), 2);
}

TEST_F(RestartSearchTest, NoGoodsServeLaterSearches) {
  makeHopeless();
  EXPECT_FALSE(search({2, 2, 3, 4, 5}));
  const int known = cs_getNbNoGoods(set);
  EXPECT_FALSE(search({100}));
  EXPECT_EQ(cs_getNbFails(), 4);
  EXPECT_EQ(cs_getNbNoGoods(set), known);
}

TEST_F(RestartSearchTest, NoGoodsAreShortenedBetweenRuns) {
  make({2, 3, 3});
  ASSERT_TRUE(cs_Neq(x[0], x[2]) && cs_LE(x[2], 1) && cs_GE(x[1], 1));
  refuse(2, never);
  int longest = 0;
  onStart = [&] {
    for (const Literals &l : contents(set)) longest = std::max(longest, static_cast<int>(l.size()));
  };
  EXPECT_FALSE(search({1, 2, 3}));
  EXPECT_EQ(longest, 1);  // x0 = 0 binds x2, which is refused: no more than one decision is ever made
}

// ----- the total

TEST_F(RestartSearchTest, TheTotalOfFailsEndsTheSearchWithTheLastBranchInPlace) {
  makeHopeless();
  EXPECT_FALSE(searchWith(nullptr, {2}, 4));
  EXPECT_EQ(starts, (std::vector{2, 2}));
  EXPECT_EQ(cs_getNbFails(), 4);
  EXPECT_EQ(values(x[0]), std::vector{0});
  EXPECT_EQ(solver::contexts.count(), 2);
  cs_restoreAll();
  expectAsBefore();
}

TEST_F(RestartSearchTest, TheLimitOfARunIsWhatIsLeftOfTheTotal) {
  makeHopeless();
  EXPECT_FALSE(searchWith(nullptr, {3, 5}, 4));
  EXPECT_EQ(starts, (std::vector{3, 1}));
  EXPECT_EQ(ends, (Ends{{false, 3, 3}, {false, 1, 1}}));
}

TEST_F(RestartSearchTest, ATotalOfZeroOrLessIsNone) {
  for (const int total : {0, -1, INT_MIN}) {
    starts.clear();
    x.clear();
    makeHopeless();
    EXPECT_FALSE(searchWith(nullptr, {3, 6, 7}, total));
    EXPECT_EQ(starts, (std::vector{3, 6, 7}));
  }
}

TEST_F(RestartSearchTest, TheLastRunOfATotalIsRecordedToo) {
  makeHopeless();
  EXPECT_FALSE(search({9}, 2));
  EXPECT_EQ(starts, std::vector{2});
  cs_restoreAll();
  EXPECT_EQ(contents(set), (Sets{{eq(0, 0), eq(1, 1)}, {eq(0, 0), eq(1, 0)}}));
}

// ----- rejected solutions

TEST_F(RestartSearchTest, RejectedSolutionsCountAsFailsAndAreVisitedAll) {
  make({2, 2});
  std::set<std::vector<int>> seen;
  onFound = [&](int depth) {
    EXPECT_EQ(depth, 1);
    seen.insert({cs_getValue(x[0]), cs_getValue(x[1])});
    return false;
  };
  EXPECT_FALSE(search({5}));
  EXPECT_EQ(seen.size(), 4U);
  EXPECT_EQ(cs_getNbFails(), 4);
}

TEST_F(RestartSearchTest, ASolutionWhoseRejectionReachesTheLimitRecordsNothing) {
  make({2, 2});
  onFound = [](int) { return false; };
  EXPECT_FALSE(search({2, 5}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 4, 5}}));
  EXPECT_EQ(contents(set), Sets{});
}

// ----- cancelling

TEST_F(RestartSearchTest, CancellingEndsTheSearch) {
  makeHopeless();
  onEnd = cs_cancelSearch;
  EXPECT_FALSE(search({2}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 0, 3}}));
  EXPECT_EQ(solver::contexts.count(), 0);
  expectAsBefore();
}

TEST_F(RestartSearchTest, CancellingWhenTheFirstLimitIsAskedForHasNoEffect) {
  makeHopeless();
  onLimit = [](int run) {
    if (run == 1) cs_cancelSearch();
  };
  EXPECT_FALSE(search({7}));
  EXPECT_EQ(cs_getNbFails(), 6);
}

TEST_F(RestartSearchTest, CancellingInTheLimitOfALaterRunEndsThatRunAtItsFirstDecision) {
  makeHopeless();
  onLimit = [](int run) {
    if (run == 2) cs_cancelSearch();
  };
  EXPECT_FALSE(search({2}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 0, 3}}));
  expectCounters(4, 2);
}

TEST_F(RestartSearchTest, CancellingInTheFilterStillRecordsAndEndsTheNextRunAtItsFirstDecision) {
  makeHopeless();
  onInsert = [](CSnoGood *) {
    cs_cancelSearch();
    return true;
  };
  EXPECT_FALSE(search({2}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 0, 3}}));
  EXPECT_EQ(cs_getNbNoGoods(set), 2);
  expectAsBefore();
}

// In the filter the failing branch still stands; what is posted there goes with it.
TEST_F(RestartSearchTest, TheFilterMayCreateAndPostInTheFailingBranch) {
  makeHopeless();
  const int constraints = static_cast<int>(attachments(x[0]).size());
  onInsert = [&](CSnoGood *) {
    EXPECT_EQ(values(x[0]), std::vector{0});
    EXPECT_TRUE(cs_Lt(x[0], cs_createCSint(0, 9)));
    return false;
  };
  EXPECT_FALSE(search({2}, 3));
  cs_restoreAll();
  EXPECT_EQ(std::ssize(attachments(x[0])), constraints);
  EXPECT_EQ(cs_getNbNoGoods(set), 0);
  expectAsBefore();
}

// ----- callbacks that change the set, and searches inside searches

TEST_F(RestartSearchTest, TheLimitCallbackMayAddAndDeleteNoGoods) {
  makeHopeless();
  onLimit = [&](int run) {
    cs_filterNoGood(set, [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return false; });
    if (run == 2) add(set, {eq(0, 0)});
  };
  EXPECT_FALSE(search({2, 6}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 1 + 3, 6}}));
  EXPECT_EQ(contents(set), (Sets{{eq(0, 0)}}));
}

TEST_F(RestartSearchTest, TheLimitCallbackMayPostConstraints) {
  makeHopeless();
  onLimit = [&](int run) {
    if (run == 2) {
      EXPECT_TRUE(cs_Neq(x[0], cs_createCSint(5, 6)) && cs_LE(x[1], 1));
    }
  };
  EXPECT_FALSE(searchWith(nullptr, {2, 7}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 4, 7}}));
}

TEST_F(RestartSearchTest, ASearchWithTheSameSetMayRunInsideTheLimitCallback) {
  makeHopeless();
  onLimit = [&](int run) {
    if (run != 2) return;
    int runs = 0;
    const auto limit = [](void *arg) { return ++*static_cast<int *>(arg); };
    EXPECT_FALSE(
        cs_searchValueSelectorRestartNG(x.data(), selectors.data(), 2, firstFree, limit, &runs, 0, set, nullptr));
    EXPECT_GT(runs, 2);
  };
  EXPECT_FALSE(search({2, 5}));
  EXPECT_EQ(ends, (Ends{{false, 2, 2}, {false, 4, 5}}));
  expectSound(set);
  expectAsBefore();
}

// It records longer paths in the same set while the outer path is being recorded.
TEST_F(RestartSearchTest, ASearchWithTheSameSetMayRunInsideTheFilter) {
  make({2, 3, 3, 3});
  refuse(3, never);
  bool inside = false;
  int runs = 0;
  Sets outer;
  onInsert = [&](CSnoGood *noGood) {
    if (inside) return true;
    outer.push_back(literalsOf(noGood));
    if (outer.size() > 1) return true;
    inside = true;
    CSint **y = cs_createCSintArray(4, 0, 2);
    EXPECT_TRUE(postRefuser(y[3], accepts));
    const int label = cs_saveContext();
    const auto limit = [](void *arg) { return 3 * ++*static_cast<int *>(arg); };
    EXPECT_FALSE(cs_searchValueSelectorRestartNG(y, selectors.data(), 4, firstFree, limit, &runs, 50, set, nullptr));
    cs_restoreContextUntil(label);
    inside = false;
    return true;
  };
  EXPECT_FALSE(search({2}, 2));
  EXPECT_GT(runs, 1);
  cs_restoreAll();
  EXPECT_EQ(outer, (Sets{{eq(0, 0), eq(1, 0), eq(2, 0), eq(3, 1)}, {eq(0, 0), eq(1, 0), eq(2, 0), eq(3, 0)}}));
  expectSound(set);
}

TEST_F(RestartSearchTest, ASearchInsideAFoundHookLeavesTheOuterOneItsFails) {
  make({2, 2});
  onFound = [&](int) {
    CSint *inner = cs_createCSint(0, 1);
    CSvalueSelector *selector = cs_getValueSelector(CS_SELECT_DESCENDING);
    const auto one = [](void *) { return 1; };
    const int label = cs_saveContext();
    EXPECT_TRUE(cs_searchValueSelectorRestartNG(&inner, &selector, 1, firstFree, one, nullptr, 0, nullptr, nullptr));
    cs_restoreContextUntil(label);
    return false;
  };
  EXPECT_FALSE(search({3, 6}));
  EXPECT_EQ(ends, (Ends{{false, 3, 3}, {false, 4, 6}}));
}

// ----- memory

TEST_F(RestartSearchTest, AContextThatCannotBeHadFindsNothing) {
  make({2, 3});
  while (solver::contexts.count() < BlockStack<ContextMark>::kCapacity) cs_saveContext();
  const FailingAllocation failing(0);
  EXPECT_FALSE(search({5}));
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(solver::contexts.count(), BlockStack<ContextMark>::kCapacity);
  EXPECT_EQ(starts, std::vector<int>{});
}

// The array for the path, and a no-good in each of the runs.
TEST_F(RestartSearchTest, EachFailingAllocationIsReportedOnceAndLosesNoSolution) {
  int k = 0;
  for (bool failed = true; failed; ++k) {
    cs_end();
    cs_init();
    memoryReports = 0;
    cs_setErrHandler(CS_ERR_MEMORY, countReport, &memoryReports);
    x.clear();
    make({2, 3});
    refuse(1, [this](int y) { return y == 2 && cs_getValue(x[0]) == 1; });
    {
      const FailingAllocation failing(k);
      EXPECT_TRUE(search({1}));
      failed = FailingAllocation::failed();
    }
    EXPECT_EQ(memoryReports, failed ? 1 : 0);
    EXPECT_EQ(cs_getValue(x[0]), 1);
    EXPECT_EQ(cs_getValue(x[1]), 2);
    cs_restoreAll();
    expectSound(set);
  }
  EXPECT_GT(k, 3);
}

TEST_F(RestartSearchTest, WithoutASetARestartingSearchAllocatesNothing) {
  makeHopeless();
  const FailingAllocation failing(0);
  EXPECT_FALSE(searchWith(nullptr, {1}));
  EXPECT_FALSE(FailingAllocation::failed());
}

}  // namespace

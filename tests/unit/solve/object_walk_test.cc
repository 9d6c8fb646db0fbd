// SPDX-License-Identifier: MIT
// Walks of search objects: the options that they refuse, solutions that are kept, ends, memory. That any cut gives the
// search itself test random models in semantic/processes_test.cc.
#include <climits>
#include <string>
#include <vector>

#include "koru_extras.h"
#include "support/kit/failing_allocations.h"

namespace koru::test {
namespace {

constexpr CSwalkCounts kNone{}, kOne{1, 0, 1};

CSsearchStats statsOf(const CSsearch *search) {
  CSsearchStats stats{};
  EXPECT_TRUE(cs_getSearchStats(search, &stats, sizeof stats));
  return stats;
}

class ObjectWalkTest : public SolverTest {
 protected:
  // Three different numbers of 0..3.
  CSsearch *create(CSsearchOptions how = {}) {
    x = {cs_createCSint(0, 3), cs_createCSint(0, 3), cs_createCSint(0, 3)};
    EXPECT_TRUE(cs_AllNeq(x.data(), 3));
    CSsearch *search = cs_createSearch(x.data(), 3);
    how.size = sizeof how;
    EXPECT_TRUE(cs_setSearchOptions(search, &how));
    return search;
  }
  // The last one is to be great.
  CSsearch *createMaximisation() {
    CSsearch *search = create();
    CSsearchOptions how = {};
    how.size = sizeof how;
    how.maximize = x[2];
    EXPECT_TRUE(cs_setSearchOptions(search, &how));
    return search;
  }
  template <class T>
  void expectRefused(T CSsearchOptions::*option, T value, const std::string &name, CSsearchOptions how = {}) {
    how.*option = value;
    CSsearch *search = create(how);
    EXPECT_EQ(cs_openSearchWalk(search, nullptr), nullptr) << name;
    const char *found = cs_findUnwalkableOption(search);
    EXPECT_EQ(found != nullptr ? found : "none", name);
    EXPECT_EQ(cs_getSearchStatus(search), CS_STATUS_READY);
    EXPECT_TRUE(cs_freeSearch(search));
  }

  std::vector<CSint *> x;
};

int firstFree(CSint **vars, int n, void *) {
  int i = 0;
  while (i < n && !cs_isFree(vars[i])) ++i;
  return i;
}

TEST_F(ObjectWalkTest, RefusesOptionsByTheirNames) {
  using O = CSsearchOptions;
  expectRefused(&O::restarts, int{CS_RESTARTS_LUBY}, "restarts");
  expectRefused(&O::lastConflict, true, "lastConflict");
  expectRefused(&O::randomTies, true, "randomTies");
  expectRefused(&O::guided, true, "guided");
  expectRefused(&O::milliseconds, 1LL, "milliseconds");
  expectRefused(&O::fails, 1LL, "fails");
  expectRefused(&O::choicePoints, 1LL, "choicePoints");
  expectRefused(&O::solutions, 1LL, "solutions");
  expectRefused(&O::memory, 1LL, "memory");
  expectRefused(&O::progress, CSsearchProgress{[](CSsearch *, const CSsearchStats *, void *) {}}, "progress");
  expectRefused(&O::order, int{CS_ORDER_DOM_WDEG}, "CS_ORDER_DOM_WDEG");
  expectRefused(&O::order, int{CS_ORDER_ACTIVITY}, "CS_ORDER_ACTIVITY");
  expectRefused(&O::order, int{CS_ORDER_SET_TIMES}, "CS_ORDER_SET_TIMES");
  expectRefused(&O::value, int{CS_VALUE_RANDOM}, "CS_VALUE_RANDOM");
  O how = {};
  how.branching = CS_BRANCH_VALUES;
  expectRefused(&O::value, int{CS_VALUE_MAX}, "CS_BRANCH_VALUES with CS_VALUE_MAX", how);
  expectRefused(&O::maximize, cs_createCSint(0, 3), "CS_BRANCH_VALUES with CS_VALUE_MAX", how);
  how = {};
  how.minimize = cs_createCSint(0, 3);
  expectRefused(&O::neighbours, int{CS_NEIGHBOURS_RANDOM}, "neighbours", how);
  EXPECT_EQ(cs_findUnwalkableOption(nullptr), nullptr);
}

TEST_F(ObjectWalkTest, RefusesTheOrdersOfTasksThatRemember) {
  CSsearch *search = create();
  const CSorder order = {cs_createCSint(0, 1), {x[0], x[1]}, {CSINT(1), CSINT(1)}, 0};
  ASSERT_TRUE(cs_addSearchOrders(search, &order, 1, CS_ORDER_SLACK, CS_VALUE_SLACK));
  EXPECT_EQ(cs_findUnwalkableOption(search), nullptr);
  ASSERT_TRUE(cs_addSearchOrders(search, &order, 1, CS_ORDER_SLACK_WDEG, CS_VALUE_SLACK));
  EXPECT_STREQ(cs_findUnwalkableOption(search), "CS_ORDER_SLACK_WDEG");
}

TEST_F(ObjectWalkTest, RefusesConstraintsWithMemory) {
  CSsearch *search = create();
  cs_createNoGoodSet(x.data(), 3, nullptr, 0, nullptr, nullptr);
  EXPECT_EQ(cs_openSearchWalk(search, nullptr), nullptr);
}

TEST_F(ObjectWalkTest, TellsOfSolutionsWithoutReturning) {
  CSsearch *search = create();
  CSwalk *walk = cs_openSearchWalk(search, nullptr);
  const auto count = [](CSwalk *there, void *told) {
    EXPECT_FALSE(cs_keepWalkSolution(there, &kOne)) << "it is at work";
    EXPECT_FALSE(cs_endSearchWalk(there, CS_STATUS_STOPPED, &kOne));
    return ++*static_cast<int *>(told) % 5 != 0;
  };
  int told = 0;
  for (int times = 0; times < 4; ++times) {
    EXPECT_EQ(cs_goWalkTelling(walk, LLONG_MAX, count, &told), CS_STATUS_SOLUTION);
    EXPECT_TRUE(cs_keepWalkSolution(walk, &kOne));
  }
  EXPECT_EQ(cs_goWalkTelling(walk, LLONG_MAX, count, &told), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(told, 24);
  EXPECT_FALSE(cs_keepWalkSolution(walk, &kOne));
}

TEST_F(ObjectWalkTest, FindsWhatTheObjectFinds) {
  for (const int branching : {CS_BRANCH_BINARY, CS_BRANCH_VALUES}) {
    CSsearchOptions how = {};
    how.order = CS_ORDER_HOST;
    how.branching = branching;
    how.chooseVariable = firstFree;
    CSsearch *search = create(how);
    while (cs_nextSolution(search) == CS_STATUS_SOLUTION) continue;
    const CSsearchStats expected = statsOf(search);
    EXPECT_EQ(expected.solutions, 24);
    EXPECT_TRUE(cs_freeSearch(search));
    search = create(how);
    CSwalkSubject subject{};
    CSwalk *walk = cs_openSearchWalk(search, &subject);
    ASSERT_NE(walk, nullptr);
    EXPECT_FALSE(subject.improves);
    EXPECT_EQ(cs_goWalk(walk, LLONG_MAX, false), CS_STATUS_EXHAUSTED);
    const CSwalkCounts counts = cs_getWalkCounts(walk);
    EXPECT_EQ(counts.solutions, 24);
    EXPECT_EQ(counts.choicePoints, expected.choicePoints);
    EXPECT_EQ(counts.fails, expected.fails);
    EXPECT_TRUE(cs_endSearchWalk(walk, CS_STATUS_EXHAUSTED, &counts));
    EXPECT_EQ(cs_getSearchStatus(search), CS_STATUS_EXHAUSTED);
    EXPECT_EQ(statsOf(search).choicePoints, expected.choicePoints);
    EXPECT_EQ(cs_nextSolution(search), CS_STATUS_EXHAUSTED);
    EXPECT_TRUE(cs_freeSearch(search));
  }
}

TEST_F(ObjectWalkTest, TellsLabelledVariablesApartByADigest) {
  CSwalkSubject subjects[3] = {};
  for (int i = 0; i < 3; ++i) {
    CSsearch *search = i < 2 ? create() : createMaximisation();
    CSwalk *walk = cs_openSearchWalk(search, &subjects[i]);
    EXPECT_TRUE(cs_closeWalk(walk));
    EXPECT_TRUE(cs_freeSearch(search));
  }
  EXPECT_EQ(subjects[0].digest, subjects[1].digest);
  EXPECT_NE(subjects[0].digest, subjects[2].digest);
  EXPECT_TRUE(subjects[2].improves);
}

TEST_F(ObjectWalkTest, HasTheObjectForItself) {
  CSsearch *search = create();
  CSwalk *walk = cs_openSearchWalk(search, nullptr);
  ASSERT_NE(walk, nullptr);
  EXPECT_EQ(cs_openSearchWalk(search, nullptr), nullptr);
  EXPECT_EQ(cs_nextSolution(search), CS_STATUS_STOPPED);
  EXPECT_FALSE(cs_freeSearch(search));
  CSsearchOptions how = {};
  how.size = sizeof how;
  EXPECT_FALSE(cs_setSearchOptions(search, &how));
  ASSERT_EQ(cs_goWalk(walk, LLONG_MAX, true), CS_STATUS_SOLUTION);
  EXPECT_FALSE(cs_keepWalkSolution(walk, &kNone));
  ASSERT_TRUE(cs_keepWalkSolution(walk, &kOne));
  EXPECT_EQ(cs_nextSolution(search), CS_STATUS_REFUSED);
  EXPECT_EQ(cs_getBestSolution(search)[2], 2);
  EXPECT_TRUE(cs_closeWalk(walk));
  EXPECT_EQ(cs_getSearchStatus(search), CS_STATUS_STOPPED);
  EXPECT_EQ(statsOf(search).solutions, 1);
  EXPECT_EQ(cs_getMax(x[0]), 3) << "everything is as it was";
  EXPECT_TRUE(cs_freeSearch(search));
}

TEST_F(ObjectWalkTest, LeavesOutWhatIsNotBetter) {
  CSsearch *search = createMaximisation();
  CSwalk *walk = cs_openSearchWalk(search, nullptr);
  EXPECT_EQ(statsOf(search).bound, 3);
  std::vector<int> costs;
  while (cs_goWalk(walk, LLONG_MAX, true) == CS_STATUS_SOLUTION) {
    costs.push_back(cs_getValue(x[2]));
    const CSwalkCounts counts = cs_getWalkCounts(walk);
    ASSERT_TRUE(cs_keepWalkSolution(walk, &counts));
    EXPECT_EQ(statsOf(search).objective, costs.back());
  }
  EXPECT_EQ(costs, (std::vector<int>{2, 3}));
  const CSwalkCounts counts = cs_getWalkCounts(walk);
  EXPECT_TRUE(cs_endSearchWalk(walk, CS_STATUS_OPTIMAL, &counts));
  EXPECT_EQ(statsOf(search).bound, 3);
  EXPECT_EQ(cs_getBestSolution(search)[2], 3);
}

TEST_F(ObjectWalkTest, KeepsNothingWhereNoSolutionStands) {
  CSsearch *search = create();
  CSwalk *walk = cs_openSearchWalk(search, nullptr);
  EXPECT_FALSE(cs_keepWalkSolution(walk, &kOne));
  ASSERT_EQ(cs_goWalk(walk, 2, false), CS_STATUS_CHOICE_POINTS);
  EXPECT_FALSE(cs_keepWalkSolution(walk, &kOne));
  EXPECT_FALSE(cs_keepWalkSolution(walk, nullptr));
  EXPECT_FALSE(cs_keepWalkSolution(nullptr, &kOne));
  EXPECT_FALSE(cs_endSearchWalk(nullptr, CS_STATUS_EXHAUSTED, &kNone));
  EXPECT_FALSE(cs_endSearchWalk(walk, CS_STATUS_EXHAUSTED, nullptr));
  CSwalk *other = cs_openWalk(x.data(), 3, cs_findFreeVar);
  EXPECT_FALSE(cs_keepWalkSolution(other, &kOne));
  EXPECT_FALSE(cs_endSearchWalk(other, CS_STATUS_EXHAUSTED, &kNone));
  EXPECT_TRUE(cs_closeWalk(other));
}

TEST_F(ObjectWalkTest, IsRefusedOutOfTurn) {
  CSsearch *search = create();
  CSsearch *inner = cs_createSearch(x.data(), 3);
  EXPECT_EQ(cs_openSearchWalk(search, nullptr), nullptr);
  EXPECT_EQ(cs_openSearchWalk(nullptr, nullptr), nullptr);
  EXPECT_TRUE(cs_freeSearch(inner));
  ASSERT_EQ(cs_nextSolution(search), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_openSearchWalk(search, nullptr), nullptr) << "it has begun";
}

TEST_F(ObjectWalkTest, HasNothingToTryWhereThePostingsHaveFailed) {
  x = {cs_createCSint(0, 2), cs_createCSint(0, 2), cs_createCSint(0, 2)};
  ASSERT_TRUE(cs_beginPosting());
  ASSERT_TRUE(cs_AllNeqDomain(x.data(), 3)) << "its run waits";
  for (CSint *v : x) ASSERT_TRUE(cs_LE(v, 1));
  CSsearch *search = cs_createSearch(x.data(), 3);
  CSwalk *walk = cs_openSearchWalk(search, nullptr);
  ASSERT_NE(walk, nullptr);
  EXPECT_EQ(cs_goWalk(walk, LLONG_MAX, true), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(cs_getWalkCounts(walk).choicePoints, 0);
}

TEST_F(ObjectWalkTest, EndsWithTheContextThatSomebodyHasClosed) {
  CSsearch *search = create();
  CSwalk *walk = cs_openSearchWalk(search, nullptr);
  cs_restoreAll();
  EXPECT_TRUE(cs_endSearchWalk(walk, CS_STATUS_STOPPED, &kNone));
  EXPECT_TRUE(cs_freeSearch(search));
}

TEST_F(ObjectWalkTest, IsFreedByTheEnd) {
  CSwalk *walk = cs_openSearchWalk(create(), nullptr);
  EXPECT_EQ(cs_goWalk(walk, LLONG_MAX, true), CS_STATUS_SOLUTION);
  EXPECT_TRUE(cs_keepWalkSolution(walk, &kOne));
}

TEST_F(ObjectWalkTest, SaysWhenMemoryIsExhausted) {
  int refused = 0;
  for (int k = 0, failures = 1; failures > 0; ++k) {
    CSsearch *search = createMaximisation();
    CSwalk *walk = nullptr;
    bool kept = false;
    {
      const FailingAllocator failing(k, Failing::kOnce);
      walk = cs_openSearchWalk(search, nullptr);
      if (walk != nullptr && cs_goWalk(walk, LLONG_MAX, true) == CS_STATUS_SOLUTION)
        kept = cs_keepWalkSolution(walk, &kOne);
      failures = FailingAllocator::failures();
    }
    EXPECT_EQ(kept, failures == 0) << k;
    refused += failures;
    cs_closeWalk(walk);
    EXPECT_TRUE(cs_freeSearch(search));
    cs_restoreAll();
  }
  EXPECT_GE(refused, 5);
  expectSolverUsable();
}

}  // namespace
}  // namespace koru::test

// SPDX-License-Identifier: MIT
#include "solve/search_object.h"

#include <climits>
#include <cstring>

#include "core/solver.h"
#include "support/kit/solver_test.h"

namespace koru::test::solve {
namespace {

class SearchObjectTest : public SolverTest {
 protected:
  static CSsearchOptions defaults() {
    CSsearchOptions o{};
    o.size = sizeof o;
    return o;
  }
  static int countSolutions(CSsearch *s) {
    int count = 0;
    while (cs_nextSolution(s) == CS_STATUS_SOLUTION) ++count;
    return count;
  }
};

TEST_F(SearchObjectTest, GoesOnWhereItStopped) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  CSsearch *s = cs_createSearch(x, 2);
  EXPECT_EQ(cs_getSearchStatus(s), CS_STATUS_READY);
  EXPECT_EQ(cs_getBestSolution(s), nullptr);
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
    EXPECT_EQ(cs_getValue(x[0]) * 2 + cs_getValue(x[1]), i);
    EXPECT_EQ(cs_getBestSolution(s)[1], i % 2);
  }
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_EXHAUSTED);
  EXPECT_EQ(cs_getBestSolution(s)[0], 1);
  EXPECT_EQ(cs_getNbElements(x[0]), 2);
  EXPECT_TRUE(cs_freeSearch(s));
}

TEST_F(SearchObjectTest, FreeingItUndoesWhatWasDoneSinceItWasMade) {
  CSint **x = cs_createCSintArray(3, 0, 5);
  cs_saveContext();
  CSsearch *s = cs_createSearch(x, 3);
  EXPECT_TRUE(cs_LT(x[0], 3));
  EXPECT_TRUE(cs_AllNeq(x, 3));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_TRUE(cs_freeSearch(s));
  EXPECT_EQ(solver::contexts.count(), 1);
  EXPECT_EQ(cs_getMax(x[0]), 5);
}

TEST_F(SearchObjectTest, ObjectsNest) {
  CSint **x = cs_createCSintArray(2, 0, 2);
  CSint **y = cs_createCSintArray(2, 0, 1);
  CSsearch *outer = cs_createSearch(x, 2);
  int inners = 0;
  while (cs_nextSolution(outer) == CS_STATUS_SOLUTION) {
    CSsearch *inner = cs_createSearch(y, 2);
    EXPECT_EQ(cs_nextSolution(outer), CS_STATUS_REFUSED);
    EXPECT_EQ(cs_getSearchStatus(outer), CS_STATUS_SOLUTION);
    EXPECT_FALSE(cs_freeSearch(outer));
    inners += countSolutions(inner);
    EXPECT_TRUE(cs_freeSearch(inner));
  }
  EXPECT_EQ(inners, 9 * 4);
  EXPECT_TRUE(cs_freeSearch(outer));
}

TEST_F(SearchObjectTest, RefusesToGoOnInAnotherContext) {
  CSint **x = cs_createCSintArray(2, 0, 2);
  CSsearch *s = cs_createSearch(x, 2);
  cs_saveContext();
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_REFUSED);
  cs_restoreContext();
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  cs_restoreAll();
  cs_saveContext();
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_REFUSED);
  EXPECT_TRUE(cs_freeSearch(s));
  EXPECT_EQ(solver::contexts.count(), 1);
}

TEST_F(SearchObjectTest, RefusesToSearchWhileSomethingIsUndone) {
  static CSint **x;
  static CSsearch *open;
  static bool made;
  static CSstatus status;
  x = cs_createCSintArray(2, 0, 2);
  open = cs_createSearch(x, 2);
  EXPECT_EQ(cs_nextSolution(open), CS_STATUS_SOLUTION);
  cs_saveContext();
  cs_backtrack(x[0], 0, [](CSint *, int) {
    made = cs_createSearch(x, 2) != nullptr;
    status = cs_nextSolution(open);
  });
  cs_restoreContext();
  EXPECT_FALSE(made);
  EXPECT_EQ(status, CS_STATUS_REFUSED);
  EXPECT_EQ(cs_nextSolution(open), CS_STATUS_SOLUTION);
  EXPECT_TRUE(cs_freeSearch(open));
}

TEST_F(SearchObjectTest, RefusesWhatMakesNoSense) {
  CSint **x = cs_createCSintArray(2, 0, 2);
  CSint *holes[] = {x[0], nullptr};
  EXPECT_EQ(cs_createSearch(nullptr, 1), nullptr);
  EXPECT_EQ(cs_createSearch(x, -1), nullptr);
  EXPECT_EQ(cs_createSearch(holes, 2), nullptr);
  EXPECT_EQ(cs_nextSolution(nullptr), CS_STATUS_REFUSED);
  EXPECT_EQ(cs_getSearchStatus(nullptr), CS_STATUS_REFUSED);
  EXPECT_EQ(cs_getBestSolution(nullptr), nullptr);
  EXPECT_FALSE(cs_freeSearch(nullptr));
  cs_stopSearch(nullptr);
  CSsearch *s = cs_createSearch(x, 2);
  EXPECT_FALSE(cs_setSearchOptions(s, nullptr));
  CSsearchOptions o{};
  EXPECT_FALSE(cs_setSearchOptions(s, &o));
  const auto refused = [&](auto change) {
    o = defaults();
    change();
    return !cs_setSearchOptions(s, &o);
  };
  EXPECT_TRUE(refused([&] { o.order = CS_ORDER_HOST; }));
  EXPECT_TRUE(refused([&] { o.order = -1; }));
  EXPECT_TRUE(refused([&] { o.value = CS_VALUE_HOST; }));
  EXPECT_TRUE(refused([&] { o.value = 99; }));
  EXPECT_TRUE(refused([&] { o.branching = 2; }));
  EXPECT_TRUE(refused([&] { o.minimize = x[0], o.maximize = x[1]; }));
  EXPECT_TRUE(refused([&] { o.restarts = 4; }));
  EXPECT_TRUE(refused([&] { o.restartFails = -1; }));
  EXPECT_TRUE(refused([&] { o.neighbours = CS_NEIGHBOURS_RANDOM; }));
  EXPECT_TRUE(refused([&] { o.neighbours = CS_NEIGHBOURS_HOST, o.minimize = x[0]; }));
  EXPECT_TRUE(refused([&] { o.neighbours = 7, o.minimize = x[0]; }));
  EXPECT_TRUE(refused([&] { o.relaxed = 101; }));
  EXPECT_TRUE(refused([&] { o.fails = -1; }));
  EXPECT_TRUE(refused([&] { o.neighbours = -1, o.maximize = x[0]; }));
  EXPECT_TRUE(refused([&] { o.restartGrowth = -1; }));
  EXPECT_TRUE(refused([&] { o.neighbourFails = -1; }));
  EXPECT_TRUE(refused([&] { o.relaxed = -1; }));
  EXPECT_TRUE(refused([&] { o.milliseconds = -1; }));
  EXPECT_TRUE(refused([&] { o.choicePoints = -1; }));
  EXPECT_TRUE(refused([&] { o.solutions = -1; }));
  EXPECT_TRUE(refused([&] { o.progressMilliseconds = -1; }));
  o = defaults();
  EXPECT_FALSE(cs_setSearchOptions(nullptr, &o));
  EXPECT_FALSE(cs_addSearchPhase(nullptr, x, 2, CS_ORDER_INPUT, CS_VALUE_MIN));
  EXPECT_FALSE(cs_addSearchPhase(s, x, -1, CS_ORDER_INPUT, CS_VALUE_MIN));
  EXPECT_FALSE(cs_addSearchPhase(s, nullptr, 1, CS_ORDER_INPUT, CS_VALUE_MIN));
  EXPECT_FALSE(cs_addSearchPhase(s, x, 2, CS_ORDER_INPUT, 99));
  EXPECT_TRUE(cs_addSearchPhase(s, nullptr, 0, CS_ORDER_INPUT, CS_VALUE_MIN));
  EXPECT_FALSE(cs_setSearchHint(nullptr, 0, 0));
  EXPECT_FALSE(cs_setSearchHint(s, -1, 0));
  EXPECT_FALSE(cs_addSearchPhase(s, holes, 2, CS_ORDER_INPUT, CS_VALUE_MIN));
  EXPECT_FALSE(cs_addSearchPhase(s, x, 2, CS_ORDER_HOST, CS_VALUE_MIN));
  EXPECT_FALSE(cs_setSearchHint(s, 2, 0));
  CSsearchStats stats;
  EXPECT_FALSE(cs_getSearchStats(s, &stats, sizeof stats - 1));
  EXPECT_FALSE(cs_getSearchStats(s, nullptr, sizeof stats));
  EXPECT_FALSE(cs_getSearchStats(nullptr, &stats, sizeof stats));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  o = defaults();
  EXPECT_FALSE(cs_setSearchOptions(s, &o));
  EXPECT_FALSE(cs_setSearchHint(s, 0, 0));
  EXPECT_FALSE(cs_addSearchPhase(s, x, 1, CS_ORDER_INPUT, CS_VALUE_MIN));
}

TEST_F(SearchObjectTest, NothingToLabelIsOneSolution) {
  CSsearch *s = cs_createSearch(nullptr, 0);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_EXHAUSTED);
  EXPECT_TRUE(cs_freeSearch(s));
}

TEST_F(SearchObjectTest, LimitsAndStop) {
  CSint **x = cs_createCSintArray(4, 0, 3);
  const auto endOf = [&](auto change) {
    CSsearchOptions o = defaults();
    change(o);
    CSsearch *s = cs_createSearch(x, 4);
    EXPECT_TRUE(cs_setSearchOptions(s, &o));
    countSolutions(s);
    const CSstatus status = cs_getSearchStatus(s);
    EXPECT_TRUE(cs_freeSearch(s));
    return status;
  };
  EXPECT_EQ(endOf([](CSsearchOptions &o) { o.solutions = 3; }), CS_STATUS_SOLUTIONS);
  EXPECT_EQ(endOf([](CSsearchOptions &o) { o.choicePoints = 3; }), CS_STATUS_CHOICE_POINTS);
  EXPECT_EQ(endOf([](CSsearchOptions &) {}), CS_STATUS_EXHAUSTED);
  ASSERT_TRUE(cs_AllNeq(x, 4));
  EXPECT_EQ(endOf([](CSsearchOptions &o) { o.fails = 1; }), CS_STATUS_EXHAUSTED);
  CSsearch *s = cs_createSearch(x, 4);
  cs_stopSearch(s);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_STOPPED);
  EXPECT_TRUE(cs_freeSearch(s));
}

// Some 40 pigeons in 39 holes: a search without an end.
CSint **pigeons() {
  CSint **x = cs_createCSintArray(40, 0, 38);
  for (int i = 0; i < 40; ++i)
    for (int j = 0; j < i; ++j) EXPECT_TRUE(cs_Neq(x[i], x[j]));
  return x;
}

TEST_F(SearchObjectTest, TimeIsALimit) {
  CSsearch *s = cs_createSearch(pigeons(), 40);
  CSsearchOptions o = defaults();
  o.milliseconds = 20;
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_TIME);
  CSsearchStats stats;
  ASSERT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
  EXPECT_GE(stats.seconds, 0.02);
  EXPECT_LT(stats.secondsToFirst, 0);
}

TEST_F(SearchObjectTest, FailsAreALimit) {
  CSsearch *s = cs_createSearch(pigeons(), 40);
  CSsearchOptions o = defaults();
  o.fails = 1000;
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_FAILS);
  CSsearchStats stats;
  ASSERT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
  EXPECT_EQ(stats.fails, 1000);
}

TEST_F(SearchObjectTest, TellsOfProgressAsTimeGoes) {
  for (const int limit : {0, 500}) {
    cs_saveContext();
    CSsearch *s = cs_createSearch(pigeons(), 40);
    int calls = 0;
    CSsearchOptions o = defaults();
    o.milliseconds = limit;
    o.progressMilliseconds = 1;
    o.extra = &calls;
    o.progress = [](CSsearch *search, const CSsearchStats *stats, void *extra) {
      EXPECT_EQ(stats->solutions, 0);
      if (++*static_cast<int *>(extra) == 5) cs_stopSearch(search);
    };
    ASSERT_TRUE(cs_setSearchOptions(s, &o));
    EXPECT_EQ(cs_nextSolution(s), CS_STATUS_STOPPED);
    EXPECT_EQ(calls, 5);
    EXPECT_TRUE(cs_freeSearch(s));
    cs_restoreContext();
  }
}

// Nothing is better than the ends of the int range.
TEST_F(SearchObjectTest, ObjectivesReachTheEndsOfTheIntRange) {
  CSint *x = cs_createCSint(INT_MIN, INT_MIN + 1);
  CSint *y = cs_createCSint(INT_MAX - 1, INT_MAX);
  for (const bool minimize : {true, false}) {
    CSint *vars[] = {x, y};
    CSsearch *s = cs_createSearch(vars, 2);
    CSsearchOptions o = defaults();
    (minimize ? o.minimize : o.maximize) = minimize ? x : y;
    o.value = minimize ? CS_VALUE_MIN : CS_VALUE_MAX;
    ASSERT_TRUE(cs_setSearchOptions(s, &o));
    EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
    EXPECT_EQ(cs_nextSolution(s), CS_STATUS_OPTIMAL);
    EXPECT_TRUE(cs_freeSearch(s));
  }
}

TEST_F(SearchObjectTest, ARestartMayProveThatThereIsNoSolution) {
  CSint **x = cs_createCSintArray(6, 0, 4);
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < i; ++j) ASSERT_TRUE(cs_Neq(x[i], x[j]));
  CSsearch *s = cs_createSearch(x, 6);
  CSsearchOptions o = defaults();
  o.restarts = CS_RESTARTS_CONSTANT;
  o.restartFails = 1;
  o.order = CS_ORDER_DOM_WDEG;
  o.value = CS_VALUE_RANDOM;
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_EXHAUSTED);
  CSsearchStats stats;
  ASSERT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
  EXPECT_GT(stats.restarts, 0);
  EXPECT_GT(stats.noGoods, 0);
}

// By values, what a run leaves behind at its first decision is all that the root learns.
TEST_F(SearchObjectTest, ByValuesTheRootLearnsToo) {
  for (int pigeonCount = 3; pigeonCount <= 6; ++pigeonCount) {
    CSint **x = cs_createCSintArray(pigeonCount, 0, pigeonCount - 2);
    for (int i = 0; i < pigeonCount; ++i)
      for (int j = 0; j < i; ++j) ASSERT_TRUE(cs_Neq(x[i], x[j]));
    for (const int value : {CS_VALUE_MIN, CS_VALUE_MAX}) {
      CSsearch *s = cs_createSearch(x, pigeonCount);
      CSsearchOptions o = defaults();
      o.restarts = CS_RESTARTS_CONSTANT;
      o.restartFails = 1;
      o.value = value;
      o.branching = CS_BRANCH_VALUES;
      ASSERT_TRUE(cs_setSearchOptions(s, &o));
      EXPECT_EQ(cs_nextSolution(s), CS_STATUS_EXHAUSTED);
      EXPECT_TRUE(cs_freeSearch(s));
    }
  }
}

// Neighbourhoods that let nothing go are searched through at once, until somebody stops them.
TEST_F(SearchObjectTest, StopsBetweenNeighbourhoods) {
  CSint **x = cs_createCSintArray(8, 0, 7);
  ASSERT_TRUE(cs_AllNeq(x, 8));
  int weights[] = {3, 9, 4, 1, 7, 2, 8, 5};
  struct Host {
    CSsearch *search;
    int calls;
  } host{cs_createSearch(x, 8), 0};
  CSsearchOptions o = defaults();
  o.value = CS_VALUE_MAX;
  o.guided = true;
  o.minimize = cs_ScalProd(x, weights, 8);
  o.restarts = CS_RESTARTS_CONSTANT;
  o.restartFails = 1;
  o.neighbours = CS_NEIGHBOURS_HOST;
  o.extra = &host;
  o.chooseRelaxed = [](bool *, const int *best, int n, void *extra) {
    EXPECT_EQ(n, 8);
    EXPECT_LE(best[0], 7);
    auto *h = static_cast<Host *>(extra);
    if (++h->calls == 3) cs_stopSearch(h->search);
  };
  ASSERT_TRUE(cs_setSearchOptions(host.search, &o));
  while (cs_nextSolution(host.search) == CS_STATUS_SOLUTION) continue;
  EXPECT_EQ(cs_getSearchStatus(host.search), CS_STATUS_STOPPED);
  EXPECT_EQ(host.calls, 3);
}

TEST_F(SearchObjectTest, TellsOfProgress) {
  CSint **x = cs_createCSintArray(3, 0, 3);
  struct Seen {
    int calls = 0;
    long long solutions = 0;
    CSsearch *stop = nullptr;
  } seen;
  CSsearchOptions o = defaults();
  o.extra = &seen;
  o.progress = [](CSsearch *search, const CSsearchStats *stats, void *extra) {
    auto *s = static_cast<Seen *>(extra);
    ++s->calls;
    s->solutions = stats->solutions;
    EXPECT_EQ(cs_nextSolution(search), CS_STATUS_REFUSED);
    EXPECT_FALSE(cs_freeSearch(search));
    if (s->calls == 5) cs_stopSearch(search);
  };
  CSsearch *s = cs_createSearch(x, 3);
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  EXPECT_EQ(countSolutions(s), 5);
  EXPECT_EQ(seen.calls, 5);
  EXPECT_EQ(seen.solutions, 5);
  EXPECT_EQ(cs_getSearchStatus(s), CS_STATUS_STOPPED);
}

// The same tree as the plain search, to the counter.
TEST_F(SearchObjectTest, ByValuesItWalksTheTreeOfThePlainSearch) {
  constexpr int n = 7;
  CSint **q = cs_createCSintArray(n, 0, n - 1);
  CSint *up[n];
  CSint *down[n];
  for (int i = 0; i < n; ++i) {
    up[i] = cs_Add(q[i], CSINT(i));
    down[i] = cs_Sub(q[i], CSINT(i));
  }
  ASSERT_TRUE(cs_AllNeq(q, n) && cs_AllNeq(up, n) && cs_AllNeq(down, n));
  ASSERT_TRUE(cs_findAll(q, n, cs_findFreeVarNbElements, nullptr));
  CSsearchOptions o = defaults();
  o.order = CS_ORDER_SMALLEST;
  o.branching = CS_BRANCH_VALUES;
  CSsearch *s = cs_createSearch(q, n);
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  EXPECT_EQ(countSolutions(s), 40);
  CSsearchStats stats;
  ASSERT_TRUE(cs_getSearchStats(s, &stats, sizeof stats));
  EXPECT_EQ(stats.choicePoints, cs_getNbChoicePoints());
  EXPECT_EQ(stats.fails, cs_getNbFails());
  EXPECT_GT(stats.peakDepth, 0);
  EXPECT_GT(stats.peakTrail, 0);
}

TEST_F(SearchObjectTest, ManyLevelsTakeNoStack) {
  constexpr int n = 200000;
  CSint **x = cs_createCSintArray(n, 0, 1);
  CSsearch *s = cs_createSearch(x, n);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_getValue(x[n - 1]), 1);
  EXPECT_TRUE(cs_freeSearch(s));
}

TEST_F(SearchObjectTest, TheEndOfTheSolverFreesThem) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  const long blocks = blocksAlive;
  cs_createSearch(x, 2);
  CSsearch *s = cs_createSearch(x, 2);
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_GT(blocksAlive, blocks);
  cs_end();
  EXPECT_EQ(blocksAlive, 0);
  EXPECT_EQ(cs_createSearch(x, 2), nullptr);
  cs_init();
  CSint **y = cs_createCSintArray(2, 0, 1);
  EXPECT_EQ(countSolutions(cs_createSearch(y, 2)), 4);
}

TEST_F(SearchObjectTest, StatusesHaveNames) {
  EXPECT_STREQ(cs_getStatusName(CS_STATUS_OPTIMAL), "optimal");
  EXPECT_STREQ(cs_getStatusName(CS_STATUS_REFUSED), "out of turn");
  EXPECT_STREQ(cs_getStatusName(static_cast<CSstatus>(11)), "unknown");
}

TEST_F(SearchObjectTest, TheOldSearchesAreNotTouched) {
  CSint **x = cs_createCSintArray(3, 0, 3);
  ASSERT_TRUE(cs_findAll(x, 3, cs_findFreeVar, nullptr));
  const int choicePoints = cs_getNbChoicePoints();
  CSsearch *s = cs_createSearch(x, 3);
  EXPECT_EQ(countSolutions(s), 64);
  EXPECT_EQ(cs_getNbChoicePoints(), choicePoints);
}

}  // namespace
}  // namespace koru::test::solve

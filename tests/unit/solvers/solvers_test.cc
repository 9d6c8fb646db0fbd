// SPDX-License-Identifier: MIT
// Several solvers by turns: each is as it was left, and nothing of one is seen by another.
#include "core/solver.h"
#include "koru_extras.h"
#include "nogood/no_good_set.h"
#include "search/state.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

class SolversTest : public SolverTest {
 protected:
  static void count(CSint *, void *extra) { ++*static_cast<int *>(extra); }
  void begin() {
    cs_init();
    cs_setErrHandler(CS_ERR_MEMORY, countReport, &memoryReports);
  }
  static std::vector<int> solutionsOf(CSint **x, int n) {
    std::vector<int> all;
    CSsearch *s = cs_createSearch(x, n);
    while (cs_nextSolution(s) == CS_STATUS_SOLUTION)
      for (int i = 0; i < n; ++i) all.push_back(cs_getValue(x[i]));
    EXPECT_TRUE(cs_freeSearch(s));
    return all;
  }
};

TEST_F(SolversTest, TwoProblemsByTurns) {
  CSint **x = cs_createCSintArray(3, 0, 2);
  ASSERT_TRUE(cs_AllNeq(x, 3));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], 1));
  CSsolver *first = cs_detachSolver();
  ASSERT_NE(first, nullptr);
  EXPECT_FALSE(solver::initialised);
  EXPECT_EQ(cs_createCSint(0, 1), nullptr);

  begin();
  EXPECT_EQ(solver::contexts.count(), 0);
  CSint **y = cs_createCSintArray(2, 5, 7);
  ASSERT_TRUE(cs_Lt(y[0], y[1]));
  CSsolver *second = cs_detachSolver();
  EXPECT_NE(second, first);

  EXPECT_TRUE(cs_attachSolver(first));
  EXPECT_EQ(solver::contexts.count(), 1);
  EXPECT_EQ(cs_getValue(x[0]), 1);
  EXPECT_EQ(solutionsOf(x, 3), (std::vector<int>{1, 0, 2, 1, 2, 0}));
  EXPECT_EQ(cs_detachSolver(), first) << "a solver keeps its record";

  EXPECT_TRUE(cs_attachSolver(second));
  EXPECT_EQ(solutionsOf(y, 2), (std::vector<int>{5, 6, 5, 7, 6, 7}));
  cs_end();
  EXPECT_TRUE(cs_attachSolver(first));
  cs_restoreContext();
  EXPECT_EQ(cs_getNbElements(x[0]), 3);
}

// Two searches that go on by turns come to what each comes to alone.
TEST_F(SolversTest, SearchesGoOnWhereTheyStopped) {
  struct Problem {
    CSsolver *solver;
    CSsearch *search;
    std::vector<CSint *> x;
    int solutions = 0;
    bool alive = true;
  };
  Problem problems[3];
  TearDown();
  for (int k = 0; k < 3; ++k) {
    Problem &p = problems[k];
    begin();
    for (int i = 0; i < 5 + k; ++i) p.x.push_back(cs_createCSint(0, 4 + k));
    const int n = static_cast<int>(p.x.size());
    std::vector<CSint *> up, down;
    for (int i = 0; i < n; ++i) {
      up.push_back(cs_Add(p.x[static_cast<std::size_t>(i)], CSINT(i)));
      down.push_back(cs_Sub(p.x[static_cast<std::size_t>(i)], CSINT(i)));
    }
    ASSERT_TRUE(cs_AllNeqDomain(p.x.data(), n) && cs_AllNeqDomain(up.data(), n) && cs_AllNeqDomain(down.data(), n));
    CSsearchOptions o{};
    o.size = sizeof o;
    o.order = k == 1 ? CS_ORDER_ACTIVITY : CS_ORDER_DOM_WDEG;
    p.search = cs_createSearch(p.x.data(), n);
    ASSERT_TRUE(cs_setSearchOptions(p.search, &o));
    p.solver = cs_detachSolver();
    ASSERT_NE(p.solver, nullptr);
  }
  for (bool any = true; any;) {
    any = false;
    for (Problem &p : problems) {
      if (!p.alive) continue;
      ASSERT_TRUE(cs_attachSolver(p.solver));
      p.alive = cs_nextSolution(p.search) == CS_STATUS_SOLUTION;
      p.solutions += p.alive ? 1 : 0;
      any = true;
      EXPECT_EQ(cs_detachSolver(), p.solver);
    }
  }
  const int expected[] = {10, 4, 40};
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(problems[k].solutions, expected[k]);
    ASSERT_TRUE(cs_attachSolver(problems[k].solver));
    EXPECT_EQ(cs_nextSolution(problems[k].search), CS_STATUS_EXHAUSTED);
    cs_end();
  }
  EXPECT_EQ(blocksAlive, 0);
}

// Handlers, error code, counters, posting phase and refusals belong to a solver, too.
TEST_F(SolversTest, EverythingBelongsToASolver) {
  int reports = 0;
  cs_setErrHandler(CS_ERR_OVERFLOW, count, &reports);
  cs_setErr(CS_ERR_OVERFLOW);
  CSint **x = cs_createCSintArray(2, 0, 1);
  EXPECT_FALSE(cs_EQ(x[0], 7));
  EXPECT_TRUE(cs_search(x, 2, cs_findFreeVar));
  ASSERT_TRUE(cs_beginPosting());
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  CSsolver *first = cs_detachSolver();

  begin();
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(cs_getNbChoicePoints(), 0);
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_READY);
  EXPECT_EQ(cs_getNbRefused(), 0);
  EXPECT_TRUE(cs_endPosting());
  EXPECT_FALSE(solver::ports.profiling);
  cs_end();

  ASSERT_TRUE(cs_attachSolver(first));
  EXPECT_EQ(cs_getErr(), CS_ERR_OVERFLOW);
  EXPECT_EQ(cs_getNbChoicePoints(), 2);
  EXPECT_EQ(cs_searchStatus(), CS_STATUS_SOLUTION);
  EXPECT_EQ(cs_getNbRefused(), 1);
  EXPECT_TRUE(solver::agenda.posting());
  EXPECT_TRUE(solver::ports.profiling);
  EXPECT_TRUE(cs_endPosting());
}

TEST_F(SolversTest, LocatorsBelongToASolver) {
  static int asked;
  asked = 0;
  cs_setProfilerLocator(
      "here", [](void *) -> const char * { return ++asked > 0 ? "here" : nullptr; }, nullptr);
  CSint **x = cs_createCSintArray(2, 0, 1);
  EXPECT_TRUE(cs_Neq(x[0], x[1]));
  EXPECT_EQ(asked, 1);
  CSsolver *first = cs_detachSolver();
  begin();
  CSint **y = cs_createCSintArray(2, 0, 1);
  EXPECT_TRUE(cs_Neq(y[0], y[1]));
  EXPECT_EQ(asked, 1);
  cs_end();
  ASSERT_TRUE(cs_attachSolver(first));
  EXPECT_TRUE(cs_Le(x[0], x[1]));
  EXPECT_EQ(asked, 2);
}

TEST_F(SolversTest, PostersBelongToASolver) {
  const auto newestSite = [](const CSint *v) { return v->constraints->constraint->site; };
  CSint **x = cs_createCSintArray(2, 0, 9);
  EXPECT_TRUE(cs_Neq(x[0], x[1]));
  EXPECT_TRUE(cs_Le(x[0], x[1]));
  const void *place = newestSite(x[0])->address();
  CSsolver *first = cs_detachSolver();
  EXPECT_EQ(solver::posters.count(), 0);

  begin();
  CSint **y = cs_createCSintArray(2, 0, 9);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(cs_Lt(y[0], y[1]));
  EXPECT_EQ(solver::posters.count(), 1);
  CSsolver *second = cs_detachSolver();

  ASSERT_TRUE(cs_attachSolver(first));
  EXPECT_EQ(solver::posters.count(), 2);
  EXPECT_STREQ(newestSite(x[0])->name(), "cs_Le");
  EXPECT_EQ(newestSite(x[0])->address(), place);
  EXPECT_TRUE(cs_Ge(x[0], x[1]));
  EXPECT_STREQ(newestSite(x[0])->name(), "cs_Ge");
  EXPECT_EQ(cs_detachSolver(), first);

  ASSERT_TRUE(cs_attachSolver(second));
  EXPECT_EQ(solver::posters.count(), 1);
  EXPECT_STREQ(newestSite(y[0])->name(), "cs_Lt");
  cs_end();
  ASSERT_TRUE(cs_attachSolver(first));
  EXPECT_EQ(solver::posters.count(), 3);
  cs_end();
  EXPECT_EQ(blocksAlive, 0);
}

TEST_F(SolversTest, EndingOneLeavesTheOthers) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  CSsolver *first = cs_detachSolver();
  cs_end();
  begin();
  cs_createCSintArray(2, 0, 1);
  cs_end();
  ASSERT_TRUE(cs_attachSolver(first));
  EXPECT_EQ(solutionsOf(x, 2).size(), 8U);
  cs_end();
  EXPECT_EQ(blocksAlive, 0);
}

TEST_F(SolversTest, RefusesWhatMakesNoSense) {
  EXPECT_FALSE(cs_attachSolver(nullptr));
  CSsolver *first = cs_detachSolver();
  EXPECT_EQ(cs_detachSolver(), nullptr) << "none is running";
  begin();
  EXPECT_FALSE(cs_attachSolver(first)) << "one is running";
  cs_end();
  EXPECT_TRUE(cs_attachSolver(first));
  EXPECT_FALSE(cs_attachSolver(first)) << "it is not parked";
}

// What a cs_init without memory for everything has left gives way.
TEST_F(SolversTest, AttachesAfterAnInitThatHasFailed) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  CSsolver *first = cs_detachSolver();
  {
    const FailingAllocator failing(2, Failing::kForEver);
    cs_init();
  }
  EXPECT_FALSE(solver::initialised);
  ASSERT_TRUE(cs_attachSolver(first));
  EXPECT_EQ(solutionsOf(x, 2).size(), 8U);
  cs_end();
  EXPECT_EQ(blocksAlive, 0);
}

TEST_F(SolversTest, WithoutMemoryForTheRecordTheSolverGoesOn) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  {
    const FailingAllocator failing(0, Failing::kOnce);
    EXPECT_EQ(cs_detachSolver(), nullptr);
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(solutionsOf(x, 2).size(), 8U);
  EXPECT_TRUE(cs_attachSolver(cs_detachSolver()));
}

// Code of the host that runs in the middle of something cannot take the state away.
class AtWorkTest : public SolversTest {
 protected:
  static int refused;
  static bool tryToDetach() {
    refused += cs_detachSolver() == nullptr ? 1 : 0;
    return true;
  }
  void SetUp() override {
    SolversTest::SetUp();
    refused = 0;
  }
};
int AtWorkTest::refused = 0;

TEST_F(AtWorkTest, InACallbackOfPropagationOrRegistration) {
  CSint **x = cs_createCSintArray(2, 0, 9);
  ASSERT_TRUE(cs_EQ(x[1], 3));
  ASSERT_TRUE(cs_eventKnown(
      x, 2, [](int, int, CSint **, int, void *) { return tryToDetach(); }, nullptr));
  EXPECT_EQ(refused, 1) << "at the registration";
  EXPECT_TRUE(cs_EQ(x[0], 4));
  EXPECT_EQ(refused, 2);
}

TEST_F(AtWorkTest, InACallbackOfASearchOrAnUndo) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  const auto found = [](CSint **, int) { tryToDetach(); };
  EXPECT_TRUE(cs_findAll(x, 2, cs_findFreeVar, found));
  EXPECT_EQ(refused, 4);
  CSsearchOptions o{};
  o.size = sizeof o;
  o.progress = [](CSsearch *, const CSsearchStats *, void *) { tryToDetach(); };
  CSsearch *s = cs_createSearch(x, 2);
  ASSERT_TRUE(cs_setSearchOptions(s, &o));
  EXPECT_EQ(cs_nextSolution(s), CS_STATUS_SOLUTION);
  EXPECT_EQ(refused, 5);
  EXPECT_TRUE(cs_freeSearch(s));
  cs_saveContext();
  cs_backtrack(x[0], 0, [](CSint *, int) { tryToDetach(); });
  cs_restoreContext();
  EXPECT_EQ(refused, 6);
}

TEST_F(AtWorkTest, InAnErrorHandlerOrALocator) {
  cs_setErrHandler(
      CS_ERR_MEMORY, [](CSint *, void *) { tryToDetach(); }, nullptr);
  {
    const FailingAllocator failing(0, Failing::kOnce);
    CSint *x = cs_createNamedCSint(0, 1, "x");
    EXPECT_TRUE(x == nullptr || cs_getName(x) == nullptr);
  }
  EXPECT_EQ(refused, 1);
  cs_setProfilerLocator(
      "here", [](void *) -> const char * { return tryToDetach() ? "here" : nullptr; }, nullptr);
  CSint **x = cs_createCSintArray(2, 0, 1);
  EXPECT_TRUE(cs_Neq(x[0], x[1]));
  EXPECT_EQ(refused, 2);
}

TEST_F(AtWorkTest, InACallbackOfANoGoodSet) {
  CSint **x = cs_createCSintArray(2, 0, 1);
  const auto filter = [](CSnoGoodSet *, CSnoGood *, CSint **, int, void *) { return tryToDetach(); };
  const auto release = [](CSnoGoodSet *, void *) { tryToDetach(); };
  CSnoGoodSet *set = cs_createNoGoodSet(x, 2, filter, 0, release, nullptr);
  const int indexes[] = {0, 1};
  const CSvalueSelection decisions[] = {{CS_METHOD_EQ, 0}, {CS_METHOD_EQ, 0}};
  cs_addNoGood(set, indexes, decisions, 2);
  EXPECT_EQ(refused, 1);
  EXPECT_EQ(cs_getNbNoGoods(set), 1);
  cs_filterNoGood(set, filter);
  EXPECT_EQ(refused, 2);
  cs_end();
  EXPECT_EQ(refused, 3);
}

}  // namespace
}  // namespace koru::test

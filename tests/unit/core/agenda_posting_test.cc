// SPDX-License-Identifier: MIT
// cs_beginPosting, cs_endPosting: runs that are held back; cs_eventRun: the host's own.
#include "core/agenda.h"
#include "unit/core/runner.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::runner;

class AgendaPostingTest : public RunnerTest {
 protected:
  void SetUp() override {
    RunnerTest::SetUp();
    start();
  }
};

TEST_F(AgendaPostingTest, RunsWaitUntilTheEnd) {
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {x}));
  EXPECT_TRUE(postRunner(2, {x}, Rank::kHeavy));
  EXPECT_TRUE(narrowMin(x, 1) && narrowMin(x, 2));
  EXPECT_TRUE(log.empty());
  EXPECT_TRUE(cs_endPosting());
  EXPECT_EQ(log, (Log{"r1", "r2"}));
  EXPECT_TRUE(narrowMin(x, 3));
  EXPECT_EQ(log.size(), 4U);
}

TEST_F(AgendaPostingTest, HandlersDoNotWait) {
  ASSERT_TRUE(cs_beginPosting());
  postHandler(1, x);
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"h1"}));
}

TEST_F(AgendaPostingTest, TheEndTellsOfAFailureOnce) {
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {x}, Rank::kLinear, [] { return false; }));
  EXPECT_FALSE(cs_endPosting());
  EXPECT_TRUE(cs_endPosting()) << "none is open, and it has been told";
}

TEST_F(AgendaPostingTest, OnlyOneIsOpenAndNoneIsBegunByACallback) {
  EXPECT_TRUE(cs_beginPosting());
  EXPECT_FALSE(cs_beginPosting());
  EXPECT_TRUE(cs_endPosting());
  bool begun = true;
  postHandler(1, x, [&] {
    begun = cs_beginPosting();
    return true;
  });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_FALSE(begun);
}

TEST_F(AgendaPostingTest, WithoutASolverThereIsNone) {
  cs_end();
  EXPECT_FALSE(cs_beginPosting());
  EXPECT_FALSE(cs_endPosting());
  cs_init();
}

TEST_F(AgendaPostingTest, AFailureMeanwhileLeavesThoseWhoWait) {
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {x}));
  postHandler(2, y, [] { return false; });
  EXPECT_FALSE(narrowMin(y, 1));
  EXPECT_TRUE(cs_endPosting());
  EXPECT_EQ(log, (Log{"h2", "r1"}));
}

TEST_F(AgendaPostingTest, AContextEndsIt) {
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {x}, Rank::kLinear, [&] { return narrowMin(y, 5); }));
  cs_saveContext();
  EXPECT_EQ(log, (Log{"r1"}));
  cs_restoreContext();
  EXPECT_EQ(y->min, 5) << "done before the context was opened";
  EXPECT_TRUE(cs_endPosting());
}

TEST_F(AgendaPostingTest, AContextOpenedByAHandlerEndsItToo) {
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {y}, Rank::kLinear, [] { return false; }));
  postHandler(2, x, [] {
    cs_saveContext();
    cs_restoreContext();
    return true;
  });
  static_cast<void>(narrowMin(x, 1));  // told of by cs_endPosting
  EXPECT_EQ(log, (Log{"h2", "r1"}));
  EXPECT_FALSE(cs_endPosting());
}

TEST_F(AgendaPostingTest, AFailureThatNobodyWasToldOfLetsSearchesFindNothing) {
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {x}, Rank::kLinear, [] { return false; }));
  EXPECT_FALSE(cs_search(&y, 1, cs_findFreeVar));
  EXPECT_FALSE(cs_search(&y, 1, cs_findFreeVar)) << "whichever it is";
  cs_saveContext();
  EXPECT_FALSE(cs_search(&y, 1, cs_findFreeVar));
  cs_restoreContext();
  EXPECT_FALSE(cs_endPosting());
  EXPECT_TRUE(cs_search(&y, 1, cs_findFreeVar));
}

// No context is opened then, which would end the posting.
TEST_F(AgendaPostingTest, SearchesWithNothingToChooseFindNothingEither) {
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {x}, Rank::kLinear, [] { return false; }));
  const auto none = [](CSint **, int) { return -1; };
  CSint *const fixed = CSINT(3);
  CSint *array[] = {fixed};
  EXPECT_FALSE(cs_search(array, 1, cs_findFreeVar));
  EXPECT_FALSE(cs_findAll(array, 1, cs_findFreeVar, [](CSint **, int) { ADD_FAILURE(); }));
  EXPECT_FALSE(cs_minimize(array, 1, cs_findFreeVar, fixed, nullptr));
  EXPECT_FALSE(cs_searchCriteria(array, 1, none, [](int, int) { return 0; }));
  EXPECT_FALSE(cs_searchMatrix(
      nullptr, 0, 0, [](CSint ***, int, int) { return -1; }, [](int, CSint **, int) { return -1; },
      [](int, int, int) { return 0; }));
  EXPECT_FALSE(cs_searchValueSelectorFail(array, nullptr, 1, none, 0, nullptr));
  CSwalk *walk = cs_openWalk(array, 1, cs_findFreeVar);
  EXPECT_EQ(cs_goWalk(walk, 10, true), CS_STATUS_EXHAUSTED);
  EXPECT_TRUE(cs_closeWalk(walk));
  EXPECT_FALSE(cs_endPosting());
  EXPECT_TRUE(cs_search(array, 1, cs_findFreeVar));
}

TEST_F(AgendaPostingTest, ARestoreHealsWhatNobodyWasToldOf) {
  cs_saveContext();
  ASSERT_TRUE(cs_beginPosting());
  EXPECT_TRUE(postRunner(1, {x}, Rank::kLinear, [] { return false; }));
  EXPECT_FALSE(cs_search(&y, 1, cs_findFreeVar));
  cs_restoreAll();
  EXPECT_TRUE(cs_search(&y, 1, cs_findFreeVar));
  EXPECT_TRUE(cs_endPosting());
}

TEST_F(AgendaPostingTest, OneThatDiesWhileItWaitsIsNotRun) {
  cs_saveContext();
  ASSERT_TRUE(cs_beginPosting());
  for (int number : {1, 2, 3}) EXPECT_TRUE(postRunner(number, {x}));
  cs_restoreContext();
  EXPECT_TRUE(postRunner(4, {x}));
  EXPECT_TRUE(cs_endPosting());
  EXPECT_EQ(log, (Log{"r4"}));
}

TEST_F(AgendaPostingTest, ThoseAroundOneThatDiesStillWait) {
  Constraint head{&kRunners[0], nullptr, 1, 0, kWoken};
  for (std::size_t dies : {0U, 1U, 2U}) {
    std::vector<Runner> runners(3);
    std::vector<Runner *> left;
    ASSERT_TRUE(cs_beginPosting());
    for (Runner &runner : runners) {
      runner.constraint = &head;
      solver::agenda.ask(runner);
      left.push_back(&runner);
    }
    solver::agenda.forget(runners[dies]);
    left.erase(left.begin() + static_cast<std::ptrdiff_t>(dies));
    solver::agenda.setPosting(false);
    for (Runner *one : left) EXPECT_EQ(solver::agenda.takeFirst(), one);
    EXPECT_EQ(solver::agenda.takeFirst(), nullptr);
  }
}

// ----- runs of the host's own

struct Hosted {
  CSint **array = nullptr;
  int calls = 0;
  Action action;

  static bool run(CSint **array, int size, void *extra) {
    auto &self = *static_cast<Hosted *>(extra);
    self.array = size > 0 ? array : nullptr;
    ++self.calls;
    return self.action == nullptr || self.action();
  }
};

TEST_F(AgendaPostingTest, AHostsRunIsCalledOnceAfterAllElse) {
  Hosted host;
  CSint *both[] = {x, y};
  EXPECT_TRUE(cs_eventRun(both, 2, Hosted::run, &host));
  EXPECT_EQ(host.calls, 1);
  EXPECT_NE(host.array, both) << "a copy";
  both[0] = nullptr;
  postRunner(1, {x}, Rank::kHeavy, [&] { return narrowMin(y, x->min); });
  EXPECT_TRUE(narrowMin(x, 4));
  EXPECT_EQ(host.calls, 2);
  EXPECT_EQ(host.array[0], x);
}

TEST_F(AgendaPostingTest, AHostsRunMayNarrowSearchAndFail) {
  Hosted host;
  CSint *array[] = {x, y};
  host.action = [&] {
    const int label = cs_saveContext();
    const bool found = cs_search(host.array, 2, cs_findFreeVar);
    cs_restoreContextUntil(label);
    return found && cs_GE(y, x->min) && x->min < 50;
  };
  EXPECT_TRUE(cs_eventRun(array, 2, Hosted::run, &host));
  EXPECT_TRUE(cs_GE(x, 20));
  EXPECT_EQ(y->min, 20);
  EXPECT_FALSE(cs_GE(x, 60));
  EXPECT_EQ(solver::queue.depth, 0U);
}

TEST_F(AgendaPostingTest, AHostsRunOnNothingIsCalledAtOnce) {
  Hosted host;
  EXPECT_TRUE(cs_eventRun(nullptr, 0, Hosted::run, &host));
  host.action = [] { return false; };
  EXPECT_FALSE(cs_eventRun(nullptr, 0, Hosted::run, &host));
  EXPECT_EQ(host.calls, 2);
}

TEST_F(AgendaPostingTest, BadHostsAreRefused) {
  Hosted host;
  CSint *array[] = {x, nullptr};
  EXPECT_FALSE(cs_eventRun(array, 2, Hosted::run, &host));
  EXPECT_FALSE(cs_eventRun(array, -1, Hosted::run, &host));
  EXPECT_FALSE(cs_eventRun(nullptr, 1, Hosted::run, &host));
  EXPECT_FALSE(cs_eventRun(array, 1, nullptr, &host));
  EXPECT_EQ(host.calls, 0);
  cs_end();
  EXPECT_FALSE(cs_eventRun(array, 1, Hosted::run, &host));
  cs_init();
}

TEST_F(AgendaPostingTest, EachAllocationOfAHostsRunMayFail) {
  Hosted host;
  CSint *array[] = {x, y};
  for (int n = 0, failed = 1; failed > 0; ++n) {
    cs_saveContext();
    const long alive = blocksAlive;
    const int reports = memoryReports;
    {
      const AllocationRule rule(refuseOnly(n));
      const bool posted = cs_eventRun(array, 2, Hosted::run, &host);
      EXPECT_EQ(posted, n >= AllocationRule::count());
    }
    failed = memoryReports - reports;
    EXPECT_LE(failed, 1);
    cs_restoreContext();
    EXPECT_LE(blocksAlive, alive + 1) << "the pool may have grown";
  }
}

}  // namespace

// SPDX-License-Identifier: MIT
// When runs come, who wakes them, and what failures and contexts do to those who wait. Postings that are held back and
// the host's own runs are in agenda_posting_test.cc.
#include "core/agenda.h"

#include "unit/core/runner.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::runner;

class AgendaTest : public RunnerTest {};

TEST_F(AgendaTest, ARunComesOnceAfterAllEvents) {
  postRunner(1, {x, y});
  postHandler(2, x, [&] { return narrowMin(y, 3) && narrowMax(y, 90); });
  postHandler(3, y);
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"h2", "h3", "h3", "r1"}));
}

TEST_F(AgendaTest, CheapRanksComeFirstAndWithinARankTheFirstWhoAsked) {
  postRunner(1, {x}, Rank::kHeavy);
  postRunner(2, {x}, Rank::kLinear);
  postRunner(3, {x}, Rank::kQuadratic);
  postRunner(4, {x}, Rank::kLinear);
  postRunner(5, {x}, Rank::kSorting);
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"r4", "r2", "r5", "r3", "r1"})) << "the newest attachment asks first";
}

TEST_F(AgendaTest, EventsOfARunComeBeforeTheNextRun) {
  postRunner(1, {x}, Rank::kLinear, [&] { return narrowMin(y, 3); });
  postRunner(2, {x}, Rank::kHeavy);
  postHandler(3, y);
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"r1", "h3", "r2"}));
}

TEST_F(AgendaTest, ACheapRunThatIsWokenAgainComesBeforeADearOne) {
  postRunner(1, {x, y}, Rank::kLinear);
  postRunner(2, {x}, Rank::kSorting, [&] { return narrowMin(y, 3); });
  postRunner(3, {x}, Rank::kHeavy);
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"r1", "r2", "r1", "r3"}));
}

TEST_F(AgendaTest, ARunsOwnChangesDoNotWakeIt) {
  postRunner(1, {x, y}, Rank::kLinear, [&] { return narrowMin(x, 3) && narrowMin(y, 3); });
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"r1"}));
}

TEST_F(AgendaTest, WhatOthersMakeOfItsChangesWakesIt) {
  postRunner(1, {x, y}, Rank::kLinear, [&] { return narrowMin(x, 3); });
  postHandler(2, x, [&] { return x->min < 3 || narrowMin(y, 3); });
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"h2", "r1", "h2", "r1"}));
}

TEST_F(AgendaTest, AVariableThatStandsTwiceWakesByOwnChanges) {
  postRunner(1, {x, y, x}, Rank::kLinear, [&] { return narrowMin(y, 3); });
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"r1", "r1"}));
}

TEST_F(AgendaTest, AfterItsChangesAreHandledItHearsAgain) {
  postRunner(1, {x, y}, Rank::kLinear, [&] { return narrowMin(y, 3); });
  start();
  EXPECT_TRUE(narrowMin(x, 1) && narrowMin(y, 5));
  EXPECT_EQ(log, (Log{"r1", "r1"}));
}

TEST_F(AgendaTest, ThePosterRunsAndReturnsTheResult) {
  start();
  EXPECT_TRUE(postRunner(1, {x, y}, Rank::kLinear, [&] { return narrowMin(y, 3); }));
  EXPECT_FALSE(postRunner(2, {x}, Rank::kLinear, [] { return false; }));
  EXPECT_EQ(log, (Log{"r1", "r2"}));
  EXPECT_EQ(solver::queue.depth, 0U);
}

TEST_F(AgendaTest, InsideAHandlerTheFirstRunComesWhenTheHandlersAreDone) {
  start();
  bool posted = false;
  postHandler(1, x, [&] { return posted = postRunner(2, {y}, Rank::kLinear, [] { return false; }); });
  postHandler(3, x);
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_TRUE(posted);
  EXPECT_EQ(log, (Log{"h3", "h1", "r2"}));
}

// ----- failures

TEST_F(AgendaTest, AFailingRunDropsEventsAndRuns) {
  postRunner(1, {x}, Rank::kLinear, [&] { return narrowMin(y, 3) && narrowMin(z, 3) && false; });
  postRunner(2, {x}, Rank::kHeavy);
  postHandler(3, y);
  start();
  solver::queue.failures = 5;
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"r1"}));
  EXPECT_EQ(solver::queue.failures, 5);
  EXPECT_EQ(solver::queue.depth, 0U);
  EXPECT_FALSE(solver::agenda.due());
  EXPECT_TRUE(solver::events.empty());
  log.clear();
  EXPECT_TRUE(narrowMin(y, 5)) << "nobody is left from before";
  EXPECT_EQ(log, (Log{"h3"}));
}

TEST_F(AgendaTest, AFailingHandlerDropsThoseWhoWait) {
  postRunner(1, {x});
  postHandler(2, x, [] { return false; });
  postRunner(3, {x});
  start();
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"h2"}));
  EXPECT_FALSE(narrowMin(x, 2)) << "asks anew";
}

TEST_F(AgendaTest, AFailureInItsOwnEventsEndsTheQuiet) {
  postRunner(1, {x, y}, Rank::kLinear, [&] { return narrowMin(y, 3); });
  postHandler(2, y, [&] { return y->min != 3; });
  start();
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_TRUE(narrowMin(y, 4));
  EXPECT_EQ(log, (Log{"r1", "h2", "h2", "r1"}));
}

TEST_F(AgendaTest, ListenersHearTheLatestEventHandled) {
  std::vector<std::pair<CSint *, int>> heard;
  postListener(x, heard);
  postRunner(1, {x}, Rank::kLinear, [&] { return narrowMax(y, 9) && false; });
  start();
  EXPECT_FALSE(narrowMin(x, 7));
  EXPECT_EQ(heard, (std::vector<std::pair<CSint *, int>>{{x, 7}})) << "not the event that the run has queued";
}

TEST_F(AgendaTest, AFirstRunThatFailsHasNoEventToTell) {
  start();
  std::vector<std::pair<CSint *, int>> heard;
  postListener(x, heard);
  EXPECT_FALSE(postRunner(1, {x}, Rank::kLinear, [] { return false; }));
  EXPECT_TRUE(heard.empty());
}

TEST_F(AgendaTest, ObserversSeeWakeUpsAndRuns) {
  postRunner(1, {x}, Rank::kLinear, [&] { return narrowMin(y, 3) && x->min < 5; });
  start();
  observe();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_FALSE(narrowMin(x, 5));
  EXPECT_FALSE(postRunner(2, {x}, Rank::kLinear, [] { return false; }));
  EXPECT_EQ(
      seen,
      (Sightings{
          {true, x, kNewMin}, {true, x, kNewMin}, {true, x, kNewMin}, {false, x, kNewMin}, {false, nullptr, -1}}));
}

TEST_F(AgendaTest, ExhaustedMemoryInARunFailsIt) {
  postRunner(1, {x, y}, Rank::kLinear, [&] { return narrowMin(y, 3) && removeValue(z, 50); });
  start();
  {
    fillTrail();
    cs_saveContext();
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(removeValue(x, 7));
  }
  EXPECT_FALSE(solver::agenda.due());
  cs_restoreContext();
  EXPECT_GE(memoryReports, 1);
  EXPECT_TRUE(removeValue(x, 8));
  EXPECT_FALSE(contains(z, 50));
}

// ----- contexts and searches in callbacks

TEST_F(AgendaTest, ASearchInAHandlerSeesDeferredConstraints) {
  start();
  postRunner(1, {y, z}, Rank::kLinear, [&] { return y->min + z->max < 150; });
  bool found = true;
  postHandler(2, x, [&] {
    CSint *both[] = {y, z};
    cs_saveContext();
    found = narrowMin(y, 60) && narrowMin(z, 99) && cs_search(both, 2, cs_findFreeVar);
    cs_restoreContext();
    return true;
  });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_FALSE(found);
  EXPECT_FALSE(solver::agenda.due());
}

TEST_F(AgendaTest, OpeningAContextInAHandlerRunsThoseWhoWait) {
  postRunner(1, {x});
  postHandler(2, x, [&] {
    EXPECT_EQ(z->min, 0);
    cs_saveContext();
    EXPECT_EQ(z->min, 9);
    cs_restoreContext();
    EXPECT_EQ(z->min, 9) << "done before the mark was set";
    return true;
  });
  postRunner(3, {x}, Rank::kLinear, [&] { return narrowMin(z, 9); });
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"h2", "r3", "r1"})) << "3 asks before the handler is called, 1 after that";
}

TEST_F(AgendaTest, PostFailAndUndoInsideAHandlersContext) {
  postHandler(1, x, [&] {
    cs_saveContext();
    EXPECT_TRUE(postRunner(2, {y}, Rank::kLinear, [&] { return y->min < 5; }));
    EXPECT_FALSE(narrowMin(y, 6));
    EXPECT_FALSE(solver::agenda.due());
    cs_restoreContext();
    return true;
  });
  postRunner(3, {x});
  start();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(log, (Log{"h1", "r3", "r2", "r2"}));
  EXPECT_TRUE(narrowMin(y, 7)) << "2 is gone";
  EXPECT_EQ(log.size(), 4U);
}

TEST_F(AgendaTest, AContextInARunEndsItsQuiet) {
  start();
  int calls = 0;
  postRunner(1, {x, y}, Rank::kLinear, [&] {
    if (++calls > 2) return true;
    if (!narrowMin(y, calls)) return false;
    cs_saveContext();
    cs_restoreContext();
    return true;
  });
  EXPECT_EQ(calls, 3) << "once for the posting, and in each context for the change before it";
  EXPECT_FALSE(solver::agenda.due());
}

// A callback must close what it opens. One that does not gets no guarantee but that nothing breaks.
TEST_F(AgendaTest, AContextLeftOpenByAHandlerBreaksNothing) {
  start();
  postRunner(1, {x, y}, Rank::kLinear, [&] { return narrowMin(y, x->min) && narrowMin(z, x->min); });
  bool opened = false;
  postHandler(2, x, [&] {
    if (!opened) cs_saveContext();
    opened = true;
    return true;
  });
  EXPECT_TRUE(narrowMin(x, 5));
  EXPECT_EQ(y->min, 5);
  EXPECT_EQ(z->min, 5);
  EXPECT_FALSE(solver::agenda.due());
}

TEST_F(AgendaTest, ARunsChangesWaitThoughAHandlerHasLeftAContextOpen) {
  postRunner(1, {x}, Rank::kLinear, [&] {
    const bool consistent = narrowMin(y, 5);
    log.push_back("done");
    return consistent;
  });
  postHandler(2, x, [] { return cs_saveContext() > 0; });
  postHandler(3, y);
  start();
  EXPECT_TRUE(narrowMin(x, 5));
  EXPECT_EQ(log, (Log{"h2", "r1", "done", "h3"}));
}

TEST_F(AgendaTest, TheEndForgetsThoseWhoWait) {
  cs_beginPosting();
  EXPECT_TRUE(postRunner(1, {x}) && postRunner(2, {y}));
  cs_end();
  EXPECT_TRUE(log.empty());
  cs_init();
  EXPECT_FALSE(solver::agenda.due());
  EXPECT_TRUE(cs_beginPosting()) << "the posting has ended as well";
}

}  // namespace

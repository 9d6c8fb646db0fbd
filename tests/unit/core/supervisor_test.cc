// SPDX-License-Identifier: MIT
// A supervisor ends a propagation between two events or runs, which then fails and leaves what any failure leaves.
#include "core/solver.h"
#include "koru_extras.h"
#include "support/kit/solver_test.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class SupervisorTest : public JournalTest {
 protected:
  static constexpr int kCascade = 1000;
  int asked = 0;
  int endsAt = -1;  // at this question and all later ones

  static bool answer(void *argument) {
    auto &self = *static_cast<SupervisorTest *>(argument);
    return ++self.asked >= self.endsAt && self.endsAt > 0;
  }
  void supervise(int questions) {
    endsAt = questions;
    solver::queue.untilAsked = 0;
    solver::queue.supervisor = {answer, this};
  }
  void TearDown() override {
    solver::queue.supervisor = {};
    JournalTest::TearDown();
  }

  // Each change of x lowers y, and each of y raises x.
  void makeCascade() {
    x = cs_createCSint(0, kCascade);
    y = cs_createCSint(-kCascade, 0);
    ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
    journal.reactions[1] = [&](const Call &) { return narrowMax(y, -x->min); };
    journal.reactions[2] = [&](const Call &) { return x->min == x->max || narrowMin(x, x->min + 1); };
  }
};

TEST_F(SupervisorTest, WithoutAReasonToEndEverythingIsAsBefore) {
  makeCascade();
  supervise(-1);
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(x->min, kCascade);
  EXPECT_EQ(y->max, -kCascade);
  EXPECT_GT(asked, kCascade / 64);
  EXPECT_LT(asked, kCascade / 16);
  EXPECT_EQ(solver::queue.wakings, journal.calls.size());
}

TEST_F(SupervisorTest, EndsInTheMiddleAndLeavesNothingQueued) {
  makeCascade();
  supervise(3);
  const int label = cs_saveContext();
  EXPECT_FALSE(cs_GE(x, 1));
  EXPECT_GT(cs_getMin(x), 1);
  EXPECT_LT(cs_getMin(x), 200);
  EXPECT_TRUE(solver::events.empty());
  EXPECT_EQ(solver::queue.depth, 0U);
  EXPECT_EQ(solver::queue.failures, 0);
  cs_restoreContextUntil(label);
  EXPECT_EQ(cs_getMin(x), 0);
  EXPECT_EQ(cs_getMax(y), 0);
  solver::queue.supervisor = {};
  EXPECT_TRUE(cs_GE(x, 1));
  EXPECT_EQ(cs_getMin(x), kCascade);
}

TEST_F(SupervisorTest, WhoeverGoesOnIsToldAgainAtOnce) {
  makeCascade();
  supervise(1);
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_TRUE(journal.calls.empty());
  EXPECT_FALSE(narrowMin(x, 5));
  EXPECT_EQ(asked, 2);
  EXPECT_TRUE(journal.calls.empty());
}

// No constraint has failed, so nobody hears of a conflict.
TEST_F(SupervisorTest, IsNoConflict) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.flags = kConflictListener}));
  ASSERT_TRUE(watch(journal, 2, {x}));
  supervise(1);
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_TRUE(journal.calls.empty());
}

TEST_F(SupervisorTest, IsAskedBeforeEachRun) {
  static int runs;
  runs = 0;
  CSint *array[] = {x, y};
  const auto count = [](CSint **, int, void *) { return ++runs > 0; };
  ASSERT_TRUE(cs_eventRun(array, 2, count, nullptr));
  ASSERT_TRUE(cs_eventRun(array, 2, count, nullptr));
  EXPECT_EQ(runs, 2);
  supervise(3);
  EXPECT_FALSE(cs_GE(x, 1)) << "at the event, before the first run, before the second";
  EXPECT_EQ(runs, 3);
  EXPECT_FALSE(solver::agenda.due());
  supervise(-1);
  EXPECT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(runs, 5);
}

TEST_F(SupervisorTest, CountsWhatAProfilerSeesToo) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  CSprofiler *profiler = cs_createProfiler(0);
  cs_enableProfiler(profiler);
  supervise(-1);
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(solver::queue.wakings, 1U);
  cs_disableProfiler(profiler);
}

// For constraints whose handlers take long.
TEST_F(SupervisorTest, AHandlerMayAskForItself) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  journal.reactions[1] = [](const Call &) { return !mustEnd(); };
  EXPECT_TRUE(narrowMin(x, 1)) << "nobody supervises";
  supervise(3);
  EXPECT_TRUE(narrowMin(x, 2));
  EXPECT_FALSE(narrowMin(x, 3));
  EXPECT_FALSE(narrowMin(x, 4));
}

}  // namespace

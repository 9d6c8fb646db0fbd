// SPDX-License-Identifier: MIT
// The order in which handlers run and what they are told. Failures are in queue_failure_test.cc, observers and nested
// propagation in files of their own.
#include "core/queue.h"

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class QueueTest : public JournalTest {
 protected:
  // When watcher `number` first runs it does `action` and succeeds if the action does.
  void once(int number, std::function<bool()> action) {
    journal.reactions[number] = [action = std::move(action), done = false](const Call &) mutable {
      if (done) return true;
      done = true;
      return action();
    };
  }
};

TEST_F(QueueTest, ConstraintsRunNewestAttachmentFirst) {
  for (int number : {1, 2, 3}) ASSERT_TRUE(watch(journal, number, {x}));
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{3, 2, 1}));
}

TEST_F(QueueTest, AttachingDoesNotRunTheConstraint) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  EXPECT_TRUE(journal.calls.empty());
}

TEST_F(QueueTest, EventsAreServedFirstInFirstOut) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y, z}));
  once(1, [&] { return narrowMin(z, 1) && narrowMin(y, 1) && narrowMax(z, 50); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(
      journal.calls,
      (std::vector<Call>{
          {1, x, kNewMin, 0, 1, 0}, {2, z, kNewMin, 0, 1, 1}, {2, y, kNewMin, 0, 1, 0}, {2, z, kNewMax, 99, 50, 1}}));
}

TEST_F(QueueTest, AChangeInsideAHandlerWaitsForTheRestOfTheWalk) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {x}) && watch(journal, 3, {y}));
  once(2, [&] { return narrowMin(y, 1); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{2, 1, 3}));
}

TEST_F(QueueTest, ChangesAreVisibleToOtherHandlersBeforeTheirEventIsServed) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {x}) && watch(journal, 3, {y}));
  once(2, [&] { return narrowMin(y, 7); });
  int seen = -1;
  once(1, [&] {
    seen = cs_getMin(y);
    return true;
  });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(seen, 7);
}

TEST_F(QueueTest, AConstraintRunsOncePerEventOnEachOfItsVariables) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y, z, y}));
  once(1, [&] { return bindValue(y, 0) && narrowMin(z, 1); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.calls, (std::vector<Call>{{1, x, kNewMin, 0, 1, 0},
                                              {2, y, kMaxBound, 99, 0, 2},
                                              {2, y, kMaxBound, 99, 0, 0},
                                              {2, z, kNewMin, 0, 1, 1}}));
}

TEST_F(QueueTest, AConstraintAlreadyWaitingIsQueuedAgain) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  once(1, [&] { return removeValue(y, 50) && removeValue(y, 60); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2, 2}));
}

TEST_F(QueueTest, AConstraintAttachedDuringPropagationDoesNotHearEventsQueuedBefore) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  once(1, [&] { return watch(journal, 2, {x}) && watch(journal, 3, {y}) && narrowMin(y, 1); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 3}));
  EXPECT_TRUE(narrowMin(x, 2));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 3, 2, 1}));
}

TEST_F(QueueTest, ASnapshotIsTakenAtTheChangeNotWhenServed) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  once(1, [&] { return narrowMin(y, 1) && watch(journal, 3, {y}); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2}));
}

TEST_F(QueueTest, SlotsThatIgnoreAnEventAreSkippedAndOlderListenersStillHearIt) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.table = &kHearsNewMax}));
  ASSERT_TRUE(watch(journal, 3, {x}, {.table = &kHearsNothing}));
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
  EXPECT_TRUE(narrowMax(x, 90));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2, 1}));
}

TEST_F(QueueTest, FlaggedConstraintsAreNeverWokenByEvents) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.flags = kConflictListener}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.flags = kNeverWoken}));
  EXPECT_TRUE(narrowMin(x, 1) && narrowMax(x, 9) && removeValue(x, 5) && bindValue(x, 4));
  EXPECT_TRUE(journal.calls.empty());
}

// ----- what handlers are told

TEST_F(QueueTest, OldBoundsAreThoseTheHandlersSawLast) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  EXPECT_TRUE(narrowMin(x, 3) && narrowMin(x, 5) && narrowMax(x, 90) && narrowMax(x, 80));
  EXPECT_EQ(
      journal.calls,
      (std::vector<Call>{
          {1, x, kNewMin, 0, 3, 0}, {1, x, kNewMin, 3, 5, 0}, {1, x, kNewMax, 99, 90, 0}, {1, x, kNewMax, 90, 80, 0}}));
  EXPECT_EQ(x->reportedMin, 5);
  EXPECT_EQ(x->reportedMax, 80);
}

TEST_F(QueueTest, ASupersededNewMinimumIsSkippedAndTheNextTellsTheOldestOldValue) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  once(1, [&] { return narrowMin(y, 10) && narrowMin(y, 20); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.calls.back(), (Call{2, y, kNewMin, 0, 20, 0}));
  EXPECT_EQ(journal.calls.size(), 2U);
}

TEST_F(QueueTest, ASupersededNewMaximumIsSkippedAndTheNextTellsTheOldestOldValue) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  once(1, [&] { return narrowMax(y, 80) && narrowMax(y, 70); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.calls.back(), (Call{2, y, kNewMax, 99, 70, 0}));
  EXPECT_EQ(journal.calls.size(), 2U);
}

TEST_F(QueueTest, ANewMinimumFollowedByABindingToItIsStillServed) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  once(1, [&] { return narrowMin(y, 10) && bindValue(y, 10); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.calls,
            (std::vector<Call>{{1, x, kNewMin, 0, 1, 0}, {2, y, kNewMin, 0, 10, 0}, {2, y, kMaxBound, 99, 10, 0}}));
}

TEST_F(QueueTest, InstantiationsAreNeverSkipped) {
  CSint *low = cs_createCSint(0, 9);
  CSint *high = cs_createCSint(0, 9);
  CSint *inner = cs_createCSint(0, 9);
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {low, high, inner}));
  once(1, [&] { return bindValue(low, 0) && bindValue(high, 9) && bindValue(inner, 5); });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.calls, (std::vector<Call>{{1, x, kNewMin, 0, 1, 0},
                                              {2, low, kMaxBound, 9, 0, 0},
                                              {2, high, kMinBound, 0, 9, 1},
                                              {2, inner, kBound, 0, 9, 2}}));
}

TEST_F(QueueTest, ABindingInsideBringsBothReportedBoundsToTheValue) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  EXPECT_TRUE(bindValue(x, 40));
  EXPECT_EQ(x->reportedMin, 40);
  EXPECT_EQ(x->reportedMax, 40);
}

TEST_F(QueueTest, ARemovalThatIsNoLongerInsideTheBoundsIsSkipped) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  once(1, [&] {
    return removeValue(y, 3) && removeValue(y, 90) && removeValue(y, 50) && narrowMin(y, 4) && narrowMax(y, 89);
  });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.calls, (std::vector<Call>{{1, x, kNewMin, 0, 1, 0},
                                              {2, y, kRemoved, 50, 50, 0},
                                              {2, y, kNewMin, 0, 4, 0},
                                              {2, y, kNewMax, 99, 89, 0}}));
}

TEST_F(QueueTest, ARemovalWhoseValueHasBecomeABoundAgainIsSkipped) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  once(1, [&] {
    const int mark = solver::trail.count();
    if (!removeValue(y, 30) || !removeValue(y, 60)) return false;
    solver::trail.undoTo(mark);
    return narrowMin(y, 30) && narrowMax(y, 60);
  });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.calls,
            (std::vector<Call>{{1, x, kNewMin, 0, 1, 0}, {2, y, kNewMin, 0, 30, 0}, {2, y, kNewMax, 99, 60, 0}}));
}

TEST_F(QueueTest, ARemovalLeavesTheReportedBoundsAlone) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  EXPECT_TRUE(removeValue(x, 50));
  EXPECT_EQ(x->reportedMin, 0);
  EXPECT_EQ(x->reportedMax, 99);
}

TEST_F(QueueTest, AnEventNobodyListensToStillUpdatesTheReportedBounds) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNewMax}));
  EXPECT_TRUE(narrowMin(x, 4));
  EXPECT_EQ(x->reportedMin, 4);
}

TEST_F(QueueTest, RestoringPutsTheReportedBoundsBack) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  cs_saveContext();
  EXPECT_TRUE(narrowMin(x, 4) && narrowMax(x, 60));
  cs_restoreContext();
  EXPECT_TRUE(narrowMin(x, 2));
  EXPECT_EQ(journal.calls.back(), (Call{1, x, kNewMin, 0, 2, 0}));
  EXPECT_EQ(x->reportedMax, 99);
}

// ----- event records

TEST_F(QueueTest, EventRecordsAreRecycled) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  CSint *wide = cs_createCSint(0, 5000);
  ASSERT_TRUE(watch(journal, 2, {wide}));
  for (int bound = 1; bound < 5000; ++bound) ASSERT_TRUE(narrowMin(wide, bound));
  EXPECT_EQ(solver::events.blockCount(), 1);
}

TEST_F(QueueTest, AnEventThatCannotBeStoredFailsTheChangeAndIsReportedOnce) {
  CSint *wide = cs_createCSint(0, 5000);
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {wide}));
  int done = 0;
  once(1, [&] {
    // The trail gets a second block, the events do not.
    const AllocationRule rule([](std::size_t size) { return size < sizeof(EventRecord) * 1024; });
    while (done < 2000 && narrowMin(wide, done + 1)) ++done;
    return true;
  });
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(done, EventQueue::kCapacity);
  EXPECT_EQ(memoryReports, 1);
}

}  // namespace

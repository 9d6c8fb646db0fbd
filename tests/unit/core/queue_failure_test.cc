// SPDX-License-Identifier: MIT
// What a failing handler leaves behind, and the conflict listeners that are told of it.
#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class QueueFailureTest : public JournalTest {
 protected:
  static constexpr Kind kListener{.flags = kConflictListener};
  static constexpr Kind kDeaf{.flags = kNeverWoken};
};

TEST_F(QueueFailureTest, TheFirstFalseEndsTheWalkAndTheRun) {
  for (int number : {1, 2, 3}) ASSERT_TRUE(watch(journal, number, {x}));
  ASSERT_TRUE(watch(journal, 4, {y}));
  journal.reactions[3] = [&](const Call &) { return narrowMin(y, 1); };
  fails(2);
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{3, 2})) << "neither the older entry nor the queued event ran";
}

TEST_F(QueueFailureTest, TheQueueIsEmptiedAndALaterChangeStartsAFreshRun) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  journal.reactions[1] = [&](const Call &) { return narrowMin(y, 1) && narrowMax(y, 9) && false; };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_TRUE(solver::events.empty());
  EXPECT_EQ(solver::queue.depth, 0U);
  journal.calls.clear();
  EXPECT_TRUE(removeValue(y, 5));
  EXPECT_EQ(journal.calls, (std::vector<Call>{{2, y, kRemoved, 5, 5, 0}}));
}

TEST_F(QueueFailureTest, EventsOfAFailedRunAreDropped) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  journal.reactions[1] = [&](const Call &) { return removeValue(y, 5) && removeValue(y, 6) && false; };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_TRUE(solver::events.empty());
  journal.reactions[1] = [&](const Call &) { return removeValue(y, 7) && removeValue(y, 8) && false; };
  EXPECT_FALSE(narrowMin(x, 2));
  EXPECT_TRUE(solver::events.empty());
}

TEST_F(QueueFailureTest, NothingIsUndoneAndTheErrorCodeIsUntouched) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  journal.reactions[1] = [&](const Call &) { return narrowMin(y, 7) && false; };
  EXPECT_FALSE(narrowMin(x, 4));
  EXPECT_EQ(cs_getMin(x), 4);
  EXPECT_EQ(cs_getMin(y), 7);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(QueueFailureTest, TheFailureCountIsSetBackByTheOutermostChange) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  fails(1);
  solver::queue.failures = 5;
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(solver::queue.failures, 5);
}

TEST_F(QueueFailureTest, AFailureOfADeferredChangeShowsAtTheOutermostOneOnly) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  bool inner = false;
  journal.reactions[1] = [&](const Call &) { return inner = narrowMin(y, 1); };
  fails(2);
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_TRUE(inner) << "a queued change has not failed yet";
}

// ----- conflict listeners

TEST_F(QueueFailureTest, AListenerOnTheFailingVariableIsToldTheEvent) {
  ASSERT_TRUE(watch(journal, 9, {x}, kListener) && watch(journal, 1, {x}));
  // The walk meets the listener only if it comes before the failing entry.
  ASSERT_TRUE(watch(journal, 8, {x}, kListener));
  fails(1);
  EXPECT_FALSE(narrowMin(x, 3));
  EXPECT_EQ(journal.calls,
            (std::vector<Call>{{1, x, kNewMin, 0, 3, 0}, {8, x, kNewMin, 0, 3, 0}, {9, x, kNewMin, 0, 3, 0}}));
}

TEST_F(QueueFailureTest, AListenerBehindTheFailingEntryHasNotBeenMetAndHearsNothing) {
  ASSERT_TRUE(watch(journal, 9, {x}, kListener) && watch(journal, 1, {x}));
  fails(1);
  EXPECT_FALSE(narrowMin(x, 3));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
}

TEST_F(QueueFailureTest, ListenersAreNotCalledWithoutAFailure) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 9, {x}, kListener));
  EXPECT_TRUE(narrowMin(x, 3));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
}

TEST_F(QueueFailureTest, TheFirstListenerMetInARunIsTheOneThatIsKept) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 8, {x}, kListener));
  ASSERT_TRUE(watch(journal, 2, {y}) && watch(journal, 9, {y}, kListener));
  journal.reactions[1] = [&](const Call &) { return narrowMax(y, 50); };
  fails(2);
  EXPECT_FALSE(narrowMin(x, 3));
  // The listener of x is told the failing event of y; that of y, met later in the run, is not.
  EXPECT_EQ(journal.calls.back(), (Call{8, y, kNewMax, 99, 50, 0}));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2, 8}));
}

TEST_F(QueueFailureTest, AListenerIsForgottenWhenTheRunEnds) {
  ASSERT_TRUE(watch(journal, 8, {x}, kListener) && watch(journal, 1, {y}));
  fails(1);
  EXPECT_TRUE(narrowMin(x, 3));
  EXPECT_FALSE(narrowMin(y, 3));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
}

TEST_F(QueueFailureTest, AListenerIsMetAlsoWhereNobodyElseHearsTheEvent) {
  ASSERT_TRUE(watch(journal, 8, {x}, kListener) && watch(journal, 5, {x}, {.table = &kHearsNewMax}));
  ASSERT_TRUE(watch(journal, 1, {y, z}));
  ASSERT_TRUE(watch(journal, 2, {z}));
  // z changes first, then x, then y: the run has met x's listener when y's constraint fails.
  journal.reactions[2] = [&](const Call &) { return narrowMin(x, 1) && narrowMax(y, 1); };
  journal.reactions[1] = [&](const Call &call) { return call.variable != y; };
  EXPECT_FALSE(narrowMin(z, 3));
  EXPECT_EQ(journal.watchers().back(), 8);
}

TEST_F(QueueFailureTest, TheResultOfAListenerIsIgnored) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 8, {x}, kListener) && watch(journal, 9, {x}, kListener));
  fails(1);
  fails(9);
  EXPECT_FALSE(narrowMin(x, 3));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 9, 8})) << "a false listener does not stop the next one";
  EXPECT_EQ(solver::queue.failures, 0);
}

TEST_F(QueueFailureTest, OtherConstraintsOfTheListenersListAreNotCalled) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 7, {x}, kDeaf) && watch(journal, 8, {x}, kListener));
  fails(1);
  EXPECT_FALSE(narrowMin(x, 3));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 8}));
}

TEST_F(QueueFailureTest, ChangesMadeByAListenerAreQueuedAndDroppedWithTheRest) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 8, {x}, kListener) && watch(journal, 2, {y}));
  fails(1);
  journal.reactions[8] = [&](const Call &) { return narrowMin(y, 5); };
  EXPECT_FALSE(narrowMin(x, 3));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 8}));
  EXPECT_EQ(cs_getMin(y), 5);
  EXPECT_TRUE(solver::events.empty());
}

TEST_F(QueueFailureTest, EveryEventCodeReachesListenersWithItsArguments) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 8, {x}, kListener));
  fails(1);
  const auto told = [&](const std::function<bool()> &change) {
    journal.calls.clear();
    cs_saveContext();
    EXPECT_FALSE(change());
    cs_restoreContext();
    return journal.calls.back();
  };
  EXPECT_EQ(told([&] { return narrowMin(x, 3); }), (Call{8, x, kNewMin, 0, 3, 0}));
  EXPECT_EQ(told([&] { return narrowMax(x, 3); }), (Call{8, x, kNewMax, 99, 3, 0}));
  EXPECT_EQ(told([&] { return bindValue(x, 99); }), (Call{8, x, kMinBound, 0, 99, 0}));
  EXPECT_EQ(told([&] { return bindValue(x, 0); }), (Call{8, x, kMaxBound, 99, 0, 0}));
  EXPECT_EQ(told([&] { return bindValue(x, 5); }), (Call{8, x, kBound, 0, 99, 0}));
  EXPECT_EQ(told([&] { return removeValue(x, 5); }), (Call{8, x, kRemoved, 5, 5, 0}));
}

}  // namespace

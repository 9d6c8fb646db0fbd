// SPDX-License-Identifier: MIT
// What observers are told of handler runs while someone profiles.
#include <string>

#include "core/alloc.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

struct Seen {
  bool consistent;
  CSint *variable;
  int code;
  std::string site;
  bool operator==(const Seen &) const = default;
};

void PrintTo(const Seen &seen, std::ostream *out) {
  *out << (seen.consistent ? "ok " : "failed ") << seen.site << " event " << seen.code << " of " << seen.variable;
}

class QueueObserverTest : public JournalTest {
 protected:
  std::vector<Seen> seen;
  Observer observer{note, nullptr, &seen, true, nullptr};

  void SetUp() override {
    JournalTest::SetUp();
    solver::ports.add(&observer);
  }
  void enable(bool enabled) {
    observer.enabled = enabled;
    solver::ports.refreshProfiling();
  }
  static void note(void *argument, bool consistent, CSint *variable, int code, Site *site) {
    static_cast<std::vector<Seen> *>(argument)->push_back({consistent, variable, code, site->name()});
  }
};

TEST_F(QueueObserverTest, EverySuccessfulHandlerRunIsNotedAfterTheCall) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "first"}) && watch(journal, 2, {x}, {.name = "second"}));
  std::vector<std::size_t> seenBefore;
  const auto look = [&](const Call &) {
    seenBefore.push_back(seen.size());
    return true;
  };
  journal.reactions[1] = look;
  journal.reactions[2] = look;
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{true, x, kNewMin, "second"}, {true, x, kNewMin, "first"}}));
  EXPECT_EQ(seenBefore, (std::vector<std::size_t>{0, 1}));
}

TEST_F(QueueObserverTest, SlotsThatDoNothingAreCountedToo) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNothing, .name = "silent"}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.table = &kHearsNewMax, .name = "maximum"}));
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{true, x, kNewMin, "maximum"}, {true, x, kNewMin, "silent"}}));
  EXPECT_TRUE(journal.calls.empty());
}

TEST_F(QueueObserverTest, FlaggedConstraintsAreNotCounted) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "woken"}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.flags = kConflictListener, .name = "listener"}));
  ASSERT_TRUE(watch(journal, 3, {x}, {.flags = kNeverWoken, .name = "deaf"}));
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{true, x, kNewMin, "woken"}}));
}

TEST_F(QueueObserverTest, AFailureIsNotedOnceWithTheFailingSiteAfterTheRunHasEnded) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "older"}) && watch(journal, 2, {x}, {.name = "culprit"}));
  ASSERT_TRUE(watch(journal, 3, {x}, {.flags = kConflictListener, .name = "listener"}));
  journal.reactions[2] = [](const Call &) { return false; };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{false, x, kNewMin, "culprit"}}));
}

TEST_F(QueueObserverTest, TheFailureNoteFindsAnEmptyQueueAndTheFailureCounted) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  journal.reactions[1] = [](const Call &) { return false; };
  struct State {
    unsigned depth = 9;
    int failures = -1;
    bool empty = false;
  } state;
  observer.argument = &state;
  observer.notify = [](void *argument, bool, CSint *, int, Site *) {
    *static_cast<State *>(argument) = {solver::queue.depth, solver::queue.failures, solver::events.empty()};
  };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(state.depth, 0U);
  EXPECT_EQ(state.failures, 1);
  EXPECT_TRUE(state.empty);
}

TEST_F(QueueObserverTest, NothingIsNotedWhileNobodyProfiles) {
  ASSERT_TRUE(watch(journal, 1, {x}));
  enable(false);
  EXPECT_TRUE(narrowMin(x, 1));
  journal.reactions[1] = [](const Call &) { return false; };
  EXPECT_FALSE(narrowMin(x, 2));
  EXPECT_TRUE(seen.empty());
}

// By code of the host's: without any, nobody looks whether it has been.
TEST_F(QueueObserverTest, SwitchedOnInMidWalkItCountsThatRunAndAllThatFollow) {
  solver::queue.hostHears = true;
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNothing, .name = "silent"}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.name = "switch"}));
  ASSERT_TRUE(watch(journal, 3, {x}, {.name = "before"}));
  enable(false);
  journal.reactions[2] = [&](const Call &) {
    enable(true);
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{true, x, kNewMin, "switch"}, {true, x, kNewMin, "silent"}}));
}

TEST_F(QueueObserverTest, SwitchedOffInMidWalkItCountsNoMore) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "after"}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.name = "switch"}));
  ASSERT_TRUE(watch(journal, 3, {x}, {.name = "before"}));
  journal.reactions[2] = [&](const Call &) {
    enable(false);
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{true, x, kNewMin, "before"}}));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{3, 2, 1}));
}

TEST_F(QueueObserverTest, SwitchedOffInMidWalkSlotsThatDoNothingAreSkippedAgain) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNothing, .name = "silent"}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.name = "switch"}));
  journal.reactions[2] = [&](const Call &) {
    enable(false);
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_TRUE(seen.empty());
}

TEST_F(QueueObserverTest, OfSeveralListenersTheNewestHearsFirst) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "culprit"}));
  ASSERT_TRUE(watch(journal, 7, {x}, {.flags = kConflictListener}));
  ASSERT_TRUE(watch(journal, 8, {x}, {.flags = kConflictListener}));
  journal.reactions[1] = [](const Call &) { return false; };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 8, 7}));
}

TEST_F(QueueObserverTest, SkippedEventsAreNotCounted) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "x"}) && watch(journal, 2, {y}, {.name = "y"}));
  journal.reactions[1] = [&](const Call &) { return narrowMin(y, 1) && narrowMin(y, 2); };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{true, x, kNewMin, "x"}, {true, y, kNewMin, "y"}}));
}

TEST_F(QueueObserverTest, AListenerThatSwitchesProfilingOnHasTheFailureNoted) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "culprit"}));
  ASSERT_TRUE(watch(journal, 8, {x}, {.flags = kConflictListener}));
  enable(false);
  journal.reactions[1] = [](const Call &) { return false; };
  journal.reactions[8] = [&](const Call &) {
    enable(true);
    return true;
  };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{false, x, kNewMin, "culprit"}}));
}

TEST_F(QueueObserverTest, TheFailingSiteOutlivesAConstraintThatTheFailingHandlerDetached) {
  const int mark = solver::trail.count();
  ASSERT_TRUE(watch(journal, 1, {x}, {.name = "culprit"}, life));
  journal.reactions[1] = [&](const Call &) {
    solver::trail.undoTo(mark);
    return false;
  };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(seen, (std::vector<Seen>{{false, x, kNewMin, "culprit"}}));
  EXPECT_EQ(life.use_count(), 1) << "the constraint itself is gone";
}

}  // namespace

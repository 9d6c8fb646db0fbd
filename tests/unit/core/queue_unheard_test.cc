// SPDX-License-Identifier: MIT
// Removals that nobody hears are not queued; whoever could hear one makes that it is.
#include "core/solver.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class QueueUnheardTest : public JournalTest {
 protected:
  static void note(void *argument, bool, CSint *, int code, Site *) {
    static_cast<std::vector<int> *>(argument)->push_back(code);
  }

  // How many events a change queues while nothing propagates them.
  template <class Change>
  static int eventsOf(Change change) {
    ++solver::queue.depth;
    EXPECT_TRUE(change());
    const int count = solver::events.size();
    solver::events.clear();
    --solver::queue.depth;
    return count;
  }

  std::vector<int> seen;
  Observer observer{note, nullptr, &seen, false, nullptr};
};

TEST_F(QueueUnheardTest, ARemovalThatNoConstraintHearsIsNotQueued) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNewMax}));
  EXPECT_EQ(eventsOf([&] { return removeValue(x, 5); }), 0);
  EXPECT_FALSE(contains(x, 5));
  EXPECT_TRUE(narrowMax(x, 50));
  EXPECT_EQ(journal.calls, (std::vector<Call>{{1, x, kNewMax, 99, 50, 0}}));
}

TEST_F(QueueUnheardTest, ARemovalThatAnOlderConstraintHearsIsQueued) {
  ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {x}, {.table = &kHearsNothing}));
  ASSERT_TRUE(removeValue(x, 5));
  EXPECT_EQ(journal.calls, (std::vector<Call>{{1, x, kRemoved, 5, 5, 0}}));
}

TEST_F(QueueUnheardTest, AConflictListenerHasARemovalQueued) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.flags = kConflictListener}));
  EXPECT_EQ(eventsOf([&] { return removeValue(x, 5); }), 1);
}

TEST_F(QueueUnheardTest, AProfilerSeesTheSlotThatDoesNothing) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNothing}));
  observer.enabled = true;
  solver::ports.add(&observer);
  ASSERT_TRUE(removeValue(x, 5));
  EXPECT_EQ(seen, std::vector<int>{kRemoved});
}

// The removal is queued before anybody profiles; its turn comes when somebody does.
TEST_F(QueueUnheardTest, AProfilerThatTheHostEnablesBeforeItsTurnSeesItToo) {
  struct Host {
    CSint *x;
    Observer *observer;
  } host{x, &observer};
  solver::ports.add(&observer);
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNothing}));
  cs_eventNewMin(
      &y, 1,
      [](CSint *, int, int, CSint **, int, void *extra) {
        const Host *h = static_cast<Host *>(extra);
        const bool consistent = removeValue(h->x, 5);
        h->observer->enabled = true;
        solver::ports.refreshProfiling();
        return consistent;
      },
      &host);
  ASSERT_TRUE(narrowMin(y, 1));
  EXPECT_EQ(seen, (std::vector<int>{kNewMin, kRemoved}));
}

// Without a constraint of the host's, between two events: the watcher's call and the sum's own are counted.
TEST_F(QueueUnheardTest, AProfilerEnabledBeforeTheTurnOfWhatASumPassesOnSeesAllCalls) {
  CSint *v = cs_createCSint(0, 9);
  x = cs_Add(v, CSINT(3));
  ASSERT_TRUE(removeValue(v, 5) && watch(journal, 1, {x}));
  solver::ports.add(&observer);
  const auto enable = [](void *argument) {
    static_cast<Observer *>(argument)->enabled = true;
    solver::ports.refreshProfiling();
    return false;
  };
  solver::queue.untilAsked = 1;
  solver::queue.supervisor = {enable, &observer};
  EXPECT_TRUE(narrowMin(v, 2));
  solver::queue.supervisor = {};
  EXPECT_EQ(seen, (std::vector<int>{kNewMin, kNewMin}));
}

// The bound of s that x asks for is a hole that the sum has not heard of.
TEST_F(QueueUnheardTest, AMakerIsToldOfABoundPastTheOneItAskedFor) {
  const auto hide = [](CSint *s, int value) {
    s->bits->clear(value);
    --s->count;
  };
  for (const int max : {40, 99}) {
    CSint *v = cs_createCSint(0, max);
    ASSERT_TRUE(removeValue(v, 20));
    CSint *s = cs_Add(v, CSINT(10));
    hide(s, 15);
    EXPECT_TRUE(narrowMin(v, 5));
    EXPECT_EQ(s->min, 16);
    EXPECT_EQ(v->min, 6);
    hide(s, max + 5);
    EXPECT_TRUE(narrowMax(v, max - 5));
    EXPECT_EQ(s->max, max + 4);
    EXPECT_EQ(v->max, max - 6);
  }
}

}  // namespace

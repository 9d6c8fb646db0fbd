// SPDX-License-Identifier: MIT
// Keyed entries: which events are shown to them, and when all are.
#include <algorithm>

#include "core/solver.h"
#include "support/kit/random.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class QueueKeyedTest : public JournalTest {
 protected:
  // A watcher whose number is its key.
  bool watchKey(int key) {
    Posting posting{"key"};
    auto held = posting.add(kHearsAll, Watcher{&journal, key, nullptr});
    held.attachKeyed(x, 0, key);
    return static_cast<bool>(posting);
  }
  void watchAllKeys() {
    for (int key = 0; key <= 99; ++key) ASSERT_TRUE(watchKey(key));
  }
  // Who hears the last change of those, which are undone.
  template <class Before, class Change>
  std::vector<int> heardOf(Before before, Change change) {
    cs_saveContext();
    EXPECT_TRUE(before());
    journal.calls.clear();
    EXPECT_TRUE(change());
    cs_restoreContext();
    return journal.watchers();
  }
  template <class Change>
  std::vector<int> heardOf(Change change) {
    return heardOf([] { return true; }, change);
  }
  std::vector<int> heardOfBinding(int value) {
    return heardOf([this] { return narrowMin(x, 3) && narrowMax(x, 6); }, [&] { return bindValue(x, value); });
  }
  void expectBindingShownToAll(bool toAll) {
    for (const int value : {3, 5, 6}) EXPECT_EQ(heardOfBinding(value), toAll ? down(99, 0) : down(6, 3)) << value;
  }
  // The next call of that watcher, and no later one.
  void reactsOnce(int number, const std::function<bool()> &reaction) {
    journal.reactions[number] = [this, reaction](const Call &call) {
      const std::function<bool()> once = reaction;
      journal.reactions.erase(call.watcher);
      return once();
    };
  }
  void failsOnce(int number) {
    reactsOnce(number, [] { return false; });
  }
  static std::vector<int> down(int from, int to) {
    std::vector<int> keys;
    for (int key = from; key >= to; --key) keys.push_back(key);
    return keys;
  }
};

TEST_F(QueueKeyedTest, AnEventIsShownToThoseWhoseKeyItConcerns) {
  watchAllKeys();
  EXPECT_EQ(heardOf([this] { return narrowMin(x, 3); }), down(2, 0));
  EXPECT_EQ(heardOf([this] { return narrowMax(x, 97); }), down(99, 98));
  EXPECT_EQ(heardOf([this] { return removeValue(x, 50); }), down(50, 50));
  for (const int value : {0, 50, 99}) EXPECT_EQ(heardOf([&] { return bindValue(x, value); }), down(99, 0));
  expectBindingShownToAll(false);
}

TEST_F(QueueKeyedTest, KeysAtTheEndsOfTheIntsAreWatched) {
  x = cs_createCSint(kIntMin, kIntMax);
  ASSERT_TRUE(watchKey(kIntMin) && watchKey(kIntMax));
  EXPECT_EQ(heardOf([this] { return narrowMin(x, kIntMax); }), (std::vector<int>{kIntMax, kIntMin}));
  EXPECT_EQ(heardOf([this] { return narrowMin(x, kIntMin + 1); }), std::vector<int>{kIntMin});
  EXPECT_EQ(heardOf([this] { return narrowMax(x, kIntMax - 1); }), std::vector<int>{kIntMax});
}

// Keys in any order, and other entries among them: 100 hears all events, 200 none.
TEST_F(QueueKeyedTest, WhoIsAmongThemHearsAsEverAndWhoIsPassedByCountsAsCalled) {
  constexpr int kAll = 100;
  constexpr int kNone = 200;
  Random random(1);
  std::vector<int> listed;  // newest first
  for (int i = 0; i < 300; ++i) {
    const int number = random.chance(95) ? random.below(100) : random.pick<int>({kAll, kNone});
    const Kind kind{.table = number == kAll ? &kHearsAll : &kHearsNothing};
    ASSERT_TRUE(number < kAll ? watchKey(number) : watch(journal, number, {x}, kind));
    listed.insert(listed.begin(), number);
  }
  solver::queue.supervisor.mustEnd = [](void *) { return false; };
  for (int value = 1; value < 99; ++value) {
    std::vector<int> expected;
    for (const int number : listed)
      if (number == value || number == kAll) expected.push_back(number);
    solver::queue.wakings = 0;
    EXPECT_EQ(heardOf([&] { return removeValue(x, value); }), expected) << value;
    EXPECT_EQ(solver::queue.wakings, 300U - static_cast<unsigned>(std::ranges::count(listed, kNone)));
  }
}

// A sum with a constant that has made x is its oldest constraint, and is not called for what it does itself.
TEST_F(QueueKeyedTest, ThoseOfAShiftedVariableAreShownWhatConcernsThem) {
  CSint *v = cs_createCSint(-10, 89);
  x = cs_Add(v, CSINT(10));
  ASSERT_TRUE(has(x, kShifted));
  ASSERT_TRUE(watch(journal, 100, {x}));
  watchAllKeys();
  ASSERT_TRUE(watch(journal, 101, {x}, {.flags = kConflictListener}));
  const std::vector<int> concerned{12, 11, 10, 100};
  ASSERT_TRUE(cs_GE(x, 10));
  EXPECT_EQ(heardOf([&] { return narrowMin(v, 3); }), concerned);
  ASSERT_TRUE(removeValue(v, 50));
  EXPECT_EQ(heardOf([&] { return narrowMin(v, 3); }), concerned) << "among holes";
  EXPECT_EQ(heardOf([&] { return bindValue(v, 89); }).size(), 1 + 90U);
}

TEST_F(QueueKeyedTest, AConflictListenerBelowThemIsTold) {
  ASSERT_TRUE(watchKey(8));
  ASSERT_TRUE(watch(journal, 100, {x}, {.flags = kConflictListener}));
  ASSERT_TRUE(watch(journal, 101, {x}, {.flags = kConflictListener}));
  ASSERT_TRUE(watchKey(5));
  fails(8);
  EXPECT_FALSE(removeValue(x, 8));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{8, 101, 100}));
}

TEST_F(QueueKeyedTest, AProfilerSeesAllOfThem) {
  watchAllKeys();
  const auto note = [](void *argument, bool, CSint *, int, Site *) { ++*static_cast<int *>(argument); };
  int seen = 0;
  Observer observer{note, nullptr, &seen, true, nullptr};
  solver::ports.add(&observer);
  ASSERT_TRUE(removeValue(x, 40));
  EXPECT_EQ(seen, 100);
  observer.enabled = false;
  solver::ports.refreshProfiling();
  journal.reactions[42] = [&](const Call &) {
    observer.enabled = !observer.enabled;
    solver::ports.refreshProfiling();
    return true;
  };
  ASSERT_TRUE(removeValue(x, 42));
  EXPECT_EQ(seen, 100 + 43) << "of the one that enables it and those after it";
  journal.calls.clear();
  ASSERT_TRUE(bindValue(x, 41));
  EXPECT_EQ(journal.watchers(), down(99, 0)) << "one disables it, and the older ones are not passed by";
  solver::ports.remove(&observer);
}

// ----- bindings are shown to all as long as somebody may not have been told of earlier changes

TEST_F(QueueKeyedTest, AFailedPropagationLeavesThemUntoldUntilItIsUndone) {
  watchAllKeys();
  failsOnce(50);
  cs_saveContext();
  cs_saveContext();
  EXPECT_FALSE(removeValue(x, 50));
  expectBindingShownToAll(true);
  cs_forgetSaveContext();
  expectBindingShownToAll(true);
  cs_restoreContext();
  expectBindingShownToAll(false);
  failsOnce(50);
  EXPECT_FALSE(removeValue(x, 50));
  cs_saveContext();
  cs_restoreContext();
  expectBindingShownToAll(true);
}

TEST_F(QueueKeyedTest, AFailureThatIsAcceptedLeavesThemUntold) {
  watchAllKeys();
  failsOnce(50);
  cs_saveContext();
  EXPECT_FALSE(removeValue(x, 50));
  cs_acceptContext();
  cs_saveContext();
  cs_restoreContext();
  expectBindingShownToAll(true);
}

TEST_F(QueueKeyedTest, AnUndoThatChangesEscapeLeavesThemUntold) {
  watchAllKeys();
  cs_saveContext();
  ASSERT_TRUE(removeValue(x, 50));
  cs_acceptContext();
  expectBindingShownToAll(false);
  cs_saveContext();
  cs_saveContext();
  ASSERT_TRUE(removeValue(x, 51));
  cs_acceptContext();
  expectBindingShownToAll(true);
}

TEST_F(QueueKeyedTest, CallbacksOfTheHostLeaveThemUntold) {
  watchAllKeys();
  cs_backtrack(x, 0, nullptr);
  expectBindingShownToAll(true);
}

TEST_F(QueueKeyedTest, HandlersOfTheHostLeaveThemUntold) {
  watchAllKeys();
  cs_eventKnown(
      &y, 1, [](int, int, CSint **, int, void *) { return true; }, nullptr);
  expectBindingShownToAll(true);
}

TEST_F(QueueKeyedTest, AnUndoWhileHandlersRunLeavesThemUntold) {
  watchAllKeys();
  reactsOnce(50, [] {
    cs_saveContext();
    cs_restoreContext();
    return true;
  });
  ASSERT_TRUE(removeValue(x, 50));
  expectBindingShownToAll(true);
}

TEST_F(QueueKeyedTest, AFailureInAContextThatAHandlerOpenedLeavesThemUntold) {
  watchAllKeys();
  reactsOnce(50, [] {
    cs_saveContext();
    return false;
  });
  EXPECT_FALSE(removeValue(x, 50));
  cs_restoreContext();
  expectBindingShownToAll(true);
}

// ----- exhausted memory

TEST_F(QueueKeyedTest, AnEventThatMemoryRefusesLeavesThemUntold) {
  watchAllKeys();
  solver::events.startWithRoom(0);
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(narrowMin(x, 1));
  }
  solver::events.clear();
  expectBindingShownToAll(true);
}

TEST_F(QueueKeyedTest, ARefusedEntryOrTrailRecordLeavesTheVariableAsItWas) {
  ASSERT_TRUE(watchKey(1));
  const Entry *head = x->constraints;
  Constraint *c = head->constraint;
  {
    const AllocationRule none(refuseAll());
    EXPECT_FALSE(attachKeyed(c, x, 0, 2));
  }
  while (solver::trail.hasRoom()) cs_backtrack(y, 0, nullptr);
  {
    const AllocationRule noBlocks([](std::size_t size) { return size < 1024; });
    EXPECT_FALSE(attachKeyed(c, x, 0, 2));
  }
  EXPECT_EQ(x->constraints, head);
  EXPECT_EQ(c->references, 1);
}

}  // namespace

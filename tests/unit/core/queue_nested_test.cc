// SPDX-License-Identifier: MIT
// Propagation inside propagation: contexts that a handler opens make changes take effect at once.
#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class QueueNestedTest : public JournalTest {
 protected:
  void SetUp() override {
    JournalTest::SetUp();
    ASSERT_TRUE(watch(journal, 1, {x}) && watch(journal, 2, {y}));
  }
};

TEST_F(QueueNestedTest, InsideAContextOpenedByAHandlerAChangePropagatesAtOnce) {
  std::vector<int> duringHandler;
  journal.reactions[1] = [&](const Call &) {
    cs_saveContext();
    EXPECT_EQ(solver::queue.limit, 1U);
    EXPECT_TRUE(narrowMin(y, 1));
    duringHandler = journal.watchers();
    cs_restoreContext();
    EXPECT_EQ(solver::queue.limit, 0U);
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(duringHandler, (std::vector<int>{1, 2}));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2}));
  EXPECT_EQ(cs_getMin(y), 0);
}

TEST_F(QueueNestedTest, ANestedFailureShowsAtTheInnerChangeAndNotAtTheOuter) {
  fails(2);
  bool inner = true;
  journal.reactions[1] = [&](const Call &) {
    cs_saveContext();
    inner = narrowMin(y, 1);
    cs_restoreContext();
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_FALSE(inner);
  EXPECT_EQ(solver::queue.failures, 0);
}

TEST_F(QueueNestedTest, AfterTheContextIsClosedChangesWaitAgain) {
  std::size_t callsInHandler = 0;
  journal.reactions[1] = [&](const Call &) {
    cs_saveContext();
    cs_acceptContext();
    EXPECT_TRUE(narrowMin(y, 1));
    callsInHandler = journal.calls.size();
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(callsInHandler, 1U);
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2}));
}

TEST_F(QueueNestedTest, AHandlerOfTheNestedRunOnlyQueuesItsChanges) {
  ASSERT_TRUE(watch(journal, 3, {z}));
  journal.reactions[1] = [&](const Call &) {
    cs_saveContext();
    EXPECT_TRUE(narrowMin(y, 1));
    cs_restoreContext();
    return true;
  };
  std::size_t inNested = 0;
  journal.reactions[2] = [&](const Call &) {
    EXPECT_EQ(solver::queue.depth, 2U);
    EXPECT_TRUE(narrowMin(z, 1));
    inNested = journal.calls.size();
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(inNested, 2U);
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2, 3}));
}

TEST_F(QueueNestedTest, SavingInsideAHandlerDrainsWhatIsQueued) {
  std::vector<int> afterSave;
  journal.reactions[1] = [&](const Call &) {
    EXPECT_TRUE(narrowMin(y, 1));
    cs_saveContext();
    afterSave = journal.watchers();
    cs_restoreContext();
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(afterSave, (std::vector<int>{1, 2}));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2})) << "the event is not served twice";
  EXPECT_EQ(cs_getMin(y), 1) << "the change was made before the context";
}

TEST_F(QueueNestedTest, AFailureWhileSavingIsNotReportedButCounted) {
  fails(2);
  int label = -1;
  int failures = -1;
  journal.reactions[1] = [&](const Call &) {
    EXPECT_TRUE(narrowMin(y, 1));
    label = cs_saveContext();
    failures = solver::queue.failures;
    cs_restoreContext();
    return true;
  };
  EXPECT_FALSE(narrowMin(x, 1)) << "the outermost change sees that the count has grown";
  EXPECT_EQ(label, 1);
  EXPECT_EQ(failures, 1);
  EXPECT_EQ(solver::queue.failures, 0);
}

TEST_F(QueueNestedTest, EveryFailureWhileSavingIsCounted) {
  fails(2);
  std::vector<int> counts;
  journal.reactions[1] = [&](const Call &) {
    for (const int bound : {1, 2, 3}) {
      EXPECT_TRUE(narrowMin(y, bound));
      cs_saveContext();
      counts.push_back(solver::queue.failures);
      cs_restoreContext();
    }
    return true;
  };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(counts, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(solver::queue.failures, 0);
}

TEST_F(QueueNestedTest, AFailureWhileSavingDoesNotEndTheOuterWalk) {
  ASSERT_TRUE(watch(journal, 3, {x}));
  fails(2);
  journal.reactions[3] = [&](const Call &) {
    EXPECT_TRUE(narrowMin(y, 1));
    cs_saveContext();
    cs_restoreContext();
    return true;
  };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{3, 2, 1}));
}

TEST_F(QueueNestedTest, TheMarkOfASaveLiesBehindTheChangesItsDrainMade) {
  journal.reactions[2] = [&](const Call &) { return narrowMin(z, 5); };
  journal.reactions[1] = [&](const Call &) {
    EXPECT_TRUE(narrowMin(y, 1));
    cs_saveContext();
    cs_restoreContext();
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(cs_getMin(z), 5);
}

TEST_F(QueueNestedTest, ADrainAtTopLevelFindsNothingQueued) {
  EXPECT_TRUE(narrowMin(x, 1));
  journal.calls.clear();
  cs_saveContext();
  EXPECT_TRUE(journal.calls.empty());
  EXPECT_EQ(solver::queue.limit, 0U);
}

TEST_F(QueueNestedTest, ANestedRunKeepsAListenerOfItsOwn) {
  ASSERT_TRUE(watch(journal, 8, {x}, {.flags = kConflictListener}));
  fails(2);
  journal.reactions[1] = [&](const Call &) {
    cs_saveContext();
    EXPECT_FALSE(narrowMin(y, 1));
    cs_restoreContext();
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2})) << "the listener met by the outer run hears nothing";
}

TEST_F(QueueNestedTest, ARestoreInsideAHandlerDetachesWhatItsContextAttached) {
  long duringHandler = 0;
  journal.reactions[1] = [&](const Call &) {
    cs_saveContext();
    EXPECT_TRUE(watch(journal, 3, {y}, {}, life));
    EXPECT_TRUE(narrowMin(y, 1));
    cs_restoreContext();
    EXPECT_TRUE(narrowMin(y, 2));
    duringHandler = life.use_count();
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 3, 2, 2}));
  EXPECT_EQ(duringHandler, 2) << "kept until the outermost run ends";
  EXPECT_EQ(life.use_count(), 1);
}

}  // namespace

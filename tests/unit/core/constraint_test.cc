// SPDX-License-Identifier: MIT
#include "core/constraint.h"

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

using ConstraintTest = JournalTest;

TEST_F(ConstraintTest, TheEventCodesAreTheFixedOnes) {
  EXPECT_EQ(kNewMin, 0);
  EXPECT_EQ(kNewMax, 1);
  EXPECT_EQ(kMinBound, 2);
  EXPECT_EQ(kMaxBound, 3);
  EXPECT_EQ(kBound, 4);
  EXPECT_EQ(kRemoved, 5);
}

TEST_F(ConstraintTest, AnAttachmentIsAnEntryAReferenceACountAndATrailRecord) {
  const int records = solver::trail.count();
  ASSERT_TRUE(watch(journal, 1, {x, y, x}));
  ASSERT_NE(x->constraints, nullptr);
  const Constraint *c = x->constraints->constraint;
  EXPECT_EQ(c->references, 3);
  EXPECT_EQ(c->site->references, 1);
  EXPECT_EQ(x->constraints->index, 2) << "newest first";
  EXPECT_EQ(x->constraints->next->index, 0);
  EXPECT_EQ(x->constraints->next->next, nullptr);
  EXPECT_EQ(y->constraints->constraint, c);
  EXPECT_EQ(cs_getNbConstraints(x), 2);
  EXPECT_EQ(cs_getNbConstraints(y), 1);
  EXPECT_EQ(solver::trail.count(), records + 3);
}

TEST_F(ConstraintTest, TheRecordDiesWithTheLastAttachment) {
  cs_saveContext();
  ASSERT_TRUE(watch(journal, 1, {x, y}, {}, life));
  EXPECT_TRUE(alive());
  detachNewest(x);
  EXPECT_TRUE(alive());
  detachNewest(y);
  EXPECT_FALSE(alive());
}

TEST_F(ConstraintTest, RestoringDetachesAndDestroys) {
  cs_saveContext();
  ASSERT_TRUE(watch(journal, 1, {x, y}, {}, life));
  cs_restoreContext();
  EXPECT_FALSE(alive());
  EXPECT_EQ(x->constraints, nullptr);
  EXPECT_EQ(y->constraints, nullptr);
}

TEST_F(ConstraintTest, TheNumberOfConstraintsKeepsCountingAfterBacktracking) {
  for (int round = 1; round <= 3; ++round) {
    cs_saveContext();
    ASSERT_TRUE(watch(journal, 1, {x}));
    cs_restoreContext();
    EXPECT_EQ(cs_getNbConstraints(x), round);
  }
}

TEST_F(ConstraintTest, EndingTheSolverDestroysWhatIsAttached) {
  ASSERT_TRUE(watch(journal, 1, {x, y}, {}, life));
  cs_end();
  EXPECT_FALSE(alive());
}

TEST_F(ConstraintTest, DetachingFromAnEmptyListDoesNothing) {
  detachNewest(x);
  EXPECT_EQ(x->constraints, nullptr);
}

TEST_F(ConstraintTest, DetachAllReleasesEveryEntry) {
  ASSERT_TRUE(watch(journal, 1, {x, x}, {}, life) && watch(journal, 2, {x}, {}, life));
  detachAll(*x);
  EXPECT_EQ(x->constraints, nullptr);
  EXPECT_FALSE(alive());
  solver::trail.discardTo(0);
}

TEST_F(ConstraintTest, TheListSumsUpWhichEventsItsOlderEntriesHear) {
  ASSERT_TRUE(watch(journal, 1, {x}, {.table = &kHearsNewMax}));
  ASSERT_TRUE(watch(journal, 2, {x}, {.table = &kHearsNothing}));
  ASSERT_TRUE(watch(journal, 3, {x}, {.flags = kConflictListener}));
  ASSERT_TRUE(watch(journal, 4, {x}, {.flags = kNeverWoken}));
  const Entry *entry = x->constraints;
  EXPECT_EQ(entry->heard, 0);
  EXPECT_EQ(entry->heardByOlder, kHearsConflicts | 1 << kNewMax);
  entry = entry->next;
  EXPECT_EQ(entry->heard, kHearsConflicts);
  entry = entry->next;
  EXPECT_EQ(entry->heard, 0);
  EXPECT_EQ(entry->heardByOlder, 1 << kNewMax);
  EXPECT_EQ(entry->next->heardFromHere(), 1 << kNewMax);
  EXPECT_EQ(entry->next->heardByOlder, 0);
}

TEST_F(ConstraintTest, AnEntryHearsWhatItsTableListensToAndConcernsItsVariable) {
  Posting posting{"watch"};
  auto held = posting.add(kHearsNewMax, Watcher{&journal, 1, life});
  held.attach(x, 0, events(kNewMin, kNewMax));
  held.attach(y, 1, events(kNewMin, kBound));
  EXPECT_EQ(x->constraints->heard, 1 << kNewMax);
  EXPECT_EQ(y->constraints->heard, 0);
}

// ----- exhausted memory

TEST_F(ConstraintTest, ARefusedEntryLeavesTheVariableAsItWas) {
  ASSERT_TRUE(watch(journal, 1, {x}, {}, life));
  Constraint *c = x->constraints->constraint;
  const Entry *head = x->constraints;
  const AllocationRule none(refuseAll());
  EXPECT_FALSE(attachConstraint(c, x, 5));
  EXPECT_EQ(x->constraints, head);
  EXPECT_EQ(c->references, 1);
  EXPECT_EQ(cs_getNbConstraints(x), 1);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

TEST_F(ConstraintTest, ARefusedTrailRecordUnlinksTheEntryAgain) {
  ASSERT_TRUE(watch(journal, 1, {x}, {}, life));
  Constraint *c = x->constraints->constraint;
  const Entry *head = x->constraints;
  fillTrail();
  const AllocationRule noBlocks([](std::size_t size) { return size < 1024; });
  EXPECT_FALSE(attachConstraint(c, x, 5));
  EXPECT_EQ(x->constraints, head);
  EXPECT_EQ(c->references, 1);
  EXPECT_EQ(cs_getNbConstraints(x), 1);
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(ConstraintTest, AFirstAttachmentThatTheTrailRefusesDestroysAConstraintHeldByNobody) {
  Site *site = Site::create("alone", "");
  site->references = 1;
  void *memory = solver::pool.take(sizeof(Constraint) + sizeof(Watcher));
  constexpr auto size = static_cast<std::uint16_t>(sizeof(Constraint) + sizeof(Watcher));
  auto *c = new (memory) Constraint{&kHearsAll, site, 0, size, kWoken};
  new (c->record()) Watcher{&journal, 1, life};
  fillTrail();
  const AllocationRule noBlocks([](std::size_t request) { return request < 1024; });
  EXPECT_FALSE(attachConstraint(c, x, -1));
  EXPECT_FALSE(alive());
  EXPECT_EQ(x->constraints, nullptr);
}

// ----- the graveyard: entries detached while a snapshot that holds them is being walked

TEST_F(ConstraintTest, AnEntryDetachedInARunningWalkStaysReadableUntilTheRunEnds) {
  const int mark = solver::trail.count();
  ASSERT_TRUE(watch(journal, 1, {x}, {}, life) && watch(journal, 2, {x}, {}, life) && watch(journal, 3, {x}));
  journal.reactions[3] = [&](const Call &) {
    solver::trail.undoTo(mark);
    EXPECT_EQ(x->constraints, nullptr);
    EXPECT_EQ(life.use_count(), 3);
    return true;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{3, 2, 1})) << "the snapshot is walked to its end";
  EXPECT_FALSE(alive());
  EXPECT_EQ(solver::graveyard, nullptr);
}

TEST_F(ConstraintTest, AQueuedSnapshotKeepsDetachedEntriesToo) {
  const int mark = solver::trail.count();
  ASSERT_TRUE(watch(journal, 2, {y}, {}, life) && watch(journal, 1, {x}));
  journal.reactions[1] = [&](const Call &) {
    EXPECT_TRUE(narrowMin(y, 1));
    solver::trail.undoTo(mark);
    EXPECT_EQ(y->constraints, nullptr);
    return true;
  };
  EXPECT_TRUE(narrowMax(x, 50));
  EXPECT_FALSE(alive());
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1, 2})) << "the snapshot, not the emptied list, is served";
}

TEST_F(ConstraintTest, TheEndOfANestedRunLeavesTheGraveyardToTheOutermost) {
  const int mark = solver::trail.count();
  ASSERT_TRUE(watch(journal, 1, {x}, {}, life) && watch(journal, 2, {x}));
  journal.reactions[2] = [&](const Call &) {
    solver::trail.undoTo(mark);
    cs_saveContext();
    EXPECT_TRUE(watch(journal, 3, {z}) && narrowMin(z, 1));
    cs_restoreContext();
    return alive();
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{2, 3, 1}));
  EXPECT_FALSE(alive());
}

TEST_F(ConstraintTest, AFailingRunEmptiesTheGraveyardToo) {
  const int mark = solver::trail.count();
  ASSERT_TRUE(watch(journal, 1, {x}, {}, life) && watch(journal, 2, {x}));
  journal.reactions[2] = [&](const Call &) {
    solver::trail.undoTo(mark);
    return false;
  };
  EXPECT_FALSE(narrowMin(x, 1));
  EXPECT_FALSE(alive());
  EXPECT_EQ(solver::graveyard, nullptr);
}

TEST_F(ConstraintTest, AConstraintThatDetachesItselfMayStillReadItsRecord) {
  const int mark = solver::trail.count();
  ASSERT_TRUE(watch(journal, 1, {x}, {}, life));
  journal.reactions[1] = [&](const Call &) {
    solver::trail.undoTo(mark);
    return alive();
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_FALSE(alive());
}

}  // namespace

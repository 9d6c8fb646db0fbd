// SPDX-License-Identifier: MIT
#include "core/trail.h"

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

// Callbacks of cs_backtrack are plain functions: what they saw goes here.
struct Backtracked {
  CSint *variable;
  int index;
  int minimum;  // of the variable at the call, 0 without one
  bool operator==(const Backtracked &) const = default;
};
std::vector<Backtracked> backtracked;

void note(CSint *v, int index) { backtracked.push_back({v, index, cs_getMin(v)}); }

class TrailTest : public SolverTest {
 protected:
  CSint *x = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    backtracked.clear();
    x = cs_createCSint(0, 9);
  }
  static void push(TrailKind kind, CSint *v, int value, int oldCount) {
    *solver::trail.push() = {reinterpret_cast<std::uintptr_t>(v) | static_cast<std::uintptr_t>(kind), value, oldCount};
  }
  static void set(CSint *v, int min, int max) {
    v->min = v->reportedMin = min;
    v->max = v->reportedMax = max;
    v->count = max - min + 1;
  }
};

TEST_F(TrailTest, TheKindNumbersAreTheFixedOnes) {
  EXPECT_EQ(static_cast<int>(TrailKind::kMin), 0);
  EXPECT_EQ(static_cast<int>(TrailKind::kMax), 1);
  EXPECT_EQ(static_cast<int>(TrailKind::kRemoved), 5);
  EXPECT_EQ(static_cast<int>(TrailKind::kAttached), 6);
  EXPECT_EQ(static_cast<int>(TrailKind::kCallback), 7);
  EXPECT_EQ(static_cast<int>(TrailKind::kBuffer), 9);
  EXPECT_EQ(static_cast<int>(TrailKind::kCallbackExt), 10);
}

TEST_F(TrailTest, NotesHoldTheStateBeforeTheChange) {
  set(x, 2, 7);
  solver::trail.noteMin(x);
  solver::trail.noteMax(x);
  solver::trail.noteRemoved(x, 5);
  std::vector<std::vector<int>> records;
  solver::trail.forEach([&](const TrailRecord &record) {
    EXPECT_EQ(record.variable(), x);
    records.push_back({static_cast<int>(record.kind()), record.value, record.oldCount});
  });
  EXPECT_EQ(records, (std::vector<std::vector<int>>{{0, 2, 6}, {1, 7, 6}, {5, 5, 6}}));
}

TEST_F(TrailTest, UndoingAMinimumRestoresItTheReportedMinimumAndTheCount) {
  for (const TrailKind kind : {TrailKind::kMin, TrailKind::kMinReserved}) {
    set(x, 5, 9);
    push(kind, x, 1, 9);
    solver::trail.undoTo(0);
    EXPECT_EQ(x->min, 1);
    EXPECT_EQ(x->reportedMin, 1);
    EXPECT_EQ(x->count, 9);
    EXPECT_EQ(x->max, 9);
  }
}

TEST_F(TrailTest, UndoingAMaximumRestoresItTheReportedMaximumAndTheCount) {
  for (const TrailKind kind : {TrailKind::kMax, TrailKind::kMaxReserved}) {
    set(x, 0, 4);
    push(kind, x, 8, 9);
    solver::trail.undoTo(0);
    EXPECT_EQ(x->max, 8);
    EXPECT_EQ(x->reportedMax, 8);
    EXPECT_EQ(x->count, 9);
    EXPECT_EQ(x->min, 0);
  }
}

TEST_F(TrailTest, TheReservedKindsUndoNothing) {
  push(TrailKind::kReserved, x, 3, 4);
  push(TrailKind::kReservedToo, x, 3, 4);
  solver::trail.undoTo(0);
  EXPECT_EQ(values(x).size(), 10U);
  EXPECT_EQ(x->count, 10);
  EXPECT_EQ(solver::trail.count(), 0);
}

TEST_F(TrailTest, UndoingARemovalSetsTheBitAndTheCountAgain) {
  CSint *v = fromValues({1, 2, 3});
  v->bits->clear(2);
  v->count = 2;
  push(TrailKind::kRemoved, v, 2, 3);
  solver::trail.undoTo(0);
  EXPECT_EQ(values(v), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(v->count, 3);
}

TEST_F(TrailTest, UndoingARemovalOutsideTheBitsSetsTheCountOnly) {
  CSint *v = fromValues({1, 3});
  for (const int value : {0, 4, kIntMin, kIntMax}) push(TrailKind::kRemoved, v, value, 2);
  solver::trail.undoTo(0);
  EXPECT_EQ(values(v), (std::vector<int>{1, 3}));
}

TEST_F(TrailTest, UndoingARemovalWithoutBitsSetsTheCountOnly) {
  x->count = 9;
  push(TrailKind::kRemoved, x, 5, 10);
  solver::trail.undoTo(0);
  EXPECT_EQ(x->count, 10);
  EXPECT_EQ(x->bits, nullptr);
}

TEST_F(TrailTest, UndoingAnAttachmentDetachesTheNewestEntry) {
  Journal journal;
  ASSERT_TRUE(watch(journal, 1, {x}));
  const int mark = solver::trail.count();
  ASSERT_TRUE(watch(journal, 2, {x}));
  solver::trail.undoTo(mark);
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
}

TEST_F(TrailTest, UndoingAnAttachmentOfAnEmptyListDoesNothing) {
  push(TrailKind::kAttached, x, 0, 10);
  solver::trail.undoTo(0);
  EXPECT_EQ(x->constraints, nullptr);
  EXPECT_EQ(solver::trail.count(), 0);
}

TEST_F(TrailTest, UndoGoesNewestFirstDownToTheMark) {
  ASSERT_TRUE(narrowMin(x, 2));
  const int mark = solver::trail.count();
  ASSERT_TRUE(narrowMin(x, 4) && removeValue(x, 6) && narrowMax(x, 7) && bindValue(x, 5));
  solver::trail.undoTo(mark);
  EXPECT_EQ(values(x), (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(cs_getNbElements(x), 8);
}

TEST_F(TrailTest, DiscardingKeepsTheChanges) {
  ASSERT_TRUE(narrowMin(x, 4) && removeValue(x, 6));
  cs_backtrack(x, 1, note);
  solver::trail.discardTo(0);
  EXPECT_EQ(solver::trail.count(), 0);
  EXPECT_EQ(values(x), (std::vector<int>{4, 5, 7, 8, 9}));
  EXPECT_TRUE(backtracked.empty());
}

int sharesOf(const Shared<int> &buffer) {
  const int count = buffer.share()->owners - 1;
  dropShare(reinterpret_cast<SharedBlock *>(buffer.get()) - 1);
  return count;
}

TEST_F(TrailTest, DiscardingDropsTheSharesOfItsBuffersOnly) {
  const Shared<int> outer(1);
  const Shared<int> inner(1);
  ASSERT_TRUE(solver::trail.noteBuffer(outer.share()));
  for (int i = 0; i < 3000; ++i) cs_backtrack(x, i, note);
  const int mark = solver::trail.count();
  ASSERT_TRUE(narrowMin(x, 1) && solver::trail.noteBuffer(inner.share()) && narrowMin(x, 2));
  EXPECT_EQ(sharesOf(outer), 2);
  EXPECT_EQ(sharesOf(inner), 2);
  solver::trail.discardTo(mark);
  EXPECT_EQ(solver::trail.count(), mark);
  EXPECT_EQ(sharesOf(outer), 2);
  EXPECT_EQ(sharesOf(inner), 1);
  solver::trail.discardTo(0);
  EXPECT_EQ(sharesOf(outer), 1);
  EXPECT_EQ(solver::trail.count(), 0);
}

// ----- callbacks

TEST_F(TrailTest, CallbacksRunNewestFirstAndAfterLaterChangesAreUndone) {
  cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 1));
  cs_backtrack(x, 10, note);
  ASSERT_TRUE(narrowMin(x, 3));
  cs_backtrackExt(x, 20, note);
  ASSERT_TRUE(narrowMin(x, 6));
  cs_restoreContext();
  EXPECT_EQ(backtracked, (std::vector<Backtracked>{{x, 20, 3}, {x, 10, 1}}));
  EXPECT_EQ(cs_getMin(x), 0);
}

TEST_F(TrailTest, ACallbackRunsOnce) {
  cs_saveContext();
  cs_backtrack(x, 1, note);
  cs_restoreContext();
  cs_saveContext();
  cs_restoreContext();
  EXPECT_EQ(backtracked.size(), 1U);
}

TEST_F(TrailTest, ANullVariableIsHandedOnAndANullCallbackIgnored) {
  cs_saveContext();
  cs_backtrack(nullptr, 7, note);
  cs_backtrackExt(nullptr, 8, note);
  cs_backtrack(x, 1, nullptr);
  cs_backtrackExt(x, 1, nullptr);
  cs_restoreContext();
  EXPECT_EQ(backtracked, (std::vector<Backtracked>{{nullptr, 8, 0}, {nullptr, 7, 0}}));
}

TEST_F(TrailTest, ACallbackRegisteredBeforeAnyContextIsNeverCalled) {
  cs_backtrack(x, 1, note);
  cs_backtrackExt(x, 2, note);
  cs_saveContext();
  cs_restoreAll();
  cs_end();
  EXPECT_TRUE(backtracked.empty());
}

TEST_F(TrailTest, AcceptingDropsCallbacksWithoutACall) {
  cs_saveContext();
  cs_saveContext();
  cs_backtrack(x, 1, note);
  cs_backtrackExt(x, 2, note);
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_TRUE(backtracked.empty());
}

TEST_F(TrailTest, EndingDropsCallbacksOfOpenContextsWithoutACall) {
  cs_saveContext();
  cs_backtrack(x, 1, note);
  cs_end();
  EXPECT_TRUE(backtracked.empty());
}

TEST_F(TrailTest, WhatACallbackPushesDuringUndoIsUndoneTooAndCorruptsNothing) {
  cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 2));
  cs_backtrack(x, 5, [](CSint *v, int index) {
    note(v, index);
    EXPECT_TRUE(narrowMin(v, 4) && narrowMax(v, 6));
    cs_backtrackExt(v, index + 1, note);
  });
  ASSERT_TRUE(narrowMin(x, 8));
  cs_restoreContext();
  EXPECT_EQ(backtracked, (std::vector<Backtracked>{{x, 5, 2}, {x, 6, 4}}));
  EXPECT_EQ(values(x).size(), 10U);
  EXPECT_EQ(cs_getNbElements(x), 10);
}

TEST_F(TrailTest, ACallbackMayOpenAndCloseAContextDuringUndo) {
  cs_saveContext();
  cs_backtrack(x, 5, [](CSint *v, int index) {
    cs_saveContext();
    EXPECT_TRUE(bindValue(v, 3));
    cs_restoreContext();
    note(v, index);
  });
  ASSERT_TRUE(narrowMin(x, 8));
  cs_restoreContext();
  EXPECT_EQ(backtracked, (std::vector<Backtracked>{{x, 5, 0}}));
  EXPECT_EQ(values(x).size(), 10U);
}

TEST_F(TrailTest, ACallbackThatCannotBeStoredIsReportedAndNeverCalled) {
  cs_saveContext();
  fillTrail();
  {
    const AllocationRule none(refuseAll());
    cs_backtrack(x, 1, note);
    cs_backtrackExt(x, 2, note);
  }
  EXPECT_EQ(memoryReports, 2);
  cs_restoreContext();
  EXPECT_TRUE(backtracked.empty());
}

// ----- buffers: a share that is not dropped shows as a leak, one dropped twice as a use after free

TEST_F(TrailTest, ABufferLosesTheTrailsShareOnRestoreOnAcceptAndAtTheEnd) {
  const Shared<int> buffer(4);
  cs_saveContext();
  ASSERT_TRUE(solver::trail.noteBuffer(buffer.share()));
  EXPECT_EQ(sharesOf(buffer), 2);
  cs_restoreContext();
  EXPECT_EQ(sharesOf(buffer), 1);
  cs_saveContext();
  ASSERT_TRUE(solver::trail.noteBuffer(buffer.share()));
  cs_acceptContext();
  EXPECT_EQ(sharesOf(buffer), 1);
  cs_saveContext();
  ASSERT_TRUE(solver::trail.noteBuffer(buffer.share()));
  cs_forgetSaveContext();
  EXPECT_EQ(sharesOf(buffer), 2) << "forgetting hands the buffer to the enclosing context";
  cs_end();
  EXPECT_EQ(sharesOf(buffer), 1);
}

TEST_F(TrailTest, ABufferThatCannotBeNotedLosesTheShareAllTheSame) {
  fillTrail();
  const Shared<int> buffer(4);
  SharedBlock *share = buffer.share();
  const AllocationRule none(refuseAll());
  EXPECT_FALSE(solver::trail.noteBuffer(share));
  EXPECT_EQ(share->owners, 1);
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(TrailTest, AVariableArrayGoesWithItsContext) {
  const int before = solver::trail.count();
  for (const auto close : {cs_restoreContext, cs_acceptContext}) {
    cs_saveContext();
    ASSERT_NE(cs_createCSintArray(5, 0, 1), nullptr);
    EXPECT_EQ(solver::trail.count(), before + 1);
    close();
    EXPECT_EQ(solver::trail.count(), before);
  }
}

// ----- growth

TEST_F(TrailTest, UndoCrossesBlocks) {
  CSint *wide = cs_createCSint(0, 10000);
  cs_saveContext();
  for (int bound = 1; bound <= 3000; ++bound) ASSERT_TRUE(narrowMin(wide, bound));
  EXPECT_EQ(solver::trail.blockCount(), 3);
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(wide), 0);
  EXPECT_EQ(cs_getNbElements(wide), 10001);
  const AllocationRule counted(allowAll());
  for (int bound = 1; bound <= 3000; ++bound) ASSERT_TRUE(narrowMin(wide, bound));
  EXPECT_EQ(AllocationRule::count(), 0) << "blocks are reused";
}

TEST_F(TrailTest, UndoOfRemovalsAndMaximaCrossesBlocks) {
  CSint *wide = cs_createCSint(0, 10000);
  cs_saveContext();
  for (int i = 1; i <= 3000; ++i) ASSERT_TRUE(removeValue(wide, i));
  for (int bound = 9999; bound > 7000; --bound) ASSERT_TRUE(narrowMax(wide, bound));
  EXPECT_EQ(cs_getNbElements(wide), 4002);
  cs_restoreContext();
  EXPECT_EQ(values(wide).size(), 10001U);
  EXPECT_EQ(cs_getNbElements(wide), 10001);
}

TEST_F(TrailTest, BeforeTheStartACallbackIsDroppedWithoutAReport) {
  cs_end();
  cs_backtrack(nullptr, 1, note);
  EXPECT_EQ(solver::trail.count(), 0);
  EXPECT_EQ(memoryReports, 0);
}

}  // namespace

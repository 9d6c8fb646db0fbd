// SPDX-License-Identifier: MIT
#include "core/context_stack.h"

#include <cstdlib>

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class ContextTest : public SolverTest {
 protected:
  CSint *x = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 99);
  }
  static int open() { return solver::contexts.count(); }
  // Opens contexts 1 to n, the minimum being raised to 10 * label in each.
  void nest(int n) {
    for (int label = 1; label <= n; ++label) {
      ASSERT_EQ(cs_saveContext(), label);
      ASSERT_TRUE(narrowMin(x, 10 * label));
    }
  }
};

TEST_F(ContextTest, LabelsCountFromOne) {
  EXPECT_EQ(cs_saveContext(), 1);
  EXPECT_EQ(cs_saveContext(), 2);
  cs_restoreContext();
  EXPECT_EQ(cs_saveContext(), 2);
}

TEST_F(ContextTest, RestoringUndoesWhatWasDoneSince) {
  ASSERT_TRUE(narrowMin(x, 5));
  cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 20) && narrowMax(x, 30) && removeValue(x, 25));
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 5);
  EXPECT_EQ(cs_getMax(x), 99);
  EXPECT_TRUE(cs_isIn(x, 25));
  EXPECT_EQ(cs_getNbElements(x), 95);
  EXPECT_EQ(open(), 0);
}

TEST_F(ContextTest, ForgettingHandsTheChangesToTheEnclosingContext) {
  nest(2);
  cs_forgetSaveContext();
  EXPECT_EQ(open(), 1);
  EXPECT_EQ(cs_getMin(x), 20);
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 0);
}

TEST_F(ContextTest, AcceptingMakesInnerChangesPermanentForTheEnclosingContext) {
  cs_saveContext();
  cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 20));
  cs_acceptContext();
  EXPECT_EQ(open(), 1);
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 20);
  EXPECT_EQ(cs_getNbElements(x), 80);
}

TEST_F(ContextTest, AcceptingLeavesEarlierRecordsOfTheOuterContextUndoable) {
  CSint *y = cs_createCSint(0, 99);
  cs_saveContext();
  ASSERT_TRUE(narrowMin(y, 5));
  cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 20));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(y), 0);
  EXPECT_EQ(cs_getMin(x), 20);
}

TEST_F(ContextTest, RestoreUntilOneClosesAllAndUndoesEverythingSinceTheFirst) {
  nest(2);
  cs_restoreContextUntil(1);
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(cs_getMin(x), 0);
}

TEST_F(ContextTest, RestoreUntilKeepsTheOlderContexts) {
  nest(4);
  cs_restoreContextUntil(3);
  EXPECT_EQ(open(), 2);
  EXPECT_EQ(cs_getMin(x), 20);
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 10);
}

TEST_F(ContextTest, RestoreUntilTheNewestIsARestore) {
  nest(3);
  cs_restoreContextUntil(3);
  EXPECT_EQ(open(), 2);
  EXPECT_EQ(cs_getMin(x), 20);
}

TEST_F(ContextTest, ForgetUntilHandsTheChangesToTheEnclosingContext) {
  nest(4);
  cs_forgetSaveContextUntil(2);
  EXPECT_EQ(open(), 1);
  EXPECT_EQ(cs_getMin(x), 40);
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 0);
}

TEST_F(ContextTest, AcceptUntilMakesTheChangesSinceThatLabelPermanent) {
  CSint *y = cs_createCSint(0, 99);
  cs_saveContext();
  ASSERT_TRUE(narrowMin(y, 5));
  for (int i = 0; i < 3; ++i) cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 40));
  cs_acceptContextUntil(2);
  EXPECT_EQ(open(), 1);
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 40);
  EXPECT_EQ(cs_getMin(y), 0);
}

TEST_F(ContextTest, RestoreAllUndoesEverythingSinceTheOldest) {
  ASSERT_TRUE(narrowMax(x, 90));
  nest(3);
  cs_restoreAll();
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(cs_getMin(x), 0);
  EXPECT_EQ(cs_getMax(x), 90);
}

TEST_F(ContextTest, AcceptAllMakesEverythingPermanent) {
  nest(3);
  cs_acceptAll();
  EXPECT_EQ(open(), 0);
  EXPECT_EQ(solver::trail.count(), 0);
  EXPECT_EQ(cs_getMin(x), 30);
}

TEST_F(ContextTest, WithNothingOpenNoClosingFunctionDoesAnything) {
  ASSERT_TRUE(narrowMin(x, 5));
  const int records = solver::trail.count();
  cs_forgetSaveContext();
  cs_acceptContext();
  cs_restoreContext();
  cs_acceptAll();
  cs_restoreAll();
  cs_forgetSaveContextUntil(1);
  cs_acceptContextUntil(1);
  cs_restoreContextUntil(1);
  EXPECT_EQ(solver::trail.count(), records);
  EXPECT_EQ(cs_getMin(x), 5);
  EXPECT_EQ(cs_saveContext(), 1);
}

TEST_F(ContextTest, UntilFormsIgnoreLabelsThatAreNotOpen) {
  nest(2);
  for (const int label : {3, 100, kIntMax, 0, -1, kIntMin}) {
    cs_forgetSaveContextUntil(label);
    cs_acceptContextUntil(label);
    cs_restoreContextUntil(label);
  }
  EXPECT_EQ(open(), 2);
  EXPECT_EQ(cs_getMin(x), 20);
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 10);
}

TEST_F(ContextTest, RestoreAndSaveLeavesTheNumberOfContextsUnchanged) {
  nest(2);
  EXPECT_EQ(cs_restoreAndSaveContext(), 2);
  EXPECT_EQ(open(), 2);
  EXPECT_EQ(cs_getMin(x), 10);
  ASSERT_TRUE(narrowMin(x, 50));
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(x), 10);
}

TEST_F(ContextTest, RestoreAndSaveWithNothingOpenOpensTheFirst) {
  EXPECT_EQ(cs_restoreAndSaveContext(), 1);
  EXPECT_EQ(open(), 1);
}

TEST_F(ContextTest, AVariableCreatedInsideOutlivesTheRestoreWithoutItsConstraints) {
  Journal journal;
  cs_saveContext();
  CSint *inside = cs_createNamedCSint(0, 9, "inside");
  ASSERT_TRUE(watch(journal, 1, {inside, x}));
  ASSERT_TRUE(narrowMin(inside, 3));
  journal.calls.clear();
  cs_restoreContext();
  EXPECT_STREQ(cs_getName(inside), "inside");
  EXPECT_EQ(cs_getMin(inside), 0);
  EXPECT_TRUE(narrowMin(inside, 4) && narrowMin(x, 4));
  EXPECT_TRUE(journal.calls.empty());
}

TEST_F(ContextTest, ConstraintsAttachedInsideAnAcceptedContextStay) {
  Journal journal;
  cs_saveContext();
  cs_saveContext();
  ASSERT_TRUE(watch(journal, 1, {x}));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
}

TEST_F(ContextTest, AfterAnInnerAcceptTheOuterRestoreUnlinksTheNewestEntryWhateverItIs) {
  Journal journal;
  cs_saveContext();
  ASSERT_TRUE(watch(journal, 1, {x}));
  cs_saveContext();
  ASSERT_TRUE(watch(journal, 2, {x}));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
}

TEST_F(ContextTest, AfterAnInnerAcceptTheOuterRestoreWritesTheOldCountBackAsItWas) {
  CSint *v = cs_createCSint(0, 10);
  cs_saveContext();
  ASSERT_TRUE(narrowMin(v, 2));
  cs_saveContext();
  ASSERT_TRUE(narrowMax(v, 5));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(cs_getMin(v), 0);
  EXPECT_EQ(cs_getMax(v), 5);
  EXPECT_EQ(cs_getNbElements(v), 11);
}

// The largest int is the only value left, yet the count says three.
CSint *largestIntWithACountOfThree() {
  CSint *v = cs_createCSint(kIntMax - 2, kIntMax);
  cs_saveContext();
  EXPECT_TRUE(removeValue(v, kIntMax - 1));
  cs_saveContext();
  EXPECT_TRUE(bindValue(v, kIntMax));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(cs_getNbElements(v), 3);
  EXPECT_EQ(cs_getMin(v), kIntMax);
  return v;
}

// In a process of its own: what goes wrong here is a read past the bit array.
TEST_F(ContextTest, AVariableWithAWrittenBackCountAtTheLargestIntIsSafeToEmpty) {
  const auto emptyAndAsk = [] {
    CSint *v = largestIntWithACountOfThree();
    cs_NEQ(v, kIntMax);
    std::exit(cs_isIn(v, 0) || cs_isIn(v, kIntMin) ? 1 : 0);
  };
  EXPECT_EXIT(emptyAndAsk(), testing::ExitedWithCode(0), "");
}

// As before, but without a bit array: memory ran out when the first removal wanted one.
TEST_F(ContextTest, ABoundNeverPassesTheOtherOneWhenTheBitsRunOutBeforeAWrittenBackCount) {
  CSint *up = cs_createCSint(0, 9);
  CSint *down = cs_createCSint(0, 9);
  cs_saveContext();
  EXPECT_TRUE(cs_GE(up, 1) && cs_LE(down, 8));
  cs_saveContext();
  EXPECT_TRUE(cs_NEQ(up, 5) && cs_NEQ(down, 5));
  cs_acceptContext();
  cs_restoreContext();
  // Both count ten elements, so the absent 5 can become a bound.
  EXPECT_TRUE(cs_LE(up, 5) && cs_NEQ(up, 2));
  EXPECT_TRUE(cs_GE(down, 5) && cs_NEQ(down, 7));
  EXPECT_FALSE(cs_GE(up, 5));
  EXPECT_FALSE(cs_LE(down, 5));
  EXPECT_LE(cs_getMin(up), cs_getMax(up));
  EXPECT_LE(cs_getMin(down), cs_getMax(down));
}

TEST_F(ContextTest, AWrittenBackCountWithoutBitsAtTheLargestIntIsSafeToEmpty) {
  const auto emptyAndAsk = [] {
    CSint *v = cs_createCSint(kIntMax - 2, kIntMax);
    cs_saveContext();
    {
      const AllocationRule none(refuseAll());
      EXPECT_FALSE(removeValue(v, kIntMax - 1));
    }
    cs_saveContext();
    EXPECT_TRUE(bindValue(v, kIntMax));
    cs_acceptContext();
    cs_restoreContext();
    EXPECT_EQ(cs_getNbElements(v), 3);
    cs_NEQ(v, kIntMax);
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(emptyAndAsk(), testing::ExitedWithCode(0), "");
}

TEST_F(ContextTest, TheLimitFollowsTheContexts) {
  EXPECT_EQ(solver::queue.limit, 0U);
  Journal journal;
  std::vector<unsigned> limits;
  ASSERT_TRUE(watch(journal, 1, {x}));
  journal.reactions[1] = [&](const Call &) {
    for (const auto close : {cs_restoreContext, cs_acceptContext, cs_forgetSaveContext}) {
      cs_saveContext();
      cs_saveContext();
      limits.push_back(solver::queue.limit);
      close();
      limits.push_back(solver::queue.limit);
      close();
      limits.push_back(solver::queue.limit);
    }
    const int label = cs_saveContext();
    cs_saveContext();
    cs_restoreContextUntil(label);
    limits.push_back(solver::queue.limit);
    return true;
  };
  cs_saveContext();
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(limits, (std::vector<unsigned>{1, 1, 0, 1, 1, 0, 1, 1, 0, 0}));
}

TEST_F(ContextTest, AllFormsTakeTheLimitOfTheOldestContext) {
  for (const auto close : {cs_restoreAll, cs_acceptAll}) {
    solver::queue.limit = 7;
    cs_saveContext();
    cs_saveContext();
    EXPECT_EQ(solver::queue.limit, 0U);
    close();
    EXPECT_EQ(solver::queue.limit, 7U);
  }
  solver::queue.limit = 0;
}

TEST_F(ContextTest, AMarkThatCannotBeStoredIsReportedAndShowsInTheLabel) {
  for (int label = 1; label <= 1024; ++label) ASSERT_EQ(cs_saveContext(), label);
  {
    const AllocationRule none(refuseAll());
    EXPECT_EQ(cs_saveContext(), 1024);
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_saveContext(), 1025);
  cs_restoreAll();
  EXPECT_EQ(open(), 0);
}

TEST_F(ContextTest, WithoutARunningSolverThereAreNoContexts) {
  cs_end();
  EXPECT_EQ(cs_saveContext(), 0);
  cs_restoreContext();
  cs_acceptContext();
  cs_forgetSaveContext();
  cs_restoreAll();
  cs_acceptAll();
  cs_restoreContextUntil(1);
  EXPECT_EQ(cs_restoreAndSaveContext(), 0);
  EXPECT_EQ(memoryReports, 0);
}

}  // namespace

// SPDX-License-Identifier: MIT
// Stacks grow by blocks of 1024 records. Here the block for record 1025 cannot be had: the call that needed it fails
// with one report, the records before it stay, and the next attempt, with memory, succeeds.
#include "core/solver.h"
#include "support/kit/failing_allocations.h"

namespace koru::test {
namespace {

constexpr int kBlock = 1024;

class BlockGrowthTest : public SolverTest {
 protected:
  void expectOneReport() {
    EXPECT_EQ(memoryReports, 1);
    EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
    memoryReports = 0;
    cs_initErr();
  }

  // Leaves no free record in the trail's first block.
  static void fillTrail() {
    CSint *v = cs_createCSint(0, 2 * kBlock);
    for (int i = 1; solver::trail.count() < kBlock; ++i) ASSERT_TRUE(cs_GE(v, i));
  }
};

TEST_F(BlockGrowthTest, TheVariable1025IsNullAndTheOthersStay) {
  for (int i = 0; i < kBlock; ++i) ASSERT_NE(cs_createCSint(0, 9), nullptr);
  {
    const FailingAllocator failing(0, Failing::kForEver);
    EXPECT_EQ(cs_createCSint(0, 9), nullptr);
    expectOneReport();
    EXPECT_EQ(CSINT(4), nullptr);
    expectOneReport();
    EXPECT_EQ(cs_createNamedCSint(0, 9, "name"), nullptr);
    expectOneReport();
  }
  EXPECT_EQ(solver::variables.count(), kBlock);
  EXPECT_NE(cs_createCSint(0, 9), nullptr);
  expectSolverUsable();
}

TEST_F(BlockGrowthTest, AnArrayThatCrossesTheBlockIsNullAndItsFirstVariablesStay) {
  for (int i = 0; i < kBlock - 2; ++i) cs_createCSint(0, 9);
  {
    // The first allocation is the array, the second the block.
    const FailingAllocator failing(1, Failing::kOnce);
    EXPECT_EQ(cs_createCSintArray(5, 0, 9), nullptr);
  }
  expectOneReport();
  EXPECT_EQ(solver::variables.count(), kBlock);
  EXPECT_EQ(solver::trail.count(), 1) << "the trail still owns the array";
  expectSolverUsable();
}

TEST_F(BlockGrowthTest, EveryNarrowingFailsUnchangedWhenItCannotBeTrailed) {
  CSint *v = cs_createCSint(0, 9);
  fillTrail();
  {
    const FailingAllocator failing(0, Failing::kForEver);
    EXPECT_FALSE(cs_GE(v, 3));
    expectOneReport();
    EXPECT_FALSE(cs_LE(v, 3));
    expectOneReport();
    EXPECT_FALSE(cs_EQ(v, 3));
    expectOneReport();
    EXPECT_FALSE(cs_NEQ(v, 0));
    expectOneReport();
    EXPECT_FALSE(cs_NEQ(v, 9));
    expectOneReport();
    EXPECT_FALSE(cs_NEQ(v, 5));
    expectOneReport();
  }
  EXPECT_EQ(values(v), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(cs_getNbElements(v), 10);
  EXPECT_TRUE(cs_EQ(v, 3));
  expectSolverUsable();
}

TEST_F(BlockGrowthTest, AnInnerBindThatCanTrailOnlyOneBoundFailsAndIsStillUndoable) {
  CSint *v = cs_createCSint(0, 9);
  CSint *filler = cs_createCSint(0, 2 * kBlock);
  const int label = cs_saveContext();
  for (int i = 1; solver::trail.count() < kBlock - 1; ++i) ASSERT_TRUE(cs_GE(filler, i));
  {
    const FailingAllocator failing(0, Failing::kForEver);
    EXPECT_FALSE(cs_EQ(v, 5));
  }
  expectOneReport();
  cs_restoreContextUntil(label);
  EXPECT_EQ(cs_getNbElements(v), 10);
  EXPECT_EQ(cs_getNbElements(filler), 2 * kBlock + 1);
  EXPECT_EQ(cs_getMin(v), 0);
  EXPECT_EQ(cs_getMax(v), 9);
  expectSolverUsable();
}

TEST_F(BlockGrowthTest, AnAttachmentThatCannotBeTrailedIsTakenBack) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  fillTrail();
  {
    const FailingAllocator failing(3, Failing::kForEver);  // after site, constraint and entry: the block
    EXPECT_FALSE(cs_Neq(x, y));
    EXPECT_EQ(FailingAllocator::failures(), 1);
  }
  expectOneReport();
  EXPECT_EQ(x->constraints, nullptr);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_TRUE(cs_Neq(x, y));
  EXPECT_TRUE(cs_EQ(x, 4));
  EXPECT_FALSE(cs_isIn(y, 4));
  expectSolverUsable();
}

TEST_F(BlockGrowthTest, AnArrayThatCannotBeTrailedIsFreed) {
  fillTrail();
  {
    const FailingAllocator failing(1, Failing::kForEver);
    EXPECT_EQ(cs_createCSintArray(5, 0, 9), nullptr);
  }
  expectOneReport();
  expectSolverUsable();
}

void neverCalled(CSint *, int) { ADD_FAILURE() << "a registration that was not stored is not called"; }

TEST_F(BlockGrowthTest, ARegistrationThatCannotBeStoredIsReportedAndNeverCalled) {
  const int label = cs_saveContext();
  fillTrail();
  {
    const FailingAllocator failing(0, Failing::kForEver);
    cs_backtrack(nullptr, 1, neverCalled);
    expectOneReport();
    cs_backtrackExt(nullptr, 2, neverCalled);
    expectOneReport();
  }
  cs_restoreContextUntil(label);
  expectSolverUsable();
}

TEST_F(BlockGrowthTest, TheContext1025IsReportedAndNotOpened) {
  CSint *v = cs_createCSint(0, 9);
  for (int i = 1; i <= kBlock; ++i) ASSERT_EQ(cs_saveContext(), i);
  {
    const FailingAllocator failing(0, Failing::kForEver);
    EXPECT_EQ(cs_saveContext(), kBlock);
  }
  expectOneReport();
  EXPECT_TRUE(cs_EQ(v, 5));
  EXPECT_EQ(cs_saveContext(), kBlock + 1);
  cs_restoreAll();
  EXPECT_EQ(cs_getNbElements(v), 10);
  EXPECT_EQ(cs_saveContext(), 1);
  expectSolverUsable();
}

// Binding the trigger takes a value from each of 1025 others: an event each waits in the queue.
TEST_F(BlockGrowthTest, TheEvent1025FailsTheChangeThatItBelongsTo) {
  CSint *trigger = cs_createCSint(0, 1);
  std::vector<CSint *> others;
  for (int i = 0; i <= kBlock; ++i) others.push_back(cs_createCSint(0, 1));
  for (CSint *v : others) ASSERT_TRUE(cs_Neq(trigger, v));
  const int label = cs_saveContext();
  // The trail gets its room beforehand: only the block of events is missing.
  CSint *filler = cs_createCSint(0, 2 * kBlock);
  for (int i = 1; i <= 2 * kBlock; ++i) ASSERT_TRUE(cs_GE(filler, i));
  ASSERT_EQ(cs_restoreAndSaveContext(), label);
  ASSERT_EQ(solver::events.blockCount(), 1);
  {
    const FailingAllocator failing(0, Failing::kForEver);
    EXPECT_FALSE(cs_EQ(trigger, 1));
    EXPECT_EQ(FailingAllocator::failures(), 1);
  }
  expectOneReport();
  EXPECT_TRUE(solver::events.empty());
  EXPECT_TRUE(cs_restoreAndSaveContext() == label);
  for (CSint *v : others) ASSERT_EQ(cs_getNbElements(v), 2);
  EXPECT_TRUE(cs_EQ(trigger, 1)) << "with memory the same change goes through";
  for (CSint *v : others) ASSERT_EQ(cs_getMax(v), 0);
  EXPECT_EQ(solver::events.blockCount(), 2);
  expectSolverUsable();
}

}  // namespace
}  // namespace koru::test

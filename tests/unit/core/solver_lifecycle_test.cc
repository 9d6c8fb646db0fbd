// SPDX-License-Identifier: MIT
// Start and end of the solver.
#include <string>

#include "core/alloc.h"
#include "core/solver.h"
#include "support/kit/death.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

void count(CSint *, void *extra) { ++*static_cast<int *>(extra); }

class SolverLifecycleTest : public ::testing::Test {
 protected:
  void TearDown() override { cs_end(); }
};

TEST_F(SolverLifecycleTest, TheVersionIsConstantText) {
  EXPECT_STREQ(cs_getVersion(), "3.8.0");
  EXPECT_EQ(cs_getVersion(), cs_getVersion());
}

TEST_F(SolverLifecycleTest, InitBuildsFourStacksOfOneBlockAndTheSiteTable) {
  {
    const AllocationRule counted(allowAll());
    cs_init();
    EXPECT_EQ(AllocationRule::count(), 6) << "the trail takes two: its records and its notes";
  }
  EXPECT_TRUE(solver::initialised);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(solver::variables.blockCount(), 1);
  EXPECT_EQ(solver::trail.blockCount(), 1);
  EXPECT_EQ(solver::contexts.blockCount(), 1);
  EXPECT_EQ(solver::events.blockCount(), 1);
  EXPECT_EQ(solver::variables.count() + solver::trail.count() + solver::contexts.count() + solver::events.size(), 0);
}

TEST_F(SolverLifecycleTest, ASecondInitKeepsVariablesConstraintsAndContexts) {
  cs_init();
  Journal journal;
  CSint *x = cs_createNamedCSint(0, 9, "x");
  ASSERT_TRUE(watch(journal, 1, {x}));
  cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 4));
  cs_setErr(-7);
  {
    const AllocationRule counted(allowAll());
    cs_init();
    EXPECT_EQ(AllocationRule::count(), 0);
  }
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_STREQ(cs_getName(x), "x");
  EXPECT_EQ(cs_getMin(x), 4);
  journal.calls.clear();
  EXPECT_TRUE(narrowMin(x, 5));
  EXPECT_EQ(journal.watchers(), (std::vector<int>{1}));
  EXPECT_EQ(cs_saveContext(), 2);
  cs_restoreAll();
  EXPECT_EQ(cs_getMin(x), 0);
}

TEST_F(SolverLifecycleTest, ASecondInitResetsTheHandlers) {
  cs_init();
  int calls = 0;
  cs_setErrHandler(CS_ERR_OVERFLOW, count, &calls);
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, count, &calls);
  cs_init();
  reportOverflow();
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(solver::errors.overflow.extra, nullptr);
  EXPECT_EQ(solver::errors.notInstantiated.call, printNotInstantiated);
  EXPECT_EQ(solver::errors.notInstantiated.extra, nullptr);
}

TEST_F(SolverLifecycleTest, EndWithoutInitOrTwiceDoesNothing) {
  cs_end();
  cs_init();
  cs_end();
  cs_setErr(-7);
  cs_end();
  EXPECT_EQ(cs_getErr(), -7);
  EXPECT_FALSE(solver::initialised);
}

TEST_F(SolverLifecycleTest, TheSolverCanBeStartedAgainAfterItsEnd) {
  for (int round = 0; round < 3; ++round) {
    cs_init();
    CSint *x = cs_createCSint(0, 9);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(cs_saveContext(), 1);
    EXPECT_TRUE(removeValue(x, 5));
    cs_end();
  }
}

TEST_F(SolverLifecycleTest, EndingClearsTheWholeState) {
  cs_init();
  Journal journal;
  CSint *x = cs_createNamedCSint(0, 9, "x");
  ASSERT_TRUE(watch(journal, 1, {x}) && removeValue(x, 5));
  cs_saveContext();
  solver::userSite = x->constraints->constraint->site;
  cs_end();
  EXPECT_EQ(solver::userSite, nullptr);
  EXPECT_FALSE(solver::variables.created() || solver::trail.created() || solver::contexts.created() ||
               solver::events.created());
}

TEST_F(SolverLifecycleTest, EndingAfterManyBlocksFreesThemAll) {
  cs_init();
  for (int i = 0; i < 3000; ++i) {
    ASSERT_NE(cs_createNamedCSint(0, 9, "x"), nullptr);
    ASSERT_NE(cs_createCSintArray(1, 0, 1), nullptr);
    cs_saveContext();
  }
  cs_end();
  EXPECT_FALSE(solver::initialised);
}

// ----- the order of the end

struct Ending {
  int released = 0;
  bool locatorGone = false;
  bool variablesStand = false;
  bool recordAlive = false;
  std::weak_ptr<int> record;
};
int locatorResets = 0;

TEST_F(SolverLifecycleTest, ObserversAreReleasedAfterTheLocatorAndBeforeTheVariables) {
  cs_init();
  locatorResets = 0;
  Ending ending;
  Journal journal;
  {
    auto life = std::make_shared<int>(0);
    ending.record = life;
    ASSERT_TRUE(watch(journal, 1, {cs_createCSint(0, 9)}, {}, life));
  }
  const auto release = [](void *argument) {
    auto *seen = static_cast<Ending *>(argument);
    ++seen->released;
    seen->locatorGone = locatorResets == 1;
    seen->variablesStand = solver::variables.count() == 1;
    seen->recordAlive = !seen->record.expired();
  };
  Observer observer{[](void *, bool, CSint *, int, Site *) {}, release, &ending, true, nullptr};
  solver::ports.add(&observer);
  solver::ports.locator.reset = [] { ++locatorResets; };
  cs_end();
  EXPECT_EQ(ending.released, 1);
  EXPECT_TRUE(ending.locatorGone);
  EXPECT_TRUE(ending.variablesStand);
  EXPECT_TRUE(ending.recordAlive);
  EXPECT_TRUE(ending.record.expired());
  EXPECT_FALSE(solver::ports.profiling);
}

// ----- a start that fails

TEST_F(SolverLifecycleTest, AFailureAtAnyStackLeavesTheSolverUninitialisedAndTheNextInitSucceeds) {
  for (int refused = 0; refused < 5; ++refused) {
    {
      const AllocationRule rule(refuseOnly(refused));
      cs_init();
      EXPECT_EQ(AllocationRule::count(), refused + 1) << "it stops at once";
    }
    EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
    EXPECT_FALSE(solver::initialised);
    EXPECT_EQ(solver::variables.created(), refused > 0);
    EXPECT_EQ(solver::trail.created(), refused > 1);
    EXPECT_EQ(solver::contexts.created(), refused > 3);
    EXPECT_FALSE(solver::events.created());
    {
      const AllocationRule counted(allowAll());
      cs_init();
      EXPECT_EQ(AllocationRule::count(), 6 - refused) << "what was built is taken over";
    }
    EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
    EXPECT_TRUE(solver::initialised);
    EXPECT_NE(cs_createCSint(0, 1), nullptr);
    cs_end();
  }
}

TEST_F(SolverLifecycleTest, AfterAFailedInitExhaustedMemoryIsOnlyRecorded) {
  const AllocationRule none(refuseAll());
  cs_init();
  cs_initErr();
  EXPECT_EQ(allocate(1), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

TEST_F(SolverLifecycleTest, EndAfterAFailedInitDoesNothing) {
  {
    const AllocationRule rule(refuseOnly(2));
    cs_init();
  }
  cs_end();
  EXPECT_TRUE(solver::variables.created() && solver::trail.created());
  cs_init();
  EXPECT_TRUE(solver::initialised);
}

TEST_F(SolverLifecycleTest, AfterAFailedInitNothingIsCreatedOnTheStacksThatWereBuilt) {
  {
    const AllocationRule rule(refuseOnly(3));
    cs_init();
  }
  EXPECT_EQ(cs_createCSint(0, 1), nullptr);
  EXPECT_EQ(cs_createCSintArray(1, 0, 1), nullptr);
  EXPECT_EQ(cs_saveContext(), 0);
  cs_backtrack(nullptr, 1, nullptr);
  cs_backtrackExt(nullptr, 1, nullptr);
  cs_init();
  EXPECT_EQ(cs_saveContext(), 1);
  EXPECT_EQ(solver::trail.count(), 0);
  EXPECT_EQ(solver::variables.count(), 0);
}

TEST_F(SolverLifecycleTest, ARefusedSiteTableIsRecordedAndTheStartCompletes) {
  {
    const AllocationRule rule(refuseOnly(5));
    cs_init();
  }
  EXPECT_TRUE(solver::initialised);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(solver::errors.memory.call, abortOnError);
  Site *parent = Site::create("parent", "");
  EXPECT_EQ(solver::sites.find(parent, "cs_EQ", ""), nullptr);
  Site::release(parent);
  EXPECT_TRUE(narrowMin(cs_createCSint(0, 9), 3));
}

TEST_F(SolverLifecycleTest, HandlersOutliveTheEndAndNotTheNextInit) {
  cs_init();
  int calls = 0;
  cs_setErrHandler(CS_ERR_OVERFLOW, count, &calls);
  cs_setErrHandler(CS_ERR_MEMORY, count, &calls);
  cs_end();
  reportOverflow();
  reportMemoryExhausted();
  EXPECT_EQ(calls, 2);
  cs_init();
  reportOverflow();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(solver::errors.memory.call, abortOnError);
}

TEST_F(SolverLifecycleTest, ASuccessfulInitInstallsAbortForExhaustedMemory) {
  cs_init();
  EXPECT_EXIT(reportMemoryExhausted(), kAborted, "");
}

}  // namespace

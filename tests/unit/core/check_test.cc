// SPDX-License-Identifier: MIT
// The invariant checker stops the process when something is not as it must be. Each test damages one thing.
#include "core/check.h"

#include <thread>

#include "core/solver.h"
#include "koru_extras.h"
#include "support/kit/death.h"
#include "support/kit/solver_test.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class CheckTest : public SolverTest {
 protected:
  Journal journal;
  CSint *x = nullptr;
  CSint *y = nullptr;

  void SetUp() override {
    SolverTest::SetUp();
    x = cs_createCSint(0, 9);
    y = fromValues({0, 1, 5, 9});
    ASSERT_TRUE(watch(journal, 1, {x, y}));
  }
};

using CheckDeathTest = CheckTest;

TEST_F(CheckTest, ASoundStatePasses) {
  check::invariantsWhenIdle();
  EXPECT_TRUE(narrowMin(x, 2) && removeValue(x, 5) && removeValue(y, 1));
  cs_saveContext();
  EXPECT_TRUE(bindValue(x, 4));
  cs_restoreContext();
  EXPECT_EQ(solver::checked.untilNext, solver::checked.period);
}

TEST_F(CheckTest, ItRunsOnlyEverySoManyTimesWhenToldSo) {
  solver::checked.period = solver::checked.untilNext = 3;
  x->count = 7;
  EXPECT_TRUE(narrowMin(y, 1)) << "first of three: not looked at";
  x->count = 10;
  EXPECT_TRUE(narrowMin(y, 5) && narrowMin(y, 9));
  EXPECT_EQ(solver::checked.untilNext, 3);
  solver::checked.period = solver::checked.untilNext = 1;
}

TEST_F(CheckDeathTest, AnIntervalsCountThatIsWrongIsCaught) {
  x->count = 7;
  EXPECT_EXIT(static_cast<void>(narrowMin(y, 1)), kAborted, "an interval's element count");
}

TEST_F(CheckDeathTest, ACountThatDiffersFromTheBitsIsCaught) {
  y->count = 3;
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "the element count is the number of bits set");
}

TEST_F(CheckDeathTest, ABoundThatIsAbsentFromTheBitsIsCaught) {
  y->bits->clear(9);
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "the bounds are present in the bits");
}

TEST_F(CheckDeathTest, BoundsOutOfOrderAreCaught) {
  y->min = 10;
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "bounds are in order");
}

TEST_F(CheckDeathTest, TooManyReferencesAreCaught) {
  ++x->constraints->constraint->references;
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "nothing but entries refers to a constraint");
  --x->constraints->constraint->references;
}

TEST_F(CheckDeathTest, TooFewReferencesAreCaught) {
  --x->constraints->constraint->references;
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "a constraint has a reference for each of its entries");
  ++x->constraints->constraint->references;
}

TEST_F(CheckDeathTest, ASiteWithoutReferencesIsCaught) {
  x->constraints->constraint->site->references = 0;
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "a constraint's site is referred to");
  x->constraints->constraint->site->references = 1;
}

TEST_F(CheckDeathTest, AListThatSumsUpItsOlderEntriesWronglyIsCaught) {
  y->constraints->heardByOlder ^= 1;
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "what a list hears");
}

TEST_F(CheckDeathTest, AMarkBeyondTheTrailIsCaught) {
  cs_saveContext();
  solver::contexts.forEach([](ContextMark &mark) { mark.trailMark += 100; });
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "trail marks lie on the trail");
}

TEST_F(CheckDeathTest, ItLooksAfterRestoreAndAcceptToo) {
  cs_saveContext();
  y->count = 3;
  EXPECT_EXIT(cs_restoreContext(), kAborted, "element count");
  EXPECT_EXIT(cs_acceptContext(), kAborted, "element count");
}

TEST_F(CheckDeathTest, TwoThreadsAtOnceAreCaught) {
  journal.reactions[1] = [&](const Call &) {
    std::thread([&] { static_cast<void>(cs_saveContext() > 0 && cs_GE(y, 5)); }).join();
    return true;
  };
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "two threads are in the solver at once");
}

TEST_F(CheckTest, OneThreadAfterAnotherMayUseTheSolver) {
  EXPECT_TRUE(narrowMin(x, 1));
  std::thread([&] { EXPECT_TRUE(narrowMin(x, 2) && cs_Neq(x, y)); }).join();
  EXPECT_TRUE(narrowMin(x, 3));
}

TEST_F(CheckDeathTest, EndingTheSolverInsideACallbackIsCaught) {
  journal.reactions[1] = [](const Call &) {
    cs_end();
    return true;
  };
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "cs_end are not called from a callback");
}

TEST_F(CheckDeathTest, StartingTheSolverInsideACallbackIsCaught) {
  journal.reactions[1] = [](const Call &) {
    cs_init();
    return true;
  };
  EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "cs_end are not called from a callback");
}

TEST_F(CheckDeathTest, EndingTheSolverInARunIsCaught) {
  const auto end = [](CSint **, int, void *) {
    cs_end();
    return true;
  };
  EXPECT_EXIT(cs_eventRun(&x, 1, end, nullptr), kAborted, "cs_end are not called from a callback");
}

TEST_F(CheckDeathTest, ClosingAContextThatTheCallbackDidNotOpenIsCaught) {
  cs_saveContext();
  for (const auto close : {cs_restoreContext, cs_acceptContext, cs_forgetSaveContext, cs_restoreAll, cs_acceptAll}) {
    journal.reactions[1] = [close](const Call &) {
      close();
      return true;
    };
    EXPECT_EXIT(static_cast<void>(narrowMin(x, 1)), kAborted, "a callback closes only contexts that it opened");
  }
}

TEST_F(CheckTest, ACallbackThatSavesAndRestoresInBalanceIsInOrder) {
  cs_saveContext();
  journal.reactions[1] = [this](const Call &call) {
    if (call.variable != x) return true;
    cs_saveContext();
    const bool consistent = narrowMin(y, 5);
    cs_restoreContext();
    return consistent;
  };
  EXPECT_TRUE(narrowMin(x, 1));
  EXPECT_EQ(solver::contexts.count(), 1);
}

TEST_F(CheckTest, AfterAnAcceptUnderAnOpenContextCountsMayLag) {
  cs_saveContext();
  ASSERT_TRUE(narrowMin(x, 2));
  cs_saveContext();
  ASSERT_TRUE(narrowMax(x, 5));
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(cs_getNbElements(x), 10);
  EXPECT_EQ(cs_getMax(x), 5);
  EXPECT_TRUE(narrowMin(y, 1));
}

TEST_F(CheckTest, TheEndForgetsThatCountsMayLag) {
  cs_saveContext();
  cs_saveContext();
  cs_acceptContext();
  EXPECT_TRUE(solver::checked.countsMayLag);
  cs_end();
  EXPECT_FALSE(solver::checked.countsMayLag);
}

}  // namespace

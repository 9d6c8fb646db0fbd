// SPDX-License-Identifier: MIT
// The event that each narrowing operation signals, as a watching constraint hears it.
#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/recorder.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::journal;

class NarrowEventsTest : public SolverTest {
 protected:
  Journal journal;

  CSint *watched(const std::vector<int> &domain) { return watched(fromValues(domain)); }
  CSint *watched(CSint *v) {
    EXPECT_TRUE(watch(journal, 1, {v}));
    return v;
  }
  void expectOnly(CSint *v, EventCode code, int oldValue, int newValue) {
    EXPECT_EQ(journal.calls, (std::vector<Call>{{1, v, code, oldValue, newValue, 0}}));
  }
};

TEST_F(NarrowEventsTest, RaisingTheMinimumSignalsANewMinimum) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(narrowMin(v, 4));
  expectOnly(v, kNewMin, 0, 4);
}

TEST_F(NarrowEventsTest, RaisingTheMinimumIntoAHoleSignalsTheValueReached) {
  CSint *v = watched({0, 1, 5, 9});
  EXPECT_TRUE(narrowMin(v, 2));
  expectOnly(v, kNewMin, 0, 5);
}

TEST_F(NarrowEventsTest, RaisingTheMinimumToTheMaximumSignalsAnInstantiation) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(narrowMin(v, 9));
  expectOnly(v, kMinBound, 0, 9);
}

TEST_F(NarrowEventsTest, RaisingTheMinimumOverHolesToTheLastValueSignalsAnInstantiation) {
  CSint *v = watched({0, 1, 9});
  EXPECT_TRUE(narrowMin(v, 2));
  expectOnly(v, kMinBound, 0, 9);
}

TEST_F(NarrowEventsTest, LoweringTheMaximumSignalsANewMaximum) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(narrowMax(v, 4));
  expectOnly(v, kNewMax, 9, 4);
}

TEST_F(NarrowEventsTest, LoweringTheMaximumIntoAHoleSignalsTheValueReached) {
  CSint *v = watched({0, 1, 5, 9});
  EXPECT_TRUE(narrowMax(v, 4));
  expectOnly(v, kNewMax, 9, 1);
}

TEST_F(NarrowEventsTest, LoweringTheMaximumToTheMinimumSignalsAnInstantiation) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(narrowMax(v, 0));
  expectOnly(v, kMaxBound, 9, 0);
}

TEST_F(NarrowEventsTest, LoweringTheMaximumOverHolesToTheFirstValueSignalsAnInstantiation) {
  CSint *v = watched({0, 8, 9});
  EXPECT_TRUE(narrowMax(v, 7));
  expectOnly(v, kMaxBound, 9, 0);
}

TEST_F(NarrowEventsTest, BindingToTheMaximumSignalsABoundMinimum) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(bindValue(v, 9));
  expectOnly(v, kMinBound, 0, 9);
}

TEST_F(NarrowEventsTest, BindingToTheMinimumSignalsABoundMaximum) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(bindValue(v, 0));
  expectOnly(v, kMaxBound, 9, 0);
}

TEST_F(NarrowEventsTest, BindingToAnInnerValueSignalsItWithBothOldBounds) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(bindValue(v, 4));
  expectOnly(v, kBound, 0, 9);
}

TEST_F(NarrowEventsTest, BindingAnInstantiatedVariableSignalsNothing) {
  CSint *v = watched(CSINT(4));
  EXPECT_TRUE(bindValue(v, 4));
  EXPECT_FALSE(bindValue(v, 5));
  EXPECT_TRUE(journal.calls.empty());
}

TEST_F(NarrowEventsTest, RemovingTheMinimumSignalsANewMinimum) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(removeValue(v, 0));
  expectOnly(v, kNewMin, 0, 1);
}

TEST_F(NarrowEventsTest, RemovingTheMinimumBesideAHoleSignalsTheValueReached) {
  CSint *v = watched({0, 5, 9});
  EXPECT_TRUE(removeValue(v, 0));
  expectOnly(v, kNewMin, 0, 5);
}

TEST_F(NarrowEventsTest, RemovingTheMinimumOfTwoValuesSignalsAnInstantiation) {
  CSint *v = watched({0, 5});
  EXPECT_TRUE(removeValue(v, 0));
  expectOnly(v, kMinBound, 0, 5);
}

TEST_F(NarrowEventsTest, RemovingTheMaximumSignalsANewMaximum) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(removeValue(v, 9));
  expectOnly(v, kNewMax, 9, 8);
}

TEST_F(NarrowEventsTest, RemovingTheMaximumBesideAHoleSignalsTheValueReached) {
  CSint *v = watched({0, 5, 9});
  EXPECT_TRUE(removeValue(v, 9));
  expectOnly(v, kNewMax, 9, 5);
}

TEST_F(NarrowEventsTest, RemovingTheMaximumOfTwoValuesSignalsAnInstantiation) {
  CSint *v = watched(cs_createCSint(4, 5));
  EXPECT_TRUE(removeValue(v, 5));
  expectOnly(v, kMaxBound, 5, 4);
}

TEST_F(NarrowEventsTest, RemovingAnInnerValueSignalsIt) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(removeValue(v, 4));
  expectOnly(v, kRemoved, 4, 4);
}

TEST_F(NarrowEventsTest, CallsThatChangeNothingSignalNothing) {
  CSint *v = watched({0, 1, 5, 9});
  EXPECT_TRUE(narrowMin(v, 0));
  EXPECT_TRUE(narrowMax(v, 9));
  EXPECT_TRUE(removeValue(v, 3));
  EXPECT_TRUE(removeValue(v, 12));
  EXPECT_FALSE(narrowMin(v, 10));
  EXPECT_FALSE(bindValue(v, 3));
  EXPECT_TRUE(journal.calls.empty());
}

TEST_F(NarrowEventsTest, UntrailedRemovalSignalsNothing) {
  CSint *v = watched(cs_createCSint(0, 9));
  EXPECT_TRUE(removeValueNoTrail(v, 0));
  EXPECT_TRUE(removeValueNoTrail(v, 4));
  EXPECT_TRUE(removeValueNoTrail(v, 9));
  EXPECT_TRUE(journal.calls.empty());
}

TEST_F(NarrowEventsTest, EventsAtTheIntLimitsCarryTheLimits) {
  CSint *v = watched(cs_createCSint(kIntMin, kIntMax));
  EXPECT_TRUE(narrowMin(v, kIntMax - 1));
  EXPECT_TRUE(removeValue(v, kIntMax - 1));
  EXPECT_EQ(journal.calls,
            (std::vector<Call>{{1, v, kNewMin, kIntMin, kIntMax - 1, 0}, {1, v, kMinBound, kIntMax - 1, kIntMax, 0}}));
}

TEST_F(NarrowEventsTest, AHandlerThatFailsMakesTheOperationFail) {
  CSint *v = watched(cs_createCSint(0, 9));
  journal.reactions[1] = [](const Call &) { return false; };
  EXPECT_FALSE(narrowMin(v, 1));
  EXPECT_FALSE(narrowMax(v, 8));
  EXPECT_FALSE(removeValue(v, 4));
  EXPECT_FALSE(bindValue(v, 5));
}

TEST_F(NarrowEventsTest, AVariableWithoutConstraintsHasItsReportedBoundsBroughtUpToDate) {
  CSint *v = cs_createCSint(0, 9);
  EXPECT_TRUE(narrowMin(v, 2) && narrowMax(v, 7));
  EXPECT_EQ(v->reportedMin, 2);
  EXPECT_EQ(v->reportedMax, 7);
  EXPECT_EQ(solver::events.count(), 0) << "no event was queued";
  watched(v);
  EXPECT_TRUE(narrowMin(v, 3));
  expectOnly(v, kNewMin, 2, 3);
}

}  // namespace

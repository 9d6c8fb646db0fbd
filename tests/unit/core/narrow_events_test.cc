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

struct OneChange {
  const char *name;
  std::vector<int> domain;  // none: 0 to 9, without bits
  bool (*narrow)(CSint *, int);
  int value;
  EventCode code;
  int oldValue, newValue;
};

const OneChange kChanges[] = {
    {"raising the minimum: new minimum", {}, narrowMin, 4, kNewMin, 0, 4},
    {"raising the minimum into a hole: the value reached", {0, 1, 5, 9}, narrowMin, 2, kNewMin, 0, 5},
    {"raising the minimum to the maximum: bound", {}, narrowMin, 9, kMinBound, 0, 9},
    {"raising the minimum over holes to the last value: bound", {0, 1, 9}, narrowMin, 2, kMinBound, 0, 9},
    {"lowering the maximum: new maximum", {}, narrowMax, 4, kNewMax, 9, 4},
    {"lowering the maximum into a hole: the value reached", {0, 1, 5, 9}, narrowMax, 4, kNewMax, 9, 1},
    {"lowering the maximum to the minimum: bound", {}, narrowMax, 0, kMaxBound, 9, 0},
    {"lowering the maximum over holes to the first value: bound", {0, 8, 9}, narrowMax, 7, kMaxBound, 9, 0},
    {"binding to the maximum: bound", {}, bindValue, 9, kMinBound, 0, 9},
    {"binding to the minimum: bound", {}, bindValue, 0, kMaxBound, 9, 0},
    {"binding to an inner value: both old bounds", {}, bindValue, 4, kBound, 0, 9},
    {"removing the minimum: new minimum", {}, removeValue, 0, kNewMin, 0, 1},
    {"removing the minimum beside a hole: the value reached", {0, 5, 9}, removeValue, 0, kNewMin, 0, 5},
    {"removing the minimum of two values: bound", {0, 5}, removeValue, 0, kMinBound, 0, 5},
    {"removing the maximum: new maximum", {}, removeValue, 9, kNewMax, 9, 8},
    {"removing the maximum beside a hole: the value reached", {0, 5, 9}, removeValue, 9, kNewMax, 9, 5},
    {"removing the maximum of two values: bound", {4, 5}, removeValue, 5, kMaxBound, 5, 4},
    {"removing an inner value", {}, removeValue, 4, kRemoved, 4, 4},
};

TEST_F(NarrowEventsTest, EachChangeSignalsOneEvent) {
  for (const OneChange &change : kChanges) {
    SCOPED_TRACE(change.name);
    journal.calls.clear();
    CSint *v = change.domain.empty() ? watched(cs_createCSint(0, 9)) : watched(change.domain);
    EXPECT_TRUE(change.narrow(v, change.value));
    expectOnly(v, change.code, change.oldValue, change.newValue);
  }
}

TEST_F(NarrowEventsTest, RemovingTheMaximumOfAnIntervalOfTwoSignalsAnInstantiation) {
  CSint *v = watched(cs_createCSint(4, 5));
  EXPECT_TRUE(removeValue(v, 5));
  expectOnly(v, kMaxBound, 5, 4);
}

TEST_F(NarrowEventsTest, BindingAnInstantiatedVariableSignalsNothing) {
  CSint *v = watched(CSINT(4));
  EXPECT_TRUE(bindValue(v, 4));
  EXPECT_FALSE(bindValue(v, 5));
  EXPECT_TRUE(journal.calls.empty());
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
  EXPECT_TRUE(solver::events.empty()) << "no event was queued";
  watched(v);
  EXPECT_TRUE(narrowMin(v, 3));
  expectOnly(v, kNewMin, 2, 3);
}

}  // namespace

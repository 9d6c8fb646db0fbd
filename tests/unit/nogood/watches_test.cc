// SPDX-License-Identifier: MIT
// Propagation of no-goods: what each event makes them conclude, where their watches go, and in which order they come.
#include "nogood/watches.h"

#include "support/no_goods/no_goods.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::nogood;

class WatchesTest : public NoGoodTest {
 protected:
  std::vector<int> domain(int i) const { return values(x[i]); }
  bool decide(const Literal &l) {
    const CSvalueSelection decision{l.method, l.value};
    return cs_selectValue(x[l.index], &decision);
  }
};

// ----- the six events, and the six conclusions

struct EventRow {
  const char *name;
  int code;
  Literal first;   // of the no-good
  Literal change;  // makes it hold
};

void PrintTo(const EventRow &row, std::ostream *out) { *out << row.name; }

class EventTest : public WatchesTest, public ::testing::WithParamInterface<EventRow> {};

INSTANTIATE_TEST_SUITE_P(, EventTest,
                         ::testing::Values(EventRow{"MinimumRaised", 0, ge(0, 3), ge(0, 3)},
                                           EventRow{"MaximumLowered", 1, lt(0, 3), le(0, 2)},
                                           EventRow{"BoundByMinimum", 2, eq(0, 9), ge(0, 9)},
                                           EventRow{"BoundByMaximum", 3, le(0, 0), le(0, 0)},
                                           EventRow{"BoundInside", 4, gt(0, 3), eq(0, 4)},
                                           EventRow{"ValueRemoved", 5, neq(0, 4), neq(0, 4)}),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(EventTest, ThatMakesAllButOneElementHoldTakesTheLastOneAway) {
  add(set, {GetParam().first, eq(1, 5)});
  const CallLog log;
  ASSERT_TRUE(decide(GetParam().change));
  EXPECT_EQ(log.calls[0], (Call{true, x[0], GetParam().code, "cs_createNoGoodSet"}));
  EXPECT_EQ(domain(1), without(range(0, 9), 5));
}

TEST_P(EventTest, ActsOnTheFirstElementWhenTheSecondHolds) {
  add(set, {eq(1, 5), GetParam().first});
  ASSERT_TRUE(decide(GetParam().change));
  EXPECT_EQ(domain(1), without(range(0, 9), 5));
}

TEST_P(EventTest, FailsANoGoodWhoseOtherElementHolds) {
  ASSERT_TRUE(cs_EQ(x[1], 5));
  add(set, {GetParam().first, eq(1, 5)});
  EXPECT_FALSE(decide(GetParam().change));
}

TEST_P(EventTest, LeavesANoGoodAloneWhoseOtherElementCannotHold) {
  ASSERT_TRUE(cs_NEQ(x[1], 5));
  add(set, {GetParam().first, eq(1, 5)});
  ASSERT_TRUE(decide(GetParam().change));
  EXPECT_EQ(domain(1), without(range(0, 9), 5));
}

TEST_P(EventTest, OfAnotherVariableConcludesNothing) {
  add(set, {GetParam().first, eq(1, 5)});
  Literal elsewhere = GetParam().change;
  elsewhere.index = 2;
  ASSERT_TRUE(decide(elsewhere));
  EXPECT_EQ(domain(0), range(0, 9));
  EXPECT_EQ(domain(1), range(0, 9));
}

TEST_F(WatchesTest, WhatIsTakenAwayDependsOnTheMethod) {
  const struct {
    Literal last;
    std::vector<int> left;
  } rows[] = {{eq(1, 4), without(range(0, 9), 4)},
              {neq(1, 4), {4}},
              {le(1, 4), range(5, 9)},
              {lt(1, 4), range(4, 9)},
              {ge(1, 4), range(0, 3)},
              {gt(1, 4), range(0, 4)}};
  for (const auto &row : rows) {
    const int label = cs_saveContext();
    add(set, {eq(0, 1), row.last});
    ASSERT_TRUE(cs_EQ(x[0], 1));
    EXPECT_EQ(domain(1), row.left) << row.last;
    cs_restoreContextUntil(label);
    filterBy([](CSnoGood *) { return false; });
  }
}

TEST_F(WatchesTest, AConclusionThatNoValueIsLeftForFails) {
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Eq(x[1], y));
  add(set, {eq(0, 1), eq(1, 4)});
  add(set, {eq(0, 1), le(1, 8)});
  add(set, {eq(0, 1), ge(1, 9)});
  EXPECT_FALSE(cs_EQ(x[0], 1));
}

TEST_F(WatchesTest, AnElementThatDoesNotHoldYetConcludesNothing) {
  add(set, {ge(0, 3), eq(1, 5)});
  ASSERT_TRUE(cs_GE(x[0], 2) && cs_LE(x[0], 8) && cs_NEQ(x[0], 5));
  EXPECT_EQ(domain(1), range(0, 9));
}

TEST_F(WatchesTest, AddingConcludesNothingByItself) {
  ASSERT_TRUE(cs_EQ(x[0], 1));
  add(set, {eq(0, 1), eq(1, 5)});
  EXPECT_EQ(domain(1), range(0, 9));
  ASSERT_TRUE(cs_LE(x[1], 8));  // wakes the no-good, but its element on x[1] does not hold
  EXPECT_EQ(domain(1), range(0, 8));
  EXPECT_FALSE(cs_EQ(x[1], 5));
}

// ----- a single element

TEST_F(WatchesTest, ASingleElementIsTakenAwayAtTheNextChangeOfItsVariable) {
  add(set, {eq(0, 5)});
  EXPECT_EQ(domain(0), range(0, 9));
  ASSERT_TRUE(cs_LE(x[1], 3));
  EXPECT_EQ(domain(0), range(0, 9));
  ASSERT_TRUE(cs_GE(x[0], 1));
  EXPECT_EQ(domain(0), without(range(1, 9), 5));
}

TEST_F(WatchesTest, ASingleElementThatHoldsFails) {
  add(set, {ge(0, 5)});
  EXPECT_FALSE(cs_GE(x[0], 6));
}

TEST_F(WatchesTest, ASingleElementThatCannotHoldIsIgnored) {
  add(set, {eq(0, 5)});
  ASSERT_TRUE(cs_GE(x[0], 6));
  EXPECT_EQ(domain(0), range(6, 9));
}

// ----- the watches

TEST_F(WatchesTest, TheFirstTwoElementsAreWatchedOrTheOnlyOneTwice) {
  add(set, {eq(0, 1), eq(1, 1), eq(2, 1)});
  EXPECT_EQ(watches(newest(set)), (std::vector{0, 1}));
  add(set, {eq(0, 2)});
  EXPECT_EQ(watches(newest(set)), (std::vector{0, 0}));
}

// Of four elements: from (4 / 2 + other) % 4 on.
TEST_F(WatchesTest, ANewWatchIsSoughtHalfTheElementsPastTheOtherOne) {
  add(set, {eq(0, 1), eq(1, 1), eq(2, 1), eq(3, 1)});
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(watches(newest(set)), (std::vector{3, 1}));
  ASSERT_TRUE(cs_EQ(x[1], 1));
  EXPECT_EQ(watches(newest(set)), (std::vector{3, 2}));
  EXPECT_EQ(domain(3), range(0, 9));
  ASSERT_TRUE(cs_EQ(x[2], 1));
  EXPECT_EQ(watches(newest(set)), (std::vector{3, 2}));
  EXPECT_EQ(domain(3), without(range(0, 9), 1));
  expectSound(set);
}

// Of three: from (3 / 2 + 1) % 3 = 2 on.
TEST_F(WatchesTest, AnOddNumberOfElementsIsHalvedDownwards) {
  add(set, {eq(0, 1), eq(1, 1), eq(2, 1)});
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(watches(newest(set)), (std::vector{2, 1}));
}

TEST_F(WatchesTest, AnElementThatCannotHoldMayBeWatched) {
  ASSERT_TRUE(cs_NEQ(x[2], 1));
  add(set, {eq(0, 1), eq(1, 1), eq(2, 1)});
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(x[1], 1));
  EXPECT_EQ(watches(newest(set)), (std::vector{2, 1}));
  EXPECT_EQ(domain(2), without(range(0, 9), 1));
}

TEST_F(WatchesTest, BothWatchesOnOneVariableMoveAtOneChange) {
  add(set, {ge(0, 3), le(0, 5), eq(1, 1), eq(2, 1)});
  ASSERT_TRUE(cs_EQ(x[0], 4));
  EXPECT_EQ(watches(newest(set)), (std::vector{3, 2}));
  expectSound(set);
  ASSERT_TRUE(cs_EQ(x[1], 1));
  EXPECT_EQ(domain(2), without(range(0, 9), 1));
}

// Of five elements, the first watch goes to (5 / 2 + 1) % 5 = 3 and the second, from (5 / 2 + 3) % 5 = 0 on, to 2.
TEST_F(WatchesTest, OfTwoWatchesThatMoveTheFirstMovesFirst) {
  addFreely(set, {ge(0, 3), le(0, 5), eq(1, 1), eq(2, 1), eq(3, 1)});
  ASSERT_TRUE(cs_EQ(x[0], 4));
  EXPECT_EQ(watches(newest(set)), (std::vector{3, 2}));
}

TEST_F(WatchesTest, TwoElementsOnOneVariableForbidWhatSatisfiesBoth) {
  add(set, {ge(0, 3), le(0, 5)});
  ASSERT_TRUE(cs_GE(x[0], 2));
  EXPECT_EQ(domain(0), range(2, 9));
  ASSERT_TRUE(cs_GE(x[0], 3));
  EXPECT_EQ(domain(0), range(6, 9));
}

TEST_F(WatchesTest, BindingBetweenTwoElementsOfOneVariableFails) {
  add(set, {ge(0, 3), le(0, 5)});
  EXPECT_FALSE(cs_EQ(x[0], 4));
}

TEST_F(WatchesTest, BacktrackingLeavesTheWatchesWhereTheyAreAndTheNoGoodAtWork) {
  add(set, {eq(0, 1), eq(1, 1), eq(2, 1), eq(3, 1)});
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(x[1], 1));
  cs_restoreContext();
  EXPECT_EQ(watches(newest(set)), (std::vector{3, 2}));
  ASSERT_TRUE(cs_EQ(x[3], 1) && cs_EQ(x[2], 1) && cs_EQ(x[1], 1));
  EXPECT_EQ(domain(0), without(range(0, 9), 1));
}

// ----- order

TEST_F(WatchesTest, TheNewestNoGoodComesFirst) {
  add(set, {eq(0, 1), eq(1, 5)});
  addFreely(set, {eq(0, 1), eq(2, 5)});
  const CallLog log;
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x[0], 4, "cs_createNoGoodSet"},
                                          {true, x[2], 5, "cs_createNoGoodSet"},
                                          {true, x[1], 5, "cs_createNoGoodSet"}}));
}

// The older one's watch has come to x[1] later.
TEST_F(WatchesTest, TheOrderIsThatInWhichTheVariableCameToBeWatched) {
  addFreely(set, {eq(0, 1), eq(2, 5), eq(1, 1)});
  addFreely(set, {eq(1, 1), eq(3, 5)});
  ASSERT_TRUE(cs_EQ(x[0], 1));
  const CallLog log;
  ASSERT_TRUE(cs_EQ(x[1], 1));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x[1], 4, "cs_createNoGoodSet"},
                                          {true, x[2], 5, "cs_createNoGoodSet"},
                                          {true, x[3], 5, "cs_createNoGoodSet"}}));
}

TEST_F(WatchesTest, TheFirstNoGoodThatFailsEndsTheCall) {
  ASSERT_TRUE(cs_EQ(x[2], 5));
  add(set, {eq(0, 1), eq(1, 5)});
  addFreely(set, {eq(0, 1), eq(2, 5)});
  addFreely(set, {eq(0, 1), eq(3, 5)});
  EXPECT_FALSE(cs_EQ(x[0], 1));
  EXPECT_EQ(domain(3), without(range(0, 9), 5));
  EXPECT_EQ(domain(1), range(0, 9));
}

TEST_F(WatchesTest, AMovedWatchDoesNotCutTheWalkShort) {
  for (int value = 0; value < 4; ++value) {
    addFreely(set, {eq(0, 1), eq(1, value)});
    addFreely(set, {eq(0, 1), eq(1, value + 4), eq(2, 1)});  // moves to x[2]
    addFreely(set, {ge(0, 1), le(0, 1), eq(3, value)});      // both watches here
  }
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(domain(1), range(4, 9));
  EXPECT_EQ(domain(3), range(4, 9));
  expectSound(set);
}

TEST_F(WatchesTest, ANoGoodThatFailsBecomesTheNewest) {
  ASSERT_TRUE(cs_EQ(x[1], 5));
  for (int value = 1; value <= 3; ++value) add(set, {eq(0, value), eq(1, 5)});
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(x[0], 1));
  cs_restoreContext();
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 2), eq(1, 5)}, {eq(0, 3), eq(1, 5)}, {eq(0, 1), eq(1, 5)}}));
}

TEST_F(WatchesTest, ANoGoodThatFailsWhileTheSetIsFilteredKeepsItsPlace) {
  ASSERT_TRUE(cs_EQ(x[1], 5));
  for (int value = 1; value <= 3; ++value) add(set, {eq(0, value), eq(1, 5)});
  filterBy([&](CSnoGood *) {
    cs_saveContext();
    EXPECT_FALSE(cs_EQ(x[0], 1));
    cs_restoreContext();
    return true;
  });
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 1), eq(1, 5)}, {eq(0, 2), eq(1, 5)}, {eq(0, 3), eq(1, 5)}}));
}

// The bit array that the conclusion needs cannot be had.
TEST_F(WatchesTest, AConclusionThatMemoryIsWantingForFails) {
  add(set, {eq(0, 1), eq(1, 5)});
  add(set, {eq(0, 2), eq(1, 5)});
  cs_saveContext();
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(cs_LE(x[0], 1) && cs_GE(x[0], 1));
  }
  EXPECT_EQ(memoryReports, 1);
  cs_restoreContext();
  EXPECT_EQ(contents(set), (std::vector<Literals>{{eq(0, 2), eq(1, 5)}, {eq(0, 1), eq(1, 5)}}));
}

}  // namespace

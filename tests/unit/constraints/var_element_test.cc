// SPDX-License-Identifier: MIT
// cs_VarElement: posting, and what each of the six events on the index, the result and a variable narrows.
#include "support/constraints/var_element.h"
#include "support/kit/batch.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::selection;

using VarElementTest = SelectionTest;

// ----- posting

TEST_F(VarElementTest, TheResultIsTheUnionOfTheDomainsThatCanBeSelected) {
  make(cs_VarElement, range(0, 1), {{1, 5}, {3}});
  EXPECT_EQ(values(value), (Values{1, 3, 5}));
  EXPECT_NE(value->bits, nullptr);
  make(cs_VarElement, {0, 2}, {{1, 2}, {7}, {3, 4}});
  EXPECT_EQ(values(value), range(1, 4));
  EXPECT_EQ(value->bits, nullptr);
}

// Intervals that overlap, touch, lie apart, and arrive in any order.
TEST_F(VarElementTest, TheUnionOfIntervalsHasNoValueTooManyOrTooFew) {
  make(cs_VarElement, range(0, 5), {range(4, 6), range(7, 8), range(2, 4), range(12, 14), range(5, 7), {0, 13, 16}});
  EXPECT_EQ(values(value), join(join({0}, range(2, 8)), {12, 13, 14, 16}));
  EXPECT_EQ(cs_getNbElements(value), 12);
}

TEST_F(VarElementTest, PostingNarrowsNothingButTheIndex) {
  make(cs_VarElement, range(-3, 7), {{1, 5}, {3}});
  EXPECT_EQ(state(), (State{{0, 1}, {1, 3, 5}, {{1, 5}, {3}}}));
}

TEST_F(VarElementTest, NoPositionOrNoVariablesGiveNull) { checkRefused(cs_VarElement); }

TEST_F(VarElementTest, ThreeConstraintsUnderOneSiteAreAttachedToIndexResultAndOpenPositions) {
  checkAttached(cs_VarElement, "cs_VarElement", "012345");
}

// Site, table of supports, three constraints, four entries; and the bit array of a result with holes.
TEST_F(VarElementTest, EachFailingAllocationIsReportedOnceAndGivesNull) {
  struct Operands {
    CSint *index;
    CSint *vars[2];
  };
  const auto post = [](Operands &o) { return cs_VarElement(o.index, o.vars, 2) != nullptr; };
  const auto overlapping = [] { return Operands{cs_createCSint(0, 1), {cs_createCSint(0, 4), cs_createCSint(3, 9)}}; };
  EXPECT_EQ(failEachAllocation(overlapping, post), 9);
  const auto apart = [] { return Operands{cs_createCSint(0, 1), {cs_createCSint(0, 4), cs_createCSint(6, 9)}}; };
  EXPECT_EQ(failEachAllocation(apart, post), 10);
}

TEST_F(VarElementTest, RestoringDetachesIt) {
  cs_saveContext();
  make(cs_VarElement, range(0, 1), {{1, 5}, {3}});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(index, 0));
  EXPECT_EQ(values(value), (Values{1, 3, 5}));
}

// ----- events: V = {0..4} u {3..7} u {9}

class VarElementEventTest : public RowTest {
 protected:
  void SetUp() override {
    RowTest::SetUp();
    make(cs_VarElement, range(0, 2), {range(0, 4), range(3, 7), {9}});
  }
};

TEST_P(VarElementEventTest, LeavesExactlyThis) { checkRow(); }

const State kAll{range(0, 2), join(range(0, 7), {9}), {range(0, 4), range(3, 7), {9}}};

State with(const Values &index, const Values &value) { return {index, value, kAll.vars}; }

INSTANTIATE_TEST_SUITE_P(
    OnIndex, VarElementEventTest,
    ::testing::Values(Row{"MinimumRaised", {{kIndex, cs_GE, 1}}, with({1, 2}, join(range(3, 7), {9}))},
                      Row{"MaximumLowered", {{kIndex, cs_LE, 1}}, with({0, 1}, range(0, 7))},
                      Row{"InnerValueRemoved", {{kIndex, cs_NEQ, 1}}, with({0, 2}, join(range(0, 4), {9}))},
                      Row{"BoundByMinimum", {{kIndex, cs_GE, 2}}, with({2}, {9})},
                      Row{"BoundByMaximum", {{kIndex, cs_LE, 0}}, with({0}, range(0, 4))},
                      Row{"BoundInside", {{kIndex, cs_EQ, 1}}, with({1}, range(3, 7))},
                      Row{"BoundAfterTheResultLostAValue",
                          {{kValue, cs_NEQ, 5}, {kIndex, cs_EQ, 1}},
                          {{1}, {3, 4, 6, 7}, {range(0, 4), {3, 4, 6, 7}, {9}}}},
                      Row{"BoundAfterTheVariableLostAValue",
                          {{1, cs_NEQ, 4}, {kIndex, cs_EQ, 1}},
                          {{1}, {3, 5, 6, 7}, {range(0, 4), {3, 5, 6, 7}, {9}}}},
                      Row{"BoundAfterBothLostBounds",
                          {{kValue, cs_GE, 4}, {1, cs_LE, 6}, {kIndex, cs_EQ, 1}},
                          {{1}, {4, 5, 6}, {range(0, 4), {4, 5, 6}, {9}}}},
                      Row{"BoundWithHolesAtTheBounds",
                          {{kValue, cs_NEQ, 4}, {kValue, cs_GE, 4}, {kIndex, cs_EQ, 1}},
                          {{1}, {5, 6, 7}, {range(0, 4), {5, 6, 7}, {9}}}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OnResult, VarElementEventTest,
    ::testing::Values(
        Row{"MinimumRaised", {{kValue, cs_GE, 5}}, with({1, 2}, {5, 6, 7, 9})},
        Row{"MinimumRaisedWithinEachDomain", {{kValue, cs_GE, 1}}, with({0, 1, 2}, join(range(1, 7), {9}))},
        Row{"MaximumLowered", {{kValue, cs_LE, 7}}, with({0, 1}, range(0, 7))},
        Row{"MaximumLoweredToOnePosition", {{kValue, cs_LE, 2}}, {{0}, {0, 1, 2}, {{0, 1, 2}, range(3, 7), {9}}}},
        Row{"BoundByMinimum", {{kValue, cs_GE, 8}}, with({2}, {9})},
        Row{"BoundByMaximum", {{kValue, cs_LE, 0}}, {{0}, {0}, {{0}, range(3, 7), {9}}}},
        Row{"BoundToASharedValue", {{kValue, cs_EQ, 4}}, with({0, 1}, {4})},
        Row{"BoundToAValueOfOne", {{kValue, cs_EQ, 6}}, {{1}, {6}, {range(0, 4), {6}, {9}}}},
        Row{"InnerValueRemoved", {{kValue, cs_NEQ, 5}}, with({0, 1, 2}, {0, 1, 2, 3, 4, 6, 7, 9})},
        Row{"LastSharedValueRemoved",
            {{1, cs_EQ, 5}, {kValue, cs_NEQ, 5}},
            {{0, 2}, join(range(0, 4), {9}), {range(0, 4), {5}, {9}}}},
        Row{"MinimumRaisedWhileBound",
            {{kIndex, cs_EQ, 0}, {kValue, cs_GE, 2}},
            {{0}, {2, 3, 4}, {{2, 3, 4}, range(3, 7), {9}}}},
        Row{"MaximumLoweredWhileBound",
            {{kIndex, cs_EQ, 0}, {kValue, cs_LE, 2}},
            {{0}, {0, 1, 2}, {{0, 1, 2}, range(3, 7), {9}}}},
        Row{"InnerValueRemovedWhileBound",
            {{kIndex, cs_EQ, 0}, {kValue, cs_NEQ, 2}},
            {{0}, {0, 1, 3, 4}, {{0, 1, 3, 4}, range(3, 7), {9}}}},
        Row{"BoundWhileBound", {{kIndex, cs_EQ, 0}, {kValue, cs_EQ, 2}}, {{0}, {2}, {{2}, range(3, 7), {9}}}}),
    rowName);

State afterVar(const Values &index, const Values &value, const Values &zero, const Values &one) {
  return {index, value, {zero, one, {9}}};
}

INSTANTIATE_TEST_SUITE_P(
    OnVariable, VarElementEventTest,
    ::testing::Values(
        Row{"MinimumRaised", {{0, cs_GE, 2}}, afterVar({0, 1, 2}, join(range(2, 7), {9}), range(2, 4), range(3, 7))},
        Row{"MinimumRaisedPastSharedValues",
            {{1, cs_GE, 6}},
            afterVar({0, 1, 2}, {0, 1, 2, 3, 4, 6, 7, 9}, range(0, 4), {6, 7})},
        Row{"MaximumLowered", {{1, cs_LE, 5}}, afterVar({0, 1, 2}, {0, 1, 2, 3, 4, 5, 9}, range(0, 4), {3, 4, 5})},
        Row{"MaximumLoweredPastSharedValues",
            {{0, cs_LE, 1}},
            afterVar({0, 1, 2}, {0, 1, 3, 4, 5, 6, 7, 9}, {0, 1}, range(3, 7))},
        Row{"BoundByMinimum", {{1, cs_GE, 7}}, afterVar({0, 1, 2}, {0, 1, 2, 3, 4, 7, 9}, range(0, 4), {7})},
        Row{"BoundByMaximum", {{0, cs_LE, 0}}, afterVar({0, 1, 2}, {0, 3, 4, 5, 6, 7, 9}, {0}, range(3, 7))},
        Row{"BoundInside", {{1, cs_EQ, 5}}, afterVar({0, 1, 2}, {0, 1, 2, 3, 4, 5, 9}, range(0, 4), {5})},
        Row{"BoundToAValueThatTheResultLost",
            {{kValue, cs_NEQ, 6}, {1, cs_EQ, 6}},
            afterVar({0, 2}, {0, 1, 2, 3, 4, 9}, range(0, 4), {6})},
        Row{"InnerValueRemoved",
            {{1, cs_NEQ, 6}},
            afterVar({0, 1, 2}, {0, 1, 2, 3, 4, 5, 7, 9}, range(0, 4), {3, 4, 5, 7})},
        Row{"SharedInnerValueRemoved",
            {{1, cs_NEQ, 4}},
            afterVar({0, 1, 2}, join(range(0, 7), {9}), range(0, 4), {3, 5, 6, 7})},
        Row{"LastCommonValueRemoved",
            {{kValue, cs_GE, 3}, {kValue, cs_NEQ, 4}, {0, cs_NEQ, 3}},
            afterVar({1, 2}, {3, 5, 6, 7, 9}, {0, 1, 2, 4}, range(3, 7))},
        Row{"MinimumRaisedOutOfTheResult",
            {{kValue, cs_NEQ, 4}, {kValue, cs_NEQ, 3}, {0, cs_GE, 3}},
            afterVar({1, 2}, {5, 6, 7, 9}, {3, 4}, range(3, 7))},
        Row{"MaximumLoweredOutOfTheResult",
            {{kValue, cs_NEQ, 4}, {kValue, cs_NEQ, 3}, {1, cs_LE, 4}},
            afterVar({0, 2}, {0, 1, 2, 9}, range(0, 4), {3, 4})}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OnVariableWhileBound, VarElementEventTest,
    ::testing::Values(
        Row{"MinimumRaised", {{kIndex, cs_EQ, 1}, {1, cs_GE, 5}}, afterVar({1}, {5, 6, 7}, range(0, 4), {5, 6, 7})},
        Row{"MaximumLowered", {{kIndex, cs_EQ, 1}, {1, cs_LE, 5}}, afterVar({1}, {3, 4, 5}, range(0, 4), {3, 4, 5})},
        Row{"InnerValueRemoved",
            {{kIndex, cs_EQ, 1}, {1, cs_NEQ, 5}},
            afterVar({1}, {3, 4, 6, 7}, range(0, 4), {3, 4, 6, 7})},
        Row{"BoundInside", {{kIndex, cs_EQ, 1}, {1, cs_EQ, 5}}, afterVar({1}, {5}, range(0, 4), {5})},
        Row{"AnotherOneBound", {{kIndex, cs_EQ, 1}, {0, cs_EQ, 2}}, afterVar({1}, range(3, 7), {2}, range(3, 7))}),
    rowName);

INSTANTIATE_TEST_SUITE_P(OnVariableAtAClosedPosition, VarElementEventTest,
                         ::testing::Values(Row{"MinimumRaised",
                                               {{kIndex, cs_NEQ, 1}, {1, cs_GE, 5}},
                                               afterVar({0, 2}, join(range(0, 4), {9}), range(0, 4), {5, 6, 7})},
                                           Row{"MaximumLowered",
                                               {{kIndex, cs_NEQ, 1}, {1, cs_LE, 3}},
                                               afterVar({0, 2}, join(range(0, 4), {9}), range(0, 4), {3})},
                                           Row{"InnerValueRemoved",
                                               {{kIndex, cs_NEQ, 1}, {1, cs_NEQ, 4}},
                                               afterVar({0, 2}, join(range(0, 4), {9}), range(0, 4), {3, 5, 6, 7})},
                                           Row{"BoundInside",
                                               {{kIndex, cs_NEQ, 1}, {1, cs_EQ, 4}},
                                               afterVar({0, 2}, join(range(0, 4), {9}), range(0, 4), {4})}),
                         rowName);

// ----- failures

TEST_F(VarElementTest, FailsWhenTheSelectedVariableAndTheResultHaveNothingInCommon) {
  make(cs_VarElement, range(0, 2), {range(0, 4), {5, 6}, {5, 6}});
  ASSERT_TRUE(cs_EQ(index, 0));
  ASSERT_TRUE(cs_GE(value, 3));
  EXPECT_FALSE(cs_LE(vars[0], 2));
}

TEST_F(VarElementTest, FailsWhenNoPositionHoldsAValueOfTheResult) {
  make(cs_VarElement, range(0, 1), {{1, 2, 5}, {1, 3, 5}});
  ASSERT_TRUE(cs_EQ(value, 1));
  ASSERT_TRUE(cs_NEQ(vars[0], 1));
  EXPECT_EQ(state(), (State{{1}, {1}, {{2, 5}, {1}}}));
  EXPECT_FALSE(cs_EQ(value, 3));
}

// Position 0 has nothing left in common with the result, and nobody else holds a value of it.
TEST_F(VarElementTest, AResultWithoutSupportFailsAtOnce) {
  make(cs_VarElement, range(0, 1), {range(0, 6), range(5, 9)});
  const CallLog log;
  EXPECT_FALSE(together([this] { return cs_GE(vars[0], 5) && cs_LE(value, 4); }));
  EXPECT_EQ(log.calls.back(), (Call{false, vars[0], 0, "cs_VarElement"}));
}

// ----- order

// The values that were taken from inside a domain since a mark, in that order.
Values removedInside(const CSint *v, int mark) {
  Values removed;
  int at = 0;
  solver::trail.forEach([&](const TrailRecord &record) {
    if (at++ >= mark && record.kind() == TrailKind::kRemoved && record.variable() == v) removed.push_back(record.value);
  });
  return removed;
}

TEST_F(VarElementTest, AMovedBoundCutsTheResultInOneStep) {
  make(cs_VarElement, range(0, 1), {range(0, 9), {4, 5}});
  const CallLog log;
  ASSERT_TRUE(cs_GE(vars[0], 3));
  ASSERT_TRUE(cs_LE(vars[0], 6));
  const Call expected[] = {{true, vars[0], 0, "cs_VarElement"},
                           {true, value, 0, "cs_VarElement"},
                           {true, vars[0], 1, "cs_VarElement"},
                           {true, value, 1, "cs_VarElement"}};
  EXPECT_EQ(log.calls, std::vector<Call>(std::begin(expected), std::end(expected)));
  EXPECT_EQ(values(value), range(3, 6));
}

TEST_F(VarElementTest, ValuesBeyondTheCutGoInTheDirectionOfTheWalk) {
  make(cs_VarElement, range(0, 2), {range(0, 9), {0}, {9}});
  const int mark = solver::trail.count();
  ASSERT_TRUE(cs_GE(vars[0], 3));
  EXPECT_EQ(removedInside(value, mark), (Values{1, 2}));
  ASSERT_TRUE(cs_LE(vars[0], 6));
  EXPECT_EQ(removedInside(value, mark), (Values{1, 2, 8, 7}));
}

TEST_F(VarElementTest, PositionsAndValuesGoInIncreasingOrder) {
  make(cs_VarElement, range(0, 4), {{0, 9}, {3, 4}, {1, 2}, {2, 3}, {0, 9}});
  const int mark = solver::trail.count();
  ASSERT_TRUE(cs_EQ(value, 9));
  EXPECT_EQ(removedInside(index, mark), (Values{1, 2, 3}));
  make(cs_VarElement, range(0, 2), {{0, 9}, {3, 1, 2}, {0, 9}});
  const int second = solver::trail.count();
  ASSERT_TRUE(cs_NEQ(index, 1));
  EXPECT_EQ(removedInside(value, second), (Values{1, 2, 3}));
}

// ----- what is deliberate

// Inside a propagation, so that both bounds of the result move before the constraint hears of either.
TEST_F(VarElementTest, OneBoundsEventOnTheResultTightensOneSideOfTheSelectedVariable) {
  make(cs_VarElement, range(0, 0), {range(0, 9)});
  checkOneSidePerCall();
}

// The smallest case: 0 is cut off the result and loses its support; back after the restore, it stays when the only
// variable that holds it loses it again.
TEST_F(VarElementTest, AValueThatACutPassedOverStaysUnsupportedAfterARestore) {
  make(cs_VarElement, range(0, 1), {{0, 1, 2}, {1}});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(vars[0], 1));
  EXPECT_EQ(values(value), range(1, 2));
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(vars[0], 1));
  EXPECT_EQ(values(value), range(0, 2));
  EXPECT_FALSE(cs_EQ(value, 0));
}

TEST_F(VarElementTest, AnUnsupportedValueGoesWhenABoundOfTheIndexMoves) {
  make(cs_VarElement, range(0, 3), {range(0, 2), {1}, {2}, {2, 3}});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(vars[0], 1));
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(vars[0], 1));
  ASSERT_TRUE(cs_NEQ(index, 1));
  EXPECT_EQ(values(value), range(0, 3));
  ASSERT_TRUE(cs_LE(index, 2));
  EXPECT_EQ(values(value), range(1, 2));
}

// Supports are not trailed: those found deeper in the search serve after the restore, and are replaced when lost.
TEST_F(VarElementTest, SupportsFoundInAContextServeAfterItIsRestored) {
  make(cs_VarElement, range(0, 2), {{1, 5}, {1, 5}, {1, 5, 7}});
  for (int i = 0; i < 2; ++i) {
    cs_saveContext();
    ASSERT_TRUE(cs_GE(index, 1));
    ASSERT_TRUE(cs_NEQ(value, 1));
    EXPECT_EQ(values(value), (Values{5, 7}));
    cs_restoreContext();
    cs_saveContext();
    ASSERT_TRUE(cs_LE(index, 1) && cs_NEQ(vars[0], 5));
    EXPECT_EQ(values(value), (Values{1, 5}));
    ASSERT_TRUE(cs_NEQ(vars[1], 5));
    EXPECT_EQ(values(value), Values{1});
    cs_restoreContext();
  }
  EXPECT_EQ(state(), (State{range(0, 2), {1, 5, 7}, {{1, 5}, {1, 5}, {1, 5, 7}}}));
}

// ----- the same variable in several places

TEST_F(VarElementTest, AVariableAtSeveralPositionsIsHeardAtEach) {
  index = cs_createCSint(0, 2);
  CSint *x = cs_createCSint(0, 4);
  vars = {x, cs_createCSint(6, 7), x};
  value = cs_VarElement(index, vars.data(), 3);
  EXPECT_EQ(attachments(x), (std::vector<std::pair<std::string, int>>{{"cs_VarElement", 2}, {"cs_VarElement", 0}}));
  ASSERT_TRUE(cs_NEQ(x, 2));
  EXPECT_EQ(values(value), (Values{0, 1, 3, 4, 6, 7}));
  ASSERT_TRUE(cs_NEQ(index, 0));
  EXPECT_EQ(values(value), (Values{0, 1, 3, 4, 6, 7}));
  ASSERT_TRUE(cs_EQ(value, 3));
  EXPECT_EQ(state(), (State{{2}, {3}, {{3}, {6, 7}, {3}}}));
}

TEST_F(VarElementTest, TheIndexMayStandInTheArray) {
  index = cs_createCSint(0, 1);
  vars = {index, cs_createCSint(0, 5)};
  value = cs_VarElement(index, vars.data(), 2);
  EXPECT_EQ(values(value), range(0, 5));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(index, 0));
  EXPECT_EQ(values(value), Values{0});
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(value, 3));
  EXPECT_EQ(state(), (State{{1}, {3, 4, 5}, {{1}, {3, 4, 5}}}));
}

// ----- accepted inner contexts

// The result was made for 3..6; then the variable has more values again. Those are no concern of the result's, its own
// ends are.
TEST_F(VarElementTest, ValuesBeyondThoseOfTheResultAreLeftAlone) {
  index = cs_createCSint(0, 1);
  vars = {cs_createCSint(0, 9), cs_createCSint(4, 5)};
  cs_saveContext();
  ASSERT_TRUE(cs_GE(vars[0], 3) && cs_LE(vars[0], 6));
  cs_saveContext();
  value = cs_VarElement(index, vars.data(), 2);
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_EQ(state(), (State{{0, 1}, range(3, 6), {range(0, 9), {4, 5}}}));
  ASSERT_TRUE(cs_NEQ(vars[0], 2) && cs_NEQ(vars[0], 7));
  EXPECT_EQ(values(value), range(3, 6));
  ASSERT_TRUE(cs_NEQ(vars[0], 3) && cs_NEQ(vars[0], 6));
  EXPECT_EQ(values(value), range(4, 5));
}

TEST_F(VarElementTest, PositionsOutsideTheArrayThatComeBackAreLeftAlone) {
  makeWithForeignPositions(cs_VarElement, {range(0, 3), range(2, 5)});
  ASSERT_TRUE(cs_NEQ(value, 4) && cs_GE(vars[0], 1));
  EXPECT_EQ(values(value), (Values{1, 2, 3, 5}));
  ASSERT_TRUE(cs_EQ(index, 1));
  EXPECT_EQ(state(), (State{{1}, {2, 3, 5}, {{1, 2, 3}, {2, 3, 5}}}));
}

}  // namespace

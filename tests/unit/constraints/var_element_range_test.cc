// SPDX-License-Identifier: MIT
// cs_VarElementRange: posting, and what each of the six events on the index, the result and a variable narrows.
#include <climits>

#include "support/constraints/var_element.h"
#include "support/kit/batch.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::selection;

using VarElementRangeTest = SelectionTest;

// ----- posting

TEST_F(VarElementRangeTest, TheResultIsAnIntervalFromTheSmallestMinimumToTheLargestMaximum) {
  make(cs_VarElementRange, range(0, 1), {{1, 5}, {3}});
  EXPECT_EQ(values(value), range(1, 5));
  EXPECT_EQ(value->bits, nullptr);
  make(cs_VarElementRange, {0, 2}, {{4, 5}, {-9, 9}, {1}});
  EXPECT_EQ(values(value), range(1, 5));
}

TEST_F(VarElementRangeTest, PostingNarrowsNothingButTheIndex) {
  make(cs_VarElementRange, range(-3, 7), {{1, 5}, {3}});
  EXPECT_EQ(state(), (State{{0, 1}, range(1, 5), {{1, 5}, {3}}}));
}

TEST_F(VarElementRangeTest, NoPositionOrNoVariablesGiveNull) { checkRefused(cs_VarElementRange); }

TEST_F(VarElementRangeTest, ThreeConstraintsUnderOneSiteAreAttachedToIndexResultAndOpenPositions) {
  checkAttached(cs_VarElementRange, "cs_VarElementRange", "01234");
}

// ----- state

// The record of each of its constraints, as far as the test looks.
struct RangeRecord {
  CSint *value;
  CSint *index;
  CSint **vars;
  int n;
  Shared<int> suppliers;
};

// The minimum that is left would do; the maximum would not.
TEST_F(VarElementRangeTest, ARefreshThatFailsLeavesBothRememberedPositionsAsTheyWere) {
  make(cs_VarElementRange, range(0, 2), {range(0, 9), range(1, 3), {2}});
  const auto *record = static_cast<const RangeRecord *>(value->constraints->constraint->record());
  const int *suppliers = record->suppliers.get();
  ASSERT_EQ(suppliers[0], 0);
  ASSERT_EQ(suppliers[1], 0);
  EXPECT_FALSE(together([&] { return cs_NEQ(index, 0) && cs_GE(value, 5); }));
  EXPECT_EQ(suppliers[0], 0);
  EXPECT_EQ(suppliers[1], 0);
}

// ----- events: V = 0..9 from {0..4}, {3..7} and {6, 9}

class VarElementRangeEventTest : public RowTest {
 protected:
  void SetUp() override {
    RowTest::SetUp();
    make(cs_VarElementRange, range(0, 2), {range(0, 4), range(3, 7), {6, 9}});
  }
};

TEST_P(VarElementRangeEventTest, LeavesExactlyThis) { checkRow(); }

State with(const Values &index, const Values &value) { return {index, value, {range(0, 4), range(3, 7), {6, 9}}}; }

State afterVar(const Values &index, const Values &value, const Values &zero, const Values &one,
               const Values &two = {6, 9}) {
  return {index, value, {zero, one, two}};
}

INSTANTIATE_TEST_SUITE_P(
    OnIndex, VarElementRangeEventTest,
    ::testing::Values(Row{"MinimumRaised", {{kIndex, cs_GE, 1}}, with({1, 2}, range(3, 9))},
                      Row{"MaximumLowered", {{kIndex, cs_LE, 1}}, with({0, 1}, range(0, 7))},
                      Row{"InnerValueRemovedThatSuppliesNothing", {{kIndex, cs_NEQ, 1}}, with({0, 2}, range(0, 9))},
                      Row{"BoundByMinimum", {{kIndex, cs_GE, 2}}, with({2}, range(6, 9))},
                      Row{"BoundByMaximum", {{kIndex, cs_LE, 0}}, with({0}, range(0, 4))},
                      Row{"BoundInside", {{kIndex, cs_EQ, 1}}, with({1}, range(3, 7))},
                      Row{"BoundInsideAfterTheResultMoved",
                          {{kValue, cs_GE, 4}, {kValue, cs_LE, 8}, {kIndex, cs_EQ, 1}},
                          afterVar({1}, range(4, 7), range(0, 4), range(4, 7))},
                      Row{"BoundAlignsBoundsAndLeavesHoles",
                          {{kValue, cs_NEQ, 5}, {1, cs_NEQ, 4}, {kIndex, cs_EQ, 1}},
                          afterVar({1}, {3, 4, 6, 7}, range(0, 4), {3, 5, 6, 7})}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OnResult, VarElementRangeEventTest,
    ::testing::Values(
        Row{"MinimumRaised", {{kValue, cs_GE, 5}}, with({1, 2}, range(5, 9))},
        Row{"MaximumLowered", {{kValue, cs_LE, 5}}, with({0, 1}, range(0, 5))},
        Row{"MaximumLoweredToOnePosition", {{kValue, cs_LE, 2}}, afterVar({0}, range(0, 2), range(0, 2), range(3, 7))},
        Row{"MinimumRaisedIntoAHoleOfAVariable",
            {{kValue, cs_GE, 8}},
            afterVar({2}, {9}, range(0, 4), range(3, 7), {9})},
        Row{"BoundByMinimum", {{kValue, cs_GE, 9}}, afterVar({2}, {9}, range(0, 4), range(3, 7), {9})},
        Row{"BoundByMaximum", {{kValue, cs_LE, 0}}, afterVar({0}, {0}, {0}, range(3, 7))},
        Row{"BoundToASharedValue", {{kValue, cs_EQ, 6}}, with({1, 2}, {6})},
        Row{"BoundIntoAHoleOfAVariable", {{kValue, cs_EQ, 7}}, afterVar({1}, {7}, range(0, 4), {7})},
        Row{"InnerValueRemovedIsNotHeard",
            {{1, cs_EQ, 5}, {kValue, cs_NEQ, 5}},
            afterVar({0, 1, 2}, {0, 1, 2, 3, 4, 6, 7, 8, 9}, range(0, 4), {5})},
        Row{"MinimumRaisedWhileBound",
            {{kIndex, cs_EQ, 0}, {kValue, cs_GE, 2}},
            afterVar({0}, range(2, 4), range(2, 4), range(3, 7))},
        Row{"MaximumLoweredWhileBound",
            {{kIndex, cs_EQ, 0}, {kValue, cs_LE, 2}},
            afterVar({0}, range(0, 2), range(0, 2), range(3, 7))},
        Row{"BoundWhileBound", {{kIndex, cs_EQ, 0}, {kValue, cs_EQ, 2}}, afterVar({0}, {2}, {2}, range(3, 7))},
        Row{"InnerValueRemovedWhileBoundIsNotHeard",
            {{kIndex, cs_EQ, 0}, {kValue, cs_NEQ, 2}},
            with({0}, {0, 1, 3, 4})}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OnVariable, VarElementRangeEventTest,
    ::testing::Values(
        Row{"MinimumOfTheSupplierRaised", {{0, cs_GE, 2}}, afterVar({0, 1, 2}, range(2, 9), range(2, 4), range(3, 7))},
        Row{"MinimumOfTheSupplierRaisedPastAnother",
            {{0, cs_GE, 4}},
            afterVar({0, 1, 2}, range(3, 9), {4}, range(3, 7))},
        Row{"MinimumOfAnotherRaised", {{1, cs_GE, 5}}, afterVar({0, 1, 2}, range(0, 9), range(0, 4), range(5, 7))},
        Row{"MaximumOfTheSupplierLowered",
            {{2, cs_LE, 8}},
            afterVar({0, 1, 2}, range(0, 7), range(0, 4), range(3, 7), {6})},
        Row{"MaximumOfAnotherLowered", {{1, cs_LE, 5}}, afterVar({0, 1, 2}, range(0, 9), range(0, 4), range(3, 5))},
        Row{"MinimumRaisedOutOfTheResult",
            {{kValue, cs_LE, 5}, {1, cs_GE, 6}},
            afterVar({0}, range(0, 4), range(0, 4), {6, 7})},
        Row{"MaximumLoweredOutOfTheResult",
            {{kValue, cs_GE, 4}, {kValue, cs_LE, 8}, {0, cs_LE, 3}},
            afterVar({1, 2}, range(4, 8), range(0, 3), range(3, 7))},
        Row{"BoundInside", {{0, cs_EQ, 2}}, afterVar({0, 1, 2}, range(2, 9), {2}, range(3, 7))},
        Row{"BoundByMinimum", {{0, cs_GE, 4}}, afterVar({0, 1, 2}, range(3, 9), {4}, range(3, 7))},
        Row{"BoundByMaximum", {{2, cs_LE, 6}}, afterVar({0, 1, 2}, range(0, 7), range(0, 4), range(3, 7), {6})},
        Row{"BoundToAValueThatTheResultLost",
            {{kValue, cs_NEQ, 5}, {1, cs_EQ, 5}},
            afterVar({0, 2}, {0, 1, 2, 3, 4, 6, 7, 8, 9}, range(0, 4), {5})},
        Row{"InnerValueRemovedIsNotHeard",
            {{1, cs_NEQ, 5}},
            afterVar({0, 1, 2}, range(0, 9), range(0, 4), {3, 4, 6, 7})}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OnVariableWhileBound, VarElementRangeEventTest,
    ::testing::Values(
        Row{"MinimumRaised", {{kIndex, cs_EQ, 1}, {1, cs_GE, 5}}, afterVar({1}, range(5, 7), range(0, 4), range(5, 7))},
        Row{"MaximumLowered",
            {{kIndex, cs_EQ, 1}, {1, cs_LE, 5}},
            afterVar({1}, range(3, 5), range(0, 4), range(3, 5))},
        Row{"BoundInside", {{kIndex, cs_EQ, 1}, {1, cs_EQ, 5}}, afterVar({1}, {5}, range(0, 4), {5})},
        Row{"AnotherOneMoved",
            {{kIndex, cs_EQ, 1}, {0, cs_GE, 2}},
            afterVar({1}, range(3, 7), range(2, 4), range(3, 7))}),
    rowName);

INSTANTIATE_TEST_SUITE_P(OnVariableAtAClosedPosition, VarElementRangeEventTest,
                         ::testing::Values(Row{"MinimumRaised",
                                               {{kIndex, cs_GE, 1}, {0, cs_GE, 2}},
                                               afterVar({1, 2}, range(3, 9), range(2, 4), range(3, 7))},
                                           Row{"MaximumLowered",
                                               {{kIndex, cs_GE, 1}, {0, cs_LE, 2}},
                                               afterVar({1, 2}, range(3, 9), range(0, 2), range(3, 7))},
                                           Row{"BoundInside",
                                               {{kIndex, cs_GE, 1}, {0, cs_EQ, 2}},
                                               afterVar({1, 2}, range(3, 9), {2}, range(3, 7))}),
                         rowName);

// ----- suppliers

// While x[1] supplies both bounds, an event on another position changes nothing.
TEST_F(VarElementRangeTest, AnEventThatLeavesTheSuppliersAloneNarrowsNothing) {
  make(cs_VarElementRange, range(0, 2), {range(2, 5), range(0, 9), range(0, 9)});
  const int mark = solver::trail.count();
  const CallLog log;
  ASSERT_TRUE(cs_LE(index, 1));
  ASSERT_TRUE(cs_GE(vars[0], 3));
  EXPECT_EQ(log.calls,
            (std::vector<Call>{{true, index, 1, "cs_VarElementRange"}, {true, vars[0], 0, "cs_VarElementRange"}}));
  EXPECT_EQ(solver::trail.count(), mark + 2);
}

// Suppliers are not trailed. x[1] supplies the minimum while position 0 is gone, and does not reach that of the result
// once it is back: the next event finds this and looks for another.
TEST_F(VarElementRangeTest, ASupplierFoundInAContextIsLookedAtAgainAfterItIsRestored) {
  make(cs_VarElementRange, range(0, 2), {range(0, 9), range(3, 6), range(2, 7)});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(index, 1) && cs_NEQ(vars[2], 7));
  EXPECT_EQ(values(value), range(2, 6));
  cs_restoreContext();
  EXPECT_EQ(values(value), range(0, 9));
  ASSERT_TRUE(cs_GE(vars[1], 4));
  EXPECT_EQ(values(value), range(0, 9));
  ASSERT_TRUE(cs_GE(vars[0], 1) && cs_LE(vars[0], 8));
  EXPECT_EQ(values(value), range(1, 8));
}

TEST_F(VarElementRangeTest, FailsWhenTheSelectedVariableHasAHoleAtTheBoundValue) {
  make(cs_VarElementRange, range(0, 0), {{1, 5}});
  EXPECT_FALSE(cs_EQ(value, 3));
}

// Deliberate: an inner value that a variable loses is not heard. Position 0 stays although x[0] has lost the value that
// the result is bound to, until the index selects it.
TEST_F(VarElementRangeTest, APositionWhoseVariableLosesTheBoundValueStaysUntilItIsSelected) {
  make(cs_VarElementRange, range(0, 1), {range(0, 2), {1}});
  ASSERT_TRUE(cs_EQ(value, 1));
  ASSERT_TRUE(cs_NEQ(vars[0], 1));
  EXPECT_EQ(state(), (State{{0, 1}, {1}, {{0, 2}, {1}}}));
  EXPECT_FALSE(cs_EQ(index, 0));
}

// The supplier of a bound has gone, and the result has left what the others can give.
TEST_F(VarElementRangeTest, AResultOutOfReachFailsAtOnce) {
  make(cs_VarElementRange, range(0, 2), {range(0, 4), range(6, 9), range(6, 8)});
  {
    const CallLog log;
    EXPECT_FALSE(together([this] { return cs_GE(index, 1) && cs_LE(value, 4); }));
    EXPECT_EQ(log.calls.back(), (Call{false, index, 0, "cs_VarElementRange"}));
  }
  make(cs_VarElementRange, range(0, 2), {range(0, 4), range(0, 3), range(6, 9)});
  const CallLog log;
  EXPECT_FALSE(together([this] { return cs_LE(index, 1) && cs_GE(value, 6); }));
  EXPECT_EQ(log.calls.back(), (Call{false, index, 1, "cs_VarElementRange"}));
}

TEST_F(VarElementRangeTest, OneBoundsEventOnTheResultTightensOneSideOfTheSelectedVariable) {
  make(cs_VarElementRange, range(0, 0), {range(0, 9)});
  checkOneSidePerCall();
}

TEST_F(VarElementRangeTest, TheWholeIntRangeIsAnIntervalLikeOthers) {
  make(cs_VarElementRange, range(0, 1), {{INT_MIN}, {INT_MAX}});
  EXPECT_EQ(cs_getMin(value), INT_MIN);
  EXPECT_EQ(cs_getMax(value), INT_MAX);
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(value, INT_MAX));
  EXPECT_EQ(values(index), Values{0});
  EXPECT_EQ(values(value), Values{INT_MIN});
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(value, 0));
  EXPECT_EQ(values(value), Values{INT_MAX});
}

TEST_F(VarElementRangeTest, OnlyPositionsOutsideTheArrayLeftFails) {
  makeWithForeignPositions(cs_VarElementRange, {{0, INT_MAX}, {2, INT_MAX}});
  EXPECT_FALSE(cs_GE(index, 2));
}

}  // namespace

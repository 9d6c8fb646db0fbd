// SPDX-License-Identifier: MIT
// s = a + b, as cs_Add and cs_Sub post it: what a change of each variable passes to the other two.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

// s = a + b over a in 0..10, b in 0..10; made by cs_Add as {s, a, b} or by cs_Sub with s the minuend and a the result.
class SumEventsTest : public SolverTest, public ::testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    b = cs_createCSint(0, 10);
    if (GetParam()) {
      s = cs_createCSint(0, 20);
      a = cs_Sub(s, b);
      ASSERT_EQ(values(a), range(-10, 20));
      ASSERT_TRUE(cs_GE(a, 0));
      ASSERT_TRUE(cs_LE(a, 10));
    } else {
      a = cs_createCSint(0, 10);
      s = cs_Add(a, b);
    }
    expect({0, 10}, {0, 10}, {0, 20});
  }

  static std::pair<int, int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

  void expect(std::pair<int, int> ofA, std::pair<int, int> ofB, std::pair<int, int> ofS) const {
    EXPECT_EQ(bounds(a), ofA);
    EXPECT_EQ(bounds(b), ofB);
    EXPECT_EQ(bounds(s), ofS);
  }

  CSint *a = nullptr;
  CSint *b = nullptr;
  CSint *s = nullptr;
};

INSTANTIATE_TEST_SUITE_P(, SumEventsTest, ::testing::Bool(),
                         [](const auto &row) { return std::string(row.param ? "Sub" : "Add"); });

TEST_P(SumEventsTest, ARaisedOperandMinimumRaisesTheSum) {
  ASSERT_TRUE(cs_GE(a, 3));
  expect({3, 10}, {0, 10}, {3, 20});
  ASSERT_TRUE(cs_GE(b, 4));
  expect({3, 10}, {4, 10}, {7, 20});
}

TEST_P(SumEventsTest, ALoweredOperandMaximumLowersTheSum) {
  ASSERT_TRUE(cs_LE(a, 3));
  expect({0, 3}, {0, 10}, {0, 13});
  ASSERT_TRUE(cs_LE(b, 4));
  expect({0, 3}, {0, 4}, {0, 7});
}

TEST_P(SumEventsTest, ARaisedOperandMinimumLowersTheOtherOperandUnderATightSum) {
  ASSERT_TRUE(cs_LE(s, 8));
  expect({0, 8}, {0, 8}, {0, 8});
  ASSERT_TRUE(cs_GE(a, 3));
  expect({3, 8}, {0, 5}, {3, 8});
  ASSERT_TRUE(cs_GE(b, 2));
  expect({3, 6}, {2, 5}, {5, 8});
}

TEST_P(SumEventsTest, ALoweredOperandMaximumRaisesTheOtherOperandUnderATightSum) {
  ASSERT_TRUE(cs_GE(s, 15));
  expect({5, 10}, {5, 10}, {15, 20});
  ASSERT_TRUE(cs_LE(a, 8));
  expect({5, 8}, {7, 10}, {15, 18});
  ASSERT_TRUE(cs_LE(b, 9));
  expect({6, 8}, {7, 9}, {15, 17});
}

TEST_P(SumEventsTest, BindingTheSumAtItsEndsBindsTheOperands) {
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(s, 20));
  expect({10, 10}, {10, 10}, {20, 20});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(s, 0));
  expect({0, 0}, {0, 0}, {0, 0});
}

TEST_P(SumEventsTest, BindingTheSumInsideRunsBothRules) {
  ASSERT_TRUE(cs_EQ(s, 15));
  expect({5, 10}, {5, 10}, {15, 15});
}

TEST_P(SumEventsTest, BindingAnOperandInsideRunsBothRules) {
  ASSERT_TRUE(cs_EQ(a, 4));
  expect({4, 4}, {0, 10}, {4, 14});
  ASSERT_TRUE(cs_EQ(b, 5));
  expect({4, 4}, {5, 5}, {9, 9});
}

TEST_P(SumEventsTest, BindingTwoVariablesBindsTheThird) {
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(s, 7) && cs_EQ(b, 3));
  expect({4, 4}, {3, 3}, {7, 7});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(s, 7) && cs_EQ(a, 5));
  expect({5, 5}, {2, 2}, {7, 7});
}

TEST_P(SumEventsTest, AHoleOfAnOperandPassesNothingWhileTheOthersAreFree) {
  ASSERT_TRUE(cs_NEQ(a, 4));
  ASSERT_TRUE(cs_NEQ(b, 4));
  ASSERT_TRUE(cs_NEQ(s, 4));
  EXPECT_EQ(values(a), without(range(0, 10), 4));
  EXPECT_EQ(values(b), without(range(0, 10), 4));
  EXPECT_EQ(values(s), without(range(0, 20), 4));
}

TEST_P(SumEventsTest, AHoleOfTheSumPassesToAnOperandWhileTheOtherIsBound) {
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(a, 10) && cs_NEQ(s, 13));
  EXPECT_EQ(values(b), without(range(0, 10), 3));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(b, 10) && cs_NEQ(s, 13));
  EXPECT_EQ(values(a), without(range(0, 10), 3));
}

TEST_P(SumEventsTest, AHoleOfAnOperandPassesToTheSumWhileTheOtherIsBound) {
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(a, 10) && cs_NEQ(b, 3));
  EXPECT_EQ(values(s), without(range(10, 20), 13));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(b, 10) && cs_NEQ(a, 3));
  EXPECT_EQ(values(s), without(range(10, 20), 13));
}

TEST_P(SumEventsTest, AHoleOfAnOperandPassesToTheOtherWhileTheSumIsBound) {
  ASSERT_TRUE(cs_EQ(s, 10));
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(a, 3));
  EXPECT_EQ(values(b), without(range(0, 10), 7));
  cs_restoreContext();
  ASSERT_TRUE(cs_NEQ(b, 3));
  EXPECT_EQ(values(a), without(range(0, 10), 7));
}

// Deliberate: binding tells the bounds only; a hole that was there before passes when it is removed, not later.
TEST_P(SumEventsTest, AnOlderHolePassesNothingWhenTheThirdVariableIsBoundLater) {
  ASSERT_TRUE(cs_NEQ(a, 3));
  ASSERT_TRUE(cs_EQ(b, 5));
  EXPECT_EQ(values(s), range(5, 15));
}

TEST_P(SumEventsTest, NoSolutionLeftFails) {
  ASSERT_TRUE(cs_LE(s, 8));
  ASSERT_TRUE(cs_GE(a, 5));
  EXPECT_FALSE(cs_GE(b, 4));
}

using SumSlotsTest = SolverTest;

TEST_F(SumSlotsTest, RaisingTheDifferenceRaisesTheMinuendAndLowersTheSubtrahend) {
  CSint *x = cs_createCSint(0, 10);
  CSint *y = cs_createCSint(0, 10);
  CSint *z = cs_Sub(x, y);
  EXPECT_EQ(values(z), range(-10, 10));
  ASSERT_TRUE(cs_GE(z, 5));
  EXPECT_EQ(values(x), range(5, 10));
  EXPECT_EQ(values(y), range(0, 5));
}

TEST_F(SumSlotsTest, ADoubledVariableIsHandledAsTheFirstOperand) {
  CSint *x = cs_createCSint(0, 10);
  CSint *z = cs_Add(x, x);
  EXPECT_EQ(values(z), range(0, 20));
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(values(z), range(6, 20));
  ASSERT_TRUE(cs_EQ(x, 5));
  EXPECT_EQ(values(z), std::vector{10});
}

// x and z change: three handler calls of one constraint attached twice to x, in the order of the events.
TEST_F(SumSlotsTest, ADoubledVariableIsCalledOncePerAttachment) {
  CSint *x = cs_createCSint(0, 10);
  CSint *z = cs_Add(x, x);
  const CallLog log;
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x, 0, "cs_Add"}, {true, x, 0, "cs_Add"}, {true, z, 0, "cs_Add"}}));
}

TEST_F(SumSlotsTest, AHoleOfADoubledVariablePassesNothingWhileItIsFree) {
  CSint *x = cs_createCSint(0, 4);
  CSint *z = cs_Add(x, x);
  ASSERT_TRUE(cs_NEQ(x, 2));
  EXPECT_EQ(values(z), range(0, 8));
}

}  // namespace

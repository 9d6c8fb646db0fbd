// SPDX-License-Identifier: MIT
// cs_Le, cs_Lt, cs_Ge and cs_Gt: bounds only, and only in the direction that matters.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

// A form as the constraint "lower + gap <= upper" that it posts.
struct Form {
  const char *name;
  bool (*post)(CSint *, CSint *);
  bool swapped;  // the first operand is the upper one
  int gap;

  bool relate(CSint *lower, CSint *upper) const { return swapped ? post(upper, lower) : post(lower, upper); }
};

void PrintTo(const Form &form, std::ostream *out) { *out << form.name; }

class OrderTest : public SolverTest, public ::testing::WithParamInterface<Form> {
 protected:
  void makeRelated(int min, int max) {
    lower = cs_createCSint(min, max);
    upper = cs_createCSint(min + GetParam().gap, max + GetParam().gap);
    ASSERT_TRUE(GetParam().relate(lower, upper));
  }
  // What the upper variable holds, seen from the lower one's values.
  std::vector<int> shifted(int min, int max) const { return range(min + GetParam().gap, max + GetParam().gap); }
  int gap() const { return GetParam().gap; }

  CSint *lower = nullptr;
  CSint *upper = nullptr;
};

INSTANTIATE_TEST_SUITE_P(, OrderTest,
                         ::testing::Values(Form{"cs_Le", cs_Le, false, 0}, Form{"cs_Lt", cs_Lt, false, 1},
                                           Form{"cs_Ge", cs_Ge, true, 0}, Form{"cs_Gt", cs_Gt, true, 1}),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(OrderTest, TheSameVariableTwiceIsDecidedAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_EQ(GetParam().post(x, x), gap() == 0);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(values(x), range(0, 3));
}

TEST_P(OrderTest, ANullVariableIsFalseAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_FALSE(GetParam().post(x, nullptr));
  EXPECT_FALSE(GetParam().post(nullptr, x));
  EXPECT_FALSE(GetParam().post(nullptr, nullptr));
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

TEST_P(OrderTest, IsAttachedToTheLowerVariableFirstUnderItsOwnName) {
  const int mark = solver::trail.count();
  makeRelated(0, 3);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{lower, upper}));
  for (CSint *v : {lower, upper}) {
    EXPECT_EQ(attachments(v), (std::vector<std::pair<std::string, int>>{{GetParam().name, -1}}));
    EXPECT_EQ(busySlots(v), "01234");
  }
  EXPECT_EQ(lower->constraints->constraint, upper->constraints->constraint);
}

TEST_P(OrderTest, PostingRaisesTheUpperMinimumAndLowersTheLowerMaximum) {
  CSint *x = cs_createCSint(3, 20);
  CSint *y = cs_createCSint(1, 9);
  EXPECT_TRUE(GetParam().relate(x, y));
  EXPECT_EQ(values(x), range(3, 9 - gap()));
  EXPECT_EQ(values(y), range(3 + gap(), 9));
}

TEST_P(OrderTest, PostingLeavesHolesAlone) {
  CSint *x = fromValues({1, 4, 8});
  CSint *y = fromValues({0, 5, 7});
  EXPECT_TRUE(GetParam().relate(x, y));
  EXPECT_EQ(values(x), (std::vector{1, 4}));
  EXPECT_EQ(values(y), (std::vector{5, 7}));
}

TEST_P(OrderTest, PostingOnAPairThatIsInOrderChangesNothing) {
  makeRelated(0, 3);
  EXPECT_EQ(values(lower), range(0, 3));
  EXPECT_EQ(values(upper), shifted(0, 3));
}

TEST_P(OrderTest, PostingFailsWhenTheLowerMinimumIsAboveTheUpperMaximum) {
  EXPECT_FALSE(GetParam().relate(cs_createCSint(5, 9), cs_createCSint(0, 4)));
}

TEST_P(OrderTest, TouchingBoundsAreEnoughOnlyWithoutAGap) {
  CSint *x = cs_createCSint(5, 9);
  CSint *y = cs_createCSint(1, 5);
  EXPECT_EQ(GetParam().relate(x, y), gap() == 0);
}

TEST_P(OrderTest, ARaisedLowerMinimumPassesUpwards) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_GE(lower, 2));
  EXPECT_EQ(values(upper), shifted(2, 4));
}

TEST_P(OrderTest, ALowerVariableBoundByItsMinimumPassesUpwards) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_GE(lower, 4));
  EXPECT_EQ(values(upper), shifted(4, 4));
}

TEST_P(OrderTest, ALoweredUpperMaximumPassesDownwards) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_LE(upper, 2 + gap()));
  EXPECT_EQ(values(lower), range(0, 2));
}

TEST_P(OrderTest, AnUpperVariableBoundByItsMaximumPassesDownwards) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_LE(upper, gap()));
  EXPECT_EQ(values(lower), std::vector{0});
}

TEST_P(OrderTest, BindingInsidePassesInOneDirection) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_EQ(lower, 2));
  EXPECT_EQ(values(upper), shifted(2, 4));
  makeRelated(0, 4);
  ASSERT_TRUE(cs_EQ(upper, 2 + gap()));
  EXPECT_EQ(values(lower), range(0, 2));
}

TEST_P(OrderTest, TheOtherBoundsAndInnerValuesPassNothing) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_LE(lower, 3));
  ASSERT_TRUE(cs_NEQ(lower, 1));
  ASSERT_TRUE(cs_LE(lower, 0));
  EXPECT_EQ(values(upper), shifted(0, 4));
  makeRelated(0, 4);
  ASSERT_TRUE(cs_GE(upper, 1 + gap()));
  ASSERT_TRUE(cs_NEQ(upper, 3 + gap()));
  ASSERT_TRUE(cs_GE(upper, 4 + gap()));
  EXPECT_EQ(values(lower), range(0, 4));
}

TEST_P(OrderTest, AChangeThatTheOtherSideMustFollowIsTwoCalls) {
  makeRelated(0, 4);
  const CallLog log;
  ASSERT_TRUE(cs_GE(lower, 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, lower, 0, GetParam().name}, {true, upper, 0, GetParam().name}}));
}

TEST_P(OrderTest, AChangeThatTightensNothingIsOneCall) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_GE(upper, 3 + gap()));
  const CallLog log;
  ASSERT_TRUE(cs_GE(lower, 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, lower, 0, GetParam().name}}));
}

TEST_P(OrderTest, AnEmptiedSideFailsTheChange) {
  makeRelated(0, 4);
  ASSERT_TRUE(cs_LE(upper, 3 + gap()));
  EXPECT_FALSE(cs_GE(lower, 4));
}

class LtTest : public SolverTest {};

TEST_F(LtTest, FiveToNineBelowOneToSixLeavesFiveAndSix) {
  CSint *x = cs_createCSint(5, 9);
  CSint *y = cs_createCSint(1, 6);
  EXPECT_TRUE(cs_Lt(x, y));
  EXPECT_EQ(values(x), std::vector{5});
  EXPECT_EQ(values(y), std::vector{6});
}

TEST_F(LtTest, ACycleNarrowsStepByStepUntilItFails) {
  CSint *x = cs_createCSint(0, 20);
  CSint *y = cs_createCSint(0, 20);
  ASSERT_TRUE(cs_Lt(x, y));
  EXPECT_FALSE(cs_Lt(y, x));
}

}  // namespace

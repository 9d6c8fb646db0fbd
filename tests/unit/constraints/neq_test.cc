// SPDX-License-Identifier: MIT
// cs_Neq: acts when one side is bound, and only then.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using NeqTest = SolverTest;

TEST_F(NeqTest, TheSameVariableTwiceIsFalseAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_FALSE(cs_Neq(x, x));
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(values(x), range(0, 3));
}

TEST_F(NeqTest, ANullVariableIsFalseAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_FALSE(cs_Neq(x, nullptr));
  EXPECT_FALSE(cs_Neq(nullptr, x));
  EXPECT_FALSE(cs_Neq(nullptr, nullptr));
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

TEST_F(NeqTest, IsAttachedToTheFirstVariableThenToTheSecond) {
  CSint *x = cs_createCSint(0, 3);
  CSint *y = cs_createCSint(0, 3);
  const int mark = solver::trail.count();
  ASSERT_TRUE(cs_Neq(x, y));
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{x, y}));
  for (CSint *v : {x, y}) {
    EXPECT_EQ(attachments(v), (std::vector<std::pair<std::string, int>>{{"cs_Neq", -1}}));
    EXPECT_EQ(busySlots(v), "234");
  }
  EXPECT_EQ(x->constraints->constraint, y->constraints->constraint);
}

TEST_F(NeqTest, TwoFreeVariablesChangeNothingUntilOneIsBound) {
  CSint *x = cs_createCSint(1, 3);
  CSint *y = cs_createCSint(1, 3);
  EXPECT_TRUE(cs_Neq(x, y));
  EXPECT_EQ(values(x), range(1, 3));
  EXPECT_EQ(values(y), range(1, 3));
  EXPECT_TRUE(cs_EQ(x, 2));
  EXPECT_EQ(values(y), (std::vector{1, 3}));
}

TEST_F(NeqTest, PostingTakesTheValueOfABoundSideFromTheOther) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_TRUE(cs_Neq(CSINT(1), x));
  EXPECT_EQ(values(x), (std::vector{0, 2, 3}));
  EXPECT_TRUE(cs_Neq(x, CSINT(3)));
  EXPECT_EQ(values(x), (std::vector{0, 2}));
  EXPECT_TRUE(cs_Neq(x, CSINT(7)));
  EXPECT_EQ(values(x), (std::vector{0, 2}));
}

TEST_F(NeqTest, PostingFailsOnTwoVariablesBoundToTheSameValue) {
  EXPECT_FALSE(cs_Neq(CSINT(1), CSINT(1)));
  EXPECT_TRUE(cs_Neq(CSINT(1), CSINT(2)));
}

// The third column says what is left of the other side, which is 0..4 as well.
struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int v;
  std::vector<int> left;
};

void PrintTo(const EventRow &row, std::ostream *out) { *out << row.name; }

class NeqEventTest : public SolverTest, public ::testing::WithParamInterface<EventRow> {};

TEST_P(NeqEventTest, ReachesTheOtherSideOnlyWhenItBinds) {
  for (const bool swapped : {false, true}) {
    CSint *x = cs_createCSint(0, 4);
    CSint *y = cs_createCSint(0, 4);
    ASSERT_TRUE(swapped ? cs_Neq(y, x) : cs_Neq(x, y));
    ASSERT_TRUE(GetParam().narrow(x, GetParam().v));
    EXPECT_EQ(values(y), GetParam().left);
  }
}

INSTANTIATE_TEST_SUITE_P(, NeqEventTest,
                         ::testing::Values(EventRow{"minimum raised", cs_GE, 2, {0, 1, 2, 3, 4}},
                                           EventRow{"maximum lowered", cs_LE, 2, {0, 1, 2, 3, 4}},
                                           EventRow{"bound by the minimum", cs_GE, 4, {0, 1, 2, 3}},
                                           EventRow{"bound by the maximum", cs_LE, 0, {1, 2, 3, 4}},
                                           EventRow{"bound inside", cs_EQ, 2, {0, 1, 3, 4}},
                                           EventRow{"inner value removed", cs_NEQ, 2, {0, 1, 2, 3, 4}}));

TEST_F(NeqTest, BindingBothSidesToTheSameValueFails) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(0, 4);
  ASSERT_TRUE(cs_Neq(x, y));
  ASSERT_TRUE(cs_EQ(x, 0));
  EXPECT_FALSE(cs_EQ(y, 0));
}

// Two values each: binding x binds y, whose event finds x's value gone already.
TEST_F(NeqTest, ARemovalThatBindsTheOtherSideCallsTheHandlerThereOnce) {
  CSint *x = cs_createCSint(0, 1);
  CSint *y = cs_createCSint(0, 1);
  ASSERT_TRUE(cs_Neq(x, y));
  const CallLog log;
  ASSERT_TRUE(cs_EQ(x, 1));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x, 2, "cs_Neq"}, {true, y, 3, "cs_Neq"}}));
  EXPECT_EQ(values(y), std::vector{0});
}

TEST_F(NeqTest, SlotsThatDoNothingAreStillCountedWhileProfiling) {
  CSint *x = cs_createCSint(0, 4);
  ASSERT_TRUE(cs_Neq(x, cs_createCSint(0, 4)));
  const CallLog log;
  ASSERT_TRUE(cs_GE(x, 1));
  ASSERT_TRUE(cs_LE(x, 3));
  ASSERT_TRUE(cs_NEQ(x, 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x, 0, "cs_Neq"}, {true, x, 1, "cs_Neq"}, {true, x, 5, "cs_Neq"}}));
}

// Three variables, two values: x = 0 makes y and z 1, and z's event finds y bound to the same value.
TEST_F(NeqTest, ATriangleOnTwoValuesFailsAtTheFirstDecision) {
  CSint *x = cs_createCSint(0, 1);
  CSint *y = cs_createCSint(0, 1);
  CSint *z = cs_createCSint(0, 1);
  ASSERT_TRUE(cs_Neq(x, y));
  ASSERT_TRUE(cs_Neq(y, z));
  ASSERT_TRUE(cs_Neq(x, z));
  const CallLog log;
  EXPECT_FALSE(cs_EQ(x, 0));
  EXPECT_EQ(log.calls,
            (std::vector<Call>{
                {true, x, 3, "cs_Neq"}, {true, x, 3, "cs_Neq"}, {true, z, 2, "cs_Neq"}, {false, z, 2, "cs_Neq"}}));
}

}  // namespace

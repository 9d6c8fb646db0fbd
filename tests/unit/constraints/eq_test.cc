// SPDX-License-Identifier: MIT
// cs_Eq: the first filtering, and what each of the six events passes to the other side.
#include "support/kit/batch.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using EqTest = SolverTest;

TEST_F(EqTest, TheSameVariableTwiceIsTrueAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  const int trail = solver::trail.count();
  EXPECT_TRUE(cs_Eq(x, x));
  EXPECT_EQ(x->constraints, nullptr);
  EXPECT_EQ(solver::trail.count(), trail);
}

TEST_F(EqTest, ANullVariableIsFalseAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_FALSE(cs_Eq(x, nullptr));
  EXPECT_FALSE(cs_Eq(nullptr, x));
  EXPECT_FALSE(cs_Eq(nullptr, nullptr));
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(EqTest, IsAttachedToTheFirstVariableThenToTheSecond) {
  CSint *x = cs_createCSint(0, 3);
  CSint *y = cs_createCSint(0, 3);
  const int mark = solver::trail.count();
  ASSERT_TRUE(cs_Eq(x, y));
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{x, y}));
  for (CSint *v : {x, y}) {
    EXPECT_EQ(attachments(v), (std::vector<std::pair<std::string, int>>{{"cs_Eq", -1}}));
    EXPECT_EQ(cs_getNbConstraints(v), 1);
    EXPECT_EQ(busySlots(v), "012345");
  }
  EXPECT_EQ(x->constraints->constraint, y->constraints->constraint);
}

TEST_F(EqTest, PostingIntersectsASetWithHolesAndAnInterval) {
  for (const bool swapped : {false, true}) {
    CSint *x = fromValues({1, 3, 5});
    CSint *y = cs_createCSint(1, 5);
    EXPECT_TRUE(swapped ? cs_Eq(y, x) : cs_Eq(x, y));
    EXPECT_EQ(values(x), (std::vector{1, 3, 5}));
    EXPECT_EQ(values(y), (std::vector{1, 3, 5}));
  }
}

TEST_F(EqTest, PostingIntersectsTwoIntervals) {
  CSint *x = cs_createCSint(0, 6);
  CSint *y = cs_createCSint(4, 9);
  EXPECT_TRUE(cs_Eq(x, y));
  EXPECT_EQ(values(x), range(4, 6));
  EXPECT_EQ(values(y), range(4, 6));
  EXPECT_EQ(x->bits, nullptr);
  EXPECT_EQ(y->bits, nullptr);
}

TEST_F(EqTest, PostingFailsOnDisjointIntervals) { EXPECT_FALSE(cs_Eq(cs_createCSint(0, 3), cs_createCSint(4, 9))); }

TEST_F(EqTest, PostingFailsOnSetsWithoutACommonValue) {
  EXPECT_FALSE(cs_Eq(fromValues({1, 3, 5}), fromValues({0, 2, 4, 6})));
}

// In a handler nothing is heard before posting ends, so the walk over the values finds bounds that differ.
TEST_F(EqTest, PostingInAHandlerIntersectsTheEnds) {
  CSint *x = cs_createCSint(1, 7);
  CSint *y = fromValues({0, 3, 4, 6, 9});
  std::vector<int> seen;
  ASSERT_TRUE(together([&] {
    const bool posted = cs_Eq(x, y);
    seen = values(x);
    return posted;
  }));
  EXPECT_EQ(seen, (std::vector{3, 4, 6}));
  EXPECT_EQ(values(y), (std::vector{3, 4, 6}));
}

TEST_F(EqTest, PostingBindsTheOtherSideToABoundOne) {
  for (const bool swapped : {false, true}) {
    CSint *x = CSINT(2);
    CSint *y = fromValues({0, 2, 4});
    EXPECT_TRUE(swapped ? cs_Eq(y, x) : cs_Eq(x, y));
    EXPECT_EQ(values(y), std::vector{2});
  }
}

TEST_F(EqTest, PostingFailsWhenTheOtherSideDoesNotHoldTheBoundValue) {
  CSint *y = fromValues({1, 3});
  EXPECT_FALSE(cs_Eq(CSINT(2), y));
  EXPECT_FALSE(cs_Eq(y, CSINT(2)));
  EXPECT_FALSE(cs_Eq(y, CSINT(9)));
  EXPECT_EQ(values(y), (std::vector{1, 3}));
}

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int v;
  std::vector<int> left;  // of 0..4, on both sides
};

void PrintTo(const EventRow &row, std::ostream *out) { *out << row.name; }

class EqEventTest : public SolverTest, public ::testing::WithParamInterface<EventRow> {};

TEST_P(EqEventTest, PassesToTheSecondVariable) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(0, 4);
  ASSERT_TRUE(cs_Eq(x, y));
  ASSERT_TRUE(GetParam().narrow(x, GetParam().v));
  EXPECT_EQ(values(x), GetParam().left);
  EXPECT_EQ(values(y), GetParam().left);
}

TEST_P(EqEventTest, PassesToTheFirstVariable) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(0, 4);
  ASSERT_TRUE(cs_Eq(x, y));
  ASSERT_TRUE(GetParam().narrow(y, GetParam().v));
  EXPECT_EQ(values(x), GetParam().left);
  EXPECT_EQ(values(y), GetParam().left);
}

// The change on one side makes the same change, and so the same event, on the other: two calls, and no more.
TEST_P(EqEventTest, CallsTheHandlerOncePerSide) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(0, 4);
  ASSERT_TRUE(cs_Eq(x, y));
  const CallLog log;
  ASSERT_TRUE(GetParam().narrow(x, GetParam().v));
  ASSERT_GE(log.calls.size(), 2U);
  EXPECT_EQ(log.calls[0].variable, x);
  EXPECT_EQ(log.calls[1].variable, y);
  if (std::string_view(GetParam().name) != "bound inside") {
    EXPECT_EQ(log.calls.size(), 2U);
    EXPECT_EQ(log.calls[0].code, log.calls[1].code);
  }
}

INSTANTIATE_TEST_SUITE_P(, EqEventTest,
                         ::testing::Values(EventRow{"minimum raised", cs_GE, 2, {2, 3, 4}},
                                           EventRow{"maximum lowered", cs_LE, 2, {0, 1, 2}},
                                           EventRow{"bound by the minimum", cs_GE, 4, {4}},
                                           EventRow{"bound by the maximum", cs_LE, 0, {0}},
                                           EventRow{"bound inside", cs_EQ, 2, {2}},
                                           EventRow{"inner value removed", cs_NEQ, 2, {0, 1, 3, 4}}));

// The minimum rule first: y becomes {2..4} (code 0), then the maximum rule binds it (code 3).
TEST_F(EqTest, BindingInsideRunsTheMinimumRuleThenTheMaximumRule) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(0, 4);
  ASSERT_TRUE(cs_Eq(x, y));
  const CallLog log;
  ASSERT_TRUE(cs_EQ(x, 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x, 4, "cs_Eq"}, {true, y, 0, "cs_Eq"}, {true, y, 3, "cs_Eq"}}));
}

TEST_F(EqTest, AFailedHandlerFailsTheChange) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(0, 4);
  ASSERT_TRUE(cs_Eq(x, y));
  ASSERT_TRUE(cs_Neq(y, CSINT(4)));  // takes 4 from both
  ASSERT_TRUE(cs_Lt(y, cs_createCSint(0, 3)));
  EXPECT_EQ(values(x), range(0, 2));
  EXPECT_FALSE(cs_GE(x, 3));
}

TEST_F(EqTest, RestoringDetachesIt) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(2, 9);
  cs_saveContext();
  ASSERT_TRUE(cs_Eq(x, y));
  cs_restoreContext();
  EXPECT_EQ(values(x), range(0, 4));
  EXPECT_EQ(values(y), range(2, 9));
  ASSERT_TRUE(cs_LE(x, 1));
  EXPECT_EQ(values(y), range(2, 9));
  EXPECT_EQ(cs_getNbConstraints(x), 1);
}

}  // namespace

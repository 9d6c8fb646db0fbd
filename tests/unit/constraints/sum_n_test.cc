// SPDX-License-Identifier: MIT
// cs_VAdd and cs_VSub: the result's domain, how they are posted, and the rules on the sum and on the addends, which
// cs_Sigma shares.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

CSint *addArguments(CSint **x) { return cs_VAdd(3, x[0], x[1], x[2]); }

class SumNTest : public SolverTest {
 protected:
  static std::pair<int, int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }
  using Bounds = std::pair<int, int>;

  // s = a + b + c, each in 0..10.
  void makeSum(CSint *(*sum)(CSint **)) {
    for (CSint *&v : x) v = cs_createCSint(0, 10);
    s = sum(x);
    ASSERT_NE(s, nullptr);
    ASSERT_EQ(bounds(s), Bounds(0, 30));
  }
  void expect(Bounds a, Bounds b, Bounds c, Bounds sum) {
    EXPECT_EQ(bounds(x[0]), a);
    EXPECT_EQ(bounds(x[1]), b);
    EXPECT_EQ(bounds(x[2]), c);
    EXPECT_EQ(bounds(s), sum);
  }

  CSint *x[3] = {};
  CSint *s = nullptr;
};

TEST_F(SumNTest, VAddOfOneIsTheVariableItselfAndPostsNothing) {
  CSint *v = cs_createCSint(0, 3);
  EXPECT_EQ(cs_VAdd(1, v), v);
  EXPECT_EQ(cs_getNbConstraints(v), 0);
}

TEST_F(SumNTest, VAddOfNothingIsZero) {
  for (const int n : {0, -1, INT_MIN}) {
    CSint *zero = cs_VAdd(n);
    ASSERT_NE(zero, nullptr);
    EXPECT_EQ(values(zero), std::vector{0});
    EXPECT_EQ(cs_getNbConstraints(zero), 0);
  }
}

TEST_F(SumNTest, VSubOfNothingIsZero) {
  for (const int n : {0, -1, INT_MIN}) {
    CSint *zero = cs_VSub(n);
    ASSERT_NE(zero, nullptr);
    EXPECT_EQ(values(zero), std::vector{0});
  }
}

TEST_F(SumNTest, VSubOfOneEqualsTheVariable) {
  CSint *v = cs_createCSint(-2, 3);
  CSint *same = cs_VSub(1, v);
  ASSERT_NE(same, nullptr);
  EXPECT_EQ(values(same), range(-2, 3));
  ASSERT_TRUE(cs_GE(same, 1));
  EXPECT_EQ(values(v), range(1, 3));
}

TEST_F(SumNTest, VSubOfTwoPostsTheDifferenceOnly) {
  CSint *a = cs_createCSint(0, 10);
  CSint *b = cs_createCSint(0, 10);
  const int mark = solver::trail.count();
  CSint *z = cs_VSub(2, a, b);
  EXPECT_EQ(values(z), range(-10, 10));
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{z, a, b}));
  for (CSint *v : {z, a, b}) EXPECT_EQ(attachments(v), (std::vector<std::pair<std::string, int>>{{"cs_VSub", -1}}));
}

TEST_F(SumNTest, VAddPostsOneConstraintOnTheSumAndOneOnTheAddendsUnderOneSite) {
  const int mark = solver::trail.count();
  makeSum(addArguments);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{s, x[0], x[1], x[2]}));
  EXPECT_EQ(attachments(s), (std::vector<std::pair<std::string, int>>{{"cs_Vadd", -1}}));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(attachments(x[i]), (std::vector<std::pair<std::string, int>>{{"cs_Vadd", i}}));
  const Constraint *onSum = s->constraints->constraint;
  const Constraint *onAddends = x[0]->constraints->constraint;
  EXPECT_NE(onSum, onAddends);
  EXPECT_EQ(onAddends, x[2]->constraints->constraint);
  EXPECT_EQ(onSum->site, onAddends->site);
  EXPECT_EQ(onSum->site->references, 2);
  EXPECT_EQ(busySlots(s), "01234");
  EXPECT_EQ(busySlots(x[0]), "01234");
}

TEST_F(SumNTest, VSubPostsThreeConstraintsUnderOneSite) {
  for (CSint *&v : x) v = cs_createCSint(0, 10);
  CSint *z = cs_VSub(3, x[0], x[1], x[2]);
  EXPECT_EQ(values(z), range(-20, 10));
  EXPECT_EQ(attachments(z), (std::vector<std::pair<std::string, int>>{{"cs_VSub", -1}}));
  EXPECT_EQ(attachments(x[0]), (std::vector<std::pair<std::string, int>>{{"cs_VSub", -1}}));
  EXPECT_EQ(attachments(x[1]), (std::vector<std::pair<std::string, int>>{{"cs_VSub", 0}}));
  EXPECT_EQ(attachments(x[2]), (std::vector<std::pair<std::string, int>>{{"cs_VSub", 1}}));
  EXPECT_EQ(z->constraints->constraint->site, x[1]->constraints->constraint->site);
  EXPECT_EQ(z->constraints->constraint->site->references, 3);
}

TEST_F(SumNTest, TheCopyOfTheArgumentsIsHandedToTheTrailBeforeTheAttachments) {
  makeSum(addArguments);
  EXPECT_EQ(trailRecords(TrailKind::kBuffer), 1);
  bool attached = false;
  solver::trail.forEach([&](const TrailRecord &record) {
    if (record.kind() == TrailKind::kAttached) attached = true;
    if (record.kind() == TrailKind::kBuffer) {
      EXPECT_FALSE(attached);
    }
  });
  cs_VSub(3, x[0], x[1], x[2]);
  EXPECT_EQ(trailRecords(TrailKind::kBuffer), 2);
}

TEST_F(SumNTest, TheCopyOutlivesAnAcceptedChoicePoint) {
  cs_saveContext();
  makeSum(addArguments);
  cs_acceptContext();
  ASSERT_TRUE(cs_GE(x[0], 4));
  expect({4, 10}, {0, 10}, {0, 10}, {4, 30});
}

TEST_F(SumNTest, ANullOperandGivesNullAndPostsNothing) {
  CSint *v = cs_createCSint(0, 3);
  CSint *none = nullptr;
  EXPECT_EQ(cs_VAdd(1, none), nullptr);
  EXPECT_EQ(cs_VAdd(2, v, none), nullptr);
  EXPECT_EQ(cs_VAdd(3, none, v, v), nullptr);
  EXPECT_EQ(cs_VSub(1, none), nullptr);
  EXPECT_EQ(cs_VSub(2, v, none), nullptr);
  EXPECT_EQ(cs_VSub(3, v, none, v), nullptr);
  EXPECT_EQ(cs_getNbConstraints(v), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(SumNTest, AConstantSumIsPostedAllTheSame) {
  CSint *two = CSINT(2);
  CSint *z = cs_VAdd(2, two, CSINT(3));
  EXPECT_EQ(values(z), std::vector{5});
  EXPECT_EQ(cs_getNbConstraints(two), 1);
}

TEST_F(SumNTest, TheSumIsAnIntervalAndTheAddendsAreNotNarrowed) {
  CSint *a = fromValues({0, 4});
  CSint *z = cs_VAdd(2, a, CSINT(1));
  EXPECT_EQ(values(z), range(1, 5));
  EXPECT_EQ(z->bits, nullptr);
  EXPECT_EQ(values(a), (std::vector{0, 4}));
}

TEST_F(SumNTest, OneChangeIsOneCallPerEvent) {
  makeSum(addArguments);
  const CallLog log;
  ASSERT_TRUE(cs_GE(x[0], 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x[0], 0, "cs_Vadd"}, {true, s, 0, "cs_Vadd"}}));
}

// A total beyond the int range is clamped, but the rules go by the true totals.
TEST_F(SumNTest, TheSumIsClampedToTheIntRange) {
  CSint *a = cs_createCSint(0, 2000000000);
  CSint *b = cs_createCSint(0, 2000000000);
  CSint *z = cs_VAdd(2, a, b);
  EXPECT_EQ(bounds(z), Bounds(0, INT_MAX));
  ASSERT_TRUE(cs_GE(a, 2000000000));
  EXPECT_EQ(bounds(b), Bounds(0, 147483647));
  CSint *c = cs_createCSint(-2000000000, 0);
  CSint *d = cs_createCSint(-2000000000, 0);
  EXPECT_EQ(bounds(cs_VAdd(2, c, d)), Bounds(INT_MIN, 0));
}

// ----- the rules, which cs_VAdd and cs_Sigma share

using MakeSum = CSint *(*)(CSint **x);

CSint *addArray(CSint **x) { return cs_Sigma(x, 3); }

class SumRulesTest : public SumNTest, public ::testing::WithParamInterface<MakeSum> {
 protected:
  void makeSum() { SumNTest::makeSum(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(, SumRulesTest, ::testing::Values(addArguments, addArray),
                         [](const auto &row) { return std::string(row.param == addArray ? "cs_Sigma" : "cs_VAdd"); });

TEST_P(SumRulesTest, RaisingTheSumRaisesTheAddends) {
  makeSum();
  ASSERT_TRUE(cs_GE(s, 24));
  expect({4, 10}, {4, 10}, {4, 10}, {24, 30});
}

TEST_P(SumRulesTest, LoweringTheSumLowersTheAddends) {
  makeSum();
  ASSERT_TRUE(cs_LE(s, 6));
  expect({0, 6}, {0, 6}, {0, 6}, {0, 6});
}

TEST_P(SumRulesTest, BindingTheSumAtItsEndsBindsTheAddends) {
  makeSum();
  cs_saveContext();
  ASSERT_TRUE(cs_GE(s, 30));
  expect({10, 10}, {10, 10}, {10, 10}, {30, 30});
  cs_restoreContext();
  ASSERT_TRUE(cs_LE(s, 0));
  expect({0, 0}, {0, 0}, {0, 0}, {0, 0});
}

TEST_P(SumRulesTest, BindingTheSumInsideRunsBothRules) {
  makeSum();
  ASSERT_TRUE(cs_LE(x[0], 3));
  ASSERT_TRUE(cs_EQ(s, 15));
  expect({0, 3}, {2, 10}, {2, 10}, {15, 15});
  cs_restoreAll();
}

TEST_P(SumRulesTest, RaisingAnAddendRaisesTheSumAndLowersTheOthers) {
  makeSum();
  ASSERT_TRUE(cs_LE(s, 12));
  expect({0, 10}, {0, 10}, {0, 10}, {0, 12});
  ASSERT_TRUE(cs_GE(x[1], 5));
  expect({0, 7}, {5, 10}, {0, 7}, {5, 12});
}

TEST_P(SumRulesTest, LoweringAnAddendLowersTheSumAndRaisesTheOthers) {
  makeSum();
  ASSERT_TRUE(cs_GE(s, 18));
  ASSERT_TRUE(cs_LE(x[1], 5));
  expect({3, 10}, {0, 5}, {3, 10}, {18, 25});
}

TEST_P(SumRulesTest, BindingAnAddendRunsBothRules) {
  makeSum();
  ASSERT_TRUE(cs_EQ(x[2], 4));
  expect({0, 10}, {0, 10}, {4, 4}, {4, 24});
  ASSERT_TRUE(cs_EQ(x[0], 0));
  expect({0, 0}, {0, 10}, {4, 4}, {4, 14});
  ASSERT_TRUE(cs_EQ(x[1], 10));
  expect({0, 0}, {10, 10}, {4, 4}, {14, 14});
}

TEST_P(SumRulesTest, HolesPassNothing) {
  makeSum();
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(x[1], 1));
  ASSERT_TRUE(cs_NEQ(x[2], 4));
  EXPECT_EQ(values(s), range(2, 12));
  ASSERT_TRUE(cs_NEQ(s, 9));
  EXPECT_EQ(values(x[2]), without(range(0, 10), 4));
}

TEST_P(SumRulesTest, ASumOutOfReachFails) {
  makeSum();
  ASSERT_TRUE(cs_LE(x[0], 2) && cs_LE(x[1], 2));
  EXPECT_FALSE(cs_GE(s, 15));
  cs_restoreAll();
}

TEST_P(SumRulesTest, AnAddendThatOverfillsTheSumFails) {
  makeSum();
  ASSERT_TRUE(cs_GE(x[0], 4) && cs_GE(x[1], 4));
  ASSERT_TRUE(cs_LE(s, 11));
  EXPECT_FALSE(cs_GE(x[2], 4));
}

// Raising an addend: the addends' handler once for it; the sum's handler once for the raised sum, which narrows
// nothing.

TEST_P(SumRulesTest, BindingAnAddendInsideRunsBothRules) {
  makeSum();
  ASSERT_TRUE(cs_LE(s, 12) && cs_GE(s, 8) && cs_LE(x[0], 2));
  ASSERT_TRUE(cs_EQ(x[2], 7));
  expect({0, 2}, {0, 5}, {7, 7}, {8, 12});
}

TEST_P(SumRulesTest, HolesOfTheSumPassNothing) {
  makeSum();
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(x[1], 1) && cs_NEQ(x[2], 4));
  EXPECT_EQ(values(s), range(2, 12));
  ASSERT_TRUE(cs_NEQ(s, 9));
  EXPECT_EQ(values(x[2]), without(range(0, 10), 4));
}

TEST_P(SumRulesTest, ASumOutOfReachOfItsAddendsFails) {
  makeSum();
  ASSERT_TRUE(cs_LE(x[0], 2) && cs_LE(x[1], 2));
  cs_saveContext();
  EXPECT_FALSE(cs_GE(s, 15));
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(s, 12));
  EXPECT_FALSE(cs_LE(x[2], 7));
}

}  // namespace

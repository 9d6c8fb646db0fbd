// SPDX-License-Identifier: MIT
// The six relations with an int: what each narrows, what it leaves, and what it answers.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using RelationConstTest = SolverTest;

TEST_F(RelationConstTest, EqOnAVariableAlreadyBoundIsTrueAndSignalsNothing) {
  CSint *x = CSINT(4);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_Neq(x, y));
  const int trail = solver::trail.count();
  const CallLog log;
  EXPECT_TRUE(cs_EQ(x, 4));
  EXPECT_EQ(solver::trail.count(), trail);
  EXPECT_TRUE(log.calls.empty());
}

TEST_F(RelationConstTest, EqWithAValueInAHoleIsFalseAndLeavesTheVariable) {
  CSint *x = fromValues({1, 3, 5});
  const int trail = solver::trail.count();
  EXPECT_FALSE(cs_EQ(x, 2));
  EXPECT_EQ(values(x), (std::vector{1, 3, 5}));
  EXPECT_EQ(solver::trail.count(), trail);
}

TEST_F(RelationConstTest, EqOutsideTheBoundsIsFalseAndLeavesTheVariable) {
  CSint *x = cs_createCSint(2, 5);
  EXPECT_FALSE(cs_EQ(x, 1));
  EXPECT_FALSE(cs_EQ(x, 6));
  EXPECT_EQ(values(x), range(2, 5));
}

TEST_F(RelationConstTest, EqBinds) {
  for (const int v : {2, 4, 5}) {
    CSint *x = cs_createCSint(2, 5);
    EXPECT_TRUE(cs_EQ(x, v));
    EXPECT_EQ(values(x), std::vector{v});
    EXPECT_FALSE(cs_EQ(x, v + 1));
  }
}

TEST_F(RelationConstTest, NeqOutsideTheDomainIsTrueAndChangesNothing) {
  CSint *x = fromValues({1, 3, 5});
  const int trail = solver::trail.count();
  for (const int v : {0, 2, 4, 6}) EXPECT_TRUE(cs_NEQ(x, v));
  EXPECT_EQ(values(x), (std::vector{1, 3, 5}));
  EXPECT_EQ(solver::trail.count(), trail);
}

TEST_F(RelationConstTest, NeqRemovesExactlyItsValue) {
  for (int v = 1; v <= 5; ++v) {
    CSint *x = cs_createCSint(1, 5);
    EXPECT_TRUE(cs_NEQ(x, v));
    EXPECT_EQ(values(x), without(range(1, 5), v));
  }
}

TEST_F(RelationConstTest, NeqOfTheOnlyValueIsFalse) {
  CSint *x = CSINT(3);
  EXPECT_FALSE(cs_NEQ(x, 3));
  EXPECT_EQ(cs_getValue(x), 3);
}

struct OrderRow {
  const char *name;
  bool (*relation)(CSint *, int);
  int v;
  bool result;
  std::vector<int> left;  // of {1, 3, 4, 7}
};

void PrintTo(const OrderRow &row, std::ostream *out) { *out << row.name << " " << row.v; }

class RelationConstOrderTest : public SolverTest, public ::testing::WithParamInterface<OrderRow> {};

TEST_P(RelationConstOrderTest, NarrowsToTheValuesThatSatisfyIt) {
  CSint *x = fromValues({1, 3, 4, 7});
  EXPECT_EQ(GetParam().relation(x, GetParam().v), GetParam().result);
  EXPECT_EQ(values(x), GetParam().left);
}

const std::vector<int> kAll{1, 3, 4, 7};

INSTANTIATE_TEST_SUITE_P(
    , RelationConstOrderTest,
    ::testing::Values(OrderRow{"LE", cs_LE, 7, true, kAll}, OrderRow{"LE", cs_LE, 6, true, {1, 3, 4}},
                      OrderRow{"LE", cs_LE, 2, true, {1}}, OrderRow{"LE", cs_LE, 0, false, kAll},
                      OrderRow{"LT", cs_LT, 8, true, kAll}, OrderRow{"LT", cs_LT, 7, true, {1, 3, 4}},
                      OrderRow{"LT", cs_LT, 3, true, {1}}, OrderRow{"LT", cs_LT, 1, false, kAll},
                      OrderRow{"GE", cs_GE, 1, true, kAll}, OrderRow{"GE", cs_GE, 2, true, {3, 4, 7}},
                      OrderRow{"GE", cs_GE, 5, true, {7}}, OrderRow{"GE", cs_GE, 8, false, kAll},
                      OrderRow{"GT", cs_GT, 0, true, kAll}, OrderRow{"GT", cs_GT, 1, true, {3, 4, 7}},
                      OrderRow{"GT", cs_GT, 4, true, {7}}, OrderRow{"GT", cs_GT, 7, false, kAll}));

TEST_F(RelationConstTest, NothingIsPosted) {
  CSint *x = cs_createCSint(0, 9);
  cs_EQ(cs_createCSint(0, 9), 1);
  cs_NEQ(x, 4);
  cs_LE(x, 8);
  cs_LT(x, 8);
  cs_GE(x, 1);
  cs_GT(x, 1);
  EXPECT_EQ(values(x), (std::vector{2, 3, 5, 6, 7}));
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(x->constraints, nullptr);
}

TEST_F(RelationConstTest, ANullVariableIsAnsweredWithFalse) {
  for (auto *relation : {cs_EQ, cs_NEQ, cs_LE, cs_LT, cs_GE, cs_GT}) EXPECT_FALSE(relation(nullptr, 0));
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(RelationConstTest, AFailureOfPropagationIsAnsweredWithFalse) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(4, 5);
  ASSERT_TRUE(cs_Eq(x, y));
  ASSERT_TRUE(cs_Neq(y, CSINT(4)));
  EXPECT_FALSE(cs_EQ(x, 4));
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(RelationConstTest, ATrailThatCannotGrowIsReportedOnceAndAnsweredWithFalse) {
  CSint *x = cs_createCSint(0, 9);
  const FullTrail full;
  int expected = 0;
  for (auto *relation : {cs_EQ, cs_NEQ, cs_LE, cs_LT, cs_GE, cs_GT}) {
    EXPECT_FALSE(relation(x, 5));
    EXPECT_EQ(memoryReports, ++expected);
  }
  EXPECT_EQ(values(x), range(0, 9));
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

TEST_F(RelationConstTest, ABitArrayThatCannotBeHadIsReportedOnceAndLeavesTheDomain) {
  CSint *x = cs_createCSint(0, 9);
  {
    const FailingAllocation failing(0);
    EXPECT_FALSE(cs_NEQ(x, 5));
  }
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(values(x), range(0, 9));
  EXPECT_TRUE(cs_NEQ(x, 5));
  EXPECT_EQ(values(x), without(range(0, 9), 5));
}

}  // namespace

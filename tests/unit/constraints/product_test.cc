// SPDX-License-Identifier: MIT
// cs_Mul, cs_VMul, cs_Div, cs_VDiv: the result's bounds, how they are posted, and the one rule for p = a * b.
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

class ProductTest : public SolverTest {
 protected:
  // z = x * y
  void multiply(Bounds2 ofX, Bounds2 ofY) {
    x = cs_createCSint(ofX.first, ofX.second);
    y = cs_createCSint(ofY.first, ofY.second);
    z = cs_Mul(x, y);
    ASSERT_NE(z, nullptr);
  }
  // z = x / y
  void divide(Bounds2 ofX, Bounds2 ofY) {
    x = cs_createCSint(ofX.first, ofX.second);
    y = cs_createCSint(ofY.first, ofY.second);
    z = cs_Div(x, y);
  }
  void expect(Bounds2 ofX, Bounds2 ofY, Bounds2 ofZ) {
    EXPECT_EQ(bounds(x), ofX);
    EXPECT_EQ(bounds(y), ofY);
    EXPECT_EQ(bounds(z), ofZ);
  }

  CSint *x = nullptr;
  CSint *y = nullptr;
  CSint *z = nullptr;
};

// ----- posting

TEST_F(ProductTest, TheProductSpansItsCorners) {
  multiply({-3, 2}, {4, 5});
  expect({-3, 2}, {4, 5}, {-15, 10});
  EXPECT_EQ(cs_getNbElements(z), 26);
  EXPECT_EQ(z->bits, nullptr);
}

TEST_F(ProductTest, HolesOfTheOperandsDoNotPassAtPosting) {
  CSint *holes = fromValues({1, 5});
  EXPECT_EQ(values(cs_Mul(holes, CSINT(1))), range(1, 5));
  EXPECT_EQ(values(cs_Div(holes, CSINT(1))), range(1, 5));
}

TEST_F(ProductTest, MulAttachesTheProductThenBothFactors) {
  x = cs_createCSint(1, 3);
  y = cs_createCSint(1, 3);
  const int mark = solver::trail.count();
  z = cs_Mul(x, y);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{z, x, y}));
  EXPECT_EQ(solver::trail.count(), mark + 3);
  for (CSint *v : {x, y, z}) EXPECT_EQ(attachments(v), (Attached{{"cs_Mul", -1}}));
  EXPECT_EQ(constraintOf(x), constraintOf(z));
  EXPECT_EQ(constraintOf(y), constraintOf(z));
  EXPECT_EQ(siteOf(z)->references, 1);
  EXPECT_EQ(busySlots(z), "01234");
}

TEST_F(ProductTest, DivAttachesTheQuotientThenTheOperands) {
  x = cs_createCSint(1, 9);
  y = cs_createCSint(1, 3);
  const int mark = solver::trail.count();
  z = cs_Div(x, y);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{z, x, y}));
  EXPECT_EQ(solver::trail.count(), mark + 3);
  for (CSint *v : {x, y, z}) EXPECT_EQ(attachments(v), (Attached{{"cs_Div", -1}}));
  EXPECT_EQ(busySlots(z), "01234");
  EXPECT_EQ(constraintOf(z)->table, constraintOf(cs_Mul(x, y))->table) << "one table serves both";
}

TEST_F(ProductTest, AFixedProductIsPostedAllTheSame) {
  z = cs_Mul(CSINT(3), CSINT(4));
  EXPECT_EQ(values(z), std::vector{12});
  EXPECT_EQ(attachments(z), (Attached{{"cs_Mul", -1}}));
}

TEST_F(ProductTest, ANullOperandGivesNullAndPostsNothing) {
  CSint *v = cs_createCSint(1, 3);
  CSint *none = nullptr;
  EXPECT_EQ(cs_Mul(v, none), nullptr);
  EXPECT_EQ(cs_Mul(none, v), nullptr);
  EXPECT_EQ(cs_Div(v, none), nullptr);
  EXPECT_EQ(cs_Div(none, v), nullptr);
  EXPECT_EQ(cs_VMul(2, none, v), nullptr);
  EXPECT_EQ(cs_VMul(2, v, none), nullptr);
  EXPECT_EQ(cs_VDiv(2, none, v), nullptr);
  EXPECT_EQ(cs_VDiv(2, v, none), nullptr);
  EXPECT_EQ(cs_VMul(1, none), nullptr);
  EXPECT_EQ(cs_getNbConstraints(v), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(ProductTest, NothingIsNarrowedAtPosting) {
  divide({1, 10}, {3, 3});
  expect({1, 10}, {3, 3}, {1, 3});
  multiply({0, 3}, {5, 5});
  expect({0, 3}, {5, 5}, {0, 15});
}

TEST_F(ProductTest, DivOf7By2IsNullAndReportsAndPostsNothing) {
  const int mark = solver::trail.count();
  divide({7, 7}, {2, 2});
  EXPECT_EQ(z, nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(memoryReports, 0);
  EXPECT_EQ(solver::trail.count(), mark);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(cs_getNbConstraints(y), 0);
}

TEST_F(ProductTest, DivOf8By2Is4) {
  divide({8, 8}, {2, 2});
  ASSERT_NE(z, nullptr);
  EXPECT_EQ(values(z), std::vector{4});
  EXPECT_EQ(attachments(z), (Attached{{"cs_Div", -1}}));
}

TEST_F(ProductTest, DivByADivisorAroundZeroRangesOverAllInts) {
  for (const Bounds2 &divisor : {Bounds2(-1, 1), Bounds2(0, 0), Bounds2(0, 5), Bounds2(-5, 0)}) {
    divide({3, 9}, divisor);
    ASSERT_NE(z, nullptr);
    expect({3, 9}, divisor, {INT_MIN, INT_MAX});
    EXPECT_EQ(cs_getNbElements(z), 0) << "the count of a variable over all ints wraps";
  }
}

// A divisor whose holes exclude 0 is judged by its bounds.
TEST_F(ProductTest, DivByADivisorWithAHoleAtZeroRangesOverAllInts) {
  z = cs_Div(cs_createCSint(3, 9), fromValues({-1, 1}));
  EXPECT_EQ(bounds(z), Bounds2(INT_MIN, INT_MAX));
}

TEST_F(ProductTest, DivOfNegativeOperandsRoundsInwards) {
  divide({-10, -1}, {3, 3});
  expect({-10, -1}, {3, 3}, {-3, -1});
  divide({-10, 10}, {-4, -3});
  expect({-10, 10}, {-4, -3}, {-3, 3});
}

// ----- chains

TEST_F(ProductTest, ChainsOfFewerThanTwoAreTheFirstVariable) {
  x = cs_createCSint(1, 3);
  const int mark = solver::trail.count();
  for (const int n : {1, 0, -1, INT_MIN}) {
    EXPECT_EQ(cs_VMul(n, x), x);
    EXPECT_EQ(cs_VDiv(n, x), x);
  }
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(solver::trail.count(), mark);
}

TEST_F(ProductTest, AChainSharesOneSite) {
  x = cs_createCSint(1, 2);
  y = cs_createCSint(1, 3);
  CSint *w = cs_createCSint(1, 5);
  const int mark = solver::trail.count();
  z = cs_VMul(3, x, y, w);
  EXPECT_EQ(values(z), range(1, 30));
  const auto order = attachOrder(mark);
  ASSERT_EQ(order.size(), 6U);
  const CSint *product = order[0];  // x * y
  EXPECT_EQ(order, (std::vector<const CSint *>{product, x, y, z, product, w}));
  EXPECT_EQ(bounds(const_cast<CSint *>(product)), Bounds2(1, 6));
  EXPECT_EQ(attachments(product), (Attached{{"cs_VMul", -1}, {"cs_VMul", -1}}));
  for (CSint *v : {x, y, w, z}) EXPECT_EQ(attachments(v), (Attached{{"cs_VMul", -1}}));
  EXPECT_EQ(siteOf(x), siteOf(z));
  EXPECT_EQ(siteOf(z)->references, 2);
  EXPECT_NE(constraintOf(x), constraintOf(z));
}

TEST_F(ProductTest, AChainOfQuotientsIsBuiltFromLeftToRight) {
  x = cs_createCSint(24, 24);
  y = CSINT(2);
  z = cs_VDiv(3, x, y, CSINT(3));
  ASSERT_NE(z, nullptr);
  EXPECT_EQ(values(z), std::vector{4});
  EXPECT_EQ(attachments(x), (Attached{{"cs_VDiv", -1}}));
  EXPECT_EQ(siteOf(x), siteOf(z));
  EXPECT_EQ(siteOf(z)->references, 2);
}

TEST_F(ProductTest, AChainOfQuotientsStopsAtTheFirstThatDoesNotExist) {
  x = CSINT(7);
  CSint *last = cs_createCSint(1, 2);
  EXPECT_EQ(cs_VDiv(3, x, CSINT(2), last), nullptr);
  EXPECT_EQ(cs_getNbConstraints(last), 0);
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(cs_VDiv(3, CSINT(14), CSINT(2), CSINT(2)), nullptr);
}

// ----- the rule

TEST_F(ProductTest, AFactorWithZeroAtABoundLosesItWhenTheProductExcludesZero) {
  multiply({0, 9}, {0, 9});
  ASSERT_TRUE(cs_LE(z, 100));
  ASSERT_TRUE(cs_GE(z, 1));
  expect({1, 9}, {1, 9}, {1, 81});
  multiply({-9, 0}, {1, 9});
  ASSERT_TRUE(cs_LE(z, -1));
  expect({-9, -1}, {1, 9}, {-81, -1});
}

TEST_F(ProductTest, ZeroInsideAFactorStays) {
  multiply({-2, 3}, {-4, 5});
  ASSERT_TRUE(cs_GE(z, 1));
  EXPECT_TRUE(cs_isIn(x, 0));
  EXPECT_TRUE(cs_isIn(y, 0));
  expect({-2, 3}, {-4, 5}, {1, 15});
}

TEST_F(ProductTest, AChangedFactorNarrowsTheProductAndTheOtherFactor) {
  multiply({2, 9}, {2, 9});
  ASSERT_TRUE(cs_LE(z, 20));
  expect({2, 9}, {2, 9}, {4, 20});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(x, 5));
  expect({5, 9}, {2, 4}, {10, 20});
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(y, 5));
  expect({2, 4}, {5, 9}, {10, 20});
}

TEST_F(ProductTest, ALoweredFactorLowersTheProductAndRaisesTheOtherFactor) {
  multiply({2, 9}, {2, 9});
  ASSERT_TRUE(cs_GE(z, 40));
  expect({5, 9}, {5, 9}, {40, 81});
  ASSERT_TRUE(cs_LE(x, 6));
  expect({5, 6}, {7, 9}, {40, 54});
}

TEST_F(ProductTest, AChangedProductNarrowsBothFactors) {
  multiply({1, 9}, {2, 3});
  ASSERT_TRUE(cs_GE(z, 20));
  expect({7, 9}, {3, 3}, {21, 27});
}

TEST_F(ProductTest, AFactorBoundInsideNarrowsAsAnyChange) {
  multiply({2, 9}, {2, 9});
  ASSERT_TRUE(cs_LE(z, 20));
  ASSERT_TRUE(cs_EQ(x, 6));
  expect({6, 6}, {2, 3}, {12, 18});
}

TEST_F(ProductTest, AProductBoundInsideNarrowsAsAnyChange) {
  multiply({2, 9}, {4, 5});
  ASSERT_TRUE(cs_EQ(z, 35));
  expect({7, 7}, {5, 5}, {35, 35});
}

TEST_F(ProductTest, AFactorAroundZeroDoesNotNarrowTheOther) {
  multiply({-1, 1}, {2, 9});
  ASSERT_TRUE(cs_LE(z, 5));
  expect({-1, 1}, {2, 9}, {-9, 5});
  ASSERT_TRUE(cs_GE(z, 3));
  expect({1, 1}, {3, 5}, {3, 5});
}

TEST_F(ProductTest, AHoleNarrowsNothing) {
  multiply({1, 4}, {2, 2});
  ASSERT_TRUE(cs_NEQ(x, 2));
  EXPECT_EQ(values(z), range(2, 8));
  ASSERT_TRUE(cs_NEQ(z, 6));
  EXPECT_EQ(values(x), (std::vector{1, 3, 4}));
}

TEST_F(ProductTest, AProductThatNoFactorsGiveFails) {
  multiply({2, 3}, {2, 3});
  EXPECT_FALSE(cs_EQ(z, 5));
  cs_restoreAll();
  multiply({0, 0}, {-1, 1});
  EXPECT_EQ(values(z), std::vector{0});
  multiply({2, 2}, {1, 9});
  EXPECT_FALSE(cs_EQ(z, 7));
}

TEST_F(ProductTest, AQuotientFollowsTheSameRuleWithTheDividendAsProduct) {
  divide({1, 10}, {3, 3});
  ASSERT_TRUE(cs_GE(x, 5));
  expect({6, 9}, {3, 3}, {2, 3});
  divide({1, 20}, {2, 6});
  expect({1, 20}, {2, 6}, {1, 10});
  ASSERT_TRUE(cs_GE(z, 5));
  expect({10, 20}, {2, 4}, {5, 10});
}

TEST_F(ProductTest, AQuotientWithADivisorAroundZeroLearnsItsBoundsLater) {
  divide({6, 6}, {-1, 3});
  ASSERT_EQ(bounds(z), Bounds2(INT_MIN, INT_MAX));
  ASSERT_TRUE(cs_GE(y, 1));
  expect({6, 6}, {1, 3}, {2, 6});
}

TEST_F(ProductTest, AQuotientThatIsNotZeroNorItsDividendKeepsZeroFromTheDivisor) {
  divide({1, 8}, {0, 4});
  ASSERT_TRUE(cs_GE(x, 2));
  expect({2, 8}, {1, 4}, {1, 8});
}

TEST_F(ProductTest, OneChangeIsOneCallPerEvent) {
  multiply({1, 9}, {3, 3});
  const CallLog log;
  ASSERT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x, 0, "cs_Mul"}, {true, z, 0, "cs_Mul"}}));
}

TEST_F(ProductTest, ASquareIsHandledAsTheFirstFactor) {
  x = cs_createCSint(-3, 4);
  z = cs_Mul(x, x);
  EXPECT_EQ(values(z), range(-12, 16));
  EXPECT_EQ(attachments(x), (Attached{{"cs_Mul", -1}, {"cs_Mul", -1}}));
  ASSERT_TRUE(cs_GE(x, 2));
  EXPECT_EQ(bounds(z), Bounds2(4, 16));
}

TEST_F(ProductTest, BacktrackingTakesThePostingBack) {
  x = cs_createCSint(1, 9);
  y = cs_createCSint(1, 9);
  cs_saveContext();
  z = cs_Mul(x, y);
  ASSERT_TRUE(cs_LE(z, 4));
  EXPECT_EQ(bounds(x), Bounds2(1, 4));
  cs_restoreContext();
  EXPECT_EQ(bounds(x), Bounds2(1, 9));
  EXPECT_EQ(x->constraints, nullptr);
  EXPECT_EQ(cs_getNbConstraints(x), 1) << "attachments are counted for ever";
}

// ----- memory: a site, and per constraint a record and three entries

TEST_F(ProductTest, EachFailedAllocationIsReportedOnceAndLeavesTheSolverUsable) {
  const auto make = [] { return threeOf(1, 9); };
  expectAllocations(
      make, [](Posted &o) { return cs_Mul(o.x[0], o.x[1]) != nullptr; }, 5);
  expectAllocations(
      make, [](Posted &o) { return cs_Div(o.x[0], o.x[1]) != nullptr; }, 5);
  expectAllocations(
      make, [](Posted &o) { return cs_VMul(3, o.x[0], o.x[1], o.x[2]) != nullptr; }, 9);
  expectAllocations(
      make, [](Posted &o) { return cs_VDiv(3, o.x[0], o.x[1], o.x[2]) != nullptr; }, 9);
  expectAllocations(
      make, [](Posted &o) { return cs_VMul(1, o.x[0]) == o.x[0]; }, 1);
}

}  // namespace

// SPDX-License-Identifier: MIT
// cs_ScalProd: what a change of the sum passes to the terms, and one of a term to the sum and the other terms.
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

class ScalProdEventsTest : public SolverTest {
 protected:
  // s = first * x + second * y
  void make(int first, Bounds2 ofX, int second, Bounds2 ofY) {
    c[0] = first;
    c[1] = second;
    v[0] = cs_createCSint(ofX.first, ofX.second);
    v[1] = cs_createCSint(ofY.first, ofY.second);
    s = cs_ScalProd(v, c, 2);
    ASSERT_NE(s, nullptr);
  }
  void expect(Bounds2 ofX, Bounds2 ofY, Bounds2 ofS) {
    EXPECT_EQ(bounds(v[0]), ofX);
    EXPECT_EQ(bounds(v[1]), ofY);
    EXPECT_EQ(bounds(s), ofS);
  }

  CSint *v[2] = {};
  int c[2] = {};
  CSint *s = nullptr;
};

TEST_F(ScalProdEventsTest, LoweringTheSumTo0In2xMinus3yChangesNothing) {
  make(2, {0, 5}, -3, {0, 4});
  const CallLog log;
  ASSERT_TRUE(cs_LE(s, 0));
  expect({0, 5}, {0, 4}, {-12, 0});
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, s, 1, "cs_ScalProd"}}));
}

TEST_F(ScalProdEventsTest, RaisingTheSumTo8In2xMinus3yRaisesXTo4AndLowersYTo0) {
  make(2, {0, 5}, -3, {0, 4});
  ASSERT_TRUE(cs_GE(s, 8));
  expect({4, 5}, {0, 0}, {8, 10});
}

TEST_F(ScalProdEventsTest, LoweringTheSumLowersPositiveTermsAndRaisesNegativeOnes) {
  make(2, {0, 5}, -3, {0, 4});
  ASSERT_TRUE(cs_LE(s, -7));
  expect({0, 2}, {3, 4}, {-12, -7});  // excess -5: x <= 0 + 5 / 2, y >= 4 - 5 / 3
}

// Quotients are rounded towards no loss: what is left over is no reason to move a bound.
TEST_F(ScalProdEventsTest, QuotientsAreTruncated) {
  make(3, {0, 10}, 5, {0, 10});
  ASSERT_TRUE(cs_LE(s, 14));
  expect({0, 4}, {0, 2}, {0, 14});
  make(3, {0, 10}, 5, {0, 10});
  ASSERT_TRUE(cs_GE(s, 66));
  expect({6, 10}, {8, 10}, {66, 80});  // slack 14; then the raised terms leave a total of at least 58
}

TEST_F(ScalProdEventsTest, AMovedTermMovesTheSumAndTheOtherTerm) {
  make(2, {0, 5}, 3, {0, 4});
  ASSERT_TRUE(cs_LE(s, 12));
  expect({0, 5}, {0, 4}, {0, 12});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(v[0], 2));
  expect({2, 5}, {0, 2}, {4, 12});
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(s, 9));
  expect({0, 5}, {0, 4}, {9, 12});
  ASSERT_TRUE(cs_LE(v[0], 2));
  expect({0, 2}, {2, 4}, {9, 12});
}

TEST_F(ScalProdEventsTest, AMovedTermWithANegativeCoefficientMovesTheOtherWay) {
  make(-2, {0, 5}, -3, {0, 4});
  ASSERT_TRUE(cs_GE(s, -12));
  ASSERT_TRUE(cs_GE(v[0], 2));
  expect({2, 5}, {0, 2}, {-12, -4});
}

TEST_F(ScalProdEventsTest, ATermBoundInsideMovesTheSumAtBothEnds) {
  make(2, {0, 5}, -3, {0, 4});
  ASSERT_TRUE(cs_EQ(v[0], 2));
  expect({2, 2}, {0, 4}, {-8, 4});
  ASSERT_TRUE(cs_EQ(v[1], 1));
  expect({2, 2}, {1, 1}, {1, 1});
}

TEST_F(ScalProdEventsTest, ASumBoundInsideRunsBothRules) {
  make(2, {0, 5}, 3, {0, 1});
  ASSERT_TRUE(cs_EQ(s, 7));
  expect({2, 2}, {1, 1}, {7, 7});
}

TEST_F(ScalProdEventsTest, HolesPassNothing) {
  make(1, {0, 5}, 1, {0, 0});
  ASSERT_TRUE(cs_NEQ(v[0], 2) && cs_NEQ(s, 3));
  EXPECT_EQ(values(v[0]), without(range(0, 5), 2));
  EXPECT_EQ(values(s), without(range(0, 5), 3));
}

TEST_F(ScalProdEventsTest, ATotalOutOfReachFails) {
  make(2, {0, 5}, -3, {0, 4});
  ASSERT_TRUE(cs_LE(v[0], 3));
  ASSERT_TRUE(cs_GE(s, 3));
  cs_saveContext();
  EXPECT_FALSE(cs_GE(v[1], 2));
  cs_restoreContext();
  EXPECT_FALSE(cs_LE(v[0], 0));
}

// Seen through holes of the sum, which let its minimum jump when it is raised.
TEST_F(ScalProdEventsTest, TheHandlerOfTheTermsRunsTwiceForABoundTermOnly) {
  const auto minimumOfYWhenTheSumIsHeard = [this](int value) {
    cs_saveContext();
    make(1, {0, 4}, 1, {0, 10});
    for (int w = 2; w < 5; ++w) cs_NEQ(s, w);
    std::vector<int> notes;
    noteMinimumWhenRaised(s, v[1], notes);
    EXPECT_TRUE(cs_EQ(v[0], value));
    EXPECT_EQ(bounds(s).first, 5);
    EXPECT_EQ(bounds(v[1]).first, 5 - value);
    cs_restoreContext();
    return notes;
  };
  EXPECT_EQ(minimumOfYWhenTheSumIsHeard(2), std::vector{3}) << "inside: the second run sees the sum at 5";
  EXPECT_EQ(minimumOfYWhenTheSumIsHeard(4), std::vector{0}) << "at an end: the sum's own handler raises y later";
}

// The same where no code of the host runs: y is raised before the sum is heard, which raises w.
TEST_F(ScalProdEventsTest, ASumThatHasComeFurtherThanAskedForMovesTermsAgain) {
  make(1, {0, 4}, 1, {0, 10});
  for (int w = 2; w < 5; ++w) ASSERT_TRUE(cs_NEQ(s, w));
  CSint *w = cs_createCSint(0, 14);
  ASSERT_TRUE(cs_Le(s, w));
  const int mark = solver::trail.count();
  ASSERT_TRUE(cs_EQ(v[0], 2));
  std::vector<const CSint *> changed;
  solver::trail.forEachFrom(mark, [&](const TrailRecord &record) { changed.push_back(record.variable()); });
  EXPECT_EQ(changed, (std::vector<const CSint *>{v[0], v[0], s, s, v[1], w}));
}

// x is too wide once both have been raised, and is left out when it is heard: the next event of a term narrows it.
TEST_F(ScalProdEventsTest, TermsThatHaveMovedTogetherAreHeldOneAfterTheOther) {
  for (const int heardFirst : {0, 1}) {
    make(1, {3, 9}, 1, {2, 5});
    ASSERT_TRUE(cs_GE(s, 8) && cs_LE(s, 12));
    expect({3, 9}, {2, 5}, {8, 12});
    CSint *z = cs_createCSint(0, 9);
    ASSERT_TRUE(cs_Le(z, v[1 - heardFirst]) && cs_Le(z, v[heardFirst]));
    ASSERT_TRUE(cs_GE(z, 4));
    expect({4, 8}, {4, 5}, {8, 12});
  }
}

// All events but the first find nothing to do.
TEST_F(ScalProdEventsTest, TermsThatFitAreHeldOnce) {
  CSint *x[] = {cs_createCSint(0, 9), cs_createCSint(0, 9), cs_createCSint(0, 9)};
  int ones[] = {1, 1, 1};
  s = cs_ScalProd(x, ones, 3);
  ASSERT_TRUE(cs_GE(s, 12) && cs_LE(s, 20));
  CSint *z = cs_createCSint(0, 9);
  for (CSint *term : x) ASSERT_TRUE(cs_Le(z, term));
  ASSERT_TRUE(cs_GE(z, 2));
  for (CSint *term : x) EXPECT_EQ(bounds(term), Bounds2(2, 9));
  EXPECT_EQ(bounds(s), Bounds2(12, 20));
  ASSERT_TRUE(cs_GE(z, 6));
  for (CSint *term : x) EXPECT_EQ(bounds(term), Bounds2(6, 8));
}

TEST_F(ScalProdEventsTest, OneVariableWithOppositeCoefficientsIsHandledAsTwoTerms) {
  CSint *x = cs_createCSint(0, 5);
  CSint *twice[] = {x, x};
  c[0] = 1;
  c[1] = -1;
  s = cs_ScalProd(twice, c, 2);
  EXPECT_EQ(bounds(s), Bounds2(-5, 5));
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(bounds(s), Bounds2(-2, 2));
  ASSERT_TRUE(cs_EQ(x, 4));
  EXPECT_EQ(values(s), std::vector{0});
}

TEST_F(ScalProdEventsTest, RestoringTakesTheNarrowingsBack) {
  make(2, {0, 5}, -3, {0, 4});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(s, 8));
  cs_restoreContext();
  expect({0, 5}, {0, 4}, {-12, 10});
  ASSERT_TRUE(cs_LE(s, -7));
  expect({0, 2}, {3, 4}, {-12, -7});
}

// Of two sums with a term in common, each hears of what the other one has done to it.
TEST_F(ScalProdEventsTest, TotalsAreThoseOfTheTermsAsTheyAre) {
  CSint *x[] = {cs_createCSint(0, 1), cs_createCSint(0, 9), cs_createCSint(0, 9), cs_createCSint(0, 3)};
  int coefficients[] = {5, 1, 1, 1};
  s = cs_ScalProd(x, coefficients, 3);
  CSint *common[] = {x[1], x[3]};
  CSint *other = cs_ScalProd(common, coefficients + 1, 2);
  ASSERT_TRUE(cs_LE(s, 11));
  ASSERT_TRUE(cs_EQ(x[0], 1));
  EXPECT_EQ(bounds(s), Bounds2(5, 11));
  EXPECT_EQ(bounds(x[1]), Bounds2(0, 6));
  EXPECT_EQ(bounds(other), Bounds2(0, 9));
  ASSERT_TRUE(cs_GE(other, 7));
  EXPECT_EQ(bounds(x[1]), Bounds2(4, 6));
  EXPECT_EQ(bounds(x[3]), Bounds2(1, 3));
  EXPECT_EQ(bounds(s), Bounds2(9, 11));
  EXPECT_EQ(bounds(x[2]), Bounds2(0, 2));
}

// The second propagation comes to the same place of the trail as the first one.
TEST_F(ScalProdEventsTest, ACoefficientThatTheHostHasChangedCounts) {
  make(2, {0, 5}, -3, {0, 4});
  cs_saveContext();
  ASSERT_TRUE(cs_GE(v[0], 2));
  EXPECT_EQ(bounds(s), Bounds2(-8, 10));
  cs_restoreContext();
  c[0] = 1;
  cs_saveContext();
  ASSERT_TRUE(cs_GE(v[0], 2));
  EXPECT_EQ(bounds(s), Bounds2(-10, 5));
  cs_restoreContext();
}

}  // namespace

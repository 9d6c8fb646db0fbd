// SPDX-License-Identifier: MIT
// How much constraints remove, where koru.h says that it is less than one might expect.
#include "support/kit/new_variables.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

using Values = std::vector<int>;

class Consistency : public SolverTest {};

// The first table's value 3 stands at position 1, which the second table, losing 5 and 6, takes away from between the
// bounds before it moves the bound past it.
constexpr int kFirst[] = {4, 3, 1, 4};
constexpr int kSecond[] = {6, 5, 9, 8};

TEST_F(Consistency, AnElementMayKeepAValueThatAnotherElementsPositionsHaveLost) {
  CSint *index = cs_createCSint(0, 3);
  CSint *first = cs_Element(index, kFirst, 4);
  CSint *second = cs_Element(index, kSecond, 4);
  ASSERT_TRUE(cs_GE(second, 7));
  EXPECT_EQ(values(index), (Values{2, 3}));
  EXPECT_EQ(values(first), (Values{1, 3, 4})) << "3 has no position";
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(first, 3)) << "bound to it, the element fails";
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(index, 2));
  EXPECT_EQ(values(first), Values{1});
}

TEST_F(Consistency, AVariableElementOverConstantsKeepsNone) {
  CSint *columns[2][4];
  for (int i = 0; i < 4; ++i) {
    columns[0][i] = CSINT(kFirst[i]);
    columns[1][i] = CSINT(kSecond[i]);
  }
  CSint *index = cs_createCSint(0, 3);
  CSint *first = cs_VarElement(index, columns[0], 4);
  CSint *second = cs_VarElement(index, columns[1], 4);
  ASSERT_TRUE(cs_GE(second, 7));
  EXPECT_EQ(values(first), (Values{1, 4}));
}

TEST_F(Consistency, HolesThatAreOlderThanABindingDoNotPassThroughASum) {
  CSint *x = cs_createCSint(0, 4);
  CSint *y = cs_createCSint(0, 9);
  CSint *sum = cs_Add(x, y);
  ASSERT_TRUE(cs_NEQ(y, 3) && cs_EQ(x, 2));
  EXPECT_TRUE(cs_isIn(sum, 5)) << "2 + 3";
  ASSERT_TRUE(cs_NEQ(y, 6));
  EXPECT_FALSE(cs_isIn(sum, 8)) << "2 + 6, removed later";
  EXPECT_FALSE(cs_isIn(cs_Add(CSINT(2), y), 5)) << "copied at posting";
}

TEST_F(Consistency, ABoundOfAProductNeedNotBePartOfASolution) {
  CSint *x = cs_createCSint(2, 5);
  CSint *y = cs_createCSint(2, 5);
  CSint *product = cs_Mul(x, y);
  ASSERT_TRUE(cs_GE(product, 11) && cs_LE(product, 13));
  EXPECT_EQ(values(x), (Values{3, 4}));
  EXPECT_EQ(values(product), (Values{11, 12, 13})) << "12 is the only product";
}

TEST_F(Consistency, AnOperandOfAProductWaitsWhileTheOtherOneCanBeZero) {
  CSint *x = cs_createCSint(-1, 5);
  CSint *y = cs_createCSint(-1, 5);
  ASSERT_TRUE(cs_GE(cs_Mul(x, y), 25));
  EXPECT_EQ(cs_getMin(x), -1);
  CSint *v = cs_createCSint(0, 5);
  CSint *w = cs_createCSint(0, 5);
  ASSERT_TRUE(cs_GE(cs_Mul(v, w), 25));
  EXPECT_EQ(cs_getMin(v), 5) << "a 0 at a bound goes";
}

TEST_F(Consistency, AWeightedSumIsConsistentOverTheReals) {
  CSint *x[] = {cs_createCSint(0, 5), cs_createCSint(0, 5)};
  int coefficients[] = {2, 2};
  CSint *sum = cs_ScalProd(x, coefficients, 2);
  ASSERT_TRUE(cs_GE(sum, 3));
  EXPECT_EQ(cs_getMin(sum), 3) << "which is odd";
}

TEST_F(Consistency, AnAbsoluteValueMayStayThatBothSidesHaveLost) {
  CSint *x = cs_createCSint(-5, 5);
  CSint *z = cs_Abs(x);
  ASSERT_TRUE(cs_NEQ(x, 3));
  ASSERT_TRUE(cs_GE(x, -2));
  EXPECT_TRUE(cs_isIn(z, 3)) << "neither 3 nor -3 is left in x";
  EXPECT_FALSE(cs_EQ(z, 3));
}

TEST_F(Consistency, APositionThatIsTheOnlyOneFromTheStartImposesNothing) {
  CSint *x[] = {cs_createCSint(0, 2), cs_createCSint(5, 9)};
  CSint *position = cs_Index(x, 2, 1);
  EXPECT_TRUE(cs_isInstantiated(position));
  EXPECT_TRUE(cs_isFree(x[0]));
  CSint *y[] = {cs_createCSint(0, 2), cs_createCSint(0, 2)};
  CSint *either = cs_Index(y, 2, 1);
  ASSERT_TRUE(cs_NEQ(y[0], 1));
  EXPECT_EQ(values(either), Values{1});
  EXPECT_EQ(values(y[1]), Values{1}) << "one that becomes the only one binds its variable";
}

TEST_F(Consistency, AConditionOfAVariableOnItselfLetsOneValuePass) {
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_IfEq(x, x, 3, 5));
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(x, 3));
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(x, 5));
}

TEST_F(Consistency, TheMaximumOfTheLeastNarrowsNothing) {
  CSint *x[] = {cs_createCSint(0, 9), cs_createCSint(5, 9)};
  CSint *least = cs_Min(x, 2);
  ASSERT_TRUE(cs_LE(least, 3));
  EXPECT_EQ(cs_getMax(x[0]), 9) << "although x[1] is above 3";
  ASSERT_TRUE(cs_GE(least, 2));
  EXPECT_EQ(cs_getMin(x[0]), 2);
  ASSERT_TRUE(cs_LE(x[0], 2));
  EXPECT_EQ(cs_getMax(least), 2);
}

}  // namespace

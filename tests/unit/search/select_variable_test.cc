// SPDX-License-Identifier: MIT
// The four built-in selections: what each prefers, and who never qualifies.
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class SelectVariableTest : public SolverTest {
 protected:
  static void constrain(CSint *v, int times) {
    for (int i = 0; i < times; ++i) ASSERT_TRUE(cs_Le(v, cs_createCSint(0, 1000)));
  }
};

constexpr CSfindFreeVar kSelections[] = {cs_findFreeVar, cs_findFreeVarNbElements, cs_findFreeVarNbElementsMin,
                                         cs_findFreeVarNbConstraints};

TEST_F(SelectVariableTest, AnEmptyArrayHasNone) {
  CSint *x = cs_createCSint(0, 1);
  for (const CSfindFreeVar f : kSelections) {
    EXPECT_EQ(f(&x, 0), nullptr);
    EXPECT_EQ(f(&x, -1), nullptr);
    EXPECT_EQ(f(nullptr, 0), nullptr);
  }
}

TEST_F(SelectVariableTest, BoundVariablesAreNeverChosen) {
  CSint *array[] = {CSINT(1), CSINT(2)};
  for (const CSfindFreeVar f : kSelections) EXPECT_EQ(f(array, 2), nullptr);
  CSint *mixed[] = {CSINT(1), cs_createCSint(0, 5), CSINT(2)};
  for (const CSfindFreeVar f : kSelections) EXPECT_EQ(f(mixed, 3), mixed[1]);
}

TEST_F(SelectVariableTest, FindFreeVarTakesTheFirstInArrayOrder) {
  CSint *array[] = {CSINT(1), cs_createCSint(0, 5), cs_createCSint(0, 1)};
  EXPECT_EQ(cs_findFreeVar(array, 3), array[1]);
}

TEST_F(SelectVariableTest, NbElementsTakesTheFewestElementsNotTheNarrowestBounds) {
  CSint *array[] = {cs_createCSint(0, 3), fromValues({0, 50, 99}), cs_createCSint(0, 7)};
  EXPECT_EQ(cs_findFreeVarNbElements(array, 3), array[1]);
  EXPECT_EQ(cs_findFreeVarNbElementsMin(array, 3), array[1]);
}

TEST_F(SelectVariableTest, NbElementsTakesTheFirstOfEquals) {
  CSint *array[] = {cs_createCSint(0, 9), cs_createCSint(4, 6), cs_createCSint(2, 4)};
  EXPECT_EQ(cs_findFreeVarNbElements(array, 3), array[1]);
}

TEST_F(SelectVariableTest, NbElementsMinTakesTheSmallerMinimumOfEquals) {
  CSint *array[] = {cs_createCSint(4, 6), cs_createCSint(2, 4), cs_createCSint(2, 4), cs_createCSint(0, 3)};
  EXPECT_EQ(cs_findFreeVarNbElementsMin(array, 4), array[1]);
}

TEST_F(SelectVariableTest, NbConstraintsTakesTheMostConstraintsAndTheFirstOfEquals) {
  CSint *array[] = {cs_createCSint(0, 9), cs_createCSint(0, 9), cs_createCSint(0, 9)};
  EXPECT_EQ(cs_findFreeVarNbConstraints(array, 3), array[0]);
  constrain(array[1], 2);
  constrain(array[2], 2);
  EXPECT_EQ(cs_findFreeVarNbConstraints(array, 3), array[1]);
  constrain(array[2], 1);
  EXPECT_EQ(cs_findFreeVarNbConstraints(array, 3), array[2]);
}

TEST_F(SelectVariableTest, NbConstraintsIgnoresInstantiatedVariables) {
  CSint *array[] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  constrain(array[0], 5);
  ASSERT_TRUE(cs_EQ(array[0], 3));
  EXPECT_EQ(cs_findFreeVarNbConstraints(array, 2), array[1]);
}

TEST_F(SelectVariableTest, NbConstraintsCountsConstraintsThatWereUndone) {
  CSint *array[] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  cs_saveContext();
  constrain(array[1], 1);
  cs_restoreContext();
  EXPECT_EQ(cs_findFreeVarNbConstraints(array, 2), array[1]);
}

// The running best starts at the largest int, and only fewer replaces it.
TEST_F(SelectVariableTest, AVariableOfIntMaxElementsIsNotFewerThanNone) {
  CSint *x = cs_createCSint(1, INT_MAX);
  ASSERT_EQ(cs_getNbElements(x), INT_MAX);
  EXPECT_EQ(cs_findFreeVarNbElements(&x, 1), nullptr);
  EXPECT_EQ(cs_findFreeVar(&x, 1), x);
  EXPECT_EQ(cs_findFreeVarNbConstraints(&x, 1), x);
}

// A count that wrapped is below 2, so only the selection that looks at the bounds sees the variable.
TEST_F(SelectVariableTest, AVariableOverTheWholeIntRangeIsSeenByFindFreeVarOnly) {
  CSint *x = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_EQ(cs_findFreeVar(&x, 1), x);
  EXPECT_EQ(cs_findFreeVarNbElements(&x, 1), nullptr);
  EXPECT_EQ(cs_findFreeVarNbElementsMin(&x, 1), nullptr);
  EXPECT_EQ(cs_findFreeVarNbConstraints(&x, 1), nullptr);
}

}  // namespace

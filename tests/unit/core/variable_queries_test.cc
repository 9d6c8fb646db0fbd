// SPDX-License-Identifier: MIT
#include "core/narrow.h"
#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

using VariableQueriesTest = SolverTest;

std::vector<int> domainOf(CSint *v) {
  int *array = cs_getDomain(v);
  if (array == nullptr) return {};
  std::vector<int> result(array, array + (cs_getNbElements(v) > 0 ? cs_getNbElements(v) : 0));
  cs_freeDomain(array);
  return result;
}

TEST_F(VariableQueriesTest, NullVariablesAnswerWithTheFailureValue) {
  EXPECT_FALSE(cs_isFree(nullptr));
  EXPECT_FALSE(cs_isInstantiated(nullptr));
  EXPECT_EQ(cs_getMin(nullptr), 0);
  EXPECT_EQ(cs_getMax(nullptr), 0);
  EXPECT_EQ(cs_getNbElements(nullptr), 0);
  EXPECT_EQ(cs_getNbConstraints(nullptr), 0);
  EXPECT_EQ(cs_getValue(nullptr), 0);
  EXPECT_EQ(cs_getNextValue(nullptr, 3), kIntMax);
  EXPECT_EQ(cs_getPreviousValue(nullptr, 3), kIntMin);
  EXPECT_FALSE(cs_isIn(nullptr, 0));
  EXPECT_EQ(cs_getDomain(nullptr), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(VariableQueriesTest, FreeMeansTwoOrMoreElements) {
  EXPECT_TRUE(cs_isFree(cs_createCSint(0, 1)));
  EXPECT_FALSE(cs_isFree(cs_createCSint(3, 3)));
  EXPECT_TRUE(cs_isFree(fromValues({0, 100})));
  EXPECT_FALSE(cs_isInstantiated(fromValues({0, 100})));
}

TEST_F(VariableQueriesTest, TheNextValueOfAnInterval) {
  CSint *v = cs_createCSint(3, 7);
  EXPECT_EQ(cs_getNextValue(v, 7), kIntMax);
  EXPECT_EQ(cs_getNextValue(v, 100), kIntMax);
  EXPECT_EQ(cs_getNextValue(v, -7), 3);
  EXPECT_EQ(cs_getNextValue(v, 2), 3);
  EXPECT_EQ(cs_getNextValue(v, 3), 4);
  EXPECT_EQ(cs_getNextValue(v, 6), 7);
}

TEST_F(VariableQueriesTest, ThePreviousValueOfAnInterval) {
  CSint *v = cs_createCSint(3, 7);
  EXPECT_EQ(cs_getPreviousValue(v, 3), kIntMin);
  EXPECT_EQ(cs_getPreviousValue(v, -100), kIntMin);
  EXPECT_EQ(cs_getPreviousValue(v, 100), 7);
  EXPECT_EQ(cs_getPreviousValue(v, 8), 7);
  EXPECT_EQ(cs_getPreviousValue(v, 7), 6);
  EXPECT_EQ(cs_getPreviousValue(v, 4), 3);
}

TEST_F(VariableQueriesTest, NeighboursStepOverHolesFromPresentAndAbsentValues) {
  CSint *v = fromValues({1, 4, 5, 90});
  EXPECT_EQ(cs_getNextValue(v, 1), 4);
  EXPECT_EQ(cs_getNextValue(v, 2), 4);
  EXPECT_EQ(cs_getNextValue(v, 5), 90);
  EXPECT_EQ(cs_getPreviousValue(v, 90), 5);
  EXPECT_EQ(cs_getPreviousValue(v, 60), 5);
  EXPECT_EQ(cs_getPreviousValue(v, 4), 1);
}

TEST_F(VariableQueriesTest, NeighboursIgnoreBitsOutsideTheBounds) {
  CSint *v = fromValues({1, 2, 4, 8, 9});
  ASSERT_TRUE(narrowMin(v, 3) && narrowMax(v, 8));
  EXPECT_EQ(cs_getNextValue(v, 1), 4);
  EXPECT_EQ(cs_getNextValue(v, 8), kIntMax);
  EXPECT_EQ(cs_getPreviousValue(v, 9), 8);
  EXPECT_EQ(cs_getPreviousValue(v, 4), kIntMin);
  EXPECT_FALSE(cs_isIn(v, 2));
  EXPECT_FALSE(cs_isIn(v, 9));
}

TEST_F(VariableQueriesTest, NeighboursAtTheIntLimits) {
  CSint *v = cs_createCSint(kIntMin, kIntMax);
  EXPECT_EQ(cs_getNextValue(v, kIntMin), kIntMin + 1);
  EXPECT_EQ(cs_getNextValue(v, kIntMax - 1), kIntMax);
  EXPECT_EQ(cs_getNextValue(v, kIntMax), kIntMax);
  EXPECT_EQ(cs_getPreviousValue(v, kIntMax), kIntMax - 1);
  EXPECT_EQ(cs_getPreviousValue(v, kIntMin), kIntMin);
}

TEST_F(VariableQueriesTest, MembershipFollowsBoundsAndBits) {
  CSint *interval = cs_createCSint(-2, 2);
  for (int value = -5; value <= 5; ++value) EXPECT_EQ(cs_isIn(interval, value), value >= -2 && value <= 2);
  CSint *holed = fromValues({-2, 2});
  for (int value = -5; value <= 5; ++value) EXPECT_EQ(cs_isIn(holed, value), value == -2 || value == 2);
  EXPECT_FALSE(cs_isIn(holed, kIntMin));
  EXPECT_FALSE(cs_isIn(holed, kIntMax));
}

// ----- the value

struct Asked {
  CSint *variable = nullptr;
  int calls = 0;
  int codeAtCall = 0;
};

void noteAsked(CSint *v, void *extra) {
  auto *asked = static_cast<Asked *>(extra);
  asked->variable = v;
  asked->codeAtCall = cs_getErr();
  ++asked->calls;
}

TEST_F(VariableQueriesTest, TheValueOfAnInstantiatedVariableCallsNobody) {
  Asked asked;
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, noteAsked, &asked);
  EXPECT_EQ(cs_getValue(CSINT(-4)), -4);
  EXPECT_EQ(asked.calls, 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(VariableQueriesTest, TheValueOfAFreeVariableSetsTheCodeCallsTheHandlerAndReturnsTheMinimum) {
  Asked asked;
  cs_setErrHandler(CS_ERR_NOT_INSTANTIATED, noteAsked, &asked);
  CSint *v = cs_createCSint(3, 7);
  EXPECT_EQ(cs_getValue(v), 3);
  EXPECT_EQ(asked.calls, 1);
  EXPECT_EQ(asked.variable, v);
  EXPECT_EQ(asked.codeAtCall, CS_ERR_NOT_INSTANTIATED);
}

TEST_F(VariableQueriesTest, TheValueIsTheMinimumAsItIsAfterTheHandler) {
  cs_setErrHandler(
      CS_ERR_NOT_INSTANTIATED, [](CSint *v, void *) { EXPECT_TRUE(narrowMin(v, 5)); }, nullptr);
  EXPECT_EQ(cs_getValue(cs_createCSint(3, 7)), 5);
}

// ----- the domain as an array

TEST_F(VariableQueriesTest, TheDomainListsItsValuesInIncreasingOrder) {
  EXPECT_EQ(domainOf(cs_createCSint(-1, 2)), (std::vector<int>{-1, 0, 1, 2}));
  EXPECT_EQ(domainOf(fromValues({9, -3, 70})), (std::vector<int>{-3, 9, 70}));
  EXPECT_EQ(domainOf(CSINT(kIntMax)), (std::vector<int>{kIntMax}));
  EXPECT_EQ(domainOf(cs_createCSint(kIntMax - 1, kIntMax)), (std::vector<int>{kIntMax - 1, kIntMax}));
  EXPECT_EQ(domainOf(cs_createCSint(kIntMin, kIntMin + 1)), (std::vector<int>{kIntMin, kIntMin + 1}));
}

TEST_F(VariableQueriesTest, TheDomainIsAskedForInItsOwnSize) {
  CSint *v = fromValues({9, -3, 70});
  const AllocationRule counted(allowAll());
  cs_freeDomain(cs_getDomain(v));
  EXPECT_EQ(AllocationRule::sizes(), (std::vector<std::size_t>{3 * sizeof(int)}));
}

TEST_F(VariableQueriesTest, ADomainThatMemoryRefusesIsNullAndReportedOnce) {
  CSint *v = cs_createCSint(0, 9);
  const AllocationRule none(refuseAll());
  EXPECT_EQ(cs_getDomain(v), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
}

TEST_F(VariableQueriesTest, ADomainOfMoreThanIntMaxValuesIsReportedWithoutAnAttempt) {
  for (CSint *v : {cs_createCSint(0, kIntMax), cs_createCSint(kIntMin, kIntMax), cs_createCSint(-1, kIntMax)}) {
    memoryReports = 0;
    const AllocationRule counted(allowAll());
    EXPECT_EQ(cs_getDomain(v), nullptr);
    EXPECT_EQ(memoryReports, 1);
    EXPECT_EQ(AllocationRule::count(), 0);
  }
}

TEST_F(VariableQueriesTest, ADomainOfExactlyIntMaxValuesIsAskedForWhereSizesCanBeThatLarge) {
  constexpr std::uint64_t kBytes = std::uint64_t{kIntMax} * sizeof(int);
  std::vector<std::size_t> asked;
  if (kBytes <= SIZE_MAX) asked.push_back(static_cast<std::size_t>(kBytes));
  CSint *v = cs_createCSint(1, kIntMax);
  memoryReports = 0;
  const AllocationRule none(refuseAll());
  EXPECT_EQ(cs_getDomain(v), nullptr);
  EXPECT_EQ(AllocationRule::sizes(), asked);
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(VariableQueriesTest, EntriesPastTheLastValueHoldTheMaximumWhenTheCountIsTooHigh) {
  CSint *v = cs_createCSint(0, 6);
  cs_saveContext();
  ASSERT_TRUE(narrowMin(v, 2));
  cs_saveContext();
  ASSERT_TRUE(narrowMax(v, 3));
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_EQ(cs_getNbElements(v), 7);
  EXPECT_EQ(domainOf(v), (std::vector<int>{0, 1, 2, 3, 3, 3, 3}));
}

TEST_F(VariableQueriesTest, FreeingNothingIsIgnored) {
  cs_freeDomain(nullptr);
  cs_freeSearchNotify(nullptr);
  cs_freeValueSelector(nullptr);
  EXPECT_EQ(memoryReports, 0);
}

}  // namespace

// SPDX-License-Identifier: MIT
// Creation and names of variables. The queries are in variable_queries_test.cc.
#include "core/variable.h"

#include "core/solver.h"
#include "support/kit/solver_test.h"
#include "unit/core/allocation_rule.h"

namespace {

using namespace koru;
using namespace koru::test;

using VariableTest = SolverTest;

TEST_F(VariableTest, AnEmptyRangeGivesNullAndNoError) {
  EXPECT_EQ(cs_createCSint(5, 4), nullptr);
  EXPECT_EQ(cs_createCSint(kIntMax, kIntMin), nullptr);
  EXPECT_EQ(cs_createNamedCSint(5, 4, "x"), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(solver::variables.count(), 0);
}

TEST_F(VariableTest, ANewVariableIsAnIntervalWithoutNameConstraintsOrBits) {
  CSint *v = cs_createCSint(-3, 8);
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v->initialMin, -3);
  EXPECT_EQ(v->initialMax, 8);
  EXPECT_EQ(v->min, -3);
  EXPECT_EQ(v->max, 8);
  EXPECT_EQ(v->reportedMin, -3);
  EXPECT_EQ(v->reportedMax, 8);
  EXPECT_EQ(v->count, 12);
  EXPECT_EQ(v->constraintCount, 0);
  EXPECT_EQ(v->bits, nullptr);
  EXPECT_EQ(v->name, nullptr);
  EXPECT_EQ(v->constraints, nullptr);
}

TEST_F(VariableTest, AVariableFromBitsHoldsWhatIsSetInThem) {
  DomainBits *bits = DomainBits::create(0, 9, DomainBits::Fill::kNone);
  for (const int value : {3, 4, 8}) bits->set(value);
  CSint *v = createFromBits(bits);
  EXPECT_EQ(values(v), (std::vector{3, 4, 8}));
  EXPECT_EQ(v->count, 3);
  EXPECT_EQ(v->initialMin, 0);
  EXPECT_EQ(v->initialMax, 9);
  EXPECT_EQ(v->reportedMin, 0) << "the ends of the range, not of the domain";
  EXPECT_EQ(v->reportedMax, 9);
  EXPECT_EQ(values(createFromBits(DomainBits::create(-1, 1, DomainBits::Fill::kAll))), (std::vector{-1, 0, 1}));
}

TEST_F(VariableTest, NoVariableIsMadeFromEmptyBits) {
  EXPECT_EQ(createFromBits(DomainBits::create(0, 9, DomainBits::Fill::kNone)), nullptr);
  EXPECT_EQ(solver::variables.count(), 0);
  EXPECT_FALSE(solver::pool.hasLoose());
}

TEST_F(VariableTest, ARecordFillsOneCacheLine) {
  EXPECT_EQ(sizeof(CSint), 64U);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(cs_createCSint(0, 1)) % 64, 0U);
}

TEST_F(VariableTest, AConstantIsInstantiated) {
  CSint *v = CSINT(7);
  EXPECT_FALSE(cs_isFree(v));
  EXPECT_TRUE(cs_isInstantiated(v));
  EXPECT_EQ(cs_getValue(v), 7);
  EXPECT_EQ(cs_getValue(CSINT(kIntMin)), kIntMin);
}

TEST_F(VariableTest, CountsOfHugeDomainsWrap) {
  EXPECT_EQ(cs_getNbElements(cs_createCSint(1, kIntMax)), kIntMax);
  CSint *half = cs_createCSint(0, kIntMax);
  EXPECT_EQ(cs_getNbElements(half), kIntMin);
  CSint *whole = cs_createCSint(kIntMin, kIntMax);
  EXPECT_EQ(cs_getNbElements(whole), 0);
  for (CSint *v : {half, whole}) {
    EXPECT_FALSE(cs_isFree(v));
    EXPECT_FALSE(cs_isInstantiated(v));
  }
}

// ----- from values

TEST_F(VariableTest, AVariableFromValuesHoldsExactlyThem) {
  CSint *v = fromValues({3, 9, 3, 5});
  EXPECT_EQ(cs_getMin(v), 3);
  EXPECT_EQ(cs_getMax(v), 9);
  EXPECT_EQ(cs_getNbElements(v), 3);
  for (int value = 0; value <= 12; ++value) EXPECT_EQ(cs_isIn(v, value), value == 3 || value == 5 || value == 9);
}

TEST_F(VariableTest, AVariableFromValuesHasABitArrayEvenWithoutHoles) {
  CSint *v = fromValues({4, 2, 3});
  ASSERT_NE(v->bits, nullptr);
  EXPECT_EQ(v->bits->low, 2);
  EXPECT_EQ(v->bits->high, 4);
  EXPECT_EQ(cs_getNbElements(v), 3);
}

TEST_F(VariableTest, OneValueRepeatedIsAnInstantiatedVariable) {
  CSint *v = fromValues({-6, -6, -6});
  EXPECT_TRUE(cs_isInstantiated(v));
  EXPECT_EQ(cs_getValue(v), -6);
}

TEST_F(VariableTest, NoValuesGiveNullAndNoError) {
  const int unused[] = {1};
  EXPECT_EQ(cs_createCSintFromDomain(unused, 0), nullptr);
  EXPECT_EQ(cs_createCSintFromDomain(unused, -1), nullptr);
  EXPECT_EQ(cs_createCSintFromDomain(nullptr, 3), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(VariableTest, ARefusedBitArrayGivesNullThoughTheVariableWasMade) {
  const AllocationRule none(refuseAll());
  EXPECT_EQ(fromValues({1, 5}), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(solver::variables.count(), 1);
}

TEST_F(VariableTest, ABitArrayOverAllIntsIsAskedForInFullSize) {
  const AllocationRule none(refuseAll());
  EXPECT_EQ(fromValues({kIntMin, kIntMax}), nullptr);
  EXPECT_GE(AllocationRule::sizes().back(), std::size_t{1} << 29);
  EXPECT_EQ(memoryReports, 1);
}

// ----- arrays

TEST_F(VariableTest, AnArrayHoldsVariablesInOrderOfCreation) {
  CSint **array = cs_createCSintArray(3, -1, 1);
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(solver::variables.count(), 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(values(array[i]), (std::vector<int>{-1, 0, 1}));
    if (i > 0) {
      EXPECT_EQ(array[i], array[i - 1] + 1);
    }
  }
}

TEST_F(VariableTest, AnArrayBelongsToTheTrail) {
  const int records = solver::trail.count();
  ASSERT_NE(cs_createCSintArray(3, -1, 1), nullptr);
  EXPECT_EQ(solver::trail.count(), records + 1);
}

TEST_F(VariableTest, AnArrayOfFewerThanOneIsEmptyAndNotNull) {
  EXPECT_NE(cs_createCSintArray(0, 0, 1), nullptr);
  EXPECT_NE(cs_createCSintArray(-5, 0, 1), nullptr);
  EXPECT_NE(cs_createCSintArray(0, 1, 0), nullptr);
  EXPECT_EQ(solver::variables.count(), 0);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(VariableTest, AnArrayOfEmptyRangesIsNullAndStaysOnTheTrail) {
  EXPECT_EQ(cs_createCSintArray(3, 1, 0), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(solver::trail.count(), 1);
}

TEST_F(VariableTest, AnArrayThatMemoryRefusesIsNullAndReportedOnce) {
  {
    const AllocationRule none(refuseAll());
    EXPECT_EQ(cs_createCSintArray(3, 0, 1), nullptr);
    EXPECT_EQ(memoryReports, 1);
  }
  fillTrail();
  const AllocationRule onlyTheArray(refuseOnly(1));
  EXPECT_EQ(cs_createCSintArray(3, 0, 1), nullptr);
  EXPECT_EQ(memoryReports, 2);
}

TEST_F(VariableTest, AVariableThatMemoryRefusesIsNullAndTheOthersStay) {
  while (solver::variables.count() < 1022) ASSERT_NE(cs_createCSint(0, 1), nullptr);
  const AllocationRule noBlock([](std::size_t size) { return size < 1024; });
  EXPECT_EQ(cs_createCSintArray(3, 0, 1), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(solver::variables.count(), 1024);
  EXPECT_EQ(cs_createCSint(0, 1), nullptr);
  EXPECT_EQ(CSINT(1), nullptr);
  EXPECT_EQ(cs_createNamedCSint(0, 1, "x"), nullptr);
  EXPECT_EQ(memoryReports, 4);
}

// ----- names

TEST_F(VariableTest, ANameIsACopy) {
  char text[] = "first";
  CSint *v = cs_createNamedCSint(0, 9, text);
  text[0] = 'X';
  EXPECT_STREQ(cs_getName(v), "first");
  EXPECT_EQ(cs_getName(cs_createCSint(0, 1)), nullptr);
}

TEST_F(VariableTest, AShorterOrEqualNameReusesTheBuffer) {
  CSint *v = cs_createNamedCSint(0, 9, "longer");
  char *buffer = cs_getName(v);
  const AllocationRule counted(allowAll());
  for (const char *name : {"sixsix", "ab", ""}) {
    cs_setName(v, name);
    EXPECT_EQ(cs_getName(v), buffer);
    EXPECT_STREQ(buffer, name);
  }
  EXPECT_EQ(AllocationRule::count(), 0);
}

TEST_F(VariableTest, ALongerNameReplacesTheBuffer) {
  CSint *v = cs_createNamedCSint(0, 9, "ab");
  const AllocationRule counted(allowAll());
  cs_setName(v, "abcdef");
  EXPECT_STREQ(cs_getName(v), "abcdef");
  EXPECT_EQ(AllocationRule::sizes(), (std::vector<std::size_t>{7}));
}

TEST_F(VariableTest, ANameIsLongerThanTheTextNotThanTheBuffer) {
  CSint *v = cs_createNamedCSint(0, 9, "longer");
  cs_setName(v, "ab");
  cs_setName(v, "abc");
  EXPECT_STREQ(cs_getName(v), "abc");
}

TEST_F(VariableTest, APartOfTheOldNameCanBeTheNewOne) {
  CSint *v = cs_createNamedCSint(0, 9, "prefix");
  cs_setName(v, cs_getName(v) + 3);
  EXPECT_STREQ(cs_getName(v), "fix");
}

TEST_F(VariableTest, ANullNameTakesTheNameAway) {
  CSint *v = cs_createNamedCSint(0, 9, "x");
  cs_setName(v, nullptr);
  EXPECT_EQ(cs_getName(v), nullptr);
  EXPECT_NE(cs_createNamedCSint(0, 9, nullptr), nullptr);
}

TEST_F(VariableTest, ANameThatMemoryRefusesIsReportedAndLeavesNone) {
  CSint *v = cs_createNamedCSint(0, 9, "x");
  const AllocationRule none(refuseAll());
  cs_setName(v, "longer");
  EXPECT_EQ(cs_getName(v), nullptr);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  CSint *unnamed = cs_createNamedCSint(0, 9, "y");
  ASSERT_NE(unnamed, nullptr);
  EXPECT_EQ(cs_getName(unnamed), nullptr);
}

// The old name is gone by then, and one that the handler gives is gone afterwards.
TEST_F(VariableTest, AMemoryHandlerMayAskForTheNameAndGiveOne) {
  static CSint *v;
  static bool namedInHandler;
  v = cs_createNamedCSint(0, 9, "x");
  namedInHandler = true;
  const auto rename = [](CSint *, void *) {
    namedInHandler = cs_getName(v) != nullptr;
    allocationHook = nullptr;
    cs_setName(v, "by the handler");
  };
  cs_setErrHandler(CS_ERR_MEMORY, rename, nullptr);
  const AllocationRule none(refuseAll());
  cs_setName(v, "longer");
  EXPECT_FALSE(namedInHandler);
  EXPECT_EQ(cs_getName(v), nullptr);
}

TEST_F(VariableTest, NamingNothingIsIgnored) {
  cs_setName(nullptr, "x");
  EXPECT_EQ(cs_getName(nullptr), nullptr);
}

TEST_F(VariableTest, WithoutARunningSolverNothingIsCreatedAndNothingReported) {
  cs_end();
  const int domain[] = {1, 2};
  EXPECT_EQ(cs_createCSint(0, 1), nullptr);
  EXPECT_EQ(CSINT(1), nullptr);
  EXPECT_EQ(cs_createNamedCSint(0, 1, "x"), nullptr);
  EXPECT_EQ(cs_createCSintArray(2, 0, 1), nullptr);
  EXPECT_EQ(cs_createCSintArray(0, 0, 1), nullptr);
  EXPECT_EQ(cs_createCSintFromDomain(domain, 2), nullptr);
  EXPECT_EQ(memoryReports, 0);
}

}  // namespace

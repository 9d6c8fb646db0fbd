// SPDX-License-Identifier: MIT
// Sizes: below one, reversed, and very large.
#include <climits>
#include <cstdio>
#include <string>

#include "limits/large_arrays.h"
#include "support/kit/refuser.h"
#include "support/kit/written_text.h"

namespace {

using namespace koru;
using namespace koru::test;

class SizeLimitsTest : public LargeTest {
 protected:
  // The variable of the current level, without a walk over the array.
  static CSint *selectNext(CSint **array, int size) {
    const int level = solver::contexts.count();
    return level < size ? array[level] : nullptr;
  }

  static constexpr int kDeep = 10000;
};

TEST_F(SizeLimitsTest, ReversedBoundsGiveNullWithoutAReport) {
  EXPECT_EQ(cs_createCSint(INT_MAX, INT_MIN), nullptr);
  EXPECT_EQ(cs_createCSint(5, 4), nullptr);
  EXPECT_EQ(cs_createNamedCSint(INT_MIN + 1, INT_MIN, "x"), nullptr);
  EXPECT_EQ(cs_createCSintArray(3, 1, 0), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(SizeLimitsTest, SizesBelowOneAreEmpty) {
  const int value = 3;
  CSint *x = cs_createCSint(0, 1);
  for (const int size : {0, -1, INT_MIN}) {
    EXPECT_NE(cs_createCSintArray(size, 0, 9), nullptr);
    EXPECT_EQ(cs_createCSintFromDomain(&value, size), nullptr);
    EXPECT_EQ(cs_findFreeVar(&x, size), nullptr);
    EXPECT_EQ(cs_findFreeVarNbElements(&x, size), nullptr);
    EXPECT_EQ(cs_findFreeVarNbElementsMin(&x, size), nullptr);
    EXPECT_EQ(cs_findFreeVarNbConstraints(&x, size), nullptr);
    EXPECT_EQ(cs_AllNeq(&x, size), 1);
    EXPECT_TRUE(cs_search(&x, size, cs_findFreeVar));
    EXPECT_TRUE(cs_findAll(&x, size, cs_findFreeVar, nullptr));
    EXPECT_TRUE(cs_Vsearch(size, nullptr, cs_findFreeVar));
  }
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(SizeLimitsTest, LabelsAtTheEndsOfTheIntRangeCloseNothing) {
  cs_saveContext();
  for (const int label : {INT_MIN, -1, 0, 2, INT_MAX}) {
    cs_restoreContextUntil(label);
    cs_acceptContextUntil(label);
    cs_forgetSaveContextUntil(label);
    EXPECT_EQ(solver::contexts.count(), 1);
  }
}

TEST_F(SizeLimitsTest, AFailLimitOfIntMaxIsNotReached) {
  CSint *x = cs_createCSint(0, 3);
  std::function<bool(int)> never = [](int) { return false; };
  ASSERT_TRUE(postRefuser(x, never));
  EXPECT_FALSE(cs_searchFail(&x, 1, cs_findFreeVar, INT_MAX));
  EXPECT_EQ(cs_getNbFails(), 4);
  EXPECT_EQ(solver::contexts.count(), 0);
}

TEST_F(SizeLimitsTest, AVeryLongNameIsKeptAndPrinted) {
  const std::string name(1000000, 'n');
  CSint *x = cs_createNamedCSint(7, 7, name.c_str());
  EXPECT_EQ(cs_getName(x), name);
  std::FILE *file = temporaryFile();
  cs_fprintf(file, "%T", x);
  EXPECT_EQ(std::ftell(file), static_cast<long>(name.size() + 3));
  std::fclose(file);
  cs_setName(x, "n");
  EXPECT_STREQ(cs_getName(x), "n");
}

TEST_F(SizeLimitsTest, ALargeArrayOfVariablesIsAllDifferent) {
  CSint **x = cs_createCSintArray(kMany, 0, kMany - 1);
  ASSERT_EQ(cs_AllNeq(x, kMany), 1);
  ASSERT_TRUE(cs_EQ(x[kMany / 2], 0));
  EXPECT_EQ(cs_getMin(x[0]), 1);
  EXPECT_EQ(cs_getMin(x[kMany - 1]), 1);
  ASSERT_TRUE(cs_EQ(x[0], kMany - 1));
  EXPECT_EQ(cs_getMax(x[kMany - 1]), kMany - 2);
}

TEST_F(SizeLimitsTest, ASpanOneShortOfALargeArrayIsRefused) {
  EXPECT_EQ(cs_AllNeq(cs_createCSintArray(kMany, 1, kMany - 1), kMany), 0);
}

// Propagation is queued, so a chain of any length takes no stack.
TEST_F(SizeLimitsTest, ALongChainOfSumsPropagatesFromEndToEnd) {
  CSint **x = cs_createCSintArray(kMany, 0, 1);
  CSint *total = x[0];
  for (int i = 1; i < kMany; ++i) total = cs_Add(total, x[i]);
  ASSERT_NE(total, nullptr);
  EXPECT_EQ(cs_getMax(total), kMany);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(total, kMany));
  for (int i = 0; i < kMany; ++i) ASSERT_EQ(cs_getMin(x[i]), 1);
  cs_restoreContext();
  EXPECT_TRUE(cs_isFree(x[0]));
  ASSERT_TRUE(cs_EQ(total, 0));
  EXPECT_EQ(cs_getMax(x[0]), 0);
}

TEST_F(SizeLimitsTest, ALongChainOfOrdersPropagatesFromEndToEnd) {
  CSint **x = cs_createCSintArray(kMany, 0, kMany);
  for (int i = 1; i < kMany; ++i) ASSERT_TRUE(cs_Le(x[i - 1], x[i]));
  ASSERT_TRUE(cs_GE(x[0], 5));
  EXPECT_EQ(cs_getMin(x[kMany - 1]), 5);
  ASSERT_TRUE(cs_LE(x[kMany - 1], 5));
  EXPECT_EQ(cs_getValue(x[0]), 5);
}

TEST_F(SizeLimitsTest, ASearchOfTenThousandLevelsSucceedsAndIsTakenBack) {
  CSint **x = cs_createCSintArray(kDeep, 0, 1);
  EXPECT_TRUE(cs_search(x, kDeep, selectNext));
  EXPECT_EQ(cs_getNbChoicePoints(), kDeep);
  EXPECT_EQ(solver::contexts.count(), kDeep);
  EXPECT_EQ(cs_getValue(x[kDeep - 1]), 0);
  cs_restoreAll();
  for (int i = 0; i < kDeep; ++i) ASSERT_TRUE(cs_isFree(x[i]));
}

TEST_F(SizeLimitsTest, AFailLimitLeavesADeepSearchFromItsDeepestLevel) {
  CSint **x = cs_createCSintArray(kDeep, 0, 1);
  std::function<bool(int)> never = [](int) { return false; };
  ASSERT_TRUE(postRefuser(x[kDeep - 1], never));
  EXPECT_FALSE(cs_searchFail(x, kDeep, selectNext, 5));
  EXPECT_EQ(cs_getNbFails(), 5);
  EXPECT_EQ(cs_getNbChoicePoints(), (kDeep - 1) + 2 + (1 + 2) + (2 + 1));
  EXPECT_EQ(solver::contexts.count(), kDeep);
  cs_restoreAll();
  EXPECT_TRUE(cs_isFree(x[0]));
}

TEST_F(SizeLimitsTest, TenThousandContextsNest) {
  CSint *x = cs_createCSint(0, kDeep);
  for (int i = 1; i <= kDeep; ++i) {
    ASSERT_EQ(cs_saveContext(), i);
    ASSERT_TRUE(cs_GE(x, i));
  }
  cs_restoreContextUntil(5001);
  EXPECT_EQ(cs_getMin(x), 5000);
  cs_restoreAll();
  EXPECT_EQ(cs_getMin(x), 0);
}

}  // namespace

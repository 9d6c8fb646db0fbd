// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>
#include <random>
#include <vector>

#include "koru_extras.h"
#include "support/kit/failing_allocations.h"
#include "support/kit/instrumented.h"
#include "support/kit/solver_test.h"

namespace koru::test {
namespace {

using Values = std::vector<int>;

using ElementOfTest = SolverTest;

TEST_F(ElementOfTest, IndexAndResultNarrowEachOther) {
  const int table[] = {5, 3, 9, 3};
  CSint *index = cs_createCSint(-2, 9);
  CSint *result = cs_createCSint(0, 8);
  ASSERT_TRUE(cs_ElementOf(index, table, 4, result));
  EXPECT_EQ(values(index), (Values{0, 1, 3}));
  EXPECT_EQ(values(result), (Values{3, 5}));
  ASSERT_TRUE(cs_NEQ(result, 5));
  EXPECT_EQ(values(index), (Values{1, 3}));
  EXPECT_EQ(cs_getValue(result), 3);
}

TEST_F(ElementOfTest, TheTableIsCopied) {
  CSint *index = cs_createCSint(0, 1);
  CSint *result = cs_createCSint(0, 9);
  {
    int table[] = {4, 6};
    ASSERT_TRUE(cs_ElementOf(index, table, 2, result));
    table[0] = table[1] = 0;
  }
  ASSERT_TRUE(cs_EQ(index, 0));
  EXPECT_EQ(cs_getValue(result), 4);
}

// Over more values than a walk over positions is for; taking out inner ones needs bits.
TEST_F(ElementOfTest, FailsWithoutMemoryForTheHolesOfItsResult) {
  const int table[] = {0, 2500, 5000};
  for (int k = 0; k == 0 || FailingAllocator::failures() > 0; ++k) {
    cs_saveContext();
    CSint *index = cs_createCSint(0, 2);
    CSint *result = cs_createCSint(0, 5000);
    bool posted = false;
    {
      const FailingAllocator failing(k, Failing::kOnce);
      posted = cs_ElementOf(index, table, 3, result);
    }
    EXPECT_EQ(posted, FailingAllocator::failures() == 0) << k;
    if (posted) {
      EXPECT_EQ(values(result), (Values{0, 2500, 5000}));
    }
    cs_restoreContext();
  }
  expectSolverUsable();
}

TEST_F(ElementOfTest, AWideResultKeepsInnerValues) {
  const int table[] = {INT_MIN, 0, INT_MAX};
  CSint *index = cs_createCSint(0, 2);
  CSint *result = cs_createCSint(INT_MIN, INT_MAX);
  ASSERT_TRUE(cs_ElementOf(index, table, 3, result));
  EXPECT_TRUE(cs_isIn(result, 17));
  ASSERT_TRUE(cs_NEQ(index, 2));
  EXPECT_EQ(cs_getMax(result), 0);
  ASSERT_TRUE(cs_GT(result, INT_MIN));
  EXPECT_EQ(cs_getValue(index), 1);
}

// In results near each other and far apart: what has a partner is left, and nothing else.
TEST_F(ElementOfTest, WhatHasAPartnerIsLeft) {
  std::mt19937 random{1};
  for (int i = 0; i < rounds(3000) && !HasFailure(); ++i) {
    const int step = i % 2 == 0 ? 1 : 5000;
    Values table, positions, results, leftOfIndex, leftOfResult;
    for (int k = 0; k < 12; ++k) table.push_back(step * static_cast<int>(random() % 8));
    for (int k = 0; k < 12; ++k)
      if (random() % 3 != 0) positions.push_back(k);
    for (int k = 0; k < 8; ++k)
      if (random() % 2 != 0) results.push_back(step * k);
    for (const int position : positions)
      if (std::ranges::count(results, table[static_cast<std::size_t>(position)]) > 0) leftOfIndex.push_back(position);
    for (const int result : results)
      if (std::ranges::any_of(leftOfIndex, [&](int k) { return table[static_cast<std::size_t>(k)] == result; }))
        leftOfResult.push_back(result);
    if (positions.empty() || results.empty()) continue;
    CSint *index = fromValues(positions), *result = fromValues(results);
    ASSERT_EQ(cs_ElementOf(index, table.data(), 12, result), !leftOfIndex.empty());
    if (leftOfIndex.empty()) continue;
    EXPECT_EQ(values(index), leftOfIndex);
    EXPECT_EQ(values(result), leftOfResult);
  }
}

TEST_F(ElementOfTest, IndexAndResultMayBeOne) {
  const int table[] = {1, 1, 2, 0};
  CSint *x = cs_createCSint(0, 3);
  ASSERT_TRUE(cs_ElementOf(x, table, 4, x));
  EXPECT_EQ(values(x), (Values{1, 2}));
}

TEST_F(ElementOfTest, RefusesWhatMakesNoSense) {
  const int table[] = {1, 2};
  CSint *x = cs_createCSint(0, 3);
  EXPECT_FALSE(cs_ElementOf(nullptr, table, 2, x));
  EXPECT_FALSE(cs_ElementOf(x, nullptr, 2, x));
  EXPECT_FALSE(cs_ElementOf(x, table, 2, nullptr));
  EXPECT_FALSE(cs_ElementOf(x, table, 0, x));
  EXPECT_FALSE(cs_ElementOf(x, table, -1, x));
  EXPECT_FALSE(cs_ElementOf(cs_createCSint(5, 9), table, 2, x));
}

}  // namespace
}  // namespace koru::test

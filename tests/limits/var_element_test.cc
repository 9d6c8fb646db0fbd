// SPDX-License-Identifier: MIT
// Variable elements at the ends of the int range, over ranges too wide for a table, and over many positions.
#include <climits>

#include "support/constraints/var_element.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::selection;

using VarElementLimitsTest = SelectionTest;

TEST_F(VarElementLimitsTest, TheLargestIntsAreValuesLikeOthers) {
  make(cs_VarElement, range(0, 1), {{INT_MAX - 4, INT_MAX - 1, INT_MAX}, {INT_MAX - 2, INT_MAX}});
  EXPECT_EQ(values(value), (Values{INT_MAX - 4, INT_MAX - 2, INT_MAX - 1, INT_MAX}));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(index, 1));
  EXPECT_EQ(values(value), (Values{INT_MAX - 2, INT_MAX}));
  cs_restoreContext();
  cs_saveContext();
  ASSERT_TRUE(cs_LE(vars[0], INT_MAX - 1));
  EXPECT_EQ(values(value), (Values{INT_MAX - 4, INT_MAX - 2, INT_MAX - 1, INT_MAX}));
  ASSERT_TRUE(cs_GE(vars[0], INT_MAX - 1));
  EXPECT_EQ(values(value), (Values{INT_MAX - 2, INT_MAX - 1, INT_MAX}));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(value, INT_MAX));
  EXPECT_EQ(values(index), range(0, 1));
}

// The smallest int is also how a position without a known value is noted.
TEST_F(VarElementLimitsTest, TheSmallestIntsAreValuesLikeOthers) {
  make(cs_VarElement, range(0, 1), {{INT_MIN, INT_MIN + 2}, {INT_MIN, INT_MIN + 1, INT_MIN + 5}});
  EXPECT_EQ(values(value), (Values{INT_MIN, INT_MIN + 1, INT_MIN + 2, INT_MIN + 5}));
  ASSERT_TRUE(cs_NEQ(vars[0], INT_MIN));
  EXPECT_EQ(values(value), (Values{INT_MIN, INT_MIN + 1, INT_MIN + 2, INT_MIN + 5}));
  cs_saveContext();
  ASSERT_TRUE(cs_LE(value, INT_MIN + 1));
  EXPECT_EQ(state(), (State{{1}, {INT_MIN, INT_MIN + 1}, {{INT_MIN + 2}, {INT_MIN, INT_MIN + 1}}}));
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(vars[1], INT_MIN + 1));
  EXPECT_EQ(values(value), (Values{INT_MIN + 1, INT_MIN + 2, INT_MIN + 5}));
}

// A table for all ints takes 16 GB, which the allocator here refuses.
TEST_F(VarElementLimitsTest, ARangeTooWideForATableIsExhaustedMemory) {
  static std::size_t largest;
  largest = 0;
  allocationHook = [](std::size_t size) {
    largest = std::max(largest, size);
    return size < 1000000000;
  };
  index = cs_createCSint(0, 1);
  vars = {CSINT(INT_MIN), CSINT(INT_MAX)};
  EXPECT_EQ(cs_VarElement(index, vars.data(), 2), nullptr);
  allocationHook = nullptr;
  EXPECT_GT(largest, std::size_t{16} << 30U);
  EXPECT_EQ(memoryReports, 1);
  EXPECT_EQ(cs_getErr(), CS_ERR_MEMORY);
  EXPECT_EQ(cs_getNbConstraints(index), 0);
}

// Overlapping intervals are covered once: a walk over each would take two thousand million steps.
TEST_F(VarElementLimitsTest, ManyWidePositionsArePostedAndNarrowed) {
  constexpr int kWide = 1000000;
  constexpr int kMany = 2000;
  index = cs_createCSint(0, kMany - 1);
  for (int i = 0; i < kMany; ++i) vars.push_back(cs_createCSint(i, kWide + i));
  value = cs_VarElement(index, vars.data(), kMany);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(cs_getNbElements(value), kWide + kMany);
  EXPECT_EQ(cs_getMax(value), kWide + kMany - 1);
  ASSERT_TRUE(cs_GE(vars[0], 5));
  EXPECT_EQ(cs_getMin(value), 1);
  ASSERT_TRUE(cs_EQ(value, kWide + 1));
  EXPECT_EQ(cs_getMin(index), 1);
}

// Each but a short first one reaches a little further, upwards or downwards, than the one before it: a walk over each
// would take minutes.
TEST_F(VarElementLimitsTest, PostingOverlappingPositionsTakesTheirUnionNotTheirSum) {
  constexpr int kWide = 1000000;
  constexpr int kMany = 40000;
  for (const int step : {100, -100}) {
    vars = {cs_createCSint(-9000000, -8999998)};
    for (int i = 0; i < kMany; ++i) vars.push_back(cs_createCSint(1000 + i * step, 1000 + kWide + i * step));
    value = cs_VarElement(cs_createCSint(0, kMany), vars.data(), kMany + 1);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(cs_getNbElements(value), 3 + kWide + 1 + (kMany - 1) * 100) << "step " << step;
  }
}

}  // namespace

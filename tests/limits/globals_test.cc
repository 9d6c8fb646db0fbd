// SPDX-License-Identifier: MIT
// Element, index, membership, occurrence, minimum and maximum at the ends of the int range and over large arrays. Meant
// to run under a sanitizer.
#include <climits>
#include <numeric>
#include <vector>

#include "limits/large_arrays.h"

namespace {

using namespace koru;
using namespace koru::test;

class GlobalLimits : public LargeTest {};

TEST_F(GlobalLimits, AnElementOfValuesAtEitherEndOfTheInts) {
  for (const int end : {INT_MIN, INT_MAX - 3}) {
    const std::vector<int> table{end + 1, end + 3, end, end + 1};
    CSint *index = cs_createCSint(-9, 9);
    CSint *value = cs_Element(index, table.data(), 4);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(values(index), (std::vector{0, 1, 2, 3}));
    EXPECT_EQ(values(value), (std::vector{end, end + 1, end + 3}));
    cs_saveContext();
    ASSERT_TRUE(cs_GE(value, end + 1) && cs_LE(value, end + 1));
    EXPECT_EQ(values(index), (std::vector{0, 3}));
    cs_restoreContext();
    ASSERT_TRUE(cs_NEQ(value, end + 1));
    EXPECT_EQ(values(index), (std::vector{1, 2}));
  }
}

TEST_F(GlobalLimits, TheLargestSizeIsOnlyRefused) {
  const int one = 1;
  EXPECT_EQ(cs_Element(cs_createCSint(-9, -1), &one, INT_MAX), nullptr);
  EXPECT_EQ(cs_Element(cs_createCSint(0, 9), &one, INT_MIN), nullptr);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(GlobalLimits, MembershipAtTheEndsOfTheInts) {
  const int ends[] = {INT_MAX, INT_MIN};
  CSint *low = cs_createCSint(INT_MIN, INT_MIN + 2);
  EXPECT_EQ(cs_InArray(low, ends, 2), 1);
  EXPECT_EQ(values(low), std::vector{INT_MIN});
  CSint *high = cs_createCSint(INT_MAX - 2, INT_MAX);
  EXPECT_EQ(cs_NotInArray(high, ends, 2), 1);
  EXPECT_EQ(cs_NotInInterval(high, INT_MIN, INT_MAX - 2), 1);
  EXPECT_EQ(values(high), std::vector{INT_MAX - 1});
  EXPECT_EQ(cs_NotInInterval(cs_createCSint(INT_MAX - 2, INT_MAX), INT_MAX, INT_MAX), 1);
  EXPECT_EQ(cs_NotInInterval(cs_createCSint(INT_MAX - 9, INT_MAX), INT_MAX - 1, INT_MAX), 1);
  EXPECT_EQ(cs_NotInInterval(cs_createCSint(INT_MAX - 2, INT_MAX), INT_MIN, INT_MAX), 0);
  EXPECT_EQ(cs_InInterval(cs_createCSint(INT_MIN, INT_MAX), INT_MIN, INT_MAX), 1);
}

// Of everything only what overlaps is looked at.
TEST_F(GlobalLimits, AFilterFromEndToEndOfTheIntsGoesByTheDomain) {
  CSint *v = cs_createCSint(7, 9);
  EXPECT_EQ(cs_NotInInterval(v, INT_MIN, 7), 1);
  EXPECT_EQ(cs_NotInInterval(v, 9, INT_MAX), 1);
  EXPECT_EQ(values(v), std::vector{8});
}

TEST_F(GlobalLimits, AnIndexOfAValueAtEitherEndOfTheInts) {
  for (const int end : {INT_MIN, INT_MAX}) {
    CSint *x[] = {cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(0, 1), cs_createCSint(INT_MIN, INT_MAX)};
    CSint *position = cs_Index(x, 3, end);
    ASSERT_EQ(values(position), (std::vector{0, 2}));
    ASSERT_TRUE(end == INT_MIN ? cs_GE(x[0], INT_MIN + 1) : cs_LE(x[0], INT_MAX - 1));
    EXPECT_EQ(values(position), std::vector{2});
    EXPECT_EQ(cs_getMin(x[2]), end);
    EXPECT_EQ(cs_getMax(x[2]), end);
    // The array goes, and the constraints that keep it must go first.
    cs_end();
    SetUp();
  }
}

TEST_F(GlobalLimits, TheLeastAndTheGreatestOfWholeRanges) {
  CSint *x[] = {cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(INT_MIN, INT_MAX)};
  CSint *least = cs_Min(x, 2);
  CSint *greatest = cs_Max(x, 2);
  ASSERT_TRUE(cs_GE(least, INT_MAX - 1) && cs_LE(greatest, INT_MAX));
  EXPECT_EQ(values(x[1]), (std::vector{INT_MAX - 1, INT_MAX}));
  ASSERT_TRUE(cs_EQ(x[0], INT_MAX));
  EXPECT_EQ(values(greatest), std::vector{INT_MAX});
}

TEST_F(GlobalLimits, OccurrencesOfAValueAtEitherEndOfTheInts) {
  for (const int end : {INT_MIN, INT_MAX}) {
    std::vector<CSint *> x{cs_createCSint(INT_MIN, INT_MAX), cs_createCSint(-1, 1), cs_createCSint(end, end)};
    CSint *count = cs_OccurDomain(end, x.data(), 3);
    ASSERT_EQ(values(count), (std::vector{1, 2}));
    cs_saveContext();
    ASSERT_TRUE(end == INT_MIN ? cs_GE(x[0], INT_MIN + 1) : cs_LE(x[0], INT_MAX - 1));
    EXPECT_EQ(values(count), std::vector{1});
    cs_restoreContext();
    ASSERT_TRUE(cs_EQ(x[0], end));
    EXPECT_EQ(values(count), std::vector{2});
    cs_restoreAll();
    cs_end();
    SetUp();
  }
}

TEST_F(GlobalLimits, CountsBeyondTheIntRangeFail) {
  CSint *x[] = {cs_createCSint(0, 9)};
  EXPECT_FALSE(cs_OccurConstraints(CSINT(INT_MIN), 4, x, 1));
  EXPECT_FALSE(cs_OccurConstraints(CSINT(INT_MAX), 4, x, 1));
  CSint *count = cs_createCSint(INT_MIN, INT_MAX);
  EXPECT_TRUE(cs_OccurConstraints(count, 4, x, 1));
  EXPECT_EQ(values(count), (std::vector{0, 1}));
}

// Positions that are gone are not walked over again: that would take minutes.
TEST_F(GlobalLimits, AnElementWhoseIndexShrinksStepByStep) {
  constexpr int kSteps = 300000;
  const std::vector<int> table(kSteps, 7);
  for (const auto narrow : {cs_GE, cs_LE}) {
    CSint *index = cs_createCSint(0, kSteps - 1);
    ASSERT_NE(cs_Element(index, table.data(), kSteps), nullptr);
    for (int i = 1; i < kSteps; ++i) ASSERT_TRUE(narrow(index, narrow == cs_GE ? i : kSteps - 1 - i));
    EXPECT_TRUE(cs_isInstantiated(index));
  }
}

TEST_F(GlobalLimits, AnElementWhoseValueShrinksStepByStep) {
  constexpr int kSteps = 300000;
  std::vector<int> table(kSteps);
  std::iota(table.begin(), table.end(), 0);
  for (const auto narrow : {cs_GE, cs_LE}) {
    CSint *index = cs_createCSint(0, kSteps - 1);
    CSint *value = cs_Element(index, table.data(), kSteps);
    ASSERT_NE(value, nullptr);
    for (int i = 1; i < kSteps; ++i) ASSERT_TRUE(narrow(value, narrow == cs_GE ? i : kSteps - 1 - i));
    EXPECT_TRUE(cs_isInstantiated(index));
  }
}

TEST_F(GlobalLimits, AnElementOfALargeTable) {
  std::vector<int> table(kMany);
  for (int i = 0; i < kMany; ++i) table[static_cast<std::size_t>(i)] = i % 1000;
  CSint *index = cs_createCSint(0, INT_MAX);
  CSint *value = cs_Element(index, table.data(), kMany);
  ASSERT_EQ(cs_getNbElements(value), 1000);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(value, 7));
  EXPECT_EQ(cs_getNbElements(index), kMany / 1000);
  cs_restoreContext();
  EXPECT_EQ(cs_getNbElements(index), kMany);
  ASSERT_TRUE(cs_GE(index, kMany - 500));
  EXPECT_EQ(cs_getMin(value), 500);
  EXPECT_EQ(cs_getNbElements(value), 500);
}

TEST_F(GlobalLimits, LargeArraysAreCountedAndCompared) {
  CSint **x = cs_createCSintArray(kMany, 0, 9);
  CSint *count = cs_OccurDomain(4, x, kMany);
  CSint *least = cs_Min(x, kMany);
  CSint *position = cs_Index(x, kMany, 4);
  ASSERT_TRUE(cs_EQ(x[kMany - 1], 4) && cs_NEQ(x[0], 4));
  EXPECT_EQ(cs_getMin(count), 1);
  EXPECT_EQ(cs_getMax(count), kMany - 1);
  EXPECT_EQ(cs_getMin(position), 1);
  ASSERT_TRUE(cs_EQ(count, kMany - 1));
  EXPECT_EQ(cs_getValue(x[kMany / 2]), 4);
  ASSERT_TRUE(cs_GE(least, 4));
  EXPECT_EQ(cs_getMin(x[0]), 5);
  EXPECT_EQ(cs_getValue(least), 4);
}

}  // namespace

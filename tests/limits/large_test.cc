// SPDX-License-Identifier: MIT
// Large numbers of things: variables, undo records, constraints on one variable, choice points, no-goods, names.
#include <climits>
#include <numeric>
#include <string>

#include "limits/large_arrays.h"
#include "support/kit/written_text.h"

namespace {

using namespace koru;
using namespace koru::test;

class HeavyLargeTest : public LargeTest {
 protected:
  void SetUp() override {
    LargeTest::SetUp();
    solver::checked.period = solver::checked.untilNext = 10000000;
  }
  static void checkInvariants() {
    solver::checked.untilNext = 1;
    check::invariantsWhenIdle();
  }

  static constexpr int kMillion = 1000000;
};

TEST_F(HeavyLargeTest, AMillionVariablesPassABoundFromEndToEndAndBack) {
  CSint **x = cs_createCSintArray(kMillion, 0, 3);
  ASSERT_NE(x, nullptr);
  for (int i = 1; i < kMillion; ++i) ASSERT_TRUE(cs_Le(x[i - 1], x[i]));
  EXPECT_EQ(solver::variables.blockCount(), (kMillion + 1023) / 1024);
  cs_saveContext();
  ASSERT_TRUE(cs_GE(x[0], 2));
  EXPECT_EQ(cs_getMin(x[kMillion - 1]), 2);
  ASSERT_TRUE(cs_LE(x[kMillion - 1], 2));
  EXPECT_EQ(cs_getValue(x[0]), 2);
  checkInvariants();
  cs_restoreContext();
  EXPECT_EQ(cs_getNbElements(x[kMillion - 1]), 4);
  checkInvariants();
}

TEST_F(HeavyLargeTest, AMillionVariablesAddUp) {
  CSint **x = cs_createCSintArray(kMillion, -1, 3000);
  CSint *const sum = cs_Sigma(x, kMillion);
  ASSERT_NE(sum, nullptr);
  EXPECT_EQ(cs_getMin(sum), -kMillion);
  EXPECT_EQ(cs_getMax(sum), INT_MAX) << "three thousand million is clamped";
  ASSERT_TRUE(cs_EQ(x[kMillion - 1], 3000));
  EXPECT_EQ(cs_getMin(sum), -kMillion + 3001);
}

TEST_F(HeavyLargeTest, AMillionVariablesAreCountedAndTheLeastOfThemIsKnown) {
  CSint **x = cs_createCSintArray(kMillion, 0, 1);
  CSint *const ones = cs_OccurDomain(1, x, kMillion);
  CSint *const least = cs_Min(x, kMillion);
  ASSERT_NE(ones, nullptr);
  EXPECT_EQ(cs_getMax(ones), kMillion);
  ASSERT_TRUE(cs_EQ(least, 1));
  EXPECT_EQ(cs_getValue(ones), kMillion);
}

TEST_F(HeavyLargeTest, TwoMillionUndoRecordsAreTakenBackAndTheirBlocksUsedAgain) {
  CSint *const v = cs_createCSint(0, 2 * kMillion);
  int blocks = 0;
  for (int run = 0; run < 2; ++run) {
    cs_saveContext();
    for (int i = 1; i <= 2 * kMillion; ++i) ASSERT_TRUE(cs_GE(v, i));
    EXPECT_EQ(solver::trail.count(), 2 * kMillion);
    EXPECT_TRUE(run == 0 || solver::trail.blockCount() == blocks);
    blocks = solver::trail.blockCount();
    checkInvariants();
    cs_restoreContext();
    EXPECT_EQ(cs_getNbElements(v), 2 * kMillion + 1);
  }
  EXPECT_EQ(blocks, (2 * kMillion + 1023) / 1024);
}

TEST_F(HeavyLargeTest, TwoMillionUndoRecordsAreAcceptedAtOnce) {
  CSint *const v = cs_createCSint(0, 2 * kMillion);
  cs_saveContext();
  for (int i = 1; i <= 2 * kMillion; ++i) ASSERT_TRUE(cs_GE(v, i));
  cs_acceptContext();
  EXPECT_EQ(solver::trail.count(), 0);
  EXPECT_EQ(cs_getMin(v), 2 * kMillion);
}

TEST_F(HeavyLargeTest, AMillionConstraintsOnOneVariableAreAllWoken) {
  CSint *const hub = cs_createCSint(0, 1);
  CSint **x = cs_createCSintArray(kMillion, 0, 1);
  for (int i = 0; i < kMillion; ++i) ASSERT_TRUE(cs_Neq(hub, x[i]));
  EXPECT_EQ(cs_getNbConstraints(hub), kMillion);
  ASSERT_TRUE(cs_EQ(hub, 1));
  for (int i = 0; i < kMillion; ++i) ASSERT_EQ(cs_getMax(x[i]), 0);
}

TEST_F(HeavyLargeTest, AMillionContextsNest) {
  CSint *const v = cs_createCSint(0, kMillion);
  for (int i = 1; i <= kMillion; ++i) {
    ASSERT_EQ(cs_saveContext(), i);
    ASSERT_TRUE(cs_GE(v, i));
  }
  cs_restoreContextUntil(kMillion / 2 + 1);
  EXPECT_EQ(cs_getMin(v), kMillion / 2);
  cs_forgetSaveContextUntil(2);
  cs_restoreAll();
  EXPECT_EQ(cs_getMin(v), 0);
}

TEST_F(HeavyLargeTest, ADomainOfAHundredMillionValuesHasHoles) {
  CSint *const v = cs_createCSint(-50 * kMillion, 50 * kMillion);
  ASSERT_TRUE(cs_NEQ(v, 0));
  EXPECT_EQ(cs_getNbElements(v), 100 * kMillion);
  ASSERT_TRUE(cs_NotInInterval(v, 1, kMillion));
  EXPECT_EQ(cs_getNextValue(v, -1), kMillion + 1);
  EXPECT_EQ(textOf([v](std::FILE *f) { cs_fprintf(f, "%D", v); }), "{-50000000..-1, 1000001..50000000}");
}

TEST_F(HeavyLargeTest, ATableOfAMillionIntsIsLookedUp) {
  std::vector<int> table(kMillion);
  std::iota(table.begin(), table.end(), -kMillion);
  CSint *const index = cs_createCSint(INT_MIN, INT_MAX);
  CSint *const value = cs_Element(index, table.data(), kMillion);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(cs_getMax(index), kMillion - 1);
  ASSERT_TRUE(cs_EQ(value, -7));
  EXPECT_EQ(cs_getValue(index), kMillion - 7);
}

class LargeTextTest : public LargeTest {};

TEST_F(LargeTextTest, NamesOfAMegabyteAreReplacedByLongerAndShorterOnes) {
  const std::string name(1 << 20, 'n');
  CSint *const v = cs_createNamedCSint(7, 7, name.c_str());
  cs_setName(v, (name + "more").c_str());
  EXPECT_EQ(cs_getName(v), name + "more");
  cs_setName(v, "short");
  EXPECT_STREQ(cs_getName(v), "short");
  cs_setName(v, name.c_str());
  EXPECT_EQ(cs_getName(v), name);
}

TEST_F(LargeTextTest, AFormatOfAMegabyteIsPrinted) {
  const std::string piece(1 << 20, 'p');
  const std::string format = "%d" + piece + "%D";
  const std::string text = textOf([&](std::FILE *f) { cs_fprintf(f, format.c_str(), 4, CSINT(5)); });
  EXPECT_EQ(text, "4" + piece + "5");
}

TEST_F(LargeTextTest, AWidthOfAMegabyteIsPrinted) {
  const std::string text = textOf([](std::FILE *f) { cs_fprintf(f, "%*d|%-1048576s|", 1 << 20, 7, "x"); });
  EXPECT_EQ(text.size(), (std::size_t{1} << 21) + 2);
}

}  // namespace

// SPDX-License-Identifier: MIT
// cs_Add and cs_Sub: the result's domain and how they are posted. What the handlers do is in sum_events_test.cc.
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using SumTest = SolverTest;

TEST_F(SumTest, TwoBoundOperandsGiveAConstantAndPostNothing) {
  CSint *x = CSINT(3);
  CSint *y = CSINT(4);
  const int trail = solver::trail.count();
  CSint *sum = cs_Add(x, y);
  CSint *difference = cs_Sub(x, y);
  ASSERT_NE(sum, nullptr);
  ASSERT_NE(difference, nullptr);
  EXPECT_EQ(values(sum), std::vector{7});
  EXPECT_EQ(values(difference), std::vector{-1});
  for (CSint *v : {x, y, sum, difference}) EXPECT_EQ(cs_getNbConstraints(v), 0);
  EXPECT_EQ(solver::trail.count(), trail);
}

// Not even a site: without memory for one, the constant is made all the same.
TEST_F(SumTest, AConstantResultAllocatesNothing) {
  CSint *x = CSINT(3);
  CSint *y = CSINT(4);
  const FailingAllocation failing(0);
  EXPECT_NE(cs_Add(x, y), nullptr);
  EXPECT_NE(cs_Sub(x, y), nullptr);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(SumTest, ANullOperandGivesNullAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  for (auto *f : {cs_Add, cs_Sub}) {
    EXPECT_EQ(f(x, nullptr), nullptr);
    EXPECT_EQ(f(nullptr, x), nullptr);
    EXPECT_EQ(f(nullptr, nullptr), nullptr);
  }
  EXPECT_EQ(cs_getNbConstraints(x), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(SumTest, IsAttachedToTheResultThenToTheOperands) {
  for (const bool subtract : {false, true}) {
    CSint *x = cs_createCSint(0, 3);
    CSint *y = cs_createCSint(0, 3);
    const int mark = solver::trail.count();
    CSint *z = subtract ? cs_Sub(x, y) : cs_Add(x, y);
    EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{z, x, y}));
    for (CSint *v : {x, y, z}) {
      EXPECT_EQ(attachments(v), (std::vector<std::pair<std::string, int>>{{subtract ? "cs_Sub" : "cs_Add", -1}}));
      EXPECT_EQ(busySlots(v), "012345");
      EXPECT_EQ(v->constraints->constraint, z->constraints->constraint);
    }
  }
}

TEST_F(SumTest, TheSameVariableTwiceIsAttachedTwice) {
  CSint *x = cs_createCSint(0, 3);
  ASSERT_NE(cs_Add(x, x), nullptr);
  EXPECT_EQ(cs_getNbConstraints(x), 2);
}

TEST_F(SumTest, TheOperandsAreNotNarrowed) {
  CSint *x = fromValues({0, 2, 5});
  CSint *y = cs_createCSint(-1, 4);
  cs_Add(x, y);
  cs_Sub(x, y);
  EXPECT_EQ(values(x), (std::vector{0, 2, 5}));
  EXPECT_EQ(values(y), range(-1, 4));
}

TEST_F(SumTest, FreeOperandsGiveAnIntervalAlsoWhenTheyHaveHoles) {
  CSint *x = fromValues({0, 4});
  CSint *y = fromValues({1, 9});
  CSint *sum = cs_Add(x, y);
  EXPECT_EQ(values(sum), range(1, 13));
  EXPECT_EQ(sum->bits, nullptr);
  CSint *difference = cs_Sub(x, y);
  EXPECT_EQ(values(difference), range(-9, 3));
  EXPECT_EQ(difference->bits, nullptr);
}

TEST_F(SumTest, ABoundOperandPassesTheHolesOfTheOtherIntoTheSum) {
  for (const bool swapped : {false, true}) {
    CSint *x = CSINT(10);
    CSint *y = fromValues({1, 3, 5});
    CSint *z = swapped ? cs_Add(y, x) : cs_Add(x, y);
    EXPECT_EQ(values(z), (std::vector{11, 13, 15}));
    EXPECT_EQ(cs_getNbElements(z), 3);
  }
}

TEST_F(SumTest, ABoundOperandPassesTheHolesOfTheOtherIntoTheDifference) {
  CSint *y = fromValues({1, 2, 6});
  CSint *z = cs_Sub(CSINT(10), y);
  EXPECT_EQ(values(z), (std::vector{4, 8, 9}));
  EXPECT_EQ(cs_getNbElements(z), 3);
  z = cs_Sub(y, CSINT(10));
  EXPECT_EQ(values(z), (std::vector{-9, -8, -4}));
  EXPECT_EQ(cs_getNbElements(z), 3);
}

TEST_F(SumTest, AnOperandWithoutHolesGivesNoBitArray) {
  CSint *y = fromValues({1, 2, 3});  // has one, but no hole
  EXPECT_EQ(cs_Add(CSINT(10), y)->bits, nullptr);
  EXPECT_EQ(cs_Sub(CSINT(10), y)->bits, nullptr);
  EXPECT_EQ(cs_Sub(y, CSINT(10))->bits, nullptr);
}

TEST_F(SumTest, HolesOutsideTheOperandsCurrentBoundsAreNotPassed) {
  CSint *y = fromValues({1, 3, 4, 6, 9});
  ASSERT_TRUE(cs_GE(y, 3));
  ASSERT_TRUE(cs_LE(y, 6));
  EXPECT_EQ(values(cs_Add(CSINT(1), y)), (std::vector{4, 5, 7}));
  EXPECT_EQ(values(cs_Sub(CSINT(9), y)), (std::vector{3, 5, 6}));
}

TEST_F(SumTest, TheResultIsLostToPropagationNotToTheContext) {
  CSint *x = cs_createCSint(0, 3);
  cs_saveContext();
  CSint *z = cs_Add(x, x);
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(z, 6));  // no longer constrained
  EXPECT_EQ(values(x), range(0, 3));
  EXPECT_EQ(cs_getNbConstraints(x), 2);
}

}  // namespace

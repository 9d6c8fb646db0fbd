// SPDX-License-Identifier: MIT
// cs_Abs: the result's domain, how it is posted, and what each event of x passes to z and of z to x.
#include "support/kit/new_variables.h"
#include "support/kit/refuser.h"

namespace {

using namespace koru;
using namespace koru::test;

using Values = std::vector<int>;

class AbsTest : public SolverTest {
 protected:
  void make(int low, int high) { make(cs_createCSint(low, high)); }
  void make(CSint *v) {
    x = v;
    z = cs_Abs(x);
    ASSERT_NE(z, nullptr);
  }

  CSint *x = nullptr;
  CSint *z = nullptr;
};

// ----- posting

TEST_F(AbsTest, TheResultOfAnIntervalIsAnInterval) {
  make(2, 7);
  EXPECT_EQ(values(z), range(2, 7));
  make(-7, -2);
  EXPECT_EQ(values(z), range(2, 7));
  make(-3, 7);
  EXPECT_EQ(values(z), range(0, 7));
  make(-7, 3);
  EXPECT_EQ(values(z), range(0, 7));
  EXPECT_EQ(z->bits, nullptr);
  EXPECT_EQ(values(x), range(-7, 3));
}

TEST_F(AbsTest, ZeroAtABoundIsPartOfTheResult) {
  make(0, 4);
  EXPECT_EQ(values(z), range(0, 4));
  make(-4, 0);
  EXPECT_EQ(values(z), range(0, 4));
  make(0, 0);
  EXPECT_EQ(values(z), Values{0});
}

TEST_F(AbsTest, TheHolesOfADomainWithBitsPass) {
  make(fromValues({-5, -2, 3, 7}));
  EXPECT_EQ(values(z), (Values{2, 3, 5, 7}));
  EXPECT_EQ(bounds(z), Bounds2(2, 7));
  EXPECT_EQ(cs_getNbElements(z), 4);
  EXPECT_EQ(values(x), (Values{-5, -2, 3, 7}));
}

TEST_F(AbsTest, AValueOfEitherSignIsEnough) {
  make(fromValues({-4, -2, 1, 2}));
  EXPECT_EQ(values(z), (Values{1, 2, 4}));
  make(fromValues({-4, 4}));
  EXPECT_EQ(values(z), Values{4});
  EXPECT_EQ(cs_getNbElements(z), 1);
  make(fromValues({-6, -1, 0}));
  EXPECT_EQ(values(z), (Values{0, 1, 6}));
  make(fromValues({2, 5}));
  EXPECT_EQ(values(z), (Values{2, 5}));
}

TEST_F(AbsTest, TheSmallestAbsoluteValueMayBeTheShorterSidesEnd) {
  make(fromValues({-9, 4}));
  EXPECT_EQ(values(z), (Values{4, 9}));
  make(fromValues({-4, 9}));
  EXPECT_EQ(values(z), (Values{4, 9}));
}

TEST_F(AbsTest, ABitArrayWithoutHolesIsCopiedToo) {
  make(fromValues({-1, 0, 1, 2}));
  EXPECT_EQ(values(z), (Values{0, 1, 2}));
  EXPECT_NE(z->bits, nullptr);
}

TEST_F(AbsTest, OneConstraintIsAttachedToEachUnderOneSite) {
  x = cs_createCSint(-4, 4);
  const int mark = solver::trail.count();
  z = cs_Abs(x);
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{x, z}));
  EXPECT_EQ(solver::trail.count(), mark + 2);
  for (CSint *v : {x, z}) EXPECT_EQ(attachments(v), (Attached{{"cs_Abs", -1}}));
  EXPECT_NE(constraintOf(x), constraintOf(z));
  EXPECT_EQ(siteOf(x), siteOf(z));
  EXPECT_EQ(siteOf(x)->references, 2);
  EXPECT_EQ(busySlots(x), "012345");
  EXPECT_EQ(busySlots(z), "012345");
}

TEST_F(AbsTest, NullHasNoAbsoluteValue) {
  EXPECT_EQ(cs_Abs(nullptr), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

// Only the smallest int makes x change at posting.
TEST_F(AbsTest, AFailingFirstNarrowingGivesNull) {
  std::function<bool(int)> never = [](int) { return false; };
  x = cs_createCSint(INT_MIN, INT_MIN + 1);
  ASSERT_TRUE(postRefuser(x, never));
  EXPECT_EQ(cs_Abs(x), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
  EXPECT_EQ(cs_getNbConstraints(x), 1);
}

// ----- x changed

TEST_F(AbsTest, MovedBoundsOfXMoveTheResult) {
  make(-5, 3);
  ASSERT_TRUE(cs_LE(x, 1));
  EXPECT_EQ(values(z), range(0, 5));
  ASSERT_TRUE(cs_GE(x, -2));
  EXPECT_EQ(values(z), range(0, 2));
  ASSERT_TRUE(cs_LE(x, -1));
  EXPECT_EQ(values(z), range(1, 2));
  make(-5, 3);
  ASSERT_TRUE(cs_GE(x, -2));
  EXPECT_EQ(values(z), range(0, 3));
  ASSERT_TRUE(cs_GE(x, 1));
  EXPECT_EQ(values(z), range(1, 3));
}

TEST_F(AbsTest, XBoundAtAnEndBindsTheResult) {
  make(-5, 3);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x, -5));
  EXPECT_EQ(values(z), Values{5});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x, 3));
  EXPECT_EQ(values(z), Values{3});
}

TEST_F(AbsTest, XBoundInsideBindsTheResult) {
  make(-5, 3);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x, -2));
  EXPECT_EQ(values(z), Values{2});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x, 0));
  EXPECT_EQ(values(z), Values{0});
}

// Both changes are made in one handler, so that z has lost the value before the event of x is heard.
TEST_F(AbsTest, XBoundInsideToWhatTheResultHasLostFails) {
  make(-9, 9);
  int lost = 0;
  std::function<bool(int)> bindAndRemove = [&](int) { return bindValue(x, -3) && removeValue(z, lost); };
  CSint *trigger = cs_createCSint(0, 9);
  ASSERT_TRUE(postRefuser(trigger, bindAndRemove));
  lost = 4;
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(trigger, 5));
  EXPECT_EQ(values(z), Values{3});
  cs_restoreContext();
  lost = 3;
  EXPECT_FALSE(cs_EQ(trigger, 5));
}

TEST_F(AbsTest, AValueLeavesTheResultWhenBothSignsHaveLeftX) {
  make(-5, 5);
  ASSERT_TRUE(cs_NEQ(x, 3));
  EXPECT_EQ(values(z), range(0, 5));
  ASSERT_TRUE(cs_NEQ(x, -3));
  EXPECT_EQ(values(z), without(range(0, 5), 3));
  ASSERT_TRUE(cs_NEQ(x, 0));
  EXPECT_EQ(values(z), (Values{1, 2, 4, 5}));
}

TEST_F(AbsTest, AValueBeyondTheOtherSideLeavesTheResultAtOnce) {
  make(-2, 7);
  ASSERT_TRUE(cs_NEQ(x, 5));
  EXPECT_EQ(values(z), without(range(0, 7), 5));
  make(-7, 2);
  ASSERT_TRUE(cs_NEQ(x, -5));
  EXPECT_EQ(values(z), without(range(0, 7), 5));
}

// Deliberate: a moved bound does not look for holes; what only the lost side supported stays in the result.
TEST_F(AbsTest, AMovedBoundOfXPassesNoHoles) {
  make(-5, 5);
  ASSERT_TRUE(cs_NEQ(x, 3));
  ASSERT_TRUE(cs_GE(x, -2));
  EXPECT_EQ(values(z), range(0, 5));
}

// ----- z changed

TEST_F(AbsTest, ARaisedResultRemovesTheMiddleOfX) {
  make(-5, 5);
  ASSERT_TRUE(cs_GE(z, 3));
  EXPECT_EQ(values(x), (Values{-5, -4, -3, 3, 4, 5}));
  ASSERT_TRUE(cs_GE(z, 5));
  EXPECT_EQ(values(x), (Values{-5, 5}));
}

TEST_F(AbsTest, ARaisedResultBeyondOneSideLeavesTheOther) {
  make(-2, 5);
  ASSERT_TRUE(cs_GE(z, 3));
  EXPECT_EQ(values(x), range(3, 5));
  make(-5, 2);
  ASSERT_TRUE(cs_GE(z, 3));
  EXPECT_EQ(values(x), range(-5, -3));
}

TEST_F(AbsTest, AMovedResultMovesXOfOneSign) {
  make(1, 9);
  ASSERT_TRUE(cs_GE(z, 3) && cs_LE(z, 6));
  EXPECT_EQ(values(x), range(3, 6));
  make(-9, -1);
  ASSERT_TRUE(cs_GE(z, 3) && cs_LE(z, 6));
  EXPECT_EQ(values(x), range(-6, -3));
  make(-9, 0);
  ASSERT_TRUE(cs_LE(z, 6));
  EXPECT_EQ(values(x), range(-6, 0));
}

TEST_F(AbsTest, ALoweredResultNarrowsBothSides) {
  make(-5, 5);
  ASSERT_TRUE(cs_LE(z, 2));
  EXPECT_EQ(values(x), range(-2, 2));
  ASSERT_TRUE(cs_LE(z, 0));
  EXPECT_EQ(values(x), Values{0});
  make(-1, 5);
  ASSERT_TRUE(cs_LE(z, 2));
  EXPECT_EQ(values(x), range(-1, 2));
}

TEST_F(AbsTest, AResultBoundInsideLeavesBothSigns) {
  make(-5, 5);
  ASSERT_TRUE(cs_EQ(z, 3));
  EXPECT_EQ(values(x), (Values{-3, 3}));
  EXPECT_EQ(cs_getNbElements(x), 2);
  make(fromValues({-7, -3, 0, 3, 5}));
  ASSERT_TRUE(cs_EQ(z, 3));
  EXPECT_EQ(values(x), (Values{-3, 3}));
}

TEST_F(AbsTest, AResultBoundInsideBindsXWhenOneSignIsLeft) {
  make(fromValues({-7, 0, 3, 5}));
  ASSERT_TRUE(cs_EQ(z, 3));
  EXPECT_EQ(values(x), Values{3});
  make(fromValues({-7, -3, 0, 5}));
  ASSERT_TRUE(cs_EQ(z, 3));
  EXPECT_EQ(values(x), Values{-3});
  make(-2, 5);
  ASSERT_TRUE(cs_EQ(z, 3));
  EXPECT_EQ(values(x), Values{3});
  make(-5, 2);
  ASSERT_TRUE(cs_EQ(z, 3));
  EXPECT_EQ(values(x), Values{-3});
}

TEST_F(AbsTest, AResultBoundAtItsEndNarrowsX) {
  make(-5, 5);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(z, 5));
  EXPECT_EQ(values(x), (Values{-5, 5}));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(z, 0));
  EXPECT_EQ(values(x), Values{0});
}

TEST_F(AbsTest, AValueRemovedFromTheResultLeavesXWithBothSigns) {
  make(-5, 4);
  ASSERT_TRUE(cs_NEQ(z, 3));
  EXPECT_EQ(values(x), (Values{-5, -4, -2, -1, 0, 1, 2, 4}));
}

TEST_F(AbsTest, AResultThatXCannotTakeFails) {
  make(-5, 5);
  ASSERT_TRUE(cs_NEQ(x, 3) && cs_GE(x, -2));
  ASSERT_TRUE(cs_isIn(z, 3));
  EXPECT_FALSE(cs_EQ(z, 3));
}

TEST_F(AbsTest, OneChangeIsOneCallPerEvent) {
  make(1, 9);
  const CallLog log;
  ASSERT_TRUE(cs_GE(x, 3));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x, 0, "cs_Abs"}, {true, z, 0, "cs_Abs"}}));
}

// ----- memory

TEST_F(AbsTest, EachFailedAllocationIsReportedOnceAndLeavesTheSolverUsable) {
  // Site, and a record and an entry for each of the two constraints.
  expectAllocations([] { return threeOf(-4, 4); }, [](Posted &o) { return cs_Abs(o.x[0]) != nullptr; }, 5);
  // And the bit array of the result.
  expectAllocations(
      [] {
        return Posted{{fromValues({-4, 0, 3})}};
      },
      [](Posted &o) { return cs_Abs(o.x[0]) != nullptr; }, 6);
}

}  // namespace

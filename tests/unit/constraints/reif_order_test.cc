// SPDX-License-Identifier: MIT
// cs_ReifLt, cs_ReifLe, cs_ReifGt, cs_ReifGe: posting, and each handler slot on given states.
#include "support/constraints/reified_forms.h"
#include "unit/constraints/reif_slots.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::reif;

using ReifOrderTest = SolverTest;

// ----- the outcome at posting

struct PostingRow {
  Values x;
  Values y;
  int lt;  // -1: not decided
  int le;
};

// Only bounds count: holes decide nothing.
const PostingRow kPostings[] = {
    {range(0, 2), range(3, 5), 1, 1},
    {range(0, 3), range(3, 5), -1, 1},
    {range(0, 4), range(3, 5), -1, -1},
    {range(3, 5), range(0, 3), 0, -1},
    {range(4, 5), range(0, 3), 0, 0},
    {range(3, 5), range(0, 4), -1, -1},
    {{4}, {4}, 0, 1},
    {{4}, {5}, 1, 1},
    {{5}, {4}, 0, 0},
    {{-9, 9}, {-8, 8}, -1, -1},
    {{-3, 0}, {0, 3}, -1, 1},
    {{0, 3}, {-3, 0}, 0, -1},
    {range(0, 9), range(3, 5), -1, -1},
    {{1, 9}, {5}, -1, -1},
    {{5}, {1, 9}, -1, -1},
};

void checkPosting(const Form &form, CSint *x, CSint *y, int outcome) {
  const bool same = x == y;
  const std::vector<CSint *> variables = same ? std::vector{x} : form.exchanged ? std::vector{y, x} : std::vector{x, y};
  const auto post = [&] { return form.post(x, y); };
  if (outcome >= 0) return expectDecided(post, variables, outcome, true);
  expectUndecided(post, variables, form.name, true);
}

TEST_F(ReifOrderTest, LtAndGtAreDecidedAtPostingByBoundsOnly) {
  for (const PostingRow &row : kPostings) {
    checkPosting(kLt, fromValues(row.x), fromValues(row.y), row.lt);
    checkPosting(kGt, fromValues(row.y), fromValues(row.x), row.lt);
  }
}

TEST_F(ReifOrderTest, LeAndGeAreDecidedAtPostingByBoundsOnly) {
  for (const PostingRow &row : kPostings) {
    checkPosting(kLe, fromValues(row.x), fromValues(row.y), row.le);
    checkPosting(kGe, fromValues(row.y), fromValues(row.x), row.le);
  }
}

TEST_F(ReifOrderTest, LtOfAVariableWithItselfIsZeroAndLeIsOne) {
  CSint *x = cs_createCSint(0, 9);
  checkPosting(kLt, x, x, 0);
  checkPosting(kGt, x, x, 0);
  checkPosting(kLe, x, x, 1);
  checkPosting(kGe, x, x, 1);
}

// ----- refusals

class ReifOrderFormTest : public SolverTest, public ::testing::WithParamInterface<Form> {};

INSTANTIATE_TEST_SUITE_P(, ReifOrderFormTest, ::testing::Values(kLt, kLe, kGt, kGe), formName<Form>);

TEST_P(ReifOrderFormTest, ADecidedOutcomeStillNeedsItsSite) {
  expectFailuresReported(
      1,
      [] {
        return Operands{cs_createCSint(0, 4), cs_createCSint(5, 9)};
      },
      [](Operands o) { return GetParam().post(o.x, o.y); });
}

// ----- slots. cs_ReifGt(y, x) and cs_ReifGe(y, x) are the same as cs_ReifLt(x, y) and cs_ReifLe(x, y).

class OrderSlotTest : public SlotTest {
 protected:
  void checkLt(const std::vector<SlotRow> &rows) {
    check([](CSint *x, CSint *y) { return cs_ReifLt(x, y); }, rows);
    check([](CSint *x, CSint *y) { return cs_ReifGt(y, x); }, rows);
  }
  void checkLe(const std::vector<SlotRow> &rows) {
    check([](CSint *x, CSint *y) { return cs_ReifLe(x, y); }, rows);
    check([](CSint *x, CSint *y) { return cs_ReifGe(y, x); }, rows);
  }
};

TEST_F(OrderSlotTest, LtControlWithBOneImposesXBelowY) {
  checkLt({gives("234", 'b', 1, {range(0, 9), range(3, 5), {1}}, {range(0, 4), range(3, 5), {1}}),
           gives("234", 'b', 1, {range(4, 9), range(3, 8), {1}}, {range(4, 7), range(5, 8), {1}}),
           gives("234", 'b', 1, {{2, 4, 9}, {1, 4, 9}, {1}}, {{2, 4}, {4, 9}, {1}}),
           changesNothing("234", 'b', 1, {range(0, 4), range(1, 5), {1}}),
           gives("234", 'b', 1, {{4}, {4, 5}, {1}}, {{4}, {5}, {1}}),
           fails("234", 'b', 1, {range(5, 9), range(0, 5), {1}})});
}

TEST_F(OrderSlotTest, LtControlWithBZeroImposesXNotBelowY) {
  checkLt({gives("234", 'b', 0, {range(0, 9), range(3, 15), {0}}, {range(3, 9), range(3, 9), {0}}),
           gives("234", 'b', 0, {{0, 2, 8}, {1, 8, 11}, {0}}, {{2, 8}, {1, 8}, {0}}),
           gives("234", 'b', 0, {range(0, 4), range(4, 9), {0}}, {{4}, {4}, {0}}),
           changesNothing("234", 'b', 0, {range(3, 9), range(3, 9), {0}}),
           fails("234", 'b', 0, {range(0, 4), range(5, 9), {0}})});
}

TEST_F(OrderSlotTest, LeControlWithBOneImposesXNotAboveY) {
  checkLe({gives("234", 'b', 1, {range(0, 9), range(3, 5), {1}}, {range(0, 5), range(3, 5), {1}}),
           gives("234", 'b', 1, {range(4, 9), range(3, 8), {1}}, {range(4, 8), range(4, 8), {1}}),
           gives("234", 'b', 1, {range(5, 9), range(0, 5), {1}}, {{5}, {5}, {1}}),
           changesNothing("234", 'b', 1, {range(0, 5), range(0, 5), {1}}),
           fails("234", 'b', 1, {range(6, 9), range(0, 5), {1}})});
}

TEST_F(OrderSlotTest, LeControlWithBZeroImposesXAboveY) {
  checkLe({gives("234", 'b', 0, {range(0, 9), range(3, 15), {0}}, {range(4, 9), range(3, 8), {0}}),
           gives("234", 'b', 0, {{4, 5}, {4}, {0}}, {{5}, {4}, {0}}),
           changesNothing("234", 'b', 0, {range(4, 9), range(3, 8), {0}}),
           fails("234", 'b', 0, {range(0, 4), range(4, 9), {0}})});
}

TEST_F(OrderSlotTest, LtRaisedMinimumWithBFreeDecidesOnlyOnItsOwnSide) {
  checkLt({gives("02", 'x', 5, {range(5, 9), range(0, 5), kFree}, {range(5, 9), range(0, 5), {0}}),
           changesNothing("02", 'x', 4, {range(4, 9), range(0, 5), kFree}),
           changesNothing("02", 'x', 3, {range(3, 4), range(5, 9), kFree}),
           gives("02", 'y', 5, {range(0, 4), range(5, 9), kFree}, {range(0, 4), range(5, 9), {1}}),
           changesNothing("02", 'y', 4, {range(0, 4), range(4, 9), kFree}),
           changesNothing("02", 'y', 3, {range(9, 10), range(3, 5), kFree})});
}

TEST_F(OrderSlotTest, LtLoweredMaximumWithBFreeDecidesOnlyOnItsOwnSide) {
  checkLt({gives("13", 'y', 5, {range(5, 9), range(0, 5), kFree}, {range(5, 9), range(0, 5), {0}}),
           changesNothing("13", 'y', 6, {range(5, 9), range(0, 6), kFree}),
           changesNothing("13", 'y', 9, {range(0, 4), range(5, 9), kFree}),
           gives("13", 'x', 4, {range(0, 4), range(5, 9), kFree}, {range(0, 4), range(5, 9), {1}}),
           changesNothing("13", 'x', 5, {range(0, 5), range(5, 9), kFree}),
           changesNothing("13", 'x', 9, {range(5, 9), range(0, 5), kFree})});
}

TEST_F(OrderSlotTest, LeRaisedMinimumWithBFreeDecidesOnlyOnItsOwnSide) {
  checkLe({gives("02", 'x', 6, {range(6, 9), range(0, 5), kFree}, {range(6, 9), range(0, 5), {0}}),
           changesNothing("02", 'x', 5, {range(5, 9), range(0, 5), kFree}),
           changesNothing("02", 'x', 3, {range(3, 4), range(5, 9), kFree}),
           gives("02", 'y', 4, {range(0, 4), range(4, 9), kFree}, {range(0, 4), range(4, 9), {1}}),
           changesNothing("02", 'y', 3, {range(0, 4), range(3, 9), kFree}),
           changesNothing("02", 'y', 3, {range(9, 10), range(3, 5), kFree})});
}

TEST_F(OrderSlotTest, LeLoweredMaximumWithBFreeDecidesOnlyOnItsOwnSide) {
  checkLe({gives("13", 'y', 4, {range(5, 9), range(0, 4), kFree}, {range(5, 9), range(0, 4), {0}}),
           changesNothing("13", 'y', 5, {range(5, 9), range(0, 5), kFree}),
           changesNothing("13", 'y', 9, {range(0, 4), range(5, 9), kFree}),
           gives("13", 'x', 5, {range(0, 5), range(5, 9), kFree}, {range(0, 5), range(5, 9), {1}}),
           changesNothing("13", 'x', 6, {range(0, 6), range(5, 9), kFree}),
           changesNothing("13", 'x', 9, {range(6, 9), range(0, 5), kFree})});
}

// The new bound that the event brings counts, not what has become of it since.
TEST_F(OrderSlotTest, LtRaisedMinimumWithBBoundPassesItOn) {
  checkLt({gives("02", 'x', 5, {range(5, 9), range(0, 9), {1}}, {range(5, 9), range(6, 9), {1}}),
           gives("02", 'x', 3, {range(5, 9), range(0, 9), {1}}, {range(5, 9), range(4, 9), {1}}),
           changesNothing("02", 'x', 5, {range(5, 9), range(6, 12), {1}}),
           changesNothing("02", 'y', 3, {range(5, 9), range(3, 9), {1}}),
           fails("02", 'x', 9, {range(9, 12), range(0, 9), {1}}),
           gives("02", 'y', 5, {range(0, 9), range(5, 12), {0}}, {range(5, 9), range(5, 12), {0}}),
           gives("02", 'y', 3, {range(0, 9), range(5, 12), {0}}, {range(3, 9), range(5, 12), {0}}),
           changesNothing("02", 'y', 5, {range(5, 9), range(5, 12), {0}}),
           changesNothing("02", 'x', 3, {range(3, 9), range(0, 12), {0}}),
           fails("02", 'y', 10, {range(0, 9), range(10, 12), {0}})});
}

TEST_F(OrderSlotTest, LtLoweredMaximumWithBBoundPassesItOn) {
  checkLt({gives("13", 'y', 5, {range(0, 9), range(0, 5), {1}}, {range(0, 4), range(0, 5), {1}}),
           gives("13", 'y', 7, {range(0, 9), range(0, 5), {1}}, {range(0, 6), range(0, 5), {1}}),
           changesNothing("13", 'y', 5, {range(0, 4), range(0, 5), {1}}),
           changesNothing("13", 'x', 9, {range(0, 9), range(0, 5), {1}}),
           fails("13", 'y', 5, {range(5, 9), range(0, 5), {1}}),
           gives("13", 'x', 5, {range(0, 5), range(0, 9), {0}}, {range(0, 5), range(0, 5), {0}}),
           gives("13", 'x', 7, {range(0, 5), range(0, 9), {0}}, {range(0, 5), range(0, 7), {0}}),
           changesNothing("13", 'x', 5, {range(0, 5), range(0, 5), {0}}),
           changesNothing("13", 'y', 9, {range(0, 5), range(0, 9), {0}}),
           fails("13", 'x', 4, {range(0, 4), range(5, 9), {0}})});
}

TEST_F(OrderSlotTest, LeRaisedMinimumWithBBoundPassesItOn) {
  checkLe({gives("02", 'x', 5, {range(5, 9), range(0, 9), {1}}, {range(5, 9), range(5, 9), {1}}),
           gives("02", 'x', 3, {range(5, 9), range(0, 9), {1}}, {range(5, 9), range(3, 9), {1}}),
           changesNothing("02", 'y', 3, {range(5, 9), range(3, 9), {1}}),
           fails("02", 'x', 10, {range(10, 12), range(0, 9), {1}}),
           gives("02", 'y', 5, {range(0, 9), range(5, 12), {0}}, {range(6, 9), range(5, 12), {0}}),
           gives("02", 'y', 3, {range(0, 9), range(5, 12), {0}}, {range(4, 9), range(5, 12), {0}}),
           changesNothing("02", 'x', 3, {range(3, 9), range(0, 12), {0}}),
           fails("02", 'y', 9, {range(0, 9), range(9, 12), {0}})});
}

TEST_F(OrderSlotTest, LeLoweredMaximumWithBBoundPassesItOn) {
  checkLe({gives("13", 'y', 5, {range(0, 9), range(0, 5), {1}}, {range(0, 5), range(0, 5), {1}}),
           gives("13", 'y', 7, {range(0, 9), range(0, 5), {1}}, {range(0, 7), range(0, 5), {1}}),
           changesNothing("13", 'x', 9, {range(0, 9), range(0, 5), {1}}),
           fails("13", 'y', 4, {range(5, 9), range(0, 4), {1}}),
           gives("13", 'x', 5, {range(0, 5), range(0, 9), {0}}, {range(0, 5), range(0, 4), {0}}),
           gives("13", 'x', 7, {range(0, 5), range(0, 9), {0}}, {range(0, 5), range(0, 6), {0}}),
           changesNothing("13", 'y', 9, {range(0, 5), range(0, 9), {0}}),
           fails("13", 'x', 5, {range(0, 5), range(5, 9), {0}})});
}

// Whichever of the two was bound, both outcomes are looked for.
TEST_F(OrderSlotTest, InnerBindingWithBFreeDecidesEitherWayAndNarrowsNeitherSide) {
  for (const char who : {'x', 'y'}) {
    checkLt({gives("4", who, 5, {{5}, range(0, 5), kFree}, {{5}, range(0, 5), {0}}),
             gives("4", who, 5, {range(5, 9), {5}, kFree}, {range(5, 9), {5}, {0}}),
             gives("4", who, 4, {{4}, range(5, 9), kFree}, {{4}, range(5, 9), {1}}),
             gives("4", who, 5, {range(0, 4), {5}, kFree}, {range(0, 4), {5}, {1}}),
             changesNothing("4", who, 5, {{5}, range(0, 9), kFree}),
             changesNothing("4", who, 5, {range(0, 9), {5}, kFree})});
    checkLe({gives("4", who, 6, {{6}, range(0, 5), kFree}, {{6}, range(0, 5), {0}}),
             gives("4", who, 5, {range(6, 9), {5}, kFree}, {range(6, 9), {5}, {0}}),
             gives("4", who, 5, {{5}, range(5, 9), kFree}, {{5}, range(5, 9), {1}}),
             gives("4", who, 5, {range(0, 5), {5}, kFree}, {range(0, 5), {5}, {1}}),
             changesNothing("4", who, 5, {{5}, range(0, 9), kFree}),
             changesNothing("4", who, 5, {range(0, 9), {5}, kFree})});
  }
}

TEST_F(OrderSlotTest, InnerBindingWithBBoundAppliesTheWholeControlRule) {
  for (const char who : {'x', 'y'}) {
    checkLt({gives("4", who, 5, {{5}, range(0, 9), {1}}, {{5}, range(6, 9), {1}}),
             gives("4", who, 5, {range(0, 9), {5}, {1}}, {range(0, 4), {5}, {1}}),
             gives("4", who, 5, {range(2, 9), range(1, 8), {1}}, {range(2, 7), range(3, 8), {1}}),
             fails("4", who, 5, {{5}, range(0, 5), {1}}),
             gives("4", who, 5, {{5}, range(0, 9), {0}}, {{5}, range(0, 5), {0}}),
             gives("4", who, 5, {range(0, 9), {5}, {0}}, {range(5, 9), {5}, {0}}),
             gives("4", who, 5, {range(2, 7), range(3, 8), {0}}, {range(3, 7), range(3, 7), {0}}),
             fails("4", who, 4, {{4}, range(5, 9), {0}})});
    checkLe({gives("4", who, 5, {{5}, range(0, 9), {1}}, {{5}, range(5, 9), {1}}),
             gives("4", who, 5, {range(0, 9), {5}, {1}}, {range(0, 5), {5}, {1}}),
             gives("4", who, 5, {range(2, 9), range(1, 8), {1}}, {range(2, 8), range(2, 8), {1}}),
             fails("4", who, 6, {{6}, range(0, 5), {1}}),
             gives("4", who, 5, {{5}, range(0, 9), {0}}, {{5}, range(0, 4), {0}}),
             gives("4", who, 5, {range(0, 9), {5}, {0}}, {range(6, 9), {5}, {0}}),
             gives("4", who, 5, {range(2, 7), range(3, 8), {0}}, {range(4, 7), range(3, 6), {0}}),
             fails("4", who, 5, {{5}, range(5, 9), {0}})});
  }
}

// ----- whole propagations

TEST_F(ReifOrderTest, BindingBToOneNarrowsXBelowYAndRaisingXAboveYBindsBToZero) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(3, 5);
  CSint *b = cs_ReifLt(x, y);
  EXPECT_TRUE(cs_isFree(b));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(b, 1));
  EXPECT_EQ(values(x), range(0, 4));
  EXPECT_EQ(values(y), range(3, 5));
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(x, 5));
  EXPECT_EQ(values(b), std::vector{0});
  EXPECT_EQ(values(x), range(5, 9));
  EXPECT_EQ(values(y), range(3, 5));
}

TEST_F(ReifOrderTest, AHoleWakesNothing) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  CSint *b = cs_ReifLe(x, y);
  ASSERT_TRUE(cs_EQ(b, 1) && cs_NEQ(x, 5) && cs_NEQ(y, 7));
  EXPECT_EQ(values(x), without(range(0, 9), 5));
  EXPECT_EQ(values(y), without(range(0, 9), 7));
}

TEST_F(ReifOrderTest, BothVariablesBoundInsideDecideB) {
  for (const Form &form : {kLt, kLe, kGt, kGe}) {
    for (int p = 1; p < 4; ++p) {
      for (int q = 1; q < 4; ++q) {
        CSint *x = cs_createCSint(0, 4);
        CSint *y = cs_createCSint(0, 4);
        CSint *b = form.post(x, y);
        ASSERT_TRUE(cs_EQ(x, p) && cs_EQ(y, q));
        EXPECT_EQ(values(b), std::vector{form.holds(p, q) ? 1 : 0}) << form.name << " " << p << " " << q;
      }
    }
  }
}

}  // namespace

// SPDX-License-Identifier: MIT
// cs_ReifLT, cs_ReifLE, cs_ReifGT, cs_ReifGE: posting, and each handler slot on given states.
#include "support/constraints/reified_forms.h"
#include "unit/constraints/reif_slots.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::reif;

using ReifConstOrderTest = SolverTest;

// ----- the outcome at posting

struct PostingRow {
  Values x;
  int v;
  int lt;  // -1: not decided
  int le;
  int gt;
  int ge;
};

// Only bounds count: holes decide nothing.
TEST_F(ReifConstOrderTest, IsDecidedAtPostingByBoundsOnly) {
  const PostingRow rows[] = {
      {range(0, 9), 5, -1, -1, -1, -1},
      {range(0, 5), 5, -1, 1, 0, -1},
      {range(0, 4), 5, 1, 1, 0, 0},
      {range(5, 9), 5, 0, -1, -1, 1},
      {range(6, 9), 5, 0, 0, 1, 1},
      {{5}, 5, 0, 1, 0, 1},
      {{4}, 5, 1, 1, 0, 0},
      {{6}, 5, 0, 0, 1, 1},
      {{4, 6}, 5, -1, -1, -1, -1},
      {{-3, -1}, -1, -1, 1, 0, -1},
      {{-3, -1}, -3, 0, -1, -1, 1},
      {{-3, -1}, -4, 0, 0, 1, 1},
  };
  for (const PostingRow &row : rows) {
    const std::pair<ConstForm, int> outcomes[] = {{kLT, row.lt}, {kLE, row.le}, {kGT, row.gt}, {kGE, row.ge}};
    for (const auto &[form, outcome] : outcomes) {
      CSint *x = fromValues(row.x);
      const auto post = [&, f = form.post] { return f(x, row.v); };
      if (outcome < 0) {
        expectUndecided(post, {x}, form.name, true);
      } else {
        expectDecided(post, {x}, outcome, true);
      }
    }
  }
}

TEST_F(ReifConstOrderTest, AVariableAboveTheIntGivesZeroForLEAndPostsNothing) {
  CSint *x = cs_createCSint(6, 9);
  expectDecided([&] { return cs_ReifLE(x, 5); }, {x}, 0, true);
}

// ----- refusals

class ReifConstOrderFormTest : public SolverTest, public ::testing::WithParamInterface<ConstForm> {};

INSTANTIATE_TEST_SUITE_P(, ReifConstOrderFormTest, ::testing::Values(kLT, kLE, kGT, kGE), formName<ConstForm>);

TEST_P(ReifConstOrderFormTest, ANullVariableGivesNull) {
  EXPECT_EQ(GetParam().post(nullptr, 4), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_P(ReifConstOrderFormTest, EachFailingAllocationIsReportedOnceAndGivesNull) {
  expectFailuresReported(
      5,
      [] {
        return Operands{cs_createCSint(0, 9), nullptr};
      },
      [](Operands o) { return GetParam().post(o.x, 4); });
}

TEST_P(ReifConstOrderFormTest, ADecidedOutcomeStillNeedsItsSite) {
  expectFailuresReported(
      1,
      [] {
        return Operands{cs_createCSint(0, 9), nullptr};
      },
      [](Operands o) { return GetParam().post(o.x, 20); });
}

// ----- slots, for x < 5 and what means the same or the opposite

class ConstOrderSlotTest : public SlotTest {
 protected:
  void checkAll(const std::vector<SlotRow> &rows) {
    check([](CSint *x, CSint *) { return cs_ReifLT(x, 5); }, rows);
    check([](CSint *x, CSint *) { return cs_ReifLE(x, 4); }, rows);
    check([](CSint *x, CSint *) { return cs_ReifGE(x, 5); }, inverted(rows));
    check([](CSint *x, CSint *) { return cs_ReifGT(x, 4); }, inverted(rows));
  }
};

TEST_F(ConstOrderSlotTest, ControlNarrowsTheBoundThatBSpeaksOf) {
  checkAll({gives("234", 'b', 1, {range(0, 9), kNone, {1}}, {range(0, 4), kNone, {1}}),
            gives("234", 'b', 1, {{2, 3, 7}, kNone, {1}}, {{2, 3}, kNone, {1}}),
            gives("234", 'b', 1, {range(4, 9), kNone, {1}}, {{4}, kNone, {1}}),
            changesNothing("234", 'b', 1, {range(0, 4), kNone, {1}}), fails("234", 'b', 1, {range(5, 9), kNone, {1}}),
            gives("234", 'b', 0, {range(0, 9), kNone, {0}}, {range(5, 9), kNone, {0}}),
            gives("234", 'b', 0, {{2, 7, 8}, kNone, {0}}, {{7, 8}, kNone, {0}}),
            gives("234", 'b', 0, {range(0, 5), kNone, {0}}, {{5}, kNone, {0}}),
            changesNothing("234", 'b', 0, {range(5, 9), kNone, {0}}), fails("234", 'b', 0, {range(0, 4), kNone, {0}})});
}

TEST_F(ConstOrderSlotTest, ARaisedMinimumBindsAFreeBWhenItAloneDecides) {
  checkAll({gives("02", 'x', 5, {range(5, 9), kNone, kFree}, {range(5, 9), kNone, {0}}),
            changesNothing("02", 'x', 4, {range(4, 9), kNone, kFree}),
            changesNothing("02", 'x', 2, {range(2, 4), kNone, kFree})});
}

TEST_F(ConstOrderSlotTest, ALoweredMaximumBindsAFreeBWhenItAloneDecides) {
  checkAll({gives("13", 'x', 4, {range(0, 4), kNone, kFree}, {range(0, 4), kNone, {1}}),
            changesNothing("13", 'x', 5, {range(0, 5), kNone, kFree}),
            changesNothing("13", 'x', 9, {range(5, 9), kNone, kFree})});
}

TEST_F(ConstOrderSlotTest, AnInnerBindingTestsBothBoundsForAFreeB) {
  checkAll({gives("4", 'x', 4, {{4}, kNone, kFree}, {{4}, kNone, {1}}),
            gives("4", 'x', 5, {{5}, kNone, kFree}, {{5}, kNone, {0}}),
            gives("4", 'x', 4, {range(0, 4), kNone, kFree}, {range(0, 4), kNone, {1}}),
            gives("4", 'x', 5, {range(5, 9), kNone, kFree}, {range(5, 9), kNone, {0}}),
            changesNothing("4", 'x', 5, {range(4, 9), kNone, kFree})});
}

TEST_F(ConstOrderSlotTest, WithBBoundEverySlotOnlyChecksThatXAgrees) {
  checkAll({changesNothing("01234", 'x', 4, {range(4, 9), kNone, {1}}),
            changesNothing("01234", 'x', 4, {range(0, 4), kNone, {1}}),
            changesNothing("01234", 'x', 4, {{4}, kNone, {1}}), fails("01234", 'x', 5, {range(5, 9), kNone, {1}}),
            changesNothing("01234", 'x', 5, {range(0, 5), kNone, {0}}),
            changesNothing("01234", 'x', 5, {range(5, 9), kNone, {0}}),
            changesNothing("01234", 'x', 5, {{5}, kNone, {0}}), fails("01234", 'x', 4, {range(0, 4), kNone, {0}})});
}

// ----- whole propagations

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int v;
  Values lt;  // b of x < 5
};

TEST_F(ReifConstOrderTest, EachEventDecidesBWhenABoundSettlesTheComparison) {
  const EventRow rows[] = {
      {"minimum raised", cs_GE, 4, kFree},
      {"minimum raised to it", cs_GE, 5, {0}},
      {"maximum lowered", cs_LE, 5, kFree},
      {"maximum lowered below it", cs_LE, 4, {1}},
      {"bound at the maximum", cs_GE, 9, {0}},
      {"bound at the minimum", cs_LE, 0, {1}},
      {"bound inside below it", cs_EQ, 4, {1}},
      {"bound inside to it", cs_EQ, 5, {0}},
      {"removed", cs_NEQ, 5, kFree},
  };
  for (const EventRow &row : rows) {
    CSint *x = cs_createCSint(0, 9);
    CSint *same[] = {cs_ReifLT(x, 5), cs_ReifLE(x, 4)};
    CSint *opposite[] = {cs_ReifGE(x, 5), cs_ReifGT(x, 4)};
    ASSERT_TRUE(row.narrow(x, row.v));
    for (CSint *b : same) EXPECT_EQ(values(b), row.lt) << row.name;
    for (CSint *b : opposite) EXPECT_EQ(values(b), row.lt.size() == 1 ? Values{1 - row.lt[0]} : kFree) << row.name;
  }
}

TEST_F(ReifConstOrderTest, BindingBImposesTheComparisonOrItsNegation) {
  struct Row {
    ConstForm form;
    Values one;
    Values zero;
  };
  const Row rows[] = {{kLT, range(0, 4), range(5, 9)},
                      {kLE, range(0, 5), range(6, 9)},
                      {kGT, range(6, 9), range(0, 5)},
                      {kGE, range(5, 9), range(0, 4)}};
  for (const Row &row : rows) {
    CSint *x = cs_createCSint(0, 9);
    CSint *b = row.form.post(x, 5);
    cs_saveContext();
    ASSERT_TRUE(cs_EQ(b, 1));
    EXPECT_EQ(values(x), row.one) << row.form.name;
    cs_restoreContext();
    ASSERT_TRUE(cs_EQ(b, 0));
    EXPECT_EQ(values(x), row.zero) << row.form.name;
  }
}

TEST_F(ReifConstOrderTest, ABoundThatDisagreesWithBFails) {
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_EQ(cs_ReifLT(x, 5), 1));
  EXPECT_FALSE(cs_GE(x, 5));
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_EQ(cs_ReifGT(y, 5), 0));
  EXPECT_FALSE(cs_EQ(y, 6));
}

}  // namespace

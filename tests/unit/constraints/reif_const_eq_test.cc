// SPDX-License-Identifier: MIT
// cs_ReifEQ, cs_ReifNEQ: posting, and each handler slot on given states.
#include "support/constraints/reified_forms.h"
#include "unit/constraints/reif_slots.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::reif;

using ReifConstEqTest = SolverTest;

// ----- the outcome at posting

struct PostingRow {
  Values x;
  int v;
  int eq;  // -1: not decided
};

TEST_F(ReifConstEqTest, IsDecidedAtPostingByABoundVariableOrAnAbsentValue) {
  const PostingRow rows[] = {
      {{4}, 4, 1},          {{4}, 5, 0},          {{4}, 3, 0},       {range(0, 9), 0, -1},
      {range(0, 9), 9, -1}, {{1, 3}, 1, -1},      {{1, 3}, 2, 0},    {range(0, 9), 4, -1},
      {range(0, 9), -1, 0}, {range(0, 9), 10, 0}, {{-3, 0}, -3, -1}, {{-3, 0}, -2, 0},
  };
  for (const PostingRow &row : rows) {
    for (const ConstForm &form : {kEQ, kNEQ}) {
      CSint *x = fromValues(row.x);
      const auto post = [&] { return form.post(x, row.v); };
      if (row.eq < 0) {
        expectUndecided(post, {x}, form.name, false);
      } else {
        expectDecided(post, {x}, form.post == cs_ReifEQ ? row.eq : 1 - row.eq, false);
      }
    }
  }
}

// ----- refusals

class ReifConstEqFormTest : public SolverTest, public ::testing::WithParamInterface<ConstForm> {};

INSTANTIATE_TEST_SUITE_P(, ReifConstEqFormTest, ::testing::Values(kEQ, kNEQ), formName<ConstForm>);

TEST_P(ReifConstEqFormTest, ANullVariableGivesNull) {
  EXPECT_EQ(GetParam().post(nullptr, 4), nullptr);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_P(ReifConstEqFormTest, EachFailingAllocationIsReportedOnceAndGivesNull) {
  expectFailuresReported(
      5,
      [] {
        return Operands{cs_createCSint(0, 9), nullptr};
      },
      [](Operands o) { return GetParam().post(o.x, 4); });
}

TEST_P(ReifConstEqFormTest, ADecidedOutcomeNeedsOnlyItsVariable) {
  const auto make = [] {
    CSint *x = cs_createCSint(0, 9);
    fillVariables();
    return x;
  };
  EXPECT_EQ(failEachAllocation(make, [](CSint *x) { return GetParam().post(x, 10) != nullptr; }), 1);
}

// ----- slots, for v = 5

class ConstEqSlotTest : public SlotTest {
 protected:
  void checkBoth(const std::vector<SlotRow> &rows) {
    check([](CSint *x, CSint *) { return cs_ReifEQ(x, 5); }, rows);
    check([](CSint *x, CSint *) { return cs_ReifNEQ(x, 5); }, inverted(rows));
  }
};

TEST_F(ConstEqSlotTest, ControlBindsTheValueOrRemovesIt) {
  checkBoth({gives("234", 'b', 1, {range(0, 9), kNone, {1}}, {{5}, kNone, {1}}),
             gives("234", 'b', 1, {{5, 9}, kNone, {1}}, {{5}, kNone, {1}}),
             changesNothing("234", 'b', 1, {{5}, kNone, {1}}), fails("234", 'b', 1, {{4, 6}, kNone, {1}}),
             fails("234", 'b', 1, {range(6, 9), kNone, {1}}), fails("234", 'b', 1, {{4}, kNone, {1}}),
             gives("234", 'b', 0, {range(0, 9), kNone, {0}}, {without(range(0, 9), 5), kNone, {0}}),
             gives("234", 'b', 0, {{5, 9}, kNone, {0}}, {{9}, kNone, {0}}),
             changesNothing("234", 'b', 0, {{4, 6}, kNone, {0}}), changesNothing("234", 'b', 0, {{4}, kNone, {0}}),
             fails("234", 'b', 0, {{5}, kNone, {0}})});
}

TEST_F(ConstEqSlotTest, ARaisedMinimumIsComparedAlone) {
  checkBoth(
      {gives("0", 'x', 6, {range(6, 9), kNone, kFree}, {range(6, 9), kNone, {0}}),
       changesNothing("0", 'x', 5, {range(5, 9), kNone, kFree}), changesNothing("0", 'x', 4, {{4, 6}, kNone, kFree}),
       changesNothing("0", 'x', 2, {range(2, 4), kNone, kFree}), changesNothing("0", 'x', 5, {range(5, 9), kNone, {1}}),
       changesNothing("0", 'x', 2, {range(2, 4), kNone, {1}}), fails("0", 'x', 6, {range(6, 9), kNone, {1}}),
       changesNothing("0", 'x', 6, {range(6, 9), kNone, {0}}), changesNothing("0", 'x', 5, {range(5, 9), kNone, {0}})});
}

TEST_F(ConstEqSlotTest, ALoweredMaximumIsComparedAlone) {
  checkBoth(
      {gives("1", 'x', 4, {range(0, 4), kNone, kFree}, {range(0, 4), kNone, {0}}),
       changesNothing("1", 'x', 5, {range(0, 5), kNone, kFree}), changesNothing("1", 'x', 6, {{4, 6}, kNone, kFree}),
       changesNothing("1", 'x', 9, {range(6, 9), kNone, kFree}), changesNothing("1", 'x', 5, {range(0, 5), kNone, {1}}),
       changesNothing("1", 'x', 9, {range(6, 9), kNone, {1}}), fails("1", 'x', 4, {range(0, 4), kNone, {1}}),
       changesNothing("1", 'x', 4, {range(0, 4), kNone, {0}}), changesNothing("1", 'x', 5, {range(0, 5), kNone, {0}})});
}

TEST_F(ConstEqSlotTest, ABoundVariableDecidesAFreeBAndIsCheckedAgainstABoundOne) {
  checkBoth({gives("234", 'x', 5, {{5}, kNone, kFree}, {{5}, kNone, {1}}),
             gives("234", 'x', 4, {{4}, kNone, kFree}, {{4}, kNone, {0}}),
             gives("234", 'x', 6, {{6}, kNone, kFree}, {{6}, kNone, {0}}),
             changesNothing("234", 'x', 5, {{5}, kNone, {1}}), fails("234", 'x', 4, {{4}, kNone, {1}}),
             changesNothing("234", 'x', 4, {{4}, kNone, {0}}), fails("234", 'x', 5, {{5}, kNone, {0}})});
}

TEST_F(ConstEqSlotTest, ARemovedValueMattersWhenItIsTheOneComparedWith) {
  checkBoth({gives("5", 'x', 5, {{4, 6}, kNone, kFree}, {{4, 6}, kNone, {0}}),
             changesNothing("5", 'x', 4, {{3, 5, 6}, kNone, kFree}),
             changesNothing("5", 'x', 4, {{3, 6}, kNone, kFree}), fails("5", 'x', 5, {{4, 6}, kNone, {1}}),
             changesNothing("5", 'x', 4, {{3, 5, 6}, kNone, {1}}), changesNothing("5", 'x', 5, {{4, 6}, kNone, {0}}),
             changesNothing("5", 'x', 4, {{3, 5, 6}, kNone, {0}})});
}

// ----- whole propagations

TEST_F(ReifConstEqTest, RemovingTheValueBindsBToZeroAndBindingBToOneBindsTheValue) {
  CSint *x = cs_createCSint(0, 9);
  CSint *b = cs_ReifEQ(x, 4);
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(x, 4));
  EXPECT_EQ(values(b), Values{0});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(b, 1));
  EXPECT_EQ(values(x), Values{4});
}

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int v;
  Values b;
};

TEST_F(ReifConstEqTest, EachEventDecidesBOnlyWhenItSettlesTheValue) {
  const EventRow rows[] = {
      {"minimum raised to it", cs_GE, 4, kFree},
      {"minimum raised past it", cs_GE, 5, {0}},
      {"maximum lowered to it", cs_LE, 4, kFree},
      {"maximum lowered past it", cs_LE, 3, {0}},
      {"bound at the maximum", cs_GE, 9, {0}},
      {"bound at the minimum", cs_LE, 0, {0}},
      {"bound inside to it", cs_EQ, 4, {1}},
      {"bound inside to another", cs_EQ, 5, {0}},
      {"removed", cs_NEQ, 4, {0}},
      {"another removed", cs_NEQ, 5, kFree},
  };
  for (const EventRow &row : rows) {
    CSint *x = cs_createCSint(0, 9);
    CSint *eq = cs_ReifEQ(x, 4);
    CSint *neq = cs_ReifNEQ(x, 4);
    ASSERT_TRUE(row.narrow(x, row.v));
    EXPECT_EQ(values(eq), row.b) << row.name;
    EXPECT_EQ(values(neq), row.b.size() == 1 ? Values{1 - row.b[0]} : kFree) << row.name;
  }
}

TEST_F(ReifConstEqTest, RemovingTheMinimumOrMaximumItselfDecidesB) {
  for (const int v : {0, 9}) {
    CSint *x = cs_createCSint(0, 9);
    CSint *b = cs_ReifEQ(x, v);
    ASSERT_TRUE(cs_NEQ(x, v));
    EXPECT_EQ(values(b), Values{0});
  }
}

TEST_F(ReifConstEqTest, ABoundVariableThatDisagreesWithBFails) {
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_EQ(cs_ReifNEQ(x, 4), 1));
  EXPECT_EQ(values(x), without(range(0, 9), 4));
  EXPECT_FALSE(cs_EQ(x, 4));
}

}  // namespace

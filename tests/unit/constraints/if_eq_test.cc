// SPDX-License-Identifier: MIT
// cs_IfEq, cs_IfNeq: posting, and what the binding of a variable does; nothing else wakes them.
#include "unit/constraints/reif_slots.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::reif;

using Poster = bool (*)(CSint *, CSint *, int, int);

struct Form {
  const char *name;
  Poster post;
};

void PrintTo(const Form &form, std::ostream *out) { *out << form.name; }

using IfEqTest = SolverTest;
class IfEqFormTest : public SolverTest, public ::testing::WithParamInterface<Form> {};

INSTANTIATE_TEST_SUITE_P(, IfEqFormTest, ::testing::Values(Form{"cs_IfEq", cs_IfEq}, Form{"cs_IfNeq", cs_IfNeq}),
                         [](const auto &row) { return std::string(row.param.name); });

TEST_P(IfEqFormTest, OneConstraintIsAttachedToXThenToYAndHearsBindingsOnly) {
  CSint *x = cs_createCSint(0, 3);
  CSint *y = cs_createCSint(0, 9);
  const int mark = solver::trail.count();
  ASSERT_TRUE(GetParam().post(x, y, 1, 5));
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{x, y}));
  for (CSint *v : {x, y}) {
    EXPECT_EQ(attachments(v), (std::vector<std::pair<std::string, int>>{{GetParam().name, -1}}));
    EXPECT_EQ(busySlots(v), "234");
  }
  EXPECT_EQ(x->constraints->constraint, y->constraints->constraint);
  EXPECT_EQ(x->constraints->constraint->site->references, 1);
  EXPECT_EQ(values(x), range(0, 3));
  EXPECT_EQ(values(y), range(0, 9));
}

TEST_P(IfEqFormTest, ANullVariableIsFalseAndPostsNothing) {
  CSint *x = cs_createCSint(0, 3);
  EXPECT_FALSE(GetParam().post(x, nullptr, 1, 5));
  EXPECT_FALSE(GetParam().post(nullptr, x, 1, 5));
  EXPECT_FALSE(GetParam().post(nullptr, nullptr, 1, 5));
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

// Site, record, and an entry for each of x and y.
TEST_P(IfEqFormTest, EachFailingAllocationIsReportedOnceAndIsFalse) {
  struct Operands {
    CSint *x;
    CSint *y;
  };
  const auto attempt = [](Operands &o) { return GetParam().post(o.x, o.y, 1, 5); };
  const auto make = [] { return Operands{cs_createCSint(0, 3), cs_createCSint(0, 9)}; };
  EXPECT_EQ(failEachAllocation(make, attempt), 4);
  for (int room = 1; room <= 3; ++room) {
    const auto narrow = [&] {
      const Operands o = make();
      while ((solver::trail.count() + room) % Trail::kCapacity != 0) cs_backtrack(nullptr, 0, nullptr);
      return o;
    };
    EXPECT_EQ(failEachAllocation(narrow, attempt), room == 1 ? 5 : 4) << room;
  }
}

TEST_P(IfEqFormTest, NarrowingPastTheValuesOrRemovingThemWakesNothing) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(GetParam().post(x, y, 1, 5));
  ASSERT_TRUE(cs_GE(x, 2) && cs_LE(x, 8) && cs_NEQ(x, 5));
  EXPECT_EQ(values(y), range(0, 9));
  ASSERT_TRUE(cs_LE(y, 4) && cs_GE(y, 1) && cs_NEQ(y, 2));
  EXPECT_EQ(values(x), without(range(2, 8), 5));
  EXPECT_EQ(values(y), without(range(1, 4), 2));
}

TEST_P(IfEqFormTest, ABindingToAnotherValueChangesNothing) {
  for (const bool bindX : {true, false}) {
    CSint *x = cs_createCSint(0, 9);
    CSint *y = cs_createCSint(0, 9);
    ASSERT_TRUE(GetParam().post(x, y, 1, 5));
    ASSERT_TRUE(cs_EQ(bindX ? x : y, 2));
    EXPECT_EQ(values(bindX ? y : x), range(0, 9));
  }
}

TEST_P(IfEqFormTest, RestoringDetachesIt) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  cs_saveContext();
  ASSERT_TRUE(GetParam().post(x, y, 1, 5));
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x, 1));
  EXPECT_EQ(values(y), range(0, 9));
}

// ----- posting

struct PostingRow {
  Values x;
  Values y;
  bool result;
  Values xAfter;
  Values yAfter;
};

void checkPosting(Poster post, const std::vector<PostingRow> &rows) {
  for (const PostingRow &row : rows) {
    CSint *x = fromValues(row.x);
    CSint *y = fromValues(row.y);
    EXPECT_EQ(post(x, y, 1, 5), row.result) << ::testing::PrintToString(row.x) << ::testing::PrintToString(row.y);
    EXPECT_EQ(values(x), row.xAfter);
    EXPECT_EQ(values(y), row.yAfter);
    EXPECT_EQ(cs_getNbConstraints(x), 1);
    EXPECT_EQ(cs_getNbConstraints(y), 1);
  }
}

TEST_F(IfEqTest, EqPostingDemandsTheOtherValueFromABoundSideAndFailsWithoutIt) {
  checkPosting(cs_IfEq, {{{1}, range(0, 9), true, {1}, {5}},
                         {{1}, range(0, 4), false, {1}, range(0, 4)},
                         {{1}, {4, 6}, false, {1}, {4, 6}},
                         {{1}, {5}, true, {1}, {5}},
                         {{1}, {4}, false, {1}, {4}},
                         {range(0, 3), {5}, true, {1}, {5}},
                         {{0, 2}, {5}, false, {0, 2}, {5}},
                         {range(2, 3), {5}, false, range(2, 3), {5}},
                         {{2}, {5}, false, {2}, {5}},
                         {{2}, {4}, true, {2}, {4}},
                         {{2}, range(0, 9), true, {2}, range(0, 9)},
                         {range(0, 3), {4}, true, range(0, 3), {4}},
                         {{0, 2}, range(0, 9), true, {0, 2}, range(0, 9)}});
}

TEST_F(IfEqTest, NeqPostingRemovesTheOtherValueFromABoundSideAndTakesAMissingOneAsSatisfied) {
  checkPosting(cs_IfNeq, {{{1}, range(0, 9), true, {1}, without(range(0, 9), 5)},
                          {{1}, range(0, 4), true, {1}, range(0, 4)},
                          {{1}, {4, 6}, true, {1}, {4, 6}},
                          {{1}, {5, 6}, true, {1}, {6}},
                          {{1}, {5}, false, {1}, {5}},
                          {{1}, {4}, true, {1}, {4}},
                          {range(0, 3), {5}, true, {0, 2, 3}, {5}},
                          {{0, 2}, {5}, true, {0, 2}, {5}},
                          {{1, 2}, {5}, true, {2}, {5}},
                          {{2}, {5}, true, {2}, {5}},
                          {{2}, range(0, 9), true, {2}, range(0, 9)},
                          {range(0, 3), range(0, 9), true, range(0, 3), range(0, 9)}});
}

// ----- slots; each binding acts in one direction only

class IfEqSlotTest : public SlotTest {
 protected:
  void checkRows(Poster post, const std::vector<SlotRow> &rows) {
    check(
        [post](CSint *x, CSint *y) {
          EXPECT_TRUE(post(x, y, 1, 5));
          return cs_createCSint(0, 1);
        },
        rows);
  }
};

TEST_F(IfEqSlotTest, EqDemandsTheOtherValueFromTheSideThatWasBound) {
  checkRows(cs_IfEq,
            {gives("234", 'x', 1, {{1}, range(0, 9), kFree}, {{1}, {5}, kFree}),
             changesNothing("234", 'x', 1, {{1}, {5}, kFree}), fails("234", 'x', 1, {{1}, {4, 6}, kFree}),
             fails("234", 'x', 1, {{1}, range(6, 9), kFree}), changesNothing("234", 'x', 2, {{2}, range(0, 9), kFree}),
             changesNothing("234", 'x', 2, {{2}, {5}, kFree}),
             gives("234", 'y', 5, {range(0, 9), {5}, kFree}, {{1}, {5}, kFree}),
             changesNothing("234", 'y', 5, {{1}, {5}, kFree}), fails("234", 'y', 5, {{0, 2}, {5}, kFree}),
             fails("234", 'y', 5, {range(2, 9), {5}, kFree}), changesNothing("234", 'y', 4, {range(0, 9), {4}, kFree}),
             changesNothing("234", 'y', 4, {{1}, {4}, kFree})});
}

TEST_F(IfEqSlotTest, NeqRemovesTheOtherValueForTheSideThatWasBound) {
  checkRows(
      cs_IfNeq,
      {gives("234", 'x', 1, {{1}, range(0, 9), kFree}, {{1}, without(range(0, 9), 5), kFree}),
       gives("234", 'x', 1, {{1}, {5, 8}, kFree}, {{1}, {8}, kFree}),
       changesNothing("234", 'x', 1, {{1}, {4, 6}, kFree}), changesNothing("234", 'x', 1, {{1}, range(6, 9), kFree}),
       fails("234", 'x', 1, {{1}, {5}, kFree}), changesNothing("234", 'x', 2, {{2}, range(0, 9), kFree}),
       gives("234", 'y', 5, {range(0, 9), {5}, kFree}, {without(range(0, 9), 1), {5}, kFree}),
       gives("234", 'y', 5, {{1, 8}, {5}, kFree}, {{8}, {5}, kFree}),
       changesNothing("234", 'y', 5, {{0, 2}, {5}, kFree}), changesNothing("234", 'y', 5, {{2}, {5}, kFree}),
       fails("234", 'y', 5, {{1}, {5}, kFree}), changesNothing("234", 'y', 4, {range(0, 9), {4}, kFree})});
}

// ----- whole propagations

TEST_F(IfEqTest, XBoundWithoutTheOtherValueInYFailsAtPosting) {
  EXPECT_FALSE(cs_IfEq(CSINT(1), cs_createCSint(0, 4), 1, 5));
}

TEST_F(IfEqTest, BindingYBindsXUnlessXIsBoundElsewhere) {
  CSint *x = cs_createCSint(0, 3);
  CSint *y = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_IfEq(x, y, 1, 5));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(y, 5));
  EXPECT_EQ(values(x), Values{1});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(x, 2));
  EXPECT_EQ(values(y), range(0, 9));
  EXPECT_FALSE(cs_EQ(y, 5));
}

TEST_F(IfEqTest, NeqRemovesTheValueOrFindsItMissing) {
  CSint *y = cs_createCSint(0, 9);
  EXPECT_TRUE(cs_IfNeq(CSINT(1), y, 1, 5));
  EXPECT_EQ(values(y), without(range(0, 9), 5));
  EXPECT_TRUE(cs_IfNeq(CSINT(1), y, 1, 5));
  EXPECT_EQ(values(y), without(range(0, 9), 5));
}

// The rule from the first argument to the second is the only one that the binding wakes.
TEST_F(IfEqTest, TheSameVariableTwiceFollowsTheRuleFromXToYOnly) {
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_IfEq(x, x, 1, 5));
  EXPECT_EQ(cs_getNbConstraints(x), 2);
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(x, 1));
  cs_restoreContext();
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(x, 5));
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(x, 4));
  EXPECT_FALSE(cs_IfEq(CSINT(5), CSINT(4), 1, 4));
  CSint *five = CSINT(5);
  EXPECT_FALSE(cs_IfEq(five, five, 1, 5));  // posting tries both directions
  EXPECT_TRUE(cs_IfEq(five, five, 5, 5));
  EXPECT_FALSE(cs_IfNeq(five, five, 5, 5));
  EXPECT_TRUE(cs_IfNeq(five, five, 1, 5));
}

TEST_F(IfEqTest, TheSameVariableTwiceWithOneValueForbidsItUnderNeqAndNothingUnderEq) {
  CSint *x = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_IfEq(x, x, 4, 4));
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(x, 4));
  cs_restoreContext();
  ASSERT_TRUE(cs_IfNeq(x, x, 4, 4));
  EXPECT_EQ(values(x), range(0, 9));
  EXPECT_FALSE(cs_EQ(x, 4));
}

TEST_F(IfEqTest, TheSmallestAndTheLargestIntAreValuesLikeOthers) {
  CSint *x = cs_createCSint(kIntMin, kIntMin + 2);
  CSint *y = cs_createCSint(kIntMax - 2, kIntMax);
  ASSERT_TRUE(cs_IfEq(x, y, kIntMin, kIntMax));
  ASSERT_TRUE(cs_IfNeq(x, y, kIntMin + 1, kIntMax - 1));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x, kIntMin));
  EXPECT_EQ(values(y), Values{kIntMax});
  cs_restoreContext();
  ASSERT_TRUE(cs_EQ(y, kIntMax - 1));
  EXPECT_EQ(values(x), (Values{kIntMin, kIntMin + 2}));
  EXPECT_FALSE(cs_EQ(x, kIntMin));
  EXPECT_FALSE(cs_IfEq(CSINT(0), CSINT(kIntMin), kIntMax, kIntMin));
}

TEST_F(IfEqTest, AWholeRangeVariableIsNarrowedToTheValue) {
  CSint *x = cs_createCSint(kIntMin, kIntMax);
  ASSERT_TRUE(cs_IfEq(x, CSINT(kIntMax), 7, kIntMax));
  EXPECT_EQ(values(x), Values{7});
  CSint *y = cs_createCSint(kIntMin, kIntMax);
  ASSERT_TRUE(cs_IfNeq(CSINT(kIntMin), y, kIntMin, kIntMax));
  EXPECT_EQ(cs_getMin(y), kIntMin);
  EXPECT_EQ(cs_getMax(y), kIntMax - 1);
}

}  // namespace

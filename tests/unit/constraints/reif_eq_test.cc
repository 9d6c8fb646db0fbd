// SPDX-License-Identifier: MIT
// cs_ReifEq, cs_ReifNeq: posting, and each handler slot on given states.
#include "support/constraints/reified_forms.h"
#include "support/kit/batch.h"
#include "unit/constraints/reif_slots.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::reif;

using ReifEqTest = SolverTest;

// ----- the outcome at posting

struct PostingRow {
  Values x;
  Values y;
  int eq;  // -1: not decided
};

const PostingRow kPostings[] = {
    {range(0, 2), range(3, 5), 0},
    {range(3, 5), range(0, 2), 0},
    {range(0, 3), range(3, 5), -1},
    {{1, 3}, {2, 4}, 0},
    {{2, 4}, {1, 3}, 0},
    {{1, 3, 4}, {2, 4}, -1},
    {{1, 9}, range(3, 5), 0},
    {range(3, 5), {1, 9}, 0},
    {{1, 5}, range(3, 5), -1},
    {{4}, {4}, 1},
    {{4}, {5}, 0},
    {{4}, {4, 5}, -1},
    {{4}, {3, 5}, 0},
    {{-3, -1}, {-2, 0}, 0},
    {{-3, -1}, {-3, 0}, -1},
};

void checkPosting(const Form &form, CSint *x, CSint *y, int eq) {
  const std::vector<CSint *> variables = x == y ? std::vector{x} : std::vector{x, y};
  const auto post = [&] { return form.post(x, y); };
  if (eq < 0) return expectUndecided(post, variables, form.name, false);
  expectDecided(post, variables, form.post == cs_ReifEq ? eq : 1 - eq, false);
}

TEST_F(ReifEqTest, IsDecidedAtPostingByTheValuesThatAreShared) {
  for (const PostingRow &row : kPostings) {
    checkPosting(kEq, fromValues(row.x), fromValues(row.y), row.eq);
    checkPosting(kNeq, fromValues(row.x), fromValues(row.y), row.eq);
  }
}

TEST_F(ReifEqTest, EqOfAVariableWithItselfIsOneAndNeqIsZero) {
  CSint *x = cs_createCSint(0, 9);
  checkPosting(kEq, x, x, 1);
  checkPosting(kNeq, x, x, 1);
}

TEST_F(ReifEqTest, OverlappingDomainsWithoutASharedValueAreDifferent) {
  CSint *x = cs_createCSint(1, 3);
  CSint *y = cs_createCSint(2, 4);
  ASSERT_TRUE(cs_NEQ(x, 2) && cs_NEQ(y, 3));
  checkPosting(kEq, x, y, 0);
  checkPosting(kNeq, x, y, 0);
}

// ----- refusals

class ReifEqFormTest : public SolverTest, public ::testing::WithParamInterface<Form> {};

INSTANTIATE_TEST_SUITE_P(, ReifEqFormTest, ::testing::Values(kEq, kNeq), formName<Form>);

TEST_P(ReifEqFormTest, ADecidedOutcomeNeedsOnlyItsVariable) {
  const auto make = [] { return Operands{cs_createCSint(0, 4), cs_createCSint(5, 9)}; };
  const auto makeFull = [&] {
    const Operands o = make();
    fillVariables();
    return o;
  };
  const auto attempt = [](Operands &o) { return GetParam().post(o.x, o.y) != nullptr; };
  EXPECT_EQ(failEachAllocation(make, attempt), 0);
  EXPECT_EQ(failEachAllocation(makeFull, attempt), 1);
}

// ----- slots

class EqSlotTest : public SlotTest {
 protected:
  void checkBoth(const std::vector<SlotRow> &rows) {
    check([](CSint *x, CSint *y) { return cs_ReifEq(x, y); }, rows);
    check([](CSint *x, CSint *y) { return cs_ReifNeq(x, y); }, inverted(rows));
  }
};

// The rules below are the control's in slots 2 to 4, and the watch's in all slots and on both sides.
struct Woken {
  const char *codes;
  char who;
};
const Woken kControl{"234", 'b'};
const Woken kWokenByB[] = {kControl, {"012345", 'x'}, {"012345", 'y'}};
const Woken kWatched[] = {{"012345", 'x'}, {"012345", 'y'}};

TEST_F(EqSlotTest, EqualisingIntersectsTheBounds) {
  for (const auto &[codes, who] : kWokenByB)
    checkBoth({gives(codes, who, 1, {range(0, 9), range(3, 15), {1}}, {range(3, 9), range(3, 9), {1}}),
               gives(codes, who, 1, {range(3, 15), range(0, 9), {1}}, {range(3, 9), range(3, 9), {1}}),
               gives(codes, who, 1, {range(0, 15), range(3, 9), {1}}, {range(3, 9), range(3, 9), {1}}),
               gives(codes, who, 1, {{5}, range(0, 9), {1}}, {{5}, {5}, {1}}),
               gives(codes, who, 1, {range(0, 9), {5}, {1}}, {{5}, {5}, {1}}),
               gives(codes, who, 1, {range(0, 5), range(5, 9), {1}}, {{5}, {5}, {1}}),
               changesNothing(codes, who, 1, {range(3, 9), range(3, 9), {1}}),
               fails(codes, who, 1, {range(0, 3), range(5, 9), {1}}), fails(codes, who, 1, {{4}, {5}, {1}})});
}

TEST_F(EqSlotTest, EqualisingRemovesTheHolesOfEachFromTheOther) {
  for (const auto &[codes, who] : kWokenByB)
    checkBoth({gives(codes, who, 1, {{1, 3, 5, 7}, range(0, 9), {1}}, {{1, 3, 5, 7}, {1, 3, 5, 7}, {1}}),
               gives(codes, who, 1, {range(0, 9), {1, 3, 5, 7}, {1}}, {{1, 3, 5, 7}, {1, 3, 5, 7}, {1}}),
               gives(codes, who, 1, {{1, 3, 5}, {1, 2, 5}, {1}}, {{1, 5}, {1, 5}, {1}}),
               gives(codes, who, 1, {{1, 2, 4, 9}, {0, 2, 3, 9, 11}, {1}}, {{2, 9}, {2, 9}, {1}})});
}

// One call narrows y to the bounds that x had before y's holes were met; what is left over waits for x's own event.
TEST_F(EqSlotTest, EqualisingWalksFromTheMinimumToTheMaximumOfXOnce) {
  for (const auto &[codes, who] : kWokenByB)
    checkBoth({gives(codes, who, 1, {{1, 3}, {1, 2}, {1}}, {{1}, {1, 2}, {1}}),
               gives(codes, who, 1, {{0, 4, 9}, {0, 3, 6}, {1}}, {{0}, {0, 6}, {1}}),
               {codes, who, 1, {{1, 3}, {2, 4}, {1}}, false, {{3}, {4}, {1}}},
               {codes, who, 1, {{0, 3, 6}, {0, 4, 6}, {1}}, true, {{0, 6}, {0, 6}, {1}}}});
}

TEST_F(EqSlotTest, SeparatingRemovesTheValueOfABoundSide) {
  for (const auto &[codes, who] : kWokenByB)
    checkBoth({gives(codes, who, 0, {{5}, range(0, 9), {0}}, {{5}, without(range(0, 9), 5), {0}}),
               gives(codes, who, 0, {range(0, 9), {5}, {0}}, {without(range(0, 9), 5), {5}, {0}}),
               gives(codes, who, 0, {{5}, range(5, 9), {0}}, {{5}, range(6, 9), {0}}),
               gives(codes, who, 0, {{5}, {5, 8}, {0}}, {{5}, {8}, {0}}),
               gives(codes, who, 0, {{5, 8}, {8}, {0}}, {{5}, {8}, {0}}),
               changesNothing(codes, who, 0, {{5}, {4, 6}, {0}}), changesNothing(codes, who, 0, {{5}, {4}, {0}}),
               changesNothing(codes, who, 0, {range(0, 9), range(0, 9), {0}}),
               changesNothing(codes, who, 0, {{1, 9}, {1, 9}, {0}}), fails(codes, who, 0, {{5}, {5}, {0}})});
}

TEST_F(EqSlotTest, AFreeBIsBoundWhenNoValueIsShared) {
  for (const auto &[codes, who] : kWatched)
    checkBoth({gives(codes, who, 5, {range(0, 4), range(5, 9), kFree}, {range(0, 4), range(5, 9), {0}}),
               gives(codes, who, 5, {range(5, 9), range(0, 4), kFree}, {range(5, 9), range(0, 4), {0}}),
               gives(codes, who, 5, {{1, 3}, {2, 4}, kFree}, {{1, 3}, {2, 4}, {0}}),
               gives(codes, who, 5, {{1, 9}, range(3, 5), kFree}, {{1, 9}, range(3, 5), {0}}),
               gives(codes, who, 5, {{5}, {4, 6}, kFree}, {{5}, {4, 6}, {0}}),
               gives(codes, who, 5, {{5}, {6}, kFree}, {{5}, {6}, {0}})});
}

TEST_F(EqSlotTest, AFreeBIsBoundWhenBothSidesAreBoundToOneValue) {
  for (const auto &[codes, who] : kWatched)
    checkBoth({gives(codes, who, 5, {{5}, {5}, kFree}, {{5}, {5}, {1}}),
               changesNothing(codes, who, 5, {{5}, {5, 6}, kFree}), changesNothing(codes, who, 5, {{5, 6}, {5}, kFree}),
               changesNothing(codes, who, 5, {{1, 3}, {3, 4}, kFree}),
               changesNothing(codes, who, 5, {{3, 9}, range(3, 5), kFree}),
               changesNothing(codes, who, 5, {range(0, 5), range(5, 9), kFree})});
}

// ----- whole propagations

TEST_F(ReifEqTest, BindingBToEqualLeavesTheIntersectionOfTheDomains) {
  for (const bool neq : {false, true}) {
    CSint *x = fromValues({1, 3, 6});
    CSint *y = fromValues({1, 2, 4, 6, 7});
    CSint *b = neq ? cs_ReifNeq(x, y) : cs_ReifEq(x, y);
    ASSERT_TRUE(cs_EQ(b, neq ? 0 : 1));
    EXPECT_EQ(values(x), (Values{1, 6}));
    EXPECT_EQ(values(y), (Values{1, 6}));
  }
}

// What one walk leaves over, the event of the narrowed side takes away.
TEST_F(ReifEqTest, TheNarrowedSideWakesTheWatchUntilBothAgree) {
  CSint *x = fromValues({0, 4, 9});
  CSint *y = fromValues({0, 3, 6});
  ASSERT_TRUE(cs_EQ(cs_ReifEq(x, y), 1));
  EXPECT_EQ(values(x), Values{0});
  EXPECT_EQ(values(y), Values{0});
}

TEST_F(ReifEqTest, RemovingTheLastSharedValueBindsB) {
  CSint *x = cs_createCSint(0, 5);
  CSint *y = cs_createCSint(3, 9);
  CSint *eq = cs_ReifEq(x, y);
  CSint *neq = cs_ReifNeq(x, y);
  ASSERT_TRUE(cs_NEQ(x, 4) && cs_NEQ(y, 3));
  EXPECT_EQ(values(eq), kFree);
  ASSERT_TRUE(cs_NEQ(x, 5));
  EXPECT_EQ(values(eq), Values{0});
  EXPECT_EQ(values(neq), Values{1});
}

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int v;
  Values x;
};

// The six events of x in 0..9, first with x = y said and then with x != y said. Forward checking acts on the events
// that bind only.
TEST_F(ReifEqTest, EveryEventReachesTheOtherSide) {
  const EventRow rows[] = {
      {"minimum raised", cs_GE, 4, range(4, 9)}, {"maximum lowered", cs_LE, 4, range(0, 4)},
      {"bound at the maximum", cs_GE, 9, {9}},   {"bound at the minimum", cs_LE, 0, {0}},
      {"bound inside", cs_EQ, 4, {4}},           {"removed", cs_NEQ, 4, without(range(0, 9), 4)},
  };
  for (const EventRow &row : rows) {
    for (const bool swapped : {false, true}) {
      CSint *x = cs_createCSint(0, 9);
      CSint *y = cs_createCSint(0, 9);
      CSint *b = swapped ? cs_ReifEq(y, x) : cs_ReifEq(x, y);
      cs_saveContext();
      ASSERT_TRUE(cs_EQ(b, 1) && row.narrow(x, row.v));
      EXPECT_EQ(values(x), row.x) << row.name;
      EXPECT_EQ(values(y), row.x) << row.name;
      cs_restoreContext();
      ASSERT_TRUE(cs_EQ(b, 0) && row.narrow(x, row.v));
      EXPECT_EQ(values(x), row.x) << row.name;
      EXPECT_EQ(values(y), row.x.size() == 1 ? without(range(0, 9), row.x[0]) : range(0, 9)) << row.name;
    }
  }
}

// All that x and y share is gone before they are told to be equal.
TEST_F(ReifEqTest, EqualityThatHasBecomeImpossibleFailsAtOnce) {
  CSint *x = fromValues({1, 3, 5, 9, 10});
  CSint *y = fromValues({2, 4, 8, 10});
  CSint *b = cs_ReifEq(x, y);
  const CallLog log;
  EXPECT_FALSE(together([=] { return cs_EQ(b, 1) && cs_NEQ(x, 10); }));
  EXPECT_EQ(log.calls.back(), (Call{false, b, 2, "cs_ReifEq"}));
}

}  // namespace

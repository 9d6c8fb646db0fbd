// SPDX-License-Identifier: MIT
// The reified comparisons at the ends of the int range.
#include "support/constraints/reified_forms.h"

namespace {

using namespace koru;
using namespace koru::test;
using namespace koru::test::reif;

struct Bounds {
  int min;
  int max;
  bool operator==(const Bounds &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Bounds &bounds) { return out << bounds.min << ".." << bounds.max; }

Bounds boundsOf(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

const Bounds kWhole{kIntMin, kIntMax};

const int kInts[] = {kIntMin, kIntMin + 1, kIntMin + 2, -1, 0, 1, kIntMax - 2, kIntMax - 1, kIntMax};

const Bounds kRanges[] = {kWhole,
                          {kIntMin, kIntMin},
                          {kIntMin, kIntMin + 1},
                          {kIntMin, kIntMin + 2},
                          {kIntMin + 1, kIntMax},
                          {kIntMin, kIntMax - 1},
                          {kIntMin, 0},
                          {-1, 1},
                          {0, kIntMax},
                          {kIntMax - 2, kIntMax},
                          {kIntMax - 1, kIntMax},
                          {kIntMax, kIntMax}};

using ReifLimits = SolverTest;

// ----- with an int. The part of an interval where x op v holds, in 64 bits; empty when min > max.

struct Wide {
  std::int64_t min;
  std::int64_t max;
};

Wide part(const ConstForm &form, Bounds x, int v, bool holds) {
  const std::int64_t w = v;
  const bool strict = form.post == cs_ReifLT || form.post == cs_ReifGE;  // the border lies below v
  const bool low = (form.post == cs_ReifLT || form.post == cs_ReifLE) == holds;
  const std::int64_t border = strict ? w - 1 : w;
  return low ? Wide{x.min, std::min<std::int64_t>(x.max, border)}
             : Wide{std::max<std::int64_t>(x.min, border + 1), x.max};
}

bool empty(const Wide &w) { return w.min > w.max; }
Bounds narrow(const Wide &w) { return {static_cast<int>(w.min), static_cast<int>(w.max)}; }

class ReifConstOrderLimits : public SolverTest, public ::testing::WithParamInterface<ConstForm> {
 protected:
  static void checkBindings(CSint *x, CSint *b, Bounds range, int v) {
    for (const bool holds : {false, true}) {
      cs_saveContext();
      EXPECT_TRUE(cs_EQ(b, holds ? 1 : 0));
      EXPECT_EQ(boundsOf(x), narrow(part(GetParam(), range, v, holds))) << range << " with " << v << " " << holds;
      cs_restoreContext();
      cs_saveContext();
      const Bounds kept = narrow(part(GetParam(), range, v, holds));
      EXPECT_TRUE(cs_GE(x, kept.min) && cs_LE(x, kept.max));
      EXPECT_EQ(boundsOf(b), (Bounds{holds, holds})) << range << " with " << v;
      cs_restoreContext();
      EXPECT_EQ(boundsOf(x), range);
    }
  }
};

INSTANTIATE_TEST_SUITE_P(, ReifConstOrderLimits, ::testing::Values(kLT, kLE, kGT, kGE), formName<ConstForm>);

TEST_P(ReifConstOrderLimits, EveryIntIsComparedExactly) {
  int undecided = 0;
  for (const Bounds range : kRanges) {
    for (const int v : kInts) {
      CSint *x = cs_createCSint(range.min, range.max);
      CSint *b = GetParam().post(x, v);
      ASSERT_NE(b, nullptr);
      const bool mayHold = !empty(part(GetParam(), range, v, true));
      const bool mayNot = !empty(part(GetParam(), range, v, false));
      EXPECT_EQ(boundsOf(b), (Bounds{mayNot ? 0 : 1, mayHold ? 1 : 0})) << range << " with " << v;
      EXPECT_EQ(cs_getNbConstraints(x), mayHold && mayNot ? 1 : 0) << range << " with " << v;
      if (!mayHold || !mayNot) continue;
      ++undecided;
      checkBindings(x, b, range, v);
    }
  }
  EXPECT_GE(undecided, 30);
}

TEST_F(ReifLimits, NoIntIsBelowTheSmallestNorAboveTheLargest) {
  for (const Bounds range : kRanges) {
    CSint *x = cs_createCSint(range.min, range.max);
    EXPECT_EQ(boundsOf(cs_ReifLT(x, kIntMin)), (Bounds{0, 0}));
    EXPECT_EQ(boundsOf(cs_ReifGE(x, kIntMin)), (Bounds{1, 1}));
    EXPECT_EQ(boundsOf(cs_ReifGT(x, kIntMax)), (Bounds{0, 0}));
    EXPECT_EQ(boundsOf(cs_ReifLE(x, kIntMax)), (Bounds{1, 1}));
    EXPECT_EQ(cs_getNbConstraints(x), 0);
  }
}

// Only ends of intervals are removed: an inner value of a wide variable would need a bit array for all of them.
TEST_F(ReifLimits, EqualityWithAnEndOfTheRangeBindsOrRemovesIt) {
  for (const Bounds range : kRanges) {
    for (const int v : {range.min, range.max}) {
      if (range.min == range.max) continue;
      for (const bool neq : {false, true}) {
        CSint *x = cs_createCSint(range.min, range.max);
        CSint *b = neq ? cs_ReifNEQ(x, v) : cs_ReifEQ(x, v);
        ASSERT_TRUE(cs_isFree(b)) << range << " with " << v;
        cs_saveContext();
        EXPECT_TRUE(cs_EQ(b, neq ? 0 : 1));
        EXPECT_EQ(boundsOf(x), (Bounds{v, v}));
        cs_restoreContext();
        cs_saveContext();
        EXPECT_TRUE(cs_EQ(b, neq ? 1 : 0));
        EXPECT_EQ(boundsOf(x), v == range.min ? (Bounds{v + 1, range.max}) : (Bounds{range.min, v - 1}));
        cs_restoreContext();
        ASSERT_TRUE(cs_EQ(x, v));
        EXPECT_EQ(boundsOf(b), (neq ? Bounds{0, 0} : Bounds{1, 1}));
      }
    }
  }
}

TEST_F(ReifLimits, EqualityWithAnIntOutsideTheRangeIsDecided) {
  CSint *x = cs_createCSint(kIntMin + 1, kIntMax - 1);
  for (const int v : {kIntMin, kIntMax}) {
    EXPECT_EQ(boundsOf(cs_ReifEQ(x, v)), (Bounds{0, 0}));
    EXPECT_EQ(boundsOf(cs_ReifNEQ(x, v)), (Bounds{1, 1}));
  }
  EXPECT_EQ(cs_getNbConstraints(x), 0);
}

// ----- two variables

struct OrderRow {
  Bounds x;
  Bounds y;
  bool holds;
  Bounds xAfter;
  Bounds yAfter;
};

// Of x < y, and of x <= y; the other two on exchanged operands.
void checkOrder(TwoVariables post, TwoVariables exchanged, const std::vector<OrderRow> &rows) {
  for (const OrderRow &row : rows) {
    for (const bool exchange : {false, true}) {
      CSint *x = cs_createCSint(row.x.min, row.x.max);
      CSint *y = cs_createCSint(row.y.min, row.y.max);
      CSint *b = exchange ? exchanged(y, x) : post(x, y);
      ASSERT_TRUE(cs_isFree(b)) << row.x << " and " << row.y;
      ASSERT_TRUE(cs_EQ(b, row.holds ? 1 : 0));
      EXPECT_EQ(boundsOf(x), row.xAfter) << row.x << " and " << row.y << " " << row.holds;
      EXPECT_EQ(boundsOf(y), row.yAfter) << row.x << " and " << row.y << " " << row.holds;
    }
  }
}

TEST_F(ReifLimits, StrictOrderOfWholeRangesNarrowsOneStepAtEachEnd) {
  const Bounds lower{kIntMin, kIntMin + 1};
  const Bounds upper{kIntMax - 1, kIntMax};
  checkOrder(cs_ReifLt, cs_ReifGt,
             {{kWhole, kWhole, true, {kIntMin, kIntMax - 1}, {kIntMin + 1, kIntMax}},
              {kWhole, kWhole, false, kWhole, kWhole},
              {lower, lower, true, {kIntMin, kIntMin}, {kIntMin + 1, kIntMin + 1}},
              {upper, upper, true, {kIntMax - 1, kIntMax - 1}, {kIntMax, kIntMax}},
              {kWhole, lower, true, {kIntMin, kIntMin}, {kIntMin + 1, kIntMin + 1}},
              {kWhole, lower, false, kWhole, lower},
              {upper, kWhole, true, {kIntMax - 1, kIntMax - 1}, {kIntMax, kIntMax}},
              {upper, kWhole, false, upper, kWhole},
              {kWhole, upper, false, upper, upper},
              {lower, kWhole, false, lower, lower}});
}

TEST_F(ReifLimits, OrderOfWholeRangesNarrowsOneStepAtEachEndWhenItDoesNotHold) {
  const Bounds lower{kIntMin, kIntMin + 1};
  const Bounds upper{kIntMax - 1, kIntMax};
  checkOrder(cs_ReifLe, cs_ReifGe,
             {{kWhole, kWhole, true, kWhole, kWhole},
              {kWhole, kWhole, false, {kIntMin + 1, kIntMax}, {kIntMin, kIntMax - 1}},
              {lower, lower, false, {kIntMin + 1, kIntMin + 1}, {kIntMin, kIntMin}},
              {upper, upper, false, {kIntMax, kIntMax}, {kIntMax - 1, kIntMax - 1}},
              {kWhole, lower, true, lower, lower},
              {upper, kWhole, true, upper, upper},
              {kWhole, upper, false, {kIntMax, kIntMax}, {kIntMax - 1, kIntMax - 1}},
              {lower, kWhole, false, {kIntMin + 1, kIntMin + 1}, {kIntMin, kIntMin}}});
}

TEST_F(ReifLimits, TheExtremeIntsAreOrderedByTheirValues) {
  for (const Form &form : kForms) {
    for (const int p : kInts) {
      for (const int q : kInts) {
        EXPECT_EQ(cs_getValue(form.post(CSINT(p), CSINT(q))), form.holds(p, q) ? 1 : 0) << form.name << p << " " << q;
      }
    }
  }
}

TEST_F(ReifLimits, RaisingAWholeRangeToItsLastValueDecidesTheOrder) {
  CSint *x = cs_createCSint(kIntMin, kIntMax);
  CSint *y = cs_createCSint(kIntMin, kIntMax);
  CSint *lt = cs_ReifLt(x, y);
  CSint *le = cs_ReifLe(y, x);
  ASSERT_TRUE(cs_isFree(lt) && cs_isFree(le));
  ASSERT_TRUE(cs_GE(x, kIntMax));
  EXPECT_EQ(boundsOf(lt), (Bounds{0, 0}));
  EXPECT_EQ(boundsOf(le), (Bounds{1, 1}));
  EXPECT_EQ(boundsOf(y), kWhole);
}

TEST_F(ReifLimits, EqualisingWholeRangesNarrowsBoundsOnly) {
  CSint *x = cs_createCSint(kIntMin, kIntMax);
  CSint *y = cs_createCSint(kIntMin + 1, kIntMax - 1);
  CSint *b = cs_ReifEq(x, y);
  ASSERT_TRUE(cs_EQ(b, 1));
  EXPECT_EQ(boundsOf(x), boundsOf(y));
  ASSERT_TRUE(cs_EQ(x, kIntMax - 1));
  EXPECT_EQ(boundsOf(y), (Bounds{kIntMax - 1, kIntMax - 1}));
}

// ----- sets of values at both ends: every assignment of x, y and b in two orders

std::vector<std::vector<int>> setsAtTheEnds() {
  std::vector<std::vector<int>> sets;
  for (const int low : {kIntMin, kIntMax - 2}) {
    for (int mask = 1; mask < 8; ++mask) {
      sets.emplace_back();
      for (int i = 0; i < 3; ++i)
        if ((mask >> i & 1) != 0) sets.back().push_back(low + i);
    }
  }
  return sets;
}

void checkAssignments(CSint *b, const std::vector<CSint *> &compared, const std::vector<int> &chosen, bool holds) {
  for (const int said : {0, 1}) {
    for (const bool bFirst : {false, true}) {
      cs_saveContext();
      bool accepted = !bFirst || cs_EQ(b, said);
      for (std::size_t i = 0; i < compared.size(); ++i) accepted = accepted && cs_EQ(compared[i], chosen[i]);
      accepted = accepted && cs_EQ(b, said);
      EXPECT_EQ(accepted, (said == 1) == holds) << ::testing::PrintToString(chosen) << " " << said << " " << bFirst;
      cs_restoreContext();
    }
  }
}

class ReifFormLimits : public SolverTest, public ::testing::WithParamInterface<Form> {};
INSTANTIATE_TEST_SUITE_P(, ReifFormLimits, ::testing::ValuesIn(kForms), formName<Form>);

TEST_P(ReifFormLimits, AssignmentsAreAcceptedExactlyWhenBTellsTheTruth) {
  for (const auto &xs : setsAtTheEnds()) {
    for (const auto &ys : setsAtTheEnds()) {
      CSint *x = fromValues(xs);
      CSint *y = fromValues(ys);
      CSint *b = GetParam().post(x, y);
      for (const int p : xs)
        for (const int q : ys) checkAssignments(b, {x, y}, {p, q}, GetParam().holds(p, q));
    }
  }
}

class ReifConstFormLimits : public SolverTest, public ::testing::WithParamInterface<ConstForm> {};
INSTANTIATE_TEST_SUITE_P(, ReifConstFormLimits, ::testing::ValuesIn(kConstForms), formName<ConstForm>);

TEST_P(ReifConstFormLimits, AssignmentsAreAcceptedExactlyWhenBTellsTheTruth) {
  for (const auto &xs : setsAtTheEnds()) {
    for (const int v : kInts) {
      CSint *x = fromValues(xs);
      CSint *b = GetParam().post(x, v);
      for (const int p : xs) checkAssignments(b, {x}, {p}, GetParam().holds(p, v));
    }
  }
}

}  // namespace

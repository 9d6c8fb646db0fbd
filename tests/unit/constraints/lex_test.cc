// SPDX-License-Identifier: MIT
// cs_LexLe, cs_LexLt: which position is narrowed, by what events, and that restored contexts bring the positions back.
#include <climits>

#include "koru_extras.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using Values = std::vector<int>;

class LexTest : public SolverTest {
 public:
  // Each array of `n` variables over 0..4, all different.
  void makeArrays(int n) {
    for (std::vector<CSint *> *array : {&x, &y}) {
      array->clear();
      for (int i = 0; i < n; ++i) array->push_back(cs_createCSint(0, 4));
    }
  }
  bool le() { return cs_LexLe(x.data(), y.data(), static_cast<int>(x.size())); }
  bool lt() { return cs_LexLt(x.data(), y.data(), static_cast<int>(x.size())); }

  std::vector<CSint *> x;
  std::vector<CSint *> y;
};

// ----- posting

TEST_F(LexTest, EmptyArraysAreEqual) {
  EXPECT_TRUE(cs_LexLe(nullptr, nullptr, 0));
  EXPECT_FALSE(cs_LexLt(nullptr, nullptr, 0));
}

TEST_F(LexTest, NegativeSizesAndNullsAreRefusedAndPostNothing) {
  makeArrays(2);
  for (auto *post : {cs_LexLe, cs_LexLt}) {
    EXPECT_FALSE(post(x.data(), y.data(), -1));
    EXPECT_FALSE(post(x.data(), y.data(), INT_MIN));
    EXPECT_FALSE(post(nullptr, y.data(), 2));
    EXPECT_FALSE(post(x.data(), nullptr, 2));
    std::vector<CSint *> holed{x[0], nullptr};
    EXPECT_FALSE(post(holed.data(), y.data(), 2));
    EXPECT_FALSE(post(x.data(), holed.data(), 2));
  }
  EXPECT_EQ(cs_getNbConstraints(x[0]), 0);
  EXPECT_EQ(cs_getNbConstraints(y[0]), 0);
}

TEST_F(LexTest, IsAttachedToBothArraysPositionByPosition) {
  makeArrays(2);
  const int mark = solver::trail.count();
  ASSERT_TRUE(lt());
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{x[0], y[0], x[1], y[1]}));
  EXPECT_EQ(attachments(y[1]), (std::vector<std::pair<std::string, int>>{{"cs_LexLt", 1}}));
  EXPECT_EQ(busySlots(x[0]), "01234");
}

TEST_F(LexTest, TheArraysAreCopied) {
  makeArrays(2);
  const std::vector<CSint *> kept = y;
  ASSERT_TRUE(le());
  y.assign(2, nullptr);
  ASSERT_TRUE(cs_GE(x[0], 3));
  EXPECT_EQ(values(kept[0]), range(3, 4));
}

TEST_F(LexTest, APostingThatRunsOutOfMemoryLeavesNothingBehind) {
  EXPECT_GT(failEachAllocation(
                [this] {
                  makeArrays(3);
                  return this;
                },
                [](LexTest *self) { return self->lt(); }),
            2);
}

// ----- what is narrowed

// The third and fourth columns say what is left of the partner when the event is that of x[0], or that of y[0].
struct LexEventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int v;
  Values leftOfY;
  Values leftOfX;
};

void PrintTo(const LexEventRow &row, std::ostream *out) { *out << row.name; }

class LexEventTest : public LexTest, public ::testing::WithParamInterface<LexEventRow> {};

TEST_P(LexEventTest, OfTheFirstPositionNarrowsItsPartner) {
  makeArrays(2);
  ASSERT_TRUE(le());
  ASSERT_TRUE(GetParam().narrow(x[0], GetParam().v));
  EXPECT_EQ(values(y[0]), GetParam().leftOfY);
  makeArrays(2);
  ASSERT_TRUE(le());
  ASSERT_TRUE(GetParam().narrow(y[0], GetParam().v));
  EXPECT_EQ(values(x[0]), GetParam().leftOfX);
}

INSTANTIATE_TEST_SUITE_P(, LexEventTest,
                         ::testing::Values(LexEventRow{"minimum raised", cs_GE, 2, range(2, 4), range(0, 4)},
                                           LexEventRow{"maximum lowered", cs_LE, 2, range(0, 4), range(0, 2)},
                                           LexEventRow{"bound by the minimum", cs_GE, 4, {4}, range(0, 4)},
                                           LexEventRow{"bound by the maximum", cs_LE, 0, range(0, 4), {0}},
                                           LexEventRow{"bound inside", cs_EQ, 2, range(2, 4), range(0, 2)},
                                           LexEventRow{"inner value removed", cs_NEQ, 2, range(0, 4), range(0, 4)}));

TEST_F(LexTest, NothingIsNarrowedBeyondTheFirstPositionThatMayDiffer) {
  makeArrays(2);
  ASSERT_TRUE(lt());
  ASSERT_TRUE(cs_EQ(x[1], 4) && cs_EQ(x[0], 1) && cs_GE(y[0], 1));
  EXPECT_EQ(values(y[1]), range(0, 4));
}

TEST_F(LexTest, EqualPositionsHandOnToTheNext) {
  makeArrays(3);
  ASSERT_TRUE(lt());
  ASSERT_TRUE(cs_EQ(x[0], 2) && cs_EQ(y[0], 2) && cs_EQ(y[1], 3));
  EXPECT_EQ(values(x[1]), range(0, 3));
  ASSERT_TRUE(cs_EQ(x[1], 3));
  EXPECT_EQ(values(x[2]), range(0, 3));
  EXPECT_EQ(values(y[2]), range(1, 4));
}

// The first position is bound to one value from both sides, in one run with what follows from it.
TEST_F(LexTest, ANarrowingThatMakesAPositionEqualGoesOnAtOnce) {
  makeArrays(2);
  ASSERT_TRUE(lt());
  ASSERT_TRUE(cs_LE(y[1], 1) && cs_LE(y[0], 2));
  ASSERT_TRUE(cs_GE(x[0], 2));
  EXPECT_EQ(values(y[0]), Values{2});
  EXPECT_EQ(values(x[1]), Values{0});
  EXPECT_EQ(values(y[1]), Values{1});
}

TEST_F(LexTest, TheOrderBecomesStrictWhereTheRestCannotFollow) {
  makeArrays(3);
  ASSERT_TRUE(le());
  ASSERT_TRUE(cs_GE(x[1], 2) && cs_LE(y[1], 2));  // equal at best
  EXPECT_EQ(values(x[0]), range(0, 4));
  ASSERT_TRUE(cs_GE(x[2], 3) && cs_LE(y[2], 2));  // never in order
  EXPECT_EQ(values(x[0]), range(0, 3));
  EXPECT_EQ(values(y[0]), range(1, 4));
}

TEST_F(LexTest, ArraysThatCanAtMostBeEqualAreTheDifferenceOfTheTwo) {
  for (const bool strict : {false, true}) {
    makeArrays(2);
    ASSERT_TRUE(strict ? lt() : le());
    ASSERT_TRUE(cs_GE(x[1], 4));
    EXPECT_EQ(values(x[0]), strict ? range(0, 3) : range(0, 4));
    ASSERT_TRUE(cs_EQ(y[1], 4) && cs_EQ(x[0], 2));
    EXPECT_EQ(cs_EQ(y[0], 2), !strict);
  }
}

TEST_F(LexTest, TheEndsOfTheIntsHaveNoNeighbours) {
  for (const int end : {INT_MIN, INT_MAX}) {
    x = {cs_createCSint(end, end)};
    y = {cs_createCSint(end, end)};
    EXPECT_TRUE(le());
    EXPECT_FALSE(lt());
    x = {cs_createCSint(INT_MIN, INT_MAX)};
    EXPECT_EQ(lt(), end != INT_MIN);
    std::swap(x, y);
    y = {cs_createCSint(INT_MIN, INT_MAX)};
    EXPECT_EQ(lt(), end != INT_MAX);
  }
}

// The tables of docs/lexicographic-order.md; the first one is TheOrderBecomesStrictWhereTheRestCannotFollow.
TEST_F(LexTest, TheWorkedTraceOfTheDocument) {
  makeArrays(3);
  ASSERT_TRUE(le());
  ASSERT_TRUE(cs_GE(x[1], 2) && cs_LE(y[1], 2) && cs_EQ(x[0], 3));
  EXPECT_EQ(values(y[0]), range(3, 4));
  EXPECT_EQ(values(x[1]), range(2, 4));
  ASSERT_TRUE(cs_EQ(y[0], 3));
  EXPECT_EQ(values(x[1]), Values{2});
  EXPECT_EQ(values(y[1]), Values{2});
  EXPECT_EQ(values(x[2]), range(0, 4));
  EXPECT_EQ(values(y[2]), range(0, 4));
}

// ----- variables in several places

TEST_F(LexTest, AVariableBesideItselfIsEqualToItself) {
  CSint *v = cs_createCSint(INT_MIN, INT_MAX);
  x = y = {v, v};
  EXPECT_TRUE(le());
  EXPECT_FALSE(lt());
  makeArrays(2);
  x[0] = y[0];
  ASSERT_TRUE(lt());
  EXPECT_EQ(values(x[0]), range(0, 4));
  EXPECT_EQ(values(x[1]), range(0, 3));
}

TEST_F(LexTest, ExchangedVariablesAreOrderedAndStrictlyOnceTheyAreBound) {
  CSint *a = cs_createCSint(0, 4);
  CSint *b = cs_createCSint(0, 4);
  x = {a, b};
  y = {b, a};
  ASSERT_TRUE(lt());
  ASSERT_TRUE(cs_GE(a, 3));
  EXPECT_EQ(values(b), range(3, 4));
  ASSERT_TRUE(cs_EQ(a, 3));
  EXPECT_FALSE(cs_EQ(b, 3));
}

// One narrowing of b, as y[0], is news of x[1].
TEST_F(LexTest, ItsOwnChangesAreHeardWhereAVariableStandsTwice) {
  CSint *b = cs_createCSint(0, 4);
  makeArrays(2);
  x[1] = y[0] = b;
  ASSERT_TRUE(cs_LE(y[1], 2) && cs_LE(x[0], 3));
  ASSERT_TRUE(le());
  ASSERT_TRUE(cs_GE(x[0], 3));  // b is 3 or 4, which is more than y[1]: x[0] < b
  EXPECT_EQ(values(b), Values{4});
}

// ----- restored contexts

TEST_F(LexTest, ARestoreBringsTheFirstPositionBack) {
  makeArrays(3);
  ASSERT_TRUE(le());
  for (int round = 0; round < 2; ++round) {
    cs_saveContext();
    ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(y[0], 1) && cs_EQ(x[1], 2) && cs_EQ(y[1], 2) && cs_GE(x[2], 3));
    EXPECT_EQ(values(y[2]), range(3, 4));
    cs_restoreContext();
    cs_saveContext();
    ASSERT_TRUE(cs_GE(x[0], 3) && cs_GE(x[2], 3));
    EXPECT_EQ(values(y[0]), range(3, 4));
    EXPECT_EQ(values(y[2]), range(0, 4));
    cs_restoreContext();
  }
}

// What a deeper run saw far ahead serves here, and what comes before it is still heard of.
TEST_F(LexTest, ARestoreLeavesNoPositionUnheard) {
  makeArrays(3);
  ASSERT_TRUE(le());
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_EQ(y[0], 1) && cs_EQ(x[1], 2) && cs_EQ(y[1], 2));
  cs_restoreContext();
  ASSERT_TRUE(cs_GE(x[1], 3) && cs_LE(y[1], 2));
  EXPECT_EQ(values(x[0]), range(0, 3));
  EXPECT_EQ(values(y[0]), range(1, 4));
}

// The position was moved in the inner context and stays moved, while what let it move is undone.
TEST_F(LexTest, AnAcceptedContextInsideARestoredOneLeavesNothingBehindTheDomains) {
  makeArrays(2);
  ASSERT_TRUE(le());
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], 1));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(y[0], 1));
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_GT(cs_getMax(x[0]), cs_getMin(x[0]));
  ASSERT_TRUE(cs_GE(x[1], 3));
  EXPECT_EQ(values(y[1]), range(0, 4));
  ASSERT_TRUE(cs_LE(y[1], 2));
  EXPECT_EQ(cs_getMax(x[0]), cs_getMax(y[0]) - 1);
}

}  // namespace

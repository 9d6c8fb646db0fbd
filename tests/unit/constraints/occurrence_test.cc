// SPDX-License-Identifier: MIT
// cs_Occur, cs_OccurDomain and cs_OccurConstraints: how they are posted, and what each event of the variables and of
// the count does.
#include "support/kit/batch.h"
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kVal = 4;

class OccurrenceTest : public SolverTest {
 protected:
  // Three variables 0..9, of which none is decided; the count 0..3.
  void post() {
    for (CSint *&v : x) v = cs_createCSint(0, 9);
    count = cs_createCSint(0, 3);
    ASSERT_TRUE(cs_OccurConstraints(count, kVal, x, 3));
  }
  void expectUntouched(int i) const { EXPECT_EQ(values(x[i]), range(0, 9)) << "variable " << i; }
  void expectExcluded(int i) const { EXPECT_EQ(values(x[i]), without(range(0, 9), kVal)) << "variable " << i; }
  void expectImposed(int i) const { EXPECT_EQ(values(x[i]), std::vector{kVal}) << "variable " << i; }

  CSint *x[4] = {};
  CSint *count = nullptr;
};

TEST_F(OccurrenceTest, PostsOneConstraintOnTheCountAndOneOnTheUndecided) {
  x[0] = cs_createCSint(0, 9);
  x[1] = CSINT(kVal);
  x[2] = fromValues({3, 5});
  x[3] = cs_createCSint(3, 5);
  count = cs_createCSint(0, 9);
  const int mark = solver::trail.count();
  ASSERT_TRUE(cs_OccurConstraints(count, kVal, x, 4));
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{count, x[0], x[3]}));
  EXPECT_EQ(attachments(count), (Attached{{"cs_OccurConstraints", -1}}));
  EXPECT_EQ(attachments(x[0]), (Attached{{"cs_OccurConstraints", 0}}));
  EXPECT_EQ(attachments(x[3]), (Attached{{"cs_OccurConstraints", 3}}));
  EXPECT_EQ(busySlots(count), "234");
  EXPECT_EQ(busySlots(x[0]), "012345");
  EXPECT_EQ(constraintOf(x[0]), constraintOf(x[3]));
  EXPECT_NE(constraintOf(x[0]), constraintOf(count));
  EXPECT_EQ(siteOf(count)->references, 2);
  EXPECT_EQ(siteOf(count), siteOf(x[3]));
  EXPECT_EQ(bounds(count), Bounds2(1, 3));
}

TEST_F(OccurrenceTest, PostingNarrowsTheMinimumOfTheCountFirst) {
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  x[3] = CSINT(kVal);
  count = cs_createCSint(0, 9);
  const CallLog log;
  ASSERT_TRUE(cs_OccurConstraints(count, kVal, x, 4));
  EXPECT_EQ(bounds(count), Bounds2(1, 4));
  EXPECT_EQ(log.calls,
            (std::vector<Call>{{true, count, 0, "cs_OccurConstraints"}, {true, count, 1, "cs_OccurConstraints"}}));
}

TEST_F(OccurrenceTest, ACountOutOfReachFailsAtPosting) {
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  EXPECT_FALSE(cs_OccurConstraints(CSINT(5), kVal, x, 4));
  x[0] = x[1] = CSINT(kVal);
  EXPECT_FALSE(cs_OccurConstraints(CSINT(1), kVal, x, 4));
  EXPECT_FALSE(cs_OccurConstraints(cs_createCSint(-5, 1), kVal, x, 4));
}

// A count that posting binds is heard at once, because the constraint is attached by then.
TEST_F(OccurrenceTest, ACountThatPostingBindsImposesTheValue) {
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_OccurConstraints(cs_createCSint(3, 9), kVal, x, 3));
  for (int i = 0; i < 3; ++i) expectImposed(i);
}

// Deliberate: a count that is bound already imposes nothing before an event comes.
TEST_F(OccurrenceTest, ACountBoundAtPostingActsAtTheNextEvent) {
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_OccurConstraints(CSINT(0), kVal, x, 3));
  for (int i = 0; i < 3; ++i) expectUntouched(i);
  EXPECT_FALSE(cs_EQ(x[1], kVal));
}

TEST_F(OccurrenceTest, ACountBoundAtPostingImposesTheValueOnceNoOtherIsLeft) {
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  ASSERT_TRUE(cs_OccurConstraints(CSINT(2), kVal, x, 3));
  ASSERT_TRUE(cs_NEQ(x[1], kVal));
  expectImposed(0);
  expectImposed(2);
}

TEST_F(OccurrenceTest, DecidedVariablesAreCountedAndNothingIsPosted) {
  x[0] = CSINT(kVal);
  x[1] = cs_createCSint(5, 9);
  x[2] = CSINT(kVal);
  count = cs_createCSint(0, 9);
  cs_saveContext();
  EXPECT_EQ(cs_Occur(count, kVal, x, 3), 0);
  EXPECT_EQ(values(count), std::vector{2});
  cs_restoreContext();
  EXPECT_TRUE(cs_OccurConstraints(count, kVal, x, 3));
  EXPECT_EQ(values(count), std::vector{2});
  EXPECT_FALSE(cs_OccurConstraints(CSINT(3), kVal, x, 3));
  EXPECT_EQ(values(cs_OccurDomain(kVal, x, 3)), std::vector{2});
  for (CSint *v : {count, x[0], x[1], x[2]}) EXPECT_EQ(cs_getNbConstraints(v), 0);
}

TEST_F(OccurrenceTest, OfNoVariableTheCountIsZero) {
  for (const int n : {0, -1, INT_MIN}) {
    EXPECT_EQ(values(cs_OccurDomain(kVal, nullptr, n)), std::vector{0});
    EXPECT_TRUE(cs_OccurConstraints(cs_createCSint(0, 9), kVal, nullptr, n));
    EXPECT_FALSE(cs_OccurConstraints(cs_createCSint(1, 9), kVal, nullptr, n));
  }
}

TEST_F(OccurrenceTest, NullArgumentsGiveTheFailureValueAndPostNothing) {
  x[0] = cs_createCSint(0, 9);
  count = cs_createCSint(0, 9);
  EXPECT_FALSE(cs_OccurConstraints(nullptr, kVal, x, 1));
  EXPECT_FALSE(cs_OccurConstraints(count, kVal, nullptr, 1));
  EXPECT_FALSE(cs_OccurConstraints(count, kVal, x, 2));
  EXPECT_EQ(cs_OccurDomain(kVal, nullptr, 1), nullptr);
  EXPECT_EQ(cs_OccurDomain(kVal, x, 2), nullptr);
  EXPECT_EQ(cs_Occur(nullptr, kVal, x, 1), 0);
  EXPECT_EQ(cs_Occur(count, kVal, x, 2), 0);
  EXPECT_EQ(values(count), range(0, 9));
  EXPECT_EQ(cs_getNbConstraints(x[0]), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

// Deliberate: the result of cs_Occur is 0 whether it succeeds or not.
TEST_F(OccurrenceTest, OccurReturnsZeroAlsoOnSuccess) {
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  count = cs_createCSint(2, 9);
  EXPECT_EQ(cs_Occur(count, kVal, x, 3), 0);
  EXPECT_EQ(attachments(count), (Attached{{"cs_Occur", -1}}));
  EXPECT_EQ(bounds(count), Bounds2(2, 3));
  ASSERT_TRUE(cs_NEQ(x[0], kVal));
  expectImposed(2);
  EXPECT_EQ(cs_Occur(CSINT(5), kVal, x, 3), 0);
}

TEST_F(OccurrenceTest, OccurDomainMakesTheCount) {
  x[0] = CSINT(kVal);
  for (int i = 1; i < 4; ++i) x[i] = cs_createCSint(0, 9);
  const int mark = solver::trail.count();
  count = cs_OccurDomain(kVal, x, 4);
  EXPECT_EQ(values(count), range(1, 4));
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{count, x[1], x[2], x[3]}));
  EXPECT_EQ(attachments(count), (Attached{{"cs_OccurDomain", -1}}));
  EXPECT_EQ(attachments(x[2]), (Attached{{"cs_OccurDomain", 2}}));
}

// ----- the variables

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int bound;
  Bounds2 count;
};

void PrintTo(const EventRow &row, std::ostream *out) { *out << row.name << " " << row.bound; }

class OccurrenceEventTest : public OccurrenceTest, public ::testing::WithParamInterface<EventRow> {};

TEST_P(OccurrenceEventTest, TheCountFollowsWhatAVariableLosesOrTakes) {
  post();
  ASSERT_TRUE(GetParam().narrow(x[1], GetParam().bound));
  EXPECT_EQ(bounds(count), GetParam().count);
  expectUntouched(0);
  expectUntouched(2);
}

INSTANTIATE_TEST_SUITE_P(, OccurrenceEventTest,
                         ::testing::Values(EventRow{"minimum raised", cs_GE, kVal, {0, 3}},
                                           EventRow{"minimum raised", cs_GE, kVal + 1, {0, 2}},
                                           EventRow{"maximum lowered", cs_LE, kVal, {0, 3}},
                                           EventRow{"maximum lowered", cs_LE, kVal - 1, {0, 2}},
                                           EventRow{"bound by the minimum", cs_GE, 9, {0, 2}},
                                           EventRow{"bound by the maximum", cs_LE, 0, {0, 2}},
                                           EventRow{"bound inside", cs_EQ, 5, {0, 2}},
                                           EventRow{"bound inside", cs_EQ, kVal, {1, 3}},
                                           EventRow{"value removed", cs_NEQ, kVal, {0, 2}},
                                           EventRow{"value removed", cs_NEQ, 5, {0, 3}}));

TEST_F(OccurrenceTest, BoundsThatBindToTheValueAreCounted) {
  x[0] = cs_createCSint(0, kVal);
  x[1] = cs_createCSint(kVal, 9);
  x[2] = cs_createCSint(0, 9);
  count = cs_OccurDomain(kVal, x, 3);
  ASSERT_TRUE(cs_GE(x[0], kVal));
  EXPECT_EQ(bounds(count), Bounds2(1, 3));
  ASSERT_TRUE(cs_LE(x[1], kVal));
  EXPECT_EQ(bounds(count), Bounds2(2, 3));
}

TEST_F(OccurrenceTest, ReachingTheLargestCountTakesTheValueFromTheRest) {
  post();
  ASSERT_TRUE(cs_LE(count, 1));
  ASSERT_TRUE(cs_EQ(x[1], kVal));
  EXPECT_EQ(values(count), std::vector{1});
  expectExcluded(0);
  expectExcluded(2);
}

TEST_F(OccurrenceTest, ReachingTheSmallestCountImposesTheValueOnTheRest) {
  post();
  ASSERT_TRUE(cs_GE(count, 2));
  ASSERT_TRUE(cs_NEQ(x[1], kVal));
  EXPECT_EQ(values(count), std::vector{2});
  expectImposed(0);
  expectImposed(2);
}

// The rest hears first, since its narrowings are queued before that of the count.
TEST_F(OccurrenceTest, TheRestIsNarrowedBeforeTheCount) {
  post();
  ASSERT_TRUE(cs_LE(count, 1));
  const CallLog log;
  ASSERT_TRUE(cs_EQ(x[1], kVal));
  const char *site = "cs_OccurConstraints";
  EXPECT_EQ(
      log.calls,
      (std::vector<Call>{{true, x[1], 4, site}, {true, x[0], 5, site}, {true, x[2], 5, site}, {true, count, 2, site}}));
}

TEST_F(OccurrenceTest, MoreThanTheLargestCountFails) {
  post();
  ASSERT_TRUE(cs_LE(count, 1));
  EXPECT_FALSE(together([this] { return cs_EQ(x[0], kVal) && cs_EQ(x[2], kVal); }));
}

TEST_F(OccurrenceTest, LessThanTheSmallestCountFails) {
  post();
  ASSERT_TRUE(cs_GE(count, 2));
  EXPECT_FALSE(together([this] { return cs_NEQ(x[0], kVal) && cs_NEQ(x[2], kVal); }));
}

// Having to impose the value on the rest is where it fails; that the other one has lost it is not heard any more.
TEST_F(OccurrenceTest, ARestThatHasLostTheValueFailsAtOnce) {
  post();
  ASSERT_TRUE(cs_GE(count, 2));
  const CallLog log;
  EXPECT_FALSE(together([this] { return cs_NEQ(x[0], kVal) && cs_NEQ(x[2], kVal); }));
  EXPECT_EQ(log.calls.back(), (Call{false, x[0], 5, "cs_OccurConstraints"}));
}

// A variable has been bound to the value that the count takes from all.
TEST_F(OccurrenceTest, ACountThatCannotTakeTheValueAwayFailsAtOnce) {
  post();
  const CallLog log;
  EXPECT_FALSE(together([this] { return cs_LE(count, 0) && cs_EQ(x[0], kVal); }));
  EXPECT_EQ(log.calls.back(), (Call{false, count, 3, "cs_OccurConstraints"}));
}

// Deliberate: neither set can be emptied, so the last one moves the count and stays undecided.
TEST_F(OccurrenceTest, TheLastUndecidedVariableMovesTheCountOnly) {
  post();
  ASSERT_TRUE(cs_EQ(x[0], kVal) && cs_NEQ(x[1], kVal));
  EXPECT_EQ(bounds(count), Bounds2(1, 2));
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(x[2], kVal));
  EXPECT_EQ(values(count), std::vector{1});
  cs_restoreContext();
  EXPECT_EQ(bounds(count), Bounds2(1, 2));
  ASSERT_TRUE(cs_EQ(x[2], kVal));
  EXPECT_EQ(values(count), std::vector{2});
}

TEST_F(OccurrenceTest, ADecidedVariableIsCountedOnce) {
  post();
  ASSERT_TRUE(cs_NEQ(x[1], kVal));
  ASSERT_TRUE(cs_GE(x[1], 5));
  ASSERT_TRUE(cs_EQ(x[1], 7));
  EXPECT_EQ(bounds(count), Bounds2(0, 2));
}

// The removal is stale when it is heard, but the raised minimum counts without a look at the holes.
TEST_F(OccurrenceTest, ARemovalThatABoundHasPassedIsCounted) {
  post();
  ASSERT_TRUE(together([this] { return cs_NEQ(x[1], kVal) && cs_GE(x[1], kVal + 1); }));
  EXPECT_EQ(bounds(count), Bounds2(0, 2));
}

TEST_F(OccurrenceTest, AVariableThatStandsTwiceCountsTwice) {
  x[0] = x[1] = cs_createCSint(0, 9);
  x[2] = cs_createCSint(0, 9);
  count = cs_OccurDomain(kVal, x, 3);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], kVal));
  EXPECT_EQ(bounds(count), Bounds2(2, 3));
  cs_restoreContext();
  ASSERT_TRUE(cs_NEQ(x[0], kVal));
  EXPECT_EQ(bounds(count), Bounds2(0, 1));
}

// A variable over more values than an int can count is neither free nor instantiated, and undecided all the same.
TEST_F(OccurrenceTest, AVariableOverAllIntsIsWatched) {
  x[0] = cs_createCSint(INT_MIN, INT_MAX);
  x[1] = cs_createCSint(0, INT_MAX);
  x[2] = cs_createCSint(0, 9);
  count = cs_OccurDomain(kVal, x, 3);
  ASSERT_TRUE(cs_EQ(x[0], kVal) && cs_GE(x[1], 5));
  EXPECT_EQ(bounds(count), Bounds2(1, 2));
}

// ----- the count

class OccurrenceCountTest : public OccurrenceTest, public ::testing::WithParamInterface<bool (*)(CSint *)> {};

TEST_P(OccurrenceCountTest, AChangeThatDoesNotBindTheCountDoesNothing) {
  post();
  const int mark = solver::trail.count();
  ASSERT_TRUE(GetParam()(count));
  EXPECT_EQ(solver::trail.count(), mark + 1);
  for (int i = 0; i < 3; ++i) expectUntouched(i);
}

INSTANTIATE_TEST_SUITE_P(, OccurrenceCountTest,
                         ::testing::Values([](CSint *v) { return cs_GE(v, 2); }, [](CSint *v) { return cs_LE(v, 1); },
                                           [](CSint *v) { return cs_NEQ(v, 2); }));

TEST_F(OccurrenceTest, ACountBoundByItsMinimumImposesTheValue) {
  post();
  ASSERT_TRUE(cs_GE(count, 3));
  for (int i = 0; i < 3; ++i) expectImposed(i);
}

TEST_F(OccurrenceTest, ACountBoundByItsMaximumTakesTheValueAway) {
  post();
  ASSERT_TRUE(cs_LE(count, 0));
  for (int i = 0; i < 3; ++i) expectExcluded(i);
}

TEST_F(OccurrenceTest, ACountBoundInsideWaitsUntilItDecides) {
  post();
  ASSERT_TRUE(cs_EQ(count, 1));
  for (int i = 0; i < 3; ++i) expectUntouched(i);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], kVal));
  expectExcluded(1);
  expectExcluded(2);
  cs_restoreContext();
  ASSERT_TRUE(cs_NEQ(x[0], kVal) && cs_NEQ(x[1], kVal));
  expectImposed(2);
}

TEST_F(OccurrenceTest, TheCountMayBeOneOfTheVariables) {
  for (int i = 0; i < 3; ++i) x[i] = cs_createCSint(0, 3);
  ASSERT_TRUE(cs_OccurConstraints(x[1], 1, x, 3));
  ASSERT_TRUE(cs_EQ(x[0], 1) && cs_NEQ(x[1], 1));
  EXPECT_EQ(values(x[1]), std::vector{2}) << "of 1..3 not 1, and at most x[0] and x[2]";
  EXPECT_EQ(values(x[2]), std::vector{1});
}

// ----- the life of the sets

TEST_F(OccurrenceTest, ARestoredContextGivesBothSetsBack) {
  post();
  for (int round = 0; round < 3; ++round) {
    cs_saveContext();
    ASSERT_TRUE(cs_EQ(x[0], kVal));
    cs_saveContext();
    ASSERT_TRUE(cs_NEQ(x[1], kVal));
    EXPECT_EQ(bounds(count), Bounds2(1, 2));
    cs_restoreContext();
    EXPECT_EQ(bounds(count), Bounds2(1, 3));
    ASSERT_TRUE(cs_EQ(x[1], kVal));
    EXPECT_EQ(bounds(count), Bounds2(2, 3));
    cs_restoreContext();
    EXPECT_EQ(bounds(count), Bounds2(0, 3));
  }
  ASSERT_TRUE(cs_EQ(count, 3));
  for (int i = 0; i < 3; ++i) expectImposed(i);
}

// The inner context is accepted, so restoring the outer one takes the newest constraint off the count instead of the
// watcher that was attached first. The constraint on the variables lives on, and so do the sets.
TEST_F(OccurrenceTest, TheSetsOutliveTheConstraintOnTheCount) {
  for (CSint *&v : x) v = cs_createCSint(0, 9);
  count = cs_createCSint(0, 3);
  cs_saveContext();
  ASSERT_TRUE(cs_Le(count, cs_createCSint(0, 9)));
  cs_saveContext();
  ASSERT_TRUE(cs_OccurConstraints(count, kVal, x, 3));
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_EQ(attachments(count), (Attached{{"cs_Le", -1}}));
  ASSERT_TRUE(cs_EQ(x[0], kVal) && cs_NEQ(x[1], kVal));
  EXPECT_EQ(bounds(count), Bounds2(1, 2));
}

}  // namespace

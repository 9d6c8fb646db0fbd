// SPDX-License-Identifier: MIT
// cs_Min and cs_Max: the result's domain, how they are posted, and the rules on the result and on the array. The two
// are mirror images, so each test of a rule is written for the least and runs for both.
#include "support/kit/batch.h"
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

enum Side { kLeast, kGreatest };

class MinMaxTest : public SolverTest, public ::testing::WithParamInterface<Side> {
 protected:
  // The mirror: for the greatest, every value changes its sign and every bound its side.
  static bool mirrored() { return GetParam() == kGreatest; }
  static int mirror(int value) { return mirrored() ? -value : value; }
  static Bounds2 mirror(Bounds2 b) { return mirrored() ? Bounds2(-b.second, -b.first) : b; }
  static CSint *create(int low, int high) {
    const Bounds2 b = mirror(Bounds2{low, high});
    return cs_createCSint(b.first, b.second);
  }
  static bool raise(CSint *v, int bound) { return mirrored() ? cs_LE(v, -bound) : cs_GE(v, bound); }
  static bool lower(CSint *v, int bound) { return mirrored() ? cs_GE(v, -bound) : cs_LE(v, bound); }
  static bool bind(CSint *v, int value) { return cs_EQ(v, mirror(value)); }
  static bool remove(CSint *v, int value) { return cs_NEQ(v, mirror(value)); }
  static int eventCode(int code) { return mirrored() && code < 4 ? code ^ 1 : code; }
  static const char *name() { return mirrored() ? "cs_Max" : "cs_Min"; }

  void post(const std::vector<Bounds2> &domains) {
    for (const Bounds2 &b : domains) x.push_back(create(b.first, b.second));
    const int n = static_cast<int>(x.size());
    r = mirrored() ? cs_Max(x.data(), n) : cs_Min(x.data(), n);
    ASSERT_NE(r, nullptr);
  }
  void expect(Bounds2 result, const std::vector<Bounds2> &vars) const {
    EXPECT_EQ(mirror(bounds(r)), result);
    for (std::size_t i = 0; i < vars.size(); ++i) EXPECT_EQ(mirror(bounds(x[i])), vars[i]) << "variable " << i;
  }

  std::vector<CSint *> x;  // kept by the constraint until the solver ends
  CSint *r = nullptr;
};

INSTANTIATE_TEST_SUITE_P(, MinMaxTest, ::testing::Values(kLeast, kGreatest),
                         [](const auto &row) { return row.param == kLeast ? "Least" : "Greatest"; });

TEST_P(MinMaxTest, TheResultLiesBetweenTheLeastBounds) {
  post({{3, 9}, {5, 6}});
  expect({3, 6}, {{3, 9}, {5, 6}});
  EXPECT_EQ(r->bits, nullptr);
}

TEST_P(MinMaxTest, PostsOneConstraintOnTheResultAndOneOnTheArrayUnderOneSite) {
  const int mark = solver::trail.count();
  post({{0, 9}, {0, 9}, {0, 9}});
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{r, x[0], x[1], x[2]}));
  EXPECT_EQ(solver::trail.count(), mark + 4) << "the host's array is not handed to the trail";
  for (CSint *v : {r, x[0], x[1], x[2]}) {
    EXPECT_EQ(attachments(v), (Attached{{name(), -1}}));
    EXPECT_EQ(busySlots(v), "01234");
  }
  EXPECT_NE(constraintOf(r), constraintOf(x[0]));
  EXPECT_EQ(constraintOf(x[0]), constraintOf(x[2]));
  EXPECT_EQ(siteOf(r), siteOf(x[0]));
}

TEST_P(MinMaxTest, NothingIsNarrowedAtPosting) {
  post({{4, 4}, {0, 9}});
  expect({0, 4}, {{4, 4}, {0, 9}});
}

// The event of the variable, which would lower the result, is not heard any more.
TEST_P(MinMaxTest, ARaisedResultFailsAtAVariableThatCannotFollow) {
  post({{0, 9}, {0, 9}});
  const CallLog log;
  EXPECT_FALSE(together([this] { return raise(r, 3) && lower(x[0], 2); }));
  EXPECT_EQ(log.calls.back(), (Call{false, r, eventCode(0), name()}));
}

TEST_P(MinMaxTest, ARaisedResultRaisesTheArray) {
  post({{3, 9}, {5, 6}});
  ASSERT_TRUE(raise(r, 5));
  expect({5, 6}, {{5, 9}, {5, 6}});
}

TEST_P(MinMaxTest, ALoweredResultDoesNotPruneTheArray) {
  post({{3, 9}, {5, 6}});
  ASSERT_TRUE(lower(r, 4));
  expect({3, 4}, {{3, 9}, {5, 6}});
}

TEST_P(MinMaxTest, AResultBoundByItsNearBoundRaisesTheArray) {
  post({{3, 9}, {5, 6}});
  ASSERT_TRUE(raise(r, 6));
  expect({6, 6}, {{6, 9}, {6, 6}});
}

TEST_P(MinMaxTest, AResultBoundByItsFarBoundNeedsASupport) {
  post({{3, 9}, {5, 6}});
  ASSERT_TRUE(lower(r, 3));
  expect({3, 3}, {{3, 9}, {5, 6}});
}

TEST_P(MinMaxTest, AResultBoundInsideRaisesTheArray) {
  post({{3, 9}, {5, 6}});
  ASSERT_TRUE(bind(r, 4));
  expect({4, 4}, {{4, 9}, {5, 6}});
}

TEST_P(MinMaxTest, AHoleInTheResultPassesNothing) {
  post({{3, 9}, {5, 6}});
  const CallLog log;
  ASSERT_TRUE(remove(r, 4));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, r, 5, name()}}));
  expect({3, 6}, {{3, 9}, {5, 6}});
}

TEST_P(MinMaxTest, AResultThatNoVariableCanTakeFails) {
  x = {create(3, 9), create(3, 9)};
  for (CSint *v : x) ASSERT_TRUE(remove(v, 5) && remove(v, 3 + 6 - 1));
  post({});
  cs_saveContext();
  EXPECT_FALSE(bind(r, 5)) << "bound inside";
  cs_restoreContext();
  ASSERT_TRUE(raise(r, 7));
  EXPECT_FALSE(lower(r, 7) && remove(x[0], 7) && bind(x[1], 9)) << "the last that could is bound elsewhere";
}

TEST_P(MinMaxTest, ABoundResultIsTestedAgainstHoles) {
  x = {create(0, 9), create(0, 9)};
  for (CSint *v : x) ASSERT_TRUE(remove(v, 4));
  post({});
  ASSERT_TRUE(raise(r, 4));
  EXPECT_FALSE(lower(r, 4));
}

// Deliberate: the one variable that can be the least is not bound to a bound result; another value of it fails then.
TEST_P(MinMaxTest, TheOnlySupportOfABoundResultIsNotBound) {
  post({{3, 9}, {5, 6}});
  ASSERT_TRUE(bind(r, 3));
  expect({3, 3}, {{3, 9}, {5, 6}});
  EXPECT_FALSE(bind(x[0], 4));
}

TEST_P(MinMaxTest, TheResultFollowsTheLastVariableAtItsNearBound) {
  post({{3, 9}, {3, 6}, {5, 9}});
  ASSERT_TRUE(raise(x[0], 4));
  expect({3, 6}, {{4, 9}, {3, 6}, {5, 9}});
  ASSERT_TRUE(raise(x[1], 6));
  expect({4, 6}, {{4, 9}, {6, 6}, {5, 9}});
}

TEST_P(MinMaxTest, AVariableAboveTheResultsNearBoundMakesNoWork) {
  post({{3, 9}, {5, 7}});
  ASSERT_TRUE(raise(x[1], 6));
  expect({3, 7}, {{3, 9}, {6, 7}});
}

TEST_P(MinMaxTest, ALoweredVariableLowersTheResult) {
  post({{3, 9}, {5, 7}});
  ASSERT_TRUE(lower(x[0], 8));
  expect({3, 7}, {{3, 8}, {5, 7}});
  ASSERT_TRUE(lower(x[0], 6));
  expect({3, 6}, {{3, 6}, {5, 7}});
}

TEST_P(MinMaxTest, AVariableBoundByItsNearBoundMovesTheNearBoundOnly) {
  post({{3, 4}, {5, 7}});
  ASSERT_TRUE(raise(x[0], 4));
  expect({4, 4}, {{4, 4}, {5, 7}});
  ASSERT_TRUE(raise(x[1], 7));
  expect({4, 4}, {{4, 4}, {7, 7}});
}

TEST_P(MinMaxTest, AVariableBoundByItsFarBoundMovesTheFarBoundOnly) {
  post({{3, 9}, {1, 7}});
  ASSERT_TRUE(lower(x[0], 3));
  expect({1, 3}, {{3, 3}, {1, 7}});
}

TEST_P(MinMaxTest, AVariableBoundInsideMovesBothBounds) {
  post({{0, 9}, {5, 9}});
  ASSERT_TRUE(bind(x[0], 7));
  expect({5, 7}, {{7, 7}, {5, 9}});
}

// Deliberate: the minimum of the result goes first in either case, though the two are mirror images else.
TEST_P(MinMaxTest, AVariableBoundInsideNarrowsTheResultsMinimumFirst) {
  post({{0, 9}, {5, 9}});
  const CallLog log;
  ASSERT_TRUE(bind(x[0], 7));
  ASSERT_EQ(log.calls.size(), 3U);
  EXPECT_EQ(log.calls[1], (Call{true, r, 0, name()}));
  EXPECT_EQ(log.calls[2], (Call{true, r, 1, name()}));
}

TEST_P(MinMaxTest, AHoleInAVariablePassesNothing) {
  post({{0, 9}, {5, 9}});
  const CallLog log;
  ASSERT_TRUE(remove(x[0], 4));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, x[0], 5, name()}}));
  expect({0, 9}, {{0, 9}, {5, 9}});
}

TEST_P(MinMaxTest, OneChangeIsOneCallPerEvent) {
  post({{3, 9}, {5, 6}});
  const CallLog log;
  ASSERT_TRUE(raise(r, 5));
  EXPECT_EQ(log.calls, (std::vector<Call>{{true, r, eventCode(0), name()}, {true, x[0], eventCode(0), name()}}));
}

// Deliberate: x goes from 3 to 8 while the result, which was 3 too, has already been raised to 5 by someone else; so x
// counts as one that the result did not follow, and 6, where the result could go, is found when it is needed.
TEST_P(MinMaxTest, AResultNarrowedBeforeTheEventStaysBehind) {
  post({{3, 9}, {6, 9}});
  ASSERT_TRUE(together([this] { return raise(r, 5) && raise(x[0], 8); }));
  expect({5, 9}, {{8, 9}, {6, 9}});
  cs_saveContext();
  EXPECT_FALSE(bind(r, 5));
  cs_restoreContext();
  EXPECT_TRUE(bind(r, 6));
}

TEST_P(MinMaxTest, OneVariableTwiceIsTheResult) {
  x.assign(2, create(2, 7));
  post({});
  expect({2, 7}, {{2, 7}});
  ASSERT_TRUE(bind(x[0], 4));
  expect({4, 4}, {{4, 4}});
}

TEST_P(MinMaxTest, ARestoredContextGivesTheBoundsBack) {
  post({{3, 9}, {5, 6}});
  cs_saveContext();
  ASSERT_TRUE(raise(r, 5) && bind(x[1], 6) && bind(x[0], 7));
  expect({6, 6}, {{7, 7}, {6, 6}});
  cs_restoreContext();
  expect({3, 6}, {{3, 9}, {5, 6}});
}

class MinMaxDoorsTest : public SolverTest {};

TEST_F(MinMaxDoorsTest, OfNoVariableTheResultIsAnEndOfTheInts) {
  for (const int n : {0, -1, INT_MIN}) {
    for (CSint *least : {cs_Min(nullptr, n), cs_VMin(n)}) EXPECT_EQ(bounds(least), Bounds2(INT_MAX, INT_MAX));
    for (CSint *greatest : {cs_Max(nullptr, n), cs_VMax(n)}) EXPECT_EQ(bounds(greatest), Bounds2(INT_MIN, INT_MIN));
  }
  EXPECT_EQ(attachments(cs_Min(nullptr, 0)), (Attached{{"cs_Min", -1}}));
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(MinMaxDoorsTest, NullVariablesGiveNullAndPostNothing) {
  CSint *x[] = {cs_createCSint(0, 9), nullptr};
  CSint *none = nullptr;
  EXPECT_EQ(cs_Min(x, 2), nullptr);
  EXPECT_EQ(cs_Max(x, 2), nullptr);
  EXPECT_EQ(cs_Min(nullptr, 1), nullptr);
  EXPECT_EQ(cs_Max(nullptr, 1), nullptr);
  EXPECT_EQ(cs_VMin(2, x[0], none), nullptr);
  EXPECT_EQ(cs_VMax(1, none), nullptr);
  EXPECT_EQ(cs_getNbConstraints(x[0]), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(MinMaxDoorsTest, TheVariadicFormsHandTheirCopyToTheTrailBeforeTheAttachments) {
  CSint *x = cs_createCSint(0, 5);
  CSint *y = cs_createCSint(2, 7);
  for (CSint *(*post)(int, ...) : {cs_VMin, cs_VMax}) {
    const int mark = solver::trail.count();
    CSint *r = post(2, x, y);
    EXPECT_EQ(solver::trail.at(mark).kind(), TrailKind::kBuffer);
    EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{r, x, y}));
    EXPECT_EQ(attachments(r), (Attached{{post == cs_VMin ? "cs_VMin" : "cs_VMax", -1}}));
  }
}

TEST_F(MinMaxDoorsTest, TheCopyOutlivesAnAcceptedChoicePoint) {
  CSint *x = cs_createCSint(0, 5);
  CSint *y = cs_createCSint(2, 7);
  cs_saveContext();
  CSint *least = cs_VMin(2, x, y);
  CSint *greatest = cs_VMax(2, x, y);
  cs_acceptContext();
  ASSERT_TRUE(cs_GE(least, 1) && cs_LE(greatest, 6));
  EXPECT_EQ(bounds(x), Bounds2(1, 5));
  EXPECT_EQ(bounds(y), Bounds2(2, 6));
}

}  // namespace

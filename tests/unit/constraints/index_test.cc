// SPDX-License-Identifier: MIT
// cs_Index: the positions it begins with, how it is posted, and what each event takes from them.
#include "support/kit/batch.h"
#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr int kVal = 4;

class IndexTest : public SolverTest {
 protected:
  // Each variable 0..9; position holds 0, 1 and 2.
  void post() {
    for (CSint *&v : x) v = cs_createCSint(0, 9);
    position = cs_Index(x, 3, kVal);
    ASSERT_NE(position, nullptr);
  }

  CSint *x[4] = {};
  CSint *position = nullptr;
};

TEST_F(IndexTest, NoVariableGivesNull) {
  x[0] = CSINT(kVal);
  for (const int n : {0, -1, INT_MIN}) {
    EXPECT_EQ(cs_Index(x, n, kVal), nullptr);
    EXPECT_EQ(cs_Index(nullptr, n, kVal), nullptr);
  }
  EXPECT_EQ(cs_Index(nullptr, 2, kVal), nullptr);
  EXPECT_EQ(cs_Index(x, 2, kVal), nullptr) << "the second is null";
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(IndexTest, AValueThatNoVariableCanTakeGivesNullAndPostsNothing) {
  x[0] = cs_createCSint(0, 3);
  x[1] = fromValues({2, 3, 5});
  const int variables = solver::variables.count();
  EXPECT_EQ(cs_Index(x, 2, kVal), nullptr);
  EXPECT_EQ(solver::variables.count(), variables);
  EXPECT_EQ(cs_getNbConstraints(x[0]), 0);
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

TEST_F(IndexTest, HoldsThePositionsOfThoseThatCanTakeTheValue) {
  x[0] = cs_createCSint(5, 9);
  x[1] = cs_createCSint(0, 9);
  x[2] = fromValues({3, 5});
  x[3] = CSINT(kVal);
  position = cs_Index(x, 4, kVal);
  EXPECT_EQ(values(position), (std::vector{1, 3}));
  EXPECT_EQ(cs_getNbElements(position), 2);
  EXPECT_EQ(position->initialMin, 0);
  EXPECT_EQ(position->initialMax, 3);
}

// Deliberate: given its domain without events, the position reports its first change from the ends of the array.
TEST_F(IndexTest, TheLastReportedBoundsAreTheEndsOfTheArray) {
  x[0] = x[3] = cs_createCSint(5, 9);
  x[1] = x[2] = cs_createCSint(0, 9);
  position = cs_Index(x, 4, kVal);
  EXPECT_EQ(position->reportedMin, 0);
  EXPECT_EQ(position->reportedMax, 3);
}

TEST_F(IndexTest, PostsOneConstraintOnThePositionAndOneOnTheArrayUnderTheNameOfAnother) {
  const int mark = solver::trail.count();
  post();
  EXPECT_EQ(attachOrder(mark), (std::vector<const CSint *>{position, x[0], x[1], x[2]}));
  EXPECT_EQ(attachments(position), (Attached{{"cs_Cumulative", -1}}));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(attachments(x[i]), (Attached{{"cs_Cumulative", i}}));
  EXPECT_EQ(busySlots(position), "234");
  EXPECT_EQ(busySlots(x[0]), "012345");
  EXPECT_NE(constraintOf(position), constraintOf(x[0]));
  EXPECT_EQ(constraintOf(x[0]), constraintOf(x[2]));
  EXPECT_EQ(siteOf(position), siteOf(x[0]));
  EXPECT_EQ(siteOf(position)->references, 2);
}

TEST_F(IndexTest, VariablesThatCannotTakeTheValueAreAttachedAllTheSame) {
  x[0] = cs_createCSint(0, 3);
  x[1] = cs_createCSint(0, 9);
  position = cs_Index(x, 2, kVal);
  EXPECT_EQ(cs_getNbConstraints(x[0]), 1);
}

struct EventRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int bound;
  bool kept;
};

void PrintTo(const EventRow &row, std::ostream *out) { *out << row.name << " " << row.bound; }

class IndexEventTest : public IndexTest, public ::testing::WithParamInterface<EventRow> {};

TEST_P(IndexEventTest, APositionGoesWhenItsVariableLosesTheValue) {
  post();
  ASSERT_TRUE(GetParam().narrow(x[1], GetParam().bound));
  EXPECT_EQ(values(position), GetParam().kept ? range(0, 2) : (std::vector{0, 2}));
}

INSTANTIATE_TEST_SUITE_P(
    , IndexEventTest,
    ::testing::Values(EventRow{"minimum raised", cs_GE, kVal, true}, EventRow{"minimum raised", cs_GE, kVal + 1, false},
                      EventRow{"maximum lowered", cs_LE, kVal, true},
                      EventRow{"maximum lowered", cs_LE, kVal - 1, false},
                      EventRow{"bound by the minimum", cs_GE, 9, false},
                      EventRow{"bound by the maximum", cs_LE, 0, false}, EventRow{"bound inside", cs_EQ, 5, false},
                      EventRow{"bound inside", cs_EQ, kVal, true}, EventRow{"value removed", cs_NEQ, kVal, false},
                      EventRow{"value removed", cs_NEQ, 5, true}));

TEST_F(IndexTest, BoundToTheValueByABoundThePositionStays) {
  x[0] = cs_createCSint(0, kVal);
  x[1] = cs_createCSint(kVal, 9);
  position = cs_Index(x, 2, kVal);
  ASSERT_TRUE(cs_GE(x[0], kVal) && cs_LE(x[1], kVal));
  EXPECT_EQ(values(position), range(0, 1));
}

TEST_F(IndexTest, AVariableThatNeverHeldTheValueMakesNoCall) {
  x[0] = fromValues({0, 3, 5, 9});
  x[1] = x[2] = cs_createCSint(0, 9);
  position = cs_Index(x, 3, kVal);
  const int trail = solver::trail.count();
  ASSERT_TRUE(cs_EQ(x[0], 5));
  EXPECT_EQ(solver::trail.count(), trail + 2) << "the two bounds of the variable itself";
}

TEST_F(IndexTest, BindingAnotherVariableToTheValueLeavesThePosition) {
  post();
  ASSERT_TRUE(cs_EQ(x[0], kVal));
  EXPECT_EQ(values(position), range(0, 2));
}

class IndexBoundTest : public IndexTest, public ::testing::WithParamInterface<int> {};

TEST_P(IndexBoundTest, ABoundPositionBindsItsVariableAndNoOther) {
  post();
  ASSERT_TRUE(cs_EQ(position, GetParam()));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(values(x[i]), i == GetParam() ? std::vector{kVal} : range(0, 9));
}

INSTANTIATE_TEST_SUITE_P(, IndexBoundTest, ::testing::Values(0, 1, 2));

TEST_F(IndexTest, ThePositionThatIsLeftBindsItsVariable) {
  post();
  ASSERT_TRUE(cs_NEQ(position, 1));
  EXPECT_EQ(values(x[1]), range(0, 9));
  ASSERT_TRUE(cs_NEQ(x[2], kVal));
  EXPECT_EQ(values(x[0]), std::vector{kVal});
}

TEST_F(IndexTest, TheLastPositionCannotGo) {
  post();
  ASSERT_TRUE(cs_NEQ(x[0], kVal) && cs_GE(x[1], 5));
  EXPECT_FALSE(cs_LE(x[2], 3));
}

// Deliberate: nothing is imposed at posting, also when there is but one position.
TEST_F(IndexTest, ASinglePositionAtPostingImposesNothing) {
  x[0] = cs_createCSint(0, 3);
  x[1] = cs_createCSint(0, 9);
  position = cs_Index(x, 2, kVal);
  EXPECT_EQ(values(position), std::vector{1});
  EXPECT_EQ(values(x[1]), range(0, 9));
  EXPECT_FALSE(cs_EQ(x[1], 5));
}

// Deliberate: the removal is stale when it is heard, since the minimum has moved past it, and the raised minimum finds
// the value gone already. So the position stays, until somebody wants it.
TEST_F(IndexTest, ARemovalThatABoundHasPassedLeavesAPositionWithoutItsValue) {
  post();
  ASSERT_TRUE(together([this] { return cs_NEQ(x[1], kVal) && cs_GE(x[1], kVal + 1); }));
  EXPECT_EQ(values(position), range(0, 2));
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(position, 1));
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(position, 2));
}

TEST_F(IndexTest, ARestoredContextGivesThePositionsBack) {
  post();
  cs_saveContext();
  ASSERT_TRUE(cs_NEQ(x[1], kVal) && cs_LE(x[0], 2));
  EXPECT_EQ(values(position), std::vector{2});
  cs_restoreContext();
  EXPECT_EQ(values(position), range(0, 2));
  EXPECT_EQ(values(x[2]), range(0, 9));
}

}  // namespace

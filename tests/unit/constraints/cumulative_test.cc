// SPDX-License-Identifier: MIT
// cs_Cumulative: posting, what each handler narrows, the order of attaching.
#include "support/constraints/tasks.h"

namespace {

using namespace koru;
using namespace koru::test;
using Attached = std::vector<std::pair<std::string, int>>;

class CumulativeTest : public SchedulingTest {};

TEST_F(CumulativeTest, NoTaskIsTrueAndPostsNothing) {
  capacity = cs_createCSint(0, 3);
  for (const int none : {0, -1, INT_MIN}) EXPECT_TRUE(cs_Cumulative(nullptr, nullptr, nullptr, none, capacity));
  EXPECT_EQ(cs_getNbConstraints(capacity), 0);
}

TEST_F(CumulativeTest, NoTaskIsTrueWithoutASolverLikeItsKin) {
  cs_end();
  EXPECT_TRUE(cs_Cumulative(nullptr, nullptr, nullptr, 0, nullptr));
  EXPECT_TRUE(cs_Disjunctive(nullptr, nullptr, 0));
}

TEST_F(CumulativeTest, TheSiteIsMadeBeforeTheTasksAreCounted) {
  const FailingAllocation failing(0);
  EXPECT_FALSE(cs_Cumulative(nullptr, nullptr, nullptr, 0, nullptr));
  EXPECT_EQ(memoryReports, 1);
}

TEST_F(CumulativeTest, NullsAreRefusedAndNothingIsPosted) {
  add({0, 5}, 2);
  capacity = CSINT(1);
  EXPECT_FALSE(cs_Cumulative(nullptr, durations.data(), uses.data(), 1, capacity));
  EXPECT_FALSE(cs_Cumulative(starts.data(), nullptr, uses.data(), 1, capacity));
  EXPECT_FALSE(cs_Cumulative(starts.data(), durations.data(), nullptr, 1, capacity));
  EXPECT_FALSE(cs_Cumulative(starts.data(), durations.data(), uses.data(), 1, nullptr));
  CSint *none = nullptr;
  EXPECT_FALSE(cs_Cumulative(&none, durations.data(), uses.data(), 1, capacity));
  EXPECT_FALSE(cs_Cumulative(starts.data(), &none, uses.data(), 1, capacity));
  EXPECT_FALSE(cs_Cumulative(starts.data(), durations.data(), &none, 1, capacity));
  EXPECT_EQ(cs_getNbConstraints(starts[0]) + cs_getNbConstraints(capacity), 0);
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(CumulativeTest, AttachesTaskByTaskAndTheCapacityLast) {
  for (int i = 0; i < 3; ++i) add({0, 90}, {1, 5}, {1, 2});
  const int mark = solver::trail.count();
  ASSERT_TRUE(postCumulative({3, 9}));
  std::vector<const CSint *> order;
  for (std::size_t i = 0; i < 3; ++i) order.insert(order.end(), {starts[i], durations[i], uses[i]});
  order.push_back(capacity);
  EXPECT_EQ(attachOrder(mark), order);
  for (std::size_t i = 0; i < 3; ++i) {
    const Attached expected{{"cs_Cumulative", static_cast<int>(i)}};
    EXPECT_EQ(attachments(starts[i]), expected);
    EXPECT_EQ(attachments(durations[i]), expected);
    EXPECT_EQ(attachments(uses[i]), expected);
  }
  EXPECT_EQ(attachments(capacity), (Attached{{"cs_Cumulative", -1}}));
}

TEST_F(CumulativeTest, StartsHearBothBoundsDurationsAndUsesTheMinimumTheCapacityTheMaximum) {
  add({0, 90}, {1, 5}, {1, 2});
  ASSERT_TRUE(postCumulative({3, 9}));
  EXPECT_EQ(busySlots(starts[0]), "01234");
  EXPECT_EQ(busySlots(durations[0]), "024");
  EXPECT_EQ(busySlots(uses[0]), "024");
  EXPECT_EQ(busySlots(capacity), "134");
}

TEST_F(CumulativeTest, FourConstraintsShareASite) {
  add({0, 90}, {1, 5}, {1, 2});
  ASSERT_TRUE(postCumulative({3, 9}));
  const Site *site = capacity->constraints->constraint->site;
  EXPECT_EQ(site->references, 4);
  for (const CSint *v : {starts[0], durations[0], uses[0]}) EXPECT_EQ(v->constraints->constraint->site, site);
}

// ----- posting

TEST_F(CumulativeTest, TwoFixedTasksAboveTheCapacityFailBeforeAnythingIsAttached) {
  add({0, 0}, 5, 2);
  add({0, 0}, 5, 2);
  EXPECT_FALSE(postCumulative({0, 3}));
  EXPECT_EQ(boundsOf(capacity), (Interval{2, 3}));
  EXPECT_EQ(cs_getNbConstraints(starts[0]), 0);
}

TEST_F(CumulativeTest, TheCapacityIsRaisedToTheHeightOfTheProfile) {
  add({0, 0}, 5, 2);
  add({3, 4}, 5, 3);  // certainly runs in [4, 8)
  add({8, 8}, 1, 4);
  ASSERT_TRUE(postCumulative({0, 9}));
  EXPECT_EQ(boundsOf(capacity), (Interval{5, 9}));
}

TEST_F(CumulativeTest, ATaskThatNeedsMoreThanThereIsGetsNoTime) {
  add({0, 5}, {0, 5}, {4, 6});
  ASSERT_TRUE(postCumulative({0, 3}));
  EXPECT_EQ(boundsOf(durations[0]), exactly(0));
  EXPECT_EQ(boundsOf(uses[0]), (Interval{4, 6}));
}

TEST_F(CumulativeTest, ATaskThatNeedsMoreThanThereIsAndMustRunFails) {
  add({0, 5}, {2, 5}, {4, 6});
  EXPECT_FALSE(postCumulative({0, 3}));
}

TEST_F(CumulativeTest, UsesOfTasksThatMustRunAreCappedAndRaiseTheCapacity) {
  add({0, 50}, {1, 5}, {2, 9});
  add({0, 50}, {0, 5}, {3, 9});
  ASSERT_TRUE(postCumulative({0, 6}));
  EXPECT_EQ(boundsOf(uses[0]), (Interval{2, 6}));
  EXPECT_EQ(boundsOf(uses[1]), (Interval{3, 9}));
  EXPECT_EQ(boundsOf(capacity), (Interval{2, 6}));
}

// Step 3 of the recheck: the use of a compulsory part gets what the others leave.
TEST_F(CumulativeTest, TheUseOfACompulsoryPartIsBoundByWhatOthersLeave) {
  add({0, 1}, 5, 2);
  add({0, 1}, {5, 5}, {1, 9});
  ASSERT_TRUE(postCumulative({0, 6}));
  EXPECT_EQ(boundsOf(uses[1]), (Interval{1, 4}));
}

TEST_F(CumulativeTest, TasksWithoutDurationOrUseTakeNoPart) {
  add({0, 0}, 5, 1);
  add({2, 2}, 0, 1);
  add({2, 2}, 3, 0);
  ASSERT_TRUE(postCumulative({0, 1}));
  EXPECT_EQ(boundsOf(capacity), exactly(1));
}

// A: 0..6 beside B in [2, 5): no place before B, and the next point at which something ends is 5.
TEST_F(CumulativeTest, PostingMovesATaskPastAFixedOne) {
  add({0, 6}, 3);
  add({2, 2}, 3);
  ASSERT_TRUE(postCumulative({1, 1}));
  EXPECT_EQ(boundsOf(starts[0]), (Interval{5, 6}));
}

TEST_F(CumulativeTest, PostingMovesATaskBeforeAFixedOne) {
  add({0, 6}, 3);
  add({4, 4}, 3);
  ASSERT_TRUE(postCumulative({1, 1}));
  EXPECT_EQ(boundsOf(starts[0]), (Interval{0, 1}));
}

TEST_F(CumulativeTest, PostingFailsWhenATaskFitsNeitherBeforeNorAfter) {
  add({0, 4}, 3);
  add({2, 2}, 3);
  EXPECT_FALSE(postCumulative({1, 1}));
}

// Three tasks of energy 4 in [0, 4): 12 units of energy in 4 of time need a capacity of 3.
TEST_F(CumulativeTest, TheCapacityIsRaisedToTheEnergyOfAWindow) {
  for (int i = 0; i < 3; ++i) add({0, 2}, 2, 2);
  ASSERT_TRUE(postCumulative({0, 9}));
  EXPECT_EQ(boundsOf(capacity), (Interval{3, 9}));
}

TEST_F(CumulativeTest, TooMuchEnergyInAWindowFails) {
  for (int i = 0; i < 3; ++i) add({0, 2}, 2, 2);
  EXPECT_FALSE(postCumulative({0, 2}));
}

// 4 of 8 units of energy are taken in [0, 4), 4 are left for a task of duration 2.
TEST_F(CumulativeTest, AUseIsBoundByTheEnergyOfAWindow) {
  add({0, 2}, 2, 2);
  add({0, 2}, exactly(2), {1, 9});
  ASSERT_TRUE(postCumulative({0, 2}));
  EXPECT_EQ(boundsOf(uses[1]), (Interval{1, 2}));
  EXPECT_EQ(boundsOf(starts[0]), (Interval{0, 2}));
}

// The worked example of docs/cumulative.md.
TEST_F(CumulativeTest, ATaskMovesBehindAPartThatItCannotShare) {
  add({0, 1}, 4, 2);
  add({2, 6}, 3, 2);
  add({5, 5}, 3, 1);
  ASSERT_TRUE(postCumulative({3, 3}));
  EXPECT_EQ(boundsOf(starts[0]), (Interval{0, 1}));
  EXPECT_EQ(boundsOf(starts[1]), (Interval{4, 6}));
}

// ----- handlers

class TwoTasksTest : public CumulativeTest {
 protected:
  void SetUp() override {
    CumulativeTest::SetUp();
    add({0, 60}, {0, 5}, {0, 9});
    add({30, 30}, 5, 2);
    ASSERT_TRUE(postCumulative({0, 4}));
  }
};

TEST_F(TwoTasksTest, PostingBoundsNothingOfATaskThatNeedNotRun) {
  EXPECT_EQ(boundsOf(uses[0]), (Interval{0, 9}));
  EXPECT_EQ(boundsOf(capacity), (Interval{2, 4}));
}

TEST_F(TwoTasksTest, ADurationThatMustBePositiveCapsTheUse) {
  ASSERT_TRUE(cs_GE(durations[0], 1));
  EXPECT_EQ(boundsOf(uses[0]), (Interval{0, 4}));
}

TEST_F(TwoTasksTest, ADurationThatMustBePositiveRaisesTheCapacityToTheUse) {
  ASSERT_TRUE(cs_GE(uses[0], 3));
  EXPECT_EQ(boundsOf(capacity), (Interval{2, 4}));
  ASSERT_TRUE(cs_GE(durations[0], 1));
  EXPECT_EQ(boundsOf(capacity), (Interval{3, 4}));
}

TEST_F(TwoTasksTest, AUseAboveTheCapacityLeavesNoTime) {
  ASSERT_TRUE(cs_GE(uses[0], 5));
  EXPECT_EQ(boundsOf(durations[0]), exactly(0));
}

TEST_F(TwoTasksTest, AUseOfATaskThatRunsRaisesTheCapacity) {
  ASSERT_TRUE(cs_GE(durations[0], 1));
  ASSERT_TRUE(cs_GE(uses[0], 3));
  EXPECT_EQ(boundsOf(capacity), (Interval{3, 4}));
  EXPECT_FALSE(cs_GE(uses[0], 5));
}

TEST_F(TwoTasksTest, ACapacityThatFallsCapsUsesAndTakesTheTimeOfTooLargeTasks) {
  ASSERT_TRUE(cs_GE(durations[0], 1));
  ASSERT_TRUE(cs_LE(capacity, 3));
  EXPECT_EQ(boundsOf(uses[0]), (Interval{0, 3}));
  EXPECT_FALSE(cs_LE(capacity, 1));
}

TEST_F(TwoTasksTest, ACapacityThatFallsBelowAUseTakesTheTime) {
  ASSERT_TRUE(cs_GE(uses[0], 3));
  ASSERT_TRUE(cs_EQ(capacity, 2));
  EXPECT_EQ(boundsOf(durations[0]), exactly(0));
}

TEST_F(TwoTasksTest, PartsThatMeetRaiseTheCapacityAndBoundTheUse) {
  ASSERT_TRUE(cs_EQ(durations[0], 5));
  ASSERT_TRUE(cs_GE(uses[0], 1));
  ASSERT_TRUE(cs_EQ(starts[0], 31));
  EXPECT_EQ(boundsOf(capacity), (Interval{3, 4}));
  EXPECT_EQ(boundsOf(uses[0]), (Interval{1, 2}));
}

TEST_F(TwoTasksTest, ATaskThatCannotRunIsLeftAlone) {
  ASSERT_TRUE(cs_EQ(uses[0], 0));
  ASSERT_TRUE(cs_EQ(durations[0], 5));
  ASSERT_TRUE(cs_EQ(starts[0], 31));
  EXPECT_EQ(boundsOf(capacity), (Interval{2, 4}));
}

struct MoveRow {
  const char *name;
  bool (*narrow)(CSint *, int);
  int value;
  Interval other;  // what is left of the other start
};

void PrintTo(const MoveRow &row, std::ostream *out) { *out << row.name; }

// A may start in 0..9, B too; both last 4 and exclude each other.
class StartEventTest : public CumulativeTest, public ::testing::WithParamInterface<MoveRow> {};

TEST_P(StartEventTest, MovesTheOtherTask) {
  add({0, 9}, 4);
  add({0, 9}, 4);
  ASSERT_TRUE(postCumulative({1, 1}));
  ASSERT_EQ(boundsOf(starts[0]), (Interval{0, 9}));
  ASSERT_TRUE(GetParam().narrow(starts[1], GetParam().value));
  EXPECT_EQ(boundsOf(starts[0]), GetParam().other);
}

INSTANTIATE_TEST_SUITE_P(, StartEventTest,
                         ::testing::Values(MoveRow{"minimum raised", cs_GE, 7, {0, 5}},
                                           MoveRow{"maximum lowered", cs_LE, 2, {4, 9}},
                                           MoveRow{"bound by the minimum", cs_GE, 9, {0, 5}},
                                           MoveRow{"bound by the maximum", cs_LE, 0, {4, 9}},
                                           MoveRow{"bound inside", cs_EQ, 3, {7, 9}},
                                           MoveRow{"inner value removed", cs_NEQ, 2, {0, 9}}));

TEST_F(CumulativeTest, RemovedValuesAndDeafSlotsWakeNobody) {
  add({0, 60}, {1, 5}, {1, 9});
  ASSERT_TRUE(postCumulative({1, 9}));
  ASSERT_TRUE(cs_NEQ(starts[0], 30) && cs_LE(durations[0], 4) && cs_LE(uses[0], 8) && cs_GE(capacity, 2));
  EXPECT_EQ(boundsOf(starts[0]), (Interval{0, 60}));
  EXPECT_EQ(boundsOf(capacity), (Interval{2, 9}));
}

// Nothing is free in [5, 8), so the first task ends by 5.
TEST_F(CumulativeTest, TheLatestEndIsWrittenBackToTheDuration) {
  add({0, 1}, {1, 9});
  add({5, 5}, 3);
  ASSERT_TRUE(postCumulative({1, 1}));
  EXPECT_EQ(boundsOf(durations[0]), (Interval{1, 5}));
  EXPECT_EQ(boundsOf(starts[0]), (Interval{0, 1}));
}

TEST_F(CumulativeTest, RestoringBringsBackEverything) {
  add({0, 9}, 4);
  add({0, 9}, 4);
  ASSERT_TRUE(postCumulative({1, 1}));
  for (int round = 0; round < 3; ++round) {
    cs_saveContext();
    ASSERT_TRUE(cs_LE(starts[1], 2));
    EXPECT_EQ(boundsOf(starts[0]), (Interval{4, 9}));
    cs_restoreContext();
    EXPECT_EQ(boundsOf(starts[0]), (Interval{0, 9}));
  }
}

TEST_F(CumulativeTest, RestoringPastThePostingTakesItAway) {
  add({0, 9}, 4);
  add({0, 9}, 4);
  cs_saveContext();
  ASSERT_TRUE(postCumulative({1, 1}));
  cs_restoreContext();
  EXPECT_EQ(starts[0]->constraints, nullptr);
  EXPECT_EQ(solver::ownersAlive, 0);
  EXPECT_TRUE(cs_EQ(starts[0], 0) && cs_EQ(starts[1], 0));
}

// An inner context is accepted, an outer one restored: the parts of one posting go in an order of their own.
TEST_F(CumulativeTest, PartsMayOutliveOneAnother) {
  add({0, 9}, 4);
  add({0, 9}, 4);
  capacity = CSINT(1);
  cs_saveContext();
  ASSERT_TRUE(cs_Neq(capacity, starts[0]));
  cs_saveContext();
  ASSERT_TRUE(postCumulative());
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(attachments(capacity), (Attached{{"cs_Neq", -1}}));
  EXPECT_TRUE(cs_LE(starts[1], 2));
  EXPECT_EQ(boundsOf(starts[0]).min, 4);
}

}  // namespace

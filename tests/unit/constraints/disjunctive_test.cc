// SPDX-License-Identifier: MIT
// cs_Disjunctive: the holder, the private unit that stands for uses and capacity, and what it narrows.
#include "support/constraints/tasks.h"

namespace {

using namespace koru;
using namespace koru::test;
using Attached = std::vector<std::pair<std::string, int>>;

class DisjunctiveTest : public SchedulingTest {};

TEST_F(DisjunctiveTest, NoTaskIsTrueBeforeAnythingIsMade) {
  const FailingAllocation failing(0);
  for (const int none : {0, -1, INT_MIN}) EXPECT_TRUE(cs_Disjunctive(nullptr, nullptr, none));
  EXPECT_EQ(memoryReports, 0);
}

TEST_F(DisjunctiveTest, NullsAreRefused) {
  add({0, 5}, 2);
  CSint *none = nullptr;
  EXPECT_FALSE(cs_Disjunctive(nullptr, durations.data(), 1));
  EXPECT_FALSE(cs_Disjunctive(starts.data(), nullptr, 1));
  EXPECT_FALSE(cs_Disjunctive(&none, durations.data(), 1));
  EXPECT_FALSE(cs_Disjunctive(starts.data(), &none, 1));
  EXPECT_EQ(cs_getNbConstraints(starts[0]), 0);
}

TEST_F(DisjunctiveTest, TheHolderComesFirstAndIsDeaf) {
  add({0, 50}, {1, 2});
  add({0, 50}, {1, 2});
  const int mark = solver::trail.count();
  ASSERT_TRUE(postDisjunctive());
  EXPECT_EQ(attachments(starts[0]), (Attached{{"cs_Disjunctive", 0}, {"cs_Disjunctive", -1}}));
  EXPECT_EQ(attachments(starts[1]), (Attached{{"cs_Disjunctive", 1}}));
  EXPECT_EQ(starts[0]->constraints->next->heard, 0);
  const std::vector<const CSint *> order = attachOrder(mark);
  ASSERT_EQ(order.size(), 8U);
  const CSint *unit = order[3];
  EXPECT_EQ(order, (std::vector<const CSint *>{starts[0], starts[0], durations[0], unit, starts[1], durations[1], unit,
                                               unit}));
  EXPECT_EQ(attachments(unit), (Attached{{"cs_Disjunctive", -1}, {"cs_Disjunctive", 1}, {"cs_Disjunctive", 0}}));
  EXPECT_TRUE(unit->min == 1 && unit->max == 1 && unit->count == 1);
  EXPECT_EQ(starts[1]->constraints->constraint->site->references, 5);
}

TEST_F(DisjunctiveTest, TasksThatOverlapFail) {
  add({0, 0}, 3);
  add({2, 2}, 3);
  EXPECT_FALSE(postDisjunctive());
}

TEST_F(DisjunctiveTest, TasksThatTouchDoNotOverlap) {
  add({0, 0}, 3);
  add({3, 3}, 3);
  EXPECT_TRUE(postDisjunctive());
}

TEST_F(DisjunctiveTest, ATaskWithoutDurationMayLieAnywhere) {
  add({0, 0}, 3);
  add({1, 1}, 0);
  EXPECT_TRUE(postDisjunctive());
}

TEST_F(DisjunctiveTest, ATaskIsMovedPastAFixedOne) {
  add({0, 6}, 3);
  add({2, 2}, 3);
  ASSERT_TRUE(postDisjunctive());
  EXPECT_EQ(boundsOf(starts[0]), (Interval{5, 6}));
}

TEST_F(DisjunctiveTest, TooManyTasksForTheTimeFail) {
  for (int i = 0; i < 4; ++i) add({0, 5}, 2);
  EXPECT_FALSE(postDisjunctive());
}

TEST_F(DisjunctiveTest, RestoringPastThePostingFreesTheUnit) {
  add({0, 9}, 3);
  add({0, 9}, 3);
  cs_saveContext();
  ASSERT_TRUE(postDisjunctive());
  ASSERT_TRUE(cs_LE(starts[0], 2));
  cs_restoreContext();
  EXPECT_EQ(solver::ownersAlive, 0);
  EXPECT_EQ(starts[0]->constraints, nullptr);
}

// The holder goes with an outer context although the posting was accepted: the unit stays for those that read it.
TEST_F(DisjunctiveTest, TheUnitOutlivesItsHolder) {
  add({0, 9}, 4);
  add({0, 9}, 4);
  CSint *others[2] = {cs_createCSint(0, 9), cs_createCSint(0, 9)};
  cs_saveContext();
  for (CSint *other : others) ASSERT_TRUE(cs_Neq(starts[0], other));
  cs_saveContext();
  ASSERT_TRUE(postDisjunctive());
  cs_acceptContext();
  cs_restoreContext();
  EXPECT_EQ(attachments(starts[0]), (Attached{{"cs_Neq", -1}, {"cs_Neq", -1}}));
  EXPECT_TRUE(cs_LE(starts[1], 2));
  EXPECT_EQ(boundsOf(starts[0]), (Interval{4, 9}));
}

}  // namespace

// SPDX-License-Identifier: MIT
// The numbers of docs/scheduling.md that no test of a single rule has.
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class ScheduleTraces : public SolverTest {
 protected:
  using Bounds = std::vector<int>;

  static Bounds bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }
};

TEST_F(ScheduleTraces, SetUpTimes) {
  CSint *starts[] = {cs_createCSint(0, 3), cs_createCSint(0, 9)};
  CSint *durations[] = {CSINT(3), CSINT(4)};
  const int states[] = {0, 1};
  const int times[] = {0, 5, 2, 0};
  ASSERT_TRUE(cs_DisjunctiveTransitions(starts, durations, nullptr, states, states, 2, times, 2, 2));
  EXPECT_EQ(bounds(starts[0]), (Bounds{0, 1}));
  EXPECT_EQ(bounds(starts[1]), (Bounds{8, 9}));
}

TEST_F(ScheduleTraces, OnePrecedesTheOther) {
  CSint *first = cs_createCSint(0, 9);
  CSint *next = cs_createCSint(0, 10);
  CSint *condition = cs_createCSint(0, 1);
  ASSERT_TRUE(cs_PrecedenceIf(condition, first, CSINT(4), 2, next));
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(condition, 1));
  EXPECT_EQ(bounds(first), (Bounds{0, 4}));
  EXPECT_EQ(bounds(next), (Bounds{6, 10}));
  cs_restoreContext();
  ASSERT_TRUE(cs_LE(next, 5));
  EXPECT_EQ(bounds(condition), (Bounds{0, 0}));
}

TEST_F(ScheduleTraces, EitherOrder) {
  CSint *a = cs_createCSint(0, 5);
  CSint *b = cs_createCSint(0, 3);
  CSint *first = cs_createCSint(0, 1);
  ASSERT_TRUE(cs_EitherBefore(first, a, CSINT(4), nullptr, b, CSINT(3), nullptr));
  EXPECT_EQ(bounds(first), (Bounds{0, 0}));
  EXPECT_EQ(bounds(a), (Bounds{3, 5}));
  EXPECT_EQ(bounds(b), (Bounds{0, 2}));
}

TEST_F(ScheduleTraces, OneOfSeveral) {
  CSint *start = cs_createCSint(0, 20);
  CSint *duration = cs_createCSint(1, 9);
  CSint *starts[] = {cs_createCSint(0, 10), cs_createCSint(12, 15)};
  CSint *durations[] = {CSINT(7), CSINT(5)};
  CSint *there[] = {cs_createCSint(0, 1), cs_createCSint(0, 1)};
  ASSERT_TRUE(cs_Alternative(start, duration, nullptr, starts, durations, there, 2));
  EXPECT_EQ(bounds(start), (Bounds{0, 15}));
  EXPECT_EQ(bounds(duration), (Bounds{5, 7}));
  ASSERT_TRUE(cs_GE(start, 11));
  EXPECT_EQ(bounds(there[0]), (Bounds{0, 0}));
  EXPECT_EQ(bounds(there[1]), (Bounds{1, 1}));
  EXPECT_EQ(bounds(start), (Bounds{12, 15}));
  EXPECT_EQ(bounds(duration), (Bounds{5, 5}));
}

TEST_F(ScheduleTraces, OneThatCoversOthers) {
  CSint *start = cs_createCSint(0, 20);
  CSint *duration = cs_createCSint(0, 20);
  CSint *starts[] = {cs_createCSint(2, 4), cs_createCSint(5, 9)};
  CSint *durations[] = {CSINT(3), CSINT(2)};
  ASSERT_TRUE(cs_Span(start, duration, nullptr, starts, durations, nullptr, 2));
  EXPECT_EQ(bounds(start), (Bounds{2, 4}));
  EXPECT_EQ(bounds(duration), (Bounds{3, 9}));
  ASSERT_TRUE(cs_LE(duration, 4));
  EXPECT_EQ(bounds(start), (Bounds{3, 4}));
  EXPECT_EQ(bounds(starts[0]), (Bounds{3, 4}));
  EXPECT_EQ(bounds(starts[1]), (Bounds{5, 6}));
}

TEST_F(ScheduleTraces, ALevel) {
  CSint *times[] = {cs_createCSint(0, 9), cs_createCSint(4, 6)};
  CSint *changes[] = {CSINT(-3), CSINT(2)};
  ASSERT_TRUE(cs_Reservoir(times, changes, nullptr, 2, 2, 0, 4));
  EXPECT_EQ(bounds(times[0]), (Bounds{4, 9}));
}

TEST_F(ScheduleTraces, TwoRectangles) {
  CSint *x[] = {cs_createCSint(0, 1), cs_createCSint(0, 9)};
  CSint *y[] = {CSINT(0), CSINT(1)};
  CSint *sizes[] = {CSINT(3), CSINT(2)};
  ASSERT_TRUE(cs_NoOverlap(x, sizes, y, sizes, 2));
  EXPECT_EQ(bounds(x[1]), (Bounds{3, 9}));
}

TEST_F(ScheduleTraces, TheOrderThatLeavesMoreRoom) {
  CSint *a = cs_createCSint(0, 10);
  CSint *b = cs_createCSint(2, 8);
  CSint *first = cs_createCSint(0, 1);
  ASSERT_TRUE(cs_EitherBefore(first, a, CSINT(3), nullptr, b, CSINT(4), nullptr));
  const CSorder order = {first, {a, b}, {CSINT(3), CSINT(4)}, 0};
  CSsearch *search = cs_createSearch(nullptr, 0);
  ASSERT_TRUE(cs_addSearchOrders(search, &order, 1, CS_ORDER_SLACK, CS_VALUE_SLACK));
  ASSERT_EQ(cs_nextSolution(search), CS_STATUS_SOLUTION);
  EXPECT_EQ(bounds(first), (Bounds{1, 1})) << "8 - 3 instead of 10 - 6";
  cs_freeSearch(search);
}

TEST_F(ScheduleTraces, TimesThatAreSet) {
  CSint *starts[] = {cs_createCSint(0, 9), cs_createCSint(0, 7), cs_createCSint(0, 5)};
  CSint *durations[] = {CSINT(3), CSINT(2), CSINT(4)};
  ASSERT_TRUE(cs_DisjunctiveTasks(starts, durations, nullptr, 3));
  CSsearch *search = cs_createSearch(nullptr, 0);
  ASSERT_TRUE(cs_addSearchPhase(search, starts, 3, CS_ORDER_SET_TIMES, CS_VALUE_MIN));
  std::vector<Bounds> found;
  while (cs_nextSolution(search) == CS_STATUS_SOLUTION)
    found.push_back({cs_getValue(starts[0]), cs_getValue(starts[1]), cs_getValue(starts[2])});
  EXPECT_EQ(found, (std::vector<Bounds>{{6, 4, 0}, {4, 7, 0}, {6, 0, 2}, {2, 0, 5}, {0, 7, 3}, {0, 3, 5}}));
  cs_freeSearch(search);
}

}  // namespace

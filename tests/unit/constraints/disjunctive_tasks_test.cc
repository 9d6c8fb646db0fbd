// SPDX-License-Identifier: MIT
// cs_DisjunctiveTasks beyond what enumeration reaches.
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class DisjunctiveTasksTest : public SolverTest {
 protected:
  // A task over starts [from, to].
  CSint *task(int from, int to, int duration, CSint *present = nullptr) {
    return task(from, to, CSINT(duration), present);
  }
  CSint *task(int from, int to, CSint *duration, CSint *present = nullptr) {
    starts.push_back(cs_createCSint(from, to));
    durations.push_back(duration);
    presents.push_back(present != nullptr ? present : CSINT(1));
    return starts.back();
  }
  bool post(bool optional = false) {
    return cs_DisjunctiveTasks(starts.data(), durations.data(), optional ? presents.data() : nullptr,
                               static_cast<int>(starts.size()));
  }
  static std::vector<int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

  std::vector<CSint *> starts;
  std::vector<CSint *> durations;
  std::vector<CSint *> presents;
};

// Three tasks of 11, 10 and 2 between 0 and 25: the trace in docs/scheduling.md.
TEST_F(DisjunctiveTasksTest, EdgesAreFound) {
  CSint *a = task(0, 14, 11);
  CSint *b = task(1, 17, 10);
  CSint *c = task(4, 33, 2);
  ASSERT_TRUE(post());
  EXPECT_TRUE(cs_LE(a, 10) && cs_LE(b, 11));
  EXPECT_EQ(bounds(c), (std::vector<int>{21, 33})) << "both end by 21, and with c they would not";
}

TEST_F(DisjunctiveTasksTest, WhatIsNotLastEndsBeforeOneOfTheOthersBegins) {
  task(0, 14, 11);
  task(1, 17, 10);
  CSint *i = task(4, 20, 2);
  ASSERT_TRUE(post());
  EXPECT_EQ(cs_getMax(i), 15);
}

TEST_F(DisjunctiveTasksTest, AnOverloadIsSeen) {
  task(0, 4, 3);
  task(0, 4, 3);
  task(1, 3, 2);
  EXPECT_FALSE(post());
}

TEST_F(DisjunctiveTasksTest, WhatCannotEndBeforeAnotherOneStartsComesBehindIt) {
  CSint *a = task(0, 3, 4);
  CSint *b = task(0, 20, 5);
  ASSERT_TRUE(post());
  EXPECT_EQ(bounds(b), (std::vector<int>{4, 20}));
  EXPECT_EQ(bounds(a), (std::vector<int>{0, 3}));
  EXPECT_TRUE(cs_GE(a, 2));
  EXPECT_EQ(cs_getMin(b), 6);
}

TEST_F(DisjunctiveTasksTest, StartsWithHolesAreFollowed) {
  starts.push_back(fromValues({0, 1, 5, 20}));
  durations.push_back(CSINT(3));
  CSint *b = task(0, 1, 2);
  CSint *c = task(5, 6, 4);
  ASSERT_TRUE(post());
  EXPECT_EQ(bounds(starts[0]), (std::vector<int>{20, 20})) << "not 2, nor 5";
  EXPECT_EQ(bounds(b), (std::vector<int>{0, 1}));
  EXPECT_EQ(bounds(c), (std::vector<int>{5, 6}));
}

TEST_F(DisjunctiveTasksTest, DurationsEndWhereTheNextTaskMustBegin) {
  CSint *duration = cs_createCSint(0, 50);
  CSint *other = cs_createCSint(1, 50);
  CSint *a = task(2, 4, duration);
  CSint *b = task(8, 9, other);
  CSint *c = task(30, 40, 5);
  ASSERT_TRUE(post());
  EXPECT_EQ(cs_getMax(duration), 7) << "b cannot come before it";
  EXPECT_TRUE(cs_LE(starts[0], 3) && cs_GE(other, 3));
  EXPECT_EQ(cs_getMax(other), 32);
  EXPECT_EQ(bounds(a), (std::vector<int>{2, 3}));
  EXPECT_EQ(bounds(b), (std::vector<int>{8, 9}));
  EXPECT_EQ(bounds(c), (std::vector<int>{30, 40}));
}

TEST_F(DisjunctiveTasksTest, ATaskWithoutAPlaceIsLeftOut) {
  CSint *present = cs_createCSint(0, 1);
  CSint *start = task(0, 3, 4, present);
  task(0, 2, 3);
  task(3, 5, 3);
  ASSERT_TRUE(post(true));
  EXPECT_EQ(cs_getMax(present), 0);
  EXPECT_EQ(bounds(start), (std::vector<int>{0, 3})) << "it says nothing";
}

TEST_F(DisjunctiveTasksTest, ATaskThatMayBeLeftOutIsInNobodysWay) {
  CSint *present = cs_createCSint(-2, 3);
  task(0, 2, 4, present);
  CSint *b = task(0, 9, 3);
  ASSERT_TRUE(post(true));
  EXPECT_EQ(bounds(b), (std::vector<int>{0, 9}));
  EXPECT_TRUE(cs_GE(present, 1));
  EXPECT_EQ(bounds(b), (std::vector<int>{4, 9}));
}

TEST_F(DisjunctiveTasksTest, TasksOfNoTimeAreInNobodysWay) {
  task(5, 5, 0);
  task(4, 4, 3);
  EXPECT_TRUE(post());
}

TEST_F(DisjunctiveTasksTest, TimesGoBeyondTheInts) {
  CSint *a = task(INT_MAX - 2, INT_MAX, INT_MAX);
  CSint *b = task(INT_MIN, INT_MAX, INT_MAX);
  ASSERT_TRUE(post());
  EXPECT_EQ(bounds(a), (std::vector<int>{INT_MAX - 2, INT_MAX}));
  EXPECT_EQ(bounds(b), (std::vector<int>{INT_MIN, 0}));
}

TEST_F(DisjunctiveTasksTest, ARestoreGivesAllBack) {
  CSint *a = task(0, 10, 3);
  CSint *b = task(0, 10, 3);
  ASSERT_TRUE(post());
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(a, 4) && cs_EQ(b, 6));
  EXPECT_FALSE(cs_EQ(b, 5)) << "worked on in the failed state";
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(a, 4) && cs_LE(b, 6));
  EXPECT_EQ(bounds(b), (std::vector<int>{0, 1}));
}

TEST_F(DisjunctiveTasksTest, OneVariableInSeveralPlaces) {
  CSint *x = cs_createCSint(1, 9);
  CSint *both[] = {x, x};
  EXPECT_TRUE(cs_DisjunctiveTasks(both, both, nullptr, 2)) << "weak: the two starts may differ as far as it knows";
  EXPECT_FALSE(cs_EQ(x, 3));
  CSint *y = cs_createCSint(1, 9);
  CSint *first[] = {y, CSINT(4)};
  CSint *second[] = {y, CSINT(2)};
  ASSERT_TRUE(cs_DisjunctiveTasks(first, second, nullptr, 2));
  EXPECT_EQ(bounds(y), (std::vector<int>{1, 9}));
  EXPECT_TRUE(cs_LE(y, 4));
  EXPECT_EQ(cs_getMax(y), 3) << "the bound is not yet seen to be 2";
}

static int solutions;

TEST_F(DisjunctiveTasksTest, AllSequencesAreFound) {
  for (int i = 0; i < 5; ++i) task(0, 8, 2 - i % 2);
  ASSERT_TRUE(post());
  solutions = 0;
  cs_findAll(starts.data(), 5, cs_findFreeVar, [](CSint **, int) { ++solutions; });
  EXPECT_GT(solutions, 120);
  int expected = 0;
  std::vector<int> s(5);
  for (s[0] = 0; s[0] <= 8; ++s[0])
    for (s[1] = 0; s[1] <= 8; ++s[1])
      for (s[2] = 0; s[2] <= 8; ++s[2])
        for (s[3] = 0; s[3] <= 8; ++s[3])
          for (s[4] = 0; s[4] <= 8; ++s[4]) {
            bool apart = true;
            for (std::size_t i = 0; i < 5; ++i)
              for (std::size_t j = 0; j < i; ++j)
                apart = apart && (s[i] + (i % 2 == 0 ? 2 : 1) <= s[j] || s[j] + (j % 2 == 0 ? 2 : 1) <= s[i]);
            expected += apart ? 1 : 0;
          }
  EXPECT_EQ(solutions, expected);
}

TEST_F(DisjunctiveTasksTest, BadInputIsRefused) {
  CSint *array[] = {cs_createCSint(0, 5), cs_createCSint(0, 5)};
  CSint *holed[] = {array[0], nullptr};
  EXPECT_FALSE(cs_DisjunctiveTasks(nullptr, array, nullptr, 2));
  EXPECT_FALSE(cs_DisjunctiveTasks(array, nullptr, nullptr, 2));
  EXPECT_FALSE(cs_DisjunctiveTasks(array, array, nullptr, -1));
  EXPECT_FALSE(cs_DisjunctiveTasks(array, array, holed, 2));
  EXPECT_FALSE(cs_DisjunctiveTasks(holed, array, nullptr, 2));
  EXPECT_TRUE(cs_DisjunctiveTasks(nullptr, nullptr, nullptr, 0));
  CSint *negative = cs_createCSint(-5, -1);
  EXPECT_FALSE(cs_DisjunctiveTasks(array, &negative, nullptr, 1));
}

// The start of the first task, which must be 3, tells that the last one is there, for which there is no place.
TEST_F(DisjunctiveTasksTest, AStartThatIsATruthValueAsWell) {
  CSint *start = task(0, 9, 2);
  task(0, 0, 3);
  task(0, 1, 3, start);
  EXPECT_FALSE(post(true));
}

TEST_F(DisjunctiveTasksTest, AStartWithNothingBetweenItsBounds) {
  starts.push_back(fromValues({0, 20}));
  durations.push_back(CSINT(2));
  task(0, 0, 3);
  task(10, 12, 9);
  EXPECT_TRUE(cs_LE(starts[0], 20));
  ASSERT_TRUE(post());
  EXPECT_EQ(bounds(starts[0]), (std::vector<int>{20, 20}));
  EXPECT_EQ(bounds(starts[2]), (std::vector<int>{10, 11}));
  EXPECT_FALSE(cs_GE(starts[2], 12));
}

}  // namespace

// SPDX-License-Identifier: MIT
// cs_DisjunctiveTransitions beyond what enumeration reaches.
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class DisjunctiveTransitionsTest : public SolverTest {
 protected:
  static std::vector<int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }
  CSint *task(CSint *start, CSint *duration, int state) {
    starts.push_back(start);
    durations.push_back(duration);
    presents.push_back(cs_createCSint(0, 1));
    states.push_back(state);
    return start;
  }
  CSint *task(int from, int to, int duration, int state) {
    return task(cs_createCSint(from, to), CSINT(duration), state);
  }
  bool post(const std::vector<int> &times, int count, bool optional = false) {
    return cs_DisjunctiveTransitions(starts.data(), durations.data(), optional ? presents.data() : nullptr,
                                     states.data(), states.data(), static_cast<int>(starts.size()), times.data(), count,
                                     count);
  }

  std::vector<CSint *> starts;
  std::vector<CSint *> durations;
  std::vector<CSint *> presents;
  std::vector<int> states;
};

TEST_F(DisjunctiveTransitionsTest, TheTimeBetweenDependsOnTheOrder) {
  CSint *a = task(0, 20, 3, 0);
  CSint *b = task(0, 20, 4, 1);
  ASSERT_TRUE(post({0, 5, 2, 0}, 2));
  EXPECT_TRUE(cs_LE(a, 5));
  EXPECT_EQ(bounds(b), (std::vector<int>{8, 20})) << "from b it takes 2: a would start at 6";
  EXPECT_TRUE(cs_LE(b, 9));
  EXPECT_EQ(bounds(a), (std::vector<int>{0, 1}));
}

TEST_F(DisjunctiveTransitionsTest, TheOtherWayRound) {
  CSint *a = task(0, 20, 3, 0);
  CSint *b = task(0, 20, 4, 1);
  ASSERT_TRUE(post({0, 5, 2, 0}, 2));
  EXPECT_TRUE(cs_LE(b, 7));
  EXPECT_EQ(bounds(a), (std::vector<int>{6, 20}));
}

// 4 x 3 and three times 2 do not fit into 17; without the times they would.
TEST_F(DisjunctiveTransitionsTest, LeastTimesAddUp) {
  for (int i = 0; i < 4; ++i) task(0, 14, 3, i);
  EXPECT_FALSE(post({9, 2, 2, 2, 2, 9, 2, 2, 2, 2, 9, 2, 2, 2, 2, 9}, 4));
}

TEST_F(DisjunctiveTransitionsTest, DurationsEndInTimeForTheChange) {
  CSint *duration = cs_createCSint(0, 50);
  task(cs_createCSint(2, 3), duration, 0);
  task(12, 13, 4, 1);
  ASSERT_TRUE(post({0, 5, 2, 0}, 2));
  EXPECT_EQ(bounds(duration), (std::vector<int>{0, 6})) << "from 2 to 8";
}

TEST_F(DisjunctiveTransitionsTest, ATaskWithoutAPlaceIsLeftOut) {
  task(3, 6, 2, 0);
  CSint *b = task(0, 0, 4, 1);
  CSint *c = task(9, 20, 3, 1);
  ASSERT_TRUE(post({0, 5, 2, 0}, 2, true));
  EXPECT_TRUE(cs_EQ(presents[1], 1) && cs_EQ(presents[2], 1));
  EXPECT_EQ(bounds(presents[0]), (std::vector<int>{0, 1}));
  EXPECT_TRUE(cs_LE(c, 12));
  EXPECT_EQ(cs_getMax(presents[0]), 1) << "weak: 6 to 8, then until 13, but that takes three tasks to see";
  EXPECT_TRUE(cs_LE(c, 9));
  EXPECT_EQ(cs_getMax(presents[0]), 0) << "3 to 5, then until 10";
  EXPECT_EQ(bounds(b), (std::vector<int>{0, 0}));
  EXPECT_EQ(bounds(starts[0]), (std::vector<int>{3, 6}));
}

// Each two of them fit, all three do not.
TEST_F(DisjunctiveTransitionsTest, ATaskThatAllTogetherLeaveOut) {
  for (int i = 0; i < 3; ++i) task(0, 7, 3, 0);
  ASSERT_TRUE(post({1}, 1, true));
  EXPECT_TRUE(cs_EQ(presents[0], 1) && cs_EQ(presents[1], 1));
  EXPECT_EQ(cs_getMax(presents[2]), 0);
}

TEST_F(DisjunctiveTransitionsTest, BadInputIsRefused) {
  CSint *array[] = {cs_createCSint(0, 5), cs_createCSint(10, 15)};
  CSint *holed[] = {array[0], nullptr};
  const int none[] = {0, 0};
  const int high[] = {0, 1};
  const int low[] = {-1, 0};
  const int times[] = {1};
  const int negative[] = {-1};
  EXPECT_FALSE(cs_DisjunctiveTransitions(nullptr, array, nullptr, none, none, 2, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, nullptr, nullptr, none, none, 2, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, holed, none, none, 2, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, nullptr, nullptr, none, 2, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, nullptr, none, nullptr, 2, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, nullptr, none, none, 2, nullptr, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, nullptr, high, none, 2, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, nullptr, none, low, 2, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, nullptr, none, none, 2, negative, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, array, nullptr, none, none, -1, times, 1, 1));
  EXPECT_FALSE(cs_DisjunctiveTransitions(nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr, -1, 0));
  EXPECT_FALSE(cs_DisjunctiveTransitions(nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr, 0, -1));
  EXPECT_TRUE(cs_DisjunctiveTransitions(nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr, 0, 0));
  CSint *below[] = {cs_createCSint(-5, -1)};
  EXPECT_FALSE(cs_DisjunctiveTransitions(array, below, nullptr, none, none, 1, times, 1, 1));
}

// It would have to lie 8 before itself.
TEST_F(DisjunctiveTransitionsTest, OneVariableForTwoStarts) {
  CSint *start = cs_createCSint(0, 10);
  task(start, CSINT(8), 0);
  task(start, CSINT(20), 0);
  EXPECT_FALSE(post({0}, 1));
}

TEST_F(DisjunctiveTransitionsTest, AStartThatIsATruthValueAsWell) {
  CSint *start = task(0, 9, 2, 0);
  task(0, 0, 3, 0);
  task(0, 1, 3, 0);
  presents = {CSINT(1), CSINT(1), start};
  EXPECT_FALSE(post({0}, 1, true));
}

}  // namespace

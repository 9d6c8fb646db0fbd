// SPDX-License-Identifier: MIT
// cs_Reservoir beyond what enumeration reaches.
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class ReservoirTest : public SolverTest {
 protected:
  static std::vector<int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }
  CSint *event(int from, int to, int least, int most) {
    times.push_back(cs_createCSint(from, to));
    changes.push_back(cs_createCSint(least, most));
    presents.push_back(cs_createCSint(0, 1));
    return times.back();
  }
  bool post(int start, int low, int high, bool optional = false) {
    return cs_Reservoir(times.data(), changes.data(), optional ? presents.data() : nullptr,
                        static_cast<int>(times.size()), start, low, high);
  }

  std::vector<CSint *> times;
  std::vector<CSint *> changes;
  std::vector<CSint *> presents;
};

TEST_F(ReservoirTest, WhatIsTakenWaitsForWhatIsBrought) {
  CSint *bring = event(3, 9, 4, 4);
  CSint *take = event(0, 8, -2, -2);
  ASSERT_TRUE(post(1, 0, 5));
  EXPECT_EQ(bounds(take), (std::vector<int>{3, 8}));
  EXPECT_EQ(bounds(bring), (std::vector<int>{3, 8}));
  EXPECT_TRUE(cs_LE(take, 6));
  EXPECT_EQ(bounds(bring), (std::vector<int>{3, 6}));
}

TEST_F(ReservoirTest, WhatDoesNotFitWaitsForWhatIsTaken) {
  CSint *bring = event(0, 8, 3, 3);
  CSint *take = event(2, 9, -2, -2);
  ASSERT_TRUE(post(2, 0, 4));
  EXPECT_EQ(bounds(bring), (std::vector<int>{2, 8}));
  EXPECT_EQ(bounds(take), (std::vector<int>{2, 8}));
}

TEST_F(ReservoirTest, ChangesAreAsLargeAsTheLevelNeeds) {
  event(0, 3, 1, 9);
  event(5, 6, -6, -1);
  ASSERT_TRUE(post(0, 0, 7));
  EXPECT_EQ(bounds(changes[0]), (std::vector<int>{1, 7}));
  EXPECT_TRUE(cs_LE(changes[1], -4));
  EXPECT_EQ(bounds(changes[0]), (std::vector<int>{4, 7}));
  EXPECT_TRUE(cs_LE(changes[0], 5));
  EXPECT_EQ(bounds(changes[1]), (std::vector<int>{-5, -4}));
}

TEST_F(ReservoirTest, AnEventThatIsNeededIsThere) {
  event(0, 9, 4, 4);
  event(4, 4, -3, -3);
  event(1, 2, -5, -5);
  ASSERT_TRUE(post(1, 0, 9, true));
  EXPECT_EQ(cs_getMax(presents[2]), 1) << "after four are there, all but nothing";
  EXPECT_TRUE(cs_EQ(presents[1], 1));
  EXPECT_EQ(cs_getMin(presents[0]), 1);
  EXPECT_EQ(bounds(times[0]), (std::vector<int>{0, 4}));
  EXPECT_EQ(cs_getMax(presents[2]), 0) << "not both";
}

TEST_F(ReservoirTest, AnEventForWhichThereIsNoRoomIsNotThere) {
  event(0, 9, -4, -4);
  ASSERT_TRUE(post(3, 0, 9, true));
  EXPECT_EQ(cs_getMax(presents[0]), 0);
  EXPECT_EQ(bounds(times[0]), (std::vector<int>{0, 9}));
}

TEST_F(ReservoirTest, SeveralEventsAtATimeAreOneChange) {
  event(4, 4, 9, 9);
  event(4, 4, -8, -8);
  event(4, 4, 0, 0);
  EXPECT_TRUE(post(0, 0, 1));
}

TEST_F(ReservoirTest, TheLevelBeforeAllEventsCounts) {
  EXPECT_TRUE(post(3, 3, 3));
  EXPECT_FALSE(post(2, 3, 9));
  EXPECT_FALSE(post(10, 3, 9));
  event(0, 1, 5, 5);
  EXPECT_FALSE(post(2, 3, 9));
  EXPECT_FALSE(post(3, 0, 7));
}

TEST_F(ReservoirTest, LevelsGoBeyondTheInts) {
  for (int i = 0; i < 4; ++i) event(INT_MIN + i, INT_MAX - i, INT_MIN, INT_MAX);
  ASSERT_TRUE(post(INT_MAX, INT_MIN, INT_MAX));
  EXPECT_TRUE(cs_EQ(changes[0], INT_MAX) && cs_EQ(times[0], 0));
  EXPECT_EQ(bounds(times[1]), (std::vector<int>{INT_MIN + 1, INT_MAX - 1}));
  EXPECT_TRUE(cs_GE(changes[1], 0) && cs_GE(changes[2], 0));
  EXPECT_EQ(cs_getMax(changes[3]), -INT_MAX) << "it takes all of it";
  EXPECT_EQ(cs_getMax(times[3]), 0);
}

TEST_F(ReservoirTest, BadInputIsRefused) {
  CSint *array[] = {cs_createCSint(0, 5), cs_createCSint(0, 5)};
  CSint *holed[] = {array[0], nullptr};
  EXPECT_FALSE(cs_Reservoir(nullptr, array, nullptr, 2, 0, 0, 9));
  EXPECT_FALSE(cs_Reservoir(array, nullptr, nullptr, 2, 0, 0, 9));
  EXPECT_FALSE(cs_Reservoir(array, array, holed, 2, 0, 0, 9));
  EXPECT_FALSE(cs_Reservoir(array, array, nullptr, -1, 0, 0, 9));
  EXPECT_FALSE(cs_Reservoir(array, array, nullptr, 2, 0, 9, 0));
}

}  // namespace

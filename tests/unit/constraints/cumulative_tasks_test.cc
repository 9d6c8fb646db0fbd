// SPDX-License-Identifier: MIT
// cs_CumulativeTasks beyond what enumeration reaches.
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class CumulativeTasksTest : public SolverTest {
 protected:
  CSint *task(int from, int to, int duration, int use, CSint *present = nullptr) {
    return task(cs_createCSint(from, to), CSINT(duration), CSINT(use), present);
  }
  CSint *task(CSint *start, CSint *duration, CSint *use, CSint *present = nullptr) {
    starts.push_back(start);
    durations.push_back(duration);
    uses.push_back(use);
    presents.push_back(present != nullptr ? present : CSINT(1));
    return start;
  }
  bool post(CSint *capacity, bool optional = false) {
    return cs_CumulativeTasks(starts.data(), durations.data(), uses.data(), optional ? presents.data() : nullptr,
                              static_cast<int>(starts.size()), capacity);
  }
  static std::vector<int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }

  std::vector<CSint *> starts;
  std::vector<CSint *> durations;
  std::vector<CSint *> uses;
  std::vector<CSint *> presents;
};

// The trace in docs/scheduling.md.
TEST_F(CumulativeTasksTest, StartsMovePastWhatIsTaken) {
  CSint *a = task(0, 2, 4, 2);
  CSint *b = task(6, 7, 3, 1);
  CSint *c = task(0, 20, 4, 2);
  ASSERT_TRUE(post(CSINT(3)));
  EXPECT_EQ(bounds(c), (std::vector<int>{4, 20})) << "a runs from 2 to 4";
  EXPECT_TRUE(cs_GE(a, 1));
  EXPECT_EQ(bounds(c), (std::vector<int>{5, 20}));
  EXPECT_TRUE(cs_EQ(b, 7));
  EXPECT_EQ(bounds(c), (std::vector<int>{5, 20})) << "there is room beside b";
}

TEST_F(CumulativeTasksTest, LatestStartsMoveBeforeWhatIsTaken) {
  CSint *a = task(0, 18, 4, 2);
  task(15, 16, 6, 2);
  ASSERT_TRUE(post(CSINT(3)));
  EXPECT_EQ(bounds(a), (std::vector<int>{0, 12}));
}

TEST_F(CumulativeTasksTest, TooMuchEnergyIsSeen) {
  for (int i = 0; i < 3; ++i) task(0, 3, 3, 2);
  EXPECT_FALSE(post(CSINT(2))) << "18 of 12, though nothing is certainly taken";
}

TEST_F(CumulativeTasksTest, AnOptionalTaskWithTooMuchEnergyIsLeftOut) {
  CSint *present = cs_createCSint(0, 1);
  task(0, 3, 3, 2);
  task(0, 3, 3, 2);
  task(0, 3, 3, 1, present);
  ASSERT_TRUE(post(CSINT(2), true));
  EXPECT_EQ(cs_getMax(present), 0);
}

// The first one certainly runs from 0 to 4, and leaves 8 of 12 to the others, which need 9.
TEST_F(CumulativeTasksTest, EnergyBesideWhatIsCertainlyTaken) {
  task(-2, 0, 6, 1);
  for (int i = 0; i < 3; ++i) task(0, 3, 3, 1);
  EXPECT_FALSE(post(CSINT(2)));
}

// The trace in docs/scheduling.md.
TEST_F(CumulativeTasksTest, ATaskThatLeavesTooLittleBeginsLater) {
  for (int i = 0; i < 3; ++i) task(0, 2, 2, 1);
  CSint *d = task(0, 9, 3, 1);
  CSint *e = task(-9, 1, 3, 1);
  ASSERT_TRUE(post(CSINT(2)));
  EXPECT_EQ(bounds(d), (std::vector<int>{2, 9}));
  EXPECT_EQ(bounds(e), (std::vector<int>{-9, -1}));
}

// 0 to 4 is full, and from -1 on or until 5 there would be energy enough.
TEST_F(CumulativeTasksTest, ATaskThatCannotWaitForAFullWindow) {
  for (int i = 0; i < 4; ++i) task(0, 2, 2, 1);
  task(0, 3, 2, 1);
  EXPECT_FALSE(post(CSINT(2)));
  starts.back() = cs_createCSint(-1, 2);
  EXPECT_FALSE(post(CSINT(2)));
}

TEST_F(CumulativeTasksTest, AnOptionalTaskThatCannotWaitForAFullWindowIsLeftOut) {
  CSint *late = cs_createCSint(0, 1);
  CSint *early = cs_createCSint(0, 1);
  for (int i = 0; i < 4; ++i) task(0, 2, 2, 1);
  task(0, 3, 2, 1, late);
  task(-1, 2, 2, 1, early);
  ASSERT_TRUE(post(CSINT(2), true));
  EXPECT_EQ(cs_getMax(late), 0);
  EXPECT_EQ(cs_getMax(early), 0);
}

TEST_F(CumulativeTasksTest, ATaskThatIsTooLargeIsLeftOut) {
  CSint *present = cs_createCSint(0, 1);
  CSint *start = task(0, 3, 3, 4, present);
  ASSERT_TRUE(post(CSINT(3), true));
  EXPECT_EQ(cs_getMax(present), 0);
  EXPECT_EQ(bounds(start), (std::vector<int>{0, 3}));
}

TEST_F(CumulativeTasksTest, UsesAndTheCapacityAreNarrowed) {
  CSint *capacity = cs_createCSint(-3, 7);
  CSint *use = cs_createCSint(-1, 9);
  CSint *free = cs_createCSint(0, 9);
  task(cs_createCSint(1, 2), CSINT(3), use);
  task(cs_createCSint(0, 0), CSINT(4), CSINT(3));
  task(cs_createCSint(0, 9), CSINT(0), free);
  ASSERT_TRUE(post(capacity));
  EXPECT_EQ(bounds(capacity), (std::vector<int>{3, 7}));
  EXPECT_EQ(bounds(use), (std::vector<int>{0, 4}));
  EXPECT_EQ(bounds(free), (std::vector<int>{0, 9})) << "it takes no time";
  EXPECT_TRUE(cs_GE(use, 2));
  EXPECT_EQ(bounds(capacity), (std::vector<int>{5, 7}));
}

TEST_F(CumulativeTasksTest, DurationsEndWhereThereIsNoRoomAnyMore) {
  CSint *duration = cs_createCSint(0, 99);
  task(cs_createCSint(1, 4), duration, CSINT(2));
  task(10, 12, 5, 2);
  ASSERT_TRUE(post(CSINT(3)));
  EXPECT_EQ(bounds(duration), (std::vector<int>{0, 11})) << "from 1 to 12";
  EXPECT_TRUE(cs_GE(starts[0], 3));
  EXPECT_EQ(bounds(duration), (std::vector<int>{0, 9}));
}

TEST_F(CumulativeTasksTest, StartsWithHolesAreFollowed) {
  CSint *a = task(fromValues({0, 2, 9, 12}), CSINT(2), CSINT(1));
  task(1, 1, 9, 1);
  ASSERT_TRUE(post(CSINT(1)));
  EXPECT_EQ(bounds(a), (std::vector<int>{12, 12}));
}

TEST_F(CumulativeTasksTest, NumbersThatNeedMoreThanSixtyBits) {
  for (int i = 0; i < 3; ++i) task(INT_MIN, INT_MAX, INT_MAX, INT_MAX);
  EXPECT_TRUE(post(CSINT(INT_MAX)));
  starts.resize(2);
  EXPECT_TRUE(cs_EQ(starts[0], 0));
  EXPECT_EQ(bounds(starts[1]), (std::vector<int>{INT_MIN, INT_MAX}));
  EXPECT_TRUE(cs_GE(starts[1], -5));
  EXPECT_EQ(bounds(starts[1]), (std::vector<int>{INT_MAX, INT_MAX}));
  EXPECT_FALSE(cs_GE(starts[0], 1)) << "worked on";
}

TEST_F(CumulativeTasksTest, WideTimesAndLargeCapacities) {
  task(INT_MIN, INT_MAX, 3, 5);
  task(INT_MIN, INT_MAX, 3, 5);
  EXPECT_TRUE(post(CSINT(INT_MAX)));
}

TEST_F(CumulativeTasksTest, ARestoreGivesAllBack) {
  CSint *a = task(0, 10, 3, 2);
  CSint *b = task(0, 10, 3, 2);
  ASSERT_TRUE(post(CSINT(3)));
  cs_saveContext();
  EXPECT_FALSE(cs_EQ(a, 4) && cs_EQ(b, 6));
  EXPECT_FALSE(cs_EQ(b, 5)) << "worked on in the failed state";
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(a, 4) && cs_LE(b, 6));
  EXPECT_EQ(bounds(b), (std::vector<int>{0, 1}));
}

static int solutions;

// Four tasks of 2 x 1 or 1 x 2 and a capacity of 2 within 0 to 5.
TEST_F(CumulativeTasksTest, AllSchedulesAreFound) {
  for (int i = 0; i < 4; ++i) task(0, i % 2 == 0 ? 3 : 4, 2 - i % 2, 1 + i % 2);
  ASSERT_TRUE(post(CSINT(2)));
  solutions = 0;
  cs_findAll(starts.data(), 4, cs_findFreeVar, [](CSint **, int) { ++solutions; });
  int expected = 0;
  for (int a = 0; a <= 3; ++a)
    for (int b = 0; b <= 4; ++b)
      for (int c = 0; c <= 3; ++c)
        for (int d = 0; d <= 4; ++d) {
          const auto runs = [](int s, int t) { return s <= t && t < s + 2; };
          if (b != d && !runs(a, b) && !runs(a, d) && !runs(c, b) && !runs(c, d)) ++expected;
        }
  EXPECT_EQ(solutions, expected);
}

TEST_F(CumulativeTasksTest, AThousandTasks) {
  for (int i = 0; i < 1000; ++i) task(0, 2500, 1 + i % 5, 1 + i % 3);
  CSint *capacity = cs_createCSint(0, 3);
  ASSERT_TRUE(post(capacity));
  for (int i = 0; i < 1000; ++i)
    ASSERT_TRUE(cs_EQ(starts[static_cast<std::size_t>(i)], cs_getMin(starts[static_cast<std::size_t>(i)])));
  EXPECT_EQ(bounds(capacity), (std::vector<int>{3, 3}));
}

TEST_F(CumulativeTasksTest, BadInputIsRefused) {
  CSint *array[] = {cs_createCSint(0, 5), cs_createCSint(0, 5)};
  CSint *holed[] = {array[0], nullptr};
  CSint *capacity = cs_createCSint(0, 5);
  EXPECT_FALSE(cs_CumulativeTasks(nullptr, array, array, nullptr, 2, capacity));
  EXPECT_FALSE(cs_CumulativeTasks(array, nullptr, array, nullptr, 2, capacity));
  EXPECT_FALSE(cs_CumulativeTasks(array, array, nullptr, nullptr, 2, capacity));
  EXPECT_FALSE(cs_CumulativeTasks(array, array, array, nullptr, 2, nullptr));
  EXPECT_FALSE(cs_CumulativeTasks(array, array, array, nullptr, -1, capacity));
  EXPECT_FALSE(cs_CumulativeTasks(array, array, array, holed, 2, capacity));
  EXPECT_FALSE(cs_CumulativeTasks(array, array, holed, nullptr, 2, capacity));
  EXPECT_TRUE(cs_CumulativeTasks(nullptr, nullptr, nullptr, nullptr, 0, capacity));
  CSint *negative = cs_createCSint(-5, -1);
  EXPECT_FALSE(cs_CumulativeTasks(array, array, &negative, nullptr, 1, capacity));
  EXPECT_FALSE(cs_CumulativeTasks(array, &negative, array, nullptr, 1, capacity));
  EXPECT_FALSE(cs_CumulativeTasks(nullptr, nullptr, nullptr, nullptr, 0, negative));
}

TEST_F(CumulativeTasksTest, AStartThatIsATruthValueAsWell) {
  CSint *start = task(0, 9, 2, 1);
  task(0, 0, 3, 1);
  task(0, 1, 3, 1, start);
  EXPECT_FALSE(post(CSINT(1), true));
}

// The first task lasts as long as the second one waits, and has no room for that.
TEST_F(CumulativeTasksTest, AStartThatIsADurationAsWell) {
  CSint *both = cs_createCSint(1, 9);
  task(CSINT(20), both, CSINT(2));
  task(both, CSINT(2), CSINT(2));
  task(1, 1, 5, 2);
  task(24, 24, 1, 2);
  EXPECT_FALSE(post(CSINT(3)));
}

}  // namespace

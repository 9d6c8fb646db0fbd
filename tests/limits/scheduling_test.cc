// SPDX-License-Identifier: MIT
// Scheduling at the ends of the int range, with negative numbers, with variables in several roles.
#include <climits>

#include "support/constraints/tasks.h"
#include "support/kit/death.h"

namespace {

using namespace koru;
using namespace koru::test;

constexpr Interval kAll{INT_MIN, INT_MAX};

class SchedulingLimits : public SchedulingTest {};
using SchedulingLimitsDeathTest = SchedulingLimits;

// A task may end beyond the last int: times are computed in 64 bits.
TEST_F(SchedulingLimits, ATaskMayEndBeyondTheLastInt) {
  add({INT_MAX - 1, INT_MAX}, 5);
  add({INT_MAX - 20, INT_MAX - 6}, 5);
  ASSERT_TRUE(postDisjunctive());
  EXPECT_EQ(boundsOf(starts[0]), (Interval{INT_MAX - 1, INT_MAX}));
  EXPECT_TRUE(cs_EQ(starts[0], INT_MAX) && cs_EQ(starts[1], INT_MAX - 6));
}

TEST_F(SchedulingLimits, TasksAtTheLastIntOverlap) {
  add({INT_MAX, INT_MAX}, INT_MAX);
  add({INT_MAX, INT_MAX}, 1);
  EXPECT_FALSE(postDisjunctive());
}

TEST_F(SchedulingLimits, TasksAtBothEndsOfTheIntRangeDoNotMeet) {
  add({INT_MIN, INT_MIN}, INT_MAX);
  add({-1, -1}, INT_MAX);
  add({INT_MAX - 1, INT_MAX - 1}, INT_MAX);
  EXPECT_TRUE(postDisjunctive());
}

TEST_F(SchedulingLimits, TasksMayLieAnywhereInASpanOfAnInt) {
  for (int i = 0; i < 3; ++i) add({-2, INT_MAX - 4}, 1);
  ASSERT_TRUE(postDisjunctive());
  EXPECT_TRUE(cs_EQ(starts[0], -2) && cs_EQ(starts[1], INT_MAX - 4) && cs_EQ(starts[2], -1));
}

TEST_F(SchedulingLimits, NothingKnownOfAnythingIsConsistent) {
  for (int i = 0; i < 2; ++i) add(kAll, kAll, kAll);
  ASSERT_TRUE(postCumulative(kAll));
  EXPECT_EQ(boundsOf(starts[0]), kAll);
}

// Negative durations leave the task's time window empty.
TEST_F(SchedulingLimits, ANegativeDurationFailsWhenItMustBe) {
  add({0, 0}, -3);
  EXPECT_FALSE(postDisjunctive());
}

TEST_F(SchedulingLimits, ANegativeDurationThatGoesBelowAllIntsFails) {
  add({INT_MIN, INT_MIN}, INT_MIN);
  EXPECT_FALSE(postDisjunctive());
}

TEST_F(SchedulingLimits, ANegativeUseMakesTheProfileLower) {
  add({0, 0}, 5, 4);
  add({0, 0}, 5, -2);
  EXPECT_TRUE(postCumulative({2, 4}));
  EXPECT_EQ(boundsOf(capacity), exactly(4));
}

TEST_F(SchedulingLimits, ANegativeCapacityFails) {
  add({0, 5}, 1, 1);
  EXPECT_FALSE(postCumulative({-9, -1}));
}

TEST_F(SchedulingLimits, UsesThatAddUpBeyondTheIntsFail) {
  add({0, 0}, 1, INT_MAX);
  add({0, 0}, 1, INT_MAX);
  EXPECT_FALSE(postCumulative({0, INT_MAX}));
}

// Deliberate: quotients of energies are ints. 3,000 instants of 1,000,000 units are 3 * 10^9 for a task of duration 1
// and use 1, which as an int is negative, and the use cannot be.
TEST_F(SchedulingLimits, AQuotientThatIsNoIntRefusesAFeasibleTask) {
  add({0, 2999}, 1, 1);
  EXPECT_FALSE(postCumulative({1000000, 1000000}));
}

TEST_F(SchedulingLimits, ASpanThatIsNoIntRefusesAFeasibleTask) {
  add(kAll, exactly(1));
  EXPECT_FALSE(postDisjunctive());
}

TEST_F(SchedulingLimits, AQuotientThatIsAnIntRefusesNothing) {
  add({0, 2146}, 1, 1);  // 2147 instants
  EXPECT_TRUE(postCumulative({1000000, 1000000}));
}

TEST_F(SchedulingLimits, SmallestIntsAsTasksFailCleanly) {
  add(exactly(INT_MIN), exactly(INT_MIN), exactly(INT_MIN));
  EXPECT_FALSE(postCumulative(exactly(INT_MIN)));
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

// ----- variables in several roles

TEST_F(SchedulingLimits, TheSameStartTwiceCannotBeDisjunctive) {
  add({0, 9}, 2);
  add({0, 9}, 2);
  starts[1] = starts[0];
  if (!postDisjunctive()) return;
  EXPECT_FALSE(cs_EQ(starts[0], 4));
}

TEST_F(SchedulingLimits, OneVariableMayBeStartDurationUseAndCapacity) {
  CSint *v = cs_createCSint(0, 5);
  ASSERT_TRUE(cs_Cumulative(&v, &v, &v, 1, v));
  EXPECT_TRUE(cs_EQ(v, 3));  // three units from 3 to before 6
}

// The capacity, 3..20, is the first task's use. Posting finds a profile of at least 15, and the recheck then bounds the
// first use by what the second leaves, so it lowers the capacity below a profile that it has just found to fit.
TEST_F(SchedulingLimitsDeathTest, ACapacityThatIsAUseMayLeaveLessThanNothing) {
  add({0, 0}, exactly(5), {3, 20});
  add({0, 0}, exactly(5), {5, 6});
  capacity = uses[0];
  EXPECT_EXIT(postCumulative(), kAborted, "");
}

}  // namespace

// SPDX-License-Identifier: MIT
// cs_PrecedenceIf, cs_Alternative and cs_Span beyond what enumeration reaches.
#include <climits>
#include <vector>

#include "koru_extras.h"
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

class GroupsTest : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    start = cs_createCSint(0, 20);
    duration = cs_createCSint(1, 9);
  }
  static std::vector<int> bounds(CSint *v) { return {cs_getMin(v), cs_getMax(v)}; }
  CSint *part(int from, int to, int least, int most) {
    starts.push_back(cs_createCSint(from, to));
    durations.push_back(cs_createCSint(least, most));
    presents.push_back(cs_createCSint(0, 1));
    return presents.back();
  }
  bool alternative(CSint *present) {
    return cs_Alternative(start, duration, present, starts.data(), durations.data(), presents.data(),
                          static_cast<int>(starts.size()));
  }
  bool span(CSint *present) {
    return cs_Span(start, duration, present, starts.data(), durations.data(), presents.data(),
                   static_cast<int>(starts.size()));
  }

  CSint *start = nullptr;
  CSint *duration = nullptr;
  std::vector<CSint *> starts;
  std::vector<CSint *> durations;
  std::vector<CSint *> presents;
};

TEST_F(GroupsTest, APrecedenceThatIsAskedForMovesAllBounds) {
  CSint *b = cs_createCSint(0, 1);
  CSint *next = cs_createCSint(0, 12);
  ASSERT_TRUE(cs_PrecedenceIf(b, start, duration, 2, next));
  EXPECT_EQ(bounds(next), (std::vector<int>{0, 12}));
  EXPECT_TRUE(cs_EQ(b, 1));
  EXPECT_EQ(bounds(next), (std::vector<int>{3, 12}));
  EXPECT_EQ(bounds(start), (std::vector<int>{0, 9}));
  EXPECT_TRUE(cs_GE(start, 4) && cs_LE(next, 10));
  EXPECT_EQ(bounds(duration), (std::vector<int>{1, 4}));
}

TEST_F(GroupsTest, APrecedenceThatCannotHoldIsNotAskedFor) {
  CSint *b = cs_createCSint(0, 1);
  CSint *next = cs_createCSint(0, 12);
  ASSERT_TRUE(cs_PrecedenceIf(b, start, duration, -3, next));
  EXPECT_TRUE(cs_GE(start, 15));
  EXPECT_EQ(cs_getMax(b), 0) << "15 + 1 - 3 > 12";
  EXPECT_EQ(bounds(next), (std::vector<int>{0, 12}));
}

TEST_F(GroupsTest, PrecedencesAtTheEndsOfTheInts) {
  CSint *late = cs_createCSint(INT_MAX - 1, INT_MAX);
  EXPECT_FALSE(cs_PrecedenceIf(nullptr, late, late, INT_MAX, late));
  EXPECT_TRUE(cs_PrecedenceIf(nullptr, CSINT(INT_MIN), CSINT(INT_MIN), INT_MIN, late));
  EXPECT_FALSE(cs_PrecedenceIf(nullptr, nullptr, late, 0, late));
  EXPECT_FALSE(cs_PrecedenceIf(nullptr, late, nullptr, 0, late));
  EXPECT_FALSE(cs_PrecedenceIf(nullptr, late, late, 0, nullptr));
}

class EitherBeforeTest : public GroupsTest {
 protected:
  void SetUp() override {
    GroupsTest::SetUp();
    b = cs_createCSint(0, 1);
    other = cs_createCSint(0, 20);
  }
  bool post(CSint *there = nullptr, CSint *otherThere = nullptr) {
    return cs_EitherBefore(b, start, duration, there, other, CSINT(5), otherThere);
  }
  CSint *b = nullptr;
  CSint *other = nullptr;
};

TEST_F(EitherBeforeTest, WhatIsDecidedMovesTheTasks) {
  ASSERT_TRUE(post());
  EXPECT_EQ(bounds(b), (std::vector<int>{0, 1}));
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(b, 1));
  EXPECT_EQ(bounds(start), (std::vector<int>{0, 19}));
  EXPECT_EQ(bounds(other), (std::vector<int>{1, 20}));
  EXPECT_TRUE(cs_GE(start, 15));
  EXPECT_EQ(bounds(duration), (std::vector<int>{1, 5}));
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(b, 0));
  EXPECT_EQ(bounds(start), (std::vector<int>{5, 20}));
  EXPECT_EQ(bounds(other), (std::vector<int>{0, 15}));
}

TEST_F(EitherBeforeTest, TheTimesDecide) {
  ASSERT_TRUE(post());
  cs_saveContext();
  EXPECT_TRUE(cs_LE(start, 4));
  EXPECT_EQ(cs_getMin(b), 1);
  EXPECT_TRUE(cs_GE(other, 20) && cs_LE(other, 20));
  cs_restoreContext();
  EXPECT_TRUE(cs_LE(other, 0));
  EXPECT_EQ(cs_getMax(b), 0) << "the first takes 1 at least";
  EXPECT_EQ(cs_getMin(start), 5);
}

TEST_F(EitherBeforeTest, ThereIsNoOrderWithOneThatIsNotThere) {
  CSint *there = cs_createCSint(0, 1);
  CSint *otherThere = cs_createCSint(0, 1);
  ASSERT_TRUE(post(there, otherThere));
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(there, 0));
  EXPECT_EQ(cs_getMin(b), 1);
  EXPECT_EQ(bounds(start), (std::vector<int>{0, 20}));
  cs_restoreContext();
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(b, 0));
  EXPECT_EQ(cs_getMin(there) + cs_getMin(otherThere), 2);
  cs_restoreContext();
  EXPECT_TRUE(cs_LE(start, 4) && cs_GE(start, 4) && cs_LE(other, 4));
  EXPECT_EQ(cs_getMin(b), 1) << "neither order is possible";
  EXPECT_EQ(cs_getMax(there) + cs_getMax(otherThere), 2);
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(there, 1));
  EXPECT_EQ(cs_getMax(otherThere), 0);
  cs_restoreContext();
  EXPECT_TRUE(cs_EQ(otherThere, 1));
  EXPECT_EQ(cs_getMax(there), 0);
}

TEST_F(EitherBeforeTest, RefusesWhatIsMissing) {
  CSint *there = cs_createCSint(0, 1);
  EXPECT_FALSE(post(there, nullptr));
  EXPECT_FALSE(post(nullptr, there));
  EXPECT_FALSE(cs_EitherBefore(nullptr, start, duration, nullptr, other, duration, nullptr));
  EXPECT_FALSE(cs_EitherBefore(b, nullptr, duration, nullptr, other, duration, nullptr));
  EXPECT_FALSE(cs_EitherBefore(b, start, nullptr, nullptr, other, duration, nullptr));
  EXPECT_FALSE(cs_EitherBefore(b, start, duration, nullptr, nullptr, duration, nullptr));
  EXPECT_FALSE(cs_EitherBefore(b, start, duration, nullptr, other, nullptr, nullptr));
}

TEST_F(GroupsTest, AChoiceLiesBetweenThoseThatAreLeft) {
  CSint *first = part(3, 5, 2, 2);
  CSint *second = part(8, 9, 4, 5);
  CSint *third = part(30, 40, 2, 2);
  ASSERT_TRUE(alternative(nullptr));
  EXPECT_EQ(cs_getMax(third), 0) << "too late";
  EXPECT_EQ(bounds(start), (std::vector<int>{3, 9}));
  EXPECT_EQ(bounds(duration), (std::vector<int>{2, 5}));
  EXPECT_TRUE(cs_GE(start, 6));
  EXPECT_EQ(cs_getMax(first), 0);
  EXPECT_EQ(cs_getMin(second), 1) << "the last one left";
  EXPECT_EQ(bounds(start), (std::vector<int>{8, 9}));
  EXPECT_EQ(bounds(duration), (std::vector<int>{4, 5}));
}

TEST_F(GroupsTest, OneChoiceShutsOutTheOthers) {
  CSint *present = cs_createCSint(0, 1);
  CSint *first = part(3, 5, 2, 2);
  CSint *second = part(4, 9, 2, 5);
  ASSERT_TRUE(alternative(present));
  EXPECT_EQ(bounds(start), (std::vector<int>{0, 20}));
  EXPECT_TRUE(cs_EQ(second, 1));
  EXPECT_EQ(cs_getMin(present), 1);
  EXPECT_EQ(cs_getMax(first), 0);
  EXPECT_EQ(bounds(start), (std::vector<int>{4, 9}));
}

TEST_F(GroupsTest, ATaskThatIsNotThereHasNoChoice) {
  CSint *present = cs_createCSint(0, 1);
  CSint *first = part(3, 5, 2, 2);
  ASSERT_TRUE(alternative(present));
  EXPECT_TRUE(cs_EQ(present, 0));
  EXPECT_EQ(cs_getMax(first), 0);
  CSint *other = cs_createCSint(0, 1);
  presents[0] = cs_createCSint(0, 0);
  ASSERT_TRUE(alternative(other));
  EXPECT_EQ(cs_getMax(other), 0);
  EXPECT_FALSE(alternative(nullptr));
}

TEST_F(GroupsTest, ChoicesThatAreAllThere) {
  part(3, 5, 2, 2);
  EXPECT_TRUE(cs_Alternative(start, duration, nullptr, starts.data(), durations.data(), nullptr, 1));
  EXPECT_EQ(bounds(start), (std::vector<int>{3, 5}));
  part(3, 5, 2, 2);
  EXPECT_FALSE(cs_Alternative(start, duration, nullptr, starts.data(), durations.data(), nullptr, 2));
}

TEST_F(GroupsTest, ASpanGoesFromTheFirstToTheLast) {
  CSint *first = part(3, 5, 2, 2);
  CSint *second = part(4, 9, 3, 3);
  ASSERT_TRUE(span(nullptr));
  EXPECT_EQ(bounds(start), (std::vector<int>{3, 9}));
  EXPECT_TRUE(cs_EQ(first, 1) && cs_EQ(second, 1));
  EXPECT_EQ(bounds(start), (std::vector<int>{3, 5}));
  EXPECT_EQ(bounds(duration), (std::vector<int>{2, 9}));
  EXPECT_TRUE(cs_GE(starts[0], 4));
  EXPECT_EQ(bounds(start), (std::vector<int>{4, 5}));
  EXPECT_TRUE(cs_GE(start, 5) && cs_EQ(duration, 5));
  EXPECT_EQ(bounds(starts[1]), (std::vector<int>{7, 7})) << "it alone can be the last";
}

TEST_F(GroupsTest, APartOutsideIsNotThere) {
  CSint *first = part(3, 5, 2, 2);
  CSint *second = part(12, 19, 3, 3);
  ASSERT_TRUE(span(nullptr));
  EXPECT_TRUE(cs_LE(start, 2 + 3) && cs_LE(duration, 4));
  EXPECT_EQ(cs_getMax(second), 0) << "it ends at 15 at the earliest, the whole by 9";
  EXPECT_EQ(cs_getMin(first), 1);
  EXPECT_EQ(bounds(start), (std::vector<int>{3, 5}));
  EXPECT_EQ(bounds(duration), (std::vector<int>{1, 4}));
}

TEST_F(GroupsTest, ASpanThatMayBeLeftOut) {
  CSint *present = cs_createCSint(0, 1);
  CSint *first = part(30, 35, 2, 2);
  ASSERT_TRUE(span(present));
  EXPECT_EQ(cs_getMax(first), 1) << "open";
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(first, 0));
  EXPECT_EQ(cs_getMax(present), 0);
  cs_restoreContext();
  cs_saveContext();
  EXPECT_TRUE(cs_EQ(present, 0));
  EXPECT_EQ(cs_getMax(first), 0);
  cs_restoreContext();
  EXPECT_FALSE(cs_EQ(first, 1)) << "30 is too late for the whole";
}

TEST_F(GroupsTest, BadInputIsRefused) {
  part(3, 5, 2, 2);
  part(3, 5, 2, 2);
  CSint *holed[] = {start, nullptr};
  CSint **s = starts.data();
  for (const auto poster : {cs_Alternative, cs_Span}) {
    EXPECT_FALSE(poster(nullptr, duration, nullptr, s, s, s, 2));
    EXPECT_FALSE(poster(start, nullptr, nullptr, s, s, s, 2));
    EXPECT_FALSE(poster(start, duration, nullptr, nullptr, s, s, 2));
    EXPECT_FALSE(poster(start, duration, nullptr, s, nullptr, s, 2));
    EXPECT_FALSE(poster(start, duration, nullptr, s, s, holed, 2));
    EXPECT_FALSE(poster(start, duration, nullptr, s, s, s, -1));
    EXPECT_FALSE(poster(start, duration, nullptr, s, s, s, 0)) << "nobody does it";
    CSint *present = cs_createCSint(0, 1);
    EXPECT_TRUE(poster(start, duration, present, nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(cs_getMax(present), 0);
  }
}

// The bounds meet, the values do not.
TEST_F(GroupsTest, AChoiceWithoutACommonValueFails) {
  part(4, 5, 2, 3);
  start = fromValues({0, 9});
  EXPECT_FALSE(alternative(nullptr));
  start = cs_createCSint(0, 9);
  duration = fromValues({1, 9});
  EXPECT_FALSE(alternative(nullptr));
  part(3, 5, 2, 4);
  presents[0] = cs_createCSint(0, 1);
  start = cs_createCSint(0, 9);
  EXPECT_FALSE(alternative(nullptr)) << "neither of the two";
  for (CSint *&present : presents) present = cs_createCSint(0, 1);
  duration = cs_createCSint(1, 9);
  start = fromValues({0, 9});
  EXPECT_FALSE(alternative(nullptr));
}

TEST_F(GroupsTest, PartsThatMeetNoValueOfTheWholeFail) {
  part(4, 5, 2, 3);
  start = fromValues({0, 9});
  EXPECT_FALSE(span(nullptr));
  start = cs_createCSint(0, 9);
  duration = fromValues({1, 9});
  EXPECT_FALSE(span(nullptr));
}

// A part that is there when the whole starts late, and then is too early.
TEST_F(GroupsTest, OneVariableInSeveralPlaces) {
  CSint *both = cs_createCSint(0, 9);
  starts = {both, cs_createCSint(0, 9)};
  durations = {both, both};
  presents = {both, cs_createCSint(0, 1)};
  ASSERT_TRUE(cs_Span(both, both, both, starts.data(), durations.data(), presents.data(), 2));
  EXPECT_TRUE(cs_GE(both, 4));
  EXPECT_EQ(cs_getMin(both), 4);
  ASSERT_TRUE(cs_Alternative(both, both, both, starts.data(), durations.data(), presents.data(), 2));
  EXPECT_EQ(cs_getMax(presents[1]), 0);
}

}  // namespace

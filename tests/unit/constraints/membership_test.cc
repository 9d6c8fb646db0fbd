// SPDX-License-Identifier: MIT
// cs_InArray, cs_NotInArray, cs_InInterval, cs_NotInInterval: edge cases, and the order of what they remove.
#include <functional>

#include "support/kit/new_variables.h"

namespace {

using namespace koru;
using namespace koru::test;

// A constraint that notes the events of its variable as (code, new value) and may react.
using Events = std::vector<std::pair<int, int>>;
struct Heard {
  Events *events;
  const std::function<bool(int newValue)> *reaction;
};

template <int code>
bool hear(Heard &c, const Event &e) {
  c.events->emplace_back(code, e.newValue);
  return *c.reaction == nullptr || (*c.reaction)(e.newValue);
}

constexpr auto kHeardTable = handlers<Heard>({.newMin = on<hear<kNewMin>>,
                                              .newMax = on<hear<kNewMax>>,
                                              .minBound = on<hear<kMinBound>>,
                                              .maxBound = on<hear<kMaxBound>>,
                                              .bound = on<hear<kBound>>,
                                              .removed = on<hear<kRemoved>>});

class MembershipTest : public SolverTest {
 protected:
  CSint *heard() {
    CSint *v = cs_createCSint(0, 9);
    Posting posting{"heard"};
    posting.add(kHeardTable, Heard{&events, &reaction}).attach(v);
    return v;
  }

  Events events;
  std::function<bool(int)> reaction;
  const int array[4] = {6, 2, 6, 3};
};

TEST_F(MembershipTest, InNoArrayFailsAndNotInNoArrayHolds) {
  CSint *v = cs_createCSint(0, 9);
  for (const int n : {0, -1, INT_MIN}) {
    EXPECT_EQ(cs_InArray(v, array, n), 0);
    EXPECT_EQ(cs_InArray(v, nullptr, n), 0);
    EXPECT_EQ(cs_NotInArray(v, array, n), 1);
    EXPECT_EQ(cs_NotInArray(v, nullptr, n), 1);
  }
  EXPECT_EQ(values(v), range(0, 9));
}

TEST_F(MembershipTest, NullArgumentsGiveZero) {
  CSint *v = cs_createCSint(0, 9);
  EXPECT_EQ(cs_InArray(nullptr, array, 4), 0);
  EXPECT_EQ(cs_InArray(v, nullptr, 4), 0);
  EXPECT_EQ(cs_NotInArray(nullptr, array, 4), 0);
  EXPECT_EQ(cs_NotInArray(nullptr, array, 0), 0);
  EXPECT_EQ(cs_NotInArray(v, nullptr, 4), 0);
  EXPECT_EQ(cs_InInterval(nullptr, 0, 9), 0);
  EXPECT_EQ(cs_NotInInterval(nullptr, 0, 9), 0);
  EXPECT_EQ(cs_NotInInterval(nullptr, 9, 0), 0);
  EXPECT_EQ(values(v), range(0, 9));
  EXPECT_EQ(cs_getErr(), CS_ERR_NONE);
}

// The bounds first; then 4 and 5 between 2, 3 and 6: the lower pointer comes to 3, the upper one to 5, and they go on.
TEST_F(MembershipTest, InArrayRemovesFromBothEndsInwards) {
  CSint *v = heard();
  EXPECT_EQ(cs_InArray(v, array, 4), 1);
  EXPECT_EQ(values(v), (std::vector{2, 3, 6}));
  EXPECT_EQ(events, (Events{{0, 2}, {1, 6}, {5, 5}, {5, 4}}));
}

TEST_F(MembershipTest, InArrayRemovesTheLowerOfAPairFirst) {
  CSint *v = heard();
  const int ends[] = {9, 0};
  EXPECT_EQ(cs_InArray(v, ends, 2), 1);
  EXPECT_EQ(events, (Events{{5, 1}, {5, 8}, {5, 2}, {5, 7}, {5, 3}, {5, 6}, {5, 4}, {5, 5}}));
}

TEST_F(MembershipTest, InArrayOfOneValueBinds) {
  CSint *v = heard();
  EXPECT_EQ(cs_InArray(v, array, 1), 1);
  EXPECT_EQ(events, (Events{{0, 6}, {3, 6}}));
}

TEST_F(MembershipTest, NotInArrayRemovesInArrayOrder) {
  CSint *v = heard();
  EXPECT_EQ(cs_NotInArray(v, array, 4), 1);
  EXPECT_EQ(events, (Events{{5, 6}, {5, 2}, {5, 3}}));
}

TEST_F(MembershipTest, InIntervalNarrowsTheMinimumFirst) {
  CSint *v = heard();
  EXPECT_EQ(cs_InInterval(v, 3, 5), 1);
  EXPECT_EQ(events, (Events{{0, 3}, {1, 5}}));
  EXPECT_EQ(cs_InInterval(v, 5, 4), 0);
  EXPECT_EQ(cs_InInterval(v, 6, 9), 0);
}

TEST_F(MembershipTest, NotInIntervalRemovesOneByOneUpwards) {
  CSint *v = heard();
  EXPECT_EQ(cs_NotInInterval(v, 6, 12), 1);
  EXPECT_EQ(events, (Events{{5, 6}, {5, 7}, {5, 8}, {1, 5}}));
  events.clear();
  EXPECT_EQ(cs_NotInInterval(v, -4, 1), 1);
  EXPECT_EQ(events, (Events{{0, 1}, {0, 2}}));
  EXPECT_EQ(values(v), range(2, 5));
}

TEST_F(MembershipTest, AReversedNotInIntervalChangesNothing) {
  CSint *v = heard();
  EXPECT_EQ(cs_NotInInterval(v, 5, 4), 1);
  EXPECT_EQ(cs_NotInInterval(v, INT_MAX, INT_MIN), 1);
  EXPECT_EQ(values(v), range(0, 9));
}

TEST_F(MembershipTest, TheLastValueIsNotRemoved) {
  CSint *v = cs_createCSint(2, 3);
  EXPECT_EQ(cs_NotInArray(v, array, 4), 0);
  EXPECT_EQ(values(v), std::vector{3});
  EXPECT_EQ(cs_NotInInterval(v, INT_MIN, INT_MAX), 0);
  EXPECT_EQ(cs_InArray(v, array, 3), 0);
  EXPECT_EQ(values(v), std::vector{3});
}

TEST_F(MembershipTest, NothingIsPostedAndARestoreTakesAllBack) {
  CSint *v = cs_createCSint(0, 9);
  cs_saveContext();
  ASSERT_EQ(cs_InArray(v, array, 4), 1);
  ASSERT_EQ(cs_NotInInterval(v, 3, 4), 1);
  EXPECT_EQ(values(v), (std::vector{2, 6}));
  EXPECT_EQ(cs_getNbConstraints(v), 0);
  cs_restoreContext();
  EXPECT_EQ(values(v), range(0, 9));
}

// While the walk goes on, what is removed may set off changes of the same variable.
TEST_F(MembershipTest, InArrayGoesByTheDomainAsItStands) {
  CSint *v = heard();
  reaction = [=](int value) { return value != 1 || cs_LE(v, 6); };
  const int some[] = {0, 5, 9};
  EXPECT_EQ(cs_InArray(v, some, 3), 1);
  EXPECT_EQ(values(v), (std::vector{0, 5}));
}

}  // namespace

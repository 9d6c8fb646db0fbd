// SPDX-License-Identifier: MIT
// What section 21 of koru.h says of the moments at which callbacks of user-defined constraints are called, and at which
// they are not.
#include "support/kit/solver_test.h"

namespace {

using namespace koru::test;

struct Told {
  CSint *variable;
  int index;
  int value;
  bool operator==(const Told &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Told &t) {
  return out << t.variable << " " << t.index << " " << t.value;
}

using Log = std::vector<Told>;

bool noteBound(CSint *v, int index, int old, CSint **, int, void *extra) {
  static_cast<Log *>(extra)->push_back({v, index, old});
  return true;
}
bool noteKnown(int value, int index, CSint **array, int, void *extra) {
  static_cast<Log *>(extra)->push_back({array[index], index, value});
  return true;
}
bool noteAllKnown(CSint **, int size, void *extra) {
  static_cast<Log *>(extra)->push_back({nullptr, size, 0});
  return true;
}
void noteConflict(CSint *v, int index, CSconflictInfo *info, CSint **, int, void *extra) {
  static_cast<Log *>(extra)->push_back({v, index, info->value});
}

class Events : public SolverTest {
 protected:
  void SetUp() override {
    SolverTest::SetUp();
    for (CSint *&v : x) v = cs_createCSint(0, 9);
  }

  CSint *x[3];
};

TEST_F(Events, ABoundThatBindingBetweenTheBoundsMovesIsToldToEventKnownOnly) {
  Log mins;
  Log maxs;
  Log known;
  cs_eventNewMin(x, 3, noteBound, &mins);
  cs_eventNewMax(x, 3, noteBound, &maxs);
  ASSERT_TRUE(cs_eventKnown(x, 3, noteKnown, &known));
  ASSERT_TRUE(cs_EQ(x[0], 5));
  EXPECT_EQ(mins, Log{});
  EXPECT_EQ(maxs, Log{});
  EXPECT_EQ(known, (Log{{x[0], 0, 5}}));
  ASSERT_TRUE(cs_EQ(x[1], 9) && cs_EQ(x[2], 0));
  EXPECT_EQ(mins, (Log{{x[1], 1, 0}})) << "bound to the maximum: the minimum rises";
  EXPECT_EQ(maxs, (Log{{x[2], 2, 9}}));
}

// x[0] <= x[1] with callbacks alone, as the header's example has it.
bool raiseSecond(CSint *, int, int, CSint **array, int, void *) { return cs_GE(array[1], cs_getMin(array[0])); }
bool lowerFirst(CSint *, int, int, CSint **array, int, void *) { return cs_LE(array[0], cs_getMax(array[1])); }
bool bothBounds(int, int, CSint **array, int, void *) {
  return cs_GE(array[1], cs_getMin(array[0])) && cs_LE(array[0], cs_getMax(array[1]));
}

TEST_F(Events, AConstraintOnBoundsRegistersEventKnownToo) {
  cs_eventNewMin(x, 2, raiseSecond, nullptr);
  cs_eventNewMax(x, 2, lowerFirst, nullptr);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(x[0], 5));
  EXPECT_EQ(cs_getMin(x[1]), 0) << "without it the bounds constraint sleeps through this";
  cs_restoreContext();
  ASSERT_TRUE(cs_eventKnown(x, 2, bothBounds, nullptr));
  ASSERT_TRUE(cs_EQ(x[0], 5));
  EXPECT_EQ(cs_getMin(x[1]), 5);
}

bool removeThenRaise(int, int, CSint **array, int, void *) { return cs_NEQ(array[1], 5) && cs_GE(array[1], 7); }
bool raiseTwice(int, int, CSint **array, int, void *) { return cs_GE(array[1], 3) && cs_GE(array[1], 6); }

TEST_F(Events, AValueThatABoundHasPassedBeforeTheCallIsNotToldToEventNeq) {
  Log removed;
  cs_eventNeq(x, 2, noteBound, &removed);
  ASSERT_TRUE(cs_eventKnown(x, 1, removeThenRaise, nullptr));
  ASSERT_TRUE(cs_EQ(x[0], 4));
  EXPECT_EQ(removed, Log{});
  EXPECT_EQ(cs_getMin(x[1]), 7);
  ASSERT_TRUE(cs_NEQ(x[1], 8));
  EXPECT_EQ(removed, (Log{{x[1], 1, 8}}));
}

TEST_F(Events, BoundsMovedTwiceBeforeTheCallAreToldOnce) {
  Log mins;
  cs_eventNewMin(x, 2, noteBound, &mins);
  ASSERT_TRUE(cs_eventKnown(x, 1, raiseTwice, nullptr));
  ASSERT_TRUE(cs_EQ(x[0], 4));
  EXPECT_EQ(mins, (Log{{x[1], 1, 0}})) << "the bound as callbacks saw it last";
}

TEST_F(Events, AllKnownMayRunOncePerVariableThatABindingHasBound) {
  Log runs;
  ASSERT_TRUE(cs_eventAllKnown(x, 3, noteAllKnown, &runs));
  ASSERT_TRUE(cs_Eq(x[0], x[1]) && cs_Eq(x[0], x[2]));
  ASSERT_TRUE(cs_EQ(x[0], 5));
  EXPECT_EQ(runs.size(), 3u);
}

bool bindNext(int value, int index, CSint **array, int size, void *extra) {
  return noteKnown(value, index, array, size, extra) && (index > 0 || cs_EQ(array[1], 1));
}

TEST_F(Events, KnownMayBeToldTwiceOfAVariableAtRegistration) {
  Log known;
  ASSERT_TRUE(cs_EQ(x[0], 5));
  ASSERT_TRUE(cs_eventKnown(x, 2, bindNext, &known));
  EXPECT_EQ(known, (Log{{x[0], 0, 5}, {x[1], 1, 1}, {x[1], 1, 1}}));
}

bool refuse(CSint *, int, int, CSint **, int, void *) { return false; }

TEST_F(Events, AConflictIsToldOfTheChangeThatFailedAtThePlaceOfTheFirstListenedToVariable) {
  Log conflicts;
  CSint *listened[] = {x[2], x[0]};
  cs_eventConflict(listened, 2, noteConflict, &conflicts);
  ASSERT_TRUE(cs_Le(x[0], x[1]));
  cs_eventNewMin(&x[1], 1, refuse, nullptr);
  EXPECT_FALSE(cs_GE(x[0], 5));
  EXPECT_EQ(conflicts, (Log{{x[1], 1, 5}})) << "x[1] failed, x[0] was the first that anybody listens to";
}

TEST_F(Events, ListenersOnLaterVariablesAreNotToldOfAConflict) {
  Log told;
  Log later;
  CSint *also[] = {x[2], x[0]};
  cs_eventConflict(&x[0], 1, noteConflict, &told);
  cs_eventConflict(also, 2, noteConflict, &told);
  cs_eventConflict(&x[1], 1, noteConflict, &later);
  ASSERT_TRUE(cs_Le(x[0], x[1]));
  cs_eventNewMin(&x[1], 1, refuse, nullptr);
  EXPECT_FALSE(cs_GE(x[0], 5));
  EXPECT_EQ(told, (Log{{x[1], 1, 5}, {x[1], 0, 5}})) << "the newest registration first";
  EXPECT_EQ(later, Log{}) << "although the propagation failed at its own variable";
}

}  // namespace

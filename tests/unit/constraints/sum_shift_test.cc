// SPDX-License-Identifier: MIT
// A sum with a constant has handlers of its own: they must do, call by call, what those of a sum with a variable do
// that is bound to the same value.
#include <climits>
#include <random>

#include "core/trial.h"
#include "support/kit/probe.h"

namespace {

using namespace koru;
using namespace koru::test;

using Form = CSint *(*)(CSint *x, CSint *k);

struct Side {
  CSint *x;
  CSint *z;

  Side(Form form, int low, int high, CSint *k) : x(cs_createCSint(low, high)), z(form(x, k)) {}
};

CSint *boundTo(int value) {
  CSint *v = cs_createCSint(value > INT_MIN ? value - 1 : value, value < INT_MAX ? value + 1 : value);
  EXPECT_TRUE(cs_EQ(v, value));
  return v;
}

using Narrowing = bool (*)(CSint *, int);
constexpr Narrowing kNarrowings[] = {cs_GE, cs_LE, cs_EQ, cs_NEQ};

// One narrowing of one side: its outcome, the calls, and afterwards the domains and the bounds that were told last.
struct Result {
  bool consistent;
  std::vector<std::tuple<bool, bool, int>> calls;  // consistent, of x, code
  std::vector<int> x;
  std::vector<int> z;
  std::vector<int> told;

  Result(const Side &side, Narrowing narrow, bool ofX, int value, bool counted) {
    if (counted) {
      const CallLog log;
      consistent = narrow(ofX ? side.x : side.z, value);
      for (const koru::test::Call &call : log.calls)
        calls.emplace_back(call.consistent, call.variable == side.x, call.code);
    } else {
      consistent = narrow(ofX ? side.x : side.z, value);
    }
    x = values(side.x);
    z = values(side.z);
    told = {side.x->reportedMin, side.x->reportedMax, side.z->reportedMin, side.z->reportedMax};
  }

  bool operator==(const Result &) const = default;
};

class SumShiftTest : public SolverTest {
 protected:
  static int inside(std::mt19937 &random, const CSint *v) {
    return clampToInt(std::int64_t{v->min} - 1 + static_cast<int>(random() % 12));
  }

  // In a solver of their own: the checker of invariants walks over all variables that there are. While calls are
  // counted, all are made; otherwise those are left out that would have nothing to do.
  void compare(Form form, int low, int k, unsigned seed, bool counted) {
    cs_end();
    cs_init();
    const Side shift(form, low, low + 9, CSINT(k));
    const Side sum(form, low, low + 9, boundTo(k));
    ASSERT_EQ(shift.z == nullptr, sum.z == nullptr);
    if (shift.z == nullptr || isBound(shift.z)) return;
    ASSERT_EQ(values(shift.z), values(sum.z));
    std::mt19937 random(seed);
    for (int step = 0; step < 8; ++step) {
      const bool ofX = random() % 2 == 0;
      const int value = inside(random, ofX ? sum.x : sum.z);
      const Narrowing narrow = kNarrowings[random() % 4];
      const Result expected(sum, narrow, ofX, value, counted);
      ASSERT_TRUE(Result(shift, narrow, ofX, value, counted) == expected) << low << " and " << k << ", seed " << seed;
      ++steps;
      if (!expected.consistent) ++failures;
      if (!expected.consistent) return;
    }
  }

  int steps = 0;
  int failures = 0;
};

TEST_F(SumShiftTest, DoesWhatASumWithABoundVariableDoes) {
  const Form forms[] = {cs_Add, [](CSint *x, CSint *k) { return cs_Add(k, x); }, cs_Sub,
                        [](CSint *x, CSint *k) { return cs_Sub(k, x); }};
  for (const Form form : forms)
    for (const int low : {-4, 0, INT_MAX - 9, INT_MAX - 12, INT_MIN, INT_MIN + 3})
      for (const int k : {0, 1, -3, 5, INT_MAX, INT_MAX - 4, INT_MIN, INT_MIN + 4})
        for (unsigned seed = 0; seed < 40; ++seed) compare(form, low, k, seed, seed % 2 == 0);
  EXPECT_GT(steps, 10000);
  EXPECT_GT(failures, 1000);
}

// What the variable that was made is told of its maker's changes, when nobody else hears.
TEST_F(SumShiftTest, ItsEventsBringTheToldBoundsUpToDateInTheirTurn) {
  CSint *x = cs_createCSint(0, 99);
  CSint *const failing = cs_createCSint(0, 99);
  ASSERT_TRUE(cs_Le(x, failing));
  CSint *z = cs_Add(x, CSINT(3));
  EXPECT_TRUE(has(z, kShifted));
  ASSERT_TRUE(cs_GE(x, 4) && cs_LE(x, 90));
  EXPECT_EQ(z->reportedMin, 7);
  EXPECT_EQ(z->reportedMax, 93);
  ASSERT_TRUE(cs_LE(failing, 50));
  const int reported = z->reportedMin;
  EXPECT_FALSE(cs_GE(x, 51)) << "the older constraint fails while the event of z waits";
  EXPECT_EQ(z->reportedMin, reported);
}

// A search that tries a value restores it when it is refused: nobody sees that the bound was reported before its turn.
TEST_F(SumShiftTest, InATrialBoundsThatNobodyHearsAreReportedAtOnce) {
  CSint *x = cs_createCSint(0, 39);
  CSint *const failing = cs_createCSint(0, 39);
  ASSERT_TRUE(cs_Le(x, failing));
  CSint *z = cs_Add(x, CSINT(3));
  ASSERT_TRUE(cs_NEQ(x, 5) && cs_LE(failing, 30));
  cs_saveContext();
  {
    const Trial trial(false);
    EXPECT_TRUE(cs_GE(x, 4));
    EXPECT_EQ(z->reportedMin, 7);
    EXPECT_FALSE(cs_GE(x, 31)) << "the older constraint fails after that which shifts";
  }
  cs_restoreContext();
  EXPECT_EQ(z->reportedMin, 3);
  EXPECT_EQ(values(z), without(range(3, 33), 8));
}

TEST_F(SumShiftTest, ASumOfASumHearsWhatIsPassedOn) {
  for (const bool trying : {false, true}) {
    CSint *x = cs_createCSint(0, 9);
    CSint *z = cs_Add(cs_Add(x, CSINT(3)), CSINT(4));
    cs_saveContext();
    {
      const Trial trial(!trying);
      ASSERT_TRUE(cs_NEQ(x, 5) && cs_NEQ(x, 6) && cs_GE(x, 2) && cs_LE(x, 8));
    }
    EXPECT_EQ(values(z), (std::vector{9, 10, 11, 14, 15}));
    cs_restoreContext();
    EXPECT_EQ(values(z), range(7, 16));
  }
}

// Where the short way finds no room for its record or event, it leaves the change to the long one.
TEST_F(SumShiftTest, GoesOnInTheNextBlockOfEventsAndOfRecords) {
  constexpr int kBlock = 1024;
  for (int room = 0; room < 8; ++room) {
    cs_end();
    cs_init();
    CSint *x = cs_createCSint(0, 19);
    CSint *const made[] = {cs_Add(x, CSINT(3)), cs_Sub(x, CSINT(-3)), cs_Add(CSINT(3), x), cs_Sub(x, CSINT(-3))};
    ASSERT_TRUE(cs_NEQ(x, 10));
    cs_saveContext();
    while ((solver::trail.count() + room) % kBlock != 0) cs_backtrack(x, 0, nullptr);
    solver::events.startWithRoom(room);
    cs_saveContext();
    const Trial trial(false);
    ASSERT_TRUE(cs_NEQ(x, 12) && cs_GE(x, 9) && cs_LE(x, 13));
    for (CSint *z : made) EXPECT_EQ(values(z), (std::vector{12, 14, 16})) << "room for " << room;
    cs_restoreContext();
    for (CSint *z : made) EXPECT_EQ(values(z), without(range(3, 22), 13)) << "room for " << room;
    cs_restoreContext();
  }
}

TEST_F(SumShiftTest, HolesOfTheMadeVariableReachTheOther) {
  CSint *x = cs_createCSint(0, 9);
  CSint *z = cs_Add(x, CSINT(10));
  CSint *other = cs_createCSint(0, 40);
  ASSERT_TRUE(cs_NEQ(z, 14));
  EXPECT_EQ(values(x), without(range(0, 9), 4));
  ASSERT_TRUE(cs_Neq(z, other) && cs_EQ(other, 15));
  ASSERT_TRUE(cs_GE(x, 4));
  EXPECT_EQ(cs_getMin(x), 6);
  EXPECT_EQ(cs_getMin(z), 16);
}

TEST_F(SumShiftTest, IsOnesOwnOnlyWhileAttachedAndFarFromTheEndsOfTheInts) {
  CSint *x = cs_createCSint(0, 9);
  cs_saveContext();
  CSint *z = cs_Sub(x, CSINT(3));
  EXPECT_TRUE(has(z, kShifted));
  EXPECT_FALSE(has(x, kShifted));
  cs_restoreContext();
  EXPECT_FALSE(has(z, kShifted));
  EXPECT_FALSE(has(cs_Add(x, CSINT(1 << 29)), kShifted));
  EXPECT_FALSE(has(cs_Add(cs_createCSint(INT_MIN, 0), CSINT(1)), kShifted));
}

// An operand that the posting found bound may become free again: then it has the rules of any other.
TEST_F(SumShiftTest, AnOperandThatComesFreeAgainIsNarrowed) {
  CSint *x = cs_createCSint(0, 9);
  CSint *y = cs_createCSint(0, 9);
  cs_saveContext();
  ASSERT_TRUE(cs_EQ(y, 4));
  cs_saveContext();
  CSint *z = cs_Add(x, y);
  cs_acceptContext();
  cs_restoreContext();
  ASSERT_TRUE(cs_isFree(y));
  ASSERT_TRUE(cs_EQ(z, 6) && cs_EQ(x, 1));
  EXPECT_EQ(values(y), std::vector{5});
}

}  // namespace

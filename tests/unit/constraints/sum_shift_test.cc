// SPDX-License-Identifier: MIT
// A sum with a constant has handlers of its own: they must do, call by call, what those of a sum with a variable do
// that is bound to the same value.
#include <climits>
#include <random>

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

// One narrowing of one side: its outcome, the calls, and the domains afterwards.
struct Result {
  bool consistent;
  std::vector<std::tuple<bool, bool, int>> calls;  // consistent, of x, code
  std::vector<int> x;
  std::vector<int> z;

  Result(const Side &side, Narrowing narrow, bool ofX, int value) {
    const CallLog log;
    consistent = narrow(ofX ? side.x : side.z, value);
    for (const koru::test::Call &call : log.calls)
      calls.emplace_back(call.consistent, call.variable == side.x, call.code);
    x = values(side.x);
    z = values(side.z);
  }

  bool operator==(const Result &) const = default;
};

class SumShiftTest : public SolverTest {
 protected:
  static int inside(std::mt19937 &random, const CSint *v) {
    return clampToInt(std::int64_t{v->min} - 1 + static_cast<int>(random() % 12));
  }

  // In a solver of their own: the checker of invariants walks over all variables that there are.
  void compare(Form form, int low, int k, unsigned seed) {
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
      const Result expected(sum, narrow, ofX, value);
      ASSERT_TRUE(Result(shift, narrow, ofX, value) == expected) << low << " and " << k << ", seed " << seed;
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
        for (unsigned seed = 0; seed < 30; ++seed) compare(form, low, k, seed);
  EXPECT_GT(steps, 10000);
  EXPECT_GT(failures, 1000);
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

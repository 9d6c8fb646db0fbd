// SPDX-License-Identifier: MIT
// cs_Alternative: a task that is there is done by exactly one of n, which has its start and duration; of one that is
// not, none of them is there (Laborie, Rogerie, Reasoning with conditional time-intervals, 2008).
// Consistency: bounds of one variable at a time: each start and duration lies between those of the others that may be
// it; who cannot be the one is not there, and the last one that can be is.
// Cost: a run of O(n), until it finds nothing.  State: none.  Wakes: when a bound of any variable moves.
#include <algorithm>

#include "constraints/scheduling/group.h"
#include "koru_extras.h"

namespace koru::scheduling {

static bool canMeet(const CSint *x, const CSint *y) { return x->min <= y->max && y->min <= x->max; }

static bool equate(CSint *x, CSint *y) {
  return narrowMin(x, y->min) && narrowMax(x, y->max) && narrowMin(y, x->min) && narrowMax(y, x->max);
}

static bool dropMisfits(const Group &c) {
  for (int i = 0; i < c.n; ++i) {
    const bool fits = c.mayBe() && canMeet(c.start, c.starts[i]) && canMeet(c.duration, c.durations[i]);
    if (!fits && !c.leaveOut(i)) return false;
  }
  return true;
}

// The one that is there; all others are not.
static bool follow(const Group &c, int one) {
  for (int i = 0; i < c.n; ++i)
    if (i != one && !c.leaveOut(i)) return false;
  return c.takeIn() && equate(c.start, c.starts[one]) && equate(c.duration, c.durations[one]);
}

// Between the least and the greatest of those that may be it.
static bool keepAmong(const Group &c, CSint *v, const Buffer<CSint *> &choices) {
  int least = kIntMax;
  int most = kIntMin;
  for (int i = 0; i < c.n; ++i) {
    if (!c.mayBe(i)) continue;
    least = std::min(least, choices[i]->min);
    most = std::max(most, choices[i]->max);
  }
  return narrowMin(v, least) && narrowMax(v, most);
}

static bool choose(Group &c) {
  if (!dropMisfits(c)) return false;
  if (c.countMayBe() == 0) return c.leaveOut();
  for (int i = 0; i < c.n; ++i)
    if (c.mustBe(i)) return follow(c, i);
  if (!c.mustBe()) return true;
  if (c.countMayBe() > 1) return keepAmong(c, c.start, c.starts) && keepAmong(c, c.duration, c.durations);
  int last = 0;
  while (!c.mayBe(last)) ++last;
  return c.takeIn(last) && follow(c, last);
}

constexpr auto kTable = deferred<toFixpoint<Group, choose>>(Rank::kLinear, kBoundsMove);

}  // namespace koru::scheduling

bool cs_Alternative(CSint *start, CSint *duration, CSint *present, CSint **starts, CSint **durations, CSint **presents,
                    int n) {
  using namespace koru::scheduling;
  return koru::leftOut("cs_Alternative") ||
         koru::door(postGroup("cs_Alternative", kTable, {start, duration, present, starts, durations, presents, n}));
}

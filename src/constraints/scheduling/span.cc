// SPDX-License-Identifier: MIT
// cs_Span: a task that is there lasts from the first start to the last end of those of n that are there, of which there
// is one at least; of one that is not, none is (Laborie, Rogerie 2008).
// Consistency: bounds of one variable at a time; nothing while it is open whether the task is there.
// Cost: a run of O(n), until it finds nothing.  State: none.  Wakes: when a bound of any variable moves.
#include <algorithm>

#include "constraints/scheduling/group.h"
#include "koru_extras.h"

namespace koru::scheduling {

struct Range {
  Time min;
  Time max;
};

static Range sumOf(const CSint *x, const CSint *y) { return {Time{x->min} + y->min, Time{x->max} + y->max}; }

// start + duration lies within the range.
static bool narrowSum(CSint *start, CSint *duration, const Range &range) {
  return narrowMin64(start, range.min - duration->max) && narrowMax64(start, range.max - duration->min) &&
         narrowMin64(duration, range.min - start->max) && narrowMax64(duration, range.max - start->min);
}

static bool keepInside(const Group &c, int i) {
  return narrowMin(c.starts[i], c.start->min) &&
         narrowSum(c.starts[i], c.durations[i], {INT64_MIN / 4, sumOf(c.start, c.duration).max});
}

// Whatever lies outside is not there; what is there lies inside.
static bool keepParts(const Group &c) {
  for (int i = 0; i < c.n; ++i) {
    const bool fits =
        c.starts[i]->max >= c.start->min && sumOf(c.starts[i], c.durations[i]).min <= sumOf(c.start, c.duration).max;
    if (!fits && !c.leaveOut(i)) return false;
    if (c.mustBe(i) && !keepInside(c, i)) return false;
  }
  return true;
}

// Around those that are there, and no further than those that may be.
static bool keepCover(const Group &c) {
  Range first{INT64_MAX, INT64_MAX};
  Range end{INT64_MIN / 4, INT64_MIN / 4};
  Time latestStart = INT64_MIN;
  Time earliestEnd = INT64_MAX / 4;
  for (int i = 0; i < c.n; ++i) {
    if (!c.mayBe(i)) continue;
    const Range itsEnd = sumOf(c.starts[i], c.durations[i]);
    first.min = std::min<Time>(first.min, c.starts[i]->min);
    end.max = std::max(end.max, itsEnd.max);
    latestStart = std::max<Time>(latestStart, c.starts[i]->max);
    earliestEnd = std::min(earliestEnd, itsEnd.min);
    if (!c.mustBe(i)) continue;
    first.max = std::min<Time>(first.max, c.starts[i]->max);
    end.min = std::max(end.min, itsEnd.min);
  }
  first.max = std::min(first.max, latestStart);
  end.min = std::max(end.min, earliestEnd);
  return narrowMin64(c.start, first.min) && narrowMax64(c.start, first.max) && narrowSum(c.start, c.duration, end);
}

// The one that alone can be the first, or the last, is.
static bool keepEnds(const Group &c) {
  const Range end = sumOf(c.start, c.duration);
  int firsts = 0;
  int lasts = 0;
  int first = 0;
  int last = 0;
  for (int i = 0; i < c.n; ++i) {
    if (!c.mayBe(i)) continue;
    if (c.starts[i]->min <= c.start->max) ++firsts, first = i;
    if (sumOf(c.starts[i], c.durations[i]).max >= end.min) ++lasts, last = i;
  }
  if (firsts == 1 && !(c.takeIn(first) && narrowMax(c.starts[first], c.start->max))) return false;
  return lasts != 1 || (c.takeIn(last) && narrowSum(c.starts[last], c.durations[last], {end.min, INT64_MAX / 4}));
}

static bool noPartIsThere(const Group &c) {
  for (int i = 0; i < c.n; ++i)
    if (!c.leaveOut(i)) return false;
  return true;
}

static bool cover(Group &c) {
  if (!c.mayBe()) return noPartIsThere(c);
  if (c.mustBe() && !keepParts(c)) return false;
  if (c.countMayBe() == 0) return c.leaveOut();
  for (int i = 0; i < c.n; ++i)
    if (c.mustBe(i) && !c.takeIn()) return false;
  return !c.mustBe() || (keepCover(c) && keepEnds(c));
}

constexpr auto kTable = deferred<toFixpoint<Group, cover>>(Rank::kLinear, kBoundsMove);

}  // namespace koru::scheduling

bool cs_Span(CSint *start, CSint *duration, CSint *present, CSint **starts, CSint **durations, CSint **presents,
             int n) {
  using namespace koru::scheduling;
  return koru::leftOut("cs_Span") ||
         koru::door(postGroup("cs_Span", kTable, {start, duration, present, starts, durations, presents, n}));
}

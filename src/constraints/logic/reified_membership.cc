// SPDX-License-Identifier: MIT
// cs_InArrayIff, cs_NotInArrayIff, cs_InIntervalIff, cs_NotInIntervalIff: b <=> x in a set, or not.
// cs_InArrayIf, cs_NotInArrayIf, cs_InIntervalIf, cs_NotInIntervalIf: b => the same.
// Consistency: domain.
// Cost: O(1) per event while x keeps a value inside and one outside that are known; others are sought in O(n log n).
// What b decides is imposed value by value. State: the values in order, a copy; those two, not trailed: they are in the
// domain again after a restore. Wakes: on every event of b and x. Deliberate: a set without values contains nothing, so
// cs_InArrayIf of it makes b false; a reversed interval likewise.
#include <algorithm>

#include "constraints/logic/reified.h"
#include "core/domain_walk.h"
#include "core/lifetime.h"
#include "koru_extras.h"

namespace koru::reified_membership {

using reified::Condition;
using reified::Form;
using reified::Outcome;

// ----- a set of values

struct Membership {
  CSint *x;
  Buffer<int> values;
  int n;
  int inside;
  int outside;

  bool has(int value) const { return std::binary_search(values.get(), values.get() + n, value); }
  bool findInside();
  bool findOutside();

  Outcome outcome() { return !findInside() ? Outcome::kFails : !findOutside() ? Outcome::kHolds : Outcome::kOpen; }
  bool impose(bool holds) const;
  bool follow(bool holds) const { return !isBound(x) || has(valueOf(x)) == holds; }
  bool followRemoval(bool, const Event &) const { return true; }
};

bool Membership::findInside() {
  if (contains(x, inside) && has(inside)) return true;
  for (const int *v = std::lower_bound(values.get(), values.get() + n, x->min); v < values.get() + n; ++v) {
    if (*v > x->max) break;
    if (!contains(x, *v)) continue;
    inside = *v;
    return true;
  }
  return false;
}

// Ends after n + 1 values at the latest.
bool Membership::findOutside() {
  if (contains(x, outside) && !has(outside)) return true;
  return !forEachValue(x, [this](int value) {
    if (has(value)) return true;
    outside = value;
    return false;
  });
}

// Bounds first: what lies beyond the values that x still has need not go one by one.
bool Membership::impose(bool holds) const {
  if (!holds) return std::all_of(values.get(), values.get() + n, [this](int value) { return removeValue(x, value); });
  const auto isLeft = [this](int value) { return contains(x, value); };
  const int *const end = values.get() + n;
  const int *const least = std::find_if(std::lower_bound<const int *>(values.get(), end, x->min), end, isLeft);
  if (least == end) return false;
  const int *most = std::upper_bound(least, end, x->max) - 1;
  while (!isLeft(*most)) --most;
  return narrowMin(x, *least) && narrowMax(x, *most) &&
         forEachValue(x, [this](int value) { return has(value) || removeValue(x, value); });
}

static bool postArray(const Poster &poster, const Condition &when, CSint *x, const int *array, int n) {
  if (!solver::initialised || when.b == nullptr || x == nullptr) return false;
  if (n < 0 || (array == nullptr && n > 0)) return false;
  Buffer<int> values(n);
  if (!values) return false;
  std::copy_n(array, n, values.get());
  std::sort(values.get(), values.get() + n);
  const auto distinct = static_cast<int>(std::unique(values.get(), values.get() + n) - values.get());
  Membership membership{x, std::move(values), distinct, x->min, x->min};
  return reified::post(poster, reified::kValuesTable<Membership>, when, std::move(membership), {x});
}

// ----- an interval

struct Interval {
  CSint *x;
  int low;
  int high;

  bool overlaps() const;
  Outcome outcome() const {
    if (!overlaps()) return Outcome::kFails;
    return x->min >= low && x->max <= high ? Outcome::kHolds : Outcome::kOpen;
  }
  bool impose(bool holds) const;
  bool follow(bool holds) const;
  bool followRemoval(bool, const Event &) const { return true; }
  bool takeOut() const;
};

// The first value at or above low is at or below high.
bool Interval::overlaps() const {
  if (low > high || x->max < low || x->min > high) return false;
  if (x->min >= low || x->max <= high || contains(x, low)) return true;
  return valueAfter(x, low) <= high;
}

// From the end at which nothing of x lies beyond, if there is one.
bool Interval::takeOut() const {
  if (low > high || x->max < low || x->min > high) return true;
  if (low <= x->min) return narrowMin64(x, std::int64_t{high} + 1);
  if (high >= x->max) return narrowMax64(x, std::int64_t{low} - 1);
  return forEachValue(x, low, high, [this](int value) { return removeValue(x, value); });
}

bool Interval::impose(bool holds) const {
  if (!holds) return takeOut();
  return low <= high && narrowMin(x, low) && narrowMax(x, high);
}

bool Interval::follow(bool holds) const {
  if (!isBound(x)) return true;
  return (low <= valueOf(x) && valueOf(x) <= high) == holds;
}

static bool postInterval(const Poster &poster, const Condition &when, const Interval &interval) {
  if (when.b == nullptr || interval.x == nullptr) return false;
  return reified::post(poster, reified::kValuesTable<Interval>, when, interval, {interval.x});
}

}  // namespace koru::reified_membership

using koru::door;
using koru::leftOut;
using koru::reified::Form;
using namespace koru::reified_membership;

bool cs_InArrayIff(CSint *b, CSint *x, const int *values, int n) {
  return leftOut("cs_InArrayIff") || door(postArray("cs_InArrayIff", {b, Form::kFull, false}, x, values, n));
}
bool cs_NotInArrayIff(CSint *b, CSint *x, const int *values, int n) {
  return leftOut("cs_NotInArrayIff") || door(postArray("cs_NotInArrayIff", {b, Form::kFull, true}, x, values, n));
}
bool cs_InArrayIf(CSint *b, CSint *x, const int *values, int n) {
  return leftOut("cs_InArrayIf") || door(postArray("cs_InArrayIf", {b, Form::kHalf, false}, x, values, n));
}
bool cs_NotInArrayIf(CSint *b, CSint *x, const int *values, int n) {
  return leftOut("cs_NotInArrayIf") || door(postArray("cs_NotInArrayIf", {b, Form::kHalf, true}, x, values, n));
}

bool cs_InIntervalIff(CSint *b, CSint *x, int lo, int hi) {
  return leftOut("cs_InIntervalIff") || door(postInterval("cs_InIntervalIff", {b, Form::kFull, false}, {x, lo, hi}));
}
bool cs_NotInIntervalIff(CSint *b, CSint *x, int lo, int hi) {
  return leftOut("cs_NotInIntervalIff") ||
         door(postInterval("cs_NotInIntervalIff", {b, Form::kFull, true}, {x, lo, hi}));
}
bool cs_InIntervalIf(CSint *b, CSint *x, int lo, int hi) {
  return leftOut("cs_InIntervalIf") || door(postInterval("cs_InIntervalIf", {b, Form::kHalf, false}, {x, lo, hi}));
}
bool cs_NotInIntervalIf(CSint *b, CSint *x, int lo, int hi) {
  return leftOut("cs_NotInIntervalIf") || door(postInterval("cs_NotInIntervalIf", {b, Form::kHalf, true}, {x, lo, hi}));
}

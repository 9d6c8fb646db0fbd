// SPDX-License-Identifier: MIT
// cs_InArray, cs_NotInArray, cs_InInterval, cs_NotInInterval: v in a set, or not.
// Consistency: domain, once.  Cost: per value that is looked at, and for cs_InArray a scan of the array.
// State: none, nothing is posted: they are made of cs_GE, cs_LE and cs_NEQ, which is what a profiler counts.
// Deliberate: cs_InArray of no value fails, cs_NotInArray of no value and a reversed cs_NotInInterval change nothing:
// no value is in the empty set, and all are outside it. Deliberate: what is not in the array goes from both ends of the
// domain inwards, the lower end first, so that the bounds move at once and most removals need no bit array.
#include <algorithm>

#include "core/refusal.h"
#include "core/variable.h"

namespace koru::membership {

struct Values {
  const int *begin;
  const int *end;
};

static bool keep(CSint *v, const Values &values, int value) {
  return std::find(values.begin, values.end, value) != values.end || cs_NEQ(v, value);
}

static int presentFrom(const CSint *v, int value) {
  const int first = std::max(value, v->min);
  return contains(v, first) ? first : valueAfter(v, first);
}

static int presentDownFrom(const CSint *v, int value) {
  const int last = std::min(value, v->max);
  return contains(v, last) ? last : valueBefore(v, last);
}

static bool keepInside(CSint *v, const Values &values) {
  int low = v->min;
  int high = v->max;
  while (low <= v->max && high >= v->min) {
    low = presentFrom(v, low);
    high = presentDownFrom(v, high);
    if (low > high) return true;
    if (!keep(v, values, low)) return false;
    if (low == high) return true;
    if (!keep(v, values, high)) return false;
    ++low;
    --high;
  }
  return true;
}

static bool inArray(CSint *v, const int *values, int n) {
  const AtWork atWork;
  if (v == nullptr || values == nullptr || n < 1) return false;
  const auto [smallest, largest] = std::minmax_element(values, values + n);
  return cs_GE(v, *smallest) && cs_LE(v, *largest) && keepInside(v, {values, values + n});
}

static bool notInArray(CSint *v, const int *values, int n) {
  const AtWork atWork;
  if (v == nullptr || (values == nullptr && n > 0)) return false;
  for (int i = 0; i < n; ++i)
    if (!cs_NEQ(v, values[i])) return false;
  return true;
}

static bool inInterval(CSint *v, int low, int high) {
  const AtWork atWork;
  return cs_GE(v, low) && cs_LE(v, high);
}

// Values beyond the bounds, which move as the walk goes on, are passed over.
static bool notInInterval(CSint *v, int low, int high) {
  const AtWork atWork;
  if (v == nullptr) return false;
  for (std::int64_t value = low; value <= high; ++value) {
    if (value < v->min) value = v->min;
    if (value > high || value > v->max) return true;
    if (!cs_NEQ(v, static_cast<int>(value))) return false;
  }
  return true;
}

}  // namespace koru::membership

using koru::door;
using koru::leftOut;
using namespace koru::membership;

int cs_InArray(CSint *v, const int *values, int n) { return leftOut("cs_InArray") || door(inArray(v, values, n)); }
int cs_NotInArray(CSint *v, const int *values, int n) {
  return leftOut("cs_NotInArray") || door(notInArray(v, values, n));
}
int cs_InInterval(CSint *v, int lo, int hi) { return leftOut("cs_InInterval") || door(inInterval(v, lo, hi)); }
int cs_NotInInterval(CSint *v, int lo, int hi) { return leftOut("cs_NotInInterval") || door(notInInterval(v, lo, hi)); }

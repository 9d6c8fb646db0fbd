// SPDX-License-Identifier: MIT
// cs_NValues: the variables take `count` different values.
// Consistency: domains seen as intervals. No fewer values than it takes to hit all intervals (Beldiceanu, Pruning for
// the minimum constraint family and for the number of distinct values constraint family, 2001), no more than variables
// that can be given different values (Glover, Maximum matching in a convex bipartite graph, 1967). With no more than
// needed, the i-th value lies between the i-th hit from the right and the i-th from the left; other values go. With as
// many as bound variables have and one for each other, these take none of theirs.
// Cost: a run of O(n log n), O(n n) in the last case; once more when it narrows something.  State: none.
// Wakes: at every change.
// Deliberate: from a domain that spans more than kWidest no inner values are taken.
#include <algorithm>
#include <functional>

#include "constraints/relational/fixpoint.h"
#include "core/domain_walk.h"
#include "koru_extras.h"

namespace koru::n_values {

constexpr std::uint32_t kWidest = 1U << 20;

struct Interval {
  int low;
  int high;
};

struct NValues : Deferred {
  Shared<CSint *> vars;
  int n;
  CSint *count;
  Buffer<Interval> byLow;
  Buffer<Interval> byHigh;
  Buffer<Interval> hits;  // where the values lie if they are the fewest
  Buffer<int> room;

  CSint *at(int i) const { return vars.get()[i]; }
  std::int64_t size() const { return sizeOf(vars.get(), n) + count->count; }
};

// ----- how few and how many

static void sortIntervals(const NValues &c) {
  for (int i = 0; i < c.n; ++i) c.byLow[i] = c.byHigh[i] = {c.at(i)->min, c.at(i)->max};
  std::sort(c.byLow.get(), c.byLow.get() + c.n, [](const Interval &a, const Interval &b) { return a.low < b.low; });
  std::sort(c.byHigh.get(), c.byHigh.get() + c.n, [](const Interval &a, const Interval &b) { return a.high < b.high; });
}

// Hits all intervals with the fewest values, as far right as can be, then as far left.
static int fewest(const NValues &c) {
  int hits = 0;
  for (int i = 0; i < c.n; ++i)
    if (hits == 0 || c.byHigh[i].low > c.hits[hits - 1].high) c.hits[hits++].high = c.byHigh[i].high;
  int hit = hits;
  for (int i = c.n - 1; i >= 0; --i)
    if (hit == hits || c.byLow[i].high < c.hits[hit].low) c.hits[--hit].low = c.byLow[i].low;
  return hits;
}

// Gives values in ascending order, each to the one of the open intervals that ends first.
static int most(const NValues &c) {
  int *open = c.room.get();
  int *end = open;
  int matched = 0;
  std::int64_t value = 0;
  for (int next = 0; next < c.n || end != open;) {
    if (end == open) value = c.byLow[next].low;
    for (; next < c.n && c.byLow[next].low <= value; std::push_heap(open, end, std::greater<>()))
      *end++ = c.byLow[next++].high;
    const bool late = *open < value;
    std::pop_heap(open, end--, std::greater<>());
    if (late) continue;
    ++matched;
    ++value;
  }
  return matched;
}

// ----- rules

static bool keepToHits(const NValues &c, int hits, CSint *v) {
  const Interval *hit = std::lower_bound(c.hits.get(), c.hits.get() + hits, v->min,
                                         [](const Interval &h, int min) { return h.high < min; });
  if (hit == c.hits.get() + hits || !narrowMin(v, hit->low)) return false;
  const Interval *last = c.hits.get() + hits;
  while (last[-1].low > v->max) --last;
  if (!narrowMax(v, last[-1].high)) return false;
  if (distance(v->min, v->max) > kWidest) return true;
  for (; hit + 1 < last; ++hit)
    if (!forEachValue(v, hit->high + 1, hit[1].low - 1, [v](int value) { return removeValue(v, value); })) return false;
  return true;
}

// All that the intervals which were sorted say: a variable may have been bound since.
static bool avoidTaken(const NValues &c) {
  int taken = 0;
  int unbound = 0;
  for (int i = 0; i < c.n; ++i) {
    const auto [low, high] = c.byHigh[i];
    unbound += low < high ? 1 : 0;
    if (low == high && (taken == 0 || c.room[taken - 1] != low)) c.room[taken++] = low;
  }
  if (c.count->min < taken + unbound) return true;
  for (int i = 0; i < c.n; ++i)
    for (int k = 0; k < taken && !isBound(c.at(i)); ++k)
      if (!removeValue(c.at(i), c.room[k])) return false;
  return true;
}

static bool filter(NValues &c) {
  sortIntervals(c);
  const int least = fewest(c);
  if (!narrowMin(c.count, least) || !narrowMax(c.count, most(c))) return false;
  if (c.count->max == least)
    for (int i = 0; i < c.n; ++i)
      if (!keepToHits(c, least, c.at(i))) return false;
  return avoidTaken(c);
}

static bool post(const Poster &poster, CSint *const *array, int n, CSint *count) {
  if (count == nullptr) return false;
  Posting posting{poster};
  if (!posting) return false;
  NValues record{{}, relational::copyOf(array, n), n, count, {}, {}, {}, {}};
  const auto size = static_cast<unsigned>(n);
  if (!record.vars || !make(record.byLow, size) || !make(record.byHigh, size) || !make(record.hits, size) ||
      !make(record.room, size))
    return false;
  auto c = posting.add(relational::kTable<NValues, filter, Rank::kSorting>, std::move(record));
  for (int i = 0; posting && i < n; ++i) c.attach(c->at(i), i);
  c.attach(count, n);
  return posting && runSoon(*c);
}

}  // namespace koru::n_values

bool cs_NValues(CSint **vars, int n, CSint *count) {
  return koru::leftOut("cs_NValues") || koru::door(koru::n_values::post("cs_NValues", vars, n, count));
}

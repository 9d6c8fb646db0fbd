// SPDX-License-Identifier: MIT
// cs_ElementOf: result = values[index] over an array of ints, which is copied.
// Consistency: domain, but a result over more than 2^20 values may keep inner ones that no position has.
// Cost: O(n) in a run; O(n log n) at posting.
// State: the (value, position) pairs in order.  Wakes: on every event.
#include <algorithm>
#include <tuple>

#include "constraints/relational/fixpoint.h"
#include "core/domain_walk.h"
#include "koru_extras.h"

namespace koru::element_of {

struct Pair {
  int value;
  int position;

  bool operator<(const Pair &other) const { return std::tie(value, position) < std::tie(other.value, other.position); }
};

struct ElementOf : Deferred {
  CSint *index;
  CSint *result;
  Buffer<Pair> pairs;
  int n;

  std::int64_t size() const { return std::int64_t{index->count} + result->count; }
};

constexpr std::uint32_t kWidest = 1U << 20;

// The pairs of one value: it stays while a position has it, they stay while the result has it.
static bool filterGroup(const ElementOf &c, int from, int to) {
  const int value = c.pairs[from].value;
  if (!contains(c.result, value)) {
    for (int k = from; k < to; ++k)
      if (contains(c.index, c.pairs[k].position) && !removeValue(c.index, c.pairs[k].position)) return false;
    return true;
  }
  for (int k = from; k < to; ++k)
    if (contains(c.index, c.pairs[k].position)) return true;
  return removeValue(c.result, value);
}

static bool dropBetween(CSint *v, int low, int high) {
  if (high - std::int64_t{low} < 2 || distance(v->min, v->max) > kWidest) return true;
  return forEachValue(v, low + 1, high - 1, [v](int value) { return removeValue(v, value); });
}

// Whether a pair lies in both domains.
static bool stands(const ElementOf &c, int k) {
  return contains(c.index, c.pairs[k].position) && contains(c.result, c.pairs[k].value);
}

// The result lies between the least and the greatest pair that stands, however wide it is.
static bool narrowToPairs(const ElementOf &c) {
  int first = 0;
  while (first < c.n && !stands(c, first)) ++first;
  if (first == c.n) return false;
  int last = c.n - 1;
  while (!stands(c, last)) --last;
  return narrowMin(c.result, c.pairs[first].value) && narrowMax(c.result, c.pairs[last].value);
}

static bool filter(ElementOf &c) {
  if (!narrowMin(c.index, 0) || !narrowMax(c.index, c.n - 1) || !narrowToPairs(c)) return false;
  for (int from = 0, to = 0; from < c.n; from = to) {
    while (to < c.n && c.pairs[to].value == c.pairs[from].value) ++to;
    if (!filterGroup(c, from, to)) return false;
    if (to < c.n && !dropBetween(c.result, c.pairs[from].value, c.pairs[to].value)) return false;
  }
  return true;
}

static bool post(const Poster &poster, CSint *index, const int *values, int n, CSint *result) {
  if (index == nullptr || values == nullptr || n < 1 || result == nullptr) return false;
  Posting posting{poster};
  if (!posting) return false;
  Buffer<Pair> pairs(n);
  if (!pairs) return false;
  for (int i = 0; i < n; ++i) pairs[i] = {values[i], i};
  std::sort(pairs.get(), pairs.get() + n);
  auto c = posting.add(relational::kTable<ElementOf, filter>, ElementOf{{}, index, result, std::move(pairs), n});
  c.attach(index, 0);
  c.attach(result, 1);
  return posting && runSoon(*c);
}

}  // namespace koru::element_of

using koru::door;

bool cs_ElementOf(CSint *index, const int *values, int n, CSint *result) {
  return door(koru::element_of::post("cs_ElementOf", index, values, n, result));
}

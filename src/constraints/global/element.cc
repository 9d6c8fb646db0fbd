// SPDX-License-Identifier: MIT
// cs_Element: value = values[index] over an array of ints.
// Consistency: domain while nothing else narrows the index within one propagation (see below); weaker otherwise.
// Cost: O(log n) and the positions of one value per value lost; O(n log n) at posting.
// State: the (value, position) pairs in order, and for each position the first pair of its value. Not trailed: how many
// pairs at either end are known to have left the index on this branch.
// Wakes: at every change of index and value.
// Deliberate: nothing is narrowed at posting but the index to the array: value is created with what it can reach.
// Deliberate: an inner removal that a bound has moved past before its event came is not heard, so a value may stay
// without support; binding value to it fails.
// Deliberate: an index outside the array (restored past a posting that was accepted) has no value: bound to it fails.
#include <algorithm>
#include <tuple>

#include "core/branch_set.h"
#include "core/domain_walk.h"
#include "core/post.h"

namespace koru::element {

struct Pair {
  int value;
  int position;

  bool operator<(const Pair &other) const { return std::tie(value, position) < std::tie(other.value, other.position); }
};

// Pairs at one end of the table whose positions have all left the index.
struct Swept {
  int pairs = 0;
  BranchStamp stamp{};

  int known() const { return stamp.stands() ? pairs : 0; }
  bool note(int count) {
    *this = {count, BranchStamp::now()};
    return true;
  }
};

struct Element {
  CSint *index;
  CSint *value;
  const int *values;
  int n;
  Buffer<Pair> pairs;
  Buffer<int> firstPair;  // by position, of its value
  Swept below{};
  Swept above{};

  bool inside(int position) const { return position >= 0 && position < n; }
};

// ----- the table

// The first pair not below `key`, in steps of growing length from `from` on, all before which are below it.
static int seek(const Element &c, int from, const Pair &key) {
  const Pair *pairs = c.pairs.get();
  std::int64_t low = from;
  std::int64_t step = 1;
  while (low + step <= c.n && pairs[low + step - 1] < key) {
    low += step;
    step *= 2;
  }
  const std::int64_t high = std::min<std::int64_t>(low + step, c.n);
  return static_cast<int>(std::lower_bound(pairs + low, pairs + high, key) - pairs);
}

static int firstPairOf(const Element &c, int value) {
  const Pair *pairs = c.pairs.get();
  return static_cast<int>(std::lower_bound(pairs, pairs + c.n, Pair{value, kIntMin}) - pairs);
}

// Visits the positions of a value that the index still holds, in order, while `visit` returns true; false when it has
// returned false. Within a value positions ascend, so those outside the index's bounds are left out at both ends.
template <class Visit>
static bool forEachSupport(const Element &c, int first, int value, Visit visit) {
  for (int k = seek(c, first, {value, c.index->min}); k < c.n; ++k) {
    const auto [v, position] = c.pairs[k];
    if (v != value || position > c.index->max) return true;
    if (contains(c.index, position) && !visit(position)) return false;
  }
  return true;
}

// ----- rules

// A position has left the index: its value, if it is there, goes when no other position supports it.
static bool checkSupport(const Element &c, int position) {
  const int value = c.values[position];
  if (!contains(c.value, value)) return true;
  const auto isSame = [=](int other) { return other == position; };
  return !forEachSupport(c, c.firstPair[position], value, isSame) || removeValue(c.value, value);
}

// Whether a position below or above the index's bounds was in it before, as far as its holes tell.
static bool held(const Element &c, int position) { return c.index->bits == nullptr || c.index->bits->has(position); }

static bool indexRaised(const Element &c, int from, int to) {
  for (int p = std::max(from, 0); p < std::min(to, c.n); ++p)
    if (held(c, p) && !checkSupport(c, p)) return false;
  return true;
}

static bool indexLowered(const Element &c, int from, int to) {
  for (int p = std::min(from, c.n - 1); p > std::max(to, -1); --p)
    if (held(c, p) && !checkSupport(c, p)) return false;
  return true;
}

// Both walks end within the table, which holds the values that the bounds were created with.
static bool valueRaised(Element &c, int min) {
  int k = c.below.known();
  for (; c.pairs[k].value < min; ++k)
    if (!removeIfPresent(c.index, c.pairs[k].position)) return false;
  return c.below.note(k);
}

static bool valueLowered(Element &c, int max) {
  int k = c.above.known();
  for (; c.pairs[c.n - 1 - k].value > max; ++k)
    if (!removeIfPresent(c.index, c.pairs[c.n - 1 - k].position)) return false;
  return c.above.note(k);
}

static bool indexBound(const Element &c) {
  const int position = valueOf(c.index);
  if (!c.inside(position)) return false;
  const int value = c.values[position];
  return contains(c.value, value) && bindValue(c.value, value);  // GCOVR_EXCL_BR_LINE: it has it
}

static bool keepPositionsOf(const Element &c, int value) {
  return forEachValue(c.index, [&](int position) {
    return (c.inside(position) && c.values[position] == value) || removeValue(c.index, position);
  });
}

static bool valueBound(const Element &c) {
  const int value = valueOf(c.value);
  int only = -1;
  const auto isFirst = [&](int position) {
    if (only >= 0) return false;
    only = position;
    return true;
  };
  if (!forEachSupport(c, firstPairOf(c, value), value, isFirst)) return keepPositionsOf(c, value);
  return only >= 0 && bindValue(c.index, only);
}

static bool valueRemoved(const Element &c, int value) {
  return forEachSupport(c, firstPairOf(c, value), value, [&](int position) { return removeValue(c.index, position); });
}

// ----- handlers

static bool newMin(Element &c, const Event &e) {
  return e.var == c.value ? valueRaised(c, e.newValue) : indexRaised(c, e.oldValue, e.newValue);
}

static bool newMax(Element &c, const Event &e) {
  return e.var == c.value ? valueLowered(c, e.newValue) : indexLowered(c, e.oldValue, e.newValue);
}

static bool bound(Element &c, const Event &e) { return e.var == c.value ? valueBound(c) : indexBound(c); }

static bool removed(Element &c, const Event &e) {
  if (e.var == c.value) return valueRemoved(c, e.newValue);
  return !c.inside(e.newValue) || checkSupport(c, e.newValue);
}

constexpr auto kTable = handlers<Element>({.newMin = on<newMin>,
                                           .newMax = on<newMax>,
                                           .minBound = on<bound>,
                                           .maxBound = on<bound>,
                                           .bound = on<bound>,
                                           .removed = on<removed>});

// ----- posting

// What the index reaches, in its order and as often as it comes.
static CSint *createReached(const CSint *index, const int *values, int n) {
  const Buffer<int> reached(n);
  if (!reached) return nullptr;
  int count = 0;
  forEachValue(index, [&](int position) {
    reached[count++] = values[position];
    return true;
  });
  return cs_createCSintFromDomain(reached.get(), count);
}

static bool fillTable(Element &c) {
  if (!c.pairs || !c.firstPair) return false;
  for (int i = 0; i < c.n; ++i) c.pairs[i] = {c.values[i], i};
  std::sort(c.pairs.get(), c.pairs.get() + c.n);
  for (int k = 0, first = 0; k < c.n; ++k) {
    if (c.pairs[k].value != c.pairs[first].value) first = k;
    c.firstPair[c.pairs[k].position] = first;
  }
  return true;
}

static CSint *post(const Poster &poster, CSint *index, const int *values, int n) {
  if (n == 0 || index == nullptr || values == nullptr) return nullptr;
  solver::ports.announce(poster);
  if (!narrowMin(index, 0) || !narrowMax64(index, std::int64_t{n} - 1)) return nullptr;
  CSint *value = createReached(index, values, n);
  if (value == nullptr) return nullptr;
  Posting posting{poster};
  if (!posting) return nullptr;
  Buffer<Pair> pairs(n);
  if (!pairs) return nullptr;
  Element record{index, value, values, n, std::move(pairs), Buffer<int>(n)};
  if (!fillTable(record)) return nullptr;
  auto c = posting.add(kTable, std::move(record));
  c.attach(index);
  c.attach(value);
  return posting ? value : nullptr;
}

}  // namespace koru::element

using koru::door;
using namespace koru::element;

CSint *cs_Element(CSint *index, const int *values, int n) { return door(post("cs_Element", index, values, n)); }

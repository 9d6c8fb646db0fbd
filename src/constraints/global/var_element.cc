// SPDX-License-Identifier: MIT
// cs_VarElement: value = vars[index] for a new variable value.
// Consistency: domain.  Cost: a walk over the result or the index per event, and a search of all positions or of two
// domains for each support that is lost; O(sum of the domain sizes) at posting.
// State: residual supports, not trailed: for each position a value it shares with the result, for each value of the
// result a position that holds it. One found deeper in the search holds further up as well.
// Wakes: by every event of the index, the result and the variables at positions that were open at posting.
// Deliberate: values that a moved bound cuts off the result lose their support. Brought back by a restore they are
// without one, and only an event on a bound of the index, or one that binds it, looks at them again: until then they
// may stay in the result although no position holds them. No assignment is accepted wrongly, and to look at all of them
// after each restore would cost what the supports save.
#include "constraints/global/var_element.h"

namespace koru::var_element {

constexpr int kNoValue = kIntMin;

struct VarElement : Selection {
  int base;           // the value whose support is the first of valueSupport
  int *indexSupport;  // by position
  int *valueSupport;  // by value
  Shared<int> tables;
};

struct OnIndex : VarElement {};
struct OnValue : VarElement {};
struct OnVars : VarElement {};

// ----- supports

static int &supportOf(const VarElement &c, int v) { return c.valueSupport[distance(c.base, v)]; }

// The table has room for the values that the result had at posting.
static bool isInTable(const VarElement &c, int v) { return v >= c.value->initialMin && v <= c.value->initialMax; }

// A walk's next value; past the maximum when there is none.
static std::int64_t stepFrom(const CSint *v, std::int64_t value) {
  return value >= v->max ? std::int64_t{v->max} + 1 : valueAfter(v, static_cast<int>(value));
}

// The smallest value that two domains share.
static bool findCommon(const CSint *a, const CSint *b, int &found) {
  std::int64_t v = std::max(a->min, b->min);
  while (v <= a->max && v <= b->max) {
    if (!contains(a, static_cast<int>(v))) {
      v = stepFrom(a, v);
    } else if (!contains(b, static_cast<int>(v))) {
      v = stepFrom(b, v);
    } else {
      found = static_cast<int>(v);
      return true;
    }
  }
  return false;
}

static bool supportPosition(const VarElement &c, int i) {
  return findCommon(c.vars[i], c.value, c.indexSupport[i]) || removeValue(c.index, i);
}

// The first position that holds v.
static int findPosition(const VarElement &c, int v) {
  int found = kNoPosition;
  forEachPosition(c, [&](int i) {
    if (contains(c.vars[i], v)) found = i;
    return found == kNoPosition;
  });
  return found;
}

// `cached`: the position found for the previous value of the same call, which is tried first.
static bool supportValue(const VarElement &c, int v, int &cached) {
  if (cached == kNoPosition || !contains(c.vars[cached], v)) cached = findPosition(c, v);
  if (cached == kNoPosition) return removeValue(c.value, v);
  supportOf(c, v) = cached;
  return true;
}

// Finds new supports for the values of the result whose position is lost.
template <class IsLost>
static bool supportValues(const VarElement &c, IsLost isLost) {
  int cached = kNoPosition;
  return forEachValue(c.value, [&](int v) { return !isLost(v, supportOf(c, v)) || supportValue(c, v, cached); });
}

// Finds new supports for the positions whose value is lost.
template <class IsLost>
static bool supportPositions(const VarElement &c, IsLost isLost) {
  return forEachPosition(c, [&](int i) { return !isLost(c.indexSupport[i]) || supportPosition(c, i); });
}

// ----- handlers on the index

static bool indexMoved(OnIndex &c, const Event &) {
  return supportValues(c, [&](int, int position) { return position < c.index->min || position > c.index->max; });
}

static bool indexRemoved(OnIndex &c, const Event &e) {
  return supportValues(c, [&](int, int position) { return position == e.newValue; });
}

// Two walks side by side take the values that only one of the domains holds from it.
static bool equalise(const VarElement &c, CSint *selected, int k) {
  std::int64_t a = selected->min;
  std::int64_t b = c.value->min;
  while (a <= selected->max && b <= c.value->max) {
    if (a < b) {
      if (!removeValue(selected, static_cast<int>(a))) return false;
      a = stepFrom(selected, a);
    } else if (b < a) {
      if (!removeValue(c.value, static_cast<int>(b))) return false;
      b = stepFrom(c.value, b);
    } else {
      supportOf(c, static_cast<int>(a)) = k;
      a = stepFrom(selected, a);
      b = stepFrom(c.value, b);
    }
  }
  return true;
}

static bool indexBound(OnIndex &c, const Event &) {
  CSint *selected = chosen(c);
  return selected != nullptr && alignBounds(selected, c.value) && equalise(c, selected, valueOf(c.index));
}

constexpr auto kIndexTable = handlers<OnIndex>({.newMin = on<indexMoved>,
                                                .newMax = on<indexMoved>,
                                                .minBound = on<indexBound>,
                                                .maxBound = on<indexBound>,
                                                .bound = on<indexBound>,
                                                .removed = on<indexRemoved>});

// ----- handlers on the result

static bool valueMoved(OnValue &c, const Event &) {
  if (isBound(c.index)) return chosen(c) != nullptr && tightenOneSide(chosen(c), c.value);
  return supportPositions(c, [&](int v) { return v < c.value->min || v > c.value->max; });
}

static bool valueBound(OnValue &c, const Event &) {
  const int v = valueOf(c.value);
  if (isBound(c.index)) return chosen(c) != nullptr && bindValue(chosen(c), v);
  return forEachPosition(c, [&](int i) {
    if (c.indexSupport[i] == v) return true;
    if (!contains(c.vars[i], v)) return removeValue(c.index, i);
    c.indexSupport[i] = v;
    return true;
  });
}

static bool valueRemoved(OnValue &c, const Event &e) {
  if (isBound(c.index)) return chosen(c) != nullptr && removeValue(chosen(c), e.newValue);
  return supportPositions(c, [&](int v) { return v == e.newValue; });
}

constexpr auto kValueTable = handlers<OnValue>({.newMin = on<valueMoved>,
                                                .newMax = on<valueMoved>,
                                                .minBound = on<valueBound>,
                                                .maxBound = on<valueBound>,
                                                .bound = on<valueBound>,
                                                .removed = on<valueRemoved>});

// ----- handlers on the variables; e.index is the position

// Which bound of a variable has moved: the values it has passed are those on the far side of it.
struct Raised {
  static bool passed(int v, int bound) { return v < bound; }
  static int first(const CSint *v) { return v->min; }
  static bool atEnd(const CSint *v, int value) { return value >= v->max; }
  static int next(const CSint *v, int value) { return valueAfter(v, value); }
  static bool cut(CSint *v, int bound) { return narrowMin(v, bound); }
};

struct Lowered {
  static bool passed(int v, int bound) { return v > bound; }
  static int first(const CSint *v) { return v->max; }
  static bool atEnd(const CSint *v, int value) { return value <= v->min; }
  static int next(const CSint *v, int value) { return valueBefore(v, value); }
  static bool cut(CSint *v, int bound) { return narrowMax(v, bound); }
};

// Cuts the result, in one step, to the first value that does not need position i or that another one holds.
template <class Bound>
static bool cutValue(const VarElement &c, int i, int bound, int &cached) {
  int v = Bound::first(c.value);
  while (Bound::passed(v, bound) && supportOf(c, v) == i) {
    cached = supportOf(c, v) = findPosition(c, v);
    if (cached != kNoPosition) break;
    if (Bound::atEnd(c.value, v)) return false;
    v = Bound::next(c.value, v);
  }
  return Bound::cut(c.value, v);
}

// Finds new supports for the values beyond the cut that position i has passed.
template <class Bound>
static bool supportPassed(const VarElement &c, int i, int bound, int &cached) {
  for (int v = Bound::first(c.value); Bound::passed(v, bound); v = Bound::next(c.value, v)) {
    if (supportOf(c, v) == i && !supportValue(c, v, cached)) return false;
    if (Bound::atEnd(c.value, v)) break;
  }
  return true;
}

template <class Bound>
static bool varMoved(OnVars &c, const Event &e) {
  const int i = e.index;
  const int bound = e.newValue;
  if (!isOpen(c, i)) return true;
  if (isBound(c.index)) return Bound::cut(c.value, bound);
  if (Bound::passed(c.indexSupport[i], bound) && !supportPosition(c, i)) return false;
  int cached = kNoPosition;
  return cutValue<Bound>(c, i, bound, cached) && supportPassed<Bound>(c, i, bound, cached);
}

static bool varBound(OnVars &c, const Event &e) {
  const int i = e.index;
  const int bound = valueOf(e.var);
  if (!isOpen(c, i)) return true;
  if (isBound(c.index)) return bindValue(c.value, bound);
  if (!contains(c.value, bound)) return removeValue(c.index, i);
  if (!supportValues(c, [=](int v, int position) { return position == i && v != bound; })) return false;
  c.indexSupport[i] = bound;
  return true;
}

static bool varRemoved(OnVars &c, const Event &e) {
  const int i = e.index;
  const int v = e.newValue;
  if (!isOpen(c, i)) return true;
  if (isBound(c.index)) return removeValue(c.value, v);
  if (c.indexSupport[i] == v && !supportPosition(c, i)) return false;
  int cached = kNoPosition;
  return !isInTable(c, v) || supportOf(c, v) != i || supportValue(c, v, cached);
}

constexpr auto kVarsTable = handlers<OnVars>({.newMin = on<varMoved<Raised>>,
                                              .newMax = on<varMoved<Lowered>>,
                                              .minBound = on<varBound>,
                                              .maxBound = on<varBound>,
                                              .bound = on<varBound>,
                                              .removed = on<varRemoved>});

// ----- posting

// A part of the result without gaps that is known to be supported, so that further intervals are stepped over: the
// widest so far, and what adjoins it.
struct Covered {
  std::int64_t low = 1;
  std::int64_t high = 0;

  bool has(std::int64_t v) const { return v >= low && v <= high; }
  void add(const CSint *v) {
    if (hasHoles(v)) return;
    if (v->min <= high + 1 && v->max >= low - 1) {
      low = std::min<std::int64_t>(low, v->min);
      high = std::max<std::int64_t>(high, v->max);
    } else if (std::int64_t{v->max} - v->min > high - low) {
      low = v->min;
      high = v->max;
    }
  }
};

// One pass over the domains gives each value the first position that holds it. Returns the number of values found.
static std::int64_t fillValueSupports(const VarElement &c) {
  std::int64_t count = 0;
  Covered covered;
  forEachPosition(c, [&](int i) {
    const CSint *x = c.vars[i];
    for (std::int64_t v = x->min; v <= x->max; v = stepFrom(x, covered.has(v) ? covered.high : v)) {
      if (covered.has(v) || supportOf(c, static_cast<int>(v)) != kNoPosition) continue;
      supportOf(c, static_cast<int>(v)) = i;
      ++count;
    }
    covered.add(x);
    return true;
  });
  return count;
}

static CSint *createUnion(const VarElement &c, int high, std::int64_t count) {
  if (count == std::int64_t{high} - c.base + 1) return createVariable(c.base, high);
  CSint *v = createVariable(c.base, high);
  DomainBuilder domain(v, DomainBuilder::Start::kEmpty);
  if (!domain) return nullptr;
  for (std::int64_t value = c.base; value <= high; ++value)
    if (supportOf(c, static_cast<int>(value)) != kNoPosition) domain.add(static_cast<int>(value));
  return v;
}

// Makes the tables and the result. False when memory is exhausted (reported).
static bool build(VarElement &c, Extremes extremes) {
  const auto values = static_cast<std::uint64_t>(std::int64_t{extremes.high} - extremes.low + 1);
  c.tables = Shared<int>(static_cast<std::uint64_t>(c.n) + values);
  if (!c.tables) return false;
  c.base = extremes.low;
  c.indexSupport = c.tables.get();
  c.valueSupport = c.indexSupport + c.n;
  std::fill_n(c.indexSupport, c.n, kNoValue);
  std::fill_n(c.valueSupport, values, kNoPosition);
  c.value = createUnion(c, extremes.high, fillValueSupports(c));
  if (c.value == nullptr) return false;
  return forEachPosition(c, [&](int i) {
    findCommon(c.vars[i], c.value, c.indexSupport[i]);
    return true;
  });
}

static CSint *post(const Poster &poster, CSint *index, CSint **vars, int n) {
  VarElement c{{nullptr, index, vars, n}, 0, nullptr, nullptr, {}};
  if (!prepare(c)) return nullptr;
  Posting posting{poster};
  if (!posting || !build(c, extremesOf(c))) return nullptr;
  return attach(posting, c, kIndexTable, kValueTable, kVarsTable);
}

}  // namespace koru::var_element

using koru::door;
using namespace koru::var_element;

CSint *cs_VarElement(CSint *index, CSint **vars, int n) { return door(post("cs_VarElement", index, vars, n)); }

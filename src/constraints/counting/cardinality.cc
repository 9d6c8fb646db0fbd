// SPDX-License-Identifier: MIT
// cs_Cardinality: counts[j] of the variables equal values[j]; when closed, no other value is taken.
// Consistency: forward checking. A count lies between how many variables have the value and how many can take it, and
// where the numbers that the other counts leave of n put it; a value with no room for more leaves the variables that
// are free, one that needs all who can take it binds them. All other values together are counted the same way.
// Cost: a run of O(n) and, for each variable that is free, O(m / 64 + values) where the values are consecutive, O(m)
// where not; another one when something was narrowed.  State: none.
// Wakes: at every change.
#include <algorithm>
#include <bit>
#include <utility>

#include "constraints/counting/value_classes.h"
#include "core/bit_scan.h"
#include "core/post.h"
#include "koru_extras.h"

namespace koru::counting {

// How many variables have a value of a class, how many can take one, and how many may.
struct Takers {
  int bound;
  int able;
  int min;
  int max;
};

struct Cardinality : Deferred {
  Buffer<CSint *> vars;
  int n;
  bool closed;
  ValueClasses classes;
  Buffer<Takers> takers;       // by class
  Buffer<std::uint64_t> sets;  // three, of classes

  std::uint64_t *read() const { return sets.get(); }
  std::uint64_t *full() const { return read() + classes.words(); }
  std::uint64_t *needy() const { return full() + classes.words(); }
};

template <class Visit>
static void forEachClass(const std::uint64_t *set, int words, Visit visit) {
  for (int k = 0; k < words; ++k) forEachBit(k * kWordBits, set[k], visit);
}

// ----- rules

static void countTakers(const Cardinality &c) {
  std::fill_n(c.takers.get(), c.classes.classes(), Takers{0, 0, 0, 0});
  for (int i = 0; i < c.n; ++i) {
    if (isBound(c.vars[i])) {
      Takers &t = c.takers[c.classes.classOf(valueOf(c.vars[i]))];
      ++t.bound;
      ++t.able;
      continue;
    }
    c.classes.read(c.vars[i], c.read());
    forEachClass(c.read(), c.classes.words(), [&](int j) { ++c.takers[j].able; });
  }
}

static bool narrowCount(const Cardinality &c, int j, std::int64_t low, std::int64_t high) {
  Takers &t = c.takers[j];
  if (j == c.classes.others()) {
    t.min = static_cast<int>(std::max<std::int64_t>(t.min, low));
    t.max = static_cast<int>(std::min<std::int64_t>(t.max, high));
    return t.min <= t.max;
  }
  CSint *count = c.classes.count(j);
  if (!narrowMin64(count, low) || !narrowMax64(count, high)) return false;
  t.min = count->min;
  t.max = count->max;
  return true;
}

static bool narrowByTakers(const Cardinality &c) {
  Takers &others = c.takers[c.classes.others()];
  others.max = c.closed ? 0 : c.n;
  for (int j = 0; j < c.classes.classes(); ++j)
    if (!narrowCount(c, j, c.takers[j].bound, c.takers[j].able)) return false;
  return true;
}

// All numbers together are n. Once more when a bound fell into a hole; else another pass would find nothing.
static bool narrowByOthers(const Cardinality &c, bool &again) {
  std::int64_t least = 0;
  std::int64_t most = 0;
  for (int j = 0; j < c.classes.classes(); ++j) {
    least += c.takers[j].min;
    most += c.takers[j].max;
  }
  for (int j = 0; j < c.classes.classes(); ++j) {
    const auto [bound, able, min, max] = c.takers[j];
    const std::int64_t low = std::max<std::int64_t>(min, c.n - most + max);
    const std::int64_t high = std::min<std::int64_t>(max, c.n - least + min);
    if (!narrowCount(c, j, low, high)) return false;
    again = again || c.takers[j].min != low || c.takers[j].max != high;
  }
  return true;
}

// The classes that take no more, and those that need all who are able, of which there is one who is free.
static bool findSettled(const Cardinality &c) {
  std::fill_n(c.full(), 2 * c.classes.words(), 0);
  bool any = false;
  for (int j = 0; j < c.classes.classes(); ++j) {
    const auto [bound, able, min, max] = c.takers[j];
    if (bound == able) continue;
    if (max == bound) WordSet(c.full()).set(j);
    if (min == able) WordSet(c.needy()).set(j);
    any = any || max == bound || min == able;
  }
  return any;
}

// Who can take a value that needs all takes none but those; of two such values there are too few for one.
static bool settle(const Cardinality &c, CSint *v, bool &again) {
  c.classes.read(v, c.read());
  int needed = 0;
  for (int k = 0; k < c.classes.words(); ++k) needed += std::popcount(c.read()[k] & c.needy()[k]);
  if (needed > 1) return false;
  bool any = false;
  for (int k = 0; k < c.classes.words(); ++k) {
    const std::uint64_t gone = c.read()[k] & (needed == 1 ? ~c.needy()[k] : c.full()[k]);
    any = any || gone != 0;
    c.read()[k] &= ~gone;
  }
  again = again || any;
  return !any || c.classes.keep(v, c.read());
}

static bool pass(const Cardinality &c, bool &again) {
  countTakers(c);
  if (!narrowByTakers(c) || !narrowByOthers(c, again)) return false;
  if (!findSettled(c)) return true;
  for (int i = 0; i < c.n; ++i)
    if (!isBound(c.vars[i]) && !settle(c, c.vars[i], again)) return false;
  return true;
}

static bool filter(Cardinality &c) {
  for (bool again = true; again;) {
    again = false;
    if (!pass(c, again)) return false;
  }
  return true;
}

constexpr auto kTable = deferred<filter>(Rank::kLinear);

// ----- posting

static bool post(const Poster &poster, CSint *const *array, int n, const int *values, CSint *const *counts, int m,
                 bool closed) {
  Posting posting{poster};
  if (!posting) return false;
  Cardinality record{{}, copyVariables(array, n), n, closed, {}, {}, {}};
  if (!record.vars || !record.classes.build(values, counts, m)) return false;
  const auto words = static_cast<unsigned>(record.classes.words());
  if (!make(record.takers, static_cast<unsigned>(m) + 1) || !make(record.sets, std::uint64_t{3} * words)) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; posting && i < n; ++i) c.attach(c->vars[i], i);
  for (int j = 0; posting && j < m; ++j) c.attach(c->classes.count(j), n);
  return posting && runSoon(*c);
}

}  // namespace koru::counting

bool cs_Cardinality(CSint **vars, int n, const int *values, CSint **counts, int m, bool closed) {
  return koru::leftOut("cs_Cardinality") ||
         koru::door(koru::counting::post("cs_Cardinality", vars, n, values, counts, m, closed));
}

// SPDX-License-Identifier: MIT
// cs_Inverse: x[i] = j exactly when y[j] = i; both are permutations of 0..n-1.
// Consistency: j is in x[i] exactly when i is in y[j], and a value taken is taken from all others.
// Cost: O(1) for a value that goes, O(n) for a variable that is bound; O(n * n) at posting.  State: none.
// Wakes: on every event.
// Deliberate: a bound that moves takes away whatever lies between its old and its new place, because the event of an
// inner value that went before may have been passed over.
#include <algorithm>
#include <utility>

#include "core/post.h"
#include "koru_extras.h"

namespace koru::inverse {

// x is at the indexes 0..n-1, y behind it.
struct Inverse {
  Buffer<CSint *> vars;
  int n;

  CSint *own(int index) const { return vars[index]; }
  CSint *opposite(int index, int place) const { return vars[index < n ? n + place : place]; }
  int placeOf(int index) const { return index < n ? index : index - n; }
};

// The variable at `index` no longer has the values in [low, high].
static bool exclude(const Inverse &c, int index, std::int64_t low, std::int64_t high) {
  const int place = c.placeOf(index);
  const std::int64_t last = std::min<std::int64_t>(high, c.n - 1);
  for (std::int64_t j = std::max<std::int64_t>(low, 0); j <= last; ++j)
    if (!removeValue(c.opposite(index, static_cast<int>(j)), place)) return false;
  return true;
}

static bool newMin(Inverse &c, const Event &e) { return exclude(c, e.index, e.oldValue, std::int64_t{e.newValue} - 1); }

static bool newMax(Inverse &c, const Event &e) { return exclude(c, e.index, std::int64_t{e.newValue} + 1, e.oldValue); }

static bool removed(Inverse &c, const Event &e) { return exclude(c, e.index, e.newValue, e.newValue); }

static bool boundTo(const Inverse &c, int index) {
  const int value = valueOf(c.own(index));
  if (value < 0 || value >= c.n) return false;
  CSint *partner = c.opposite(index, value);
  const int place = c.placeOf(index);
  if (!contains(partner, place) || !bindValue(partner, place)) return false;
  return exclude(c, index, 0, std::int64_t{value} - 1) && exclude(c, index, std::int64_t{value} + 1, c.n - 1);
}

static bool bound(Inverse &c, const Event &e) { return boundTo(c, e.index); }

constexpr auto kTable = handlers<Inverse>({.newMin = on<newMin>,
                                           .newMax = on<newMax>,
                                           .minBound = on<bound>,
                                           .maxBound = on<bound>,
                                           .bound = on<bound>,
                                           .removed = on<removed>});

static bool filter(const Inverse &c) {
  for (int index = 0; index < 2 * c.n; ++index)
    if (!narrowMin(c.own(index), 0) || !narrowMax(c.own(index), c.n - 1)) return false;
  for (int index = 0; index < 2 * c.n; ++index) {
    for (int j = 0; j < c.n; ++j)
      if (!contains(c.own(index), j) && !exclude(c, index, j, j)) return false;
    if (isBound(c.own(index)) && !boundTo(c, index)) return false;
  }
  return true;
}

static bool isArray(CSint *const *vars, int n) { return n == 0 || (vars != nullptr && allPresent(vars, n)); }

static bool post(const Poster &poster, CSint *const *x, CSint *const *y, int n) {
  if (n < 0 || n > kIntMax / 2 || !isArray(x, n) || !isArray(y, n)) return false;
  Posting posting{poster};
  if (!posting) return false;
  Buffer<CSint *> vars(2 * n);
  if (!vars) return false;
  std::copy_n(x, n, vars.get());
  std::copy_n(y, n, vars.get() + n);
  auto c = posting.add(kTable, Inverse{std::move(vars), n});
  for (int i = 0; posting && i < 2 * n; ++i) c.attach(c->vars[i], i);
  return posting && filter(*c);
}

}  // namespace koru::inverse

using koru::door;
using koru::leftOut;

bool cs_Inverse(CSint **x, CSint **y, int n) {
  return leftOut("cs_Inverse") || door(koru::inverse::post("cs_Inverse", x, y, n));
}

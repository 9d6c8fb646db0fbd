// SPDX-License-Identifier: MIT
// model_Increasing: vars[0] < vars[1] < ... < vars[n - 1].
// Consistency: bounds, which is as much as there is to remove but for holes.  Cost: O(1) per event, O(n) in a chain.
// State: none but a copy of the array.
// Wakes: when a bound moves; each change goes on to the next variable as an event of its own.
// Deliberate: the same variable twice -> false, found when its bounds have met.
#include <algorithm>

#include "catalogue/models/models.h"
#include "core/post.h"

namespace koru::model_increasing {

// ----- record

struct Increasing {
  Buffer<CSint *> vars;
  int n;
};

// ----- rules

static bool raiseNext(const Increasing &c, int i) {
  return i + 1 == c.n || narrowMin64(c.vars[i + 1], std::int64_t{c.vars[i]->min} + 1);
}
static bool lowerPrevious(const Increasing &c, int i) {
  return i == 0 || narrowMax64(c.vars[i - 1], std::int64_t{c.vars[i]->max} - 1);
}

static bool filter(const Increasing &c) {
  for (int i = 0; i < c.n; ++i)
    if (!raiseNext(c, i)) return false;
  for (int i = c.n - 1; i >= 0; --i)
    if (!lowerPrevious(c, i)) return false;
  return true;
}

// ----- handlers

static bool newMin(Increasing &c, const Event &e) { return raiseNext(c, e.index); }
static bool newMax(Increasing &c, const Event &e) { return lowerPrevious(c, e.index); }
static bool bound(Increasing &c, const Event &e) { return newMin(c, e) && newMax(c, e); }

constexpr auto kTable = handlers<Increasing>(
    {.newMin = on<newMin>, .newMax = on<newMax>, .minBound = on<bound>, .maxBound = on<bound>, .bound = on<bound>});

// ----- posting

static bool post(const Poster &poster, CSint **vars, int n) {
  if (n <= 0) return n == 0;
  if (vars == nullptr || !allPresent(vars, n)) return false;
  Posting posting{poster};
  if (!posting) return false;
  Buffer<CSint *> copy(n);
  if (!copy) return false;
  std::copy_n(vars, n, copy.get());
  auto c = posting.add(kTable, Increasing{std::move(copy), n});
  for (int i = 0; i < n; ++i) c.attach(vars[i], i);
  return posting && filter(*c);
}

}  // namespace koru::model_increasing

bool model_Increasing(CSint **vars, int n) { return koru::model_increasing::post("model_Increasing", vars, n); }

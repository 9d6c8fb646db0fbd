// SPDX-License-Identifier: MIT
// cs_Increasing, cs_StrictlyIncreasing: x1 <= x2 <= ... <= xn, x1 < x2 < ... < xn.
// Consistency: domain, for which bounds suffice.  Cost: O(1) per event and bound moved.  State: none.
// Wakes: when a bound moves.
// Deliberate: a variable that stands twice in a strict order is refused at once, not raised step by step.
#include <algorithm>
#include <functional>

#include "constraints/relational/fixpoint.h"
#include "koru_extras.h"

namespace koru::increasing {

struct Increasing {
  Shared<CSint *> vars;
  int n;
  int gap;

  CSint *at(int i) const { return vars.get()[i]; }
};

// What i's bound says of those behind it, or before it, until one knows it already.
static bool raiseBehind(const Increasing &c, int i) {
  for (int k = i + 1; k < c.n; ++k) {
    const std::int64_t bound = std::int64_t{c.at(k - 1)->min} + c.gap;
    if (bound <= c.at(k)->min) return true;
    if (!narrowMin64(c.at(k), bound)) return false;
  }
  return true;
}

static bool lowerBefore(const Increasing &c, int i) {
  for (int k = i - 1; k >= 0; --k) {
    const std::int64_t bound = std::int64_t{c.at(k + 1)->max} - c.gap;
    if (bound >= c.at(k)->max) return true;
    if (!narrowMax64(c.at(k), bound)) return false;
  }
  return true;
}

static bool filter(const Increasing &c) {
  for (int i = 0; i < c.n; ++i)
    if (!raiseBehind(c, i) || !lowerBefore(c, c.n - 1 - i)) return false;
  return true;
}

static bool newMin(Increasing &c, const Event &e) { return raiseBehind(c, e.index); }
static bool newMax(Increasing &c, const Event &e) { return lowerBefore(c, e.index); }
static bool bound(Increasing &c, const Event &e) { return raiseBehind(c, e.index) && lowerBefore(c, e.index); }

constexpr auto kTable = handlers<Increasing>(
    {.newMin = on<newMin>, .newMax = on<newMax>, .minBound = on<bound>, .maxBound = on<bound>, .bound = on<bound>});

static bool anyTwice(const Shared<CSint *> &vars, int n, bool &failed) {
  const Buffer<CSint *> sorted(n);
  failed = !sorted;
  if (failed) return false;
  std::copy_n(vars.get(), n, sorted.get());
  std::sort(sorted.get(), sorted.get() + n, std::less<>{});
  return std::adjacent_find(sorted.get(), sorted.get() + n) != sorted.get() + n;
}

static bool post(const Poster &poster, CSint *const *array, int n, int gap) {
  Posting posting{poster};
  if (!posting) return false;
  const Shared<CSint *> vars = relational::copyOf(array, n);
  if (!vars) return false;
  bool failed = false;
  if (gap > 0 && (anyTwice(vars, n, failed) || failed)) return false;
  auto c = posting.add(kTable, Increasing{vars, n, gap});
  for (int i = 0; i < n; ++i) c.attach(vars.get()[i], i);
  return posting && filter(*c);
}

}  // namespace koru::increasing

using koru::door;
using koru::leftOut;

bool cs_Increasing(CSint **vars, int n) {
  return leftOut("cs_Increasing") || door(koru::increasing::post("cs_Increasing", vars, n, 0));
}
bool cs_StrictlyIncreasing(CSint **vars, int n) {
  return leftOut("cs_StrictlyIncreasing") || door(koru::increasing::post("cs_StrictlyIncreasing", vars, n, 1));
}

// SPDX-License-Identifier: MIT
// cs_ReifLE, cs_ReifLT, cs_ReifGE, cs_ReifGT: b <=> x op v for an int v.
// All four compare x with a limit: x is low when x <= limit and high when x > limit. cs_ReifLE and cs_ReifLT say that
// b = 1 is low, the other two that b = 0 is.
// Consistency: bounds.  Cost: O(1) per event.  State: none.
// Wakes: control when b is bound; watch when a bound of x moves or x is bound.
// Deliberate: once b is bound the watch only checks that x agrees, since the control has narrowed it.
// Deliberate: the site is made also when the outcome is decided at posting: a host's locator is asked once per call.
#include "constraints/arith/reify.h"

namespace koru::reif_const_order {

struct Comparison {
  CSint *x;
  std::int64_t limit;  // v - 1 for the smallest int is no int
  int low;             // the value of b that says that x is low
};

struct Control : Comparison {};
struct Watch : Comparison {
  CSint *b;
};

static bool controlBound(Control &c, const Event &e) {
  return valueOf(e.var) == c.low ? narrowMax64(c.x, c.limit) : narrowMin64(c.x, c.limit + 1);
}

constexpr auto kControlTable =
    handlers<Control>({.minBound = on<controlBound>, .maxBound = on<controlBound>, .bound = on<controlBound>});

static bool agrees(const Watch &w) { return valueOf(w.b) == w.low ? w.x->min <= w.limit : w.x->max > w.limit; }

static bool newMin(Watch &w, const Event &) {
  if (!isFree(w.b)) return agrees(w);
  return w.x->min <= w.limit || bindValue(w.b, 1 - w.low);  // GCOVR_EXCL_BR_LINE: a free one takes either
}

static bool newMax(Watch &w, const Event &) {
  if (!isFree(w.b)) return agrees(w);
  return w.x->max > w.limit || bindValue(w.b, w.low);  // GCOVR_EXCL_BR_LINE: a free one takes either
}

static bool bound(Watch &w, const Event &e) { return newMax(w, e) && newMin(w, e); }

constexpr auto kWatchTable = handlers<Watch>(
    {.newMin = on<newMin>, .newMax = on<newMax>, .minBound = on<newMin>, .maxBound = on<newMax>, .bound = on<bound>});

static CSint *post(const Poster &poster, CSint *x, std::int64_t limit, int low) {
  if (x == nullptr) return nullptr;
  Posting posting{poster};
  if (!posting) return nullptr;
  if (x->max <= limit) return reify::decided(low == 1);
  if (x->min > limit) return reify::decided(low == 0);
  const Comparison c{x, limit, low};
  return reify::post(posting, x, nullptr, kControlTable, Control{c}, kWatchTable, Watch{c, nullptr});
}

}  // namespace koru::reif_const_order

using koru::door;
using namespace koru::reif_const_order;

CSint *cs_ReifLE(CSint *x, int v) { return door(post("cs_ReifLE", x, v, 1)); }
CSint *cs_ReifLT(CSint *x, int v) { return door(post("cs_ReifLT", x, std::int64_t{v} - 1, 1)); }
CSint *cs_ReifGE(CSint *x, int v) { return door(post("cs_ReifGE", x, std::int64_t{v} - 1, 0)); }
CSint *cs_ReifGT(CSint *x, int v) { return door(post("cs_ReifGT", x, v, 0)); }

// SPDX-License-Identifier: MIT
// cs_ReifEQ, cs_ReifNEQ: b <=> x = v, b <=> x != v for an int v.
// Consistency: domain.  Cost: O(1) per event.  State: none.
// Wakes: control when b is bound; watch on every event of x.
// Deliberate: once b is bound the watch only checks that x agrees, since the control has narrowed it.
#include "constraints/arith/reify.h"

namespace koru::reif_const_eq {

struct Comparison {
  CSint *x;
  int v;
  int equal;  // the value of b that says x = v
};

struct Control : Comparison {};
struct Watch : Comparison {
  CSint *b;
};

static bool controlBound(Control &c, const Event &e) {
  return valueOf(e.var) == c.equal ? bindValue(c.x, c.v) : removeValue(c.x, c.v);
}

constexpr auto kControlTable =
    handlers<Control>({.minBound = on<controlBound>, .maxBound = on<controlBound>, .bound = on<controlBound>});

// x has lost values; `gone`: v is among them.
static bool lost(Watch &w, bool gone) {
  if (!gone) return true;
  return isFree(w.b) ? bindValue(w.b, 1 - w.equal) : valueOf(w.b) != w.equal;
}

static bool newMin(Watch &w, const Event &) { return lost(w, w.x->min > w.v); }
static bool newMax(Watch &w, const Event &) { return lost(w, w.x->max < w.v); }
static bool removed(Watch &w, const Event &e) { return lost(w, e.newValue == w.v); }

static bool bound(Watch &w, const Event &) {
  const int outcome = valueOf(w.x) == w.v ? w.equal : 1 - w.equal;
  return isFree(w.b) ? bindValue(w.b, outcome) : valueOf(w.b) == outcome;
}

constexpr auto kWatchTable = handlers<Watch>({.newMin = on<newMin>,
                                              .newMax = on<newMax>,
                                              .minBound = on<bound>,
                                              .maxBound = on<bound>,
                                              .bound = on<bound>,
                                              .removed = on<removed>});

static CSint *post(const Poster &poster, CSint *x, int v, int equal) {
  if (x == nullptr) return nullptr;
  if (!contains(x, v)) return reify::decided(equal == 0);
  if (isBound(x)) return reify::decided(equal == 1);
  Posting posting{poster};
  const Comparison c{x, v, equal};
  return reify::post(posting, x, nullptr, kControlTable, Control{c}, kWatchTable, Watch{c, nullptr});
}

}  // namespace koru::reif_const_eq

using koru::door;
using namespace koru::reif_const_eq;

CSint *cs_ReifEQ(CSint *x, int v) { return door(post("cs_ReifEQ", x, v, 1)); }
CSint *cs_ReifNEQ(CSint *x, int v) { return door(post("cs_ReifNEQ", x, v, 0)); }

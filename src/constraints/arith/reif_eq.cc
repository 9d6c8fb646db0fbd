// SPDX-License-Identifier: MIT
// cs_ReifEq, cs_ReifNeq: b <=> x = y, b <=> x != y.
// Consistency: domain for equality, forward checking for difference.
// Cost: O(1) per event between intervals, O(d) when one has holes.  State: none.
// Wakes: control when b is bound; watch on every event of x and y, with one handler.
#include <algorithm>

#include "constraints/arith/eq.h"
#include "constraints/arith/reify.h"

namespace koru::reif_eq {

struct Pair {
  CSint *x;
  CSint *y;
  int equal;  // the value of b that says x = y
};

struct Control : Pair {};
struct Watch : Pair {
  CSint *b;
};

// ----- rules

static bool shareValue(const CSint *x, const CSint *y) {
  if (x->max < y->min || y->max < x->min) return false;
  if (!hasHoles(x) && !hasHoles(y)) return true;
  const int last = std::min(x->max, y->max);
  for (std::int64_t v = std::max(x->min, y->min); v <= last; ++v) {
    if (contains(x, static_cast<int>(v)) && contains(y, static_cast<int>(v))) return true;
  }
  return false;
}

static bool bothBoundToOne(const CSint *x, const CSint *y) {
  return isBound(x) && isBound(y) && valueOf(x) == valueOf(y);
}

// Deliberate: the walk ends where x ended before it, also when a removal has moved that bound meanwhile: y loses
// what lies between in the same walk.
static bool equalise(CSint *x, CSint *y) {
  if (!narrowMin(x, y->min) || !narrowMin(y, x->min) || !narrowMax(y, x->max) || !narrowMax(x, y->max)) return false;
  if (!hasHoles(x) && !hasHoles(y)) return true;
  const int last = x->max;
  for (std::int64_t v = x->min; v <= last; ++v)
    if (!eq::alignValue(x, y, static_cast<int>(v))) return false;
  return true;
}

static bool separate(CSint *x, CSint *y) {
  if (isBound(x) && !removeValue(y, valueOf(x))) return false;
  return !isBound(y) || removeValue(x, valueOf(y));
}

static bool imposeAsSaid(const Pair &c, const CSint *b) {
  return valueOf(b) == c.equal ? equalise(c.x, c.y) : separate(c.x, c.y);
}

// ----- handlers

static bool controlBound(Control &c, const Event &e) { return imposeAsSaid(c, e.var); }

constexpr auto kControlTable =
    handlers<Control>({.minBound = on<controlBound>, .maxBound = on<controlBound>, .bound = on<controlBound>});

static bool changed(Watch &w, const Event &) {
  if (!isFree(w.b)) return imposeAsSaid(w, w.b);
  if (!shareValue(w.x, w.y)) return bindValue(w.b, 1 - w.equal);
  return !bothBoundToOne(w.x, w.y) || bindValue(w.b, w.equal);  // GCOVR_EXCL_BR_LINE: a free one takes either
}

constexpr auto kWatchTable = handlers<Watch>({.newMin = on<changed>,
                                              .newMax = on<changed>,
                                              .minBound = on<changed>,
                                              .maxBound = on<changed>,
                                              .bound = on<changed>,
                                              .removed = on<changed>});

// ----- posting

static CSint *post(const Poster &poster, CSint *x, CSint *y, int equal) {
  if (x == nullptr || y == nullptr) return nullptr;
  if (x == y) return reify::decided(equal == 1);
  if (!shareValue(x, y)) return reify::decided(equal == 0);
  if (bothBoundToOne(x, y)) return reify::decided(equal == 1);
  Posting posting{poster};
  const Pair pair{x, y, equal};
  return reify::post(posting, x, y, kControlTable, Control{pair}, kWatchTable, Watch{pair, nullptr});
}

}  // namespace koru::reif_eq

using koru::door;
using namespace koru::reif_eq;

CSint *cs_ReifEq(CSint *x, CSint *y) { return door(post("cs_ReifEq", x, y, 1)); }
CSint *cs_ReifNeq(CSint *x, CSint *y) { return door(post("cs_ReifNeq", x, y, 0)); }

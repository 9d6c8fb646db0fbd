// SPDX-License-Identifier: MIT
// cs_ReifLt, cs_ReifLe, cs_ReifGt, cs_ReifGe: b <=> x + gap <= y, the gap being 1 or 0; the last two exchange operands.
// Consistency: bounds.  Cost: O(1) per event.  State: none.
// Wakes: control when b is bound; watch when a bound of x or y moves or one of them is bound.
// The negation of x + gap <= y is y + (1 - gap) <= x, so b = 0 imposes the same rule on exchanged operands.
// Deliberate: the site is made also when the outcome is decided at posting: a host's locator is asked once per call.
// Deliberate: a watched variable bound inside its bounds either decides b or imposes what b says, not both: once b is
// bound by the one, the control does the other.
#include "constraints/arith/reify.h"

namespace koru::reif_order {

// left + gap <= right
struct Order {
  CSint *left;
  CSint *right;
  int gap;
};

struct Control : Order {};
struct Watch : Order {
  CSint *b;
};

// ----- rules

static Order negation(const Order &o) { return {o.right, o.left, 1 - o.gap}; }
static bool impossible(const Order &o) { return std::int64_t{o.left->min} + o.gap > o.right->max; }

static bool impose(const Order &o) {
  return narrowMax64(o.left, std::int64_t{o.right->max} - o.gap) &&
         narrowMin64(o.right, std::int64_t{o.left->min} + o.gap);
}

static bool imposeAsSaid(const Order &o, const CSint *b) { return impose(valueOf(b) == 1 ? o : negation(o)); }

// Binds b to 0 when the order has become impossible, to 1 when its negation has. Which of the two is looked for is said
// by the bound that moved: no other can have become so.
static bool decide(const Watch &w, bool mayRefute, bool mayProve) {
  if (mayRefute && impossible(w)) return bindValue(w.b, 0);
  return !mayProve || !impossible(negation(w)) || bindValue(w.b, 1);  // GCOVR_EXCL_BR_LINE: a free one takes either
}

// ----- handlers

static bool controlBound(Control &c, const Event &e) { return imposeAsSaid(c, e.var); }

constexpr auto kControlTable =
    handlers<Control>({.minBound = on<controlBound>, .maxBound = on<controlBound>, .bound = on<controlBound>});

static bool newMin(Watch &w, const Event &e) {
  if (isFree(w.b)) return decide(w, e.var == w.left, e.var == w.right);
  const Order o = valueOf(w.b) == 1 ? w : negation(w);
  return e.var != o.left || narrowMin64(o.right, std::int64_t{e.newValue} + o.gap);
}

static bool newMax(Watch &w, const Event &e) {
  if (isFree(w.b)) return decide(w, e.var == w.right, e.var == w.left);
  const Order o = valueOf(w.b) == 1 ? w : negation(w);
  return e.var != o.right || narrowMax64(o.left, std::int64_t{e.newValue} - o.gap);
}

static bool bound(Watch &w, const Event &) { return isFree(w.b) ? decide(w, true, true) : imposeAsSaid(w, w.b); }

constexpr auto kWatchTable = handlers<Watch>(
    {.newMin = on<newMin>, .newMax = on<newMax>, .minBound = on<newMin>, .maxBound = on<newMax>, .bound = on<bound>});

// ----- posting

static CSint *post(const Poster &poster, CSint *left, CSint *right, int gap) {
  if (left == nullptr || right == nullptr) return nullptr;
  Posting posting{poster};
  if (!posting) return nullptr;
  const Order o{left, right, gap};
  if (left == right) return reify::decided(gap == 0);
  if (impossible(o)) return reify::decided(false);
  if (impossible(negation(o))) return reify::decided(true);
  return reify::post(posting, left, right, kControlTable, Control{o}, kWatchTable, Watch{o, nullptr});
}

}  // namespace koru::reif_order

using koru::door;
using namespace koru::reif_order;

CSint *cs_ReifLt(CSint *x, CSint *y) { return door(post("cs_ReifLt", x, y, 1)); }
CSint *cs_ReifLe(CSint *x, CSint *y) { return door(post("cs_ReifLe", x, y, 0)); }
CSint *cs_ReifGt(CSint *x, CSint *y) { return door(post("cs_ReifGt", y, x, 1)); }
CSint *cs_ReifGe(CSint *x, CSint *y) { return door(post("cs_ReifGe", y, x, 0)); }

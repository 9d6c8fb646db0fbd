// SPDX-License-Identifier: MIT
// cs_Neq: x != y.
// Consistency: forward checking, acts when one side is bound.  Cost: O(1) per event.  State: none.
// Wakes: when a side becomes bound.
// Deliberate: the same variable twice -> false, nothing posted: it never differs from itself.
#include "core/post.h"

namespace koru::neq {

struct Neq {
  CSint *x;
  CSint *y;
};

static bool exclude(const CSint *boundSide, CSint *v) { return removeValue(v, valueOf(boundSide)); }

static bool filter(Neq &c) {
  if (isBound(c.x)) return exclude(c.x, c.y);
  return !isBound(c.y) || exclude(c.y, c.x);
}

static bool bound(Neq &c, const Event &e) { return removeUnforeseen(e.var == c.x ? c.y : c.x, valueOf(e.var)); }

constexpr auto kTable = handlers<Neq>({.minBound = on<bound>, .maxBound = on<bound>, .bound = on<bound>});

static bool post(const Poster &poster, CSint *x, CSint *y) {
  if (x == nullptr || y == nullptr || x == y) return false;
  Posting posting{poster};
  auto c = posting.add(kTable, Neq{x, y});
  c.attach(x);
  c.attach(y);
  return posting && filter(*c);
}

}  // namespace koru::neq

using koru::door;
using koru::leftOut;
using namespace koru::neq;

bool cs_Neq(CSint *x, CSint *y) { return leftOut("cs_Neq") || door(post("cs_Neq", x, y)); }

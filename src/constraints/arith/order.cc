// SPDX-License-Identifier: MIT
// cs_Le, cs_Lt, cs_Ge, cs_Gt: x + gap <= y, the gap being 0 or 1; cs_Ge and cs_Gt post with the operands exchanged.
// Consistency: bounds.  Cost: O(1) per event.  State: none.
// Wakes: when the minimum of x or the maximum of y moves, or either is bound.
// Deliberate: the same variable twice -> true for a gap of 0, false for 1, nothing posted, for that is decided.
#include "core/post.h"

namespace koru::order {

template <int gap>
struct Order {
  CSint *x;
  CSint *y;
};

// The bounds are computed in 64 bits, where x.min + 1 and y.max - 1 are never wrong; one that is no int lies past the
// other bound, and the rule fails.
template <int gap>
static bool raiseY(Order<gap> &c) {
  return narrowMin64(c.y, std::int64_t{c.x->min} + gap);
}

template <int gap>
static bool lowerX(Order<gap> &c) {
  return narrowMax64(c.x, std::int64_t{c.y->max} - gap);
}

template <int gap>
static bool newMin(Order<gap> &c, const Event &e) {
  return e.var != c.x || raiseY(c);
}

template <int gap>
static bool newMax(Order<gap> &c, const Event &e) {
  return e.var != c.y || lowerX(c);
}

template <int gap>
static bool bound(Order<gap> &c, const Event &e) {
  return newMin(c, e) && newMax(c, e);
}

template <int gap>
constexpr auto kTable = handlers<Order<gap>>({.newMin = on<newMin<gap>>,
                                              .newMax = on<newMax<gap>>,
                                              .minBound = on<newMin<gap>>,
                                              .maxBound = on<newMax<gap>>,
                                              .bound = on<bound<gap>>});

template <int gap>
static bool post(const Poster &poster, CSint *x, CSint *y) {
  if (x == nullptr || y == nullptr) return false;
  if (x == y) return gap == 0;
  Posting posting{poster};
  auto c = posting.add(kTable<gap>, Order<gap>{x, y});
  c.attach(x, -1, events(kNewMin, kMinBound, kBound));
  c.attach(y, -1, events(kNewMax, kMaxBound, kBound));
  return posting && raiseY(*c) && lowerX(*c);
}

}  // namespace koru::order

using koru::door;
using koru::leftOut;
using namespace koru::order;

bool cs_Le(CSint *x, CSint *y) { return leftOut("cs_Le") || door(post<0>("cs_Le", x, y)); }
bool cs_Lt(CSint *x, CSint *y) { return leftOut("cs_Lt") || door(post<1>("cs_Lt", x, y)); }
bool cs_Ge(CSint *x, CSint *y) { return leftOut("cs_Ge") || door(post<0>("cs_Ge", y, x)); }
bool cs_Gt(CSint *x, CSint *y) { return leftOut("cs_Gt") || door(post<1>("cs_Gt", y, x)); }

// SPDX-License-Identifier: MIT
// cs_IfEq: x = a exactly when y = b.  cs_IfNeq: never x = a and y = b.
// Consistency: forward checking, acts when a variable is bound; neither a nor b is pruned on bounds or holes alone.
// Cost: O(1) per event.  State: none.  Wakes: when x or y is bound.
// Deliberate: the value that cs_IfEq requires may be missing, and that fails; for cs_IfNeq it is then satisfied.
// Deliberate: nothing special for the same variable twice; for it only the rule from x to y is woken, which says all
// that there is to say of one variable.
#include "core/post.h"

namespace koru::if_eq {

struct Values {
  CSint *x;
  CSint *y;
  int a;
  int b;
};

struct IfEq : Values {};
struct IfNeq : Values {};

static bool boundTo(const CSint *v, int value) { return isBound(v) && valueOf(v) == value; }

// The first variable being bound to its value, what the second must do with its own.
static bool demand(const CSint *first, int value, CSint *second, int required) {
  return !boundTo(first, value) || (contains(second, required) && bindValue(second, required));
}

static bool forbid(const CSint *first, int value, CSint *second, int forbidden) {
  return !boundTo(first, value) || removeValue(second, forbidden);
}

template <auto rule>
static bool fromX(const Values &c) {
  return rule(c.x, c.a, c.y, c.b);
}

template <auto rule>
static bool fromY(const Values &c) {
  return rule(c.y, c.b, c.x, c.a);
}

template <class Record, auto rule>
static bool bound(Record &c, const Event &e) {
  return e.var == c.x ? fromX<rule>(c) : fromY<rule>(c);
}

template <class Record, auto rule>
constexpr auto kTable = handlers<Record>({.minBound = on<bound<Record, rule>>,
                                          .maxBound = on<bound<Record, rule>>,
                                          .bound = on<bound<Record, rule>>});

template <class Record, auto rule>
static bool post(const Poster &poster, const Values &values) {
  if (values.x == nullptr || values.y == nullptr) return false;
  Posting posting{poster};
  auto c = posting.add(kTable<Record, rule>, Record{values});
  c.attach(values.x);
  c.attach(values.y);
  return posting && fromX<rule>(*c) && fromY<rule>(*c);
}

}  // namespace koru::if_eq

using koru::door;
using koru::leftOut;
using namespace koru::if_eq;

bool cs_IfEq(CSint *x, CSint *y, int a, int b) {
  return leftOut("cs_IfEq") || door(post<IfEq, demand>("cs_IfEq", {x, y, a, b}));
}
bool cs_IfNeq(CSint *x, CSint *y, int a, int b) {
  return leftOut("cs_IfNeq") || door(post<IfNeq, forbid>("cs_IfNeq", {x, y, a, b}));
}

// SPDX-License-Identifier: MIT
// cs_EqIff, cs_NeqIff: b <=> x = y, b <=> x != y.  cs_EqIf, cs_NeqIf: b => x = y, b => x != y.
// Consistency: domain.
// Cost: O(1) per event while a value that x and y share stays; another one is sought in a scan.
// State: that value, not trailed: it is in both domains again after a restore.
// Wakes: on every event; cs_NeqIf when b becomes true or a variable is bound.
#include "constraints/logic/agree.h"
#include "constraints/logic/reified.h"
#include "core/lifetime.h"
#include "koru_extras.h"

namespace koru::reified_eq {

using reified::Outcome;

struct Equality {
  CSint *x;
  CSint *y;
  int shared;

  Outcome outcome();
  bool impose(bool holds) const;
  bool follow(bool holds) const;
  bool followRemoval(bool holds, const Event &e) const;
};

// ----- rules

static bool separate(CSint *x, CSint *y) {
  if (isBound(x) && !removeValue(y, valueOf(x))) return false;
  return !isBound(y) || removeValue(x, valueOf(y));
}

Outcome Equality::outcome() {
  if (x == y) return Outcome::kHolds;
  if (!shareValue(x, y, shared)) return Outcome::kFails;
  return isBound(x) && isBound(y) ? Outcome::kHolds : Outcome::kOpen;
}

bool Equality::impose(bool holds) const {
  if (x == y) return holds;
  return holds ? equalise(x, y) : separate(x, y);
}

bool Equality::follow(bool holds) const {
  if (!holds || isBound(x) || isBound(y)) return impose(holds);
  return alignBounds(x, y);
}

bool Equality::followRemoval(bool holds, const Event &e) const {
  return !holds || removeValue(e.index == 0 ? y : x, e.newValue);
}

// ----- posting

static bool post(const Poster &poster, const reified::Condition &when, CSint *x, CSint *y) {
  if (!solver::initialised || when.b == nullptr || x == nullptr || y == nullptr) return false;
  const bool halfDifference = when.negated && when.form == reified::Form::kHalf;
  const std::uint8_t concerned = halfDifference ? reified::kIsBound : kHearsAnything;
  return reified::post(poster, reified::kValuesTable<Equality>, when, Equality{x, y, x->min}, {x, concerned},
                       {y, concerned});
}

}  // namespace koru::reified_eq

using koru::door;
using koru::leftOut;
using koru::reified::Form;
using koru::reified_eq::post;

bool cs_EqIff(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_EqIff") || door(post("cs_EqIff", {b, Form::kFull, false}, x, y));
}
bool cs_NeqIff(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_NeqIff") || door(post("cs_NeqIff", {b, Form::kFull, true}, x, y));
}
bool cs_EqIf(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_EqIf") || door(post("cs_EqIf", {b, Form::kHalf, false}, x, y));
}
bool cs_NeqIf(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_NeqIf") || door(post("cs_NeqIf", {b, Form::kHalf, true}, x, y));
}

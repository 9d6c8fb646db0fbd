// SPDX-License-Identifier: MIT
// cs_LeIff, cs_LtIff, cs_GeIff, cs_GtIff: b <=> x + gap <= y, the gap being 0 or 1; the last two exchange operands.
// cs_LeIf, cs_LtIf, cs_GeIf, cs_GtIf: b => x + gap <= y.
// Consistency: domain, for which bounds suffice.  Cost: O(1) per event.  State: none.
// Wakes: when b is decided or a bound of x or y moves; in half when b becomes true, x rises or y falls.
// The negation of x + gap <= y is y + (1 - gap) <= x.
#include "constraints/logic/reified.h"
#include "koru_extras.h"

namespace koru::reified_order {

using reified::Form;
using reified::Outcome;

struct Order {
  CSint *lower;
  CSint *upper;
  int gap;

  Order negation() const { return {upper, lower, 1 - gap}; }
  bool impossible() const { return lower == upper ? gap > 0 : std::int64_t{lower->min} + gap > upper->max; }
  bool narrow() const {
    if (lower == upper) return gap <= 0;
    if (!narrowMax64(lower, std::int64_t{upper->max} - gap)) return false;
    return narrowMin64(upper, std::int64_t{lower->min} + gap);
  }

  Outcome outcome() const {
    return impossible() ? Outcome::kFails : negation().impossible() ? Outcome::kHolds : Outcome::kOpen;
  }
  bool impose(bool holds) const { return holds ? narrow() : negation().narrow(); }
  bool follow(bool holds) const { return impose(holds); }
};

static bool post(const Poster &poster, CSint *b, Form form, const Order &order) {
  if (b == nullptr || order.lower == nullptr || order.upper == nullptr) return false;
  const bool half = form == Form::kHalf;
  return reified::post(poster, reified::kBoundsTable<Order>, {b, form}, order,
                       {order.lower, half ? events(kNewMin, kMinBound, kBound) : kHearsAnything},
                       {order.upper, half ? events(kNewMax, kMaxBound, kBound) : kHearsAnything});
}

}  // namespace koru::reified_order

using koru::door;
using koru::leftOut;
using koru::reified::Form;
using koru::reified_order::post;

bool cs_LeIff(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_LeIff") || door(post("cs_LeIff", b, Form::kFull, {x, y, 0}));
}
bool cs_LtIff(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_LtIff") || door(post("cs_LtIff", b, Form::kFull, {x, y, 1}));
}
bool cs_GeIff(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_GeIff") || door(post("cs_GeIff", b, Form::kFull, {y, x, 0}));
}
bool cs_GtIff(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_GtIff") || door(post("cs_GtIff", b, Form::kFull, {y, x, 1}));
}
bool cs_LeIf(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_LeIf") || door(post("cs_LeIf", b, Form::kHalf, {x, y, 0}));
}
bool cs_LtIf(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_LtIf") || door(post("cs_LtIf", b, Form::kHalf, {x, y, 1}));
}
bool cs_GeIf(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_GeIf") || door(post("cs_GeIf", b, Form::kHalf, {y, x, 0}));
}
bool cs_GtIf(CSint *b, CSint *x, CSint *y) {
  return leftOut("cs_GtIf") || door(post("cs_GtIf", b, Form::kHalf, {y, x, 1}));
}

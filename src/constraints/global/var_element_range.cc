// SPDX-License-Identifier: MIT
// cs_VarElementRange: value = vars[index] for a new variable value, an interval at first.
// Consistency: bounds.  Cost: O(1) for an event that the suppliers survive, else a walk over the index.
// State: the positions that supply the bounds of the result, not trailed: they are looked at again before they count.
// Wakes: on the index by every event, on the result and the variables when a bound moves or they are bound.
// Deliberate: a bound index aligns bounds only; a hole in the result or the selected variable is met when one of them
// is bound to it. Nor are inner values heard that a variable loses after the result was bound to one: its position
// stays until it is selected, which then fails.
// Deliberate: a moved bound of a variable renews the supplier of that side alone.
#include "constraints/global/var_element.h"

namespace koru::var_element {

struct Suppliers {
  int low;
  int high;
};

struct Range : Selection {
  Shared<Suppliers> owner;

  Suppliers &suppliers() const { return *owner.get(); }
};

struct RangeOnIndex : Range {};
struct RangeOnValue : Range {};
struct RangeOnVars : Range {};

// ----- rules

static bool isCovered(const Range &c) {
  const Suppliers &from = c.suppliers();
  return c.vars[from.low]->min <= c.value->min && c.vars[from.high]->max >= c.value->max;
}

static bool meets(const CSint *v, const CSint *value) { return v->min <= value->max && v->max >= value->min; }

// The result keeps to what can be selected; nothing can when only positions outside the array are left.
static bool refreshMin(const Range &c, const Extremes &extremes) {
  if (extremes.lowAt == kNoPosition || !narrowMin(c.value, extremes.low)) return false;
  c.suppliers().low = extremes.lowAt;
  return true;
}

static bool refreshMax(const Range &c, const Extremes &extremes) {
  if (extremes.highAt == kNoPosition || !narrowMax(c.value, extremes.high)) return false;
  c.suppliers().high = extremes.highAt;
  return true;
}

// Both bounds move before either supplier is noted: when the second cannot, the first is as it was.
static bool refresh(const Range &c) {
  const Extremes extremes = extremesOf(c);
  if (extremes.lowAt == kNoPosition || !narrowMin(c.value, extremes.low) || !narrowMax(c.value, extremes.high))
    return false;
  c.suppliers() = {extremes.lowAt, extremes.highAt};
  return true;
}

// Takes the positions from the index whose variable is not kept.
template <class Keeps>
static bool filterPositions(const Range &c, Keeps keeps) {
  return forEachPosition(c, [&](int i) { return keeps(c.vars[i]) || removeValue(c.index, i); });
}

// ----- handlers on the index

// The bounds of the result hold while both suppliers are left and still reach them.
template <class IsLeft>
static bool checkSuppliers(const Range &c, IsLeft isLeft) {
  return (isLeft(c.suppliers().low) && isLeft(c.suppliers().high) && isCovered(c)) || refresh(c);
}

static bool indexNewMin(RangeOnIndex &c, const Event &e) {
  return checkSuppliers(c, [&](int position) { return position >= e.newValue; });
}

static bool indexNewMax(RangeOnIndex &c, const Event &e) {
  return checkSuppliers(c, [&](int position) { return position <= e.newValue; });
}

static bool indexRemoved(RangeOnIndex &c, const Event &e) {
  return checkSuppliers(c, [&](int position) { return position != e.newValue; });
}

static bool indexBound(RangeOnIndex &c, const Event &) {
  return chosen(c) != nullptr && alignBounds(chosen(c), c.value);
}

constexpr auto kRangeIndexTable = handlers<RangeOnIndex>({.newMin = on<indexNewMin>,
                                                          .newMax = on<indexNewMax>,
                                                          .minBound = on<indexBound>,
                                                          .maxBound = on<indexBound>,
                                                          .bound = on<indexBound>,
                                                          .removed = on<indexRemoved>});

// ----- handlers on the result

static bool valueMoved(RangeOnValue &c, const Event &) {
  if (isBound(c.index)) return chosen(c) != nullptr && tightenOneSide(chosen(c), c.value);
  return filterPositions(c, [&](const CSint *x) { return meets(x, c.value); });
}

static bool valueBound(RangeOnValue &c, const Event &) {
  const int v = valueOf(c.value);
  if (isBound(c.index)) return chosen(c) != nullptr && bindValue(chosen(c), v);
  return filterPositions(c, [=](const CSint *x) { return contains(x, v); });
}

constexpr auto kRangeValueTable = handlers<RangeOnValue>({.newMin = on<valueMoved>,
                                                          .newMax = on<valueMoved>,
                                                          .minBound = on<valueBound>,
                                                          .maxBound = on<valueBound>,
                                                          .bound = on<valueBound>});

// ----- handlers on the variables; e.index is the position

template <auto narrow, auto refreshBound>
static bool varMoved(RangeOnVars &c, const Event &e) {
  if (!isOpen(c, e.index)) return true;
  if (isBound(c.index)) return narrow(c.value, e.newValue);
  if (!meets(e.var, c.value) && !removeValue(c.index, e.index)) return false;
  return isCovered(c) || refreshBound(c, extremesOf(c));
}

static bool varBound(RangeOnVars &c, const Event &e) {
  const int v = valueOf(e.var);
  if (!isOpen(c, e.index)) return true;
  if (isBound(c.index)) return bindValue(c.value, v);
  if (!contains(c.value, v)) return removeValue(c.index, e.index);
  return isCovered(c) || refresh(c);
}

constexpr auto kRangeVarsTable = handlers<RangeOnVars>({.newMin = on<varMoved<narrowMin, refreshMin>>,
                                                        .newMax = on<varMoved<narrowMax, refreshMax>>,
                                                        .minBound = on<varBound>,
                                                        .maxBound = on<varBound>,
                                                        .bound = on<varBound>});

// ----- posting

static CSint *postRange(const Poster &poster, CSint *index, CSint **vars, int n) {
  Range c{{nullptr, index, vars, n}, {}};
  if (!prepare(c)) return nullptr;
  Posting posting{poster};
  if (!posting) return nullptr;
  const Extremes extremes = extremesOf(c);
  c.value = createVariable(extremes.low, extremes.high);
  if (c.value == nullptr) return nullptr;
  c.owner = Shared<Suppliers>(1);
  if (!c.owner) return nullptr;
  c.suppliers() = {extremes.lowAt, extremes.highAt};
  return attach(posting, c, kRangeIndexTable, kRangeValueTable, kRangeVarsTable);
}

}  // namespace koru::var_element

using koru::door;
using namespace koru::var_element;

CSint *cs_VarElementRange(CSint *index, CSint **vars, int n) {
  return door(postRange("cs_VarElementRange", index, vars, n));
}

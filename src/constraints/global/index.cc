// SPDX-License-Identifier: MIT
// cs_Index: position holds the indices at which an array of variables can still take a value; vars[position] = val.
// Consistency: a position goes when its variable loses the value; the value is imposed once position is bound.
// Cost: O(1) per event, O(n) at posting.  State: none.
// Wakes: when position is bound, and at every change of a variable, on two constraints under one site.
// Deliberate: the site name is "cs_Cumulative", under which profiles count these constraints.
// Deliberate: binding another variable to the value says nothing about position: several may take the value.
// Deliberate: position's last-reported bounds are 0 and n - 1 at first, whatever its domain, since it is made from
// bits. Deliberate: the removal of val is not heard when a bound of the variable moved past it before the event came,
// nor does that bound's event tell, for val is no longer there; the position stays and fails when it is bound.
#include "core/lifetime.h"
#include "core/post.h"

namespace koru::index {

struct Record {
  CSint **vars;
  int n;
  int val;
  CSint *position;
};

struct OnPosition : Record {};
struct OnVars : Record {};

// ----- rules

// Whether a variable whose bounds lately enclosed `value` held it, as far as its holes tell.
static bool held(const CSint *v, int value) { return v->bits == nullptr || v->bits->has(value); }

// The variable at position i has lost the values from `low` to `high`.
static bool lost(const OnVars &c, const Event &e, std::int64_t low, std::int64_t high) {
  return c.val < low || c.val > high || !held(e.var, c.val) || removeIfPresent(c.position, e.index);
}

// ----- handlers

static bool positionBound(OnPosition &c, const Event &e) {
  CSint *v = c.vars[valueOf(e.var)];
  return contains(v, c.val) && bindValue(v, c.val);  // GCOVR_EXCL_BR_LINE: v has it
}

constexpr auto kPositionTable =
    handlers<OnPosition>({.minBound = on<positionBound>, .maxBound = on<positionBound>, .bound = on<positionBound>});

static bool newMin(OnVars &c, const Event &e) { return lost(c, e, e.oldValue, std::int64_t{e.newValue} - 1); }
static bool newMax(OnVars &c, const Event &e) { return lost(c, e, std::int64_t{e.newValue} + 1, e.oldValue); }

// The event holds both old bounds.
static bool bound(OnVars &c, const Event &e) { return valueOf(e.var) == c.val || lost(c, e, e.oldValue, e.newValue); }

static bool removed(OnVars &c, const Event &e) { return e.newValue != c.val || removeIfPresent(c.position, e.index); }

constexpr auto kVarsTable = handlers<OnVars>({.newMin = on<newMin>,
                                              .newMax = on<newMax>,
                                              .minBound = on<newMin>,
                                              .maxBound = on<newMax>,
                                              .bound = on<bound>,
                                              .removed = on<removed>});

// ----- posting

static CSint *createPosition(CSint *const *vars, int n, int val) {
  DomainBits *bits = DomainBits::create(0, n - 1, DomainBits::Fill::kNone);
  if (bits == nullptr) return nullptr;
  for (int i = 0; i < n; ++i)
    if (contains(vars[i], val)) bits->set(i);
  return createFromBits(bits);
}

static CSint *post(const Poster &poster, CSint **vars, int n, int val) {
  if (n < 1 || vars == nullptr || !allPresent(vars, n) || !solver::initialised) return nullptr;
  const Record record{vars, n, val, createPosition(vars, n, val)};
  if (record.position == nullptr) return nullptr;
  Posting posting{poster};
  auto onPosition = posting.add(kPositionTable, OnPosition{record});
  onPosition.attach(record.position);
  auto onVars = posting.add(kVarsTable, OnVars{record});
  for (int i = 0; i < n; ++i) onVars.attach(vars[i], i);
  return posting ? record.position : nullptr;
}

}  // namespace koru::index

using koru::door;
using namespace koru::index;

CSint *cs_Index(CSint **vars, int n, int val) { return door(post("cs_Cumulative", vars, n, val)); }

// SPDX-License-Identifier: MIT
// cs_EQIff, cs_NEQIff, cs_LEIff, cs_LTIff, cs_GEIff, cs_GTIff: b <=> x op v for an int v.
// cs_EQIf, cs_NEQIf, cs_LEIf, cs_LTIf, cs_GEIf, cs_GTIf: b => x op v.
// Consistency: domain.  Cost: O(1) per event.  State: none.
// Wakes: on every event of b and x; inner removals only for equality and difference.
// The orders compare x with a limit: x <= limit, or for cs_GE and cs_GT not.
#include "constraints/logic/reified.h"
#include "koru_extras.h"

namespace koru::reified_const {

using reified::Condition;
using reified::Form;
using reified::Outcome;

struct Equality {
  CSint *x;
  int v;

  Outcome outcome() const { return !contains(x, v) ? Outcome::kFails : isBound(x) ? Outcome::kHolds : Outcome::kOpen; }
  bool impose(bool holds) const { return holds ? contains(x, v) && bindValue(x, v) : removeValue(x, v); }
  bool follow(bool holds) const { return impose(holds); }
  bool followRemoval(bool, const Event &) const { return true; }
};

struct AtMost {
  CSint *x;
  std::int64_t limit;  // v - 1 for the smallest int is no int

  Outcome outcome() const {
    return x->min > limit ? Outcome::kFails : x->max <= limit ? Outcome::kHolds : Outcome::kOpen;
  }
  bool impose(bool holds) const { return holds ? narrowMax64(x, limit) : narrowMin64(x, limit + 1); }
  bool follow(bool holds) const { return impose(holds); }
};

static bool postEquality(const Poster &poster, const Condition &when, CSint *x, int v) {
  if (when.b == nullptr || x == nullptr) return false;
  return reified::post(poster, reified::kValuesTable<Equality>, when, Equality{x, v}, {x});
}

static bool postAtMost(const Poster &poster, const Condition &when, CSint *x, std::int64_t limit) {
  if (when.b == nullptr || x == nullptr) return false;
  return reified::post(poster, reified::kBoundsTable<AtMost>, when, AtMost{x, limit}, {x});
}

}  // namespace koru::reified_const

using koru::door;
using koru::leftOut;
using koru::reified::Form;
using namespace koru::reified_const;

bool cs_EQIff(CSint *b, CSint *x, int v) {
  return leftOut("cs_EQIff") || door(postEquality("cs_EQIff", {b, Form::kFull, false}, x, v));
}
bool cs_NEQIff(CSint *b, CSint *x, int v) {
  return leftOut("cs_NEQIff") || door(postEquality("cs_NEQIff", {b, Form::kFull, true}, x, v));
}
bool cs_LEIff(CSint *b, CSint *x, int v) {
  return leftOut("cs_LEIff") || door(postAtMost("cs_LEIff", {b, Form::kFull, false}, x, v));
}
bool cs_LTIff(CSint *b, CSint *x, int v) {
  return leftOut("cs_LTIff") || door(postAtMost("cs_LTIff", {b, Form::kFull, false}, x, std::int64_t{v} - 1));
}
bool cs_GEIff(CSint *b, CSint *x, int v) {
  return leftOut("cs_GEIff") || door(postAtMost("cs_GEIff", {b, Form::kFull, true}, x, std::int64_t{v} - 1));
}
bool cs_GTIff(CSint *b, CSint *x, int v) {
  return leftOut("cs_GTIff") || door(postAtMost("cs_GTIff", {b, Form::kFull, true}, x, v));
}

bool cs_EQIf(CSint *b, CSint *x, int v) {
  return leftOut("cs_EQIf") || door(postEquality("cs_EQIf", {b, Form::kHalf, false}, x, v));
}
bool cs_NEQIf(CSint *b, CSint *x, int v) {
  return leftOut("cs_NEQIf") || door(postEquality("cs_NEQIf", {b, Form::kHalf, true}, x, v));
}
bool cs_LEIf(CSint *b, CSint *x, int v) {
  return leftOut("cs_LEIf") || door(postAtMost("cs_LEIf", {b, Form::kHalf, false}, x, v));
}
bool cs_LTIf(CSint *b, CSint *x, int v) {
  return leftOut("cs_LTIf") || door(postAtMost("cs_LTIf", {b, Form::kHalf, false}, x, std::int64_t{v} - 1));
}
bool cs_GEIf(CSint *b, CSint *x, int v) {
  return leftOut("cs_GEIf") || door(postAtMost("cs_GEIf", {b, Form::kHalf, true}, x, std::int64_t{v} - 1));
}
bool cs_GTIf(CSint *b, CSint *x, int v) {
  return leftOut("cs_GTIf") || door(postAtMost("cs_GTIf", {b, Form::kHalf, true}, x, v));
}

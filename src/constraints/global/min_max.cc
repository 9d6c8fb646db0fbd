// SPDX-License-Identifier: MIT
// cs_Min, cs_VMin, cs_Max, cs_VMax: r = the least (greatest) of n variables.
// Consistency: on bounds, but for the two cases below; while r is bound, that one variable can take its value.
// Cost: O(n) per event on r; for the array O(1), or a scan when the witness has left r's bound.
// State: the witness, a variable whose bound kept r's where it is. It is asked again at each use, so it is not trailed.
// Wakes: when a bound moves or a variable is bound, on one constraint for r and one for the array, under one site.
// Deliberate: the far bound of r (the maximum, for the least) does not narrow the array while r is unbound, and holes
// pass nothing: which variable reaches it is open as long as two can, and is not looked for.
// Deliberate: the near bound of r follows a variable only when that one's old bound was r's own, which saves a scan at
// all other events; it stays behind when r was narrowed past it by someone else before the event came.
// Deliberate: of no variable r is the largest (smallest) int, the neutral value.
#include <algorithm>

#include "core/post.h"

namespace koru::min_max {

struct Record {
  CSint *r;
  CSint **vars;
  int n;
  Shared<CSint *> owner;  // of a copied array
};

template <class Side>
struct OnResult : Record {};
template <class Side>
struct OnVars : Record {
  int witness = 0;
};

// The least and the greatest are mirror images. The near bound is the one that r shares with the extreme variable.
struct Least {
  static constexpr bool kNearIsMin = true;
  static constexpr auto near = &CSint::min;
  static constexpr auto far = &CSint::max;
  static constexpr int kOfNone = kIntMax;
  static int extreme(int a, int b) { return a < b ? a : b; }
  static bool narrowNear(CSint *v, int bound) { return narrowMin(v, bound); }
  static bool narrowFar(CSint *v, int bound) { return narrowMax(v, bound); }
};

struct Greatest {
  static constexpr bool kNearIsMin = false;
  static constexpr auto near = &CSint::max;
  static constexpr auto far = &CSint::min;
  static constexpr int kOfNone = kIntMin;
  static int extreme(int a, int b) { return a > b ? a : b; }
  static bool narrowNear(CSint *v, int bound) { return narrowMax(v, bound); }
  static bool narrowFar(CSint *v, int bound) { return narrowMin(v, bound); }
};

// ----- rules

// The extreme of `start` and the array's bounds on one side.
template <class Side, int CSint::*bound>
static int extremeOf(const Record &c, int start) {
  int result = start;
  for (int i = 0; i < c.n; ++i) result = Side::extreme(result, c.vars[i]->*bound);
  return result;
}

static bool supported(const Record &c) {
  if (!isInstantiated(c.r)) return true;
  const int value = valueOf(c.r);
  for (int i = 0; i < c.n; ++i)
    if (contains(c.vars[i], value)) return true;
  return false;
}

template <class Side>
static bool narrowVars(const Record &c, int bound) {
  for (int i = 0; i < c.n; ++i)
    if (!Side::narrowNear(c.vars[i], bound)) return false;
  return supported(c);
}

// A variable whose near bound was r's has gone from there to `bound`. While another one is there still, r stays.
template <class Side>
static bool followNear(OnVars<Side> &c, int old, int bound) {
  const int near = c.r->*Side::near;
  if (old != near) return true;
  for (int i = 0; i < c.n; ++i) {
    const int held = c.vars[c.witness]->*Side::near;
    if (Side::extreme(held, near) == held) return true;
    bound = Side::extreme(bound, held);
    c.witness = c.witness + 1 < c.n ? c.witness + 1 : 0;
  }
  return Side::narrowNear(c.r, bound);
}

// ----- handlers on r

template <class Side>
static bool resultNear(OnResult<Side> &c, const Event &e) {
  return narrowVars<Side>(c, e.newValue);
}

template <class Side>
static bool resultFar(OnResult<Side> &c, const Event &) {
  return supported(c);
}

template <class Side>
static bool resultBound(OnResult<Side> &c, const Event &) {
  return narrowVars<Side>(c, valueOf(c.r));
}

// ----- handlers on the array

template <class Side>
static bool varNear(OnVars<Side> &c, const Event &e) {
  return followNear<Side>(c, e.oldValue, e.newValue);
}

template <class Side>
static bool varFar(OnVars<Side> &c, const Event &e) {
  return Side::narrowFar(c.r, e.newValue);
}

// The event holds both old bounds. Deliberate: either way r's minimum is narrowed before its
// maximum, for hosts see the order of events.
template <class Side>
static bool varBound(OnVars<Side> &c, const Event &e) {
  const int value = valueOf(e.var);
  if constexpr (Side::kNearIsMin)
    return followNear<Side>(c, e.oldValue, value) && narrowMax(c.r, value);
  else
    return narrowMin(c.r, value) && followNear<Side>(c, e.newValue, value);
}

// ----- tables

template <class Side, auto near, auto far, auto bound>
constexpr auto kTable = [] {
  using Kind = typename RecordOf<decltype(bound)>::Type;
  constexpr Slot<Kind> min = Side::kNearIsMin ? on<near> : on<far>;
  constexpr Slot<Kind> max = Side::kNearIsMin ? on<far> : on<near>;
  return handlers<Kind>({.newMin = min, .newMax = max, .minBound = min, .maxBound = max, .bound = on<bound>});
}();

template <class Side>
constexpr auto &kResultTable = kTable<Side, resultNear<Side>, resultFar<Side>, resultBound<Side>>;
template <class Side>
constexpr auto &kVarsTable = kTable<Side, varNear<Side>, varFar<Side>, varBound<Side>>;

// ----- posting

template <class Side>
static CSint *createResult(const Record &c) {
  const int near = extremeOf<Side, Side::near>(c, Side::kOfNone);
  const int far = extremeOf<Side, Side::far>(c, Side::kOfNone);
  return createVariable(std::min(near, far), std::max(near, far));
}

template <class Side>
static CSint *post(Posting &posting, CSint **vars, int n, const Shared<CSint *> &owner) {
  if (!posting) return nullptr;
  Record record{nullptr, vars, n, owner};
  record.r = createResult<Side>(record);
  if (record.r == nullptr) return nullptr;
  auto onResult = posting.add(kResultTable<Side>, OnResult<Side>{record});
  onResult.attach(record.r);
  auto onVars = posting.add(kVarsTable<Side>, OnVars<Side>{{record}});
  for (int i = 0; i < n; ++i) onVars.attach(vars[i]);
  return posting ? record.r : nullptr;
}

template <class Side>
static CSint *postArray(const Poster &poster, CSint **vars, int n) {
  if (n > 0 && (vars == nullptr || !allPresent(vars, n))) return nullptr;
  Posting posting{poster};
  return post<Side>(posting, vars, n, {});
}

template <class Side>
static CSint *postCopy(const Poster &poster, std::va_list arguments, int n) {
  Posting posting{poster};
  if (!posting) return nullptr;
  const Shared<CSint *> copy = copyArguments(arguments, n);
  posting.keepOnTrail(copy);
  return post<Side>(posting, copy.get(), n, copy);
}

}  // namespace koru::min_max

using koru::door;
using namespace koru::min_max;

CSint *cs_Min(CSint **vars, int n) { return door(postArray<Least>("cs_Min", vars, n)); }
CSint *cs_Max(CSint **vars, int n) { return door(postArray<Greatest>("cs_Max", vars, n)); }

CSint *cs_VMin(int n, ...) {
  std::va_list arguments;
  va_start(arguments, n);
  CSint *least = postCopy<Least>("cs_VMin", arguments, n);
  va_end(arguments);
  return door(least);
}

CSint *cs_VMax(int n, ...) {
  std::va_list arguments;
  va_start(arguments, n);
  CSint *greatest = postCopy<Greatest>("cs_VMax", arguments, n);
  va_end(arguments);
  return door(greatest);
}

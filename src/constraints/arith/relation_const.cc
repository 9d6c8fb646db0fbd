// SPDX-License-Identifier: MIT
// cs_EQ, cs_NEQ, cs_LE, cs_LT, cs_GE, cs_GT: x op v for an int v.
// Consistency: domain.  Cost: one narrowing.  State: none, nothing is posted.
// Deliberate: v - 1 and v + 1 wrap, so cs_LT(x, INT_MIN) and cs_GT(x, INT_MAX) are true and change nothing; hosts may
// count on it, and cs_minimize stops before it would ask.
// Deliberate: while profiling, a call made from inside a user-defined constraint's callback is counted under a site of
// its own, a call that changes nothing included, so that a profile shows what the callback does.
#include "core/narrow.h"
#include "core/refusal.h"
#include "core/solver.h"

namespace koru::relation_const {

static bool equal(CSint *x, int v) {
  if (isInstantiated(x) && valueOf(x) == v) return true;
  return bindValue(x, v);
}

static bool notEqual(CSint *x, int v) { return removeValue(x, v); }
static bool lessOrEqual(CSint *x, int v) { return narrowMax(x, v); }
static bool less(CSint *x, int v) { return x->max < v || narrowMax(x, wrapSub(v, 1)); }
static bool greaterOrEqual(CSint *x, int v) { return narrowMin(x, v); }
static bool greater(CSint *x, int v) { return x->min > v || narrowMin(x, wrapAdd(v, 1)); }

// The change code that is reported, read off the domain after the narrowing.
static int codeOfMax(const CSint *x, int) { return isInstantiated(x) ? kMaxBound : kNewMax; }
static int codeOfMin(const CSint *x, int) { return isInstantiated(x) ? kMinBound : kNewMin; }
static int codeOfEqual(const CSint *x, int v) { return x->max == v ? kMinBound : x->min == v ? kMaxBound : kBound; }

static int codeOfNotEqual(const CSint *x, int v) {
  if (x->count == 2) return x->max == v ? kMaxBound : x->min == v ? kMinBound : kRemoved;
  return x->max == v ? kNewMax : x->min == v ? kNewMin : kRemoved;
}

// The library may have called itself, as its searches do: the place is then that of the host's call.
static Site *siteInCallback(const Poster &poster) {
  const char *text = solver::ports.locatorText();
  const void *caller = text == nullptr ? hostCaller(poster.caller) : nullptr;
  return solver::sites.find(solver::userSite, {poster.name, caller}, text);
}

template <auto narrow, auto code>
static bool narrowProfiled(const Poster &poster, CSint *x, int v) {
  Site *site = siteInCallback(poster);
  const bool consistent = metered([&] { return narrow(x, v); });
  if (site != nullptr) solver::ports.notify(consistent, x, code(x, v), site);
  return consistent;
}

template <auto narrow, auto code>
[[gnu::cold, gnu::noinline]] static bool postClosely(const Poster &poster, CSint *x, int v) {
  if (leftOut(poster.name, poster.caller)) return true;
  if (x == nullptr) return false;
  const bool counts = solver::ports.profiling && solver::userSite != nullptr;
  return counts ? narrowProfiled<narrow, code>(poster, x, v) : narrow(x, v);
}

template <auto narrow, auto code>
static bool post(const Poster &poster, CSint *x, int v) {
  if (solver::attention) [[unlikely]]
    return postClosely<narrow, code>(poster, x, v);
  return x != nullptr && narrow(x, v);
}

}  // namespace koru::relation_const

using koru::door;
using namespace koru::relation_const;

bool cs_EQ(CSint *x, int v) { return door(post<equal, codeOfEqual>("cs_EQ", x, v)); }
bool cs_NEQ(CSint *x, int v) { return door(post<notEqual, codeOfNotEqual>("cs_NEQ", x, v)); }
bool cs_LE(CSint *x, int v) { return door(post<lessOrEqual, codeOfMax>("cs_LE", x, v)); }
bool cs_LT(CSint *x, int v) { return door(post<less, codeOfMax>("cs_LT", x, v)); }
bool cs_GE(CSint *x, int v) { return door(post<greaterOrEqual, codeOfMin>("cs_GE", x, v)); }
bool cs_GT(CSint *x, int v) { return door(post<greater, codeOfMin>("cs_GT", x, v)); }

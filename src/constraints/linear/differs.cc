// SPDX-License-Identifier: MIT
// c1 * x1 + ... + cn * xn != limit, always or while a guard asks for it.
// Consistency: domain: the last variable left loses the one value that would make it an equality.
// Cost: O(1) per event of a variable that is not watched; a watched one is replaced in a walk that goes on from where
// it stood; O(n) once only one variable is left. State: two variables that are not bound, as long as there are two. Not
// trailed: after a restore they are no worse. Wakes: when a variable is bound. Deliberate: an event of a variable that
// is not watched looks at the first watched one all the same: where a propagation has failed and nobody has restored,
// its own event may never have come.
#include "constraints/linear/bounded.h"
#include "core/post.h"

namespace koru::linear {

struct Differs {
  Shared<CSint *> vars;
  Shared<Int128> coefficients;
  int n;
  Stored<Int128> limit;
  truth::Guard guard;
  int first;
  int second;

  CSint *variable(int i) const { return vars.get()[i]; }
  bool isFree(int i) const { return !isBound(variable(i)); }
};

// Replaces the watched variable if it is bound; false when no other is left.
static bool keepWatch(const Differs &c, int &watch, int other) {
  if (c.isFree(watch)) return true;
  for (int i = watch + 1 < c.n ? watch + 1 : 0; i != watch; i = i + 1 < c.n ? i + 1 : 0) {
    if (i == other || !c.isFree(i)) continue;
    watch = i;
    return true;
  }
  return false;
}

// What the others leave for the term at `last`.
static Int128 restFor(const Differs &c, int last) {
  Int128 rest = c.limit;
  for (int i = 0; i < c.n; ++i)
    if (i != last) rest -= c.coefficients.get()[i] * c.variable(i)->min;
  return rest;
}

static bool excludeLast(const Differs &c, int last) {
  if (c.isFree(last) && !c.guard.asks()) return true;
  const Int128 rest = restFor(c, last);
  const Int128 coefficient = c.coefficients.get()[last];
  CSint *v = c.variable(last);
  if (!c.isFree(last)) return rest != coefficient * v->min || c.guard.refuse();
  const Int128 value = rest / coefficient;
  return rest % coefficient != 0 || value < v->min || value > v->max || removeValue(v, static_cast<int>(value));
}

static bool settle(Differs &c) {
  const bool firstIsFree = keepWatch(c, c.first, c.second);
  const bool secondIsFree = keepWatch(c, c.second, c.first);
  if (firstIsFree && secondIsFree && c.n > 1) return true;
  return excludeLast(c, firstIsFree ? c.first : c.second);
}

static bool becameBound(Differs &c, const Event &e) {
  if (c.guard.sleeps()) return true;
  const bool isSettled = e.index >= 0 && e.index != c.second && c.isFree(c.first);
  return isSettled || settle(c);
}

constexpr auto kTable =
    handlers<Differs>({.minBound = on<becameBound>, .maxBound = on<becameBound>, .bound = on<becameBound>});

// A guard need not be over 0..1: it may be decided while it is not bound.
constexpr auto kGuardedTable = handlers<Differs>({.newMin = on<becameBound>,
                                                  .newMax = on<becameBound>,
                                                  .minBound = on<becameBound>,
                                                  .maxBound = on<becameBound>,
                                                  .bound = on<becameBound>});

bool postDiffers(Posting &posting, const Sum &sum, const truth::Guard &guard) {
  const Differs record{sum.vars, sum.coefficients, sum.n, sum.limit, guard, 0, sum.n - 1};
  auto c = posting.add(guard.b != nullptr ? kGuardedTable : kTable, record);
  for (int i = 0; i < sum.n; ++i) c.attach(sum.vars.get()[i], i, events(kMinBound, kMaxBound, kBound));
  if (guard.b != nullptr) c.attach(guard.b, -1, guard.concerned());
  return posting && settle(*c);
}

}  // namespace koru::linear

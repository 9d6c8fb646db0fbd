// SPDX-License-Identifier: MIT
// c1 * x1 + ... + cn * xn <= limit, or = limit, always or while a guard asks for it.
// Consistency: domain for <=, for which bounds suffice; bounds over the reals, rounded inwards, for =. While the guard
// leaves it open: it is refused when the limit is out of reach (Feydy, Somogyi, Stuckey 2011).
// Cost: O(1) per event, unless a term has become wider than the sum has room for, or a context was restored or a
// propagation has failed since the last one: then O(n), for = repeated until nothing changes, but no more than 1000
// times: bounds that creep are left where they are until the next event.
// State: the bounds of the terms as they were counted, their totals, and the widest term, which may have shrunk since.
// Not trailed: a stamp tells whether they still hold, and a count of failed propagations whether events were lost. A
// bound is compared with the one counted, never taken from an event.
// Wakes: for <= when the least value of a term rises, for = when a bound moves.
// Deliberate: the pass at posting keeps no state, because its narrowings propagate at once and come back here.
#include "constraints/linear/bounded.h"

#include <algorithm>

#include "core/branch_set.h"
#include "core/post.h"
#include "core/queue.h"

namespace koru::linear {

template <class Wide>
struct Term {
  Wide coefficient;
  CSint *variable;
  int min;  // as counted
  int max;
};

template <class Wide>
struct Totals {
  Wide low = 0;
  Wide high = 0;
  Wide widest = 0;
};

constexpr BranchStamp kNever{kIntMax, 0};

// Bounds may creep: in 1000x + z = 1001y by one a round. After so many rounds they are left where they are.
constexpr int kRounds = 1000;

template <class Wide, Kind kind>
struct Bounded {
  Buffer<Term<Wide>> terms;
  int n;
  Stored<Wide> limit;
  truth::Guard guard;
  Stored<Wide> low{};
  Stored<Wide> high{};
  Stored<Wide> widest{};
  BranchStamp stamp = kNever;
  unsigned dropped = 0;

  const Term<Wide> *begin() const { return terms.get(); }
  const Term<Wide> *end() const { return terms.get() + n; }
  bool stands() const { return dropped == solver::queue.dropped && stamp.stands(); }
  void remember(const Totals<Wide> &totals) {
    low = totals.low;
    high = totals.high;
    widest = totals.widest;
    stamp = BranchStamp::now();
    dropped = solver::queue.dropped;
  }
};

// ----- totals

template <class Wide>
static void count(Totals<Wide> &totals, Term<Wide> &t) {
  t.min = t.variable->min;
  t.max = t.variable->max;
  const Wide atMin = t.coefficient * t.min;
  const Wide atMax = t.coefficient * t.max;
  totals.low += std::min(atMin, atMax);
  totals.high += std::max(atMin, atMax);
  totals.widest = std::max(totals.widest, atMin < atMax ? atMax - atMin : atMin - atMax);
}

template <class Wide, Kind kind>
static Totals<Wide> countAll(Bounded<Wide, kind> &c) {
  Totals<Wide> totals;
  for (int i = 0; i < c.n; ++i) count(totals, c.terms[i]);
  return totals;
}

// How much wider than nothing a term may be; negative when the limit is out of reach.
template <Kind kind, class Wide>
static Wide roomOf(const Totals<Wide> &totals, Wide limit) {
  const Wide below = limit - totals.low;
  return kind == Kind::kAtMost ? below : std::min<Wide>(below, totals.high - limit);
}

// ----- narrowing

template <class Wide>
static bool lowerTo(CSint *v, Wide bound) {
  return bound >= v->max || (bound >= v->min && narrowMax(v, static_cast<int>(bound)));
}

template <class Wide>
static bool raiseTo(CSint *v, Wide bound) {
  return bound <= v->min || (bound <= v->max && narrowMin(v, static_cast<int>(bound)));
}

// Keeps the ends at which the term adds much, or little, to the sum within `room` of its other end.
template <class Wide>
static bool cutMuch(const Term<Wide> &t, Wide room) {
  CSint *v = t.variable;
  if (t.coefficient > 0) return lowerTo<Wide>(v, v->min + room / t.coefficient);
  return raiseTo<Wide>(v, v->max - room / -t.coefficient);  // NOLINT(clang-analyzer-core.DivideZero): no term has 0
}

template <class Wide>
static bool cutLittle(const Term<Wide> &t, Wide room) {
  return cutMuch(Term<Wide>{-t.coefficient, t.variable, 0, 0}, room);
}

template <class Wide>
static Wide widthOf(const Term<Wide> &t) {
  return (t.coefficient < 0 ? -t.coefficient : t.coefficient) * (Wide{t.variable->max} - t.variable->min);
}

// One pass over the terms, with the totals as they were before it; the widest is that of what it leaves.
template <Kind kind, class Wide>
static bool narrowAll(const Bounded<Wide, kind> &c, Totals<Wide> &totals) {
  const Wide below = c.limit - totals.low;
  const Wide above = totals.high - c.limit;
  totals.widest = 0;
  for (int i = 0; i < c.n; ++i) {
    const Term<Wide> &t = c.terms[i];
    Wide width = widthOf(t);
    if (width > below && !cutMuch(t, below)) return false;
    if (kind == Kind::kEqual && width > above && !cutLittle(t, above)) return false;
    if (width > below || width > above) width = widthOf(t);
    totals.widest = std::max(totals.widest, width);
  }
  return true;
}

// ----- rules

enum class Step { kNone, kNarrowed, kFailed };

// Narrows the counted bounds of a term and brings the totals up to date.
template <class Wide>
static Step tighten(Term<Wide> &t, Totals<Wide> &totals, Wide limit) {
  const bool isPositive = t.coefficient > 0;
  const Wide size = isPositive ? t.coefficient : -t.coefficient;
  const Wide width = size * (Wide{t.max} - t.min);
  const Wide below = limit - totals.low;
  const Wide afterLow = std::min(width, below - below % size);
  if (below < 0) return Step::kFailed;
  if (afterLow < width)
    (isPositive ? t.max = static_cast<int>(t.min + afterLow / size)
                : t.min = static_cast<int>(t.max - afterLow / size));
  totals.high -= width - afterLow;
  const Wide above = totals.high - limit;
  const Wide afterHigh = std::min(afterLow, above - above % size);
  if (above < 0) return Step::kFailed;
  if (afterHigh < afterLow)
    (isPositive ? t.min = static_cast<int>(t.max - afterHigh / size)
                : t.max = static_cast<int>(t.min + afterHigh / size));
  totals.low += afterLow - afterHigh;
  totals.widest = std::max(totals.widest, afterHigh);
  return afterHigh < width ? Step::kNarrowed : Step::kNone;
}

template <class Wide>
static Step tightenAll(Bounded<Wide, Kind::kEqual> &c, Totals<Wide> &totals) {
  Step result = Step::kNone;
  totals.widest = 0;
  for (int i = 0; i < c.n; ++i) {
    const Step step = tighten<Wide>(c.terms[i], totals, c.limit);
    if (step == Step::kFailed) return step;
    if (step == Step::kNarrowed) result = step;
  }
  return result;
}

template <class Wide>
static bool apply(const Term<Wide> &t) {
  return narrowMin(t.variable, t.min) && narrowMax(t.variable, t.max);
}

template <class Wide>
static bool isAsCounted(const Term<Wide> &t) {
  return t.variable->min == t.min && t.variable->max == t.max;
}

// The bounds move on paper first, so that a variable changes once however long it takes.
template <class Wide>
static bool narrowToFixpoint(Bounded<Wide, Kind::kEqual> &c, Totals<Wide> totals) {
  for (bool asCounted = false; !asCounted;) {
    Step step = Step::kNarrowed;
    for (int round = 0; step == Step::kNarrowed && round < kRounds; ++round) step = tightenAll(c, totals);
    if (step == Step::kFailed || !std::all_of(c.begin(), c.end(), apply<Wide>)) return false;
    asCounted = std::all_of(c.begin(), c.end(), isAsCounted<Wide>);
    if (!asCounted) totals = countAll(c);
  }
  c.remember(totals);
  return true;
}

template <class Wide>
static bool narrowToFixpoint(Bounded<Wide, Kind::kAtMost> &c, Totals<Wide> totals) {
  if (!narrowAll<Kind::kAtMost>(c, totals)) return false;
  c.remember(totals);
  return true;
}

template <class Wide, Kind kind>
static bool recount(Bounded<Wide, kind> &c) {
  const Totals<Wide> totals = countAll(c);
  c.remember(totals);
  const Wide room = roomOf<kind, Wide>(totals, c.limit);
  if (room < 0) return c.guard.refuse();
  return totals.widest <= room || !c.guard.asks() || narrowToFixpoint(c, totals);
}

template <class Wide, Kind kind>
static bool termMoved(Bounded<Wide, kind> &c, Term<Wide> &t) {
  const CSint *v = t.variable;
  if (v->min == t.min && v->max == t.max) return true;
  Totals<Wide> now;
  Totals<Wide> counted{c.low, c.high, c.widest};
  const Wide atMin = t.coefficient * t.min;
  const Wide atMax = t.coefficient * t.max;
  count(now, t);
  counted.low += now.low - std::min(atMin, atMax);
  counted.high += now.high - std::max(atMin, atMax);
  c.remember(counted);
  const Wide room = roomOf<kind, Wide>(counted, c.limit);
  if (room < 0) return c.guard.refuse();
  return counted.widest <= room || !c.guard.asks() || recount(c);
}

// ----- handlers

template <class Wide, Kind kind>
static bool moved(Bounded<Wide, kind> &c, const Event &e) {
  if (c.guard.sleeps()) {
    c.stamp = kNever;
    return true;
  }
  if (e.index < 0 || !c.stands()) return recount(c);
  return termMoved(c, c.terms[e.index]);
}

template <class Wide, Kind kind>
constexpr auto kTable = handlers<Bounded<Wide, kind>>({.newMin = on<moved<Wide, kind>>,
                                                       .newMax = on<moved<Wide, kind>>,
                                                       .minBound = on<moved<Wide, kind>>,
                                                       .maxBound = on<moved<Wide, kind>>,
                                                       .bound = on<moved<Wide, kind>>});

// ----- posting

template <class Wide>
static Buffer<Term<Wide>> termsOf(const Sum &sum) {
  Buffer<Term<Wide>> terms(sum.n);
  for (int i = 0; terms && i < sum.n; ++i)
    terms[i] = {static_cast<Wide>(sum.coefficients.get()[i]), sum.vars.get()[i], 0, 0};
  return terms;
}

template <Kind kind, class Wide>
static std::uint8_t concerned(const Term<Wide> &t) {
  if (kind == Kind::kEqual) return kHearsAnything;
  return t.coefficient > 0 ? events(kNewMin, kMinBound, kBound) : events(kNewMax, kMaxBound, kBound);
}

template <class Wide, Kind kind>
static bool filter(Bounded<Wide, kind> &c) {
  Totals<Wide> totals = countAll(c);
  const Wide room = roomOf<kind, Wide>(totals, c.limit);
  if (room < 0) return c.guard.refuse();
  return !c.guard.asks() || totals.widest <= room || narrowAll<kind>(c, totals);
}

template <class Wide, Kind kind>
static bool post(Posting &posting, const Sum &sum, const truth::Guard &guard) {
  Buffer<Term<Wide>> terms = termsOf<Wide>(sum);
  if (!terms) return false;
  auto c = posting.add(kTable<Wide, kind>,
                       Bounded<Wide, kind>{std::move(terms), sum.n, static_cast<Wide>(sum.limit), guard});
  for (int i = 0; posting && i < sum.n; ++i) {
    const Term<Wide> &t = c->terms[i];
    c.attach(t.variable, i, concerned<kind>(t));
  }
  if (guard.b != nullptr) c.attach(guard.b, -1, guard.concerned());
  return posting && filter(*c);
}

template <class Wide>
static bool postKind(Posting &posting, const Sum &sum, const truth::Guard &guard) {
  if (sum.kind == Kind::kEqual) return post<Wide, Kind::kEqual>(posting, sum, guard);
  return post<Wide, Kind::kAtMost>(posting, sum, guard);
}

bool postBounded(Posting &posting, const Sum &sum, const truth::Guard &guard) {
  return sum.fits64() ? postKind<std::int64_t>(posting, sum, guard) : postKind<Int128>(posting, sum, guard);
}

}  // namespace koru::linear

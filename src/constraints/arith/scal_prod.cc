// SPDX-License-Identifier: MIT
// cs_ScalProd, cs_VScalProd: s = c1 * x1 + ... + cn * xn.
// Consistency: bounds over the reals; over the ints when every coefficient is 1, 0 or -1.
// Cost: O(n) per event: totals are computed anew, in 64 bits; a division only for a term whose bound moves. O(1) for an
// event since whose totals nothing has changed.
// State: none beyond a moment: totals are computed anew after any change of a domain, or where code of the host may
// have run, for the coefficients are the host's. Until then both constraints use the same ones, which halves what a
// binding takes, and no term is held against them twice.
// Wakes: when a bound moves, on one constraint for s and one for the terms, under one site.
// Deliberate: a term's binding inside its bounds moves both its bounds, and runs the terms' handler for each; n = 1 is
// no special case, for it has a coefficient.
// Deliberate: 64-bit overflow is detected at posting (CS_ERR_OVERFLOW), not guarded against later, when the totals can
// only lie between those of the posting.
#include <algorithm>
#include <cstdarg>
#include <utility>

#include "constraints/arith/weighted_totals.h"
#include "core/errors.h"
#include "core/moment.h"
#include "core/post.h"

namespace koru::scal_prod {

struct Record {
  CSint *s;
  Terms terms;
  Shared<int> coefficientOwner;
  Shared<CSint *> varOwner;
};

constexpr int kNone = -1;
constexpr int kAll = -2;

struct OnSum : Record {
  Totals latest{};
  Moment moment{};    // at which they were computed
  int unheld = kAll;  // terms that have not been held against them since: all, the one at an index, or none
};

// Its entries are taken off before that of the other one.
struct OnTerms : Record {
  OnSum *onSum;
};

// ----- totals

// Any change of a domain may change them. Inline, for it is asked at each event of a term.
[[gnu::always_inline]] static inline const Totals &totalsNow(OnSum &c) {
  if (!c.moment.lasts()) {
    computeTotals(c.terms, c.latest);
    c.moment = Moment::now();
    c.unheld = kAll;
  }
  return c.latest;
}

static std::int64_t slackOf(const Record &c, const Totals &totals) { return satSub64(totals.high, c.s->min); }
static std::int64_t roomOf(const Record &c, const Totals &totals) { return satSub64(c.s->max, totals.low); }

// ----- rules: slack >= 0 is what the high total has to spare, room >= 0 what the low total has

// A term moves exactly when it is wider than a margin, so most divisions are never made: when it leaves
// [-margin, margin], which takes one comparison. A term with the coefficient 0 never is.
static bool widerThan(const CSint *x, std::int64_t coefficient, std::int64_t margin) {
  const auto width = static_cast<std::uint64_t>(distance(x->min, x->max) * coefficient);
  const auto limit = static_cast<std::uint64_t>(margin);
  return width + limit > 2 * limit;
}

// margin / size, cut off where it is far wider than any domain, so that sums with it do not overflow.
static std::int64_t share(std::int64_t margin, std::int64_t size) {
  constexpr std::int64_t kFar = std::int64_t{1} << 40;
  return std::min(margin / size, kFar);  // cppcheck-suppress zerodivcond
}

static bool narrowLow(CSint *x, std::int64_t coefficient, std::int64_t slack) {
  if (coefficient > 0) return narrowMin64(x, x->max - share(slack, coefficient));
  return narrowMax64(x, x->min + share(slack, -coefficient));
}

static bool narrowHigh(CSint *x, std::int64_t coefficient, std::int64_t room) {
  return narrowLow(x, -coefficient, room);
}

template <class Narrow>
static bool narrowWide(const Terms &terms, int first, int end, std::int64_t margin, int skipped, Narrow narrow) {
  CSint *const *vars = terms.vars;
  const int *coefficients = terms.coefficients;
  for (int i = first; i < end; ++i) {
    CSint *x = vars[i];
    const int coefficient = coefficients[i];
    if (widerThan(x, coefficient, margin) && i != skipped && !narrow(x, coefficient)) return false;
  }
  return true;
}

// Neither fails: a term keeps the bound that it is measured from.
static bool raiseTotals(const Record &c, const Totals &totals, std::int64_t slack) {
  return totals.widest <= slack || narrowWide(c.terms, 0, c.terms.n, slack, kNone, [=](CSint *x, int coefficient) {
           return narrowLow(x, coefficient, slack);
         });
}

static bool lowerTotals(const Record &c, const Totals &totals, std::int64_t room) {
  return totals.widest <= room || narrowWide(c.terms, 0, c.terms.n, room, kNone, [=](CSint *x, int coefficient) {
           return narrowHigh(x, coefficient, room);
         });
}

// Of one that is wider than either margin. Both bounds are computed before either is applied; the minimum goes first.
static bool narrowTerm(CSint *x, std::int64_t coefficient, std::int64_t slack, std::int64_t room) {
  if (coefficient < 0) {
    std::swap(slack, room);
    coefficient = -coefficient;
  }
  const std::int64_t high = x->min + share(room, coefficient);
  if (widerThan(x, coefficient, slack) && !narrowMin64(x, x->max - share(slack, coefficient))) return false;
  return narrowMax64(x, high);
}

static bool narrowTerms(const Terms &terms, int first, int end, std::int64_t slack, std::int64_t room, int skipped) {
  return narrowWide(terms, first, end, std::min(slack, room), skipped,
                    [=](CSint *x, int coefficient) { return narrowTerm(x, coefficient, slack, room); });
}

// ----- handlers on s

static bool sumNewMin(OnSum &c, const Event &) {
  const Totals &totals = totalsNow(c);
  const std::int64_t slack = slackOf(c, totals);
  return slack >= 0 && raiseTotals(c, totals, slack);  // GCOVR_EXCL_BR_LINE: see there
}

static bool sumNewMax(OnSum &c, const Event &) {
  const Totals &totals = totalsNow(c);
  const std::int64_t room = roomOf(c, totals);
  return room >= 0 && lowerTotals(c, totals, room);  // GCOVR_EXCL_BR_LINE: see there
}

static bool sumBound(OnSum &c, const Event &e) { return sumNewMin(c, e) && sumNewMax(c, e); }

constexpr auto kSumTable = handlers<OnSum>({.newMin = on<sumNewMin>,
                                            .newMax = on<sumNewMax>,
                                            .minBound = on<sumNewMin>,
                                            .maxBound = on<sumNewMax>,
                                            .bound = on<sumBound>});

// ----- handlers on the terms

// s is no term, so the totals go on. It may have come further than asked for, so that terms may move again.
static bool narrowSum(OnSum &c, const Totals &totals) {
  const auto [low, high, widest] = totals;
  if (low <= c.s->min && high >= c.s->max) return true;
  if (!narrowMin64(c.s, low) || !narrowMax64(c.s, high)) return false;
  c.moment.goOn();
  c.unheld = kAll;
  return true;
}

// Holds all terms but one against the totals. While those last, what has been held does not move: only the term that
// was left out is still to be held.
[[gnu::noinline]] static bool holdTerms(OnSum &c, int skipped) {
  const Totals &latest = totalsNow(c);
  if (c.unheld == skipped || c.unheld == kNone) return true;
  const bool all = c.unheld == kAll;
  const int first = all ? 0 : c.unheld;
  const int end = all ? c.terms.n : c.unheld + 1;
  c.unheld = all ? skipped : kNone;
  const std::int64_t widest = latest.widest;
  const std::int64_t slack = slackOf(c, latest);
  const std::int64_t room = roomOf(c, latest);
  if (slack < 0 || room < 0 || !narrowSum(c, latest)) return false;
  return widest <= std::min(slack, room) || narrowTerms(c.terms, first, end, slack, room, skipped);
}

static bool termMoved(OnTerms &c, const Event &e) { return holdTerms(*c.onSum, e.index); }
static bool termBound(OnTerms &c, const Event &e) { return termMoved(c, e) && termMoved(c, e); }

constexpr auto kTermTable = handlers<OnTerms>({.newMin = on<termMoved>,
                                               .newMax = on<termMoved>,
                                               .minBound = on<termMoved>,
                                               .maxBound = on<termMoved>,
                                               .bound = on<termBound>});

// ----- posting

// False when a total does not fit 64 bits.
static bool addUp(const Terms &terms, Totals &totals) {
  for (int i = 0; i < terms.n; ++i) {
    const std::int64_t atMin = std::int64_t{terms.coefficients[i]} * terms.vars[i]->min;
    const std::int64_t atMax = std::int64_t{terms.coefficients[i]} * terms.vars[i]->max;
    if (!addWithin64(totals.low, atMin < atMax ? atMin : atMax) ||
        !addWithin64(totals.high, atMin < atMax ? atMax : atMin))
      return false;
  }
  return true;
}

static CSint *post(Posting &posting, Record record) {
  if (!posting) return nullptr;
  Totals totals;
  if (!addUp(record.terms, totals)) {
    reportOverflow();
    return nullptr;
  }
  record.s = createVariable(clampToInt(totals.low), clampToInt(totals.high));
  if (record.s == nullptr) return nullptr;
  auto onSum = posting.add(kSumTable, OnSum{record});
  onSum.attach(record.s);
  if (!posting) return nullptr;
  auto onTerms = posting.add(kTermTable, OnTerms{record, &*onSum});
  for (int i = 0; i < record.terms.n; ++i) onTerms.attach(record.terms.vars[i], i);
  return posting ? record.s : nullptr;
}

static CSint *postCopy(Posting &posting, const Shared<CSint *> &vars, const Shared<int> &coefficients, int n) {
  posting.keepOnTrail(vars);
  posting.keepOnTrail(coefficients);
  if (!posting || !allPresent(vars.get(), n)) return nullptr;
  return post(posting, {nullptr, {coefficients.get(), vars.get(), n}, coefficients, vars});
}

static CSint *postArrays(const Poster &poster, CSint **vars, const int *coefficients, int n) {
  if (n < 1) return createVariable(0, 0);
  if (vars == nullptr || coefficients == nullptr || !allPresent(vars, n)) return nullptr;
  Posting posting{poster};
  return post(posting, {nullptr, {coefficients, vars, n}, {}, {}});
}

static CSint *postArguments(const Poster &poster, std::va_list arguments, int n) {
  if (n < 1) return createVariable(0, 0);
  Posting posting{poster};
  if (!posting) return nullptr;
  const Shared<CSint *> vars(n);
  if (!vars) return nullptr;
  const Shared<int> coefficients(n);
  if (!coefficients) return nullptr;
  for (int i = 0; i < n; ++i) vars.get()[i] = va_arg(arguments, CSint *);
  for (int i = 0; i < n; ++i) coefficients.get()[i] = va_arg(arguments, int);
  return postCopy(posting, vars, coefficients, n);
}

}  // namespace koru::scal_prod

using koru::door;
using namespace koru::scal_prod;

CSint *cs_ScalProd(CSint **vars, int *coeffs, int n) { return door(postArrays("cs_ScalProd", vars, coeffs, n)); }

CSint *cs_VScalProd(int n, ...) {
  std::va_list arguments;
  va_start(arguments, n);
  CSint *sum = postArguments("cs_VScalProd", arguments, n);
  va_end(arguments);
  return door(sum);
}

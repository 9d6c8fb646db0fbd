// SPDX-License-Identifier: MIT
// cs_ScalProd, cs_VScalProd: s = c1 * x1 + ... + cn * xn.
// Consistency: bounds over the reals; over the ints when every coefficient is 1, 0 or -1.
// Cost: O(n) per event: totals are computed anew, in 64 bits; a division only for a term whose bound moves. O(1) for an
// event since whose totals nothing has changed.
// State: none beyond a moment: totals are computed anew after any change of a domain, or where code of the host may
// have run, for the coefficients are the host's. Until then both constraints use the same ones, which halves what a
// binding takes.
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
  const int *coefficients;
  CSint **vars;
  int n;
  Shared<int> coefficientOwner;
  Shared<CSint *> varOwner;
};

struct OnSum : Record {
  Totals latest{};
  Moment moment{};  // at which they were computed
};

// Its entries are taken off before that of the other one.
struct OnTerms : Record {
  OnSum *onSum;
};

// ----- totals

static Terms termsOf(const Record &c) { return {c.coefficients, c.vars, c.n}; }

static Totals totalsNow(OnSum &c) {
  if (!c.moment.lasts()) {
    c.latest = totalsOf(termsOf(c));
    c.moment = Moment::now();
  }
  return c.latest;
}

static std::int64_t slackOf(const Record &c, const Totals &totals) { return satSub64(totals.high, c.s->min); }
static std::int64_t excessOf(const Record &c, const Totals &totals) { return satSub64(totals.low, c.s->max); }

// ----- rules: slack >= 0 is what the high total has to spare, -excess >= 0 what the low total has

// margin / coefficient, cut off where it is far wider than any domain, so that sums with it do not overflow. A term
// with the coefficient 0 is never wider than a margin and does not come here.
static std::int64_t share(std::int64_t margin, std::int64_t coefficient) {
  constexpr std::int64_t kFar = std::int64_t{1} << 40;
  const std::int64_t quotient = margin / coefficient;  // cppcheck-suppress zerodivcond
  return quotient > kFar ? kFar : quotient < -kFar ? -kFar : quotient;
}

static bool narrowLow(CSint *x, std::int64_t coefficient, std::int64_t slack) {
  if (coefficient > 0) return narrowMin64(x, x->max - share(slack, coefficient));
  return narrowMax64(x, x->min - share(slack, coefficient));
}

static bool narrowHigh(CSint *x, std::int64_t coefficient, std::int64_t excess) {
  return narrowLow(x, -coefficient, -excess);
}

// A term moves exactly when it is wider than the margin, so most divisions are never made.
static bool widerThan(const CSint *x, std::int64_t coefficient, std::int64_t margin) {
  const std::int64_t width = (std::int64_t{x->max} - x->min) * coefficient;
  return (width < 0 ? -width : width) > margin;
}

constexpr int kNone = -1;

template <class Narrow>
static bool narrowWide(const Record &c, const Totals &totals, std::int64_t margin, int skipped, Narrow narrow) {
  if (totals.widest <= margin) return true;
  for (int i = 0; i < c.n; ++i) {
    CSint *x = c.vars[i];
    const int coefficient = c.coefficients[i];
    if (i != skipped && widerThan(x, coefficient, margin) && !narrow(x, coefficient)) return false;
  }
  return true;
}

// Neither fails: a term keeps the bound that it is measured from.
static bool raiseTotals(const Record &c, const Totals &totals, std::int64_t slack) {
  return narrowWide(c, totals, slack, kNone,
                    [=](CSint *x, int coefficient) { return narrowLow(x, coefficient, slack); });
}

static bool lowerTotals(const Record &c, const Totals &totals, std::int64_t excess) {
  return narrowWide(c, totals, -excess, kNone,
                    [=](CSint *x, int coefficient) { return narrowHigh(x, coefficient, excess); });
}

// Both bounds are computed before either is applied; the minimum goes first.
static bool narrowTerm(CSint *x, std::int64_t coefficient, std::int64_t slack, std::int64_t excess) {
  if (coefficient < 0) std::swap(slack, excess);
  const std::int64_t low = x->max - share(slack, coefficient);
  const std::int64_t high = x->min - share(excess, coefficient);
  return narrowMin64(x, low) && narrowMax64(x, high);
}

static bool narrowTerms(const Record &c, const Totals &totals, std::int64_t slack, std::int64_t excess, int skipped) {
  return narrowWide(c, totals, std::min(slack, -excess), skipped,
                    [=](CSint *x, int coefficient) { return narrowTerm(x, coefficient, slack, excess); });
}

// ----- handlers on s

static bool sumNewMin(OnSum &c, const Event &) {
  const Totals totals = totalsNow(c);
  const std::int64_t slack = slackOf(c, totals);
  return slack >= 0 && raiseTotals(c, totals, slack);  // GCOVR_EXCL_BR_LINE: see there
}

static bool sumNewMax(OnSum &c, const Event &) {
  const Totals totals = totalsNow(c);
  const std::int64_t excess = excessOf(c, totals);
  return excess <= 0 && lowerTotals(c, totals, excess);  // GCOVR_EXCL_BR_LINE: see there
}

static bool sumBound(OnSum &c, const Event &e) { return sumNewMin(c, e) && sumNewMax(c, e); }

constexpr auto kSumTable = handlers<OnSum>({.newMin = on<sumNewMin>,
                                            .newMax = on<sumNewMax>,
                                            .minBound = on<sumNewMin>,
                                            .maxBound = on<sumNewMax>,
                                            .bound = on<sumBound>});

// ----- handlers on the terms

static bool termMoved(OnTerms &c, const Event &e) {
  const Totals totals = totalsNow(*c.onSum);
  const std::int64_t slack = slackOf(c, totals);
  const std::int64_t excess = excessOf(c, totals);
  if (slack < 0 || excess > 0 || !narrowMin64(c.s, totals.low) || !narrowMax64(c.s, totals.high)) return false;
  c.onSum->moment.goOn();  // s is no term
  return narrowTerms(c, totals, slack, excess, e.index);
}

static bool termBound(OnTerms &c, const Event &e) { return termMoved(c, e) && termMoved(c, e); }

constexpr auto kTermTable = handlers<OnTerms>({.newMin = on<termMoved>,
                                               .newMax = on<termMoved>,
                                               .minBound = on<termMoved>,
                                               .maxBound = on<termMoved>,
                                               .bound = on<termBound>});

// ----- posting

static bool totalsOverflow(const Record &c) {
  std::int64_t low = 0;
  std::int64_t high = 0;
  for (int i = 0; i < c.n; ++i) {
    const std::int64_t atMin = std::int64_t{c.coefficients[i]} * c.vars[i]->min;
    const std::int64_t atMax = std::int64_t{c.coefficients[i]} * c.vars[i]->max;
    if (!addWithin64(low, atMin < atMax ? atMin : atMax) || !addWithin64(high, atMin < atMax ? atMax : atMin))
      return true;
  }
  return false;
}

static CSint *post(Posting &posting, Record record) {
  if (!posting) return nullptr;
  if (totalsOverflow(record)) {
    reportOverflow();
    return nullptr;
  }
  const Totals totals = totalsOf(termsOf(record));
  record.s = createVariable(clampToInt(totals.low), clampToInt(totals.high));
  if (record.s == nullptr) return nullptr;
  auto onSum = posting.add(kSumTable, OnSum{record});
  onSum.attach(record.s);
  if (!posting) return nullptr;
  auto onTerms = posting.add(kTermTable, OnTerms{record, &*onSum});
  for (int i = 0; i < record.n; ++i) onTerms.attach(record.vars[i], i);
  return posting ? record.s : nullptr;
}

static CSint *postCopy(Posting &posting, const Shared<CSint *> &vars, const Shared<int> &coefficients, int n) {
  posting.keepOnTrail(vars);
  posting.keepOnTrail(coefficients);
  if (!posting || !allPresent(vars.get(), n)) return nullptr;
  return post(posting, {nullptr, coefficients.get(), vars.get(), n, coefficients, vars});
}

static CSint *postArrays(const Poster &poster, CSint **vars, const int *coefficients, int n) {
  if (n < 1) return createVariable(0, 0);
  if (vars == nullptr || coefficients == nullptr || !allPresent(vars, n)) return nullptr;
  Posting posting{poster};
  return post(posting, {nullptr, coefficients, vars, n, {}, {}});
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

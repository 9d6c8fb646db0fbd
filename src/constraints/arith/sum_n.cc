// SPDX-License-Identifier: MIT
// cs_Sigma, cs_VAdd, cs_VSub: s = a1 + ... + an.
// Consistency: bounds.  Cost: O(n) per event: totals are computed anew, in 64 bits.  State: none.
// Wakes: when a bound moves, on one constraint for s and one for the addends, under one site.
// Deliberate: totals must reflect changes whose events are still queued, so none are kept from event to event.
// Deliberate: the site name of cs_VAdd is "cs_Vadd", which is how profiles know it.
#include "constraints/arith/sum_n.h"

#include "constraints/arith/sum.h"

namespace koru::sum_n {

struct Record {
  CSint *s;
  CSint **addends;
  int n;
  Shared<CSint *> owner;
};

struct OnSum : Record {};
struct OnAddends : Record {};

// ----- rules

// One pass over the addends finds a total and the widest domain; where even that one cannot move, no second is made.
struct Pass {
  std::int64_t total;
  std::int64_t widest;
};

template <int CSint::*bound>
static Pass passOver(const Record &c) {
  Pass pass{0, 0};
  for (int i = 0; i < c.n; ++i) {
    const CSint *a = c.addends[i];
    const std::int64_t width = std::int64_t{a->max} - a->min;
    pass.total += a->*bound;
    if (width > pass.widest) pass.widest = width;
  }
  return pass;
}

static Pass minima(const Record &c) { return passOver<&CSint::min>(c); }
static Pass maxima(const Record &c) { return passOver<&CSint::max>(c); }

// GCOVR_EXCL_BR_START: once the totals fit, no addend is left without a value
// slack: how far the greatest total lies above s; no addend may fall further below its maximum.
static bool raiseAddends(const Record &c, std::int64_t slack, int skipped) {
  CSint *const *addends = c.addends;
  const int n = c.n;
  for (int i = 0; i < n; ++i) {
    CSint *a = addends[i];
    const std::int64_t bound = a->max - slack;
    if (bound > a->min && i != skipped && !raiseMin(a, static_cast<int>(bound))) return false;
  }
  return true;
}

// room: how far the least total lies below s; no addend may rise further above its minimum.
static bool lowerAddends(const Record &c, std::int64_t room, int skipped) {
  CSint *const *addends = c.addends;
  const int n = c.n;
  for (int i = 0; i < n; ++i) {
    CSint *a = addends[i];
    const std::int64_t bound = a->min + room;
    if (bound < a->max && i != skipped && !lowerMax(a, static_cast<int>(bound))) return false;
  }
  return true;
}

constexpr int kNone = -1;

// ----- handlers on s

static bool sumNewMin(OnSum &c, const Event &) {
  const Pass pass = maxima(c);
  const std::int64_t slack = pass.total - c.s->min;
  return slack >= 0 && (pass.widest <= slack || raiseAddends(c, slack, kNone));
}

static bool sumNewMax(OnSum &c, const Event &) {
  const Pass pass = minima(c);
  const std::int64_t room = c.s->max - pass.total;
  return room >= 0 && (pass.widest <= room || lowerAddends(c, room, kNone));
}
// GCOVR_EXCL_BR_STOP

static bool sumBound(OnSum &c, const Event &e) { return sumNewMin(c, e) && sumNewMax(c, e); }

constexpr auto kSumTable = handlers<OnSum>({.newMin = on<sumNewMin>,
                                            .newMax = on<sumNewMax>,
                                            .minBound = on<sumNewMin>,
                                            .maxBound = on<sumNewMax>,
                                            .bound = on<sumBound>});

// ----- handlers on the addends

// GCOVR_EXCL_BR_START: as above
// What is left to do when an addend has moved, in functions of their own: often nothing is, and no register is saved.
[[gnu::noinline]] static bool raiseSum(const Record &c, Pass least, std::int64_t room, int skipped) {
  return narrowMin64(c.s, least.total) && (least.widest <= room || lowerAddends(c, room, skipped));
}

[[gnu::noinline]] static bool lowerSum(const Record &c, Pass greatest, std::int64_t slack, int skipped) {
  return narrowMax64(c.s, greatest.total) && (greatest.widest <= slack || raiseAddends(c, slack, skipped));
}

static bool addendNewMin(OnAddends &c, const Event &e) {
  const Pass least = minima(c);
  const std::int64_t room = c.s->max - least.total;
  if (room < 0) return false;
  return (least.total <= c.s->min && least.widest <= room) || raiseSum(c, least, room, e.index);
}

static bool addendNewMax(OnAddends &c, const Event &e) {
  const Pass greatest = maxima(c);
  const std::int64_t slack = greatest.total - c.s->min;
  if (slack < 0) return false;
  return (greatest.total >= c.s->max && greatest.widest <= slack) || lowerSum(c, greatest, slack, e.index);
}
// GCOVR_EXCL_BR_STOP

static bool addendBound(OnAddends &c, const Event &e) { return addendNewMin(c, e) && addendNewMax(c, e); }

constexpr auto kAddendTable = handlers<OnAddends>({.newMin = on<addendNewMin>,
                                                   .newMax = on<addendNewMax>,
                                                   .minBound = on<addendNewMin>,
                                                   .maxBound = on<addendNewMax>,
                                                   .bound = on<addendBound>});

// ----- posting

CSint *post(Posting &posting, CSint **addends, int n, const Shared<CSint *> &owner) {
  if (!posting) return nullptr;
  if (n < 1) return createVariable(0, 0);
  if (n == 1) return addends[0];
  Record record{nullptr, addends, n, owner};
  record.s = createVariable(clampToInt(minima(record).total), clampToInt(maxima(record).total));
  if (record.s == nullptr) return nullptr;
  auto onSum = posting.add(kSumTable, OnSum{record});
  onSum.attach(record.s);
  auto onAddends = posting.add(kAddendTable, OnAddends{record});
  for (int i = 0; i < n; ++i) onAddends.attach(addends[i], i);
  return posting ? record.s : nullptr;
}

static CSint *postCopy(Posting &posting, const Shared<CSint *> &addends, int n) {
  posting.keepOnTrail(addends);
  return post(posting, addends.get(), n, addends);
}

static CSint *postArray(const Poster &poster, CSint **addends, int n) {
  if (n > 0 && (addends == nullptr || !allPresent(addends, n))) return nullptr;
  Posting posting{poster};
  return post(posting, addends, n, {});
}

static CSint *postArguments(const Poster &poster, std::va_list arguments, int n) {
  Posting posting{poster};
  return posting ? postCopy(posting, copyArguments(arguments, n), n) : nullptr;
}

// The first argument less the sum of the others.
static CSint *postDifference(const Poster &poster, std::va_list arguments, int n) {
  if (n < 1) return createVariable(0, 0);
  Posting posting{poster};
  if (!posting) return nullptr;
  CSint *x = va_arg(arguments, CSint *);
  CSint *total = postCopy(posting, copyArguments(arguments, n - 1), n - 1);
  return x != nullptr && total != nullptr ? sum::postDifference(posting, x, total) : nullptr;
}

}  // namespace koru::sum_n

using koru::door;
using namespace koru::sum_n;

CSint *cs_VAdd(int n, ...) {
  std::va_list arguments;
  va_start(arguments, n);
  CSint *sum = postArguments("cs_Vadd", arguments, n);
  va_end(arguments);
  return door(sum);
}

CSint *cs_VSub(int n, ...) {
  std::va_list arguments;
  va_start(arguments, n);
  CSint *difference = postDifference("cs_VSub", arguments, n);
  va_end(arguments);
  return door(difference);
}

CSint *cs_Sigma(CSint **array, int n) { return door(postArray("cs_Sigma", array, n)); }

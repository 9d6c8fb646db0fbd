// SPDX-License-Identifier: MIT
// cs_Occur, cs_OccurDomain, cs_OccurConstraints: count = how many of n variables equal an int.
// Consistency: bounds of count; the value is imposed on, or taken from, all undecided variables once the count decides.
// Cost: O(1) per event, O(undecided) when the count decides.
// State: two sets of positions, the domains of private variables: those whose variable can still take the value (P of
// them) and those not decided yet (U). P - U variables surely take it, so count lies in [P - U, P].
// Wakes: when count is bound; when an undecided variable loses the value or is bound.
// Deliberate: cs_Occur returns 0 always, since hosts call it without a look at the answer; cs_OccurConstraints tells.
// Deliberate: the last undecided position stays in both sets, because neither can be emptied; only count is narrowed.
// Deliberate: a count that is bound at posting imposes nothing before the first event, for posting narrows the count
// alone; variables decided at posting are not watched, since nothing they do changes the sets.
#include "core/domain_walk.h"
#include "core/post.h"
#include "core/private_variable.h"

namespace koru::occurrence {

// What each event looks at comes first: it shares a cache line with the head of the constraint.
struct Record {
  int val;
  int n;
  CSint *undecided;
  CSint *possible;
  CSint *count;
  CSint **vars;
  PrivateVariables sets;

  int sure() const { return possible->count - undecided->count; }
};

struct OnCount : Record {};
struct OnVars : Record {};

// ----- rules

static bool excludeRest(const Record &c) {
  return forEachValue(c.undecided, [&](int i) { return removeValue(c.vars[i], c.val); });
}

static bool bindRest(const Record &c) {
  return forEachValue(c.undecided, [&](int i) { return bindValue(c.vars[i], c.val); });
}

// Variable i can no longer take the value.
static bool drop(const Record &c, int i) {
  if (!contains(c.undecided, i)) return true;
  if (isInstantiated(c.undecided)) return narrowMax(c.count, c.possible->count - 1);
  if (!contains(c.possible, i)) return true;
  if (!removeValue(c.possible, i) || !removeValue(c.undecided, i)) return false;
  const int possible = c.possible->count;
  if (possible < c.count->min) return false;
  if (possible == c.count->min && !bindRest(c)) return false;
  return narrowMax(c.count, possible);
}

// Variable i is bound to the value.
static bool take(const Record &c, int i) {
  if (!contains(c.undecided, i)) return true;
  if (isInstantiated(c.undecided)) return narrowMin(c.count, c.possible->count);
  if (!removeValue(c.undecided, i)) return false;
  const int sure = c.sure();
  if (sure > c.count->max) return false;
  if (sure == c.count->max && !excludeRest(c)) return false;
  return narrowMin(c.count, sure);
}

// ----- handlers

static bool countBound(OnCount &c, const Event &e) {
  const int value = valueOf(e.var);
  if (c.sure() == value && !excludeRest(c)) return false;
  return c.possible->count != value || bindRest(c);
}

constexpr auto kCountTable =
    handlers<OnCount>({.minBound = on<countBound>, .maxBound = on<countBound>, .bound = on<countBound>});

static bool newMin(OnVars &c, const Event &e) { return e.oldValue > c.val || c.val >= e.newValue || drop(c, e.index); }

static bool newMax(OnVars &c, const Event &e) { return e.newValue >= c.val || c.val > e.oldValue || drop(c, e.index); }

static bool bound(OnVars &c, const Event &e) { return valueOf(e.var) == c.val ? take(c, e.index) : drop(c, e.index); }

static bool removed(OnVars &c, const Event &e) { return e.newValue != c.val || drop(c, e.index); }

constexpr auto kVarsTable = handlers<OnVars>({.newMin = on<newMin>,
                                              .newMax = on<newMax>,
                                              .minBound = on<bound>,
                                              .maxBound = on<bound>,
                                              .bound = on<bound>,
                                              .removed = on<removed>});

// ----- posting

struct Census {
  int possible = 0;
  int sure = 0;
};

static Census takeCensus(int val, CSint *const *vars, int n) {
  Census census;
  for (int i = 0; i < n; ++i) {
    if (!contains(vars[i], val)) continue;
    ++census.possible;
    if (isInstantiated(vars[i])) ++census.sure;
  }
  return census;
}

static bool isUndecided(const Record &c, int i) { return contains(c.vars[i], c.val) && !isInstantiated(c.vars[i]); }

// Neither set is emptied: some position is undecided.
static bool fillSets(Record &c) {
  if (!c.sets) return false;
  c.possible = c.sets[0];
  c.undecided = c.sets[1];
  for (const int set : {0, 1}) c.sets.init(set, 0, c.n - 1);
  for (int i = 0; i < c.n; ++i) {
    if (!contains(c.vars[i], c.val) && !removeValueNoTrail(c.possible, i)) return false;
    if (!isUndecided(c, i) && !removeValueNoTrail(c.undecided, i)) return false;
  }
  return true;
}

static bool attachAll(Posting &posting, const Record &record) {
  auto onCount = posting.add(kCountTable, OnCount{record});
  onCount.attach(record.count);
  auto onVars = posting.add(kVarsTable, OnVars{record});
  for (int i = 0; i < record.n; ++i)
    if (isUndecided(record, i)) onVars.attachKeyed(record.vars[i], i, record.val);
  return static_cast<bool>(posting);
}

static bool post(const Poster &poster, CSint *count, int val, CSint **vars, int n) {
  Posting posting{poster};
  if (!posting) return false;
  Record record{val, n, nullptr, nullptr, count, vars, PrivateVariables(2)};
  return fillSets(record) && attachAll(posting, record);
}

static bool acceptable(CSint *const *vars, int n) { return n < 1 || (vars != nullptr && allPresent(vars, n)); }

static bool constrain(const Poster &poster, CSint *count, int val, CSint **vars, int n) {
  if (count == nullptr || !acceptable(vars, n)) return false;
  const Census census = takeCensus(val, vars, n);
  if (census.sure == census.possible) {
    const AtWork atWork;  // the door answers for it
    return cs_EQ(count, census.sure);
  }
  return post(poster, count, val, vars, n) && narrowMin(count, census.sure) && narrowMax(count, census.possible);
}

static CSint *countOf(const Poster &poster, int val, CSint **vars, int n) {
  if (!acceptable(vars, n)) return nullptr;
  const Census census = takeCensus(val, vars, n);
  CSint *count = createVariable(census.sure, census.possible);
  if (count == nullptr || census.sure == census.possible) return count;
  return post(poster, count, val, vars, n) ? count : nullptr;
}

}  // namespace koru::occurrence

using koru::door;
using koru::leftOut;
using namespace koru::occurrence;

int cs_Occur(CSint *count, int val, CSint **vars, int n) {
  if (!leftOut("cs_Occur")) door(constrain("cs_Occur", count, val, vars, n));
  return 0;
}

CSint *cs_OccurDomain(int val, CSint **vars, int n) { return door(countOf("cs_OccurDomain", val, vars, n)); }

bool cs_OccurConstraints(CSint *count, int val, CSint **vars, int n) {
  return leftOut("cs_OccurConstraints") || door(constrain("cs_OccurConstraints", count, val, vars, n));
}

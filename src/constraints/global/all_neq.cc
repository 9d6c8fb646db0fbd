// SPDX-License-Identifier: MIT
// cs_AllNeq: all variables of an array take different values.
// Consistency: value elimination, and a pigeonhole test on the span of all bounds; no Hall intervals, no matching.
// Cost: O(n) when a variable is bound, O(1) or a scan when a bound of a witness moves; another witness takes a step for
// each constraint of the two variables that is newer than this one.
// State: two witnesses, variables whose bounds alone span enough values. They are not trailed: backtracking only
// widens domains, so a pair that was wide enough deeper in the search still is.
// And, among more than a few, the positions whose variable has not been eliminated on this branch: the value of one
// that has been is in no other domain, so nobody else's value can be in its own, and the scan leaves it out.
// Wakes: when a bound of a witness moves or a variable is bound.
#include "core/branch_set.h"
#include "core/post.h"
#include "core/take.h"

namespace koru::all_neq {

struct AllNeq {
  CSint **vars;
  int count;
  CSint *minWitness;
  CSint *maxWitness;
  BranchSet open;
  std::uint8_t trusted = kEasy;  // traits of a domain of which a value that was found is still there
};

// Few variables are all asked for a value, also those that have been eliminated: to keep account of these takes longer,
// as nobody can foresee the jumps of that. It saves a sixth of the time of a sudoku; of twenty variables it costs 3 %.
enum class Size { kFew, kMany };
constexpr int kFew = 16;

// ----- rules

static bool wideEnough(const AllNeq &c, const CSint *low, const CSint *high) {
  return std::int64_t{high->max} - low->min + 1 >= c.count;
}

static bool isWitness(const AllNeq &c, const CSint *v) { return v == c.minWitness || v == c.maxWitness; }

// A bound that moves says nothing unless it is a witness's.
static void hearAsWitness(const AllNeq &c, CSint *v) {
  setHeard(v, headOf(c), events(kNewMin, kNewMax), isWitness(c, v));
}

static void choose(const AllNeq &c, CSint *&witness, CSint *v) {
  if (v == witness) return;
  CSint *before = std::exchange(witness, v);
  hearAsWitness(c, before);
  hearAsWitness(c, v);
}

// Deliberate: the scan takes the first pair that is wide enough and does not look for the extremes, which ends it
// early; on failure the witnesses stay, for others are no better.
static bool spanFits(AllNeq &c) {
  CSint *low = c.minWitness;
  CSint *high = c.maxWitness;
  if (wideEnough(c, low, high)) return true;
  for (int i = 0; i < c.count; ++i) {
    CSint *v = c.vars[i];
    if (low->min > v->min) low = v;
    if (high->max < v->max) high = v;
    if (wideEnough(c, low, high)) {
      choose(c, c.minWitness, low);
      choose(c, c.maxWitness, high);
      return true;
    }
  }
  return false;
}

// Who among up to 64 variables may have the value, asked of all of them before anything changes: so the jumps that the
// processor can't foresee are as many as those who have it, and two.
[[gnu::always_inline]] static inline std::uint64_t holders(CSint *const *vars, std::uint64_t positions, int value) {
  std::uint64_t held = 0;
  for (; positions != 0; positions &= positions - 1) {
    const int i = std::countr_zero(positions);
    const CSint *v = vars[i];
    held |= std::uint64_t{mayContain(v, value)} << i;
  }
  return held;
}

[[gnu::always_inline]] static inline std::uint64_t holdersAmongFew(CSint *const *vars, int count, int value) {
  std::uint64_t held = 0;
  for (int i = 0; i < count; ++i) held |= std::uint64_t{mayContain(vars[i], value)} << i;
  return held;
}

// Takes x's value from all others, x itself told by identity: where asked for, since a variable may stand twice.
static bool take(const CSint *x, CSint *v, int value) { return !contains(v, value) || v == x || removeHeld(v, value); }

static constexpr std::uint64_t maskOf(int position) { return std::uint64_t{1} << position; }

// The positions but one that are to be looked at, up to 64 at a time, as BranchSet has it.
template <Size size, class Visit>
static bool forEachWordBut(const AllNeq &c, int position, Visit visit) {
  if constexpr (size == Size::kFew) {
    return visit(0, (maskOf(c.count) - 1) & ~maskOf(position));
  } else {
    return c.open.forEachWordBut(position, visit);
  }
}

// One after the other, as whatever hears of a removal may change anything.
template <Size size>
[[gnu::noinline]] static bool eliminateAtOnce(const AllNeq &c, const CSint *x, int position) {
  return forEachWordBut<size>(c, position, [&](int first, std::uint64_t open) {
    return forEachBit(first, open, [&](int i) { return take(x, c.vars[i], valueOf(x)); });
  });
}

// Its position is left out beforehand: to meet it is a jump that the processor can't foresee. Nothing but what is done
// here happens meanwhile, so unless a variable stands twice, an easy domain that has been found to hold the value is
// not asked again; this saves a tenth of the instructions of a removal.
template <Size size>
static bool eliminateQueued(const AllNeq &c, const CSint *x, int position) {
  CSint *const *vars = c.vars;
  const int value = valueOf(x);
  const unsigned trusted = c.trusted;
  const int count = c.count;
  return forEachWordBut<size>(c, position, [=](int first, std::uint64_t open) {
    const std::uint64_t held =
        size == Size::kFew ? holdersAmongFew(vars, count, value) & open : holders(vars + first, open, value);
    const unsigned easy = canTakeEasily(64) ? trusted : 0;
    return forEachBit(first, held, [=](int i) {
      CSint *v = vars[static_cast<unsigned>(i)];
      if ((v->traits & easy) != 0) return takeEasily(v, value);
      return (v->traits & trusted) != 0 ? removeHeld(v, value) : take(x, v, value);
    });
  });
}

template <Size size>
static bool eliminate(AllNeq &c, const CSint *x, int position) {
  if constexpr (size == Size::kMany) c.open.refresh();
  if (!(changesWait() ? eliminateQueued<size>(c, x, position) : eliminateAtOnce<size>(c, x, position))) return false;
  if constexpr (size == Size::kMany) c.open.takeOut(position);
  return true;
}

// ----- handlers

// While a profiler counts them, all bounds' calls are made.
static bool newBound(AllNeq &c, const Event &e) { return !isWitness(c, e.var) || spanFits(c); }
template <Size size>
static bool bound(AllNeq &c, const Event &e) {
  return newBound(c, e) && eliminate<size>(c, e.var, e.index);
}

template <Size size>
constexpr auto kTable = handlers<AllNeq>({.newMin = on<newBound>,
                                          .newMax = on<newBound>,
                                          .minBound = on<bound<size>>,
                                          .maxBound = on<bound<size>>,
                                          .bound = on<bound<size>>});

// ----- posting

// By position here, so a variable that stands twice and is bound fails.
static bool eliminateAt(const AllNeq &c, int i) {
  const int value = valueOf(c.vars[i]);
  for (int j = 0; j < c.count; ++j)
    if (j != i && !removeValue(c.vars[j], value)) return false;
  return true;
}

static bool filter(AllNeq &c) {
  for (int i = 0; i < c.count; ++i) {
    CSint *v = c.vars[i];
    if (isBound(v) && !eliminateAt(c, i)) return false;
    if (c.minWitness->min > v->min) choose(c, c.minWitness, v);
    if (c.maxWitness->max < v->max) choose(c, c.maxWitness, v);
  }
  return wideEnough(c, c.minWitness, c.maxWitness);
}

// By its newest entry, while the constraint is posted.
static bool isAttached(const AllNeq &c, const CSint *v) {
  return v->constraints != nullptr && v->constraints->constraint->record() == &c;
}

static int post(const Poster &poster, CSint **vars, int count) {
  if (count <= 0) return 1;
  if (vars == nullptr || !allPresent(vars, count)) return 0;
  Posting posting{poster};
  if (!posting) return 0;
  const bool few = count <= kFew;
  BranchSet open = few ? BranchSet() : BranchSet(count);
  if (!few && !open) return 0;
  auto c = posting.add(few ? kTable<Size::kFew> : kTable<Size::kMany>,
                       AllNeq{vars, count, vars[0], vars[count - 1], std::move(open)});
  for (int i = 0; i < count; ++i) {
    if (posting && isAttached(*c, vars[i])) c->trusted = 0;
    c.attach(vars[i], i);
    if (posting && !isWitness(*c, vars[i])) hearAsWitness(*c, vars[i]);
  }
  return posting && filter(*c) ? 1 : 0;
}

}  // namespace koru::all_neq

using koru::door;
using koru::leftOut;
using namespace koru::all_neq;

int cs_AllNeq(CSint **vars, int count) { return leftOut("cs_AllNeq") || door(post("cs_AllNeq", vars, count)); }

// SPDX-License-Identifier: MIT
// cs_Add, cs_Sub: s = a + b. z = x + y is {z, x, y}; z = x - y is {x, z, y}.
// Consistency: bounds; an inner value that is removed passes between two of the variables while the third is bound.
// Cost: O(1) per event; posting O(1), or O(d) to copy the holes of an operand d wide.  State: none.
// Wakes: on every event.
// Deliberate: a bound result is a constant and nothing is posted; operands are not narrowed at posting, since
// the result is made with what they allow; with both unbound it is an interval even when they have holes, which would
// take all pairs to find.
// Deliberate: bounds saturate at the int range, except that max s - min a (and min b) wraps; the two differ
// only where the difference is no int.
#include "constraints/arith/sum.h"

#include "core/follow.h"

namespace koru::sum {

struct Sum {
  CSint *s;
  CSint *a;
  CSint *b;
};

// ----- rules

static bool raiseS(Sum &c) { return narrowMin(c.s, satAdd(c.a->min, c.b->min)); }
static bool lowerS(Sum &c) { return narrowMax(c.s, satAdd(c.a->max, c.b->max)); }

static bool raiseOperand(const Sum &c, CSint *operand, const CSint *other) {
  return narrowMin(operand, satSub(c.s->min, other->max));
}

static bool lowerOperand(const Sum &c, CSint *operand, const CSint *other) {
  return narrowMax(operand, satSub(c.s->max, other->min));
}

static bool lowerOperandWrapping(const Sum &c, CSint *operand, const CSint *other) {
  return narrowMax(operand, wrapSub(c.s->max, other->min));
}

// One operand lost w; `other` is the other one.
static bool removedFromOperand(const Sum &c, CSint *other, int w) {
  if (isBound(c.s) && !removeIfPresent(other, satSub(valueOf(c.s), w))) return false;
  return !isBound(other) || removeIfPresent(c.s, satAdd(valueOf(other), w));
}

static bool removedFromSum(const Sum &c, int w) {
  if (isBound(c.a) && !removeIfPresent(c.b, satSub(w, valueOf(c.a)))) return false;
  return !isBound(c.b) || removeIfPresent(c.a, satSub(w, valueOf(c.b)));
}

// ----- handlers: a is tested first, so with a and b the same variable its rule runs

static bool newMin(Sum &c, const Event &e) {
  if (e.var == c.a) return raiseS(c) && lowerOperandWrapping(c, c.b, c.a);
  if (e.var == c.b) return raiseS(c) && lowerOperandWrapping(c, c.a, c.b);
  return raiseOperand(c, c.a, c.b) && raiseOperand(c, c.b, c.a);
}

static bool newMax(Sum &c, const Event &e) {
  if (e.var == c.a) return lowerS(c) && raiseOperand(c, c.b, c.a);
  if (e.var == c.b) return lowerS(c) && raiseOperand(c, c.a, c.b);
  return lowerOperand(c, c.a, c.b) && lowerOperand(c, c.b, c.a);
}

static bool bound(Sum &c, const Event &e) { return newMin(c, e) && newMax(c, e); }

static bool removed(Sum &c, const Event &e) {
  if (e.var == c.a) return removedFromOperand(c, c.b, e.newValue);
  if (e.var == c.b) return removedFromOperand(c, c.a, e.newValue);
  return removedFromSum(c, e.newValue);
}

constexpr auto kTable = handlers<Sum>({.newMin = on<newMin>,
                                       .newMax = on<newMax>,
                                       .minBound = on<newMin>,
                                       .maxBound = on<newMax>,
                                       .bound = on<bound>,
                                       .removed = on<removed>});

// ----- an operand that is a constant

// s = a + k, or s = k + b, from the two variables alone: the rules above in the same order, with what they come to for
// an operand that can't be narrowed. Saves a look at the constant and about a dozen instructions at each event.

// k was made as a constant: a variable that is merely bound may become free again under a posting that was accepted.
static bool isConstant(const CSint *v) { return v->initialMin == v->initialMax; }

struct Shift {
  CSint *s;
  CSint *x;
  int k;
};

template <bool constantFirst>
struct ShiftRules : Shift {
  static bool newMin(ShiftRules &c, const Event &e) {
    if (e.var == c.x) return narrowMin(c.s, satAdd(c.x->min, c.k)) && wrapSub(c.s->max, c.x->min) >= c.k;
    if (constantFirst && satSub(c.s->min, c.x->max) > c.k) return false;
    return narrowMin(c.x, satSub(c.s->min, c.k)) && (constantFirst || satSub(c.s->min, c.x->max) <= c.k);
  }

  static bool newMax(ShiftRules &c, const Event &e) {
    if (e.var == c.x) return narrowMax(c.s, satAdd(c.x->max, c.k)) && satSub(c.s->min, c.x->max) <= c.k;
    if (constantFirst && satSub(c.s->max, c.x->min) < c.k) return false;
    return narrowMax(c.x, satSub(c.s->max, c.k)) && (constantFirst || satSub(c.s->max, c.x->min) >= c.k);
  }

  static bool bound(ShiftRules &c, const Event &e) { return newMin(c, e) && newMax(c, e); }

  static bool removed(ShiftRules &c, const Event &e) {
    const int w = e.newValue;
    if (e.var == c.x) return (!isBound(c.s) || satSub(valueOf(c.s), w) != c.k) && removeIfPresent(c.s, satAdd(c.k, w));
    const auto leavesConstant = [&] { return !isBound(c.x) || satSub(w, valueOf(c.x)) != c.k; };
    if (!constantFirst && !leavesConstant()) return false;
    return removeIfPresent(c.x, satSub(w, c.k)) && (!constantFirst || leavesConstant());
  }
};

// The same among values so near to zero that nothing saturates or wraps: then it makes no difference whether the sum or
// an operand was made. The one variable leads, and the one that was made follows; a change that is passed on to it in
// full would come back with nothing to do.
struct Pair {
  CSint *lead;
  CSint *made;
  int shift;  // made = lead + shift
};

// Sums and differences come to the same functions, so that the processor can foresee which one is called.
template <bool constantFirst>
struct PairRules : Pair {
  static bool newMin(PairRules &c, const Event &e) {
    return (e.var == c.lead && followMin(c.made, e.var->min + c.shift)) || anyNewMin(c, e.var);
  }
  static bool newMax(PairRules &c, const Event &e) {
    return (e.var == c.lead && followMax(c.made, e.var->max + c.shift)) || anyNewMax(c, e.var);
  }
  static bool bound(PairRules &c, const Event &e) { return newMin(c, e) && newMax(c, e); }
  static bool removed(PairRules &c, const Event &e) {
    return (e.var == c.lead && followRemoved(c.made, e.newValue + c.shift)) || anyRemoved(c, e.var, e.newValue);
  }

  // In functions of their own, lest the above save registers for them.
  [[gnu::noinline]] static bool anyNewMin(PairRules &c, const CSint *changed) {
    if (changed == c.lead) return raiseMade(c.made, c.lead->min + c.shift) && c.made->max - c.lead->min >= c.shift;
    const auto reachesLead = [&] { return c.made->min - c.lead->max <= c.shift; };
    if (constantFirst && !reachesLead()) return false;
    return narrowMin(c.lead, c.made->min - c.shift) && (constantFirst || reachesLead());
  }

  [[gnu::noinline]] static bool anyNewMax(PairRules &c, const CSint *changed) {
    if (changed == c.lead) return lowerMade(c.made, c.lead->max + c.shift) && c.made->min - c.lead->max <= c.shift;
    const auto reachesLead = [&] { return c.made->max - c.lead->min >= c.shift; };
    if (constantFirst && !reachesLead()) return false;
    return narrowMax(c.lead, c.made->max - c.shift) && (constantFirst || reachesLead());
  }

  [[gnu::noinline]] static bool anyRemoved(PairRules &c, const CSint *changed, int w) {
    if (changed == c.lead)
      return (!isBound(c.made) || valueOf(c.made) - w != c.shift) && removeFromMade(c.made, w + c.shift);
    const auto leavesShift = [&] { return !isBound(c.lead) || w - valueOf(c.lead) != c.shift; };
    if (!constantFirst && !leavesShift()) return false;
    return removeIfPresent(c.lead, w - c.shift) && (!constantFirst || leavesShift());
  }

  static bool raiseMade(CSint *made, int bound) {
    return bound <= made->min || (bound <= made->max && raiseMinByMaker(made, bound));
  }
  static bool lowerMade(CSint *made, int bound) {
    return bound >= made->max || (bound >= made->min && lowerMaxByMaker(made, bound));
  }
  static bool removeFromMade(CSint *made, int w) { return !contains(made, w) || removeHeldByMaker(made, w); }
};

template <class Rules>
constexpr auto kShiftTable = handlers<Rules>({.newMin = on<Rules::newMin>,
                                              .newMax = on<Rules::newMax>,
                                              .minBound = on<Rules::newMin>,
                                              .maxBound = on<Rules::newMax>,
                                              .bound = on<Rules::bound>,
                                              .removed = on<Rules::removed>});

// ----- posting

// Gives z the holes of v, value w becoming shifted(w). Only what falls strictly between z's bounds is a hole there.
template <class Shift>
static bool copyHoles(CSint *z, const CSint *v, Shift shifted) {
  DomainBuilder domain(z, DomainBuilder::Start::kFull);
  if (!domain) return false;
  for (int gap = v->min; gap < v->max; gap = valueAfter(v, gap)) {
    const int end = valueAfter(v, gap);
    for (int w = gap + 1; w < end; ++w) {
      const std::int64_t hole = shifted(w);
      if (hole > z->min && hole < z->max) domain.remove(static_cast<int>(hole));
    }
  }
  return true;
}

static bool copyOperandHoles(CSint *z, const CSint *shiftedOperand, const CSint *boundOperand) {
  const std::int64_t c = valueOf(boundOperand);
  return !hasHoles(shiftedOperand) || copyHoles(z, shiftedOperand, [c](int w) { return c + w; });
}

static bool addHoles(CSint *z, const CSint *x, const CSint *y) {
  if (isBound(x)) return copyOperandHoles(z, y, x);
  return !isBound(y) || copyOperandHoles(z, x, y);
}

static bool subtractHoles(CSint *z, const CSint *x, const CSint *y) {
  if (isBound(x)) {
    const std::int64_t c = valueOf(x);
    if (hasHoles(y)) return copyHoles(z, y, [c](int w) { return c - w; });
  }
  if (!isBound(y) || !hasHoles(x)) return true;
  const std::int64_t c = valueOf(y);
  return copyHoles(z, x, [c](int w) { return w - c; });
}

template <class Record>
static CSint *attachAs(Posting &posting, const TableOf<Record> &table, Record record, CSint *z, CSint *x, CSint *y) {
  auto c = posting.add(table, record);
  c.attach(z);
  c.attach(x);
  c.attach(y);
  return posting ? z : nullptr;
}

template <class Rules>
static CSint *attachRules(Posting &posting, Rules rules, CSint *z, CSint *x, CSint *y) {
  return attachAs(posting, kShiftTable<Rules>, rules, z, x, y);
}

static CSint *attachShift(Posting &posting, const Sum &sum, CSint *z, CSint *x, CSint *y) {
  if (isConstant(sum.a)) return attachRules(posting, ShiftRules<true>{{sum.s, sum.b, sum.a->min}}, z, x, y);
  return attachRules(posting, ShiftRules<false>{{sum.s, sum.a, sum.b->min}}, z, x, y);
}

// Sums and differences of values that none of the rules above saturates or wraps.
static bool isExact(const CSint *v) {
  constexpr int kFar = 1 << 29;
  return v->initialMin > -kFar && v->initialMax < kFar;
}

// Of the three, z is the one that was made: the sum, or the operand a while b is the constant.
static CSint *attachPair(Posting &posting, const Sum &sum, CSint *z, CSint *x, CSint *y) {
  CSint *attached = nullptr;
  if (isConstant(sum.a)) {
    attached = attachRules(posting, PairRules<true>{{sum.b, z, sum.a->min}}, z, x, y);
  } else {
    const bool madeSum = z == sum.s;
    const Pair pair{madeSum ? sum.a : sum.s, z, madeSum ? sum.b->min : -sum.b->min};
    attached = attachRules(posting, PairRules<false>{pair}, z, x, y);
  }
  if (attached != nullptr) setTrait(z, kShifted, true);
  return attached;
}

static CSint *attachSum(Posting &posting, const Sum &sum, CSint *z, CSint *x, CSint *y) {
  if (!isConstant(sum.a) && !isConstant(sum.b)) return attachAs(posting, kTable, sum, z, x, y);
  if (isExact(x) && isExact(y) && isExact(z)) return attachPair(posting, sum, z, x, y);
  return attachShift(posting, sum, z, x, y);
}

static CSint *add(const Poster &poster, CSint *x, CSint *y) {
  if (x == nullptr || y == nullptr) return nullptr;
  CSint *z = createVariable(satAdd(x->min, y->min), satAdd(x->max, y->max));
  if (z == nullptr || isBound(z)) return z;
  if (!addHoles(z, x, y)) return nullptr;
  Posting posting{poster};
  return attachSum(posting, {z, x, y}, z, x, y);
}

static CSint *createDifference(const CSint *x, const CSint *y) {
  CSint *z = createVariable(satSub(x->min, y->max), satSub(x->max, y->min));
  if (z == nullptr || isBound(z)) return z;
  return subtractHoles(z, x, y) ? z : nullptr;
}

static CSint *attachDifference(Posting &posting, CSint *z, CSint *x, CSint *y) {
  if (z == nullptr || isBound(z)) return z;
  return attachSum(posting, {x, z, y}, z, x, y);
}

CSint *postDifference(Posting &posting, CSint *x, CSint *y) {
  return attachDifference(posting, createDifference(x, y), x, y);
}

static CSint *subtract(const Poster &poster, CSint *x, CSint *y) {
  if (x == nullptr || y == nullptr) return nullptr;
  CSint *z = createDifference(x, y);
  if (z == nullptr || isBound(z)) return z;
  Posting posting{poster};
  return attachDifference(posting, z, x, y);
}

}  // namespace koru::sum

using koru::door;
using namespace koru::sum;

CSint *cs_Add(CSint *x, CSint *y) { return door(add("cs_Add", x, y)); }
CSint *cs_Sub(CSint *x, CSint *y) { return door(subtract("cs_Sub", x, y)); }

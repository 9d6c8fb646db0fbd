// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Part of koru.hpp: sums and conditions said to the solver.
//
// A comparison becomes the cheapest constraint that says it: of one variable a relation with an int, which keeps
// nothing; of two with the coefficients 1 and -1 a relation of two variables; of others a linear one. What stands under
// "or" is tied in half to a truth value of its own (when that is true, it holds), what stands under "same" in full.
#pragma once

#include "expressions.hpp"

namespace koru {
inline namespace v1 {
namespace detail {

// How a statement is said: for good; when b is true; b is true exactly when it holds.
enum class Mode { post, half, full };

// A comparison in its simplest form, without < and > of an int.
struct Comparison {
  enum class Form { always, never, constant, pair, linear };
  Form form = Form::linear;
  Relation relation = Relation::eq;
  CSint *x = nullptr;
  CSint *y = nullptr;
  int value = 0;
  long long constant = 0;
  std::vector<CSint *> vars;
  std::vector<long long> coefficients;
};

KORU_APART inline bool holds(long long a, Relation relation, long long b) {
  switch (relation) {
    case Relation::eq:
      return a == b;
    case Relation::neq:
      return a != b;
    case Relation::le:
      return a <= b;
    case Relation::lt:
      return a < b;
    case Relation::ge:
      return a >= b;
    default:
      return a > b;
  }
}

KORU_APART inline Relation mirrored(Relation relation) {
  static constexpr Relation mirror[] = {Relation::eq, Relation::neq, Relation::ge,
                                        Relation::gt, Relation::le,  Relation::lt};
  return mirror[static_cast<int>(relation)];
}

inline long long floorOf(long long a, long long b) { return a / b - (a % b != 0 && (a < 0) != (b < 0) ? 1 : 0); }

// One that always holds, or never.
KORU_APART inline Comparison decided(bool always) {
  Comparison c;
  c.form = always ? Comparison::Form::always : Comparison::Form::never;
  return c;
}

// coefficient * x relation constant, for a coefficient above 0, as a relation of x and an int.
KORU_APART inline Comparison ofOne(CSint *x, long long coefficient, Relation relation, long long constant) {
  if (relation == Relation::lt || relation == Relation::ge) {  // as the opposite of the other side
    if (constant == LLONG_MIN) return decided(relation == Relation::ge);
    --constant;
  }
  const long long bound = floorOf(constant, coefficient);
  const bool equality = relation == Relation::eq || relation == Relation::neq;
  if (equality && constant % coefficient != 0) return decided(relation == Relation::neq);
  Comparison c;
  c.form = Comparison::Form::constant;
  c.x = x;
  if (equality) {
    if (bound < INT_MIN || bound > INT_MAX) return decided(relation == Relation::neq);
    c.relation = relation;
    c.value = static_cast<int>(bound);
  } else if (relation == Relation::le || relation == Relation::lt) {
    if (bound < INT_MIN || bound >= INT_MAX) return decided(bound >= INT_MAX);
    c.relation = Relation::le;
    c.value = static_cast<int>(bound);
  } else {
    if (bound < INT_MIN || bound >= INT_MAX) return decided(bound < INT_MIN);
    c.relation = Relation::ge;
    c.value = static_cast<int>(bound + 1);
  }
  return c;
}

// The terms as arrays. Few of them are gathered by variable here, in the order of writing; many by the constraint.
KORU_APART inline void gather(const State &s, const std::vector<Term> &terms, Comparison &c) {
  constexpr std::size_t few = 16;
  for (const Term &term : terms) {
    CSint *v = s.pointer(term.var);
    std::size_t at = 0;
    while (at < c.vars.size() && (c.vars[at] != v || terms.size() > few)) ++at;
    if (at == c.vars.size()) {
      c.vars.push_back(v);
      c.coefficients.push_back(0);
    }
    c.coefficients[at] = added(c.coefficients[at], term.coefficient);
  }
  for (std::size_t i = c.vars.size(); i-- > 0;) {
    if (c.coefficients[i] != 0) continue;
    c.vars.erase(c.vars.begin() + static_cast<std::ptrdiff_t>(i));
    c.coefficients.erase(c.coefficients.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

// x - y relation constant, where it is a relation of the two and nothing else.
inline bool ofPair(Comparison &c) {
  if (c.vars.size() != 2) return false;
  const bool forwards = c.coefficients[0] == 1 && c.coefficients[1] == -1;
  if (!forwards && (c.coefficients[0] != -1 || c.coefficients[1] != 1)) return false;
  Relation relation = c.relation;
  if (c.constant == -1 && relation == Relation::le)
    relation = Relation::lt;
  else if (c.constant == 1 && relation == Relation::ge)
    relation = Relation::gt;
  else if (c.constant == 1 && relation == Relation::lt)
    relation = Relation::le;
  else if (c.constant == -1 && relation == Relation::gt)
    relation = Relation::ge;
  else if (c.constant != 0)
    return false;
  c.form = Comparison::Form::pair;
  c.relation = relation;
  c.x = c.vars[forwards ? 0 : 1];
  c.y = c.vars[forwards ? 1 : 0];
  return true;
}

KORU_APART inline Comparison simplified(const State &s, const Linear &sum, Relation relation) {
  Comparison c;
  gather(s, sum.terms(), c);
  c.relation = relation;
  c.constant = multiplied(sum.constant(), -1);
  if (c.vars.empty()) return decided(holds(0, relation, c.constant));
  if (c.vars.size() == 1) {
    const long long coefficient = c.coefficients[0];
    if (coefficient > 0) return ofOne(c.vars[0], coefficient, relation, c.constant);
    return ofOne(c.vars[0], multiplied(coefficient, -1), mirrored(relation), multiplied(c.constant, -1));
  }
  ofPair(c);
  return c;
}

KORU_APART inline bool say(Mode mode, CSint *b, const Comparison &c) {
  using WithInt = bool (*)(CSint *, int);
  using TiedInt = bool (*)(CSint *, CSint *, int);
  using WithVar = bool (*)(CSint *, CSint *);
  using TiedVar = bool (*)(CSint *, CSint *, CSint *);
  static const WithInt postInt[] = {cs_EQ, cs_NEQ, cs_LE, cs_LT, cs_GE, cs_GT};
  static const TiedInt halfInt[] = {cs_EQIf, cs_NEQIf, cs_LEIf, cs_LTIf, cs_GEIf, cs_GTIf};
  static const TiedInt fullInt[] = {cs_EQIff, cs_NEQIff, cs_LEIff, cs_LTIff, cs_GEIff, cs_GTIff};
  static const WithVar postVar[] = {cs_Eq, cs_Neq, cs_Le, cs_Lt, cs_Ge, cs_Gt};
  static const TiedVar halfVar[] = {cs_EqIf, cs_NeqIf, cs_LeIf, cs_LtIf, cs_GeIf, cs_GtIf};
  static const TiedVar fullVar[] = {cs_EqIff, cs_NeqIff, cs_LeIff, cs_LtIff, cs_GeIff, cs_GtIff};

  const int relation = static_cast<int>(c.relation);
  switch (c.form) {
    case Comparison::Form::always:
      return mode != Mode::full || cs_GE(b, 1);
    case Comparison::Form::never:
      return mode != Mode::post && cs_LE(b, 0);
    case Comparison::Form::constant:
      if (mode == Mode::post) return postInt[relation](c.x, c.value);
      return (mode == Mode::half ? halfInt : fullInt)[relation](b, c.x, c.value);
    case Comparison::Form::pair:
      if (mode == Mode::post) return postVar[relation](c.x, c.y);
      return (mode == Mode::half ? halfVar : fullVar)[relation](b, c.x, c.y);
    default: {
      CSint **vars = const_cast<CSint **>(c.vars.data());  // which are read only
      const int n = sizeOf(c.vars.size());
      if (mode == Mode::post) return cs_Linear(vars, c.coefficients.data(), n, relation, c.constant);
      return (mode == Mode::half ? cs_LinearIf : cs_LinearIff)(b, vars, c.coefficients.data(), n, relation, c.constant);
    }
  }
}

// A truth value or its opposite, as clauses take them.
struct Literal {
  CSint *v;
  bool negative;
};

// Says conditions, in the order in which they are written, which is the order of attaching.
class Speaker {
 public:
  explicit Speaker(State &s) : s_(s) {}

  KORU_APART bool post(const Condition &c) {
    switch (c.kind()) {
      case Condition::Kind::all:
        return postAll(c);
      case Condition::Kind::any:
        return c.parts().size() == 2 ? postEither(c.parts()[0], c.parts()[1]) : clause(nullptr, c, Mode::half);
      case Condition::Kind::same:
        return postSame(c.parts()[0], c.parts()[1]);
      default:
        return leaf(Mode::post, nullptr, c);
    }
  }

  // The truth value of a condition as a variable over 0..1, or the variable that it is.
  CSint *truth(const Condition &c) { return positive(tied(Mode::full, c)); }

 private:
  KORU_APART bool postAll(const Condition &c) {
    for (const Condition &part : c.parts())
      if (!post(part)) return false;
    return true;
  }

  // a or b. Where a is decided by one constraint, its opposite implies b: two constraints at most, and one variable.
  KORU_APART bool postEither(const Condition &a, const Condition &b) {
    if (a.kind() == Condition::Kind::compare && b.kind() == Condition::Kind::compare) {
      const Comparison first = simplified(s_, a.sum(), a.relation());
      const Comparison second = simplified(s_, b.sum(), b.relation());
      if (bothExclude(first, second)) return cs_IfNeq(first.x, second.x, first.value, second.value);
    }
    const bool swapped = !a.leaf() || (b.kind() == Condition::Kind::truth && a.kind() != b.kind());
    const Condition &cause = swapped ? b : a;
    const Condition &effect = swapped ? a : b;
    if (!cause.leaf() || effect.kind() == Condition::Kind::truth) {
      const Literal literals[] = {tied(Mode::half, a), tied(Mode::half, b)};
      return clauseOf(nullptr, literals, 2, Mode::half);
    }
    return imply(positive(tied(Mode::full, !cause)), effect);
  }

  KORU_APART static bool bothExclude(const Comparison &a, const Comparison &b) {
    const auto excludes = [](const Comparison &c) {
      return c.form == Comparison::Form::constant && c.relation == Relation::neq;
    };
    return excludes(a) && excludes(b) && a.x != b.x;
  }

  KORU_APART bool postSame(const Condition &a, const Condition &b) {
    const bool swapped = b.kind() == Condition::Kind::truth;
    const Condition &value = swapped ? b : a;
    const Condition &other = swapped ? a : b;
    if (value.kind() == Condition::Kind::truth && other.leaf())
      return leaf(Mode::full, pointer(value), value.negated() ? !Condition(other) : other);
    const Literal x = tied(Mode::full, a);
    const Literal y = tied(Mode::full, b);
    return cs_Eq(bit(x), bit(y));
  }

  // When b is true, c holds.
  KORU_APART bool imply(CSint *b, const Condition &c) {
    if (c.leaf()) return leaf(Mode::half, b, c);
    if (c.kind() == Condition::Kind::any) return clause(b, c, Mode::half);
    if (c.kind() == Condition::Kind::same) {
      const Literal literal = tied(Mode::full, c);
      return clauseOf(b, &literal, 1, Mode::half);
    }
    for (const Condition &part : c.parts())
      if (!imply(b, part)) return false;
    return true;
  }

  KORU_APART bool leaf(Mode mode, CSint *b, const Condition &c) {
    switch (c.kind()) {
      case Condition::Kind::truth: {
        const Literal literal{pointer(c), c.negated()};
        return clauseOf(b, &literal, 1, mode);
      }
      case Condition::Kind::one_of:
        return member(mode, b, c);
      case Condition::Kind::between:
        return within(mode, b, c);
      default:
        return say(mode, b, simplified(s_, c.sum(), c.relation()));
    }
  }

  KORU_APART bool member(Mode mode, CSint *b, const Condition &c) {
    CSint *x = pointer(c);
    const std::vector<int> values = copyOf(c.values());
    const int n = sizeOf(values.size());
    const bool no = c.negated();
    if (mode == Mode::post) return (no ? cs_NotInArray : cs_InArray)(x, values.data(), n) != 0;
    if (mode == Mode::half) return (no ? cs_NotInArrayIf : cs_InArrayIf)(b, x, values.data(), n);
    return (no ? cs_NotInArrayIff : cs_InArrayIff)(b, x, values.data(), n);
  }

  KORU_APART bool within(Mode mode, CSint *b, const Condition &c) {
    CSint *x = pointer(c);
    const int lo = c.values()[0];
    const int hi = c.values()[1];
    const bool no = c.negated();
    if (mode == Mode::post) return (no ? cs_NotInInterval : cs_InInterval)(x, lo, hi) != 0;
    if (mode == Mode::half) return (no ? cs_NotInIntervalIf : cs_InIntervalIf)(b, x, lo, hi);
    return (no ? cs_NotInIntervalIff : cs_InIntervalIff)(b, x, lo, hi);
  }

  // A literal that is tied to a condition.
  KORU_APART Literal tied(Mode mode, const Condition &c) {
    if (c.kind() == Condition::Kind::truth) return {pointer(c), c.negated()};
    if (c.kind() == Condition::Kind::all && mode == Mode::full) {
      const Literal literal = tied(mode, !Condition(c));
      return {literal.v, !literal.negative};
    }
    if (c.kind() == Condition::Kind::same) {
      const Literal x = tied(Mode::full, c.parts()[0]);
      const Literal y = tied(Mode::full, c.parts()[1]);
      return {made(cs_ReifEq(bit(x), bit(y))), false};
    }
    CSint *b = s_.create(0, 1);
    if (mode == Mode::half)
      s_.check(imply(b, c));
    else
      s_.check(c.leaf() ? leaf(mode, b, c) : clause(b, c, mode));
    return {b, false};
  }

  KORU_APART bool clause(CSint *b, const Condition &any, Mode mode) {
    std::vector<Literal> literals;
    for (const Condition &part : any.parts()) literals.push_back(tied(mode, part));
    return clauseOf(b, literals.data(), literals.size(), mode);
  }

  // One of the literals holds; when b is true, or exactly then. Without b, for good.
  KORU_APART bool clauseOf(CSint *b, const Literal *literals, std::size_t n, Mode mode) {
    std::vector<CSint *> sides[2];
    for (std::vector<CSint *> &side : sides) side.reserve(n + 1);
    for (std::size_t i = 0; i < n; ++i) sides[literals[i].negative ? 1 : 0].push_back(literals[i].v);
    const int p = sizeOf(sides[0].size());
    const int q = sizeOf(sides[1].size());
    if (b == nullptr) return cs_Clause(sides[0].data(), p, sides[1].data(), q);
    return (mode == Mode::full ? cs_ClauseIff : cs_ClauseIf)(b, sides[0].data(), p, sides[1].data(), q);
  }

  // A literal as a variable that is true when it is.
  CSint *positive(Literal literal) { return literal.negative ? made(cs_ReifLE(literal.v, 0)) : literal.v; }

  // The same, over 0..1.
  KORU_APART CSint *bit(Literal literal) {
    CSint *v = positive(literal);
    return cs_getMin(v) >= 0 && cs_getMax(v) <= 1 ? v : made(cs_ReifGE(v, 1));
  }

  // What a function has made; something else, once the model has failed.
  CSint *made(CSint *v) { return s_.check(v != nullptr) ? v : s_.zero; }

  CSint *pointer(const Condition &c) { return s_.pointer(c.sum().terms()[0].var); }

  State &s_;
};

}  // namespace detail
}  // namespace v1
}  // namespace koru

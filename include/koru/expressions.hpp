// SPDX-License-Identifier: MIT
// Copyright (c) The Koru authors
//
// Part of koru.hpp: sums and conditions. Both are only written down here; posting.hpp says them to the solver.
#pragma once

#include "state.hpp"

namespace koru {
inline namespace v1 {

namespace detail {

// 64-bit arithmetic that throws rather than wrap.
inline long long added(long long a, long long b) {
  long long sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) throw std::overflow_error("koru: a sum beyond 64 bits");
  return sum;
}

inline long long multiplied(long long a, long long b) {
  long long product = 0;
  if (__builtin_mul_overflow(a, b, &product)) throw std::overflow_error("koru: a product beyond 64 bits");
  return product;
}

// An enumeration that is an int stands for it.
template <class T>
concept Integer = (std::integral<T> && !std::same_as<std::remove_cv_t<T>, bool>) ||
                  (std::is_enum_v<T> && std::convertible_to<T, long long>);

}  // namespace detail

struct Term {
  long long coefficient;
  IntVar var;
};

/// A sum of variables with 64-bit coefficients, and a constant. Made by writing it down: 2 * x + y - 3.
class Linear {
 public:
  Linear() = default;
  KORU_APART Linear(IntVar v) : terms_{{1, v}} {}
  KORU_APART Linear(const Linear &) = default;
  KORU_APART Linear(Linear &&) noexcept = default;
  Linear &operator=(const Linear &) = default;
  Linear &operator=(Linear &&) noexcept = default;
  KORU_APART ~Linear() = default;
  template <detail::Integer I>
  Linear(I constant) : constant_(static_cast<long long>(constant)) {}

  KORU_APART Linear &operator+=(const Linear &other) {
    const std::size_t n = other.terms_.size();  // other may be this one
    for (std::size_t i = 0; i < n; ++i) terms_.push_back(Term(other.terms_[i]));
    constant_ = detail::added(constant_, other.constant_);
    return *this;
  }
  KORU_APART Linear &operator-=(const Linear &other) { return *this += Linear(other) *= -1; }
  KORU_APART Linear &operator*=(long long factor) {
    for (Term &term : terms_) term.coefficient = detail::multiplied(term.coefficient, factor);
    constant_ = detail::multiplied(constant_, factor);
    return *this;
  }

  const std::vector<Term> &terms() const { return terms_; }
  long long constant() const { return constant_; }

 private:
  std::vector<Term> terms_;
  long long constant_ = 0;
};

KORU_APART inline Linear operator+(Linear a, const Linear &b) { return std::move(a += b); }
KORU_APART inline Linear operator-(Linear a, const Linear &b) { return std::move(a -= b); }
KORU_APART inline Linear operator-(Linear a) { return std::move(a *= -1); }
template <detail::Integer I>
Linear operator*(I factor, Linear a) {
  return std::move(a *= static_cast<long long>(factor));
}
template <detail::Integer I>
Linear operator*(Linear a, I factor) {
  return std::move(a *= static_cast<long long>(factor));
}

/// The sum of variables.
KORU_APART inline Linear sum(Vars vars) {
  Linear all;
  for (const IntVar &v : vars) all += v;
  return all;
}

/// weights[0] * vars[0] + weights[1] * vars[1] + ...
template <class Weights>
Linear sum(const Weights &weights, Vars vars) {
  detail::sameSize(std::size(weights), vars.size());
  Linear all;
  for (std::size_t i = 0; i < vars.size(); ++i) all += std::data(weights)[i] * Linear(vars[i]);
  return all;
}
KORU_APART inline Linear sum(std::initializer_list<long long> weights, Vars vars) {
  return sum<std::initializer_list<long long>>(weights, vars);
}

/// The comparison of a sum, or of a decision.
enum class Relation {
  eq = CS_METHOD_EQ,
  neq = CS_METHOD_NEQ,
  le = CS_METHOD_LE,
  lt = CS_METHOD_LT,
  ge = CS_METHOD_GE,
  gt = CS_METHOD_GT
};

/// What holds or does not: a comparison, a truth value, or conditions joined by &&, ||, !, >> (implies) and ==. To be
/// posted, or made a truth value by Model::reify.
class Condition {
 public:
  enum class Kind { compare, truth, one_of, between, all, any, same };

  /// Of a variable: it is true, which means 1 or more.
  KORU_APART Condition(IntVar b) : kind_(Kind::truth), sum_(b) {}
  KORU_APART Condition(const Condition &) = default;
  KORU_APART Condition(Condition &&) noexcept = default;
  KORU_APART Condition &operator=(const Condition &) = default;
  KORU_APART Condition &operator=(Condition &&) noexcept = default;
  KORU_APART ~Condition() = default;

  KORU_APART static Condition compare(const Linear &a, Relation relation, const Linear &b) {
    Condition c(Kind::compare);
    c.sum_ = a - b;
    c.relation_ = relation;
    return c;
  }
  KORU_APART static Condition member(Kind kind, IntVar x, std::vector<int> values) {
    Condition c(kind);
    c.sum_ = x;
    c.values_ = std::move(values);
    return c;
  }
  KORU_APART static Condition join(Kind kind, Condition a, Condition b) {
    Condition c(kind);
    c.take(std::move(a));
    c.take(std::move(b));
    return c;
  }
  /// All of the parts, or any: of none, the one is true and the other is false.
  KORU_APART static Condition join(Kind kind, std::vector<Condition> parts) {
    Condition c(kind);
    for (Condition &part : parts) c.take(std::move(part));
    return c;
  }

  Kind kind() const { return kind_; }
  bool negated() const { return negated_; }  ///< of a truth value and of memberships; others turn it inwards
  Relation relation() const { return relation_; }
  const Linear &sum() const { return sum_; }
  const std::vector<int> &values() const { return values_; }
  const std::vector<Condition> &parts() const { return parts_; }
  bool leaf() const { return kind_ < Kind::all; }

  KORU_APART friend Condition operator!(Condition c) {
    static constexpr Relation opposite[] = {Relation::neq, Relation::eq, Relation::gt,
                                            Relation::ge,  Relation::lt, Relation::le};
    if (c.kind_ == Kind::compare) {
      c.relation_ = opposite[static_cast<int>(c.relation_)];
    } else if (c.kind_ == Kind::all || c.kind_ == Kind::any) {
      c.kind_ = c.kind_ == Kind::all ? Kind::any : Kind::all;
      for (Condition &part : c.parts_) part = !std::move(part);
    } else if (c.kind_ == Kind::same) {
      c.parts_[0] = !std::move(c.parts_[0]);
    } else {
      c.negated_ = !c.negated_;
    }
    return c;
  }

 private:
  explicit Condition(Kind kind) : kind_(kind) {}

  void take(Condition part) {
    if (part.kind_ == kind_ && kind_ != Kind::same)
      for (Condition &inner : part.parts_) parts_.push_back(std::move(inner));
    else
      parts_.push_back(std::move(part));
  }

  Kind kind_;
  bool negated_ = false;
  Relation relation_ = Relation::eq;
  Linear sum_;
  std::vector<int> values_;
  std::vector<Condition> parts_;
};

Condition operator!(Condition c);  // for variables as well

KORU_APART inline Condition operator==(const Linear &a, const Linear &b) {
  return Condition::compare(a, Relation::eq, b);
}
KORU_APART inline Condition operator!=(const Linear &a, const Linear &b) {
  return Condition::compare(a, Relation::neq, b);
}
KORU_APART inline Condition operator<=(const Linear &a, const Linear &b) {
  return Condition::compare(a, Relation::le, b);
}
KORU_APART inline Condition operator<(const Linear &a, const Linear &b) {
  return Condition::compare(a, Relation::lt, b);
}
KORU_APART inline Condition operator>=(const Linear &a, const Linear &b) {
  return Condition::compare(a, Relation::ge, b);
}
KORU_APART inline Condition operator>(const Linear &a, const Linear &b) {
  return Condition::compare(a, Relation::gt, b);
}

KORU_APART inline Condition operator&&(const Condition &a, const Condition &b) {
  return Condition::join(Condition::Kind::all, a, b);
}
KORU_APART inline Condition operator||(const Condition &a, const Condition &b) {
  return Condition::join(Condition::Kind::any, a, b);
}
/// a implies b.
KORU_APART inline Condition operator>>(const Condition &a, const Condition &b) { return !a || b; }
/// Both hold or neither does.
KORU_APART inline Condition operator==(const Condition &a, const Condition &b) {
  return Condition::join(Condition::Kind::same, a, b);
}
/// One of the two holds.
KORU_APART inline Condition operator!=(const Condition &a, const Condition &b) { return (!a) == b; }

// Of two variables the values are compared.
KORU_APART inline Condition operator==(IntVar a, IntVar b) { return Linear(a) == Linear(b); }
KORU_APART inline Condition operator!=(IntVar a, IntVar b) { return Linear(a) != Linear(b); }

KORU_APART inline Condition all_of(std::vector<Condition> parts) {
  return Condition::join(Condition::Kind::all, std::move(parts));
}
KORU_APART inline Condition any_of(std::vector<Condition> parts) {
  return Condition::join(Condition::Kind::any, std::move(parts));
}
KORU_APART inline Condition one_of(IntVar x, std::vector<int> values) {
  return Condition::member(Condition::Kind::one_of, x, std::move(values));
}
KORU_APART inline Condition between(IntVar x, int lo, int hi) {
  return Condition::member(Condition::Kind::between, x, {lo, hi});
}

}  // namespace v1
}  // namespace koru

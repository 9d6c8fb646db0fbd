// SPDX-License-Identifier: MIT
// Names that are one variable form trees (union by first come, paths halved). Domains are kept as ends until the
// solver's variable is made; holes are imposed then.
#include "minizinc/variables.h"

#include <algorithm>
#include <climits>
#include <cstdio>

namespace koru::fzn {

namespace {

constexpr long long kUnbounded = 10'000'000;  // what an int variable without a domain ranges over, both ways

}  // namespace

bool IntSet::contains(long long value) const {
  return isRange ? low <= value && value <= high : std::binary_search(values.begin(), values.end(), value);
}

IntSet setOf(const Syntax &syntax, const Expr &e) {
  const std::span<const long long> numbers = syntax.numbersOf(e);
  if (e.kind == Kind::kRange) return {true, numbers[0], numbers[1], {}};
  if (numbers.empty()) return {};
  return {false, numbers.front(), numbers.back(), numbers};
}

Variables::Variables(const Syntax &syntax, Mistake &mistake) : s_(syntax), mistake_(mistake) {
  const std::size_t n = syntax.declarations.size();
  parent_.resize(n);
  low_.resize(n, LLONG_MIN);
  high_.resize(n, LLONG_MAX);
  made_.resize(n, nullptr);
  for (std::uint32_t i = 0; i < n; ++i) {
    parent_[i] = i;
    const Declaration &d = syntax.declarations[i];
    if (!d.isVar || d.isArray) continue;
    if (d.base == Base::kBool) narrow(i, 0, 1);
    if (d.domain.kind == Kind::kNone) continue;
    const IntSet domain = setOf(syntax, d.domain);
    narrow(i, domain.low, domain.high);
  }
  for (std::uint32_t i = 0; i < n; ++i) {
    const Declaration &d = syntax.declarations[i];
    if (!d.isVar || d.isArray || d.value.kind == Kind::kNone) continue;
    Expr self;
    self.kind = Kind::kDeclared;
    self.number = i;
    unite(self, d.value);
  }
}

// --- Names ---

std::uint32_t Variables::root(std::uint32_t variable) const {
  while (parent_[variable] != variable) {
    parent_[variable] = parent_[parent_[variable]];
    variable = parent_[variable];
  }
  return variable;
}

// Up to a literal, or the name of a variable.
Expr Variables::follow(Expr e) const {
  for (;;) {
    if (e.kind == Kind::kAccess) {
      const std::span<const Expr> access = s_.list(e.part);
      const Declaration &array = s_.declarations[static_cast<std::size_t>(access[0].number)];
      e = s_.list(array.value.part)[static_cast<std::size_t>(access[1].number - 1)];
    } else if (e.kind == Kind::kDeclared) {
      const Declaration &d = s_.declarations[static_cast<std::size_t>(e.number)];
      if (d.isVar && !d.isArray) return e;
      e = d.value;
    } else {
      return e;
    }
  }
}

Operand Variables::operand(const Expr &e) const {
  at_ = e.at;
  const Expr end = follow(e);
  if (end.kind == Kind::kInt || end.kind == Kind::kBool) return {true, end.number, 0};
  if (end.kind != Kind::kDeclared) {
    mistake_.set(e.at, "an int or a bool is expected here");
    return {};
  }
  const std::uint32_t variable = root(static_cast<std::uint32_t>(end.number));
  if (low_[variable] == high_[variable]) return {true, low_[variable], variable};
  return {false, 0, variable};
}

void Variables::unite(const Expr &x, const Expr &y) {
  const Expr a = follow(x), b = follow(y);
  const bool isVariable[] = {a.kind == Kind::kDeclared, b.kind == Kind::kDeclared};
  if (isVariable[0] && isVariable[1]) {
    const std::uint32_t first = root(static_cast<std::uint32_t>(a.number));
    const std::uint32_t second = root(static_cast<std::uint32_t>(b.number));
    const auto [top, below] = std::minmax(first, second);
    parent_[below] = top;
    return narrow(top, low_[below], high_[below]);
  }
  const Operand left = operand(x), right = operand(y);
  if (isVariable[0]) return narrow(root(static_cast<std::uint32_t>(a.number)), right.value, right.value);
  if (isVariable[1]) return narrow(root(static_cast<std::uint32_t>(b.number)), left.value, left.value);
  if (left.value != right.value) inconsistent_ = true;
}

void Variables::narrow(std::uint32_t variable, long long low, long long high) {
  low_[variable] = std::max(low_[variable], low);
  high_[variable] = std::min(high_[variable], high);
  if (low_[variable] > high_[variable]) inconsistent_ = true;
}

void Variables::settle() {
  for (std::uint32_t i = 0; i < s_.declarations.size(); ++i) {
    const Declaration &d = s_.declarations[i];
    if (!d.isVar || d.isArray || d.domain.kind != Kind::kSet) continue;
    const std::uint32_t variable = root(i);
    sets_.emplace(variable, d.domain);
    const IntSet domain = setOf(s_, d.domain);
    if (low_[variable] == high_[variable] && !domain.contains(low_[variable])) inconsistent_ = true;
  }
}

// --- The solver's variables ---

CSint *Variables::get(const Operand &o) {
  if (o.isConstant) return constant(o.value);
  if (made_[o.variable] == nullptr) made_[o.variable] = make(o.variable);
  return made_[o.variable];
}

CSint *Variables::constant(long long value) {
  if (value < INT_MIN || value > INT_MAX) {
    mistake_.set(at_, "a number beyond 32 bits, which this constraint does not take");
    return nullptr;
  }
  CSint *&made = constants_[value];
  if (made == nullptr) made = CSINT(static_cast<int>(value));
  return made;
}

CSint *Variables::make(std::uint32_t variable) {
  long long low = low_[variable], high = high_[variable];
  if (low == LLONG_MIN || high == LLONG_MAX) {
    warnOfRange(variable, "has no domain");
    low = -kUnbounded;
    high = kUnbounded;
  }
  if (low < INT_MIN || high > INT_MAX) {
    warnOfRange(variable, "has a domain beyond 32 bits");
    low = std::max<long long>(low, INT_MIN);
    high = std::min<long long>(high, INT_MAX);
  }
  CSint *made = low > high ? nullptr : cs_createCSint(static_cast<int>(low), static_cast<int>(high));
  if (made == nullptr || !imposeSets(variable, made)) inconsistent_ = true;
  ++nbMade_;
  if (s_.declarations[variable].base == Base::kBool) ++nbBools_;
  return made;
}

bool Variables::define(std::uint32_t variable, CSint *result) {
  if (result == nullptr) return false;
  made_[variable] = result;
  ++nbMade_;
  const long long low = low_[variable], high = high_[variable];
  if (low > INT_MAX || high < INT_MIN) return false;
  return (low <= INT_MIN || cs_GE(result, static_cast<int>(low))) &&
         (high >= INT_MAX || cs_LE(result, static_cast<int>(high))) && imposeSets(variable, result);
}

// Takes the gaps of the declared sets out of the domain.
bool Variables::imposeSets(std::uint32_t variable, CSint *made) {
  const auto [begin, end] = sets_.equal_range(variable);
  for (auto it = begin; it != end; ++it) {
    const std::span<const long long> values = setOf(s_, it->second).values;
    for (std::size_t i = 1; i < values.size(); ++i) {
      const long long from = std::max<long long>(values[i - 1] + 1, cs_getMin(made));
      const long long to = std::min<long long>(values[i] - 1, cs_getMax(made));
      if (from <= to && cs_NotInInterval(made, static_cast<int>(from), static_cast<int>(to)) == 0) return false;
    }
  }
  return true;
}

void Variables::warnOfRange(std::uint32_t variable, const char *why) {
  if (hasWarned_) return;
  hasWarned_ = true;
  const Declaration &d = s_.declarations[variable];
  Mistake place;
  place.set(d.at, "warning: \"" + std::string(d.name) + "\" " + why +
                      "; such variables range over -10000000..10000000, or 32 bits");
  std::fprintf(stderr, "%s\n", describe(s_, place).c_str());
}

}  // namespace koru::fzn

// SPDX-License-Identifier: MIT
// Linear relations, of ints and bools, stated or tied to a truth value. Sums are exact in 64 bits or refused.
#include <climits>

#include "minizinc/postings.h"

namespace koru::fzn {

namespace {

constexpr int kOpposite[] = {CS_METHOD_NEQ, CS_METHOD_EQ, CS_METHOD_GT, CS_METHOD_GE, CS_METHOD_LT, CS_METHOD_LE};

struct Sum {
  std::vector<long long> coefficients;
  std::vector<Operand> terms;  // none of them fixed
  long long constant = 0;      // what the terms are compared with
};

// What is fixed goes to the other side.
bool collect(const Call &call, Sum &sum) {
  const std::vector<long long> coefficients = call.constants(0);
  const std::vector<Operand> terms = call.operands(1);
  if (coefficients.size() != terms.size()) return call.refuse("there are not as many coefficients as variables");
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (coefficients[i] == 0) continue;
    if (!terms[i].isConstant) {
      sum.coefficients.push_back(coefficients[i]);
      sum.terms.push_back(terms[i]);
      continue;
    }
    long long product = 0;
    if (__builtin_mul_overflow(coefficients[i], terms[i].value, &product) ||
        __builtin_sub_overflow(sum.constant, product, &sum.constant))
      return call.refuse("the constants of this sum leave 64 bits");
  }
  return true;
}

// The right-hand side, which may be a variable in bool_lin_eq.
bool collectRight(const Call &call, Sum &sum) {
  const Operand right = call.operand(2);
  if (!right.isConstant) {
    sum.coefficients.push_back(-1);
    sum.terms.push_back(right);
    return true;
  }
  return addTo(sum.constant, right.value) || call.refuse("the constants of this sum leave 64 bits");
}

Array variablesOf(const Call &call, const Sum &sum) {
  Array all;
  all.reserve(sum.terms.size());
  for (const Operand &o : sum.terms) all.push_back(call.variables.get(o));
  return all;
}

// What a sum of one or two terms comes down to.
struct Comparison {
  bool is = false;
  int method = 0;
  const Operand *x = nullptr, *y = nullptr;  // y null: x is compared with the constant
  long long constant = 0;
};

constexpr int kTurned[] = {CS_METHOD_EQ, CS_METHOD_NEQ, CS_METHOD_GE, CS_METHOD_GT, CS_METHOD_LE, CS_METHOD_LT};

// x op c, -x op c, x - y op 0, and x - y <= -1.
Comparison comparisonOf(const Sum &sum, int method) {
  const std::size_t n = sum.terms.size();
  const auto isUnit = [](long long c) { return c == 1 || c == -1; };
  if (n == 0 || n > 2 || !isUnit(sum.coefficients[0]) || sum.constant == LLONG_MIN) return {};
  const bool turned = sum.coefficients[0] < 0;
  if (n == 1)
    return {true, turned ? kTurned[method] : method, sum.terms.data(), nullptr, turned ? -sum.constant : sum.constant};
  const Operand *x = &sum.terms[turned ? 1 : 0], *y = &sum.terms[turned ? 0 : 1];
  if (sum.coefficients[0] + sum.coefficients[1] != 0) return {};
  if (sum.constant == 0) return {true, method, x, y, 0};
  if (sum.constant == -1 && method == CS_METHOD_LE) return {true, CS_METHOD_LT, x, y, 0};
  return {};
}

bool relate(const Call &call, Tie tie, const Sum &sum, int method) {
  if (tie == Tie::kNothing) return true;
  const Comparison c = comparisonOf(sum, method);
  if (c.is && c.y == nullptr) return compareConstant(call, tie, c.method, call.variables.get(*c.x), c.constant);
  if (c.is) return compareVariables(call, tie, c.method, call.variables.get(*c.x), call.variables.get(*c.y));
  Array variables = variablesOf(call, sum);
  const long long *coefficients = sum.coefficients.data();
  const int n = sizeOf(variables);
  switch (tie) {
    case Tie::kIff:
      return cs_LinearIff(call.truth(), variables.data(), coefficients, n, method, sum.constant);
    case Tie::kIf:
      return cs_LinearIf(call.truth(), variables.data(), coefficients, n, method, sum.constant);
    default:
      return cs_Linear(variables.data(), coefficients, n, tie == Tie::kFails ? kOpposite[method] : method,
                       sum.constant);
  }
}

// --- Sums that make a variable ---

bool fits(long long low, long long high) { return low >= INT_MIN && high <= INT_MAX; }

// Whether x + sign * y stays within 32 bits.
bool fitsAdded(const Call &call, const Operand &x, const Operand &y, int sign) {
  const long long xs[] = {call.variables.low(x), call.variables.high(x)};
  const long long ys[] = {call.variables.low(y), call.variables.high(y)};
  if (!fits(xs[0], xs[1]) || !fits(ys[0], ys[1])) return false;
  return sign > 0 ? fits(xs[0] + ys[0], xs[1] + ys[1]) : fits(xs[0] - ys[1], xs[1] - ys[0]);
}

// The place of a term that is not made yet, with the coefficient 1 or -1 and defined by this constraint.
int placeToDefine(const Call &call, const Sum &sum) {
  const Expr *defines = call.syntax.find(call.constraint.annotations, "defines_var");
  if (defines == nullptr || defines->kind != Kind::kCall || defines->part.count != 1) return -1;
  const Operand defined = call.variables.operand(call.syntax.list(defines->part)[0]);
  for (std::size_t i = 0; i < sum.terms.size(); ++i) {
    if (sum.terms[i].variable != defined.variable || call.variables.isMade(defined.variable)) continue;
    if (sum.coefficients[i] == 1 || sum.coefficients[i] == -1) return static_cast<int>(i);
  }
  return -1;
}

// d = constant + s * x, or d = s * x + t * y without a constant, s and t being 1 or -1: d is made as a sum of two.
bool makeSum(const Call &call, const Sum &sum, std::size_t place, CSint *&result) {
  Operand parts[2] = {{true, 0, 0}, {true, 0, 0}};
  int signs[2] = {1, 1};
  std::size_t count = 0;
  if (sum.constant != 0) parts[count++].value = sum.coefficients[place] * sum.constant;
  for (std::size_t i = 0; i < sum.terms.size(); ++i) {
    const long long c = -sum.coefficients[i] * sum.coefficients[place];
    if (i == place) continue;
    if (count == 2 || sum.terms[i].variable == sum.terms[place].variable || (c != 1 && c != -1)) return false;
    parts[count] = sum.terms[i];
    signs[count++] = static_cast<int>(c);
  }
  if (signs[0] < 0) std::swap(parts[0], parts[1]), std::swap(signs[0], signs[1]);
  if (signs[0] < 0 || !fitsAdded(call, parts[0], parts[1], signs[1])) return false;
  CSint *x = call.variables.get(parts[0]), *y = call.variables.get(parts[1]);
  result = signs[1] > 0 ? cs_Add(x, y) : cs_Sub(x, y);
  return true;
}

bool equal(const Call &call, const Sum &sum) {
  const int place = placeToDefine(call, sum);
  CSint *result = nullptr;
  if (place >= 0 && makeSum(call, sum, static_cast<std::size_t>(place), result))
    return call.variables.define(sum.terms[static_cast<std::size_t>(place)].variable, result);
  return relate(call, Tie::kHolds, sum, CS_METHOD_EQ);
}

template <int method>
bool linear(const Call &call) {
  Sum sum;
  if (!collect(call, sum) || !collectRight(call, sum)) return false;
  if (method == CS_METHOD_EQ && call.tie() == Tie::kHolds) return equal(call, sum);
  return relate(call, call.tie(), sum, method);
}

// x + y = z, x - y = z.
template <int sign>
bool add(const Call &call) {
  Sum sum{{1, sign, -1}, {call.operand(0), call.operand(1), call.operand(2)}, 0};
  if (call.canDefine(2) && fitsAdded(call, sum.terms[0], sum.terms[1], sign)) {
    CSint *x = call.variable(0), *y = call.variable(1);
    return call.define(2, sign > 0 ? cs_Add(x, y) : cs_Sub(x, y));
  }
  return relate(call, Tie::kHolds, sum, CS_METHOD_EQ);
}

constexpr Row kRows[] = {
    {"int_lin_eq", "CXx", linear<CS_METHOD_EQ>, true},
    {"int_lin_ne", "CXx", linear<CS_METHOD_NEQ>, true},
    {"int_lin_le", "CXx", linear<CS_METHOD_LE>, true},
    {"int_lin_lt", "CXx", linear<CS_METHOD_LT>, true},
    {"int_lin_ge", "CXx", linear<CS_METHOD_GE>, true},
    {"int_lin_gt", "CXx", linear<CS_METHOD_GT>, true},
    {"bool_lin_eq", "CXx", linear<CS_METHOD_EQ>, true},
    {"bool_lin_ne", "CXx", linear<CS_METHOD_NEQ>, true},
    {"bool_lin_le", "CXx", linear<CS_METHOD_LE>, true},
    {"bool_lin_lt", "CXx", linear<CS_METHOD_LT>, true},
    {"bool_lin_ge", "CXx", linear<CS_METHOD_GE>, true},
    {"bool_lin_gt", "CXx", linear<CS_METHOD_GT>, true},
    {"int_plus", "xxx", add<1>, false, 2},
    {"int_minus", "xxx", add<-1>, false, 2},
};

}  // namespace

std::span<const Row> linearRows() { return kRows; }

}  // namespace koru::fzn

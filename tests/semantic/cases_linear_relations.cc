// SPDX-License-Identifier: MIT
// Linear relations without a variable for the sum.
#include "core/int128.h"
#include "koru_extras.h"
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

using Coefficients = std::vector<Wide>;
using Exact = Int128;

struct Form {
  Coefficients coefficients;
  int method;
  long long constant;
  int arity() const { return static_cast<int>(coefficients.size()); }
};

constexpr long long kHuge = 1LL << 62;

std::vector<Form> forms() {
  std::vector<Form> result;
  const std::vector<std::pair<Coefficients, long long>> sums{{{}, 0},
                                                             {{0}, 1},
                                                             {{2}, 3},
                                                             {{-3}, 3},
                                                             {{1, 1}, 1},
                                                             {{1, -1}, 0},
                                                             {{2, -3}, 1},
                                                             {{4, 6}, 2},
                                                             {{1, 1, 1}, 2},
                                                             {{2, -1, 3}, -1},
                                                             {{3, 0, -2}, 4},
                                                             {{1, 2, -4, 1}, 2},
                                                             {{kHuge, -kHuge}, 0},
                                                             {{LLONG_MIN, LLONG_MAX, 1}, LLONG_MIN},
                                                             {{LLONG_MAX, 3}, LLONG_MAX},
                                                             {{1, 1}, LLONG_MAX},
                                                             {{1, -1}, LLONG_MIN}};
  for (const auto &[coefficients, constant] : sums)
    for (int method = CS_METHOD_EQ; method <= CS_METHOD_GT; ++method)
      result.push_back({coefficients, method, constant});
  return result;
}

// A bound of an equality is part of a solution over the reals between the bounds of the others.
bool reachable(const Form &form, const Left &left, std::size_t first, std::size_t column, int value) {
  const std::size_t i = column - first;
  if (value != left.min(column) && value != left.max(column)) return true;
  Exact low = 0;
  Exact high = 0;
  for (std::size_t k = 0; k < form.coefficients.size(); ++k) {
    if (k == i) continue;
    const Exact atMin = Exact{form.coefficients[k]} * left.min(first + k);
    const Exact atMax = Exact{form.coefficients[k]} * left.max(first + k);
    low += std::min(atMin, atMax);
    high += std::max(atMin, atMax);
  }
  const Exact term = Exact{form.coefficients[i]} * value;
  return low + term <= form.constant && form.constant <= high + term;
}

// As promised while the relation is imposed: equalities by bounds, all else by values.
Constraint promising(Constraint c, const Form &form, std::size_t first,
                     const std::function<int(const Left &)> &imposedMethod) {
  c.strength = [imposedMethod](const Left &left, std::size_t) {
    const int method = imposedMethod(left);
    return method < 0 ? Strength::kNone : method == CS_METHOD_EQ ? Strength::kKnown : Strength::kDomain;
  };
  c.supported = [form, first, imposedMethod](const Left &left, std::size_t column, int value) {
    if (column < first || column >= first + form.coefficients.size() || imposedMethod(left) != CS_METHOD_EQ)
      return true;
    return reachable(form, left, first, column, value);
  };
  return c;
}

Constraint posted(const std::string &name, const Form &form) {
  return stated(name, {form.arity()}, {form.method, form.constant}, {form.coefficients});
}

Constraint imposed(const Form &form) {
  return promising(posted("cs_Linear", form), form, 0, [form](const Left &) { return form.method; });
}

Case linear() {
  Case c{"Linear", {"cs_Linear"}, {}, {{-2, 4}}, 40, {1, 3, 3}};
  for (const Form &form : forms()) c.forms.push_back(imposed(form));
  return c;
}

constexpr int kOpposites[] = {CS_METHOD_NEQ, CS_METHOD_EQ, CS_METHOD_GT, CS_METHOD_GE, CS_METHOD_LT, CS_METHOD_LE};

// What b imposes; -1 while it is open, when nothing but b itself can be narrowed.
int methodSaidBy(const Form &form, const Left &left, std::size_t b, bool full) {
  if (left.min(b) >= 1) return form.method;
  return left.max(b) <= 0 && full ? kOpposites[form.method] : -1;
}

Case tiedTo(const char *name, bool full) {
  Case c{name, {std::string("cs_") + name}, {}, {{0, 2}, {-2, 4}}, 24, {1, 3, 3}};
  for (const Form &form : forms())
    c.forms.push_back(promising(posted(c.functions[0], form), form, 1,
                                [form, full](const Left &left) { return methodSaidBy(form, left, 0, full); }));
  return c;
}

Case reified() {
  Case c{"ReifLinear", {"cs_ReifLinear"}, {}, {{-2, 4}}, 16, {1, 3, 3}};
  for (const Form &form : forms())
    c.forms.push_back(promising(posted(c.functions[0], form), form, 0,
                                [form](const Left &left) { return methodSaidBy(form, left, left.result(), true); }));
  return c;
}

// Sums over 0..1 that are long enough for totals to be kept from event to event.
Case longer() {
  Case c{"LinearOfManyTerms", {"cs_Linear"}, {}, {{0, 2}}, 40, {1, 6, 6, false}, {distinctPositions(9)}};
  const std::vector<Coefficients> sums{
      {1, 1, 1, 1, 1, 1, 1, 1, 1}, {5, 4, 3, 3, 2, 2, 1, 1, 1}, {1, -1, 2, -2, 3, -3, 1, 1, -2}};
  for (const Coefficients &coefficients : sums)
    for (const int method : {CS_METHOD_EQ, CS_METHOD_NEQ, CS_METHOD_LE, CS_METHOD_GE})
      for (const long long constant : {2, 4}) c.forms.push_back(imposed({coefficients, method, constant}));
  return c;
}

}  // namespace

Cases linearRelationCases() {
  return {linear(), longer(), tiedTo("LinearIff", true), tiedTo("LinearIf", false), reified()};
}

}  // namespace koru::test::brute

// SPDX-License-Identifier: MIT
// Sums and scalar products of any number of terms.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

Wide total(Values t) { return std::accumulate(t.begin(), t.end(), Wide{0}); }
Wide difference(Values t) { return t.empty() ? 0 : 2 * Wide{t[0]} - total(t); }

template <class Variadic>
CSint *call(Variadic f, CSint **x, int n) {
  switch (n) {
    case 0:
      return f(0);
    case 1:
      return f(1, x[0]);
    case 2:
      return f(2, x[0], x[1]);
    case 3:
      return f(3, x[0], x[1], x[2]);
    default:
      return f(4, x[0], x[1], x[2], x[3]);
  }
}

Case sums(const char *name, Value value, const std::function<CSint *(CSint **, int)> &post) {
  Case c{name, {std::string("cs_") + name}, {}, {{-2, 4}}, 120};
  for (int n = 0; n <= 4; ++n)
    c.forms.push_back(
        with(function(c.functions[0] + " " + std::to_string(n), n, value, [post, n](CSint **x) { return post(x, n); }),
             Strength::kBounds));
  return c;
}

// ----- scalar products

struct Range {
  Wide low = 0;
  Wide high = 0;
  void add(Wide coefficient, Wide min, Wide max) {
    low += std::min(coefficient * min, coefficient * max);
    high += std::max(coefficient * min, coefficient * max);
  }
};

// Whether a bound is part of a solution over the reals: those are what is left to a division rounded inwards.
bool linearSupports(const std::vector<int> &coefficients, const Left &left, std::size_t column, int value) {
  if (value != left.min(column) && value != left.max(column)) return true;
  Range others;
  for (std::size_t i = 0; i < coefficients.size(); ++i)
    if (i != column) others.add(coefficients[i], left.min(i), left.max(i));
  if (column == left.result()) return others.low <= value && value <= others.high;
  const Wide term = Wide{coefficients[column]} * value;
  return left.min(left.result()) - others.high <= term && term <= left.max(left.result()) - others.low;
}

using PostWeighted = std::function<CSint *(CSint **, std::vector<int> &)>;

Constraint weighted(const char *name, const std::vector<int> &coefficients, const PostWeighted &post) {
  const auto c = kept(coefficients);
  Constraint result = function(
      name + ::testing::PrintToString(coefficients), static_cast<int>(c->size()),
      [c](Values t) { return std::inner_product(t.begin(), t.end(), c->begin(), Wide{0}); },
      [c, post](CSint **x) { return post(x, *c); });
  result.supported = [c](const Left &left, std::size_t column, int value) {
    return linearSupports(*c, left, column, value);
  };
  return with(result, Strength::kKnown);
}

Case products(const char *name, const PostWeighted &post, std::vector<std::vector<int>> coefficients) {
  Case c{name, {std::string("cs_") + name}, {}, {{-2, 4}}, 60};
  for (const std::vector<int> &each : coefficients) c.forms.push_back(weighted(c.functions[0].c_str(), each, post));
  return c;
}

Case scalProd() {
  std::vector<std::vector<int>> coefficients{{},         {-3},       {0},        {2},          {0, 0},
                                             {2, -1, 3}, {-2, 0, 5}, {1, 1, -1}, {3, 2, -4, 1}};
  for (int c = -3; c <= 3; ++c)
    for (int d = -3; d <= 3; ++d) coefficients.push_back({c, d});
  return products(
      "ScalProd", [](CSint **x, std::vector<int> &c) { return cs_ScalProd(x, c.data(), static_cast<int>(c.size())); },
      coefficients);
}

CSint *postVScalProd(CSint **x, const std::vector<int> &c) {
  if (c.empty()) return cs_VScalProd(0);
  if (c.size() == 1) return cs_VScalProd(1, x[0], c[0]);
  if (c.size() == 2) return cs_VScalProd(2, x[0], x[1], c[0], c[1]);
  return cs_VScalProd(3, x[0], x[1], x[2], c[0], c[1], c[2]);
}

}  // namespace

Cases linearCases() {
  // A chain of cs_Sub; see there.
  Case vSub = sums("VSub", difference, [](CSint **x, int n) { return call(cs_VSub, x, n); });
  for (Constraint &form : vSub.forms) form.alsoShared = false;
  return {sums("VAdd", total, [](CSint **x, int n) { return call(cs_VAdd, x, n); }), vSub,
          sums("Sigma", total, cs_Sigma), scalProd(),
          products("VScalProd", postVScalProd, {{}, {4}, {3, -1}, {-2, 2}, {1, 0, -2}, {2, 3, -1}})};
}

}  // namespace koru::test::brute

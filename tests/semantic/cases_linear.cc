// SPDX-License-Identifier: MIT
// Sums and scalar products of any number of terms.
#include "semantic/cases.h"

namespace koru::test::brute {
namespace {

Case sums(const char *name) {
  Case c{name, {std::string("cs_") + name}, {}, {{-2, 4}}, 120};
  for (int n = 0; n <= 4; ++n) c.forms.push_back(stated(c.functions[0], {n}));
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
bool linearSupports(const std::vector<Wide> &coefficients, const Left &left, std::size_t column, int value) {
  if (value != left.min(column) && value != left.max(column)) return true;
  Range others;
  for (std::size_t i = 0; i < coefficients.size(); ++i)
    if (i != column) others.add(coefficients[i], left.min(i), left.max(i));
  if (column == left.result()) return others.low <= value && value <= others.high;
  const Wide term = coefficients[column] * value;
  return left.min(left.result()) - others.high <= term && term <= left.max(left.result()) - others.low;
}

Case products(const char *name, const Lists &coefficients) {
  Case c{name, {std::string("cs_") + name}, {}, {{-2, 4}}, 60};
  for (const std::vector<Wide> &each : coefficients) {
    c.forms.push_back(stated(c.functions[0], {static_cast<int>(each.size())}, {}, {each}));
    c.forms.back().supported = [each](const Left &left, std::size_t column, int value) {
      return linearSupports(each, left, column, value);
    };
  }
  return c;
}

Case scalProd() {
  Lists coefficients{{}, {-3}, {0}, {2}, {0, 0}, {2, -1, 3}, {-2, 0, 5}, {1, 1, -1}, {3, 2, -4, 1}};
  for (int c = -3; c <= 3; ++c)
    for (int d = -3; d <= 3; ++d) coefficients.push_back({c, d});
  return products("ScalProd", coefficients);
}

}  // namespace

Cases linearCases() {
  // A chain of cs_Sub; see there.
  Case vSub = sums("VSub");
  for (Constraint &form : vSub.forms) form.alsoShared = false;
  return {sums("VAdd"), vSub, sums("Sigma"), scalProd(),
          products("VScalProd", {{}, {4}, {3, -1}, {-2, 2}, {1, 0, -2}, {2, 3, -1}})};
}

}  // namespace koru::test::brute

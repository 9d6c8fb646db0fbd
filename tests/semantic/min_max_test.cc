// SPDX-License-Identifier: MIT
// cs_Min, cs_VMin, cs_Max, cs_VMax of 0 to 4 variables, the result included, against enumeration, and what bounds they
// keep supported.
#include "support/brute_support.h"

namespace {

using namespace koru::test::brute;

int least(std::span<const int> t) { return t.empty() ? INT_MAX : *std::ranges::min_element(t); }
int greatest(std::span<const int> t) { return t.empty() ? INT_MIN : *std::ranges::max_element(t); }

Constraint minOf(int n) {
  return function("cs_Min " + std::to_string(n), least, [n](CSint **x) { return cs_Min(x, n); });
}
Constraint maxOf(int n) {
  return function("cs_Max " + std::to_string(n), greatest, [n](CSint **x) { return cs_Max(x, n); });
}
Constraint minOfThree() {
  return function("cs_VMin 3", least, [](CSint **x) { return cs_VMin(3, x[0], x[1], x[2]); });
}
Constraint maxOfThree() {
  return function("cs_VMax 3", greatest, [](CSint **x) { return cs_VMax(3, x[0], x[1], x[2]); });
}

TEST(MinMaxSemantics, OneVariableAgreesWithEnumeration) {
  checkRandom(minOf(1), 1, -2, 5, 40);
  checkRandom(maxOf(1), 1, -2, 5, 40);
}
TEST(MinMaxSemantics, TwoVariablesAgreeWithEnumeration) {
  checkAllPairs(minOf(2), -1, 4, 1);
  checkAllPairs(maxOf(2), -1, 4, 1);
}
TEST(MinMaxSemantics, ThreeVariablesAgreeWithEnumeration) {
  checkRandom(minOfThree(), 3, -2, 4, 40);
  checkRandom(maxOfThree(), 3, -2, 4, 40);
}
TEST(MinMaxSemantics, FourVariablesAgreeWithEnumeration) {
  checkRandom(minOf(4), 4, -1, 3, 20);
  checkRandom(maxOf(4), 4, -1, 3, 20);
}
TEST(MinMaxSemantics, OneVariableTwiceAgreesWithEnumeration) {
  checkShared(minOf(2), {0, 0}, -2, 5, 30);
  checkShared(maxOf(3), {0, 1, 0}, -2, 4, 30);
}

// While all domains are intervals and the result is not bound, the bounds of the result are supported by those of the
// array; the far bound of a bound result is not imposed on the array, so the array's own bounds are not promised.
TEST(MinMaxSemantics, TheResultsBoundsAreSupportedWhileThatCanBeSeenFromBounds) {
  const auto nodes = [](const Constraint &c, std::vector<Domain> domains) {
    for (Domain &d : domains) {
      const auto [low, high] = std::pair{d.values.front(), d.values.back()};
      d.values.clear();
      for (int v = low; v <= high; ++v) d.values.push_back(v);
    }
    const SupportCase test{c, domains, distinctPositions(3), Support::kNothing, Support::kBounds, Branching::kByHalves};
    return SupportSearch(test).run();
  };
  std::mt19937 random(3);
  int checked = 0;
  for (int i = 0; i < 150 && !HasFailure(); ++i) {
    const auto any = [&] { return randomDomain(random, -2, 4); };
    checked += nodes(minOfThree(), {any(), any(), any()});
    checked += nodes(maxOfThree(), {any(), any(), any()});
  }
  EXPECT_GT(checked, 2000);
}

}  // namespace

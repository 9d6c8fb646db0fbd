// SPDX-License-Identifier: MIT
// cs_Sigma, cs_ScalProd and cs_VScalProd, the result included, against enumeration.
#include <deque>

#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

Constraint sigma(int n) {
  return function(
      "cs_Sigma " + std::to_string(n), [](std::span<const int> t) { return std::accumulate(t.begin(), t.end(), 0); },
      [n](CSint **x) { return cs_Sigma(x, n); });
}

int weighted(const std::vector<int> &c, std::span<const int> t) {
  return std::inner_product(t.begin(), t.end(), c.begin(), 0);
}

// The coefficients are kept by reference: these outlive the constraints.
std::vector<int> &keep(const std::vector<int> &c) {
  static std::deque<std::vector<int>> kept;
  return kept.emplace_back(c);
}

Constraint scalProd(const std::vector<int> &c) {
  std::vector<int> &kept = keep(c);
  return function(
      "cs_ScalProd " + ::testing::PrintToString(c), [&kept](std::span<const int> t) { return weighted(kept, t); },
      [&kept](CSint **x) { return cs_ScalProd(x, kept.data(), static_cast<int>(kept.size())); });
}

Constraint vScalProd(const std::vector<int> &c) {
  return function(
      "cs_VScalProd " + ::testing::PrintToString(c), [c](std::span<const int> t) { return weighted(c, t); },
      [c](CSint **x) {
        if (c.size() == 1) return cs_VScalProd(1, x[0], c[0]);
        if (c.size() == 2) return cs_VScalProd(2, x[0], x[1], c[0], c[1]);
        return cs_VScalProd(3, x[0], x[1], x[2], c[0], c[1], c[2]);
      });
}

TEST(LinearSemantics, SigmaOfNothingAgreesWithEnumeration) { checkRandom(sigma(0), 0, 0, 1, 1); }
TEST(LinearSemantics, SigmaOfOneAgreesWithEnumeration) { checkRandom(sigma(1), 1, -2, 5, 40); }
TEST(LinearSemantics, SigmaOfTwoAgreesWithEnumeration) { checkAllPairs(sigma(2), -1, 3, 1); }
TEST(LinearSemantics, SigmaOfThreeAgreesWithEnumeration) { checkRandom(sigma(3), 3, -2, 4, 40); }
TEST(LinearSemantics, SigmaOfFourAgreesWithEnumeration) { checkRandom(sigma(4), 4, -1, 3, 20); }
TEST(LinearSemantics, SigmaWithOneVariableTwiceAgreesWithEnumeration) {
  checkShared(sigma(2), {0, 0}, -2, 5, 30);
  checkShared(sigma(3), {0, 1, 0}, -2, 4, 30);
  checkShared(sigma(3), {0, 0, 0}, -2, 4, 30);
}

TEST(LinearSemantics, ScalProdOfNothingAgreesWithEnumeration) { checkRandom(scalProd({}), 0, 0, 1, 1); }
TEST(LinearSemantics, ScalProdOfOneTermAgreesWithEnumeration) {
  for (const int c : {-3, -1, 0, 1, 2}) checkRandom(scalProd({c}), 1, -2, 5, 20);
}
TEST(LinearSemantics, ScalProdOfTwoTermsAgreesWithEnumerationOnAllPairsOfDomains) {
  checkAllPairs(scalProd({2, -3}), -1, 3, 1);
  checkAllPairs(scalProd({-1, -2}), -1, 3, 1);
}
TEST(LinearSemantics, ScalProdOfTwoTermsAgreesWithEnumerationForEveryPairOfCoefficients) {
  for (int c = -3; c <= 3; ++c)
    for (int d = -3; d <= 3; ++d) checkRandom(scalProd({c, d}), 2, -2, 4, 4);
}
TEST(LinearSemantics, ScalProdOfThreeTermsAgreesWithEnumeration) {
  checkRandom(scalProd({2, -1, 3}), 3, -2, 4, 12);
  checkRandom(scalProd({-2, 0, 5}), 3, -2, 4, 12);
  checkRandom(scalProd({1, 1, -1}), 3, -2, 4, 12);
}
TEST(LinearSemantics, ScalProdWithZeroCoefficientsOnlyIsZeroWhateverTheTermsAre) {
  checkRandom(scalProd({0, 0}), 2, -2, 4, 20);
}
TEST(LinearSemantics, ScalProdWithOneVariableTwiceAgreesWithEnumeration) {
  checkShared(scalProd({2, 3}), {0, 0}, -2, 5, 30);
  checkShared(scalProd({1, -1}), {0, 0}, -2, 5, 30);
  checkShared(scalProd({1, 2, -1}), {0, 1, 0}, -2, 4, 20);
}

TEST(LinearSemantics, VScalProdAgreesWithEnumeration) {
  checkRandom(vScalProd({-2}), 1, -2, 5, 20);
  checkRandom(vScalProd({3, -1}), 2, -2, 4, 20);
  checkRandom(vScalProd({1, 0, -2}), 3, -1, 3, 20);
}

}  // namespace

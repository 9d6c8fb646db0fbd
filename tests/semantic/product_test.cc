// SPDX-License-Identifier: MIT
// cs_Mul, cs_VMul, cs_Div and cs_VDiv against enumeration. A quotient may not exist or, when the divisor can be 0,
// range over all ints, so it is compared as a relation: the result is made equal to one more variable.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

const Constraint kMul = function(
    "cs_Mul", [](std::span<const int> t) { return t[0] * t[1]; }, [](CSint **x) { return cs_Mul(x[0], x[1]); });

Constraint vMul(int n) {
  return function(
      "cs_VMul " + std::to_string(n),
      [](std::span<const int> t) { return std::accumulate(t.begin(), t.end(), 1, std::multiplies<>()); },
      [n](CSint **x) {
        if (n == 1) return cs_VMul(1, x[0]);
        return n == 2 ? cs_VMul(2, x[0], x[1]) : cs_VMul(3, x[0], x[1], x[2]);
      });
}

// By bounds alone: holes in a variable over all ints would cost half a gigabyte each.
bool isEqual(CSint *z, CSint *result) { return z != nullptr && cs_Le(z, result) && cs_Ge(z, result); }

// x / y = z is x = z * y, and (x / y1) / y2 = z is x = z * y2 * y1.
const Constraint kDiv = relation(
    "cs_Div", [](std::span<const int> t) { return t[0] == t[2] * t[1]; },
    [](CSint **x) { return isEqual(cs_Div(x[0], x[1]), x[2]); });
const Constraint kVDiv2 = relation(
    "cs_VDiv 2", [](std::span<const int> t) { return t[0] == t[2] * t[1]; },
    [](CSint **x) { return isEqual(cs_VDiv(2, x[0], x[1]), x[2]); });
const Constraint kVDiv3 = relation(
    "cs_VDiv 3", [](std::span<const int> t) { return t[0] == t[3] * t[2] * t[1]; },
    [](CSint **x) { return isEqual(cs_VDiv(3, x[0], x[1], x[2]), x[3]); });

TEST(ProductSemantics, MulAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kMul, -1, 3, 1); }
TEST(ProductSemantics, MulAgreesWithEnumerationOnPositiveAndNegativePairs) {
  checkAllPairs(kMul, 1, 3, 1);
  checkAllPairs(kMul, -4, 3, 1);
}
TEST(ProductSemantics, MulAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kMul, -1, 2, 2); }
TEST(ProductSemantics, MulAgreesWithEnumerationOnWiderDomains) { checkRandom(kMul, 2, -3, 6, 40); }
TEST(ProductSemantics, ASquareAgreesWithEnumeration) { checkShared(kMul, {0, 0}, -3, 6, 60); }

TEST(ProductSemantics, VMulOfOneAgreesWithEnumeration) { checkRandom(vMul(1), 1, -2, 5, 40); }
TEST(ProductSemantics, VMulOfTwoAgreesWithEnumeration) { checkRandom(vMul(2), 2, -2, 5, 40); }
TEST(ProductSemantics, VMulOfThreeAgreesWithEnumeration) { checkRandom(vMul(3), 3, -2, 4, 30); }
TEST(ProductSemantics, VMulWithOneVariableTwiceAgreesWithEnumeration) {
  checkShared(vMul(3), {0, 1, 0}, -2, 4, 30);
  checkShared(vMul(3), {0, 0, 0}, -2, 4, 30);
}

TEST(ProductSemantics, DivOfAnySignsAgreesWithEnumeration) { checkRandom(kDiv, 3, -3, 6, 120); }
TEST(ProductSemantics, DivOfPositiveDomainsAgreesWithEnumeration) { checkRandom(kDiv, 3, 1, 6, 60); }
TEST(ProductSemantics, DivOfMostlyNegativeDomainsAgreesWithEnumeration) { checkRandom(kDiv, 3, -6, 9, 60); }
TEST(ProductSemantics, AVariableByItselfAgreesWithEnumeration) { checkShared(kDiv, {0, 0, 1}, -3, 6, 60); }
TEST(ProductSemantics, AQuotientEqualToItsOperandsAgreesWithEnumeration) {
  checkShared(kDiv, {0, 1, 0}, -3, 6, 60);
  checkShared(kDiv, {0, 1, 1}, -3, 6, 60);
  checkShared(kDiv, {0, 0, 0}, -3, 6, 60);
}

TEST(ProductSemantics, VDivOfTwoAgreesWithEnumeration) { checkRandom(kVDiv2, 3, -3, 6, 60); }
TEST(ProductSemantics, VDivOfThreeAgreesWithEnumeration) { checkRandom(kVDiv3, 4, -2, 4, 40); }

}  // namespace

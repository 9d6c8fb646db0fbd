// SPDX-License-Identifier: MIT
// cs_IfEq and cs_IfNeq, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

Constraint ifEq(int a, int b) {
  return relation(
      "cs_IfEq " + std::to_string(a) + " " + std::to_string(b),
      [a, b](std::span<const int> t) { return (t[0] == a) == (t[1] == b); },
      [a, b](CSint **x) { return cs_IfEq(x[0], x[1], a, b); });
}

Constraint ifNeq(int a, int b) {
  return relation(
      "cs_IfNeq " + std::to_string(a) + " " + std::to_string(b),
      [a, b](std::span<const int> t) { return t[0] != a || t[1] != b; },
      [a, b](CSint **x) { return cs_IfNeq(x[0], x[1], a, b); });
}

template <class Check>
void forAllValues(int low, int high, Check check) {
  for (int a = low; a <= high; ++a)
    for (int b = low; b <= high; ++b)
      if (!::testing::Test::HasFailure()) check(a, b);
}

TEST(IfEqSemantics, EqAgreesWithEnumerationOnAllPairsOfDomains) {
  forAllValues(-1, 2, [](int a, int b) { checkAllPairs(ifEq(a, b), -1, 3, 1); });
}

TEST(IfEqSemantics, NeqAgreesWithEnumerationOnAllPairsOfDomains) {
  forAllValues(-1, 2, [](int a, int b) { checkAllPairs(ifNeq(a, b), -1, 3, 1); });
}

TEST(IfEqSemantics, EqAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(ifEq(0, 1), 0, 2, 2); }
TEST(IfEqSemantics, NeqAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(ifNeq(0, 1), 0, 2, 2); }

TEST(IfEqSemantics, AgreeWithEnumerationOnWideDomains) {
  checkRandom(ifEq(-1, 3), 2, -5, 11, 60);
  checkRandom(ifNeq(-1, 3), 2, -5, 11, 60);
}

// Woken for the same variable, only the rule from x to y runs: x = b passes although it demands x = a.
TEST(IfEqSemantics, EqOfAVariableWithItselfAcceptsTheSecondValueByDesign) {
  forAllValues(-2, 2, [](int a, int b) {
    Constraint c = ifEq(a, b);
    c.acceptedAnyway = [b](std::span<const int> t) { return t[0] == b; };
    checkShared(c, {0, 0}, -2, 5, 20);
  });
}

TEST(IfEqSemantics, NeqOfAVariableWithItselfAgreesWithEnumeration) {
  forAllValues(-2, 2, [](int a, int b) { checkShared(ifNeq(a, b), {0, 0}, -2, 5, 20); });
}

}  // namespace

// SPDX-License-Identifier: MIT
// cs_VAdd and cs_VSub of 0 to 4 variables, the result included, against enumeration.
#include <numeric>

#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

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

Constraint vAdd(int n) {
  return function(
      "cs_VAdd " + std::to_string(n), [](std::span<const int> t) { return std::accumulate(t.begin(), t.end(), 0); },
      [n](CSint **x) { return call(cs_VAdd, x, n); });
}

Constraint vSub(int n) {
  return function(
      "cs_VSub " + std::to_string(n),
      [](std::span<const int> t) { return t.empty() ? 0 : 2 * t[0] - std::accumulate(t.begin(), t.end(), 0); },
      [n](CSint **x) { return call(cs_VSub, x, n); });
}

TEST(SumNSemantics, VAddOfNothingAgreesWithEnumeration) { checkRandom(vAdd(0), 0, 0, 1, 1); }
TEST(SumNSemantics, VAddOfOneAgreesWithEnumeration) { checkRandom(vAdd(1), 1, -2, 5, 40); }
TEST(SumNSemantics, VAddOfTwoAgreesWithEnumeration) { checkAllPairs(vAdd(2), -1, 3, 1); }
TEST(SumNSemantics, VAddOfThreeAgreesWithEnumeration) { checkRandom(vAdd(3), 3, -2, 4, 50); }
TEST(SumNSemantics, VAddOfFourAgreesWithEnumeration) { checkRandom(vAdd(4), 4, -1, 3, 30); }
TEST(SumNSemantics, VAddWithOneVariableTwiceAgreesWithEnumeration) {
  checkShared(vAdd(2), {0, 0}, -2, 5, 40);
  checkShared(vAdd(3), {0, 1, 0}, -2, 4, 40);
}

TEST(SumNSemantics, VSubOfNothingAgreesWithEnumeration) { checkRandom(vSub(0), 0, 0, 1, 1); }
TEST(SumNSemantics, VSubOfOneAgreesWithEnumeration) { checkRandom(vSub(1), 1, -2, 5, 40); }
TEST(SumNSemantics, VSubOfTwoAgreesWithEnumeration) { checkAllPairs(vSub(2), -1, 3, 1); }
TEST(SumNSemantics, VSubOfThreeAgreesWithEnumeration) { checkRandom(vSub(3), 3, -2, 3, 40); }
TEST(SumNSemantics, VSubOfFourAgreesWithEnumeration) { checkRandom(vSub(4), 4, -1, 2, 20); }
TEST(SumNSemantics, VSubWithOneVariableTwiceAgreesWithEnumeration) {
  checkShared(vSub(2), {0, 0}, -2, 5, 40);
  checkShared(vSub(3), {0, 0, 1}, -2, 3, 30);
  checkShared(vSub(3), {0, 1, 1}, -2, 3, 30);
}

}  // namespace

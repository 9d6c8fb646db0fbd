// SPDX-License-Identifier: MIT
// cs_Add and cs_Sub, the result included, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

const Constraint kAdd = function(
    "cs_Add", [](std::span<const int> t) { return t[0] + t[1]; }, [](CSint **x) { return cs_Add(x[0], x[1]); });
const Constraint kSub = function(
    "cs_Sub", [](std::span<const int> t) { return t[0] - t[1]; }, [](CSint **x) { return cs_Sub(x[0], x[1]); });

TEST(SumSemantics, AddAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kAdd, -1, 4, 1); }
TEST(SumSemantics, AddAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kAdd, -1, 2, 2); }
TEST(SumSemantics, AddAgreesWithEnumerationOnWideDomains) { checkRandom(kAdd, 2, -4, 8, 40); }
TEST(SumSemantics, AddOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kAdd, {0, 0}, -2, 5, 60); }

TEST(SumSemantics, SubAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kSub, -1, 4, 1); }
TEST(SumSemantics, SubAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kSub, -1, 2, 2); }
TEST(SumSemantics, SubAgreesWithEnumerationOnWideDomains) { checkRandom(kSub, 2, -4, 8, 40); }
TEST(SumSemantics, SubOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kSub, {0, 0}, -2, 5, 60); }

// Two constraints that share variables, so that each wakes the other.
TEST(SumSemantics, ASumOfASumAgreesWithEnumeration) {
  const Constraint c = function(
      "x + (x + y)", [](std::span<const int> t) { return t[0] + t[0] + t[1]; },
      [](CSint **x) { return cs_Add(x[0], cs_Add(x[0], x[1])); });
  checkRandom(c, 2, -2, 5, 40);
}

}  // namespace

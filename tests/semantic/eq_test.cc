// SPDX-License-Identifier: MIT
// cs_Eq, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

const Constraint kEq = relation(
    "cs_Eq", [](std::span<const int> t) { return t[0] == t[1]; }, [](CSint **x) { return cs_Eq(x[0], x[1]); });

TEST(EqSemantics, EqAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kEq, -1, 4, 1); }
TEST(EqSemantics, EqAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kEq, -1, 3, 2); }
TEST(EqSemantics, EqAgreesWithEnumerationOnWideDomains) { checkRandom(kEq, 2, -5, 11, 100); }
TEST(EqSemantics, EqOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kEq, {0, 0}, -2, 5, 60); }

}  // namespace

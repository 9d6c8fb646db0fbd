// SPDX-License-Identifier: MIT
// cs_Neq, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

const Constraint kNeq = relation(
    "cs_Neq", [](std::span<const int> t) { return t[0] != t[1]; }, [](CSint **x) { return cs_Neq(x[0], x[1]); });

TEST(NeqSemantics, NeqAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kNeq, -1, 4, 1); }
TEST(NeqSemantics, NeqAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kNeq, -1, 3, 2); }
TEST(NeqSemantics, NeqAgreesWithEnumerationOnWideDomains) { checkRandom(kNeq, 2, -5, 11, 100); }
TEST(NeqSemantics, NeqOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kNeq, {0, 0}, -2, 5, 60); }

}  // namespace

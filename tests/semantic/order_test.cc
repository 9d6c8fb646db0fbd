// SPDX-License-Identifier: MIT
// cs_Le, cs_Lt, cs_Ge and cs_Gt, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

const Constraint kLe = relation(
    "cs_Le", [](std::span<const int> t) { return t[0] <= t[1]; }, [](CSint **x) { return cs_Le(x[0], x[1]); });

TEST(OrderSemantics, LeAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kLe, -1, 4, 1); }
TEST(OrderSemantics, LeAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kLe, -1, 3, 2); }
TEST(OrderSemantics, LeAgreesWithEnumerationOnWideDomains) { checkRandom(kLe, 2, -5, 11, 100); }
TEST(OrderSemantics, LeOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kLe, {0, 0}, -2, 5, 60); }

const Constraint kLt = relation(
    "cs_Lt", [](std::span<const int> t) { return t[0] < t[1]; }, [](CSint **x) { return cs_Lt(x[0], x[1]); });

TEST(OrderSemantics, LtAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kLt, -1, 4, 1); }
TEST(OrderSemantics, LtAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kLt, -1, 3, 2); }
TEST(OrderSemantics, LtAgreesWithEnumerationOnWideDomains) { checkRandom(kLt, 2, -5, 11, 100); }
TEST(OrderSemantics, LtOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kLt, {0, 0}, -2, 5, 60); }

const Constraint kGe = relation(
    "cs_Ge", [](std::span<const int> t) { return t[0] >= t[1]; }, [](CSint **x) { return cs_Ge(x[0], x[1]); });

TEST(OrderSemantics, GeAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kGe, -1, 4, 1); }
TEST(OrderSemantics, GeAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kGe, -1, 3, 2); }
TEST(OrderSemantics, GeAgreesWithEnumerationOnWideDomains) { checkRandom(kGe, 2, -5, 11, 100); }
TEST(OrderSemantics, GeOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kGe, {0, 0}, -2, 5, 60); }

const Constraint kGt = relation(
    "cs_Gt", [](std::span<const int> t) { return t[0] > t[1]; }, [](CSint **x) { return cs_Gt(x[0], x[1]); });

TEST(OrderSemantics, GtAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(kGt, -1, 4, 1); }
TEST(OrderSemantics, GtAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(kGt, -1, 3, 2); }
TEST(OrderSemantics, GtAgreesWithEnumerationOnWideDomains) { checkRandom(kGt, 2, -5, 11, 100); }
TEST(OrderSemantics, GtOfAVariableWithItselfAgreesWithEnumeration) { checkShared(kGt, {0, 0}, -2, 5, 60); }

}  // namespace

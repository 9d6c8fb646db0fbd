// SPDX-License-Identifier: MIT
// cs_Abs, the result included, against enumeration.
#include <cstdlib>

#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

const Constraint kAbs = function(
    "cs_Abs", [](std::span<const int> t) { return std::abs(t[0]); }, [](CSint **x) { return cs_Abs(x[0]); });

// Every domain within [low, low + width), in each of the ways to make it.
void checkAllDomains(int low, int width, int depth) {
  unsigned seed = 0;
  for (Domain domain : allDomains(low, width))
    for (const Making making : {Making::kExact, Making::kValues, Making::kCarved}) {
      domain.making = making;
      if (!holds({kAbs, {domain}, {0}, depth, 5, ++seed})) return;
    }
}

TEST(AbsSemantics, AgreesWithEnumerationOnAllDomainsAcrossZero) { checkAllDomains(-3, 7, 1); }
TEST(AbsSemantics, AgreesWithEnumerationOnAllDomainsWithALongerNegativeSide) { checkAllDomains(-5, 7, 1); }
TEST(AbsSemantics, AgreesWithEnumerationOnAllDomainsOfOneSign) {
  checkAllDomains(-5, 5, 1);
  checkAllDomains(0, 5, 1);
}
TEST(AbsSemantics, AgreesWithEnumerationOnPairsOfNarrowings) { checkAllDomains(-2, 5, 2); }
TEST(AbsSemantics, AgreesWithEnumerationOnWideDomains) { checkRandom(kAbs, 1, -8, 15, 80); }

// Two absolute values of one variable wake each other through it.
TEST(AbsSemantics, AnAbsoluteValueOfAnAbsoluteValueAgreesWithEnumeration) {
  const Constraint c = function(
      "|(|x|)| + |x|", [](std::span<const int> t) { return 2 * std::abs(t[0]); },
      [](CSint **x) { return cs_Add(cs_Abs(cs_Abs(x[0])), cs_Abs(x[0])); });
  checkRandom(c, 1, -5, 10, 60);
}

}  // namespace

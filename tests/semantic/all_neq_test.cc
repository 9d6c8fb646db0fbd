// SPDX-License-Identifier: MIT
// cs_AllNeq of 0 to 5 variables, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

bool allDifferent(std::span<const int> t) { return std::set<int>(t.begin(), t.end()).size() == t.size(); }

Constraint allNeq(int n) {
  return relation("cs_AllNeq " + std::to_string(n), allDifferent, [n](CSint **x) { return cs_AllNeq(x, n) == 1; });
}

TEST(AllNeqSemantics, NoVariableAgreesWithEnumeration) { checkRandom(allNeq(0), 0, 0, 1, 1); }
TEST(AllNeqSemantics, OneVariableAgreesWithEnumeration) { checkRandom(allNeq(1), 1, -2, 5, 40); }
TEST(AllNeqSemantics, TwoVariablesAgreeWithEnumeration) { checkAllPairs(allNeq(2), -1, 4, 1); }
TEST(AllNeqSemantics, ThreeVariablesAgreeWithEnumeration) { checkRandom(allNeq(3), 3, -2, 5, 60); }
TEST(AllNeqSemantics, FourVariablesAgreeWithEnumeration) { checkRandom(allNeq(4), 4, -2, 4, 40); }
TEST(AllNeqSemantics, FiveVariablesAgreeWithEnumeration) { checkRandom(allNeq(5), 5, -1, 5, 15); }

// Deliberate: a variable that is bound after the posting takes its value from the others, which it is told from by
// identity. So the same variable at two positions is refused at posting when bound, and later only by the span test.
TEST(AllNeqSemantics, AVariableAtTwoPositionsIsToldFromTheOthersByIdentity) {
  Constraint c = allNeq(3);
  c.acceptedAnyway = [](std::span<const int> t) { return t[0] - t[1] > 1 || t[1] - t[0] > 1; };
  for (const Domain &x : allDomains(0, 4)) {
    for (const Domain &y : allDomains(0, 4)) {
      if (x.values.size() == 1) continue;
      if (!holds({c, {x, y}, {0, 1, 0}, 1, 4, 1})) return;
    }
  }
}

TEST(AllNeqSemantics, AVariableAtTwoPositionsThatIsBoundFailsAtPosting) {
  for (int v = -1; v <= 1; ++v) ASSERT_TRUE(holds({allNeq(2), {{{v}, Making::kExact}}, {0, 0}, 1, 4, 1}));
}

}  // namespace

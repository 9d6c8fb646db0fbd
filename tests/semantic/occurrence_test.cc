// SPDX-License-Identifier: MIT
// cs_Occur, cs_OccurDomain and cs_OccurConstraints against enumeration.
#include "support/brute_support.h"

namespace {

using namespace koru::test::brute;

int countIn(std::span<const int> t, int val) { return static_cast<int>(std::ranges::count(t, val)); }

// The count is the last position.
bool counted(std::span<const int> t, int val) { return countIn(t.first(t.size() - 1), val) == t.back(); }

Constraint occurConstraints(int n, int val) {
  return relation(
      "cs_OccurConstraints of " + std::to_string(val), [=](std::span<const int> t) { return counted(t, val); },
      [=](CSint **x) { return cs_OccurConstraints(x[n], val, x, n); });
}

Constraint occurDomain(int n, int val) {
  return function(
      "cs_OccurDomain of " + std::to_string(val), [=](std::span<const int> t) { return countIn(t, val); },
      [=](CSint **x) { return cs_OccurDomain(val, x, n); });
}

void checkOccurrence(const std::vector<int> &positions, int low, int width, int cases) {
  const int n = static_cast<int>(positions.size()) - 1;
  for (int val = low - 1; val <= low + width; ++val)
    checkShared(occurConstraints(n, val), positions, low, width, cases);
}

TEST(OccurrenceSemantics, NoVariableAgreesWithEnumeration) { checkRandom(occurConstraints(0, 1), 1, -1, 4, 30); }
TEST(OccurrenceSemantics, OneVariableAgreesWithEnumeration) { checkOccurrence({0, 1}, -1, 4, 25); }
TEST(OccurrenceSemantics, TwoVariablesAgreeWithEnumeration) { checkOccurrence({0, 1, 2}, -1, 4, 12); }
TEST(OccurrenceSemantics, ThreeVariablesAgreeWithEnumeration) { checkOccurrence({0, 1, 2, 3}, 0, 4, 8); }
TEST(OccurrenceSemantics, OneVariableTwiceAgreesWithEnumeration) {
  checkOccurrence({0, 0, 1}, -1, 5, 10);
  checkOccurrence({0, 1, 0, 2}, 0, 4, 10);
}
TEST(OccurrenceSemantics, TheCountAmongItsOwnVariablesAgreesWithEnumeration) {
  checkOccurrence({0, 1, 0}, -1, 4, 10);
  checkOccurrence({0, 1, 2, 1}, 0, 4, 10);
}

TEST(OccurrenceSemantics, ANewCountAgreesWithEnumeration) {
  for (int val = -1; val <= 3; ++val) {
    checkRandom(occurDomain(1, val), 1, -1, 4, 20);
    checkRandom(occurDomain(3, val), 3, 0, 3, 10);
    checkShared(occurDomain(3, val), {0, 1, 0}, 0, 3, 10);
  }
}

// cs_Occur says nothing of success; that it posts the same is seen from what is accepted.
TEST(OccurrenceSemantics, OccurAcceptsTheSameAssignments) {
  const Constraint c = relation(
      "cs_Occur", [](std::span<const int> t) { return counted(t, 1); },
      [](CSint **x) { return cs_Occur(x[2], 1, x, 2) == 0 && cs_GE(x[2], 0) && cs_LE(x[2], 2); });
  std::mt19937 random(2);
  for (unsigned i = 0; i < 60; ++i) {
    const Domain count{{0, 1, 2}, Making::kExact};
    if (!holds({c, {randomDomain(random, 0, 4), randomDomain(random, 0, 4), count}, {0, 1, 2}, 1, 6, i})) return;
  }
}

// A count over an interval that is bound by propagation and not before: every value of every variable is supported.
TEST(OccurrenceSemantics, EachValueIsSupportedAtEveryNodeWithANewCount) {
  int nodes = 0;
  for (int val = 0; val <= 2; ++val) {
    nodes += checkSupportedRandom(occurDomain(2, val), {0, 1}, 0, 4, 60, Support::kValues, Support::kBounds);
    nodes += checkSupportedRandom(occurDomain(3, val), {0, 1, 2}, 0, 3, 40, Support::kValues, Support::kBounds);
  }
  EXPECT_GT(nodes, 3000);
}

}  // namespace

// SPDX-License-Identifier: MIT
// cs_Index against enumeration: vars[position] = val, with position the result.
#include "support/brute_support.h"

namespace {

using namespace koru::test::brute;

// The result is not a function of the variables, so the position is a variable of the relation, and equal to it.
Constraint index(int n, int val) {
  return relation(
      "cs_Index of " + std::to_string(val),
      [=](std::span<const int> t) {
        const int position = t.back();
        return position >= 0 && position < n && t[static_cast<std::size_t>(position)] == val;
      },
      [=](CSint **x) { return cs_Eq(cs_Index(x, n, val), x[n]); });
}

// Shared positions put one variable into the array twice.
void checkIndex(const std::vector<int> &positions, int low, int width, int cases) {
  const int n = static_cast<int>(positions.size()) - 1;
  for (int val = low - 1; val <= low + width; ++val) checkShared(index(n, val), positions, low, width, cases);
}

TEST(IndexSemantics, OneVariableAgreesWithEnumeration) { checkIndex({0, 1}, -1, 4, 25); }
TEST(IndexSemantics, TwoVariablesAgreeWithEnumeration) { checkIndex({0, 1, 2}, -1, 4, 12); }
TEST(IndexSemantics, ThreeVariablesAgreeWithEnumeration) { checkIndex({0, 1, 2, 3}, 0, 3, 8); }
TEST(IndexSemantics, OneVariableTwiceAgreesWithEnumeration) {
  checkIndex({0, 0, 1}, -1, 4, 10);
  checkIndex({0, 1, 0, 2}, 0, 3, 8);
}
TEST(IndexSemantics, ThePositionAmongItsOwnVariablesAgreesWithEnumeration) { checkIndex({0, 1, 0}, -1, 4, 10); }

// Nothing is imposed at posting, so a position that is the only one from the start imposes nothing: at least two here.
bool severalPositions(const std::vector<Domain> &domains, int val) {
  const auto holdsVal = [=](const Domain &d) { return std::ranges::find(d.values, val) != d.values.end(); };
  return std::count_if(domains.begin(), domains.end() - 1, holdsVal) > 1;
}

// Every value of every variable keeps a support: a position holds as long as its variable can take the value, and a
// variable may be anything while another position is left.
TEST(IndexSemantics, EachValueIsSupportedAtEveryNode) {
  std::mt19937 random(5);
  int nodes = 0;
  for (unsigned i = 0; i < 400; ++i) {
    const int n = 2 + static_cast<int>(i % 2);
    const int val = static_cast<int>(random() % 3);
    std::vector<Domain> domains;
    for (int k = 0; k <= n; ++k) domains.push_back(randomDomain(random, 0, 3));
    if (severalPositions(domains, val)) nodes += checkSupported(index(n, val), domains, distinctPositions(n + 1), i);
  }
  EXPECT_GT(nodes, 2000);
}

}  // namespace

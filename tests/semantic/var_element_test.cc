// SPDX-License-Identifier: MIT
// cs_VarElement and cs_VarElementRange, the result included, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

using Post = CSint *(*)(CSint *, CSint **, int);

// Position 0 is the index; the array follows.
int selected(std::span<const int> t, int n) {
  return t[0] >= 0 && t[0] < n ? t[static_cast<std::size_t>(t[0]) + 1] : 0;
}

Constraint element(const char *name, Post post, int n) {
  Constraint c = function(
      name, [n](std::span<const int> t) { return selected(t, n); },
      [post, n](CSint **x) { return post(x[0], x + 1, n); });
  c.solution = [n](std::span<const int> t) { return t[0] >= 0 && t[0] < n && t.back() == selected(t, n); };
  return c;
}

struct Form {
  const char *name;
  Post post;
};

void PrintTo(const Form &form, std::ostream *out) { *out << form.name; }

class VarElementSemantics : public ::testing::TestWithParam<Form> {
 protected:
  static Constraint of(int n) { return element(GetParam().name, GetParam().post, n); }
};

INSTANTIATE_TEST_SUITE_P(, VarElementSemantics,
                         ::testing::Values(Form{"Domain", cs_VarElement}, Form{"Range", cs_VarElementRange}),
                         [](const auto &row) { return std::string(row.param.name); });

// The index may leave the array at both ends; values are positive and negative.
void checkElement(const Constraint &c, const std::vector<int> &positions, int cases, unsigned seed) {
  const int count = 1 + *std::ranges::max_element(positions);
  std::mt19937 random(seed);
  for (int i = 0; i < cases; ++i) {
    std::vector<Domain> domains{randomDomain(random, -1, 5)};
    for (int k = 1; k < count; ++k) domains.push_back(randomDomain(random, -2, 4));
    if (!holds({c, domains, positions, 1, 6, static_cast<unsigned>(i)})) return;
  }
}

TEST_P(VarElementSemantics, OfOneVariableAgreesWithEnumeration) { checkElement(of(1), {0, 1}, 60, 1); }
TEST_P(VarElementSemantics, OfTwoVariablesAgreesWithEnumeration) { checkElement(of(2), {0, 1, 2}, 50, 2); }
TEST_P(VarElementSemantics, OfThreeVariablesAgreesWithEnumeration) { checkElement(of(3), {0, 1, 2, 3}, 30, 3); }

TEST_P(VarElementSemantics, OfAVariableAtSeveralPositionsAgreesWithEnumeration) {
  checkElement(of(2), {0, 1, 1}, 40, 4);
  checkElement(of(3), {0, 1, 2, 1}, 30, 5);
}

TEST_P(VarElementSemantics, OfAnArrayThatHoldsTheIndexAgreesWithEnumeration) {
  checkElement(of(2), {0, 0, 1}, 40, 6);
  checkElement(of(3), {0, 1, 0, 2}, 30, 7);
}

TEST_P(VarElementSemantics, OfTwoVariablesAgreesWithEnumerationOnPairsOfNarrowings) {
  for (const Domain &x : allDomains(0, 3)) {
    const Domain free{{0, 1}, Making::kExact};
    if (!holds({of(2), {free, x, {{-1, 1}, Making::kValues}}, {0, 1, 2}, 2, 2, 1})) return;
  }
}

}  // namespace

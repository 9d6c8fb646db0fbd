// SPDX-License-Identifier: MIT
// The reified comparisons, b taking part as a variable, against enumeration.
#include "support/brute_force.h"
#include "support/reif_forms.h"

namespace {

using namespace koru::test;
using namespace koru::test::brute;

Constraint of(const reif::Form &form) {
  return function(
      form.name, [form](std::span<const int> t) { return form.holds(t[0], t[1]) ? 1 : 0; },
      [form](CSint **x) { return form.post(x[0], x[1]); });
}

Constraint of(const reif::ConstForm &form, int v) {
  return function(
      std::string(form.name) + " " + std::to_string(v),
      [form, v](std::span<const int> t) { return form.holds(t[0], v) ? 1 : 0; },
      [form, v](CSint **x) { return form.post(x[0], v); });
}

class ReifSemantics : public ::testing::TestWithParam<reif::Form> {};
INSTANTIATE_TEST_SUITE_P(, ReifSemantics, ::testing::ValuesIn(reif::kForms), reif::formName<reif::Form>);

TEST_P(ReifSemantics, AgreesWithEnumerationOnAllPairsOfSmallDomains) { checkAllPairs(of(GetParam()), -1, 3, 1); }
TEST_P(ReifSemantics, AgreesWithEnumerationOnWideDomains) { checkRandom(of(GetParam()), 2, -4, 9, 20); }
TEST_P(ReifSemantics, OfAVariableWithItselfAgreesWithEnumeration) { checkShared(of(GetParam()), {0, 0}, -2, 5, 10); }
TEST_P(ReifSemantics, HeavyAgreesWithEnumerationOnAllPairsOfDomains) { checkAllPairs(of(GetParam()), -1, 4, 1); }
TEST_P(ReifSemantics, HeavyAgreesWithEnumerationOnPairsOfNarrowings) { checkAllPairs(of(GetParam()), -1, 3, 2); }
TEST_P(ReifSemantics, HeavyAgreesWithEnumerationOnManyWideDomains) { checkRandom(of(GetParam()), 2, -5, 11, 60); }

class ReifConstSemantics : public ::testing::TestWithParam<reif::ConstForm> {};
INSTANTIATE_TEST_SUITE_P(, ReifConstSemantics, ::testing::ValuesIn(reif::kConstForms), reif::formName<reif::ConstForm>);

TEST_P(ReifConstSemantics, AgreesWithEnumerationOnAllDomainsAndInts) {
  for (int v = -2; v <= 4; ++v) {
    const Constraint c = of(GetParam(), v);
    for (const Domain &domain : allDomains(-1, 5))
      if (!holds({c, {domain}, {0}, 1, 3, static_cast<unsigned>(v + 3)})) return;
  }
}

// A comparison of two outcomes: the watches of one are woken by the control of another.
TEST(ReifNestedSemantics, AgreesWithEnumeration) {
  const Constraint c = function(
      "(x < y) = (y <= 1)", [](std::span<const int> t) { return (t[0] < t[1]) == (t[1] <= 1) ? 1 : 0; },
      [](CSint **x) { return cs_ReifEq(cs_ReifLt(x[0], x[1]), cs_ReifLE(x[1], 1)); });
  checkRandom(c, 2, -2, 6, 30);
}

TEST(ReifNestedSemantics, AComparisonWithItsOwnOutcomeAgreesWithEnumeration) {
  const Constraint c = function(
      "x > (x != y)", [](std::span<const int> t) { return t[0] > (t[0] != t[1] ? 1 : 0) ? 1 : 0; },
      [](CSint **x) { return cs_ReifGt(x[0], cs_ReifNeq(x[0], x[1])); });
  checkRandom(c, 2, -2, 5, 30);
}

}  // namespace

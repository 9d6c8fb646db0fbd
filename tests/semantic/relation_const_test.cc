// SPDX-License-Identifier: MIT
// The relations with an int, against enumeration.
#include "support/brute_force.h"

namespace {

using namespace koru::test::brute;

void checkRelation(const Step &step) {
  for (int v = -2; v <= 3; ++v) {
    const Constraint c = relation(
        std::string("cs_") + step.name + " " + std::to_string(v),
        [&step, v](std::span<const int> t) { return step.holds(t[0], v); },
        [&step, v](CSint **x) { return step.apply(x[0], v); });
    for (const Domain &domain : allDomains(-1, 4))
      if (!holds({c, {domain}, {0}, 1, 3, static_cast<unsigned>(v + 3)})) return;
  }
}

TEST(RelationConstSemantics, EqAgreesWithEnumeration) { checkRelation(kSteps[0]); }
TEST(RelationConstSemantics, NeqAgreesWithEnumeration) { checkRelation(kSteps[1]); }
TEST(RelationConstSemantics, LeAgreesWithEnumeration) { checkRelation(kSteps[2]); }
TEST(RelationConstSemantics, GeAgreesWithEnumeration) { checkRelation(kSteps[3]); }
TEST(RelationConstSemantics, LtAgreesWithEnumeration) { checkRelation(kSteps[4]); }
TEST(RelationConstSemantics, GtAgreesWithEnumeration) { checkRelation(kSteps[5]); }

}  // namespace
